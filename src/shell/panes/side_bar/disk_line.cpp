// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/panes/side_bar/disk_line.h"

#include <QFontMetrics>
#include <QPainter>

#include "shell/kit/icons.h"
#include "shell/kit/theme.h"
#include "shell/panes/side_bar/content_model.h"

namespace vistels {

disk_line::disk_line(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("content.disk"));
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

QSize disk_line::sizeHint() const {
    const theme_metrics& metrics = theme::current().metrics;
    return {0, theme::line_height(type_step::smallest) + 2 * metrics.wide_padding + metrics.grid};
}

void disk_line::set_space(const QString& vault, const volume_space& space, bool limited) {
    if (!(space.total_bytes > 0)) return;
    used_share_ = 1 - space.free_bytes / space.total_bytes;
    vault_ = tr("%1 disk").arg(vault);
    limited_ = limited;
    text_ = tr("%1 free").arg(space_text(space.free_bytes));
    const QString whole = tr("%1 of %2 free (%3 %)")
                              .arg(space_text(space.free_bytes), space_text(space.total_bytes))
                              .arg(space.free_percent(), 0, 'f', 0);
    setAccessibleName(limited ? tr("%1 nearly full: %2").arg(vault_, whole)
                              : tr("%1: %2").arg(vault_, whole));
    setToolTip(accessibleName());
    update();
}

void disk_line::paintEvent(QPaintEvent*) {
    if (text_.isEmpty()) return;
    const theme& look = theme::current();
    const theme_metrics& metrics = look.metrics;
    QPainter painter(this);
    const QRect inside = rect().adjusted(metrics.wide_padding, metrics.padding, -metrics.wide_padding, 0);
    const int text_height = theme::line_height(type_step::smallest);
    const QRect words(inside.left(), inside.top(), inside.width(), text_height);
    const QFont font = theme::font(type_step::smallest);
    painter.setFont(font);
    painter.setPen(limited_ ? look.warning : look.muted);
    painter.drawText(words, Qt::AlignRight | Qt::AlignVCenter, text_);
    int right = words.width() - QFontMetrics(font).horizontalAdvance(text_) - metrics.padding;
    if (limited_) {
        right -= metrics.icon;
        painter.drawPixmap(
            words.left() + right + metrics.grid, words.center().y() - metrics.icon / 2 + 1,
            icon_pixmap(QStringLiteral("warning"), look.warning, metrics.icon, devicePixelRatioF()));
    }
    painter.setPen(look.muted);
    painter.drawText(words, Qt::AlignLeft | Qt::AlignVCenter,
                     QFontMetrics(font).elidedText(vault_, Qt::ElideRight, right));
    QRectF bar(inside.left(), words.bottom() + metrics.grid, inside.width(), metrics.slider_groove);
    painter.fillRect(bar, look.line);
    bar.setWidth(bar.width() * used_share_);
    painter.fillRect(bar, limited_ ? look.warning : look.edge);
}

}  // namespace vistels
