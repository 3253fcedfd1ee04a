// SPDX-License-Identifier: GPL-3.0-or-later
#include "util/clock.h"

#include <chrono>

namespace vistels {

double steady_clock::seconds() const {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

double seconds_since_1970() {
    return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
}

}  // namespace vistels
