#include "Orvan/OutputGuard.h"

#include <unistd.h>

#include <cstdio>
#include <iostream>

namespace orvan {

OutputGuard::OutputGuard() {
    std::cout.flush();
    output_ = platform::FileDescriptor(dup(STDOUT_FILENO));
    dup2(STDERR_FILENO, STDOUT_FILENO);
}

OutputGuard::~OutputGuard() {
    std::fflush(stdout);
    if (output_) dup2(output_.get(), STDOUT_FILENO);
}

} // namespace orvan
