#include "TestBed/Session/ClientEnvironment.h"

#include <glib.h>
#include <stdlib.h>

#include <memory>

namespace orvan {

void adoptEnvironment(const ClientEnvironment& environment) {
    for (const auto& [name, value] : environment) {
        if (value)
            setenv(name.c_str(), value->c_str(), 1);
        else
            unsetenv(name.c_str());
    }
}

std::string shellCommands(const ClientEnvironment& environment) {
    std::string commands;
    for (const auto& [name, value] : environment) {
        if (value) {
            const std::unique_ptr<gchar, decltype(&g_free)> quoted(g_shell_quote(value->c_str()), g_free);
            commands.append("export ").append(name).append("=").append(quoted.get()).append("\n");
        } else {
            commands.append("unset ").append(name).append("\n");
        }
    }
    return commands;
}

} // namespace orvan
