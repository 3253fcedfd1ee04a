// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/filter/filter_section.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QVBoxLayout>

#include "shell/filter/filter_count.h"
#include "shell/filter/filter_entry.h"
#include "shell/filter/filter_field.h"
#include "shell/kit/controls.h"
#include "shell/kit/theme.h"

namespace vistels {

filter_section::filter_section(const QString& name, QWidget* parent)
    : QWidget(parent),
      field_(new filter_field(name, this)),
      count_(new filter_count(this)),
      message_(make_label({}, type_step::secondary, QStringLiteral("live"), this)) {
    const theme_metrics& metrics = theme::current().metrics;
    count_->setObjectName(name + QStringLiteral(".count"));
    message_->setObjectName(name + QStringLiteral(".message"));
    message_->setWordWrap(true);
    message_->hide();
    auto* head = new QHBoxLayout;
    head->setSpacing(metrics.padding);
    auto* title = make_label(tr("Filter"), type_step::title, QStringLiteral("muted"), this);
    head->addWidget(title, 1);
    head->addWidget(count_);
    auto* column = new QVBoxLayout(this);
    const int ring = metrics.focus_ring + metrics.line;
    column->setContentsMargins(metrics.wide_padding - ring, metrics.padding, metrics.wide_padding - ring,
                               metrics.padding);
    column->setSpacing(metrics.line);
    head->setContentsMargins(ring, 0, ring, 0);
    message_->setContentsMargins(ring, 0, ring, 0);
    column->addLayout(head);
    column->addWidget(field_);
    column->addWidget(message_);
}

void filter_section::set_entry(filter_entry* entry) {
    if (entry_) entry_->disconnect(this);
    entry_ = entry;
    field_->set_entry(entry);
    count_->follow(entry);
    if (!entry) return message_->hide();
    const auto show_message = [this, entry] {
        message_->setText(entry->message());
        message_->setVisible(!entry->message().isEmpty());
    };
    connect(entry, &filter_entry::message_changed, this, show_message);
    show_message();
}

void filter_section::paintEvent(QPaintEvent*) {
    const theme& look = theme::current();
    QPainter painter(this);
    painter.fillRect(QRect(0, height() - look.metrics.line, width(), look.metrics.line), look.line);
}

}  // namespace vistels
