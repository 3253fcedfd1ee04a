// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/kit/popover.h"

#include <QPainter>
#include <QPainterPath>

#include "shell/kit/controls.h"
#include "shell/kit/theme.h"

namespace vistels {

popover::popover(QWidget* parent, Qt::WindowFlags flags) : QWidget(parent, flags) {}

// Its corners are cut off, which needs no desktop that composes windows.
void popover::resizeEvent(QResizeEvent*) {
    const double radius = theme::current().metrics.radius_button;
    QPainterPath outline;
    outline.addRoundedRect(rect(), radius, radius);
    setMask(QRegion(outline.toFillPolygon().toPolygon()));
}

void popover::paintEvent(QPaintEvent*) {
    const theme& look = theme::current();
    QPainter painter(this);
    painter.fillRect(rect(), look.raised);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(look.line);
    painter.setBrush(look.raised);
    painter.drawRoundedRect(outline_of(rect()), look.metrics.radius_button, look.metrics.radius_button);
}

}  // namespace vistels
