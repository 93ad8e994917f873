// What an administrator decides for all users of a computer.
#pragma once

#include <string>

namespace orvan {

// From "orvan/paper-options.conf" in the first of the folders XDG_CONFIG_DIRS (/etc/xdg) that has one: a key
// file whose group "Paper Options" may have the keys "Tab", "AskPrinter" and "Presets", each "true" or
// "false". What is not there, or not one of the two, is true.
struct AdministratorSettings {
    bool showsTab = true;
    // Whether a print dialog asks the printer for its answers. Each question is a job in the queue's history,
    // with the person's name.
    bool asksPrinter = true;
    bool hasPresets = true;
    std::string file; // that says so; "" for none
};

AdministratorSettings administratorSettings();

} // namespace orvan
