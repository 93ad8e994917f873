// orvan-print: the print dialog, with the paper options, for people whose application has none.
#include "PrintDialog/Program/PrintRun.h"

#include <CLI/CLI.hpp>

#include <gtk/gtk.h>

#include <cstdio>
#include <exception>

namespace orvan {
namespace {

void describe(CLI::App& program, PrintArguments& arguments) {
    program
        .add_option("FILE", arguments.files,
            "The files to print: PDF, PostScript, or what the printer's queue accepts")
        ->required();
    program.add_option("-q,--queue", arguments.queue, "The queue that the dialog opens with")
        ->type_name("QUEUE");
    program
        .add_option("--preset", arguments.preset,
            "The preset that the dialog begins with; without it, what was used last with the printer")
        ->type_name("NAME");
    program.set_version_flag("--version", "orvan-print " ORVAN_VERSION);
    program.footer("Exit codes: 0 printed, 1 not printed, 2 wrong usage.\n"
                   "Example: orvan-print -q Office report.pdf");
    program.failure_message(CLI::FailureMessage::simple);
}

int run(int argc, char** argv) {
    CLI::App program(
        "Print files through the print dialog, with the paper options of Orvan printers.", "orvan-print");
    PrintArguments arguments;
    describe(program, arguments);
    try {
        program.parse(argc, argv);
    } catch (const CLI::ParseError& problem) {
        return program.exit(problem) == 0 ? 0 : 2;
    }
    if (gtk_init_check(nullptr, nullptr) != FALSE) return runPrint(arguments);
    std::fprintf(stderr, "orvan-print: cannot open the display; is DISPLAY or WAYLAND_DISPLAY set?"
                         " (\"lp -d QUEUE FILE\" prints without a dialog.)\n");
    return 1;
}

} // namespace
} // namespace orvan

int main(int argc, char** argv) {
    try {
        return orvan::run(argc, argv);
    } catch (const std::exception& problem) {
        std::fprintf(stderr, "orvan-print: %s\n", problem.what());
        return 1;
    }
}
