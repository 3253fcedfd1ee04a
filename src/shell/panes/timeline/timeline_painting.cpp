// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/panes/timeline/timeline_painting.h"

#include <QPainter>
#include <QPainterPath>
#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

#include "shell/kit/icons.h"
#include "shell/kit/theme_time_text.h"
#include "shell/panes/timeline/timeline_metrics.h"

namespace vistels {
namespace {

constexpr int most_kept_pictures = 4000;

int to_pixel(double x) {
    return static_cast<int>(std::lround(x));
}

}  // namespace

timeline_painter::timeline_painter(const theme& look, double device_pixel_ratio)
    : look_(look), ratio_(device_pixel_ratio), label_font_(theme::font(type_step::clip_label)) {}

timeline_painter::~timeline_painter() = default;

void timeline_painter::paint_clips(QPainter& painter, const timeline_row& row, const timeline_scale& scale,
                                   const QRect& place, const QRect& dirty) {
    const theme_metrics& metrics = look_.metrics;
    const int reach = metrics.focus_ring + metrics.playhead_gap;
    const auto paint_track = [&](const clip_track& track, const bar_limits& limits, bool selected) {
        bars_.clear();
        track.add_bars(scale, place.width(), limits, bars_);
        for (const timeline_bar& bar : bars_) {
            if (place.left() + bar.right < dirty.left() - reach) continue;
            if (place.left() + bar.left > dirty.right() + reach) continue;
            if (!selected && bar.right - bar.left < timeline_sizes.clip_narrow_below - 1) {
                add_narrow(row, bar, place.width());
            } else {
                paint_bar(painter, row, bar, place, selected);
            }
        }
        paint_narrow(painter, place);
    };
    const double merge = timeline_sizes.clip_merge_below;
    const double gap = timeline_sizes.clip_gap_below;
    const double marked = timeline_sizes.clip_least_marked;
    const bool filtered = row.passing < row.clips;
    if (row.dimmed.size() > 0) paint_track(row.dimmed, {merge, gap, 1}, false);
    paint_track(row.shown, {merge, gap, filtered ? marked : 1}, false);
    if (row.selected.size() > 0) paint_track(row.selected, {merge, gap, marked}, true);
}

const timeline_painter::worn_colour& timeline_painter::worn(const QColor& colour) {
    const auto found = worn_.constFind(colour.rgb());
    if (found != worn_.constEnd()) return *found;
    if (worn_.size() > most_kept_pictures) worn_.clear();
    worn_colour made;
    made.plain = {QColor(), look_.clip_edge(colour), colour};
    made.dimmed = {QColor(), mix(colour, look_.pane, look_.edge_share),
                   mix(colour, look_.pane, look_.filtered_out_share)};
    made.ink = ink_on(look_, colour);
    return *worn_.insert(colour.rgb(), made);
}

timeline_painter::coat timeline_painter::selected_coat(const QColor& colour, bool dimmed) {
    coat made = worn(colour).of(dimmed);
    made.ring = look_.selection;
    return made;
}

QRect timeline_painter::box_of(const timeline_bar& bar, const QRect& place) const {
    const theme_metrics& metrics = look_.metrics;
    const int left = place.left() + to_pixel(bar.left);
    const int right = std::max(place.left() + to_pixel(bar.right), left + 1);
    return {left, place.top() + timeline_sizes.clip_inset, right - left,
            place.height() - 2 * timeline_sizes.clip_inset - metrics.line};
}

void timeline_painter::add_narrow(const timeline_row& row, const timeline_bar& bar, int width) {
    const auto pixels = static_cast<std::size_t>(std::ceil(width * ratio_));
    if (narrow_.inner.size() != pixels) {
        narrow_.outer.assign(pixels, 0);
        narrow_.inner.assign(pixels, 0);
        narrow_.first = pixels;
        narrow_.end = 0;
    }
    const int from = to_pixel(bar.left * ratio_);
    const int to = std::max(to_pixel(bar.right * ratio_), from + 1);
    const int line = std::max(1, to_pixel(look_.metrics.line * ratio_));
    const bool has_edge = to - from >= to_pixel(timeline_sizes.clip_merge_below * ratio_);
    const coat& colours = worn(row.palette[bar.colour]).of(bar.dimmed);
    const QRgb edge = has_edge ? colours.edge.rgb() : colours.fill.rgb();
    const QRgb fill = colours.fill.rgb();
    const int corner = has_edge ? line : 0;
    for (int x = std::max(from, 0); x < std::min(to, static_cast<int>(pixels)); ++x) {
        const auto at = static_cast<std::size_t>(x);
        const bool at_side = x < from + corner || x >= to - corner;
        narrow_.inner[at] = at_side ? edge : fill;
        if (!at_side) narrow_.outer[at] = edge;
    }
    narrow_.first = std::min(narrow_.first, static_cast<std::size_t>(std::max(from, 0)));
    narrow_.end = std::clamp(static_cast<std::size_t>(std::max(to, 0)), narrow_.end, pixels);
}

void timeline_painter::paint_narrow(QPainter& painter, const QRect& place) {
    if (narrow_.first >= narrow_.end) return;
    const theme_metrics& metrics = look_.metrics;
    const QRect box =
        place.adjusted(0, timeline_sizes.clip_inset, 0, -timeline_sizes.clip_inset - metrics.line);
    const int width = static_cast<int>(narrow_.end - narrow_.first);
    const int height = to_pixel(box.height() * ratio_);
    const int line = std::max(1, to_pixel(metrics.line * ratio_));
    if (narrow_picture_.width() < static_cast<int>(narrow_.inner.size()) ||
        narrow_picture_.height() != height) {
        narrow_picture_ =
            QImage(static_cast<int>(narrow_.inner.size()), height, QImage::Format_ARGB32_Premultiplied);
    }
    for (int y = 0; y < height; ++y) {
        const bool is_outer = y < line || y >= height - line;
        const std::vector<QRgb>& from = is_outer ? narrow_.outer : narrow_.inner;
        std::copy_n(from.begin() + static_cast<std::ptrdiff_t>(narrow_.first), width,
                    reinterpret_cast<QRgb*>(narrow_picture_.scanLine(y)));
    }
    const QRectF target(place.left() + static_cast<double>(narrow_.first) / ratio_, box.top(), width / ratio_,
                        height / ratio_);
    painter.drawImage(target, narrow_picture_, QRectF(0, 0, width, height));
    std::fill(narrow_.outer.begin(), narrow_.outer.end(), QRgb(0));
    std::fill(narrow_.inner.begin(), narrow_.inner.end(), QRgb(0));
    narrow_.first = narrow_.inner.size();
    narrow_.end = 0;
}

void timeline_painter::paint_bar(QPainter& painter, const timeline_row& row, const timeline_bar& bar,
                                 const QRect& place, bool selected) {
    const QRect box = box_of(bar, place);
    const QColor& colour = row.palette[bar.colour];
    paint_box(painter, box, selected ? selected_coat(colour, bar.dimmed) : worn(colour).of(bar.dimmed));
    if (bar.count > 1 || bar.dimmed || box.width() < timeline_sizes.clip_number_from) return;
    paint_label(painter, row, bar, box, worn(colour).ink);
}

// Whole pixels throughout: no smoothing but in the ends, which are pictures.
void timeline_painter::paint_box(QPainter& painter, const QRect& box, const coat& colours) {
    const theme_metrics& metrics = look_.metrics;
    const int gap = metrics.playhead_gap;
    const int ring = metrics.focus_ring;
    if (box.width() < timeline_sizes.clip_narrow_below) {
        if (colours.ring.isValid()) {
            painter.fillRect(box.adjusted(-ring - gap, -ring - gap, ring + gap, ring + gap), colours.ring);
            painter.fillRect(box.adjusted(-gap, -gap, gap, gap), look_.selection_gap);
        }
        if (box.width() < timeline_sizes.clip_merge_below) {
            painter.fillRect(box, colours.fill);
            return;
        }
        painter.fillRect(box.adjusted(1, 0, -1, 0), colours.edge);
        painter.fillRect(box.adjusted(0, 1, 0, -1), colours.edge);
        painter.fillRect(box.adjusted(1, 1, -1, -1), colours.fill);
        return;
    }
    const QPixmap& ends = ends_of(box.height(), colours);
    const int outer = colours.ring.isValid() ? ring + gap : 0;
    const QRect whole = box.adjusted(-outer, -outer, outer, outer);
    const int end = static_cast<int>(std::ceil(metrics.radius_clip)) + 1 + outer;
    const int end_pixels = static_cast<int>(std::ceil(end * ratio_));
    const QRect middle = whole.adjusted(end, 0, -end, 0);
    painter.drawPixmap(whole.topLeft(), ends, QRect(0, 0, end_pixels, ends.height()));
    painter.drawPixmap(QPoint(whole.right() + 1 - end, whole.top()), ends,
                       QRect(ends.width() - end_pixels, 0, end_pixels, ends.height()));
    if (middle.width() <= 0) return;
    int inset = 0;
    if (outer > 0) {
        painter.fillRect(middle, colours.ring);
        painter.fillRect(middle.adjusted(0, ring, 0, -ring), look_.selection_gap);
        inset = outer;
    }
    painter.fillRect(middle.adjusted(0, inset, 0, -inset), colours.edge);
    painter.fillRect(middle.adjusted(0, inset + 1, 0, -inset - 1), colours.fill);
}

// A box as narrow as its two ends.
const QPixmap& timeline_painter::ends_of(int height, const coat& colours) {
    constexpr quint64 rgb = 0xffffff;
    const quint64 key = ((colours.fill.rgb() & rgb) << 40) | ((colours.edge.rgb() & rgb) << 16) |
                        (quint64(height) << 1) | (colours.ring.isValid() ? 1U : 0U);
    const auto found = ends_.constFind(key);
    if (found != ends_.constEnd()) return *found;
    if (ends_.size() > most_kept_pictures) ends_.clear();

    const theme_metrics& metrics = look_.metrics;
    const int outer = colours.ring.isValid() ? metrics.focus_ring + metrics.playhead_gap : 0;
    const int end = static_cast<int>(std::ceil(metrics.radius_clip)) + 1 + outer;
    const QSizeF size(2 * end, height + 2 * outer);
    QPixmap picture((size * ratio_).toSize());
    picture.setDevicePixelRatio(ratio_);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    const auto fill = [&](double inset, const QColor& colour) {
        const double radius = std::max(0.0, metrics.radius_clip + outer - inset);
        painter.setBrush(colour);
        painter.drawRoundedRect(QRectF(QPointF(), size).adjusted(inset, inset, -inset, -inset), radius,
                                radius);
    };
    if (outer > 0) {
        fill(0, colours.ring);
        fill(metrics.focus_ring, look_.selection_gap);
    }
    fill(outer, colours.edge);
    fill(outer + metrics.line, colours.fill);
    painter.end();
    return *ends_.insert(key, picture);
}

void timeline_painter::paint_label(QPainter& painter, const timeline_row& row, const timeline_bar& bar,
                                   const QRect& box, const QColor& ink) {
    const theme_metrics& metrics = look_.metrics;
    const std::uint8_t extras = bar.index < row.extras.size() ? row.extras[bar.index] : std::uint8_t{0};
    int right = box.right() - 1;
    if ((extras & timeline_row::has_note) != 0 && box.width() >= timeline_sizes.clip_note_from) {
        paint_fold(painter, box, look_.clip_edge(row.palette[bar.colour]));
    }
    if (box.width() >= timeline_sizes.clip_stars_from) {
        right = paint_stars(painter, box, extras & timeline_row::stars_mask, ink);
    }
    int x = paint_cut(painter, box.left() + timeline_sizes.clip_label_indent, box, right,
                      number_picture(bar.index + 1, ink));
    if (box.width() < timeline_sizes.clip_qualifier_from) return;
    const clip_pointer clip = clip_of(row, bar.index);
    if (!clip) return;
    if (row.is_timer) {
        const QString text = time_text(row.clocks.of_clip(bar.index, now_), time_form::run_time);
        const QRectF place(x + metrics.grid, box.top(), time_text_width(text, label_font_), box.height());
        if (place.right() > right) return;
        painter.setPen(ink);
        draw_time_text(painter, place, Qt::AlignLeft, text, label_font_);
        x = static_cast<int>(std::ceil(place.right()));
    }
    const auto qualifiers = clip->qualifiers();
    const std::size_t most = box.width() >= timeline_sizes.clip_second_qualifier_from ? 2 : 1;
    for (std::size_t index = 0; index < std::min(most, qualifiers->size()); ++index) {
        x = paint_cut(painter, x + metrics.grid, box, right, name_picture((*qualifiers)[index].name(), ink));
    }
}

int timeline_painter::paint_cut(QPainter& painter, int x, const QRect& box, int right,
                                const QPixmap& text) const {
    const QSizeF size = text.deviceIndependentSize();
    const int width = std::min(static_cast<int>(std::ceil(size.width())), right - x);
    if (width <= 0) return right;
    const int y = box.top() + static_cast<int>(std::lround((box.height() - size.height()) / 2));
    painter.drawPixmap(QPoint(x, y), text, QRect(0, 0, to_pixel(width * ratio_), text.height()));
    return x + width;
}

const QPixmap& timeline_painter::number_picture(std::uint32_t number, const QColor& ink) {
    const quint64 key = (quint64(number) << 32) | ink.rgb();
    const auto found = numbers_.constFind(key);
    if (found != numbers_.constEnd()) return *found;
    if (numbers_.size() > most_kept_pictures) numbers_.clear();
    return *numbers_.insert(key, text_as_picture(QString::number(number), ink));
}

const QPixmap& timeline_painter::name_picture(const shared_text& name, const QColor& ink) {
    auto& pictures = names_[ink == look_.clip_ink_dark ? 0 : 1];
    const auto found = pictures.constFind(name.identity());
    if (found != pictures.constEnd()) return found->picture;
    if (pictures.size() > most_kept_pictures) pictures.clear();
    const QPixmap made = text_as_picture(QString::fromStdString(name.str()), ink);
    return pictures.insert(name.identity(), {made, name})->picture;
}

QPixmap timeline_painter::text_as_picture(const QString& text, const QColor& ink) const {
    const QFontMetricsF sizes(label_font_);
    const QSizeF size(std::ceil(sizes.horizontalAdvance(text)) + 1, std::ceil(sizes.height()));
    QPixmap picture((size * ratio_).toSize().expandedTo(QSize(1, 1)));
    picture.setDevicePixelRatio(ratio_);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setFont(label_font_);
    painter.setPen(ink);
    painter.drawText(QPointF(0, sizes.ascent()), text);
    return picture;
}

// Returns where the stars begin.
int timeline_painter::paint_stars(QPainter& painter, const QRect& box, int stars, const QColor& ink) {
    const int side = timeline_sizes.clip_star;
    QPixmap& picture = stars_[ink.rgb()];
    if (picture.isNull()) picture = icon_pixmap(QStringLiteral("star-on"), ink, side, ratio_);
    int x = box.right() - timeline_sizes.clip_label_indent;
    for (int star = 0; star < stars; ++star) {
        x -= side;
        painter.drawPixmap(x, box.center().y() - side / 2, picture);
    }
    return stars > 0 ? x - look_.metrics.grid : x;
}

void timeline_painter::paint_fold(QPainter& painter, const QRect& box, const QColor& edge) const {
    const double fold = timeline_sizes.clip_note_fold;
    const QPointF corner(box.right() + 1, box.top());
    const QPointF left = corner - QPointF(fold, 0);
    const QPointF below = corner + QPointF(0, fold);
    painter.setPen(Qt::NoPen);
    painter.setBrush(look_.pane);
    painter.drawPolygon(QPolygonF({left, corner, below}));
    painter.setBrush(edge);
    painter.drawPolygon(QPolygonF({left, QPointF(left.x(), below.y()), below}));
}

void timeline_painter::paint_live(QPainter& painter, const timeline_row& row, const timeline_scale& scale,
                                  const QRect& place, double now, double pulse) {
    const theme_metrics& metrics = look_.metrics;
    for (const live_piece& piece : row.live) {
        const double start = piece.clip->secs_start();
        const double beyond = place.width() + metrics.hatch;
        const double left = std::clamp(scale.x_of(std::min(start, now)), -4.0 * metrics.hatch, beyond);
        // It ends where the playhead's line begins, so that the live edge is seen.
        const double line = metrics.playhead_width / 2.0 + metrics.playhead_gap;
        const double right = std::clamp(scale.x_of(std::max(start, now)) - line, left, beyond);
        const int x = place.left() + to_pixel(left);
        const int width = std::max(to_pixel(right) - to_pixel(left), metrics.live_edge);
        const QRect box(x, place.top() + timeline_sizes.clip_inset, width,
                        place.height() - 2 * timeline_sizes.clip_inset - metrics.line);
        paint_box(painter, box, worn(piece.colour).plain);
        painter.save();
        painter.setClipRect(box.adjusted(1, 1, -1, -1), Qt::IntersectClip);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QPen(mix(look_.clip_ink_light, piece.colour, look_.hatch_share), metrics.hatch));
        const double step = 2 * metrics.hatch * std::numbers::sqrt2;
        const double first = box.left() - std::fmod(box.left() - place.left(), step);
        for (double at = first - step; at < box.right() + box.height() + step; at += step) {
            painter.drawLine(QPointF(at, box.bottom() + 1), QPointF(at - box.height(), box.top()));
        }
        painter.restore();
        QColor edge = look_.live;
        edge.setAlphaF(static_cast<float>(pulse));
        painter.fillRect(
            QRect(box.right() + 1 - metrics.live_edge, box.top(), metrics.live_edge, box.height()), edge);
        if (box.width() < timeline_sizes.clip_qualifier_from) continue;
        painter.setPen(ink_on(look_, piece.colour));
        draw_time_text(painter, box.adjusted(timeline_sizes.clip_label_indent, 0, 0, 0), Qt::AlignLeft,
                       time_text(row.is_timer ? row.clocks.of_growing(*piece.clip, now) : now - start,
                                 time_form::run_time),
                       label_font_);
    }
}

// A wedge at the upper edge of the clip, seen on every colour.
void timeline_painter::paint_marks(QPainter& painter, const timeline_row& row, const timeline_scale& scale,
                                   const QRect& place, const QRect& dirty) {
    if (row.marks.empty()) return;
    const double half = timeline_sizes.trigger_mark / 2.0;
    const double top = place.top() + timeline_sizes.clip_inset;
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(look_.clip_ink_light, look_.metrics.line));
    for (const trigger_mark& mark : row.marks) {
        const double x = place.left() + scale.x_of(mark.at);
        if (x < dirty.left() - half || x > dirty.right() + half) continue;
        painter.setBrush(mark.colour.darker(timeline_sizes.trigger_mark_darker));
        painter.drawPolygon(QPolygonF(
            {QPointF(x - half, top), QPointF(x + half, top), QPointF(x, top + timeline_sizes.trigger_mark)}));
    }
    painter.restore();
}

void timeline_painter::paint_triggers(QPainter& painter, const std::vector<button_trigger>& triggers,
                                      const QColor& usual, const timeline_scale& scale, const QRect& place,
                                      const QRect& dirty) {
    const double half = timeline_sizes.trigger_mark / 2.0;
    const auto left = std::lower_bound(triggers.begin(), triggers.end(),
                                       scale.seconds_at(dirty.left() - place.left() - half),
                                       [](const auto& one, double at) { return one.at < at; });
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    double last_x = -std::numeric_limits<double>::infinity();
    trigger_effect last = trigger_effect::none;
    for (auto one = left; one != triggers.end(); ++one) {
        const double x = place.left() + to_pixel(scale.x_of(one->at)) + look_.metrics.line / 2.0;
        if (x > dirty.right() + half) break;
        // Of those that lie on each other one is seen.
        if (x == last_x && one->effect == last) continue;
        last_x = x;
        last = one->effect;
        const QColor colour = one->colour.value_or(usual);
        painter.setPen(QPen(look_.selection_gap, 3.0 * look_.metrics.line));
        painter.drawLine(QPointF(x, place.top()), QPointF(x, place.bottom()));
        painter.setPen(QPen(colour, look_.metrics.line));
        painter.drawLine(QPointF(x, place.top()), QPointF(x, place.bottom()));
        if (one->effect == trigger_effect::none) continue;
        const bool is_down = one->effect == trigger_effect::goes_down;
        const double base = is_down ? place.top() : place.bottom();
        const double tip = base + (is_down ? 1 : -1) * timeline_sizes.trigger_mark;
        painter.setPen(QPen(look_.selection_gap, look_.metrics.line));
        painter.setBrush(colour);
        painter.drawPolygon(QPolygonF({QPointF(x - half, base), QPointF(x + half, base), QPointF(x, tip)}));
    }
    painter.restore();
}

void timeline_painter::paint_ghost(QPainter& painter, const QColor& colour, const QRect& place) {
    const theme_metrics& metrics = look_.metrics;
    const QRect box =
        place.adjusted(0, timeline_sizes.clip_inset, 0, -timeline_sizes.clip_inset - metrics.line);
    paint_box(painter, box, selected_coat(colour, false));
}

void timeline_painter::paint_ruler(QPainter& painter, const timeline_scale& scale, const QRect& place,
                                   const QRect& flag) {
    const theme_metrics& metrics = look_.metrics;
    painter.fillRect(place, look_.window);
    painter.fillRect(QRect(place.left(), place.bottom(), place.width(), metrics.line), look_.line);
    const ruler_steps steps = ruler_steps_for(scale.seconds_per_pixel, timeline_sizes.major_tick_distance,
                                              timeline_sizes.minor_tick_distance);
    const double minor = steps.major_seconds / steps.minor_parts;
    const QFont font = theme::font(type_step::smallest);
    const QColor minor_colour = mix(look_.edge, look_.window, look_.edge_share);
    const bool parts_of_seconds = steps.major_seconds < 1;
    const auto first = static_cast<long long>(std::floor(scale.first_seconds / minor)) - steps.minor_parts;
    for (long long tick = first;; ++tick) {
        const double seconds = static_cast<double>(tick) * minor;
        const int x = place.left() + to_pixel(scale.x_of(seconds));
        if (x > place.right() + timeline_sizes.major_tick_distance) break;
        const bool is_major = tick % steps.minor_parts == 0;
        const int length = is_major ? timeline_sizes.major_tick_length : timeline_sizes.minor_tick_length;
        painter.fillRect(QRect(x, place.bottom() - length, metrics.line, length),
                         is_major ? look_.edge : minor_colour);
        if (!is_major) continue;
        QString text = time_text(seconds, parts_of_seconds ? time_form::clock : time_form::ruler);
        if (parts_of_seconds) text.chop(1);
        const QRectF label(x + metrics.grid, place.top(), time_text_width(text, font),
                           place.height() - metrics.grid);
        // A label that is cut off would be another number.
        if (label.intersects(QRectF(flag)) || !QRectF(place).contains(label)) continue;
        painter.setPen(look_.muted);
        draw_time_text(painter, label, Qt::AlignLeft, text, font);
    }
}

void timeline_painter::paint_playhead(QPainter& painter, double x, int top, int bottom) {
    const int width = look_.metrics.playhead_width;
    const int gap = look_.metrics.playhead_gap;
    const QRect line(to_pixel(x) - width / 2, top, width, bottom - top);
    painter.fillRect(line.adjusted(-gap, 0, gap, 0), look_.selection_gap);
    painter.fillRect(line, look_.selection);
}

void timeline_painter::paint_flag(QPainter& painter, const QRect& flag, double seconds) {
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(look_.selection);
    painter.drawRoundedRect(flag, look_.metrics.radius_clip, look_.metrics.radius_clip);
    painter.setPen(look_.selection_gap);
    draw_time_text(painter, flag, Qt::AlignHCenter, time_text(seconds, time_form::clock),
                   theme::font(type_step::secondary_strong));
    painter.restore();
}

}  // namespace vistels
