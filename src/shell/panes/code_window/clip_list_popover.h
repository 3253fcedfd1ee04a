// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPointer>
#include <QString>
#include <string>

#include "shell/kit/popover.h"
#include "timeline/records/clip_list.h"

class QLabel;
class QListView;

namespace vistels {

class clip_list_model;

// The clips of one row as a list beside the button that shows it. It takes no keys from the window, so that
// coding goes on, and goes with a press elsewhere or Escape. Main thread.
class clip_list_popover final : public popover {
    Q_OBJECT
  public:
    explicit clip_list_popover(QWidget* view);

    // Beside `button`, scrolled to the clip at `collection_seconds`, or to the last one before it.
    void show_beside(const QWidget& button, const std::string& uuid, const QString& title, clip_list clips,
                     double collection_seconds);
    // The row has other clips now.
    void set_clips(clip_list clips);
    // The button whose clips it shows; empty while it is hidden.
    std::string shown_button() const { return isVisible() ? button_ : std::string(); }

  Q_SIGNALS:
    // The user chose the clip that starts there.
    void chosen(double collection_seconds);

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void show_title();
    void place();

    std::string button_;
    QPointer<const QWidget> beside_;
    QString words_;  // its title
    QLabel* title_;
    QListView* lines_;
    clip_list_model* model_;
};

}  // namespace vistels
