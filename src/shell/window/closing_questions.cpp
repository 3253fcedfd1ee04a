// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/window/closing_questions.h"

#include <QMessageBox>
#include <QObject>
#include <QPushButton>

#include "app/event/open_event.h"
#include "logger/press_engine.h"
#include "shell/kit/failure_words.h"
#include "shell/kit/job_words.h"
#include "util/wait_watch.h"

namespace vistels {

bool agree_to_leave(QWidget& window, open_event& event) {
    const expected_waits closing("an event is saved before its window closes");
    press_engine& logger = event.logger();
    const auto recorded = logger.record_waiting();
    const auto saved = event.save_all();
    const auto done = recorded ? saved : recorded;
    if (done) return true;
    const int waiting = static_cast<int>(logger.unrecorded());
    QMessageBox question(QMessageBox::Warning,
                         waiting > 0 ? QObject::tr("The last presses are not on record")
                                     : QObject::tr("The event could not be saved"),
                         words_of(done.error()), QMessageBox::NoButton, &window);
    question.setInformativeText(
        waiting == 0 ? QObject::tr("What was coded is on record and comes back at the next start.")
        : waiting == 1
            ? QObject::tr("One press or release is in memory only and is lost when the window closes.")
            : QObject::tr("%1 presses and releases are in memory only and are lost when the window closes.")
                  .arg(waiting));
    const QAbstractButton* stay = question.addButton(QObject::tr("Stay"), QMessageBox::RejectRole);
    question.addButton(QObject::tr("Close Anyway"), QMessageBox::AcceptRole);
    question.exec();
    return question.clickedButton() != stay;
}

bool agree_to_stop_jobs(QWidget& window, const std::vector<job_status>& unfinished) {
    if (unfinished.empty()) return true;
    const QString headline = unfinished.size() == 1
                                 ? QObject::tr("“%1” is not finished").arg(job_title(unfinished.front()))
                                 : QObject::tr("%1 tasks are not finished").arg(unfinished.size());
    QMessageBox question(QMessageBox::Warning, headline, headline, QMessageBox::NoButton, &window);
    question.setInformativeText(QObject::tr("Closing the window stops that. Nothing is left half made."));
    question.setObjectName(QStringLiteral("jobs_unfinished"));
    auto* stay = question.addButton(QObject::tr("Stay"), QMessageBox::RejectRole);
    auto* stop = question.addButton(QObject::tr("Stop and Close"), QMessageBox::DestructiveRole);
    stop->setObjectName(QStringLiteral("jobs_unfinished.stop"));
    question.setDefaultButton(stay);
    question.setEscapeButton(stay);
    question.exec();
    return question.clickedButton() == stop;
}

}  // namespace vistels
