// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QProgressBar>

namespace vistels {

// How far a job is, from 0 to 1; the value is told in thousandths, and only when it changes. Main thread.
class job_bar : public QProgressBar {
  public:
    explicit job_bar(QWidget* parent) : QProgressBar(parent) {
        setRange(0, steps);
        setTextVisible(false);
    }
    void set_progress(double fraction) { setValue(static_cast<int>(qBound(0.0, fraction, 1.0) * steps)); }

  private:
    static constexpr int steps = 1000;
};

}  // namespace vistels
