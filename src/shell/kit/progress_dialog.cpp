// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/kit/progress_dialog.h"

#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>

#include "shell/kit/controls.h"
#include "shell/kit/theme.h"

namespace vistels {

namespace {

constexpr double patience_seconds = 0.5;
constexpr int steps = 1000;

}  // namespace

running_work::~running_work() {
    alive_.reset();
    cancel();
    queue_.reset();
}

void running_work::start(work does, progress tell, done then) {
    tell_ = std::move(tell);
    then_ = std::move(then);
    job_ = std::make_unique<job>([this, weak = std::weak_ptr(alive_)](double fraction) {
        loop_.post([this, weak, fraction] {
            if (!weak.expired()) tell_(fraction);
        });
    });
    queue_ = std::make_unique<serial_queue>("long work");
    queue_->post([this, weak = std::weak_ptr(alive_), does = std::move(does)] {
        const auto outcome = does(*job_);
        loop_.post([this, weak, outcome] {
            if (!weak.expired()) finish(outcome);
        });
    });
}

void running_work::cancel() {
    if (job_) job_->cancel();
}

void running_work::finish(const vistels::result<std::string>& outcome) {
    const bool cancelled = job_->is_cancelled();
    queue_.reset();
    job_.reset();
    // `then_` may be what destroys this.
    const done then = std::move(then_);
    then(outcome, cancelled);
}

work_bar::work_bar(const QString& title, QWidget* parent) : QProgressBar(parent) {
    setRange(0, steps);
    setTextVisible(false);
    setAccessibleName(title);
}

void work_bar::set_progress(double fraction) {
    setValue(static_cast<int>(std::clamp(fraction, 0.0, 1.0) * steps));
}

progress_dialog::progress_dialog(const QString& title, const QString& words, run_loop& loop, QWidget* parent)
    : QDialog(parent), loop_(loop), bar_(new work_bar(title, this)), work_(loop) {
    const theme_metrics& metrics = theme::current().metrics;
    setObjectName(QStringLiteral("progress_dialog"));
    setWindowTitle(title);
    setModal(true);
    auto* headline = make_label(title, type_step::headline, {}, this);
    words_ = make_label(words, type_step::body, QStringLiteral("muted"), this);
    words_->setWordWrap(true);
    cancel_ = make_push_button(tr("Cancel"), {}, this);
    cancel_->setObjectName(QStringLiteral("progress_dialog.cancel"));
    connect(cancel_, &QPushButton::clicked, this, &progress_dialog::reject);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(metrics.group_gap, metrics.group_gap, metrics.group_gap, metrics.group_gap);
    column->setSpacing(metrics.wide_padding);
    column->addWidget(headline);
    column->addWidget(words_);
    column->addWidget(bar_);
    column->addWidget(cancel_, 0, Qt::AlignRight);
    setFixedWidth(metrics.filter_width);
}

progress_dialog::~progress_dialog() {
    stop_timer();
}

void progress_dialog::stop_timer() {
    if (show_timer_) loop_.stop_timer(std::exchange(show_timer_, 0));
}

void progress_dialog::start(work does, done then) {
    show_timer_ = loop_.start_timer(patience_seconds, false, [this] { show_now(); });
    work_.start(
        std::move(does), [this](double fraction) { bar_->set_progress(fraction); },
        [this, then = std::move(then)](const vistels::result<std::string>& outcome, bool cancelled) {
            stop_timer();
            hide();
            // It may be what destroys this window.
            const done last = then;
            last(outcome, cancelled);
        });
}

void progress_dialog::show_now() {
    stop_timer();
    if (!isVisible()) show();
}

void progress_dialog::reject() {
    if (!work_.is_running()) return QDialog::reject();
    work_.cancel();
    words_->setText(tr("Stopping. Nothing is left half made."));
    cancel_->setEnabled(false);
}

}  // namespace vistels
