// From the command line to a command.
#pragma once

namespace orvan {

// Does what the arguments of `orvan` ask for; answers an exit code. `version` is what --version says.
int runCommandLine(int argc, const char* const* argv, const char* version);

} // namespace orvan
