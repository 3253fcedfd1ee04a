// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QTimer>
#include <functional>
#include <string>

namespace vistels {

class main_window;

// Writes a picture of the window into a file once its event is open and all vistels show their pictures, with
// the last clip that began before the playhead selected. Main thread.
class screenshot : public QObject {
    Q_OBJECT
  public:
    // Negative seconds leave the playhead where it is. `done` gets whether the file was written; it is not
    // when no event could be opened or its pictures have not come after half a minute.
    screenshot(main_window& window, std::string file, double at_seconds, std::function<void(bool)> done);

  private:
    void prepare();
    void look();
    void finish(bool written);
    void select_clip(double seconds);

    main_window& window_;
    const std::string file_;
    const double at_seconds_;
    std::function<void(bool)> done_;
    QTimer timer_;
    int looks_ = 0;
    int settled_looks_ = 0;
    bool prepared_ = false;
};

}  // namespace vistels
