// What a toolkit's module, the program and the doctor have to call alike. Needs no C++ library: a module that
// every application loads includes it.
#pragma once

#include <cstdlib>

#include <strings.h>

namespace orvan {

// The environment variable that switches the paper options off when it is "off".
inline constexpr const char* kSwitchVariable = "ORVAN_PAPER_OPTIONS";

inline bool isSwitchedOff() {
    const char* const wish = std::getenv(kSwitchVariable);
    return wish != nullptr && strcasecmp(wish, "off") == 0;
}

// The shared objects with the host for GTK's dialogs, in the private folder.
inline constexpr const char* kGtk3HostFile = "liborvan-print-dialog-gtk3.so";
inline constexpr const char* kGtk4HostFile = "liborvan-print-dialog-gtk4.so";

// What each exports: int attach(GtkPrintUnixDialog* dialog, const char* version, const char* preset), which
// attaches the paper options to a dialog. `version` is the caller's: 0, and one line in the system log, when
// the host is of another one, as after an upgrade while applications run. `preset`: the name of a preset that
// the dialog begins with, "" for what was used last, null for none.
#define ORVAN_ATTACH orvanAttachToPrintDialog
#define ORVAN_TEXT_OF(name) #name
#define ORVAN_NAME_OF(macro) ORVAN_TEXT_OF(macro)
inline constexpr const char* kAttachFunction = ORVAN_NAME_OF(ORVAN_ATTACH);

} // namespace orvan
