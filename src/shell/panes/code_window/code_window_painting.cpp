// SPDX-License-Identifier: GPL-3.0-or-later
// The face of a code window's button.
#include <QCoreApplication>
#include <QPainter>
#include <QPainterPath>

#include "shell/kit/icons.h"
#include "shell/kit/theme.h"
#include "shell/kit/theme_time_text.h"
#include "shell/panes/code_window/code_window_face.h"
#include "shell/panes/code_window/code_window_metrics.h"
#include "shell/panes/code_window/code_window_shapes.h"

namespace vistels {
namespace {

struct face_colours {
    QColor ground;
    QColor edge;
    QColor ink;
    QColor name;
    QColor quiet_ink;  // of the count
    QColor band;
};

face_colours colours_while_down(const theme& look, const code_button& button) {
    face_colours made;
    made.ground = button.colour;
    made.edge = look.clip_edge(button.colour);
    made.ink = ink_on(look, button.colour);
    made.quiet_ink = made.ink;
    made.band = button.made_colour.value_or(mix(look.clip_ink_dark, button.colour, look.down_band_share));
    return made;
}

face_colours colours_while_up(const theme& look, const code_button& button, bool is_hovered) {
    face_colours made;
    const double share = is_hovered ? look.button_hover_share : look.button_up_share;
    made.ground = mix(button.colour, look.button_ground, share);
    made.edge = mix(button.colour, look.button_ground, look.edge_share);
    made.ink = look.text;
    made.quiet_ink = look.muted;
    made.band = button.made_colour.value_or(button.colour);
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

face_colours colours_of(const theme& look, const code_button& button, const code_button_look& shown) {
    face_colours made = shown.state.is_down ? colours_while_down(look, button)
                                            : colours_while_up(look, button, shown.is_hovered);
    made.name = button.name_colour ? legible_on(*button.name_colour, made.ground) : made.ink;
    return made;
}

void paint_ring(QPainter& painter, const theme& look, const code_button& button, const QRectF& face,
                const QColor& colour) {
    const double away = look.metrics.playhead_gap + look.metrics.focus_ring / 2.0;
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(colour, look.metrics.focus_ring));
    painter.drawPath(code_button_outline(button.shape, face.adjusted(-away, -away, away, away),
                                         look.metrics.radius_button + away));
}

// All of the face is covered and the picture keeps its proportions.
void paint_picture(QPainter& painter, const QImage& picture, const QRectF& face) {
    const QSizeF part = face.size().scaled(picture.size(), Qt::KeepAspectRatio);
    const QRectF middle(QPointF((picture.width() - part.width()) / 2, (picture.height() - part.height()) / 2),
                        part);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(face, picture, middle);
}

// What the button makes, by a band at its left or below; on a shape along that half of its outline.
void paint_band(QPainter& painter, const code_button& button, const QRectF& face, const QPainterPath& outline,
                const QColor& colour) {
    if (button.marks == code_button::band::none) return;
    const bool is_left = button.marks == code_button::band::left;
    const int thick = is_left ? code_window_sizes.clip_band : code_window_sizes.qualifier_band;
    QRectF band = face;
    if (is_usual_outline(button.shape)) {
        is_left ? band.setWidth(thick) : band.setTop(face.bottom() - thick);
        return painter.fillRect(band, colour);
    }
    is_left ? band.setRight(face.center().x()) : band.setTop(face.center().y());
    painter.setClipRect(band, Qt::IntersectClip);
    painter.strokePath(outline, QPen(colour, 2 * thick));
}

void paint_hatch(QPainter& painter, const theme& look, const QRectF& face, const QColor& colour) {
    painter.setPen(QPen(colour, look.metrics.hatch));
    for (double x = face.left() - face.height(); x < face.right(); x += look.metrics.hatch * 2.8) {
        painter.drawLine(QPointF(x, face.bottom()), QPointF(x + face.height(), face.top()));
    }
}

// As that of the clip that grows on the timeline.
void paint_live_edge(QPainter& painter, const theme& look, const QRectF& face) {
    const int thick = look.metrics.live_edge;
    const QRectF edge(face.right() - thick, face.top(), thick, face.height());
    painter.fillRect(edge.adjusted(-look.metrics.line, 0, 0, 0), look.clip_ink_dark);
    painter.fillRect(edge, look.live);
}

void paint_ground(QPainter& painter, const theme& look, const code_button& button, const QRectF& face,
                  const face_colours& colours, const code_button_look& shown) {
    const theme_metrics& metrics = look.metrics;
    const QPainterPath outline = code_button_outline(button.shape, face, metrics.radius_button);
    painter.save();
    painter.setClipPath(outline);
    painter.fillRect(face, shown.state.is_blocked ? look.button_ground : colours.ground);
    if (shown.picture) paint_picture(painter, *shown.picture, face);
    if (shown.state.is_blocked) paint_hatch(painter, look, face, colours.edge);
    if (shown.picture && shown.state.is_down)
        painter.strokePath(outline, QPen(colours.ground, 2 * code_window_sizes.clip_band));
    if (shown.state.is_live) paint_live_edge(painter, look, face);
    paint_band(painter, button, face, outline, colours.band);
    painter.restore();
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(colours.edge, metrics.line));
    painter.drawPath(
        code_button_outline(button.shape, face.adjusted(0.5, 0.5, -0.5, -0.5), metrics.radius_button));
    if (!shown.state.is_latched) return;
    const double away = metrics.grid;
    painter.setPen(QPen(colours.ink, metrics.line, Qt::DashLine));
    painter.drawPath(
        code_button_outline(button.shape, face.adjusted(away, away, -away, -away), metrics.radius_clip));
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

// Words on a picture stand on a ground of their own, as the name of a vistel does.
void paint_label_ground(QPainter& painter, const theme& look, const QRectF& words) {
    const int around = look.metrics.grid;
    painter.setPen(Qt::NoPen);
    painter.setBrush(look.video_label_ground);
    painter.drawRoundedRect(words.adjusted(-around, 0, around, 0), look.metrics.radius_clip,
                            look.metrics.radius_clip);
    painter.setPen(look.video_label);
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
    if (shown.state.found_none) {
        const double side = look.metrics.icon;
        const QRectF mark(place.left(), place.center().y() - side / 2, side, side);
        const QPixmap warning =
            icon_pixmap(QStringLiteral("warning"), shown.state.is_down ? colours.ink : look.warning,
                        look.metrics.icon, painter.device()->devicePixelRatioF());
        return painter.drawPixmap(mark, warning, QRectF(warning.rect()));
    }
    if (shown.state.waits) {
        painter.setFont(theme::font(type_step::secondary_strong));
        painter.setPen(colours.ink);
        return painter.drawText(place, Qt::AlignLeft | Qt::AlignVCenter,
                                QCoreApplication::translate("code_window_button", "Next…"));
    }
    const bool has_time = !shown.time.isEmpty();
    if (!has_time && shown.state.count == 0) return;
    const QString text = has_time ? shown.time : QString::number(shown.state.count);
    const QFont font = theme::font(has_time ? type_step::secondary_strong : type_step::secondary);
    painter.setPen(has_time ? colours.ink : colours.quiet_ink);
    if (shown.picture) {
        const QRectF ink(place.left(), place.top(), time_text_width(text, font), place.height());
        paint_label_ground(painter, look, ink);
    }
    draw_time_text(painter, place, Qt::AlignLeft, text, font);
}

// Not over the time, where there is room for one of them alone.
void paint_live_dot(QPainter& painter, const theme& look, const code_button_layout& words,
                    const QString& time) {
    const theme_metrics& metrics = look.metrics;
    const QRectF dot(words.cap.left() - metrics.grid - metrics.live_dot,
                     words.corner.center().y() - metrics.live_dot / 2.0, metrics.live_dot, metrics.live_dot);
    const double taken = time_text_width(time, theme::font(type_step::secondary_strong));
    if (words.has_corner && dot.left() < words.corner.left() + taken) return;
    painter.setPen(QPen(look.clip_ink_dark, metrics.focus_ring));
    painter.setBrush(look.live);
    painter.drawEllipse(dot);
}

void paint_name(QPainter& painter, const theme& look, const code_button_layout& words,
                const face_colours& colours, bool is_on_picture) {
    const int flags = static_cast<int>(words.alignment) | Qt::TextWordWrap;
    painter.setFont(words.font);
    painter.setPen(colours.name);
    if (is_on_picture) {
        const QFontMetricsF sizes(words.font);
        paint_label_ground(painter, look, sizes.boundingRect(words.name, flags, words.text));
    }
    painter.drawText(words.name, flags, words.text);
}

// Where the field was pressed; the last one is the strongest.
void paint_traces(QPainter& painter, const theme& look, const code_button& button, const QRectF& face,
                  const QColor& colour) {
    const auto place = [&](const QPointF& share) {
        return QPointF(face.left() + share.x() * face.width(), face.top() + share.y() * face.height());
    };
    const double radius = code_window_sizes.trace_radius;
    for (qsizetype i = 0; i < button.traces.size(); ++i) {
        const bool is_last = i + 1 == button.traces.size();
        QColor ink = colour;
        ink.setAlphaF(is_last ? 1.0F : static_cast<float>(look.disabled_share));
        painter.setPen(QPen(ink, look.metrics.focus_ring));
        if (button.traces_are_lines && i > 0)
            painter.drawLine(place(button.traces[i - 1]), place(button.traces[i]));
        painter.setPen(Qt::NoPen);
        painter.setBrush(ink);
        painter.drawEllipse(place(button.traces[i]), radius, radius);
    }
}

// In the corner, in the place of the count and while nothing else is there, unless it is moved.
bool output_is_in_corner(const code_button& button) {
    return button.output_offset.isNull();
}

// A formula that is wrong has a mark in the place of what it would say; the tool tip tells the reason.
QString output_shown(const code_button_state& state) {
    return state.output_problem.isEmpty() ? state.output : QStringLiteral("!");
}

void paint_output(QPainter& painter, const theme& look, const code_button& button, const QRectF& face,
                  const code_button_layout& words, const face_colours& colours,
                  const code_button_look& shown) {
    const code_button_state& state = shown.state;
    const QString output = output_shown(state);
    if (output.isEmpty()) return;
    const bool is_taken = state.is_blocked || state.found_none || state.waits || !shown.time.isEmpty();
    if (output_is_in_corner(button) && is_taken) return;
    const QFont usual = theme::font(type_step::secondary_strong);
    const double scale = button.place.width() > 0 ? face.width() / button.place.width() : 1;
    const double size = button.output_size > 0 ? button.output_size * scale : usual.pixelSize();
    const QFont font = theme::font(type_step::secondary_strong, size, button.output_font);
    const QFontMetricsF sizes(font);
    // Larger than the corner it grows downwards.
    const QRectF corner = words.corner.translated(button.output_offset * scale);
    const QRectF place(corner.left(), corner.top(), face.right() - words.corner.left(),
                       std::max(corner.height(), sizes.height()));
    const Qt::Alignment where = Qt::AlignLeft | Qt::AlignVCenter;
    if (shown.picture)
        paint_label_ground(painter, look, sizes.boundingRect(place, static_cast<int>(where), output));
    painter.setFont(font);
    painter.setPen(button.output_colour.isValid() ? legible_on(button.output_colour, colours.ground)
                                                  : colours.ink);
    painter.drawText(place, where, output);
}

// A ring that is seen on every colour.
void paint_ping(QPainter& painter, const theme& look, const QRectF& face, const QPointF& place) {
    const QPointF at(face.left() + place.x() * face.width(), face.top() + place.y() * face.height());
    const double radius = code_window_sizes.ping_radius;
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(look.clip_ink_dark, 2 * look.metrics.focus_ring));
    painter.drawEllipse(at, radius, radius);
    painter.setPen(QPen(look.clip_ink_light, look.metrics.focus_ring));
    painter.drawEllipse(at, radius, radius);
}

code_button_look visible_look(const code_button& button, code_button_look shown) {
    if (!button.hides_down_state) return shown;
    shown.state.is_down = false;
    shown.state.is_live = false;
    shown.state.is_latched = false;
    if (!button.shows_clock && !button.shows_down_time) shown.time.clear();
    return shown;
}

}  // namespace

void paint_code_button(QPainter& painter, const theme& look, const code_button& button, const QRectF& face,
                       const code_button_look& asked) {
    const code_button_look shown = visible_look(button, asked);
    const face_colours colours = colours_of(look, button, shown);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setOpacity(button.opacity * (shown.is_enabled ? 1 : look.disabled_share));
    paint_ground(painter, look, button, face, colours, shown);
    const code_button_layout words = shown.words ? *shown.words : code_button_layout_of(button, face);
    code_button_look in_corner = shown;
    if (!output_shown(shown.state).isEmpty() && output_is_in_corner(button)) in_corner.state.count = 0;
    paint_key_cap(painter, look, button, words.cap, colours, shown.state.is_down);
    if (words.has_corner || shown.state.is_blocked || shown.state.found_none || shown.state.waits)
        paint_corner(painter, look, words.corner, colours, in_corner);
    if (shown.state.is_live) paint_live_dot(painter, look, words, shown.time);
    if (button.shows_name) paint_name(painter, look, words, colours, shown.picture != nullptr);
    paint_output(painter, look, button, face, words, colours, shown);
    paint_traces(painter, look, button, face, colours.ink);
    painter.setOpacity(1);
    if (shown.state.is_down) paint_ring(painter, look, button, face, look.selection);
    if (shown.has_focus) paint_ring(painter, look, button, face, look.accent);
    if (shown.ping) paint_ping(painter, look, face, *shown.ping);
    painter.restore();
}

}  // namespace vistels
