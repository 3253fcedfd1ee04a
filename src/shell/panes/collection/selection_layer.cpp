// SPDX-License-Identifier: GPL-3.0-or-later
#include <QPainter>
#include <algorithm>

#include "shell/kit/controls.h"
#include "shell/kit/theme.h"
#include "shell/panes/collection/collection_layers.h"
#include "shell/panes/collection/collection_metrics.h"

namespace vistels {

namespace {

void paint_ring(QPainter& painter, const QRect& place, const QColor& colour) {
    const double half = collection_sizes.vistel_ring / 2.0;
    painter.setPen(QPen(colour, collection_sizes.vistel_ring));
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(QRectF(place).adjusted(half, half, -half, -half));
}

// The squares at the corners of what is resized.
void paint_corners(QPainter& painter, const QRect& place) {
    const theme& look = theme::current();
    const int side = collection_sizes.vistel_handle;
    painter.setPen(QPen(look.video_label_ground, look.metrics.line));
    painter.setBrush(look.video_label);
    for (const int x : {place.left(), place.right() - side + 1}) {
        for (const int y : {place.top(), place.bottom() - side + 1})
            painter.drawRect(x, y, side - 1, side - 1);
    }
}

}  // namespace

bool collection_handling::holds_name(const std::string& vistel) const {
    return drag ? drag->vistel == vistel && drag->frame.grip.whole : hovered == vistel && hovered_grip.whole;
}

void selection_layer::paint_vistel(QPainter& painter, const vistel_tile& tile, const QRect& place,
                                   const QRect&) const {
    if (tile.vistel.uuid == handling_.ringed) paint_ring(painter, place, theme::current().video_label);
}

void selection_layer::paint_above(QPainter& painter) const {
    paint_grips(painter);
    paint_drop(painter);
    const std::string chosen = current_();
    if (!geometry_.has(chosen)) return;
    const theme& look = theme::current();
    const QRect place = geometry_.place(chosen);
    // Which one is brought into step has to be seen.
    if (handling_.is_aligning) paint_ring(painter, place, look.video_label);
    if (handling_.has_focus) paint_inner_focus_ring(painter, look, QRectF(place));
}

void selection_layer::paint_grips(QPainter& painter) const {
    const auto& drag = handling_.drag;
    const frame_grip& grip = drag ? drag->frame.grip : handling_.hovered_grip;
    const std::string& held = drag ? drag->vistel : handling_.hovered;
    if (!geometry_.has(held) || (drag && drag->shifts) || !grip.holds()) return;
    const bool drags_frame = drag && drag->moves;
    const QRect place = geometry_.place(held);
    if (!grip.whole || drags_frame) paint_ring(painter, place, theme::current().video_label);
    if (!grip.whole) paint_corners(painter, place);
    if (drags_frame) paint_lines(painter);
}

// Those that what is dragged met.
void selection_layer::paint_lines(QPainter& painter) const {
    const theme& look = theme::current();
    const QRect& area = geometry_.area();
    painter.setPen(QPen(look.accent, look.metrics.line));
    if (const auto& guide = handling_.drag->now.guide_x) {
        const int x = std::min(area.right(), area.left() + static_cast<int>(*guide * area.width()));
        painter.drawLine(x, area.top(), x, area.bottom());
    }
    if (const auto& guide = handling_.drag->now.guide_y) {
        const int y = std::min(area.bottom(), area.top() + static_cast<int>(*guide * area.height()));
        painter.drawLine(area.left(), y, area.right(), y);
    }
}

void selection_layer::paint_drop(QPainter& painter) const {
    if (!handling_.drop) return;
    const bool is_over = geometry_.has(*handling_.drop);
    paint_ring(painter, is_over ? geometry_.place(*handling_.drop) : geometry_.room(),
               theme::current().accent);
}

}  // namespace vistels
