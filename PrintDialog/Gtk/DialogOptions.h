// GTK's own options of one printer in one print dialog: what its tabs show, and what it writes into the job.
//
// GTK offers no interface to them, so what is known of them is examined before it is relied on. Each has a
// widget of type GtkPrinterOptionWidget in the dialog, hidden or not, whose "source" is the option: an object
// with a "value" and a signal "changed", and its name in the first field after the GObject. The name is
// "gtk-paper-type" and the like for a few options and "cups-KEYWORD" for all others.
#pragma once

#include "PrintDialog/Gtk/GObjectRef.h"

#include <gtk/gtkunixprint.h>

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>

namespace orvan {

// GTK's value of an option that is not sent with the job.
inline constexpr std::string_view kAsPrinterIsSet = "gtk-ignore-value";

// The options of the printer that is selected when this is made. When another one is selected GTK makes new
// ones, and this is of no more use. GTK's thread.
class DialogOptions {
public:
    // Told when a person, or GTK, changed an option: the PPD option's keyword, and the choice's, "" for "as
    // the printer is set". Not told of what write() changed.
    using ChangeHandler = std::function<void(const std::string& keyword, const std::string& choice)>;

    // What of the above is not so in this release of GTK, for the log; "" when all is.
    static std::string unknownPart(GtkPrintUnixDialog* dialog);
    // Whether the printer's options are named as above: they are when it is one of the scheduler's.
    static bool namesOptionsOf(GtkPrinter* printer);

    DialogOptions(GtkPrintUnixDialog* dialog, ChangeHandler handler);
    ~DialogOptions();
    DialogOptions(const DialogOptions&) = delete;
    DialogOptions& operator=(const DialogOptions&) = delete;

    // PPD keyword to choice keyword, without the options that are left as the printer is set.
    std::map<std::string, std::string> values() const;

    // False when GTK has no such option, or the option refuses the choice (because it is not among its own).
    bool write(const std::string& keyword, const std::string& choice);

private:
    struct Option;
    void collect(GtkWidget* widget);
    void adopt(GObject* option);

    ChangeHandler handler_;
    std::map<std::string, std::unique_ptr<Option>, std::less<>> options_;
};

} // namespace orvan
