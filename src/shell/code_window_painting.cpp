// SPDX-License-Identifier: GPL-3.0-or-later
// The face of a code window's button.
#include <QPainter>
#include <QPainterPath>
#include <algorithm>

#include "shell/code_window_button.h"
#include "shell/theme.h"
#include "shell/theme_time_text.h"

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
    if (button.marks == code_button::band::left) band.setWidth(metrics.clip_band);
    if (button.marks == code_button::band::below) band.setTop(face.bottom() - metrics.qualifier_band);
    if (button.marks != code_button::band::none) painter.fillRect(band, colours.band);
    painter.restore();
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(colours.edge, metrics.line));
    painter.drawRoundedRect(face.adjusted(0.5, 0.5, -0.5, -0.5), metrics.radius_button,
                            metrics.radius_button);
}

// Returns its left end.
double paint_key_cap(QPainter& painter, const theme& look, const code_button& button, const QRectF& face,
                     const face_colours& colours, bool is_down) {
    if (button.key.isEmpty()) return face.right() - look.metrics.grid;
    const QFont font = theme::font(type_step::clip_label);
    const int side = look.metrics.key_cap;
    const double wide =
        std::max<double>(side, QFontMetricsF(font).horizontalAdvance(button.key) + look.metrics.padding);
    const QRectF cap(face.right() - look.metrics.grid - wide, face.top() + look.metrics.grid, wide, side);
    painter.setPen(is_down ? colours.ink : look.line);
    painter.setBrush(is_down ? QBrush(Qt::NoBrush) : QBrush(look.field));
    painter.drawRoundedRect(cap.adjusted(0.5, 0.5, -0.5, -0.5), look.metrics.radius_clip,
                            look.metrics.radius_clip);
    painter.setPen(is_down ? colours.ink : look.text);
    painter.setFont(font);
    painter.drawText(cap, Qt::AlignCenter, button.key);
    return cap.left();
}

void paint_name(QPainter& painter, const code_button& button, const QRectF& place, const QColor& ink) {
    const bool is_clip = button.marks != code_button::band::below;
    QFont font = theme::font(is_clip ? type_step::button : type_step::qualifier_button);
    if (QFontMetricsF(font).horizontalAdvance(button.name) > place.width()) {
        QFont smaller = theme::font(type_step::clip_label);
        smaller.setWeight(font.weight());
        font = smaller;
    }
    painter.setFont(font);
    painter.setPen(ink);
    const QFontMetricsF sizes(font);
    const QRectF wrapped =
        sizes.boundingRect(place, Qt::AlignLeft | Qt::AlignBottom | Qt::TextWordWrap, button.name);
    if (wrapped.height() <= place.height() && wrapped.width() <= place.width()) {
        painter.drawText(place, Qt::AlignLeft | Qt::AlignBottom | Qt::TextWordWrap, button.name);
    } else {
        painter.drawText(place, Qt::AlignLeft | Qt::AlignBottom,
                         sizes.elidedText(button.name, Qt::ElideRight, place.width()));
    }
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

    const double cap_left = paint_key_cap(painter, look, button, face, colours, shown.state.is_down);
    const double band = button.marks == code_button::band::left ? metrics.clip_band : 0;
    const double below = button.marks == code_button::band::below ? metrics.qualifier_band : 0;
    const QRectF inside =
        face.adjusted(metrics.button_text_indent + band, metrics.grid, -metrics.grid, -metrics.grid - below);
    const QRectF corner(inside.left(), inside.top(), cap_left - inside.left(), metrics.key_cap);
    const bool is_low =
        face.height() < metrics.key_cap + theme::line_height(type_step::button) + metrics.grid;
    if (!is_low || shown.state.is_blocked) paint_corner(painter, look, corner, colours, shown);
    if (shown.state.is_live) {
        const QRectF dot(cap_left - metrics.grid - metrics.live_dot,
                         corner.center().y() - metrics.live_dot / 2.0, metrics.live_dot, metrics.live_dot);
        painter.setPen(QPen(look.clip_ink_dark, metrics.focus_ring));
        painter.setBrush(look.live);
        painter.drawEllipse(dot);
    }
    QRectF words = inside;
    words.setTop(is_low ? inside.top() : inside.top() + metrics.key_cap - metrics.grid);
    if (is_low) words.setRight(cap_left - metrics.grid);
    if (button.shows_name) paint_name(painter, button, words, colours.ink);
    painter.restore();
}

}  // namespace vistels
