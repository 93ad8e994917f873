// The program's failures, under the name that the test bed uses.
#pragma once

#include "Formats/Failure.h"

namespace orvan {

using platform::Failure;

} // namespace orvan
