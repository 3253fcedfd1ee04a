// SPDX-License-Identifier: GPL-3.0-or-later
#include <QCoreApplication>
#include <QFontMetrics>
#include <QPainter>
#include <algorithm>

#include "shell/kit/icons.h"
#include "shell/kit/theme.h"
#include "shell/panes/collection/collection_layers.h"

namespace vistels {

namespace {

void paint_overlay(QPainter& painter, const vistel_tile& tile, const QRectF& whole) {
    const rectangle& share = tile.overlay_frame;
    const QRectF target(whole.left() + share.x * whole.width(), whole.top() + share.y * whole.height(),
                        share.width * whole.width(), share.height * whole.height());
    painter.save();
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.setOpacity(tile.overlay_opacity);
    painter.drawImage(target, tile.overlay);
    painter.restore();
}

QPixmap warning_icon(const QPainter& painter, const QString& name) {
    const theme& look = theme::dark();
    return icon_pixmap(name, look.warning, look.metrics.icon, painter.device()->devicePixelRatioF());
}

// The blank picture where nothing was filmed, with when there is a picture again.
void paint_gap(QPainter& painter, const vistel_tile& tile, const QRect& view, const QRect& picture) {
    const theme& look = theme::dark();
    const theme_metrics& metrics = look.metrics;
    painter.fillRect(view, look.video_surround);
    painter.fillRect(picture, look.pane);
    const QFontMetrics words(theme::font(type_step::secondary));
    QRect line(view.left(), view.center().y() - metrics.icon, view.width(), 2 * metrics.icon);
    // In a small view the words stand above the name.
    const QRect chip = chip_layer::chip_in(view, tile);
    if (!chip.isEmpty() && chip.top() <= line.center().y() + words.height() / 2) {
        line =
            QRect(view.left(), view.top(), view.width(), std::max(chip.top() - view.top(), words.height()));
    }
    painter.setFont(theme::font(type_step::secondary));
    painter.setPen(look.muted);
    const int beside = 2 * metrics.grid + (tile.marks_start ? metrics.icon + metrics.grid : 0);
    const QString text = words.elidedText(words_in_place(tile), Qt::ElideRight, view.width() - beside);
    if (tile.marks_start) {
        const int width = metrics.icon + metrics.grid + words.horizontalAdvance(text);
        line.setLeft(view.left() + std::max(metrics.grid, (view.width() - width) / 2));
        painter.drawPixmap(line.left(), line.center().y() - metrics.icon / 2,
                           warning_icon(painter, QStringLiteral("mark-in")));
        line.setLeft(line.left() + metrics.icon + metrics.grid);
        painter.drawText(line, Qt::AlignLeft | Qt::AlignVCenter, text);
        return;
    }
    painter.drawText(line, Qt::AlignCenter, text);
}

void paint_problem(QPainter& painter, const vistel_tile& tile, QRect inside) {
    const theme& look = theme::dark();
    const theme_metrics& metrics = look.metrics;
    painter.drawPixmap(inside.topLeft(), warning_icon(painter, QStringLiteral("missing-movie")));
    const QFont strong = theme::font(type_step::title);
    const QFontMetrics strong_metrics(strong);
    QRect head = inside.adjusted(metrics.icon + metrics.padding, 0, 0, 0);
    head.setHeight(std::max(metrics.icon, strong_metrics.height()));
    painter.setFont(strong);
    painter.setPen(look.warning);
    const QString title =
        QCoreApplication::translate("vistels::collection_view", "%1: no picture").arg(tile.vistel.name);
    painter.drawText(head, Qt::AlignLeft | Qt::AlignVCenter,
                     strong_metrics.elidedText(title, Qt::ElideRight, head.width()));
    inside.setTop(head.bottom() + metrics.padding);
    const QString words = words_in_place(tile);
    const QFont usual = theme::font(type_step::secondary);
    const int needed = QFontMetrics(usual).boundingRect(inside, Qt::TextWordWrap, words).height();
    painter.setFont(needed <= inside.height() ? usual : theme::font(type_step::smallest));
    painter.setPen(look.text);
    painter.drawText(inside, Qt::AlignLeft | Qt::AlignTop | Qt::TextWordWrap, words);
}

// The surround is dark in both themes, so the words are the dark theme's.
void paint_words(QPainter& painter, const vistel_tile& tile, const QRect& view) {
    const theme& look = theme::dark();
    const theme_metrics& metrics = look.metrics;
    const QRect inside =
        view.adjusted(metrics.group_gap, metrics.wide_padding, -metrics.group_gap, -metrics.wide_padding);
    if (tile.vistel.problem) return paint_problem(painter, tile, inside);
    painter.setFont(theme::font(type_step::secondary));
    painter.setPen(look.muted);
    painter.drawText(inside, Qt::AlignCenter | Qt::TextWordWrap, words_in_place(tile));
}

}  // namespace

void picture_layer::paint_vistel(QPainter& painter, const vistel_tile& tile, const QRect& place,
                                 const QRect& picture) const {
    const theme& look = theme::current();
    const bool has_problem = bool(tile.vistel.problem);
    const bool waits = tile.vistel.is_waiting && !has_problem;
    if (!tile.picture.isNull() && !has_problem && !tile.in_gap) {
        if (picture != place || waits) painter.fillRect(place, look.video_surround);
        painter.setOpacity(waits ? look.waiting_share : 1);
        painter.drawImage(picture, tile.picture);
    } else if (tile.in_gap && !has_problem) {
        paint_gap(painter, tile, place, picture);
    } else {
        painter.fillRect(place, look.video_surround);
        painter.setOpacity(waits ? look.waiting_share : 1);
        paint_words(painter, tile, place);
    }
    painter.setOpacity(1);
    if (!tile.overlay.isNull() && !has_problem) paint_overlay(painter, tile, QRectF(picture));
}

}  // namespace vistels
