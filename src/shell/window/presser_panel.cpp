// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/window/presser_panel.h"

#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QPushButton>
#include <QSpinBox>
#include <QVBoxLayout>

#include "shell/kit/check_box.h"
#include "shell/kit/theme.h"

namespace vistels {

presser_panel::presser_panel(const test_press_settings& settings, QWidget* parent)
    : panel(QStringLiteral("presser"), tr("Press Buttons Automatically"),
            tr("Buttons of the code window are pressed at random, to try it out. What they make goes into "
               "the timeline that is open here, and can be taken back."),
            parent),
      before_(settings),
      is_on_(new check_box(tr("&Press buttons of this event"), this)),
      buttons_(new QSpinBox(this)),
      seconds_(new QDoubleSpinBox(this)),
      deletes_(new check_box(tr("&Delete some of the clips that they made lately"), this)) {
    is_on_->setObjectName(QStringLiteral("presser.on"));
    is_on_->setToolTip(tr("Until it is turned off, or the event is closed"));
    is_on_->setChecked(settings.presses_buttons);
    buttons_->setObjectName(QStringLiteral("presser.buttons"));
    buttons_->setAccessibleName(tr("Buttons each time"));
    buttons_->setRange(1, test_press_settings::most_buttons);
    buttons_->setValue(static_cast<int>(settings.buttons_each_cycle));
    seconds_->setObjectName(QStringLiteral("presser.seconds"));
    seconds_->setAccessibleName(tr("Seconds from one time to the next"));
    seconds_->setDecimals(2);
    seconds_->setRange(test_press_settings::least_seconds, test_press_settings::most_seconds);
    seconds_->setSuffix(tr(" s"));
    seconds_->setValue(settings.seconds_between_cycles);
    seconds_shown_ = seconds_->value();
    for (QAbstractSpinBox* one : std::initializer_list<QAbstractSpinBox*>{buttons_, seconds_})
        one->setButtonSymbols(QAbstractSpinBox::NoButtons);
    deletes_->setObjectName(QStringLiteral("presser.delete"));
    deletes_->setToolTip(tr("Now and then, and no clip that anybody else had a part in"));
    deletes_->setChecked(settings.deletes_recent_clips);
    auto* form = new QFormLayout;
    form->setSpacing(theme::current().metrics.padding);
    form->addRow(tr("&Buttons each time"), buttons_);
    form->addRow(tr("&Seconds from one time to the next"), seconds_);
    content().addWidget(is_on_);
    content().addLayout(form);
    content().addWidget(deletes_);
    content().addStretch(1);
    add_cancel_and_use();
    is_on_->setFocus();
}

test_press_settings presser_panel::chosen() const {
    test_press_settings chosen = before_;
    chosen.presses_buttons = is_on_->isChecked();
    chosen.buttons_each_cycle = buttons_->value();
    if (seconds_->value() != seconds_shown_) chosen.seconds_between_cycles = seconds_->value();
    chosen.deletes_recent_clips = deletes_->isChecked();
    return chosen;
}

}  // namespace vistels
