// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "shell/kit/popover.h"

class QGridLayout;
class QLabel;

namespace vistels {

class value_slider;

// A popover with the volume of the event and that of the application, which lies over it. It goes when
// something else is clicked, or by Escape. It shows what it is told and asks by signals. Main thread.
class volume_popover : public popover {
    Q_OBJECT
  public:
    explicit volume_popover(QWidget* parent);

    void set_volumes(double event, double application);  // 0 to 1
    // Above `control`, its right side with that one's, or where there is room on the screen.
    void show_above(const QWidget* control);

  Q_SIGNALS:
    void volume_asked(double volume);
    void application_volume_asked(double volume);
    // The user let go of one of them.
    void chosen();

  private:
    struct line {
        value_slider* slider;
        QLabel* percent;
    };
    line add_line(QGridLayout& grid, const QString& words, const char* name);
    static void show_value(const line& one, double volume);

    line event_;
    line application_;
};

}  // namespace vistels
