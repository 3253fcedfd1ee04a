// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/kit/panel.h"

#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include "shell/kit/controls.h"
#include "shell/kit/theme.h"

namespace vistels {

panel::panel(const QString& name, const QString& title, const QString& words, QWidget* parent)
    : QDialog(parent), content_(new QVBoxLayout), buttons_(new QHBoxLayout) {
    const theme_metrics& metrics = theme::current().metrics;
    setObjectName(name);
    setWindowTitle(title);
    setAccessibleDescription(words);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(metrics.group_gap, metrics.group_gap, metrics.group_gap, metrics.group_gap);
    column->setSpacing(metrics.wide_padding);
    column->addWidget(make_label(title, type_step::headline, {}, this));
    auto* explanation = make_label(words, type_step::body, QStringLiteral("muted"), this);
    explanation->setWordWrap(true);
    column->addWidget(explanation);
    content_->setSpacing(metrics.padding);
    column->addLayout(content_, 1);
    column->addSpacing(metrics.grid);
    auto* row = static_cast<QHBoxLayout*>(buttons_);
    row->setSpacing(metrics.padding);
    row->addStretch(1);
    column->addLayout(row);
    setFixedWidth(metrics.filter_width);
}

QPushButton* panel::add_button(const QString& name, const QString& words, const QString& kind) {
    auto* button = make_push_button(words, kind, this);
    button->setObjectName(objectName() + QLatin1Char('.') + name);
    buttons_->addWidget(button);
    return button;
}

void panel::add_cancel_and_use() {
    auto* cancel = add_button(QStringLiteral("cancel"), tr("Cancel"), {});
    auto* keep = add_button(QStringLiteral("keep"), tr("Use This"), QStringLiteral("first"));
    keep->setDefault(true);
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    connect(keep, &QPushButton::clicked, this, &QDialog::accept);
}

}  // namespace vistels
