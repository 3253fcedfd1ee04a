// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/settings/step_settings.h"
#include "shell/kit/panel.h"

class QDoubleSpinBox;
class QSpinBox;

namespace vistels {

// Asks how many frames a step of several goes, and how long before its start a clip is played. Main thread.
class steps_panel final : public panel {
    Q_OBJECT
  public:
    steps_panel(const step_settings& settings, QWidget* parent);

    step_settings chosen() const;

  private:
    QSpinBox* back_;
    QSpinBox* on_;
    QDoubleSpinBox* lead_in_;
};

}  // namespace vistels
