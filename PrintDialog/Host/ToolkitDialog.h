// What the tab needs of a print dialog: the one thing that every toolkit brings for itself.
#pragma once

#include "Platform/Controls.h"

#include <map>
#include <memory>
#include <optional>
#include <string>

namespace orvan {

struct PaperSize {
    double width = 0; // points
    double height = 0;
};

// One print dialog of a toolkit. Used on the toolkit's thread; what it tells goes to DialogTab.
class ToolkitDialog {
public:
    virtual ~ToolkitDialog() = default;

    // Shows the tab, which mirrors the tree until hideTab.
    virtual void showTab(const std::string& title, std::shared_ptr<platform::View> tree) = 0;
    virtual void hideTab() = 0;
    virtual bool isTabInFront() const = 0;
    // The tree says something else than before, and may have other views.
    virtual void treeChanged() = 0;

    // Whether a person is in the middle of a pick: a menu of the tab is open, or a button is held.
    virtual bool isBusy() const = 0;
    // The view of the tree that has the keyboard; null for none. And the other way round.
    virtual const platform::View* focusedView() const = 0;
    virtual void focus(const platform::View& view) = 0;
    // The letters that reach the dialog's own controls while the tab is in front, in lower case.
    virtual std::string takenLetters() const = 0;

    // From now on the tab is told of the dialog's own options of the printer that is selected now, until
    // closeOptions.
    virtual void openOptions() = 0;
    virtual void closeOptions() = 0;
    // PPD keyword to choice keyword, without the options that are left as the printer is set.
    virtual std::map<std::string, std::string> optionValues() const = 0;
    // Gives an option of the dialog's a choice; a choice that the dialog does not know leaves it as the
    // printer is set. Nothing is told of it.
    virtual void writeOption(const std::string& keyword, const std::string& choice) = 0;
    // The document's paper; nothing when it has none.
    virtual std::optional<PaperSize> paper() const = 0;
    // Gives the document another paper: a PPD's page size, its title and its size. False where the
    // application keeps the choice of the paper to itself.
    virtual bool setPaper(const std::string& pageSize, const std::string& title, const PaperSize& size) = 0;
};

} // namespace orvan
