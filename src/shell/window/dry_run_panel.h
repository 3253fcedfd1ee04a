// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStringList>
#include <functional>
#include <string>
#include <vector>

#include "app/event/dry_run.h"
#include "shell/kit/panel.h"
#include "util/posted_work_guard.h"
#include "util/run_loop.h"
#include "util/serial_queue.h"

class QPlainTextEdit;
class QPushButton;

namespace vistels {

// A script of presses is written, run on a copy of the timeline, and what it set off is shown; nothing is
// saved. Above that what is wrong with the links of the buttons. Main thread.
class dry_run_panel final : public panel {
    Q_OBJECT
  public:
    // `wanted` gives the buttons and the timeline as they are now, without steps; the copy is made below
    // `folder`, by work on `queue`. Loop and queue must outlive the panel.
    dry_run_panel(std::function<dry_run()> wanted, const std::string& script, const QStringList& problems,
                  std::string folder, run_loop& loop, serial_queue& queue, QWidget* parent);

  private:
    void run();
    void show_outcome(const dry_run_outcome& outcome);

    const std::function<dry_run()> wanted_;
    const std::string folder_;
    run_loop& loop_;
    QPlainTextEdit* script_;
    QPlainTextEdit* outcome_;
    QPushButton* run_ = nullptr;
    serial_queue& queue_;
    posted_work_guard guard_;
};

}  // namespace vistels
