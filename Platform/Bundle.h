// A bundle: a folder `Name.plugin/Contents/` with an Info.plist, a Resources folder and a shared object under
// Linux/.
#pragma once

#include "Formats/Failure.h"
#include "Formats/PropertyList.h"
#include "Platform/PrintDialog.h"
#include "Platform/View.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

// What loading a view resource ties together: the resource names outlets and actions, the owner supplies
// them.
struct ViewOwner {
    // Called once for each outlet of the resource with its name and the view.
    std::function<void(std::string_view outlet, std::shared_ptr<View> view)> setOutlet;
    // The action of the given name, wired to each pop-up that names it; empty when the owner has no such
    // action.
    std::function<PopUpButton::Action(std::string_view name)> action;
};

class Bundle {
public:
    // Null, and a message for people in `error`, when the folder has no readable Info.plist.
    // Nothing of the bundle's code is loaded yet. One thread.
    static std::shared_ptr<Bundle> open(
        const std::filesystem::path& folder, Failure& error = ignoredFailure());

    const std::filesystem::path& folder() const { return folder_; }

    // The text of a key of Info.plist; null when there is none.
    const std::string* infoString(std::string_view key) const;

    // A new plug-in of the principal class that Info.plist names, from the bundle's shared object, which
    // stays loaded until the process ends. Null, and a message in `error`, when the object or the
    // class is not there.
    std::unique_ptr<PDEPlugin> createPrincipalClass(Failure& error = ignoredFailure()) const;

    // Loads Resources/NAME.view and ties it to the owner. Null, and a message in `error`, when
    // the resource is missing or damaged; the owner has then been told of nothing. The caller shares the root
    // view with its outlets.
    std::shared_ptr<View> loadView(
        std::string_view name, const ViewOwner& owner, Failure& error = ignoredFailure()) const;

    // The languages that the bundle has a folder Resources/LANGUAGE.lproj for, in alphabetical order.
    std::vector<std::string> languages() const;
    // The same bundle with its texts in that language, whatever the person's are; in English where it does
    // not have it.
    std::shared_ptr<Bundle> inLanguage(const std::string& language) const;

    // The text of a key of Resources/LANGUAGE.lproj/Localizable.strings in the first of the person's
    // languages that the bundle has, or in English; the key itself when the table has no such entry. Any
    // thread.
    std::string localizedString(std::string_view key) const;

private:
    Bundle(std::filesystem::path folder, PropertyList info);
    std::filesystem::path resources() const { return folder_ / "Contents" / "Resources"; }
    PropertyList readStringTable() const;

    std::filesystem::path folder_;
    PropertyList info_;
    std::string language_; // "" for the person's
    mutable std::once_flag stringTableIsRead_;
    mutable PropertyList stringTable_;
};

} // namespace platform
