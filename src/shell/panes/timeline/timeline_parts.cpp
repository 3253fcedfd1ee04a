// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/panes/timeline/timeline_parts.h"

#include <QMouseEvent>
#include <QPainter>
#include <QWheelEvent>
#include <algorithm>
#include <chrono>
#include <cmath>

#include "shell/kit/controls.h"
#include "shell/kit/theme.h"
#include "shell/panes/timeline/timeline_metrics.h"
#include "shell/panes/timeline/timeline_state.h"

namespace vistels {

namespace {

constexpr std::chrono::milliseconds most_behind(100);

}  // namespace

timeline_whole_event::timeline_whole_event(timeline_state& state, QWidget* parent)
    : QWidget(parent), state_(state) {
    setObjectName(QStringLiteral("timeline_whole_event"));
    setAccessibleName(tr("Whole event"));
    setToolTip(tr("The whole event: drag the frame to scroll"));
    setFocusPolicy(Qt::TabFocus);
    setAttribute(Qt::WA_OpaquePaintEvent);
    connections_.push_back(state_.scale_changed.connect([this] { update(); }));
    connections_.push_back(state_.playhead_moved.connect([this] {
        if (static_cast<int>(std::lround(x_of(state_.playhead()))) != painted_x_) update();
    }));
    const auto anew = [this] {
        clips_ = QPixmap();
        update();
    };
    // All clips are drawn for it: a press does not wait for that.
    makes_anew_.setSingleShot(true);
    makes_anew_.setInterval(most_behind);
    connect(&makes_anew_, &QTimer::timeout, this, anew);
    connections_.push_back(state_.rows_changed.connect([this, anew] {
        if (clips_.isNull() || state_.rows().empty()) return anew();
        if (!makes_anew_.isActive()) makes_anew_.start();
    }));
}

QRect timeline_whole_event::strip() const {
    const theme_metrics& metrics = theme::current().metrics;
    const int left = timeline_sizes.row_names_width + metrics.padding;
    return {left, metrics.grid, std::max(1, width() - left - metrics.padding),
            timeline_sizes.whole_event_height};
}

double timeline_whole_event::x_of(double seconds) const {
    const timeline_reach reach = state_.reach();
    return strip().left() +
           (seconds - reach.start_seconds) / (reach.end_seconds - reach.start_seconds) * strip().width();
}

double timeline_whole_event::seconds_at(double x) const {
    const timeline_reach reach = state_.reach();
    return reach.start_seconds +
           (x - strip().left()) / strip().width() * (reach.end_seconds - reach.start_seconds);
}

QRectF timeline_whole_event::frame() const {
    const timeline_scale& scale = state_.scale();
    const double left = x_of(scale.first_seconds);
    const double right = x_of(scale.seconds_at(state_.width()));
    return QRectF(left, strip().top(), std::max(right - left, 4.0), strip().height())
        .intersected(QRectF(strip()));
}

void timeline_whole_event::resizeEvent(QResizeEvent*) {
    clips_ = QPixmap();
}

// Bars of rows whose clips are the same are not made again: that takes as long as there are clips.
const std::vector<timeline_bar>& timeline_whole_event::bars_of(const timeline_row& row, std::size_t index,
                                                               const timeline_scale& scale) {
    row_bars& known = bars_[index];
    if (known.shown != row.shown.version() || known.dimmed != row.dimmed.version()) {
        known = {row.shown.version(), row.dimmed.version(), {}};
        for (const clip_track* track : {&row.dimmed, &row.shown})
            track->add_bars(scale, strip().width(), {}, known.bars);
    }
    return known.bars;
}

// All rows as lines one or two pixels high; kept until a clip changes.
void timeline_whole_event::paint_clips() {
    const theme& look = theme::current();
    const QRect place = strip();
    clips_ = QPixmap((QSizeF(place.size()) * devicePixelRatioF()).toSize());
    clips_.setDevicePixelRatio(devicePixelRatioF());
    clips_.fill(look.is_dark ? look.field : look.raised);
    if (state_.rows().empty()) return;
    QPainter painter(&clips_);
    const timeline_reach reach = state_.reach();
    const timeline_scale scale{reach.start_seconds,
                               (reach.end_seconds - reach.start_seconds) / place.width()};
    const int rows = static_cast<int>(state_.rows().size());
    const int high = std::clamp(place.height() / rows - 1, 1, 2);
    const double room = place.height() - 2.0 * high;
    if (scale != bars_scale_) bars_.clear();
    bars_scale_ = scale;
    bars_.resize(state_.rows().size());
    std::size_t index = 0;
    for (const timeline_row& row : state_.rows()) {
        const int y = high + static_cast<int>(room * static_cast<double>(index) / rows);
        for (const timeline_bar& bar : bars_of(row, index++, scale)) {
            const QColor& colour = row.palette[bar.colour];
            const QColor seen = bar.dimmed ? mix(colour, look.pane, look.filtered_out_share) : colour;
            const int left = static_cast<int>(std::lround(bar.left));
            const int right = std::max(left + 1, static_cast<int>(std::lround(bar.right)));
            painter.fillRect(QRect(left, y, right - left, high), seen);
        }
    }
}

void timeline_whole_event::paintEvent(QPaintEvent*) {
    const theme& look = theme::current();
    const theme_metrics& metrics = look.metrics;
    QPainter painter(this);
    painter.fillRect(rect(), look.pane);
    painter.fillRect(QRect(0, 0, width(), metrics.line), look.line);
    painter.setFont(theme::font(type_step::smallest));
    painter.setPen(look.muted);
    painter.drawText(QRect(metrics.wide_padding, 0, timeline_sizes.row_names_width, height()),
                     Qt::AlignVCenter | Qt::AlignLeft, tr("Whole event"));
    if (clips_.isNull()) paint_clips();
    painter.drawPixmap(strip().topLeft(), clips_);
    if (!state_.has_timeline()) return;
    const int x = static_cast<int>(std::lround(x_of(state_.playhead())));
    painted_x_ = x;
    painter.fillRect(
        QRect(x - metrics.playhead_width / 2, strip().top(), metrics.playhead_width, strip().height()),
        look.selection);
    painter.setRenderHint(QPainter::Antialiasing);
    QColor inside = look.text;
    inside.setAlphaF(static_cast<float>(look.frame_share));
    painter.setBrush(inside);
    painter.setPen(hasFocus() ? QPen(look.accent, metrics.focus_ring) : QPen(look.text, metrics.line));
    painter.drawRoundedRect(frame().adjusted(0.5, 0.5, -0.5, -0.5), metrics.radius_clip, metrics.radius_clip);
}

void timeline_whole_event::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton || !state_.has_timeline()) return;
    const double x = event->position().x();
    const double shown = state_.width() * state_.scale().seconds_per_pixel;
    if (!frame().contains(QPointF(x, strip().center().y()))) state_.scroll_to(seconds_at(x) - shown / 2);
    grip_seconds_ = seconds_at(x) - state_.scale().first_seconds;
}

void timeline_whole_event::mouseMoveEvent(QMouseEvent* event) {
    if (grip_seconds_) state_.scroll_to(seconds_at(event->position().x()) - *grip_seconds_);
}

void timeline_whole_event::mouseReleaseEvent(QMouseEvent*) {
    grip_seconds_.reset();
}

void timeline_whole_event::keyPressEvent(QKeyEvent* event) {
    const double page = state_.width() * state_.scale().seconds_per_pixel;
    constexpr double step_share = 0.1;
    const double first = state_.scale().first_seconds;
    switch (event->key()) {
        case Qt::Key_Left:
            state_.scroll_to(first - page * step_share);
            return;
        case Qt::Key_Right:
            state_.scroll_to(first + page * step_share);
            return;
        case Qt::Key_PageUp:
            state_.scroll_to(first - page);
            return;
        case Qt::Key_PageDown:
            state_.scroll_to(first + page);
            return;
        default:
            QWidget::keyPressEvent(event);
    }
}

void timeline_whole_event::wheelEvent(QWheelEvent* event) {
    // Turned over the strip, the wheel zooms about the middle of what is shown.
    constexpr double wheel_zoom = 1.2;
    constexpr double notch = 120;
    state_.zoom(std::pow(wheel_zoom, event->angleDelta().y() / notch), state_.width() / 2);
    event->accept();
}

}  // namespace vistels
