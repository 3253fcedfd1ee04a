// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/long_work.h"

#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>

#include "shell/controls.h"
#include "shell/theme.h"

namespace vistels {

namespace {

constexpr double patience_seconds = 0.5;
constexpr int steps = 1000;

}  // namespace

long_work::long_work(const QString& title, const QString& words, run_loop& loop, QWidget* parent)
    : QDialog(parent), loop_(loop), bar_(new QProgressBar(this)) {
    const theme_metrics& metrics = theme::current().metrics;
    setObjectName(QStringLiteral("long_work"));
    setWindowTitle(title);
    setModal(true);
    auto* headline = make_label(title, type_step::headline, {}, this);
    words_ = make_label(words, type_step::body, QStringLiteral("muted"), this);
    words_->setWordWrap(true);
    bar_->setRange(0, steps);
    bar_->setTextVisible(false);
    bar_->setAccessibleName(title);
    cancel_ = make_push_button(tr("Cancel"), {}, this);
    cancel_->setObjectName(QStringLiteral("long_work.cancel"));
    connect(cancel_, &QPushButton::clicked, this, &long_work::reject);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(metrics.group_gap, metrics.group_gap, metrics.group_gap, metrics.group_gap);
    column->setSpacing(metrics.wide_padding);
    column->addWidget(headline);
    column->addWidget(words_);
    column->addWidget(bar_);
    column->addWidget(cancel_, 0, Qt::AlignRight);
    setFixedWidth(metrics.filter_width);
}

long_work::~long_work() {
    if (show_timer_) loop_.stop_timer(show_timer_);
    if (job_) job_->cancel();
    queue_.reset();
}

void long_work::start(work does, done then) {
    then_ = std::move(then);
    job_ = std::make_unique<job>([this, weak = std::weak_ptr(alive_)](double fraction) {
        loop_.post([this, weak, fraction] {
            if (!weak.expired()) set_progress(fraction);
        });
    });
    show_timer_ = loop_.start_timer(patience_seconds, false, [this] { show_now(); });
    queue_ = std::make_unique<serial_queue>("long work");
    queue_->post([this, weak = std::weak_ptr(alive_), does = std::move(does)] {
        const auto outcome = does(*job_);
        loop_.post([this, weak, outcome] {
            if (!weak.expired()) finish(outcome);
        });
    });
}

void long_work::show_now() {
    if (show_timer_) loop_.stop_timer(std::exchange(show_timer_, 0));
    if (!isVisible()) show();
}

void long_work::set_progress(double fraction) {
    const int now = static_cast<int>(std::clamp(fraction, 0.0, 1.0) * steps);
    if (now == shown_step_) return;
    shown_step_ = now;
    bar_->setValue(now);
}

void long_work::reject() {
    if (!job_) return QDialog::reject();
    job_->cancel();
    words_->setText(tr("Stopping. Nothing is left half made."));
    cancel_->setEnabled(false);
}

void long_work::finish(const vistels::result<std::string>& outcome) {
    if (show_timer_) loop_.stop_timer(std::exchange(show_timer_, 0));
    const bool cancelled = job_->is_cancelled();
    queue_.reset();
    job_.reset();
    hide();
    // `then_` may be what destroys this window.
    const done then = std::move(then_);
    then(outcome, cancelled);
}

}  // namespace vistels
