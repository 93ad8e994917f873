// The wall between our code and the application whose guest it is.
#pragma once

#include "Platform/Guarded.h"

#include <utility>

namespace orvan {

// Runs the body of a GTK callback. No exception gets past here into GTK.
template <class Body>
void guarded(Body&& body) noexcept {
    platform::guarded("paper options", std::forward<Body>(body));
}

} // namespace orvan
