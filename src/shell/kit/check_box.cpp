// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/kit/check_box.h"

#include <QFontMetrics>
#include <QPainter>

#include "shell/kit/controls.h"
#include "shell/kit/icons.h"
#include "shell/kit/theme.h"

namespace vistels {

check_box::check_box(const QString& words, QWidget* parent) : QCheckBox(words, parent) {
    setFocusPolicy(Qt::StrongFocus);
}

QSize check_box::sizeHint() const {
    const theme_metrics& metrics = theme::current().metrics;
    const QFontMetrics words(theme::font(type_step::body));
    return {metrics.icon + metrics.padding + words.size(Qt::TextShowMnemonic, text()).width() + metrics.grid,
            metrics.field_height};
}

void check_box::paintEvent(QPaintEvent*) {
    const theme& look = theme::current();
    const theme_metrics& metrics = look.metrics;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (!isEnabled()) painter.setOpacity(look.disabled_share);
    const QRect box(metrics.focus_ring, (height() - metrics.icon) / 2, metrics.icon, metrics.icon);
    painter.setPen(QPen(isChecked() ? look.accent : look.edge, metrics.line));
    painter.setBrush(isChecked() ? look.accent : isDown() ? look.hover : look.field);
    painter.drawRoundedRect(outline_of(box), metrics.radius_clip, metrics.radius_clip);
    if (isChecked()) {
        painter.drawPixmap(
            box, icon_pixmap(QStringLiteral("check"), look.on_accent, metrics.icon, devicePixelRatioF()));
    }
    painter.setFont(theme::font(type_step::body));
    painter.setPen(look.text);
    const QRect words = rect().adjusted(box.right() + metrics.padding, 0, 0, 0);
    painter.drawText(words, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextShowMnemonic, text());
    if (!hasFocus()) return;
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(look.accent, metrics.focus_ring));
    painter.drawRoundedRect(QRectF(box).adjusted(-1, -1, 1, 1), metrics.radius_control,
                            metrics.radius_control);
}

}  // namespace vistels
