// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/panes/collection/buttons_Adjust_Offsets.h"

#include <QHBoxLayout>
#include <chrono>

#include "shell/kit/controls.h"

namespace vistels {

namespace {

constexpr auto first_wait = std::chrono::milliseconds(400);
constexpr auto wait = std::chrono::milliseconds(80);
constexpr int repeats_before_large = 20;
constexpr int large_steps = 5;

}  // namespace

buttons_Adjust_Offsets::buttons_Adjust_Offsets(const QString& name, const QString& less_tip,
                                               const QString& more_tip, QWidget* parent)
    : QWidget(parent) {
    setObjectName(name);
    auto* line = new QHBoxLayout(this);
    line->setContentsMargins(0, 0, 0, 0);
    line->setSpacing(0);
    line->addWidget(add(QStringLiteral("minus"), QStringLiteral("less"), less_tip, -1));
    line->addWidget(add(QStringLiteral("plus"), QStringLiteral("more"), more_tip, 1));
    connect(&timer_, &QTimer::timeout, this, &buttons_Adjust_Offsets::step);
}

icon_button* buttons_Adjust_Offsets::add(const QString& icon, const QString& name, const QString& tip,
                                         int direction) {
    auto* button = new icon_button(icon, tip, this);
    button->setObjectName(objectName() + QLatin1Char('.') + name);
    connect(button, &icon_button::pressed, this, [this, direction] { press(direction); });
    connect(button, &icon_button::released, this, [this] {
        timer_.stop();
        Q_EMIT ended();
    });
    return button;
}

int buttons_Adjust_Offsets::steps_of_repeat(int count) {
    return count <= repeats_before_large ? 1 : large_steps;
}

void buttons_Adjust_Offsets::press(int direction) {
    direction_ = direction;
    repeats_ = 0;
    timer_.start(first_wait);
    Q_EMIT nudged(direction_);
}

void buttons_Adjust_Offsets::step() {
    // What came up unseen (the button was disabled or hidden under the pointer) must not run on.
    bool is_down = false;
    for (const auto* button : findChildren<QAbstractButton*>()) is_down = is_down || button->isDown();
    if (!is_down || !isVisible()) {
        timer_.stop();
        Q_EMIT ended();
        return;
    }
    timer_.start(wait);
    ++repeats_;
    Q_EMIT nudged(direction_ * steps_of_repeat(repeats_));
}

}  // namespace vistels
