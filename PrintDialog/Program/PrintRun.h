// One run of orvan-print.
#pragma once

#include <string>
#include <vector>

namespace orvan {

struct PrintArguments {
    std::vector<std::string> files;
    std::string queue;  // "" for the person's default
    std::string preset; // that the dialog begins with; "" for what was used last
};

// Opens the dialog for the files and sends each to the printer that the person chooses. 0 when all were
// accepted by the printing system; otherwise 1, after the reason was shown in a dialog and on standard error.
// GTK is initialised.
int runPrint(const PrintArguments& arguments);

} // namespace orvan
