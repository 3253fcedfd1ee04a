// SPDX-License-Identifier: GPL-3.0-or-later
// The face of a code window's button.
#include <QPainter>
#include <QPainterPath>
#include <algorithm>

#include "shell/kit/theme.h"
#include "shell/kit/theme_time_text.h"
#include "shell/panes/code_window/code_window_button.h"
#include "shell/panes/code_window/code_window_metrics.h"

namespace vistels {
namespace {

struct face_colours {
    QColor ground;
    QColor edge;
    QColor ink;
    QColor quiet_ink;  // of the count
    QColor band;
};

face_colours colours_of(const theme& look, const code_button& button, const code_button_look& shown) {
    face_colours made;
    if (shown.state.is_down) {
        made.ground = button.colour;
        made.edge = look.clip_edge(button.colour);
        made.ink = ink_on(look, button.colour);
        made.quiet_ink = made.ink;
        made.band = mix(look.clip_ink_dark, button.colour, look.down_band_share);
        return made;
    }
    const double share = shown.is_hovered ? look.button_hover_share : look.button_up_share;
    made.ground = mix(button.colour, look.button_ground, share);
    made.edge = mix(button.colour, look.button_ground, look.edge_share);
    made.ink = look.text;
    made.quiet_ink = look.muted;
    made.band = button.colour;
    if (button.plain_ground) {
        made.ground = *button.plain_ground;
        made.edge = look.clip_edge(made.ground);
        made.ink = ink_on(look, made.ground);
        made.quiet_ink = made.ink;
    } else if (contrast(made.quiet_ink, made.ground) < contrast(made.ink, made.ground) / 2) {
        // Captions on a strong ground are not legible in the muted colour.
        made.quiet_ink = legible_on(look.muted, made.ground);
    }
    return made;
}

void paint_ring(QPainter& painter, const theme& look, const QRectF& face, const QColor& colour) {
    const double away = look.metrics.playhead_gap + look.metrics.focus_ring / 2.0;
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(colour, look.metrics.focus_ring));
    const double radius = look.metrics.radius_button + away;
    painter.drawRoundedRect(face.adjusted(-away, -away, away, away), radius, radius);
}

void paint_ground(QPainter& painter, const theme& look, const code_button& button, const QRectF& face,
                  const face_colours& colours, bool is_blocked) {
    const theme_metrics& metrics = look.metrics;
    QPainterPath shape;
    shape.addRoundedRect(face, metrics.radius_button, metrics.radius_button);
    painter.save();
    painter.setClipPath(shape);
    painter.fillRect(face, is_blocked ? look.button_ground : colours.ground);
    if (is_blocked) {
        painter.setPen(QPen(colours.edge, metrics.hatch));
        for (double x = face.left() - face.height(); x < face.right(); x += metrics.hatch * 2.8) {
            painter.drawLine(QPointF(x, face.bottom()), QPointF(x + face.height(), face.top()));
        }
    }
    QRectF band = face;
    if (button.marks == code_button::band::left) band.setWidth(code_window_sizes.clip_band);
    if (button.marks == code_button::band::below)
        band.setTop(face.bottom() - code_window_sizes.qualifier_band);
    if (button.marks != code_button::band::none) painter.fillRect(band, colours.band);
    painter.restore();
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(colours.edge, metrics.line));
    painter.drawRoundedRect(face.adjusted(0.5, 0.5, -0.5, -0.5), metrics.radius_button,
                            metrics.radius_button);
}

void paint_key_cap(QPainter& painter, const theme& look, const code_button& button, const QRectF& cap,
                   const face_colours& colours, bool is_down) {
    if (button.key.isEmpty()) return;
    painter.setPen(is_down ? colours.ink : look.line);
    painter.setBrush(is_down ? QBrush(Qt::NoBrush) : QBrush(look.field));
    painter.drawRoundedRect(cap.adjusted(0.5, 0.5, -0.5, -0.5), look.metrics.radius_clip,
                            look.metrics.radius_clip);
    painter.setPen(is_down ? colours.ink : look.text);
    painter.setFont(theme::font(type_step::clip_label));
    painter.drawText(cap, Qt::AlignCenter, button.key);
}

void paint_corner(QPainter& painter, const theme& look, const QRectF& place, const face_colours& colours,
                  const code_button_look& shown) {
    if (shown.state.is_blocked) {
        painter.setPen(QPen(look.live, look.metrics.focus_ring));
        const QRectF cross(place.left(), place.center().y() - look.metrics.live_dot / 2.0,
                           look.metrics.live_dot, look.metrics.live_dot);
        painter.drawLine(cross.topLeft(), cross.bottomRight());
        painter.drawLine(cross.topRight(), cross.bottomLeft());
        return;
    }
    const bool has_time = shown.state.is_down && !shown.time.isEmpty();
    if (!has_time && shown.state.count == 0) return;
    painter.setPen(has_time ? colours.ink : colours.quiet_ink);
    draw_time_text(painter, place, Qt::AlignLeft, has_time ? shown.time : QString::number(shown.state.count),
                   theme::font(has_time ? type_step::secondary_strong : type_step::secondary));
}

}  // namespace

void paint_code_button(QPainter& painter, const theme& look, const code_button& button, const QRectF& face,
                       const code_button_look& shown) {
    const theme_metrics& metrics = look.metrics;
    const face_colours colours = colours_of(look, button, shown);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    if (!shown.is_enabled) painter.setOpacity(look.disabled_share);
    paint_ground(painter, look, button, face, colours, shown.state.is_blocked);
    if (shown.state.is_down) paint_ring(painter, look, face, look.selection);
    if (shown.has_focus) paint_ring(painter, look, face, look.accent);

    const code_button_layout words = code_button_layout_of(button, face);
    paint_key_cap(painter, look, button, words.cap, colours, shown.state.is_down);
    if (words.has_corner || shown.state.is_blocked) paint_corner(painter, look, words.corner, colours, shown);
    if (shown.state.is_live) {
        const QRectF dot(words.cap.left() - metrics.grid - metrics.live_dot,
                         words.corner.center().y() - metrics.live_dot / 2.0, metrics.live_dot,
                         metrics.live_dot);
        painter.setPen(QPen(look.clip_ink_dark, metrics.focus_ring));
        painter.setBrush(look.live);
        painter.drawEllipse(dot);
    }
    if (button.shows_name) {
        painter.setFont(words.font);
        painter.setPen(colours.ink);
        painter.drawText(words.name, Qt::AlignLeft | Qt::AlignBottom | Qt::TextWordWrap, words.text);
    }
    painter.restore();
}

}  // namespace vistels
