// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/timeline_parts.h"

#include <QCoreApplication>
#include <QHelpEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QToolTip>
#include <QWheelEvent>
#include <algorithm>
#include <cmath>

#include "shell/controls.h"
#include "shell/theme.h"
#include "shell/timeline_state.h"

namespace vistels {
namespace {

QString count_text(const timeline_row& row) {
    return QStringLiteral("%1/%2").arg(row.passing).arg(row.clips);
}

// "4/25", the first number strong when any clip passes. Returns the left end.
int paint_count(QPainter& painter, const theme& look, const timeline_row& row, const QRect& place) {
    const QFont plain = theme::font(type_step::smallest);
    const QFont strong = theme::font(type_step::clip_label);
    const QString all = QStringLiteral("/%1").arg(row.clips);
    const QString passing = QString::number(row.passing);
    const int all_width = QFontMetrics(plain).horizontalAdvance(all);
    const int passing_width = QFontMetrics(strong).horizontalAdvance(passing);
    painter.setPen(look.muted);
    painter.setFont(plain);
    painter.drawText(place, Qt::AlignRight | Qt::AlignVCenter, all);
    if (row.passing > 0) {
        painter.setPen(look.text);
        painter.setFont(strong);
    }
    painter.drawText(place.adjusted(0, 0, -all_width, 0), Qt::AlignRight | Qt::AlignVCenter, passing);
    return place.right() - all_width - passing_width;
}

void paint_name(QPainter& painter, const theme& look, const timeline_row& row, const QRect& place) {
    const theme_metrics& metrics = look.metrics;
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF swatch(place.left() + metrics.wide_padding,
                        place.top() + (place.height() - metrics.swatch) / 2.0, metrics.swatch,
                        metrics.swatch);
    painter.setPen(look.clip_edge(row.colour));
    painter.setBrush(row.colour);
    painter.drawRoundedRect(swatch.adjusted(0.5, 0.5, -0.5, -0.5), metrics.radius_clip, metrics.radius_clip);
    int right = paint_count(painter, look, row, place.adjusted(0, 0, -metrics.padding, 0)) - metrics.padding;
    if (!row.live.empty()) {
        right -= metrics.live_dot;
        painter.setPen(Qt::NoPen);
        painter.setBrush(look.live);
        painter.drawEllipse(QRectF(right, place.center().y() - metrics.live_dot / 2.0 + 1, metrics.live_dot,
                                   metrics.live_dot));
        right -= metrics.grid;
    }
    const QFont font = theme::font(type_step::secondary);
    const int left = static_cast<int>(swatch.right()) + metrics.padding + 1;
    painter.setFont(font);
    painter.setPen(look.text);
    const QString name = QFontMetrics(font).elidedText(row.name, Qt::ElideRight, right - left);
    painter.drawText(QRect(left, place.top(), right - left, place.height()), Qt::AlignVCenter | Qt::AlignLeft,
                     name);
}

}  // namespace

timeline_names::timeline_names(timeline_state& state, QWidget* parent) : QWidget(parent), state_(state) {
    setObjectName(QStringLiteral("timeline_names"));
    setAccessibleName(tr("Rows"));
    setAttribute(Qt::WA_OpaquePaintEvent);
    connections_.push_back(state_.rows_changed.connect([this] { update(); }));
    connections_.push_back(state_.rows_scrolled.connect([this] { update(); }));
}

void timeline_names::paintEvent(QPaintEvent*) {
    const theme& look = theme::current();
    const theme_metrics& metrics = look.metrics;
    QPainter painter(this);
    painter.fillRect(rect(), look.pane);
    const QRect head(0, 0, width(), metrics.ruler_height);
    painter.setClipRect(rect().adjusted(0, metrics.ruler_height, 0, 0));
    for (const timeline_row& row : state_.rows()) {
        const QRect place(0, metrics.ruler_height + row.top - state_.first_y(), width(), row.height);
        if (place.bottom() < metrics.ruler_height) continue;
        if (place.top() > height()) break;
        painter.fillRect(QRect(0, place.bottom(), width(), metrics.line), look.line);
        painter.save();
        paint_name(painter, look, row, place);
        painter.restore();
    }
    painter.setClipping(false);
    painter.fillRect(head, look.window);
    painter.fillRect(QRect(0, head.bottom(), width(), metrics.line), look.line);
    painter.setFont(theme::font(type_step::smallest));
    painter.setPen(look.muted);
    painter.drawText(head.adjusted(metrics.wide_padding, 0, 0, 0), Qt::AlignVCenter | Qt::AlignLeft,
                     tr("Row"));
    painter.drawText(head.adjusted(0, 0, -metrics.padding, 0), Qt::AlignVCenter | Qt::AlignRight,
                     tr("pass / all"));
    painter.fillRect(QRect(width() - metrics.line, 0, metrics.line, height()), look.line);
}

bool timeline_names::event(QEvent* event) {
    if (event->type() == QEvent::ToolTip) {
        const auto* help = static_cast<QHelpEvent*>(event);
        const int y = help->pos().y() - theme::current().metrics.ruler_height;
        const std::size_t index = y < 0 ? state_.rows().size() : state_.rows().row_at(y + state_.first_y());
        if (index < state_.rows().size()) {
            const timeline_row& row = state_.rows()[index];
            const QString category = row.record ? QString::fromStdString(row.record->category()) : QString();
            const QString name =
                category.isEmpty() ? row.name : QStringLiteral("%1 – %2").arg(row.name, category);
            QToolTip::showText(help->globalPos(), name + QStringLiteral("  ") + count_text(row), this);
        } else {
            QToolTip::hideText();
        }
        return true;
    }
    return QWidget::event(event);
}

void timeline_names::wheelEvent(QWheelEvent* event) {
    constexpr int notch = 120;
    const int rows = event->angleDelta().y() * theme::current().metrics.row_height / notch;
    state_.scroll_rows_to(state_.first_y() - rows);
    event->accept();
}

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
    connections_.push_back(state_.rows_changed.connect(anew));
}

QRect timeline_whole_event::strip() const {
    const theme_metrics& metrics = theme::current().metrics;
    const int left = metrics.row_names_width + metrics.padding;
    return {left, metrics.grid, std::max(1, width() - left - metrics.padding), metrics.whole_event_height};
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
    std::vector<timeline_bar> bars;
    int number = 0;
    for (const timeline_row& row : state_.rows()) {
        const int y = high + static_cast<int>(room * number++ / rows);
        for (const clip_track* track : {&row.dimmed, &row.shown}) {
            bars.clear();
            track->add_bars(scale, place.width(), {}, bars);
            for (const timeline_bar& bar : bars) {
                const QColor& colour = row.palette[bar.colour];
                const QColor seen = bar.dimmed ? mix(colour, look.pane, look.filtered_out_share) : colour;
                const int left = static_cast<int>(std::lround(bar.left));
                const int right = std::max(left + 1, static_cast<int>(std::lround(bar.right)));
                painter.fillRect(QRect(left, y, right - left, high), seen);
            }
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
    painter.drawText(QRect(metrics.wide_padding, 0, metrics.row_names_width, height()),
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
