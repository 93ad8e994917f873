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

// The shared object with the host for GTK 3 dialogs, in the private folder.
inline constexpr const char* kGtk3HostFile = "liborvan-print-dialog.so";
// What it exports: a function that attaches the paper options to a GtkPrintUnixDialog.
#define ORVAN_GTK3_ATTACH orvanAttachPaperOptions
#define ORVAN_TEXT_OF(name) #name
#define ORVAN_NAME_OF(macro) ORVAN_TEXT_OF(macro)
inline constexpr const char* kGtk3AttachFunction = ORVAN_NAME_OF(ORVAN_GTK3_ATTACH);
// The same with the name of a preset that the dialog begins with, "" for what was used last.
#define ORVAN_GTK3_ATTACH_WITH_PRESET orvanAttachPaperOptionsWithPreset
inline constexpr const char* kGtk3AttachWithPresetFunction = ORVAN_NAME_OF(ORVAN_GTK3_ATTACH_WITH_PRESET);

} // namespace orvan
