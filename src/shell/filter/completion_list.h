// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QListView>
#include <string>
#include <vector>

#include "shell/filter/filter_colours.h"

class QStandardItemModel;

namespace vistels {

// One thing that may be put in.
struct completion_line {
    QString words;
    QString what;          // muted: what the words are
    std::string code;      // whose colour the words have; may be empty
    std::size_t uses = 0;  // 0: not told
};

// A list over the window with what may be put into a field. It never takes the focus: the keys go through the
// field. Main thread.
class completion_list : public QListView {
    Q_OBJECT
  public:
    // A child of the field's window, hidden.
    completion_list(const QString& name, QWidget* field);

    // Shows the lines under `under` (in the coordinates of the field), or above it where there is no room.
    // None is chosen unless `chooses_first`.
    void offer(const std::vector<completion_line>& lines, const QRect& under, bool chooses_first);
    // Another `under` while it is shown.
    void place(const QRect& under);
    void set_colours(const filter_colours& colours) { colours_ = colours; }
    const filter_colours& colours() const { return colours_; }
    int count() const;
    // -1: none.
    int chosen() const;
    // Goes round; from none to the first or the last.
    void choose_beside(int direction);

  Q_SIGNALS:
    void picked(int line);  // by the mouse

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    QWidget* field_;
    QStandardItemModel* lines_;
    filter_colours colours_;
};

}  // namespace vistels
