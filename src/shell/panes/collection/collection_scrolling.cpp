// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/panes/collection/collection_scrolling.h"

#include <QApplication>
#include <QScrollBar>
#include <QSignalBlocker>
#include <QWheelEvent>
#include <algorithm>
#include <cmath>

#include "shell/panes/collection/collection_geometry.h"
#include "shell/panes/collection/collection_metrics.h"

namespace vistels {

namespace {

constexpr double notch = 120;          // of a wheel, as told by events
constexpr int edge_milliseconds = 16;  // between two steps of scrolling at an edge

}  // namespace

collection_scrolling::collection_scrolling(QWidget& view, const collection_geometry& geometry)
    : view_(view), geometry_(geometry), bar_(new QScrollBar(Qt::Vertical, &view)) {
    bar_->setObjectName(QStringLiteral("collection.scroll"));
    bar_->setAccessibleName(tr("Scroll the vistels"));
    bar_->setProperty("kind", QStringLiteral("video"));
    bar_->setCursor(Qt::ArrowCursor);
    bar_->hide();
    connect(bar_, &QScrollBar::valueChanged, this, &collection_scrolling::scrolled_by_user);
    edge_time_.setObjectName(QStringLiteral("collection.edge"));
    edge_time_.setInterval(edge_milliseconds);
    connect(&edge_time_, &QTimer::timeout, this, &collection_scrolling::scroll_on);
}

int collection_scrolling::bar_width() const {
    return bar_->sizeHint().width();
}

void collection_scrolling::show_layout() {
    {
        const QSignalBlocker quiet(bar_);
        const int wide = bar_width();
        bar_->setGeometry(view_.width() - wide, 0, wide, view_.height());
        bar_->setRange(0, geometry_.greatest_offset());
        bar_->setPageStep(std::max(1, view_.height()));
        bar_->setSingleStep(collection_sizes.scroll_step);
        bar_->setValue(geometry_.offset());
    }
    show_bar();
}

void collection_scrolling::show_bar() {
    bar_->setVisible(geometry_.can_scroll() && geometry_.leaving().empty());
}

void collection_scrolling::scroll_to(int offset) {
    bar_->setValue(offset);
}

bool collection_scrolling::turn(const QWheelEvent& event) {
    if (!geometry_.can_scroll() || (event.modifiers() & Qt::ControlModifier)) return false;
    // Pixels are to be relied on where scrolling has phases.
    const bool in_pixels = event.phase() != Qt::NoScrollPhase && !event.pixelDelta().isNull();
    const double step = QApplication::wheelScrollLines() * bar_->singleStep();
    wheel_rest_ -= in_pixels ? event.pixelDelta().y() : event.angleDelta().y() / notch * step;
    const double whole = std::trunc(wheel_rest_);
    wheel_rest_ -= whole;
    bar_->setValue(bar_->value() + static_cast<int>(whole));
    return true;
}

void collection_scrolling::hold_at(const QPoint& point, int from) {
    const int height = view_.height();
    const int zone = std::min(collection_sizes.vistel_scroll_edge, height / 4);
    // What was taken up in the zone has to be moved farther out.
    const int above = std::min(zone, from) - point.y();
    const int below = point.y() - std::max(height - 1 - zone, from);
    const int depth = above > 0 ? -above : std::max(0, below);
    const int farthest = collection_sizes.vistel_scroll_step;
    edge_step_ = zone > 0 ? std::clamp(depth * farthest / zone, -farthest, farthest) : 0;
    const bool has_room = edge_step_ < 0 ? bar_->value() > 0 : bar_->value() < bar_->maximum();
    if (!geometry_.can_scroll() || edge_step_ == 0 || !has_room) return stop();
    if (!edge_time_.isActive()) edge_time_.start();
}

void collection_scrolling::scroll_on() {
    const int before = bar_->value();
    if (holds && holds()) bar_->setValue(before + edge_step_);
    if (bar_->value() == before) stop();
}

}  // namespace vistels
