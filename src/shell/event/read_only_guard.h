// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>
#include <functional>
#include <memory>
#include <string>

#include "shell/panes/code_window/code_window_view.h"

class QLabel;
class QToolButton;

namespace vistels {

class writer_watch;

// The same buttons, none of which can be pressed: all are drawn as blocked, and `refused` is told the name of
// the one that was pressed. For a timeline that cannot be changed.
std::unique_ptr<code_window_source> refusing(std::unique_ptr<code_window_source> source,
                                             std::function<void(const QString& button)> refused);

// The state of a timeline that can only be read, for its pane's header: a lock, words, and "Try Again".
// Hidden while the timeline can be changed. Main thread.
class read_only_mark : public QWidget {
    Q_OBJECT
  public:
    explicit read_only_mark(QWidget* parent = nullptr);

    // Why the event cannot be changed is the tool tip.
    void show_access(const writer_watch& access);
    // A press was refused just now: the mark draws attention for a moment.
    void flash();
    QString words() const;
    bool is_free() const { return free_; }

  Q_SIGNALS:
    void try_again_asked();

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    void show_reason(const QString& reason);
    void show_free();
    void show_tone(const QString& tone);

    QWidget* icon_;
    QLabel* words_;
    QToolButton* again_;
    bool flashes_ = false;
    bool free_ = false;
};

}  // namespace vistels
