// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QAbstractButton>

#include "util/job_list.h"
#include "util/signal.h"

namespace vistels {

class job_popover;

// In one line what the program is doing: a job's title and how far it is, or how many jobs there are. It
// opens the popover that lists them. Hidden while nothing lasts for half a second; its room stays, so that
// nothing beside it moves. Main thread.
class job_button : public QAbstractButton {
    Q_OBJECT
  public:
    // `list` must outlive the button.
    explicit job_button(job_list& list, QWidget* parent = nullptr);

    // What lasts; for assistive programs and tests, too.
    const QString& words() const { return words_; }
    // Nothing happens while no job lasts.
    void show_jobs();
    QSize sizeHint() const override;

  Q_SIGNALS:
    // There is something to show, or nothing any more.
    void shown_changed(bool shown);

  protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void enterEvent(QEnterEvent* event) override;

  private:
    void follow();

    job_list& list_;
    job_popover* popover_;
    QString words_;
    QString fact_;
    double progress_ = 0;
    connection changed_;
    connection progressed_;
};

}  // namespace vistels
