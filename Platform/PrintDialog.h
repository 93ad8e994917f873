// The print dialog's extension (PDE) interface: what a plug-in offers a dialog, and what the dialog offers a
// plug-in.
//
// A plug-in is a bundle (Platform/Bundle.h) whose Info.plist names its principal class. The dialog creates
// that class once, hands it the bundle, and asks it for the panels of the dialog's type. Everything is called
// on the dialog's main thread.
#pragma once

#include "Formats/PropertyList.h"
#include "Platform/PMPrinter.h"
#include "Platform/View.h"

#include <cups/ppd.h>

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

class Bundle;

// The type identifier of the print dialog (as opposed to a page-setup dialog).
inline constexpr std::string_view kPrintDialogTypeIdentifier = "BDB091F4-E57F-11D3-B5CC-0050E4603277";

// The dialog's side. A panel holds its callback object strongly; the dialog keeps the PPD record open for as
// long as any panel that it gave the record to is alive.
class PDEPluginCallback {
public:
    virtual ~PDEPluginCallback() = default;

    // The record of the printer being configured, with the dialog's choices marked; the dialog owns it. Never
    // null while a panel is alive.
    virtual ppd_file_t* ppdFile() = 0;

    // The printing system's printer that is being configured; null when there is none (a PPD without a
    // queue).
    virtual std::shared_ptr<::platform::PMPrinter> PMPrinter() = 0;

    // A person picked a choice: the dialog marks it in ppdFile() and may mark others in consequence, or
    // refuse. What it made of the pick is read back from the record.
    virtual void willChangePPDOptionKeyValuePpdChoice(
        const std::string& optionKeyword, const std::string& choiceKeyword) = 0;
};

// What an operation that can fail tells the dialog. None of the family's panels ever fails; the type is the
// dialog's.
struct PDEError {
    std::string message;
};

// One panel of a print dialog.
class PDEPanel {
public:
    virtual ~PDEPanel() = default;

    // The panel's root view, owned by the panel; null when its resource cannot be loaded.
    virtual View* panelView() = 0;
    // The panel's title in the person's language.
    virtual std::string panelName() = 0;
    // A stable identifier of the panel's kind.
    virtual std::string panelKind() = 0;
    // The keywords of the PPD options that the panel handles.
    virtual const std::vector<std::string>& supportedPPDOptionKeys() = 0;

    // Called each time before the panel becomes visible.
    virtual void willShow() = 0;
    virtual bool shouldHide() = 0;
    virtual bool shouldPrint() = 0;
    virtual bool shouldShowHelp() = 0;
    // Read the dialog's marks again. `error` may be null.
    virtual bool restoreValuesAndReturnError(PDEError* error) = 0;
    // Write what the panel still holds to the dialog. `error` may be null.
    virtual bool saveValuesAndReturnError(PDEError* error) = 0;

    // The panel's lines of the dialog's summary: option title to choice title.
    virtual std::map<std::string, std::string> summaryInfo() = 0;

    // Whether the panel still waits, on the main loop, for something that a printer is to tell it. A dialog
    // need not mind; a host that can wait gets the panel whole.
    virtual bool awaitsPrinter() const = 0;
    // A printer's answer that came by another way than the panel's own question; taken as one to that.
    virtual void receivedPrinterAnswer(const PropertyList& answer) = 0;
};

// A plug-in's principal class.
class PDEPlugin {
public:
    virtual ~PDEPlugin() = default;

    // The plug-in's own bundle, which the dialog keeps for as long as the plug-in. False when the plug-in
    // cannot work.
    virtual bool initWithBundle(const std::shared_ptr<Bundle>& bundle) = 0;

    // The panels for a dialog of the given type, made with the dialog's callback object: null when the
    // plug-in has a panel for such a dialog but not for this printer, an empty list when it has none for such
    // a dialog. The plug-in keeps the list until the next call; the dialog may hold its panels longer.
    using PanelList = std::vector<std::shared_ptr<PDEPanel>>;
    virtual std::shared_ptr<const PanelList> PDEPanelsForTypeWithHostInfo(
        std::string_view dialogType, std::shared_ptr<PDEPluginCallback> hostInfo) = 0;
};

// What the shared object of a plug-in exports under the name "create" followed by its principal class: a
// function of this type that answers a new plug-in, owned by the caller.
using PDEPluginCreator = PDEPlugin* (*)();

} // namespace platform

// Stands once in a plug-in, at file scope, and exports its principal class.
// NOLINTBEGIN(bugprone-macro-parentheses): neither a definition nor a type can stand in parentheses.
#define PLATFORM_PRINCIPAL_CLASS(name, type)                                                                 \
    extern "C" __attribute__((visibility("default"))) ::platform::PDEPlugin* create##name() {                \
        return new type;                                                                                     \
    }
// NOLINTEND(bugprone-macro-parentheses)
