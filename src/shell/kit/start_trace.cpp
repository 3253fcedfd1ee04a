// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/kit/start_trace.h"

#include <cstdio>
#include <cstdlib>

#include "util/clock.h"

namespace vistels {

void trace_start(const char* what) {
    static const bool wanted = std::getenv("VISTELS_TRACE_START") != nullptr;
    static const steady_clock time;
    static const double beginning = time.seconds();
    if (wanted) std::fprintf(stderr, "%6.0f ms  %s\n", (time.seconds() - beginning) * 1000, what);
}

}  // namespace vistels
