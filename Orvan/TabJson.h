// A tab of views for programs.
#pragma once

#include "Platform/View.h"

#include <nlohmann/json_fwd.hpp>

namespace orvan {

// One object a view, with its "kind" and what that kind says; "views" has what is in it, in order. Hidden
// views are left out.
nlohmann::ordered_json tabJson(const platform::View& view);

} // namespace orvan
