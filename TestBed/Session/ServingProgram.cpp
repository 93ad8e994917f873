#include "TestBed/Session/ServingProgram.h"

#include <cstdio>
#include <exception>

namespace orvan {
namespace {

constexpr int kFailed = 1;
constexpr int kWrongUsage = 2;

} // namespace

void addCommandArgument(CLI::App& app, std::vector<std::string>& command) {
    app.add_option("command", command, "Run this command, and end with it and its exit code")
        ->type_name("ARGS...");
    app.positionals_at_end();
}

int runServingProgram(const ServingProgram& program, int count, char** arguments) {
    const auto complain = [&program](
                              const char* text) { std::fprintf(stderr, "%s: %s\n", program.name, text); };
    try {
        CLI::App app(program.purpose, program.name);
        program.describe(app);
        try {
            app.parse(count, arguments);
        } catch (const CLI::ParseError& error) {
            return app.exit(error) == 0 ? 0 : kWrongUsage;
        }
        const CommandSession session;
        int exitCode = 0;
        const std::optional<Refusal> refusal = program.serve(session, &exitCode);
        if (!refusal) return exitCode;
        complain(refusal->text.c_str());
        return refusal->isWrongUsage ? kWrongUsage : kFailed;
    } catch (const std::exception& error) {
        complain(error.what());
        return kFailed;
    }
}

} // namespace orvan
