// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/kit/work_panel.h"

#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QVBoxLayout>

#include "shell/kit/controls.h"
#include "shell/kit/theme.h"

namespace vistels {

work_panel::work_panel(run_loop& loop, QWidget* parent)
    : QWidget(parent),
      title_(make_label({}, type_step::headline, {}, this)),
      words_(make_label({}, type_step::body, QStringLiteral("muted"), this)),
      bar_(new work_bar({}, this)),
      cancel_(make_push_button(tr("Cancel"), {}, this)),
      work_(loop) {
    const theme_metrics& metrics = theme::current().metrics;
    setObjectName(QStringLiteral("work_panel"));
    cancel_->setObjectName(QStringLiteral("work_panel.cancel"));
    bar_->setObjectName(QStringLiteral("work_panel.bar"));
    words_->setWordWrap(true);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(metrics.group_gap, metrics.group_gap, metrics.group_gap, metrics.group_gap);
    column->setSpacing(metrics.wide_padding);
    column->addWidget(title_);
    column->addWidget(words_);
    column->addWidget(bar_);
    column->addWidget(cancel_, 0, Qt::AlignRight);
    setMaximumWidth(metrics.filter_width);
    connect(cancel_, &QPushButton::clicked, this, &work_panel::cancel);
    hide();
}

void work_panel::start(const QString& title, const QString& words, running_work::work does,
                       running_work::done then) {
    title_->setText(title);
    words_->setText(words);
    setAccessibleName(title);
    bar_->setAccessibleName(title);
    bar_->set_progress(0);
    cancel_->setEnabled(true);
    show();
    work_.start(
        std::move(does), [this](double fraction) { bar_->set_progress(fraction); },
        [this, then = std::move(then)](const vistels::result<std::string>& outcome, bool cancelled) {
            hide();
            then(outcome, cancelled);
        });
}

void work_panel::cancel() {
    work_.cancel();
    words_->setText(tr("Stopping. Nothing is left half made."));
    cancel_->setEnabled(false);
}

void work_panel::paintEvent(QPaintEvent*) {
    const theme& look = theme::current();
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(look.line);
    painter.setBrush(look.raised);
    const double radius = look.metrics.radius_button;
    painter.drawRoundedRect(outline_of(rect()), radius, radius);
}

}  // namespace vistels
