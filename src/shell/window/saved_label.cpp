// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/window/saved_label.h"

#include <QFontMetrics>
#include <QPainter>

#include "shell/kit/icons.h"
#include "shell/kit/theme.h"
#include "shell/window/window_metrics.h"

namespace vistels {

saved_label::saved_label(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("saved"));
}

void saved_label::show_nothing() {
    show_state(state::nothing, {});
}

void saved_label::show_saved(const QString& time) {
    show_state(state::saved, time.isEmpty() ? tr("Saved") : tr("Saved %1").arg(time));
    setToolTip(tr("All that was coded is saved."));
}

void saved_label::show_unsaved() {
    show_state(state::unsaved, tr("On record"));
    setToolTip(tr("What was coded is on record and is being saved."));
}

void saved_label::show_failure(const QString& reason) {
    show_state(state::failed, tr("Not saved"));
    setToolTip(reason);
}

void saved_label::show_state(state now, const QString& text) {
    state_ = now;
    text_ = text;
    setAccessibleName(text);
    updateGeometry();
    update();
}

QSize saved_label::sizeHint() const {
    const theme_metrics& metrics = theme::current().metrics;
    // Wide enough for any time, so that nothing beside it moves.
    const QFontMetrics words(theme::font(type_step::secondary));
    const int widest = words.horizontalAdvance(tr("Saved %1").arg(QStringLiteral("00:00:00")));
    return {widest + metrics.icon + metrics.padding + metrics.wide_padding, window_sizes.menu_bar_height};
}

void saved_label::paintEvent(QPaintEvent*) {
    if (state_ == state::nothing) return;
    const theme& look = theme::current();
    const theme_metrics& metrics = look.metrics;
    QPainter painter(this);
    const bool failed = state_ == state::failed;
    const QFont font = theme::font(type_step::secondary);
    const int words = QFontMetrics(font).horizontalAdvance(text_);
    QRect place = rect().adjusted(0, 0, -metrics.wide_padding, 0);
    painter.setFont(font);
    painter.setPen(failed ? look.live : look.muted);
    painter.drawText(place, Qt::AlignRight | Qt::AlignVCenter, text_);
    if (state_ == state::unsaved) return;
    const QPixmap icon = icon_pixmap(failed ? QStringLiteral("warning") : QStringLiteral("check"),
                                     failed ? look.live : look.muted, metrics.icon, devicePixelRatioF());
    painter.drawPixmap(place.right() - words - metrics.padding - metrics.icon, (height() - metrics.icon) / 2,
                       icon);
}

}  // namespace vistels
