// SPDX-License-Identifier: GPL-3.0-or-later
// How the collection's view is laid out and scrolls.
#include <QApplication>
#include <QScrollBar>
#include <QSignalBlocker>
#include <QWheelEvent>
#include <algorithm>
#include <cmath>

#include "shell/kit/theme.h"
#include "shell/panes/collection/collection_metrics.h"
#include "shell/panes/collection/collection_view.h"
#include "shell/panes/collection/vistel_layout.h"

namespace vistels {

namespace {

constexpr double notch = 120;          // of a wheel, as told by events
constexpr int edge_milliseconds = 16;  // between two steps of scrolling at an edge

}  // namespace

void collection_view::make_bar() {
    bar_ = new QScrollBar(Qt::Vertical, this);
    bar_->setObjectName(QStringLiteral("collection.scroll"));
    bar_->setAccessibleName(tr("Scroll the vistels"));
    bar_->setProperty("kind", QStringLiteral("video"));
    bar_->setCursor(Qt::ArrowCursor);
    bar_->hide();
    connect(bar_, &QScrollBar::valueChanged, this, &collection_view::follow_bar);
    edge_time_.setObjectName(QStringLiteral("collection.edge"));
    edge_time_.setInterval(edge_milliseconds);
    connect(&edge_time_, &QTimer::timeout, this, &collection_view::scroll_on);
}

void collection_view::lay_out() {
    std::vector<rectangle> frames;
    for (const auto& one : tiles_) frames.push_back(one.vistel.frame);
    const double aspect = tiles_.empty() ? 0 : tiles_.front().aspect;
    area_ = scrolls_ && !tiles_.empty()
                ? scrolling_video_area(rect(), frames, aspect, ratio_, bar_->sizeHint().width())
                : video_area(rect(), frames, aspect, ratio_);
    place_area();
    Q_EMIT sizes_changed();
    Q_EMIT sight_changed();
    update();
}

// In an area of another size, and when vistels come below, the same ones stay in sight.
void collection_view::place_area() {
    const int before = bar_->value();
    const int over = std::max(0, area_.height() - height());
    {
        const QSignalBlocker quiet(bar_);
        const int wide = bar_->sizeHint().width();
        bar_->setGeometry(width() - wide, 0, wide, height());
        bar_->setRange(0, over);
        bar_->setPageStep(std::max(1, height()));
        bar_->setSingleStep(collection_sizes.scroll_step);
        bar_->setValue(static_cast<int>(
            std::lround(std::clamp(wanted_offset_.value_or(top_widths_ * area_.width()), 0.0, over * 1.0))));
    }
    show_bar();
    if (over == 0) return;
    area_.moveTop(-bar_->value());
    if (!wanted_offset_ && bar_->value() != before) Q_EMIT scrolled(bar_->value());
}

bool collection_view::can_scroll() const {
    return enlarged_.empty() && bar_->maximum() > 0;
}

void collection_view::show_bar() {
    bar_->setVisible(can_scroll() && leaving_.empty());
}

int collection_view::offset() const {
    return bar_->value();
}

void collection_view::set_offset(double offset) {
    wanted_offset_ = offset;
    lay_out();
}

void collection_view::follow_bar(int value) {
    wanted_offset_.reset();
    top_widths_ = area_.width() > 0 ? static_cast<double>(value) / area_.width() : 0;
    area_.moveTop(-value);
    if (drag_) {
        drag_to(drag_->pointer, drag_->keys);
    } else if (drop_) {
        show_drop(vistel_at(drop_pointer_));
    } else if (underMouse()) {
        hover(mapFromGlobal(QCursor::pos()));
    }
    update();
    Q_EMIT sight_changed();
    Q_EMIT scrolled(value);
}

void collection_view::bring_into_sight(const std::string& vistel) {
    const tile* one = find(vistel);
    if (!one || bar_->maximum() == 0) return;
    // With the gap below it, as whole lines of vistels are seen.
    const QRect home = home_of(*one).adjusted(0, 0, 0, collection_sizes.vistel_gap);
    int by = 0;
    if (home.top() < 0 || home.height() > height()) {
        by = home.top();
    } else if (home.bottom() >= height()) {
        by = home.bottom() - height() + 1;
    }
    bar_->setValue(bar_->value() + by);
}

bool collection_view::is_in_sight(const std::string& vistel) const {
    const tile* one = find(vistel);
    return one && (vistel == enlarged_ || vistel == leaving_ || home_of(*one).intersects(rect()));
}

void collection_view::wheelEvent(QWheelEvent* event) {
    if (!can_scroll() || (event->modifiers() & Qt::ControlModifier)) return event->ignore();
    event->accept();
    // Pixels are to be relied on where scrolling has phases.
    const bool in_pixels = event->phase() != Qt::NoScrollPhase && !event->pixelDelta().isNull();
    const double step = QApplication::wheelScrollLines() * bar_->singleStep();
    wheel_rest_ -= in_pixels ? event->pixelDelta().y() : event->angleDelta().y() / notch * step;
    const double whole = std::trunc(wheel_rest_);
    wheel_rest_ -= whole;
    bar_->setValue(bar_->value() + static_cast<int>(whole));
    if (!drag_) hover(event->position().toPoint());
}

// While something is held near the upper or lower edge it goes on by itself, faster farther out.
void collection_view::scroll_at_edge(const QPoint& point) {
    const int zone = std::min(collection_sizes.vistel_scroll_edge, height() / 4);
    // What was taken up in the zone has to be moved farther out.
    const int from = drag_ ? drag_->pressed.y() : height() / 2;
    const int above = std::min(zone, from) - point.y();
    const int below = point.y() - std::max(height() - 1 - zone, from);
    const int depth = above > 0 ? -above : std::max(0, below);
    const int farthest = collection_sizes.vistel_scroll_step;
    edge_step_ = zone > 0 ? std::clamp(depth * farthest / zone, -farthest, farthest) : 0;
    const bool has_room = edge_step_ < 0 ? bar_->value() > 0 : bar_->value() < bar_->maximum();
    if (!can_scroll() || edge_step_ == 0 || !has_room) return edge_time_.stop();
    if (!edge_time_.isActive()) edge_time_.start();
}

void collection_view::scroll_on() {
    const bool holds = (drag_ && drag_->moves && !drag_->shifts) || drop_;
    const int before = bar_->value();
    if (holds) bar_->setValue(before + edge_step_);
    if (bar_->value() == before) edge_time_.stop();
}

}  // namespace vistels
