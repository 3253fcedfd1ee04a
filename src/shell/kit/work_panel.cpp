// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/kit/work_panel.h"

#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QVBoxLayout>

#include "shell/kit/controls.h"
#include "shell/kit/job_bar.h"
#include "shell/kit/job_words.h"
#include "shell/kit/theme.h"

namespace vistels {

work_panel::work_panel(job_list& list, QWidget* parent)
    : QWidget(parent),
      list_(list),
      title_(make_label({}, type_step::headline, {}, this)),
      words_(make_label({}, type_step::body, QStringLiteral("muted"), this)),
      bar_(new job_bar(this)),
      cancel_(make_push_button(tr("Cancel"), {}, this)) {
    const theme_metrics& metrics = theme::current().metrics;
    setObjectName(QStringLiteral("work_panel"));
    cancel_->setObjectName(QStringLiteral("work_panel.cancel"));
    bar_->setObjectName(QStringLiteral("work_panel.bar"));
    title_->setTextFormat(Qt::PlainText);
    words_->setTextFormat(Qt::PlainText);
    words_->setWordWrap(true);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(metrics.group_gap, metrics.group_gap, metrics.group_gap, metrics.group_gap);
    column->setSpacing(metrics.wide_padding);
    column->addWidget(title_);
    column->addWidget(words_);
    column->addWidget(bar_);
    column->addWidget(cancel_, 0, Qt::AlignRight);
    setMaximumWidth(metrics.filter_width);
    connect(cancel_, &QPushButton::clicked, this, [this] { list_.cancel(id_); });
    changed_ = list_.changed.connect([this] { show_status(); });
    progressed_ = list_.progressed.connect([this](job_list::job_id id) {
        if (id == id_) show_status();
    });
    hide();
}

void work_panel::follow(job_list::job_id id, bool at_once) {
    id_ = id;
    at_once_ = at_once;
    show_status();
}

void work_panel::set_has_place(bool has_place) {
    has_place_ = has_place;
    show_status();
}

void work_panel::show_status() {
    const auto status = list_.find(id_);
    const bool is_shown = status && has_place_ && (at_once_ || status->lasts);
    setVisible(is_shown);
    if (!is_shown) return;
    const bool is_stopping = status->now == job_status::state::stopping;
    title_->setText(job_title(*status));
    words_->setText(is_stopping ? tr("Stopping. Nothing is left half made.")
                                : QString::fromStdString(status->words));
    setAccessibleName(job_title(*status));
    bar_->setAccessibleName(job_title(*status));
    bar_->set_progress(status->progress);
    cancel_->setEnabled(!is_stopping);
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
