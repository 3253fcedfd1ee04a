// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QSplitter>

namespace vistels {

// A splitter between panes: a thin line, in the accent colour while dragged or focused. Double click gives
// the panes beside it equal parts; the arrow keys move it while it has the focus. Main thread.
class pane_splitter : public QSplitter {
    Q_OBJECT
  public:
    explicit pane_splitter(Qt::Orientation orientation, QWidget* parent = nullptr);

    // The user put it where it is; a size of the window's own choosing is not wanted any more.
    bool was_moved() const { return was_moved_; }
    void set_was_moved(bool moved) { was_moved_ = moved; }
    // Moves handle `index` (between widget index - 1 and widget index) by pixels.
    void move_by(int index, int pixels);
    void make_equal(int index);

  protected:
    QSplitterHandle* createHandle() override;

  private:
    bool was_moved_ = false;
};

}  // namespace vistels
