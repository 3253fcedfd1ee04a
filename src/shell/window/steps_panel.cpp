// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/window/steps_panel.h"

#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QPushButton>
#include <QSpinBox>
#include <QVBoxLayout>

#include "shell/kit/theme.h"

namespace vistels {

steps_panel::steps_panel(const step_settings& settings, QWidget* parent)
    : panel(QStringLiteral("steps"), tr("Steps and Lead-In"),
            tr("How far Several Frames Back and On go, and how long before its start a clip is played."),
            parent),
      back_(new QSpinBox(this)),
      on_(new QSpinBox(this)),
      lead_in_(new QDoubleSpinBox(this)) {
    back_->setObjectName(QStringLiteral("steps.back"));
    on_->setObjectName(QStringLiteral("steps.on"));
    lead_in_->setObjectName(QStringLiteral("steps.lead_in"));
    for (QSpinBox* one : {back_, on_}) one->setRange(1, step_settings::most_frames);
    back_->setValue(settings.frames_back);
    on_->setValue(settings.frames_on);
    lead_in_->setDecimals(1);
    lead_in_->setRange(0, step_settings::most_lead_in_seconds);
    lead_in_->setSuffix(tr(" s"));
    lead_in_->setValue(settings.lead_in_seconds);
    auto* form = new QFormLayout;
    form->setSpacing(theme::current().metrics.padding);
    const auto add = [&](const QString& label, QAbstractSpinBox* box) {
        box->setButtonSymbols(QAbstractSpinBox::NoButtons);
        form->addRow(label, box);
    };
    add(tr("Frames &back"), back_);
    add(tr("Frames &on"), on_);
    add(tr("&Lead-in of clips"), lead_in_);
    content().addLayout(form);
    content().addStretch(1);
    add_cancel_and_use();
    back_->setFocus();
}

step_settings steps_panel::chosen() const {
    return {back_->value(), on_->value(), lead_in_->value()};
}

}  // namespace vistels
