// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QTimer>
#include <functional>
#include <string>

namespace vistels {

class main_window;

// What a picture of a window is to show.
struct screenshot_wish {
    std::string file;
    double at_seconds = -1;  // where the playhead goes; negative: it stays
    std::string filter;      // a text; empty: none
};

// Writes a picture of the window into a file once its event is open and all vistels show their pictures, with
// the last clip selected that began before the playhead and passes the filter. Main thread.
class screenshot : public QObject {
    Q_OBJECT
  public:
    // `done` gets whether the file was written; it is not
    // when no event could be opened or its pictures have not come after half a minute.
    screenshot(main_window& window, screenshot_wish wish, std::function<void(bool)> done);

  private:
    // Whether the filter that was wished for is in force.
    bool is_filtered();
    void prepare();
    void look();
    void finish(bool written);
    void select_clip(double seconds);

    main_window& window_;
    const screenshot_wish wish_;
    std::function<void(bool)> done_;
    QTimer timer_;
    int looks_ = 0;
    int settled_looks_ = 0;
    bool prepared_ = false;
};

}  // namespace vistels
