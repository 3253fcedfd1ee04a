// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>
#include <QProgressBar>
#include <functional>
#include <memory>
#include <string>

#include "util/job.h"
#include "util/result.h"
#include "util/run_loop.h"
#include "util/serial_queue.h"

class QLabel;
class QPushButton;

namespace vistels {

// Work of some seconds or minutes on a thread of its own. Main thread, except for the work.
class running_work {
  public:
    // Runs on the other thread; its value is handed to `done`.
    using work = std::function<vistels::result<std::string>(job&)>;
    using done = std::function<void(const vistels::result<std::string>&, bool cancelled)>;
    // Of the fraction done, from 0 to 1.
    using progress = std::function<void(double)>;

    // `loop` must outlive this.
    explicit running_work(run_loop& loop) : loop_(loop) {}
    // Cancels and waits for the work to end; `then` is not called any more.
    ~running_work();
    running_work(const running_work&) = delete;
    running_work& operator=(const running_work&) = delete;

    // One work at a time. `tell` and, when it has ended, `then` are called on the main thread.
    void start(work does, progress tell, done then);
    bool is_running() const { return job_ != nullptr; }
    void cancel();

  private:
    void finish(const vistels::result<std::string>& outcome);

    run_loop& loop_;
    std::unique_ptr<job> job_;
    progress tell_;
    done then_;
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
    std::unique_ptr<serial_queue> queue_;
};

// The bar of such work; its value is told in thousandths, and only when it changes.
class work_bar : public QProgressBar {
  public:
    work_bar(const QString& title, QWidget* parent);
    void set_progress(double fraction);
};

// Such work with a window that shows how far it is and can cancel it. Main thread, except for the work.
class progress_dialog : public QDialog {
    Q_OBJECT
  public:
    using work = running_work::work;
    using done = running_work::done;

    progress_dialog(const QString& title, const QString& words, run_loop& loop, QWidget* parent = nullptr);
    // Cancels and waits for the work to end.
    ~progress_dialog() override;

    // Starts; the window comes up after half a second, so that short work shows none. `done` is called on the
    // main thread when it has ended, after the window is gone.
    void start(work does, done then);
    // Shows the window without waiting.
    void show_now();

  protected:
    void reject() override;

  private:
    void stop_timer();

    run_loop& loop_;
    run_loop::timer_id show_timer_ = 0;
    QLabel* words_;
    work_bar* bar_;
    QPushButton* cancel_;
    running_work work_;
};

}  // namespace vistels
