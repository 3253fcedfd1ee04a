// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/settings/code_window_settings.h"
#include "shell/kit/panel.h"

class QCheckBox;
class QDoubleSpinBox;
class QSpinBox;

namespace vistels {

// Asks whether buttons are pressed at random in this window, and how. Main thread.
class presser_panel final : public panel {
    Q_OBJECT
  public:
    // `settings` say by `presses_buttons` whether they are now; so do those that are chosen.
    presser_panel(const test_press_settings& settings, QWidget* parent);

    test_press_settings chosen() const;

  private:
    const test_press_settings before_;
    QCheckBox* is_on_;
    QSpinBox* buttons_;
    QDoubleSpinBox* seconds_;
    QCheckBox* deletes_;
    double seconds_shown_ = 0;  // of those before, which may be more exact
};

}  // namespace vistels
