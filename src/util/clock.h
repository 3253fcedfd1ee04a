// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace vistels {

// A source of elapsed time. Monotonic: never goes back, not changed by setting the machine's clock.
// Any thread may call it.
class clock {
  public:
    virtual ~clock() = default;
    // Seconds since an arbitrary fixed moment.
    virtual double seconds() const = 0;
};

// The machine's monotonic clock.
class steady_clock final : public clock {
  public:
    double seconds() const override;
};

// Seconds since 1970-01-01 00:00 UTC, by the machine's clock.
double seconds_since_1970();

}  // namespace vistels
