// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

#include "util/job_list.h"
#include "util/signal.h"

class QLabel;
class QPushButton;

namespace vistels {

class job_bar;

// One job with how far it is and a button to cancel it, in the place where its outcome will be. Hidden while
// there is none, and while something else has that place. Main thread.
class work_panel : public QWidget {
    Q_OBJECT
  public:
    // `list` must outlive the panel.
    explicit work_panel(job_list& list, QWidget* parent = nullptr);

    // Shows the job until it ends: `at_once`, or from when it lasts for half a second.
    void follow(job_list::job_id id, bool at_once);
    bool is_running() const { return list_.find(id_).has_value(); }
    // Whether its place is free.
    void set_has_place(bool has_place);

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    void show_status();

    job_list& list_;
    job_list::job_id id_ = 0;
    bool at_once_ = false;
    bool has_place_ = true;
    QLabel* title_;
    QLabel* words_;
    job_bar* bar_;
    QPushButton* cancel_;
    connection changed_;
    connection progressed_;
};

}  // namespace vistels
