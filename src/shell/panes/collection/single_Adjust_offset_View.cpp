// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/panes/collection/single_Adjust_offset_View.h"

#include <QApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <algorithm>
#include <cmath>

#include "shell/kit/controls.h"
#include "shell/kit/theme.h"
#include "shell/kit/theme_time_text.h"
#include "shell/panes/collection/collection_metrics.h"

namespace vistels {

namespace {

// Room behind the last part, so that it can be dragged on.
constexpr double spare_share = 0.12;
constexpr double least_seconds = 1;

}  // namespace

std::vector<double> part_starts(const std::vector<shown_part>& parts, int part, double gap) {
    std::vector<double> starts;
    double at = 0;
    for (std::size_t i = 0; i < parts.size(); ++i) {
        at += static_cast<int>(i) == part ? gap : parts[i].gap_before;
        starts.push_back(at);
        at += parts[i].duration;
    }
    return starts;
}

single_Adjust_offset_View::single_Adjust_offset_View(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("movie_parts.strip"));
    setAccessibleName(tr("Movie parts of the vistel"));
    setToolTip(tr("Drag a movie part to change the gap before it; Escape gives the drag up"));
    setFocusPolicy(Qt::TabFocus);
    setMouseTracking(true);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

QSize single_Adjust_offset_View::sizeHint() const {
    const theme_metrics& metrics = theme::current().metrics;
    return {metrics.filter_width, metrics.touch_height};
}

void single_Adjust_offset_View::set_parts(std::vector<shown_part> parts) {
    if (parts == parts_) return;
    if (drag_ && drag_->part >= static_cast<int>(parts.size())) end_drag(false);
    parts_ = std::move(parts);
    const int last = static_cast<int>(parts_.size()) - 1;
    const int before = chosen_;
    chosen_ = std::clamp(chosen_, last < 0 ? -1 : 0, std::max(last, -1));
    update();
    if (before != chosen_) Q_EMIT chosen_changed();
}

void single_Adjust_offset_View::set_seconds(double seconds) {
    if (std::abs(seconds - seconds_) < seconds_per_pixel() / 2) return;
    seconds_ = seconds;
    update();
}

void single_Adjust_offset_View::set_changeable(bool changeable) {
    changeable_ = changeable;
    if (!changeable) end_drag(false);
}

void single_Adjust_offset_View::choose(int part) {
    const int wanted = std::clamp(part, parts_.empty() ? -1 : 0, static_cast<int>(parts_.size()) - 1);
    if (wanted == chosen_) return;
    chosen_ = wanted;
    update();
    Q_EMIT chosen_changed();
}

QRect single_Adjust_offset_View::line() const {
    const int padding = theme::current().metrics.grid;
    return rect().adjusted(padding, padding, -padding, -padding);
}

double single_Adjust_offset_View::seconds_per_pixel() const {
    if (drag_) return drag_->seconds_per_pixel;
    const auto starts = part_starts(parts_);
    const double end = parts_.empty() ? 0 : starts.back() + parts_.back().duration;
    return std::max(least_seconds, end * (1 + spare_share)) / std::max(1, line().width());
}

QRect single_Adjust_offset_View::place_of(int part) const {
    if (part < 0 || part >= static_cast<int>(parts_.size())) return {};
    const auto starts = drag_ ? part_starts(parts_, drag_->part, drag_->gap) : part_starts(parts_);
    const auto at = static_cast<std::size_t>(part);
    const double scale = seconds_per_pixel();
    const int left = line().left() + static_cast<int>(std::lround(starts[at] / scale));
    const int right =
        line().left() + static_cast<int>(std::lround((starts[at] + parts_[at].duration) / scale));
    return {left, line().top(), std::max(1, right - left), line().height()};
}

std::optional<double> single_Adjust_offset_View::dragged_gap() const {
    return drag_ && drag_->moves ? std::optional(drag_->gap) : std::nullopt;
}

void single_Adjust_offset_View::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton || drag_) return;
    const QPoint point = event->position().toPoint();
    for (int part = 0; part < static_cast<int>(parts_.size()); ++part) {
        if (!place_of(part).contains(point)) continue;
        choose(part);
        if (!changeable_) return;
        const double gap = parts_[static_cast<std::size_t>(part)].gap_before;
        dragging drag;
        drag.part = part;
        drag.from = point;
        drag.gap_at_mouse_down = gap;
        drag.gap = gap;
        drag.seconds_per_pixel = seconds_per_pixel();
        drag_ = drag;
        watch_.begin();
        return;
    }
}

void single_Adjust_offset_View::mouseMoveEvent(QMouseEvent* event) {
    const QPoint point = event->position().toPoint();
    if (!drag_) {
        bool over = false;
        for (int part = 0; part < static_cast<int>(parts_.size()); ++part)
            over = over || place_of(part).contains(point);
        return setCursor(over && changeable_ ? Qt::SizeHorCursor : Qt::ArrowCursor);
    }
    const QPoint moved = point - drag_->from;
    if (!drag_->moves && std::abs(moved.x()) < QApplication::startDragDistance()) return;
    drag_->moves = true;
    drag_->gap = drag_->gap_at_mouse_down + moved.x() * drag_->seconds_per_pixel;
    // A little over the edge is a hand that wants the edge.
    const double near_to_nothing = collection_sizes.vistel_snap * drag_->seconds_per_pixel;
    if (std::abs(drag_->gap) < near_to_nothing) drag_->gap = 0;
    const QRect room = rect().adjusted(0, -height(), 0, height());
    drag_->is_valid = drag_->gap >= 0 && room.contains(point);
    update();
    Q_EMIT gap_dragged(drag_->part, drag_->gap);
}

void single_Adjust_offset_View::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton && drag_) end_drag(drag_->is_valid);
}

void single_Adjust_offset_View::end_drag(bool keeps) {
    if (!drag_) return;
    const dragging ended = *drag_;
    drag_.reset();
    watch_.end();
    update();
    if (!ended.moves) return;
    if (keeps && ended.gap != ended.gap_at_mouse_down) {
        Q_EMIT gap_asked(ended.part, ended.gap);
    } else {
        Q_EMIT drag_cancelled(ended.part);
    }
}

// Page keys choose a part.
bool single_Adjust_offset_View::event(QEvent* event) {
    if (event->type() == QEvent::ShortcutOverride) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        if (key == Qt::Key_PageUp || key == Qt::Key_PageDown) {
            event->accept();
            return true;
        }
    }
    return QWidget::event(event);
}

void single_Adjust_offset_View::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_PageUp) return choose(chosen_ - 1);
    if (event->key() == Qt::Key_PageDown) return choose(chosen_ + 1);
    QWidget::keyPressEvent(event);
}

void single_Adjust_offset_View::focusInEvent(QFocusEvent* event) {
    update();
    QWidget::focusInEvent(event);
}

void single_Adjust_offset_View::focusOutEvent(QFocusEvent* event) {
    update();
    QWidget::focusOutEvent(event);
}

void single_Adjust_offset_View::paintEvent(QPaintEvent*) {
    const theme& look = theme::current();
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(look.field);
    painter.drawRoundedRect(rect(), look.metrics.radius_control, look.metrics.radius_control);
    int end = line().left();
    for (int part = 0; part < static_cast<int>(parts_.size()); ++part) {
        const QRect place = place_of(part);
        const bool is_dragged = drag_ && drag_->moves && drag_->part == part;
        const double gap = is_dragged ? drag_->gap : parts_[static_cast<std::size_t>(part)].gap_before;
        if (place.left() > end)
            paint_gap(painter, QRect(QPoint(end, place.top()), QPoint(place.left() - 1, place.bottom())),
                      gap);
        end = place.right() + 1;
    }
    // The chosen part lies over its neighbours while it is dragged.
    for (int part = 0; part < static_cast<int>(parts_.size()); ++part) {
        if (part != chosen_) paint_part(painter, part, place_of(part));
    }
    if (chosen_ >= 0) paint_part(painter, chosen_, place_of(chosen_));
    const int x = line().left() + static_cast<int>(std::lround(seconds_ / seconds_per_pixel()));
    if (x >= line().left() && x <= line().right()) {
        painter.fillRect(QRect(x, rect().top(), look.metrics.playhead_width, height()), look.selection);
    }
    if (hasFocus()) paint_inner_focus_ring(painter, look, QRectF(rect()));
}

void single_Adjust_offset_View::paint_gap(QPainter& painter, const QRect& place, double seconds) const {
    const theme& look = theme::current();
    const QString words = time_text(seconds, time_form::field);
    painter.setFont(theme::font(type_step::smallest));
    if (time_text_width(words, painter.font()) + look.metrics.grid > place.width()) return;
    painter.setPen(look.muted);
    draw_time_text(painter, place, Qt::AlignHCenter, words, painter.font());
}

void single_Adjust_offset_View::paint_part(QPainter& painter, int part, const QRect& place) const {
    const theme& look = theme::current();
    const theme_metrics& metrics = look.metrics;
    const shown_part& one = parts_[static_cast<std::size_t>(part)];
    const bool is_wrong = drag_ && drag_->part == part && drag_->moves && !drag_->is_valid;
    QPen edge(is_wrong          ? look.live
              : part == chosen_ ? look.selection
                                : look.edge,
              part == chosen_ ? metrics.focus_ring : metrics.line);
    // Told apart by the edge, not by the colour alone.
    if (one.is_padding || one.is_missing) edge.setStyle(Qt::DashLine);
    painter.setPen(edge);
    painter.setBrush(one.is_padding ? look.field : look.raised);
    painter.drawRoundedRect(outline_of(place), metrics.radius_clip, metrics.radius_clip);
    const QRect inside = place.adjusted(metrics.grid + metrics.line, 0, -metrics.grid, 0);
    painter.setFont(theme::font(type_step::smallest));
    const QString number = QString::number(part + 1);
    const QString length = time_text(one.duration, time_form::clock);
    const QString kind = one.is_padding ? tr("padding") : one.is_missing ? tr("missing") : length;
    painter.setPen(is_wrong || one.is_missing ? look.live : one.is_padding ? look.muted : look.text);
    const QString whole = number + QStringLiteral("  ") + kind;
    const bool fits = painter.fontMetrics().horizontalAdvance(whole) <= inside.width();
    if (fits || painter.fontMetrics().horizontalAdvance(number) <= inside.width()) {
        painter.drawText(inside, Qt::AlignLeft | Qt::AlignVCenter, fits ? whole : number);
    }
}

}  // namespace vistels
