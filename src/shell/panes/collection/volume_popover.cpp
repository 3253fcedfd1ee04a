// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/panes/collection/volume_popover.h"

#include <QFontMetrics>
#include <QGridLayout>
#include <QScreen>
#include <algorithm>
#include <cmath>

#include "shell/kit/controls.h"
#include "shell/kit/theme.h"

namespace vistels {

namespace {

constexpr int slider_widths = 3;  // of the transport's

QString percent_words(double volume) {
    return volume_popover::tr("%1 %").arg(std::lround(volume * 100));
}

}  // namespace

volume_popover::volume_popover(QWidget* parent) : popover(parent) {
    const theme_metrics& metrics = theme::current().metrics;
    setObjectName(QStringLiteral("volumes"));
    setAccessibleName(tr("Volumes"));
    auto* grid = new QGridLayout(this);
    grid->setContentsMargins(metrics.wide_padding, metrics.wide_padding, metrics.wide_padding,
                             metrics.wide_padding);
    grid->setHorizontalSpacing(metrics.wide_padding);
    grid->setVerticalSpacing(metrics.padding);
    event_ = add_line(*grid, tr("This event"), "volumes.event");
    application_ = add_line(*grid, tr("All of Vistels"), "volumes.application");
    connect(event_.slider, &value_slider::moved, this, &volume_popover::volume_asked);
    connect(application_.slider, &value_slider::moved, this, &volume_popover::application_volume_asked);
    for (const value_slider* one : {event_.slider, application_.slider})
        connect(one, &value_slider::drag_ended, this, &volume_popover::chosen);
}

volume_popover::line volume_popover::add_line(QGridLayout& grid, const QString& words, const char* name) {
    const theme_metrics& metrics = theme::current().metrics;
    const line made{new value_slider(this),
                    make_label({}, type_step::secondary, QStringLiteral("muted"), this)};
    made.slider->setObjectName(QLatin1String(name));
    made.slider->setAccessibleName(tr("Volume: %1").arg(words));
    made.slider->setFixedWidth(slider_widths * metrics.volume_width);
    made.percent->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    made.percent->setFixedWidth(
        QFontMetrics(theme::font(type_step::secondary)).horizontalAdvance(percent_words(1)));
    const int row = grid.rowCount();
    grid.addWidget(make_label(words, type_step::body, {}, this), row, 0);
    grid.addWidget(made.slider, row, 1);
    grid.addWidget(made.percent, row, 2);
    return made;
}

void volume_popover::show_value(const line& one, double volume) {
    one.slider->set_value(volume);
    one.percent->setText(percent_words(volume));
}

void volume_popover::set_volumes(double event, double application) {
    show_value(event_, event);
    show_value(application_, application);
}

void volume_popover::show_above(const QWidget* control) {
    adjustSize();
    const QRect screen = control->screen()->availableGeometry();
    const QPoint corner = control->mapToGlobal(QPoint(control->width(), 0));
    const int below = control->mapToGlobal(QPoint(0, control->height())).y();
    const int top = corner.y() - height() >= screen.top() ? corner.y() - height() : below;
    const int left = std::clamp(corner.x() - width(), screen.left(),
                                std::max(screen.left(), screen.right() + 1 - width()));
    move(left, top);
    show();
    event_.slider->setFocus(Qt::PopupFocusReason);
}

}  // namespace vistels
