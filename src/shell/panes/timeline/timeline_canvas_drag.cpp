// SPDX-License-Identifier: GPL-3.0-or-later
// What is dragged on a timeline's canvas, where it would land, and how that is shown.
#include <QContextMenuEvent>
#include <QMouseEvent>
#include <QPainter>
#include <algorithm>
#include <cmath>

#include "shell/kit/theme_time_text.h"
#include "shell/panes/timeline/timeline_canvas.h"
#include "shell/panes/timeline/timeline_metrics.h"
#include "shell/panes/timeline/timeline_state.h"
#include "timeline/edits/clip_moving.h"

namespace vistels {

namespace {

constexpr double drag_from_pixels = 3;      // a press that moves less is a click
constexpr int edge_scroll_pixels = 24;      // a drag held so near to the edge scrolls
constexpr double edge_scroll_share = 0.5;   // of how far it is beyond that, at each turn
constexpr int edge_scroll_turn = 30;        // milliseconds
constexpr std::size_t most_overlaps = 200;  // clips of a drag whose overlaps are marked

bool holds(const QMouseEvent& event, Qt::KeyboardModifier key) {
    return (event.modifiers() & key) != 0;
}

}  // namespace

void timeline_canvas::set_draws(bool draws) {
    draws_ = draws;
    setCursor(draws ? Qt::CrossCursor : Qt::ArrowCursor);
}

timeline_canvas::drag timeline_canvas::drag_from(drag_kind kind, const hit& found,
                                                 const QPointF& point) const {
    drag made;
    made.kind = kind;
    made.on = found;
    made.from = made.to = point;
    made.from_seconds = made.drawn_to = state_.scale().seconds_at(point.x());
    if (found.what != hit::part::ruler && found.row < state_.rows().size())
        made.row = state_.rows()[found.row].uuid;
    made.from_y = static_cast<int>(point.y()) - timeline_sizes.ruler_height + state_.first_y();
    return made;
}

void timeline_canvas::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton || !state_.has_timeline()) return;
    if (drag_) give_up_drag();  // where the hand let go was never told
    const QPointF point = event->position();
    const hit found = hit_at(point);
    if (found.what == hit::part::ruler) {
        drag_ = drag_from(drag_kind::playhead, found, point);
        drag_->has_moved = true;
        // Held by its flag, the playhead does not jump to the pointer.
        if (flag_place().contains(point.toPoint())) {
            drag_->grip_seconds = drag_->from_seconds - state_.playhead();
        } else {
            move_drag(point, true);
        }
    } else if (found.clip) {
        press_clip(found, *event);
    } else {
        press_ground(found, *event);
    }
}

void timeline_canvas::press_clip(const hit& found, const QMouseEvent& event) {
    const std::string clip = found.clip->id();
    const bool with_alt = holds(event, Qt::AltModifier);
    if (!with_alt && holds(event, Qt::ControlModifier)) return state_.toggle(clip);
    if (!with_alt && holds(event, Qt::ShiftModifier)) return state_.extend_to(clip);
    const bool is_selected = state_.is_selected(*found.clip);
    if (!is_selected) state_.select({clip});
    const bool at_start = found.what == hit::part::start_edge;
    const bool at_edge = at_start || found.what == hit::part::end_edge;
    const std::string neighbour = with_alt && at_edge ? neighbour_at(found) : std::string();
    const drag_kind kind = !neighbour.empty() ? drag_kind::joint
                           : with_alt         ? drag_kind::copy
                           : !at_edge         ? drag_kind::move
                           : at_start         ? drag_kind::start_edge
                                              : drag_kind::end_edge;
    drag_ = drag_from(kind, found, event.position());
    drag_->clips = state_.selected();
    drag_->neighbour = neighbour;
    drag_->grip_seconds = drag_->from_seconds - dragged_seconds();
}

void timeline_canvas::press_ground(const hit& found, const QMouseEvent& event) {
    const bool adds = holds(event, Qt::ControlModifier) || holds(event, Qt::ShiftModifier);
    const bool is_row = found.what == hit::part::row;
    const bool is_empty_row = is_row && state_.rows()[found.row].clips == 0;
    const bool draws = is_row && !adds && (draws_ || is_empty_row);
    drag_ = drag_from(draws ? drag_kind::draw : drag_kind::band, found, event.position());
    drag_->adds = adds;
    drag_->selected_before = state_.selected();
    if (!adds) state_.select({});
}

// The clip of the row that touches the edge that was hit; empty: none.
std::string timeline_canvas::neighbour_at(const hit& found) const {
    const bool at_start = found.what == hit::part::start_edge;
    const double edge = at_start ? found.clip->secs_start() : found.clip->secs_end();
    const double near = timeline_sizes.clip_merge_below * state_.scale().seconds_per_pixel;
    const timeline_row& row = state_.rows()[found.row];
    for (std::size_t at = row.shown.first_reaching(edge - near); at < row.shown.size(); ++at) {
        const track_clip& one = row.shown[at];
        if (one.start > edge + near) break;
        if (one.index == found.index || std::abs((at_start ? one.end : one.start) - edge) > near) continue;
        if (const auto clip = clip_of(row, one.index)) return clip->id();
    }
    return {};
}

// What the hand holds of the clip, on the clock.
double timeline_canvas::dragged_seconds() const {
    const bool is_end = drag_->kind == drag_kind::end_edge ||
                        (drag_->kind == drag_kind::joint && drag_->on.what == hit::part::end_edge);
    return is_end ? drag_->on.clip->secs_end() : drag_->on.clip->secs_start();
}

void timeline_canvas::mouseMoveEvent(QMouseEvent* event) {
    if (drag_) {
        move_drag(event->position(), !holds(*event, Qt::ControlModifier));
    } else {
        show_cursor(event->position());
    }
}

void timeline_canvas::move_drag(const QPointF& point, bool snaps) {
    drag& now = *drag_;
    now.to = point;
    now.snaps = snaps && state_.snaps();
    const QPointF way = point - now.from;
    if (!now.has_moved && std::max(std::abs(way.x()), std::abs(way.y())) < drag_from_pixels) return;
    now.has_moved = true;
    const double wanted = state_.scale().seconds_at(point.x()) - now.grip_seconds;
    if (now.kind == drag_kind::playhead) {
        now.scrubbed_to = wanted;
        return state_.scrub(wanted);
    }
    const bool is_outside = point.x() < edge_scroll_pixels || point.x() > width() - edge_scroll_pixels;
    if (!is_outside) scrolls_.stop();
    if (is_outside && !scrolls_.isActive()) scrolls_.start(edge_scroll_turn);
    switch (now.kind) {
        case drag_kind::band:
            select_in_band();
            break;
        case drag_kind::draw:
            now.drawn_to = hold(wanted);
            break;
        case drag_kind::move:
        case drag_kind::copy:
            move_clips(wanted);
            break;
        default:
            move_edge(wanted);
            break;
    }
    update();
}

// Where it snaps to, or as it is; within reach.
double timeline_canvas::hold(double wanted) {
    drag& now = *drag_;
    now.snapped_to.reset();
    if (now.snaps) {
        const bool all_move = now.kind == drag_kind::move;
        now.snapped_to = state_.snap_to(
            wanted, {now.on.clip ? now.on.clip->id() : std::string(), all_move, now.playhead_before});
    }
    return std::max(now.snapped_to.value_or(wanted), state_.reach().start_seconds);
}

void timeline_canvas::move_edge(double wanted) {
    drag& now = *drag_;
    const double at = hold(wanted);
    now.seconds = at - dragged_seconds();
    show_moment(at);
}

// Its start or its end snaps, whichever is nearer to something.
void timeline_canvas::move_clips(double wanted) {
    drag& now = *drag_;
    const double length = now.on.clip->secs_end() - now.on.clip->secs_start();
    const double by_start = hold(wanted);
    const auto start_snap = now.snapped_to;
    const double by_end = hold(wanted + length) - length;
    const bool end_is_nearer =
        now.snapped_to && (!start_snap || std::abs(by_end - wanted) < std::abs(by_start - wanted));
    if (!end_is_nearer) now.snapped_to = start_snap;
    const timeline_rows& rows = state_.rows();
    double earliest = now.on.clip->secs_start();
    int first = static_cast<int>(now.on.row);
    int last = first;
    for (std::size_t index = 0; index < rows.size(); ++index) {
        if (rows[index].selected.size() == 0) continue;
        earliest = std::min(earliest, rows[index].selected[0].start);
        first = std::min(first, static_cast<int>(index));
        last = std::max(last, static_cast<int>(index));
    }
    const double least = state_.reach().start_seconds - earliest;
    now.seconds = std::max((end_is_nearer ? by_end : by_start) - now.on.clip->secs_start(), least);
    const int y = static_cast<int>(now.to.y()) - timeline_sizes.ruler_height + state_.first_y();
    const std::size_t under = std::min(rows.row_at(std::max(y, 0)), rows.size() - 1);
    // Each stays on a row.
    now.rows = std::clamp(static_cast<int>(under) - static_cast<int>(now.on.row), -first,
                          static_cast<int>(rows.size()) - 1 - last);
}

QRectF timeline_canvas::band_place() const {
    const double from_x = state_.scale().x_of(drag_->from_seconds);
    const double from_y = drag_->from_y - state_.first_y() + timeline_sizes.ruler_height;
    return QRectF(QPointF(from_x, from_y), drag_->to).normalized();
}

void timeline_canvas::select_in_band() {
    const QRectF band = band_place();
    const double from = state_.scale().seconds_at(band.left());
    const double to = state_.scale().seconds_at(band.right());
    std::vector<std::string> found;
    if (drag_->adds) found = drag_->selected_before;
    for (std::size_t index = 0; index < state_.rows().size(); ++index) {
        const timeline_row& row = state_.rows()[index];
        const QRect place = row_place(index);
        if (place.bottom() < band.top() || place.top() > band.bottom()) continue;
        for (std::size_t at = row.shown.first_reaching(from); at < row.shown.size(); ++at) {
            if (row.shown[at].start > to) break;
            if (row.shown[at].end < from) continue;
            if (const auto clip = clip_of(row, row.shown[at].index)) found.push_back(clip->id());
        }
    }
    state_.select(found);
}

// The pictures of where an edge is held. The playhead is back when the hand lets go.
void timeline_canvas::show_moment(double seconds) {
    if (!drag_->playhead_before && !state_.may_show_moment()) return;
    if (!drag_->playhead_before) drag_->playhead_before = state_.playhead();
    state_.scrub(seconds);
}

void timeline_canvas::scroll_with_drag() {
    if (!drag_) return scrolls_.stop();
    const double left = drag_->to.x() - edge_scroll_pixels;
    const double right = drag_->to.x() - (width() - edge_scroll_pixels);
    const double pixels = (left < 0 ? left : std::max(right, 0.0)) * edge_scroll_share;
    const timeline_scale& scale = state_.scale();
    state_.scroll_to(scale.first_seconds + pixels * scale.seconds_per_pixel);
    move_drag(drag_->to, drag_->snaps);
}

void timeline_canvas::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton && drag_) end_drag();
}

void timeline_canvas::give_up_drag() {
    const drag given_up = *drag_;
    drag_.reset();
    scrolls_.stop();
    if (given_up.scrubbed_to) state_.seek(*given_up.scrubbed_to);
    if (given_up.playhead_before) state_.seek(*given_up.playhead_before);
    if (given_up.kind == drag_kind::band || given_up.kind == drag_kind::draw)
        state_.select(given_up.selected_before);
    update();
}

// Rows came, went or moved under the hand.
void timeline_canvas::follow_rows() {
    const timeline_rows& rows = state_.rows();
    const bool is_elsewhere = drag_ && !drag_->row.empty() &&
                              (drag_->on.row >= rows.size() || rows[drag_->on.row].uuid != drag_->row);
    if (is_elsewhere) give_up_drag();
    update();
}

void timeline_canvas::end_drag() {
    const drag done = *drag_;
    drag_.reset();
    scrolls_.stop();
    update();
    if (done.playhead_before) state_.seek(*done.playhead_before);
    if (!done.has_moved) return click_of(done);
    switch (done.kind) {
        case drag_kind::playhead:
            if (done.scrubbed_to) state_.seek(*done.scrubbed_to);
            break;
        case drag_kind::start_edge:
            state_.trim_edges(done.clips, done.seconds, 0);
            break;
        case drag_kind::end_edge:
            state_.trim_edges(done.clips, 0, done.seconds);
            break;
        case drag_kind::joint: {
            const bool is_first = done.on.what == hit::part::end_edge;
            const std::string clip = done.on.clip->id();
            const double edge = is_first ? done.on.clip->secs_end() : done.on.clip->secs_start();
            state_.roll(is_first ? clip : done.neighbour, is_first ? done.neighbour : clip,
                        edge + done.seconds);
            break;
        }
        case drag_kind::move:
            state_.move(done.clips, done.seconds, done.rows);
            break;
        case drag_kind::copy:
            state_.copy(done.clips, done.seconds, done.rows);
            break;
        case drag_kind::draw:
            if (std::abs(done.drawn_to - done.from_seconds) >= least_seconds_left)
                state_.draw(state_.rows()[done.on.row].uuid, done.from_seconds, done.drawn_to);
            break;
        case drag_kind::band:
            break;
    }
}

// A press that did not move.
void timeline_canvas::click_of(const drag& done) {
    switch (done.kind) {
        case drag_kind::draw:
        case drag_kind::band:
            if (!done.adds) state_.seek(done.from_seconds);
            break;
        case drag_kind::copy:
        case drag_kind::playhead:
            break;
        default:
            if (done.clips.size() > 1) state_.select({done.on.clip->id()});
            state_.seek(done.on.clip->secs_start());
            break;
    }
}

void timeline_canvas::mouseDoubleClickEvent(QMouseEvent* event) {
    const hit found = hit_at(event->position());
    if (event->button() == Qt::LeftButton && found.clip && event->modifiers() == Qt::NoModifier) {
        if (state_.selected() != std::vector<std::string>{found.clip->id()})
            state_.select({found.clip->id()});
        Q_EMIT play_asked();
    } else {
        mousePressEvent(event);
    }
}

void timeline_canvas::contextMenuEvent(QContextMenuEvent* event) {
    if (!state_.has_timeline()) return;
    if (drag_) give_up_drag();
    QPoint at = event->globalPos();
    bool for_clips = state_.selected_count() > 0;
    if (event->reason() != QContextMenuEvent::Keyboard) {
        const hit found = hit_at(event->pos());
        for_clips = found.clip != nullptr;
        if (for_clips && !state_.is_selected(*found.clip)) state_.select({found.clip->id()});
    } else {
        at = mapToGlobal(rect().center());
    }
    event->accept();
    Q_EMIT menu_asked(at, for_clips);
}

// Of what is dragged. Clips that are moved and too narrow to be told apart are one.
std::vector<timeline_canvas::landing> timeline_canvas::landings() const {
    std::vector<landing> all;
    const drag& now = *drag_;
    const timeline_rows& rows = state_.rows();
    if (now.kind == drag_kind::draw) {
        const auto [start, end] = std::minmax(now.from_seconds, now.drawn_to);
        all.push_back({now.on.row, start, end, rows[now.on.row].colour});
        return all;
    }
    const bool moves = now.kind == drag_kind::move || now.kind == drag_kind::copy;
    std::vector<timeline_bar> bars;
    for (std::size_t index = 0; index < rows.size(); ++index) {
        const timeline_row& row = rows[index];
        const std::size_t to = index + static_cast<std::size_t>(now.rows);
        if (moves && row.selected.size() > 0) {
            const timeline_scale& scale = state_.scale();
            const timeline_scale from{scale.first_seconds - now.seconds, scale.seconds_per_pixel};
            const bar_limits limits{double(timeline_sizes.clip_merge_below),
                                    double(timeline_sizes.clip_gap_below),
                                    double(timeline_sizes.clip_least_marked)};
            bars.clear();
            row.selected.add_bars(from, width(), limits, bars);
            for (const timeline_bar& bar : bars)
                all.push_back(
                    {to, scale.seconds_at(bar.left), scale.seconds_at(bar.right), row.palette[bar.colour]});
        }
        for (std::size_t at = 0; !moves && at < row.selected.size(); ++at) {
            const track_clip& one = row.selected[at];
            landing made{index, one.start, one.end, row.palette[one.colour]};
            const double least = std::min(least_seconds_left, one.end - one.start);
            if (now.kind == drag_kind::start_edge)
                made.start = std::min(one.start + now.seconds, one.end - least);
            if (now.kind == drag_kind::end_edge)
                made.end = std::max(one.end + now.seconds, one.start + least);
            all.push_back(made);
        }
    }
    return all;
}

void timeline_canvas::paint_landing(QPainter& painter, const landing& one) {
    const QRect place = row_place(one.row);
    const double x = state_.scale().x_of(one.start);
    const double end = state_.scale().x_of(one.end);
    if (end < 0 || x > width() || place.bottom() < timeline_sizes.ruler_height || place.top() > height())
        return;
    const int left = static_cast<int>(std::lround(std::max(x, -1.0 * width())));
    const int right = static_cast<int>(std::lround(std::min(end, 2.0 * width())));
    painter_in_use().paint_ghost(painter, one.colour,
                                 QRect(left, place.top(), std::max(1, right - left), place.height()));
}

// What would lie over or under it has a ring.
void timeline_canvas::paint_overlaps(QPainter& painter, const landing& one) {
    const theme& look = theme::current();
    const timeline_row& row = state_.rows()[one.row];
    painter.setBrush(Qt::NoBrush);
    for (std::size_t at = row.shown.first_reaching(one.start); at < row.shown.size(); ++at) {
        const track_clip& other = row.shown[at];
        if (other.start >= one.end) break;
        if (other.end <= one.start) continue;
        const auto clip = clip_of(row, other.index);
        if (!clip || (drag_->kind != drag_kind::copy && state_.is_selected(*clip))) continue;
        const QRect place = row_place(one.row);
        const double left = std::max(state_.scale().x_of(other.start), -2.0);
        const double right = std::min(state_.scale().x_of(other.end), width() + 2.0);
        const QRectF ring(left, place.top() + timeline_sizes.clip_inset, right - left,
                          place.height() - 2 * timeline_sizes.clip_inset);
        // On a ground of its own: the clip may have that very colour.
        painter.setPen(QPen(look.pane, 2 * look.metrics.focus_ring));
        painter.drawRect(ring);
        painter.setPen(QPen(look.warning, look.metrics.focus_ring, Qt::DashLine));
        painter.drawRect(ring);
    }
}

void timeline_canvas::paint_drag_label(QPainter& painter, const landing& first) {
    const theme& look = theme::current();
    const theme_metrics& metrics = look.metrics;
    const QFont font = theme::font(type_step::secondary);
    const QString words =
        tr("%1 – %2 (%3)")
            .arg(time_text(first.start, time_form::clock), time_text(first.end, time_form::clock),
                 time_text(first.end - first.start, time_form::clock));
    const double wide = time_text_width(words, font) + 2 * metrics.padding;
    const double high = theme::line_height(type_step::secondary) + metrics.grid;
    const double x = std::clamp(drag_->to.x() - wide / 2, 0.0, std::max(0.0, width() - wide));
    double y = drag_->to.y() - high - metrics.wide_padding;
    if (y < timeline_sizes.ruler_height) y = drag_->to.y() + 2 * metrics.wide_padding;
    const QRectF box(x, y, wide, high);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(look.edge);
    painter.setBrush(look.raised);
    painter.drawRoundedRect(box.adjusted(0.5, 0.5, -0.5, -0.5), metrics.radius_control,
                            metrics.radius_control);
    painter.setPen(look.text);
    draw_time_text(painter, box, Qt::AlignHCenter, words, font);
    painter.setRenderHint(QPainter::Antialiasing, false);
}

void timeline_canvas::paint_drag(QPainter& painter) {
    if (!drag_ || drag_->kind == drag_kind::playhead || !drag_->has_moved) return;
    const theme& look = theme::current();
    painter.setClipRect(rect().adjusted(0, timeline_sizes.ruler_height, 0, 0));
    if (drag_->kind == drag_kind::band) {
        QColor ground = look.accent;
        ground.setAlphaF(static_cast<float>(timeline_sizes.band_share));
        painter.setPen(look.accent);
        painter.setBrush(ground);
        painter.drawRect(band_place());
        return;
    }
    if (drag_->snapped_to) {
        const int x = static_cast<int>(std::lround(state_.scale().x_of(*drag_->snapped_to)));
        painter.fillRect(QRect(x, 0, look.metrics.line, height()), look.accent);
    }
    if (drag_->kind == drag_kind::joint) {
        const double at = dragged_seconds() + drag_->seconds;
        const double width = look.metrics.focus_ring;
        const QRect place = row_place(drag_->on.row);
        painter.fillRect(QRectF(state_.scale().x_of(at) - width / 2, place.top(), width, place.height()),
                         look.selection);
        return;
    }
    const auto all = landings();
    for (const landing& one : all) paint_landing(painter, one);
    if (all.size() <= most_overlaps) {
        for (const landing& one : all) paint_overlaps(painter, one);
    }
    landing first;
    const bool draws = drag_->kind == drag_kind::draw;
    first.start = draws ? all.front().start : drag_->on.clip->secs_start();
    first.end = draws ? all.front().end : drag_->on.clip->secs_end();
    if (!draws && drag_->kind != drag_kind::end_edge) first.start += drag_->seconds;
    if (!draws && drag_->kind != drag_kind::start_edge) first.end += drag_->seconds;
    if (first.start > first.end) std::swap(first.start, first.end);
    paint_drag_label(painter, first);
}

}  // namespace vistels
