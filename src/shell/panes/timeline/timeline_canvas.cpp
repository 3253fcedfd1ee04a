// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/panes/timeline/timeline_canvas.h"

#include <QPaintEvent>
#include <QPainter>
#include <algorithm>
#include <cmath>
#include <numbers>

#include "shell/kit/controls.h"
#include "shell/panes/timeline/timeline_metrics.h"
#include "shell/panes/timeline/timeline_state.h"

namespace vistels {
timeline_canvas::timeline_canvas(timeline_state& state, QWidget* parent) : QWidget(parent), state_(state) {
    setObjectName(QStringLiteral("timeline_canvas"));
    setAccessibleName(tr("Timeline"));
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true);
    setAttribute(Qt::WA_OpaquePaintEvent);
    connect(&scrolls_, &QTimer::timeout, this, &timeline_canvas::scroll_with_drag);
    connections_.push_back(state_.scale_changed.connect([this] { update(); }));
    connections_.push_back(state_.rows_changed.connect([this] { follow_rows(); }));
    connections_.push_back(state_.rows_scrolled.connect([this] { update(); }));
    connections_.push_back(state_.playhead_moved.connect([this] { follow_playhead(); }));
    connections_.push_back(state_.selection_changed.connect([this] { describe_selection(); }));
    connections_.push_back(theme::changed().connect([this] { painter_.reset(); }));
}

timeline_canvas::~timeline_canvas() = default;

timeline_painter& timeline_canvas::painter_in_use() {
    const theme& look = theme::current();
    const double ratio = devicePixelRatioF();
    if (!painter_ || &painter_->look() != &look || painter_->device_pixel_ratio() != ratio) {
        painter_ = std::make_unique<timeline_painter>(look, ratio);
    }
    return *painter_;
}

QRect timeline_canvas::row_place(std::size_t row) const {
    const timeline_row& shown = state_.rows()[row];
    const int ruler = timeline_sizes.ruler_height;
    return {0, ruler + shown.top - state_.first_y(), width(), shown.height};
}

QRect timeline_canvas::flag_place() const {
    const int x = static_cast<int>(std::lround(state_.scale().x_of(state_.playhead())));
    const int left = std::clamp(x - timeline_sizes.playhead_flag_width / 2, 0,
                                std::max(0, width() - timeline_sizes.playhead_flag_width));
    return {left, (timeline_sizes.ruler_height - timeline_sizes.playhead_flag_height) / 2,
            timeline_sizes.playhead_flag_width, timeline_sizes.playhead_flag_height};
}

timeline_canvas::hit timeline_canvas::hit_at(const QPointF& point) const {
    hit found;
    if (point.y() < timeline_sizes.ruler_height) {
        found.what = hit::part::ruler;
        return found;
    }
    const int y = static_cast<int>(point.y()) - timeline_sizes.ruler_height + state_.first_y();
    found.row = state_.rows().row_at(y);
    if (found.row == state_.rows().size()) return found;
    found.what = hit::part::row;
    const timeline_row& row = state_.rows()[found.row];
    const timeline_scale& scale = state_.scale();
    const double seconds = scale.seconds_at(point.x());
    const double tolerance = timeline_sizes.clip_merge_below * scale.seconds_per_pixel;
    // From the one drawn last, which lies on top.
    for (const clip_track* track : {&row.selected, &row.shown, &row.dimmed}) {
        const std::size_t at = track->at(seconds, tolerance);
        if (at == track->size()) continue;
        const track_clip& clip = (*track)[at];
        found.index = clip.index;
        found.clip = clip_of(row, clip.index);
        found.what = hit::part::clip;
        const double left = scale.x_of(clip.start);
        const double right = scale.x_of(clip.end);
        // A short clip keeps a middle that can be pressed.
        const double grip = std::min<double>(timeline_sizes.edge_grip, (right - left) / 4);
        if (point.x() < left + grip) found.what = hit::part::start_edge;
        if (point.x() > right - grip) found.what = hit::part::end_edge;
        return found;
    }
    return found;
}

QRect timeline_canvas::clip_place(const hit& found) const {
    if (!found.clip) return {};
    const QRect row = row_place(found.row);
    const double left = state_.scale().x_of(found.clip->secs_start());
    const double right = state_.scale().x_of(found.clip->secs_end());
    return QRectF(left, row.top(), right - left, row.height()).toRect();
}

void timeline_canvas::resizeEvent(QResizeEvent*) {
    state_.set_width(width());
    state_.set_rows_height(height() - timeline_sizes.ruler_height);
}

// Only what the playhead leaves and where it comes, unless the ground moved as well.
void timeline_canvas::follow_playhead() {
    const theme_metrics& metrics = theme::current().metrics;
    const double x = state_.scale().x_of(state_.playhead());
    const int reach = timeline_sizes.playhead_flag_width;
    const int left = static_cast<int>(std::min(x, painted_playhead_x_)) - reach;
    const int right = static_cast<int>(std::max(x, painted_playhead_x_)) + reach;
    update(QRect(left, 0, right - left, timeline_sizes.ruler_height));
    const int edge = metrics.playhead_width + metrics.playhead_gap;
    const int from = static_cast<int>(std::min(x, painted_playhead_x_)) - edge;
    const int to = static_cast<int>(std::max(x, painted_playhead_x_)) + edge + 1;
    update(QRect(from, timeline_sizes.ruler_height, to - from, height()));
    for (std::size_t index = 0; index < state_.rows().size(); ++index) {
        if (state_.rows()[index].is_timer) update_clocks(index, x);
        for (const live_piece& piece : state_.rows()[index].live) {
            const int start = static_cast<int>(state_.scale().x_of(piece.clip->secs_start())) - edge;
            update(row_place(index).intersected(QRect(start, 0, to - start, height())));
        }
    }
}

// The clips between the two places of the playhead show another time on their clocks.
void timeline_canvas::update_clocks(std::size_t index, double playhead_x) {
    double left = std::min(playhead_x, painted_playhead_x_);
    double right = std::max(playhead_x, painted_playhead_x_);
    const timeline_row& row = state_.rows()[index];
    const timeline_scale& scale = state_.scale();
    for (const clip_track* track : {&row.shown, &row.dimmed}) {
        for (const double x : {playhead_x, painted_playhead_x_}) {
            const std::size_t at = track->at(scale.seconds_at(x), 0);
            if (at == track->size()) continue;
            left = std::min(left, scale.x_of((*track)[at].start));
            right = std::max(right, scale.x_of((*track)[at].end));
        }
    }
    const QRect place = row_place(index);
    update(place.intersected(QRectF(left, place.top(), right - left + 1, place.height()).toAlignedRect()));
}

void timeline_canvas::paintEvent(QPaintEvent* event) {
    const theme& look = theme::current();
    const theme_metrics& metrics = look.metrics;
    timeline_painter& parts = painter_in_use();
    QPainter painter(this);
    const QRect dirty = event->rect();
    const double x = state_.scale().x_of(state_.playhead());
    painted_playhead_x_ = x;
    painter.setClipRegion(event->region());
    if (dirty.bottom() >= timeline_sizes.ruler_height) paint_rows(painter, dirty);
    painter.setClipRegion(event->region());
    const QRect flag = state_.has_timeline() ? flag_place() : QRect();
    const QRect ruler(0, 0, width(), timeline_sizes.ruler_height);
    if (dirty.intersects(ruler)) {
        parts.paint_ruler(painter, state_.scale(), ruler, flag);
        const QRect below(0, ruler.bottom() - timeline_sizes.major_tick_length, width(),
                          timeline_sizes.major_tick_length);
        parts.paint_triggers(painter, state_.rows().ruler_triggers(), look.muted, state_.scale(), below,
                             dirty);
    }
    if (state_.has_timeline()) {
        if (x >= -metrics.playhead_width && x <= width() + metrics.playhead_width) {
            parts.paint_playhead(painter, x, flag.bottom(), height());
            parts.paint_flag(painter, flag, state_.playhead());
        }
        paint_drag(painter);
    }
    if (shows_focus_) paint_inner_focus_ring(painter, look, rect());
}

void timeline_canvas::paint_rows(QPainter& painter, const QRect& dirty) {
    const theme& look = theme::current();
    const theme_metrics& metrics = look.metrics;
    const QRect ground(0, timeline_sizes.ruler_height, width(), height() - timeline_sizes.ruler_height);
    painter.setClipRect(ground, Qt::IntersectClip);
    painter.fillRect(ground.intersected(dirty), look.pane);
    const int x = static_cast<int>(std::clamp(state_.scale().x_of(state_.playhead()), -1.0, width() + 1.0));
    painter.fillRect(QRect(x, ground.top(), width() - x, ground.height()), look.behind_playhead);
    if (state_.rows().empty()) {
        paint_empty(painter);
        return;
    }
    timeline_painter& parts = painter_in_use();
    const double pulse = pulse_now();
    parts.set_now(state_.playhead());
    for (std::size_t index = state_.rows().row_at(state_.first_y()); index < state_.rows().size(); ++index) {
        const QRect place = row_place(index);
        if (place.top() > dirty.bottom()) break;
        if (place.bottom() < dirty.top()) continue;
        const timeline_row& row = state_.rows()[index];
        painter.fillRect(QRect(0, place.bottom(), width(), metrics.line), look.line);
        parts.paint_clips(painter, row, state_.scale(), place, dirty);
        parts.paint_marks(painter, row, state_.scale(), place, dirty);
        if (!row.triggers.empty())
            parts.paint_triggers(painter, row.triggers, row.colour, state_.scale(), place, dirty);
        if (!row.live.empty())
            parts.paint_live(painter, row, state_.scale(), place, state_.playhead(), pulse);
    }
}

double timeline_canvas::pulse_now() const {
    const theme_motion& motion = theme::current().motion;
    if (!state_.is_playing() || motion.pulse <= 0) return 1;
    const double turn = state_.playhead() * 1000 / motion.pulse;
    const double wave = (1 + std::cos(2 * std::numbers::pi * turn)) / 2;
    return motion.pulse_least + (1 - motion.pulse_least) * wave;
}

void timeline_canvas::paint_empty(QPainter& painter) const {
    const theme& look = theme::current();
    const int line = theme::line_height(type_step::headline);
    const QRect middle(0, height() / 2 - line, width(), line);
    painter.setFont(theme::font(type_step::headline));
    painter.setPen(look.text);
    painter.drawText(middle, Qt::AlignCenter,
                     state_.has_timeline() ? tr("No clips yet") : tr("No event is open"));
    if (!state_.has_timeline()) return;
    painter.setFont(theme::font(type_step::secondary));
    painter.setPen(look.muted);
    painter.drawText(middle.translated(0, line), Qt::AlignCenter,
                     tr("Press a button in the code window while the event plays."));
}

}  // namespace vistels
