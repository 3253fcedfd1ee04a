// SPDX-License-Identifier: GPL-3.0-or-later
#include <QFontMetrics>
#include <QPainter>
#include <algorithm>

#include "shell/kit/controls.h"
#include "shell/kit/icons.h"
#include "shell/kit/theme.h"
#include "shell/panes/collection/collection_layers.h"
#include "shell/panes/collection/collection_metrics.h"

namespace vistels {

namespace {

void paint_chip(QPainter& painter, const vistel_tile& tile, QRect chip, bool is_held) {
    const theme& look = theme::current();
    const theme_metrics& metrics = look.metrics;
    const QFont font = theme::font(type_step::secondary_strong);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(is_held ? QPen(look.video_label, metrics.line) : QPen(Qt::NoPen));
    painter.setBrush(look.video_label_ground);
    painter.drawRoundedRect(is_held ? outline_of(chip) : QRectF(chip), metrics.radius_clip,
                            metrics.radius_clip);
    chip.adjust(metrics.padding, 0, -metrics.padding, 0);
    if (tile.vistel.has_sound) {
        painter.drawPixmap(chip.left(), chip.top() + (chip.height() - metrics.icon) / 2,
                           icon_pixmap(QStringLiteral("volume"), look.video_label, metrics.icon,
                                       painter.device()->devicePixelRatioF()));
        chip.setLeft(chip.left() + metrics.icon + metrics.grid);
    }
    painter.setFont(font);
    painter.setPen(look.video_label);
    // Cut only where the vistel is too narrow for it.
    const QFontMetrics words(font);
    const QString name = chip_words_of(tile);
    const bool fits = words.horizontalAdvance(name) <= chip.width();
    painter.drawText(chip, Qt::AlignLeft | Qt::AlignVCenter,
                     fits ? name : words.elidedText(name, Qt::ElideRight, chip.width()));
    painter.restore();
}

void paint_note(QPainter& painter, const QString& note, const QRect& place) {
    const theme& look = theme::current();
    const theme_metrics& metrics = look.metrics;
    painter.setFont(theme::font(type_step::headline));
    const QSize words = painter.fontMetrics().size(0, note);
    QRect ground(QPoint(), words + QSize(2 * metrics.wide_padding, 2 * metrics.padding));
    // At the edge: the middle is what is looked at while vistels are brought into step.
    ground.moveTo(place.left() + metrics.padding, place.top() + metrics.padding);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(look.video_label_ground);
    painter.drawRoundedRect(ground, metrics.radius_control, metrics.radius_control);
    painter.setPen(look.video_label);
    painter.drawText(ground, Qt::AlignCenter, note);
    painter.restore();
}

}  // namespace

QRect chip_layer::chip_in(const QRect& place, const vistel_tile& tile) {
    const QString name = chip_words_of(tile);
    if (name.isEmpty() || place.isEmpty()) return {};
    const theme_metrics& metrics = theme::current().metrics;
    const QFontMetrics words(theme::font(type_step::secondary_strong));
    int width = words.horizontalAdvance(name) + 2 * metrics.padding;
    if (tile.vistel.has_sound) width += metrics.icon + metrics.grid;
    const int height = collection_sizes.vistel_label_height;
    return {place.left() + metrics.padding, place.bottom() - metrics.padding - height + 1,
            std::min(width, place.width() - 2 * metrics.padding), height};
}

void chip_layer::paint_vistel(QPainter& painter, const vistel_tile& tile, const QRect& place,
                              const QRect&) const {
    const QRect chip = chip_in(place, tile);
    if (!chip.isEmpty()) paint_chip(painter, tile, chip, handling_.holds_name(tile.vistel.uuid));
    if (!tile.note.isEmpty()) paint_note(painter, tile.note, place);
}

}  // namespace vistels
