// What people chose in print dialogs, kept until the jobs are sent.
//
// GTK builds a job's settings from its own options alone, and an option refuses a choice that its own list
// does not have. So the choices of an accepted dialog are kept here, and written into a job's settings when
// GTK is about to read them for the last time: when the job's status becomes GTK_PRINT_STATUS_SENDING_DATA.
#pragma once

#include <gtk/gtkunixprint.h>

#include <deque>
#include <map>
#include <string>

namespace orvan {

// One dialog that was accepted.
struct AcceptedDialog {
    struct Choice {
        std::string marked;   // what the job is to carry
        bool isDefault;       // of the PPD
        std::string gtkValue; // what GTK made of it; "" when it has no such option
    };
    std::string queue;
    std::map<std::string, Choice> choices; // by PPD keyword; empty for a printer that is not ours
};

// The process's one keeper: dialogs and jobs of several applications meet in a portal's. GTK's thread.
class AcceptedChoices {
public:
    // The first call starts watching the process's print jobs.
    static AcceptedChoices& shared();

    // `pageSetup` is the dialog's own, which it hands to whoever prints; may be null.
    void add(AcceptedDialog dialog, GtkPageSetup* pageSetup);

    // Writes the choices into the settings of a job that is about to be sent: those of the dialog whose page
    // setup the job has, or else of the newest accepted dialog of the job's queue from which its settings
    // came.
    void apply(GtkPrintJob* job) const;

private:
    AcceptedChoices();

    std::deque<AcceptedDialog> dialogs_; // newest first
};

} // namespace orvan
