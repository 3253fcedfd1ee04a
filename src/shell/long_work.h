// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>
#include <functional>
#include <memory>
#include <string>

#include "util/job.h"
#include "util/result.h"
#include "util/run_loop.h"
#include "util/serial_queue.h"

class QLabel;
class QProgressBar;
class QPushButton;

namespace vistels {

// Work of some seconds or minutes on a thread of its own, with a window that shows how far it is and can
// cancel it. Main thread, except for the work.
class long_work : public QDialog {
    Q_OBJECT
  public:
    // Runs on the other thread; its value is handed to `done`.
    using work = std::function<vistels::result<std::string>(job&)>;
    using done = std::function<void(const vistels::result<std::string>&, bool cancelled)>;

    long_work(const QString& title, const QString& words, run_loop& loop, QWidget* parent = nullptr);
    // Cancels and waits for the work to end.
    ~long_work() override;

    // Starts; the window comes up after half a second, so that short work shows none. `done` is called on the
    // main thread when it has ended, after the window is gone.
    void start(work does, done then);
    // Shows the window without waiting.
    void show_now();

  protected:
    void reject() override;

  private:
    void set_progress(double fraction);
    void finish(const vistels::result<std::string>& outcome);

    run_loop& loop_;
    std::unique_ptr<job> job_;
    done then_;
    run_loop::timer_id show_timer_ = 0;
    QLabel* words_;
    QProgressBar* bar_;
    QPushButton* cancel_;
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
    int shown_step_ = -1;
    std::unique_ptr<serial_queue> queue_;
};

}  // namespace vistels
