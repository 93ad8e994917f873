// View resources: XML files that describe a tree of views.
//
//   <view outlet="NAME" x="" y="" width="" height=""> controls </view>
//   <label tag="" x="" y="" width="" height="">TEXT</label>
//   <popUp tag="" outlet="NAME" action="NAME" x="" y="" width="" height=""/>
//
// Numbers are points; "tag", "outlet" and "action" may be missing.
#pragma once

#include "Formats/Failure.h"
#include "Platform/View.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace platform {

// A resource as read: the tree, and what is to be tied to its owner.
struct ViewResource {
    std::shared_ptr<View> root;
    std::vector<std::pair<std::string, std::shared_ptr<View>>> outlets;
    std::vector<std::pair<std::string, std::shared_ptr<PopUpButton>>> actions;

    // Labels show what `localize` makes of their text. False, and a message in `error`, when the bytes are
    // not a view resource.
    bool read(
        std::string_view bytes, const std::function<std::string(std::string_view)>& localize, Failure& error);
};

} // namespace platform
