// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <map>

#include "shell/kit/popover.h"
#include "util/job_list.h"
#include "util/signal.h"

class QLabel;
class QVBoxLayout;

namespace vistels {

class cut_label;
class icon_button;
class job_bar;

// A popover that lists the jobs that last, each with its title, how far it is and a button to cancel it. It
// goes when something else is clicked, by Escape, or when nothing is left to list. Main thread.
class job_popover : public popover {
    Q_OBJECT
  public:
    // `list` must outlive the popover.
    job_popover(job_list& list, QWidget* parent);

    // Below `control`, its right side with that one's.
    void show_below(const QWidget* control);

  private:
    struct line {
        QWidget* whole;
        cut_label* title;
        QLabel* fact;
        job_bar* bar;
        icon_button* cancel;
    };
    line add_line(const job_status& status);
    void show_status(const line& one, const job_status& status);
    void follow();
    void place();

    job_list& list_;
    const QWidget* control_ = nullptr;
    QLabel* count_;
    QVBoxLayout* column_;
    std::map<job_list::job_id, line> lines_;
    connection changed_;
    connection progressed_;
};

}  // namespace vistels
