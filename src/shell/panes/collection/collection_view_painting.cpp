// SPDX-License-Identifier: GPL-3.0-or-later
// How the collection's view is drawn.
#include <QFontMetrics>
#include <QPaintEvent>
#include <QPainter>
#include <algorithm>

#include "shell/kit/controls.h"
#include "shell/kit/icons.h"
#include "shell/kit/theme.h"
#include "shell/panes/collection/collection_metrics.h"
#include "shell/panes/collection/collection_view.h"
#include "shell/panes/collection/vistel_layout.h"

namespace vistels {

void collection_view::paintEvent(QPaintEvent* event) {
    const theme& look = theme::current();
    QPainter painter(this);
    painter.fillRect(event->rect(), look.video_surround);
    if (tiles_.empty()) {
        if (middle_ && middle_->parentWidget() == this && middle_->isVisible()) return;
        painter.setFont(theme::font(type_step::secondary));
        painter.setPen(theme::dark().muted);
        const QString words =
            has_collection_
                ? tr("There are no movies yet. Space starts the clock, and what is coded is kept.\n"
                     "Drop movies here to add them.")
                : tr("Nothing is open. Open a collection from the side bar,\nor drop movies here.");
        painter.drawText(rect(), Qt::AlignCenter | Qt::TextWordWrap, words);
        return;
    }
    const bool moving = growth_.state() == QAbstractAnimation::Running;
    for (const tile* one : from_back()) {
        const bool on_top = one->vistel.uuid == enlarged_ || one->vistel.uuid == leaving_;
        if (on_top || (!enlarged_.empty() && !moving)) continue;
        if (place(*one).intersects(event->rect())) paint_tile(painter, *one);
    }
    for (const auto* uuid : {&leaving_, &enlarged_}) {
        if (const tile* one = uuid->empty() ? nullptr : find(*uuid)) paint_tile(painter, *one);
    }
    paint_grips(painter);
    paint_drop(painter);
    const tile* chosen = find(current());
    if (!chosen) return;
    // Which one is brought into step has to be seen.
    if (aligning_) paint_ring(painter, place(*chosen));
    if (hasFocus()) paint_inner_focus_ring(painter, look, QRectF(place(*chosen)));
}

void collection_view::paint_tile(QPainter& painter, const tile& one) const {
    const theme& look = theme::current();
    const QRect view = place(one);
    const bool has_picture = !one.picture.isNull() && one.vistel.problem.isEmpty() && !one.in_gap;
    if (has_picture) {
        const QRect target = picture_in(view, one.aspect);
        if (target != view || one.vistel.is_waiting) painter.fillRect(view, look.video_surround);
        painter.setOpacity(one.vistel.is_waiting ? look.waiting_share : 1);
        painter.drawImage(target, one.picture);
        painter.setOpacity(1);
    } else if (one.in_gap && one.vistel.problem.isEmpty()) {
        paint_gap(painter, view, one);
    } else {
        painter.fillRect(view, look.video_surround);
        painter.setOpacity(one.vistel.is_waiting && one.vistel.problem.isEmpty() ? look.waiting_share : 1);
        paint_words(painter, view, one);
        painter.setOpacity(1);
    }
    if (!one.overlay.isNull() && one.vistel.problem.isEmpty()) paint_overlay(painter, view, one);
    if (one.vistel.problem.isEmpty()) paint_chip(painter, view, one);
    if (!one.note.isEmpty()) paint_note(painter, view, one);
    if (one.vistel.uuid == ringed_) paint_ring(painter, view);
}

void collection_view::paint_overlay(QPainter& painter, const QRect& view, const tile& one) const {
    const QRectF whole = picture_in(view, one.aspect);
    const rectangle& share = one.overlay_frame;
    const QRectF target(whole.left() + share.x * whole.width(), whole.top() + share.y * whole.height(),
                        share.width * whole.width(), share.height * whole.height());
    painter.save();
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.setOpacity(one.overlay_opacity);
    painter.drawImage(target, one.overlay);
    painter.restore();
}

void collection_view::paint_ring(QPainter& painter, const QRect& view) const {
    const theme& look = theme::current();
    const double half = collection_sizes.vistel_ring / 2.0;
    painter.setPen(QPen(look.video_label, collection_sizes.vistel_ring));
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(QRectF(view).adjusted(half, half, -half, -half));
}

// The blank picture where nothing was filmed, with when there is a picture again.
void collection_view::paint_gap(QPainter& painter, const QRect& view, const tile& one) const {
    const theme& look = theme::dark();
    const theme_metrics& metrics = look.metrics;
    painter.fillRect(view, look.video_surround);
    painter.fillRect(picture_in(view, one.aspect), look.pane);
    const QFontMetrics words(theme::font(type_step::secondary));
    QRect line(view.left(), view.center().y() - metrics.icon, view.width(), 2 * metrics.icon);
    // In a small view the words stand above the name.
    const QRect chip = chip_in(view, one);
    if (!chip.isEmpty() && chip.top() <= line.center().y() + words.height() / 2) {
        line =
            QRect(view.left(), view.top(), view.width(), std::max(chip.top() - view.top(), words.height()));
    }
    painter.setFont(theme::font(type_step::secondary));
    painter.setPen(look.muted);
    const int beside = 2 * metrics.grid + (one.marks_start ? metrics.icon + metrics.grid : 0);
    const QString text = words.elidedText(words_in(one.vistel.uuid), Qt::ElideRight, view.width() - beside);
    if (one.marks_start) {
        const int width = metrics.icon + metrics.grid + words.horizontalAdvance(text);
        line.setLeft(view.left() + std::max(metrics.grid, (view.width() - width) / 2));
        painter.drawPixmap(
            line.left(), line.center().y() - metrics.icon / 2,
            icon_pixmap(QStringLiteral("mark-in"), look.warning, metrics.icon, devicePixelRatioF()));
        line.setLeft(line.left() + metrics.icon + metrics.grid);
        painter.drawText(line, Qt::AlignLeft | Qt::AlignVCenter, text);
        return;
    }
    painter.drawText(line, Qt::AlignCenter, text);
}

void collection_view::paint_words(QPainter& painter, const QRect& view, const tile& one) const {
    // The surround is dark in both themes, so the words are the dark theme's.
    const theme& look = theme::dark();
    const theme_metrics& metrics = look.metrics;
    QRect inside =
        view.adjusted(metrics.group_gap, metrics.wide_padding, -metrics.group_gap, -metrics.wide_padding);
    const QString words = words_in(one.vistel.uuid);
    if (one.vistel.problem.isEmpty()) {
        painter.setFont(theme::font(type_step::secondary));
        painter.setPen(look.muted);
        painter.drawText(inside, Qt::AlignCenter | Qt::TextWordWrap, words);
        return;
    }
    painter.drawPixmap(inside.topLeft(), icon_pixmap(QStringLiteral("missing-movie"), look.warning,
                                                     metrics.icon, devicePixelRatioF()));
    const QFont strong = theme::font(type_step::title);
    const QFontMetrics strong_metrics(strong);
    QRect head = inside.adjusted(metrics.icon + metrics.padding, 0, 0, 0);
    head.setHeight(std::max(metrics.icon, strong_metrics.height()));
    painter.setFont(strong);
    painter.setPen(look.warning);
    painter.drawText(
        head, Qt::AlignLeft | Qt::AlignVCenter,
        strong_metrics.elidedText(tr("%1: no picture").arg(one.vistel.name), Qt::ElideRight, head.width()));
    inside.setTop(head.bottom() + metrics.padding);
    const QFont usual = theme::font(type_step::secondary);
    const int needed = QFontMetrics(usual).boundingRect(inside, Qt::TextWordWrap, words).height();
    painter.setFont(needed <= inside.height() ? usual : theme::font(type_step::smallest));
    painter.setPen(look.text);
    painter.drawText(inside, Qt::AlignLeft | Qt::AlignTop | Qt::TextWordWrap, words);
}

QRect collection_view::chip_in(const QRect& view, const tile& one) const {
    const QString name = chip_words_of(one);
    if (name.isEmpty() || view.isEmpty()) return {};
    const theme_metrics& metrics = theme::current().metrics;
    const QFontMetrics words(theme::font(type_step::secondary_strong));
    int width = words.horizontalAdvance(name) + 2 * metrics.padding;
    if (one.vistel.has_sound) width += metrics.icon + metrics.grid;
    const int height = collection_sizes.vistel_label_height;
    return {view.left() + metrics.padding, view.bottom() - metrics.padding - height + 1,
            std::min(width, view.width() - 2 * metrics.padding), height};
}

void collection_view::paint_chip(QPainter& painter, const QRect& view, const tile& one) const {
    const theme& look = theme::current();
    const theme_metrics& metrics = look.metrics;
    QRect chip = chip_in(view, one);
    if (chip.isEmpty()) return;
    const QFont font = theme::font(type_step::secondary_strong);
    const bool is_held = (drag_ && drag_->vistel == one.vistel.uuid && drag_->frame.grip.whole) ||
                         (!drag_ && hovered_ == one.vistel.uuid && hovered_grip_.whole);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(is_held ? QPen(look.video_label, metrics.line) : QPen(Qt::NoPen));
    painter.setBrush(look.video_label_ground);
    painter.drawRoundedRect(is_held ? outline_of(chip) : QRectF(chip), metrics.radius_clip,
                            metrics.radius_clip);
    chip.adjust(metrics.padding, 0, -metrics.padding, 0);
    if (one.vistel.has_sound) {
        painter.drawPixmap(
            chip.left(), chip.top() + (chip.height() - metrics.icon) / 2,
            icon_pixmap(QStringLiteral("volume"), look.video_label, metrics.icon, devicePixelRatioF()));
        chip.setLeft(chip.left() + metrics.icon + metrics.grid);
    }
    painter.setFont(font);
    painter.setPen(look.video_label);
    // Cut only where the vistel is too narrow for it.
    const QFontMetrics words(font);
    const QString name = chip_words_of(one);
    const bool fits = words.horizontalAdvance(name) <= chip.width();
    painter.drawText(chip, Qt::AlignLeft | Qt::AlignVCenter,
                     fits ? name : words.elidedText(name, Qt::ElideRight, chip.width()));
    painter.restore();
}

void collection_view::paint_note(QPainter& painter, const QRect& view, const tile& one) const {
    const theme& look = theme::current();
    const theme_metrics& metrics = look.metrics;
    painter.setFont(theme::font(type_step::headline));
    const QSize words = painter.fontMetrics().size(0, one.note);
    QRect ground(QPoint(), words + QSize(2 * metrics.wide_padding, 2 * metrics.padding));
    // At the edge: the middle is what is looked at while vistels are brought into step.
    ground.moveTo(view.left() + metrics.padding, view.top() + metrics.padding);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(look.video_label_ground);
    painter.drawRoundedRect(ground, metrics.radius_control, metrics.radius_control);
    painter.setPen(look.video_label);
    painter.drawText(ground, Qt::AlignCenter, one.note);
    painter.restore();
}

// The squares at the corners of what is resized, and the lines that it met.
void collection_view::paint_grips(QPainter& painter) const {
    const theme& look = theme::current();
    const theme_metrics& metrics = look.metrics;
    const bool drags_frame = drag_ && drag_->moves && !drag_->shifts;
    const frame_grip& grip = drag_ ? drag_->frame.grip : hovered_grip_;
    const tile* held = find(drag_ ? drag_->vistel : hovered_);
    if (!held || (drag_ && drag_->shifts) || !grip.holds()) return;
    const QRect view = place(*held);
    if (!grip.whole || drags_frame) paint_ring(painter, view);
    if (!grip.whole) {
        const int side = collection_sizes.vistel_handle;
        painter.setPen(QPen(look.video_label_ground, metrics.line));
        painter.setBrush(look.video_label);
        for (const int x : {view.left(), view.right() - side + 1}) {
            for (const int y : {view.top(), view.bottom() - side + 1})
                painter.drawRect(x, y, side - 1, side - 1);
        }
    }
    if (!drags_frame) return;
    painter.setPen(QPen(look.accent, metrics.line));
    if (const auto& guide = drag_->now.guide_x) {
        const int x = std::min(area_.right(), area_.left() + static_cast<int>(*guide * area_.width()));
        painter.drawLine(x, area_.top(), x, area_.bottom());
    }
    if (const auto& guide = drag_->now.guide_y) {
        const int y = std::min(area_.bottom(), area_.top() + static_cast<int>(*guide * area_.height()));
        painter.drawLine(area_.left(), y, area_.right(), y);
    }
}

void collection_view::paint_drop(QPainter& painter) const {
    if (!drop_) return;
    const theme& look = theme::current();
    const tile* over = find(*drop_);
    const double half = collection_sizes.vistel_ring / 2.0;
    painter.setPen(QPen(look.accent, collection_sizes.vistel_ring));
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(QRectF(over ? place(*over) : rect()).adjusted(half, half, -half, -half));
}

}  // namespace vistels
