// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

#include "shell/kit/progress_dialog.h"

class QLabel;
class QPushButton;

namespace vistels {

// Work of some seconds or minutes, with how far it is and a button to cancel it, in the place where its
// outcome will be; the window stays usable. Hidden while nothing runs. Main thread, except for the work.
class work_panel : public QWidget {
    Q_OBJECT
  public:
    // `loop` must outlive the panel.
    explicit work_panel(run_loop& loop, QWidget* parent = nullptr);

    // One work at a time. `then` is called when the panel is gone. Destroying the panel cancels the work and
    // waits for it.
    void start(const QString& title, const QString& words, running_work::work does, running_work::done then);
    bool is_running() const { return work_.is_running(); }

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    void cancel();

    QLabel* title_;
    QLabel* words_;
    work_bar* bar_;
    QPushButton* cancel_;
    running_work work_;
};

}  // namespace vistels
