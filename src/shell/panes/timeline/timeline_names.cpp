// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/panes/timeline/timeline_names.h"

#include <QHelpEvent>
#include <QKeyEvent>
#include <QLinearGradient>
#include <QMouseEvent>
#include <QPainter>
#include <QToolTip>
#include <QWheelEvent>
#include <algorithm>
#include <cmath>
#include <optional>

#include "shell/kit/theme.h"
#include "shell/kit/theme_time_text.h"
#include "shell/panes/timeline/timeline_metrics.h"
#include "shell/panes/timeline/timeline_state.h"

namespace vistels {
namespace {

// In words, for a tool tip.
QString count_text(const timeline_row& row, bool is_filtered) {
    if (is_filtered)
        return timeline_names::tr("%1 of %2 clips pass the filter").arg(row.passing).arg(row.clips);
    return row.clips == 1 ? timeline_names::tr("1 clip") : timeline_names::tr("%1 clips").arg(row.clips);
}

// "25", with a filter "4/25", the first number strong when any clip passes. Returns the left end.
int paint_count(QPainter& painter, const theme& look, const timeline_row& row, bool is_filtered,
                const QRect& place) {
    const QFont plain = theme::font(type_step::smallest);
    const QFont strong = theme::font(type_step::clip_label);
    const QString all = is_filtered ? QStringLiteral("/%1").arg(row.clips) : QString::number(row.clips);
    const QString passing = QString::number(row.passing);
    const int all_width = QFontMetrics(plain).horizontalAdvance(all);
    const int passing_width = QFontMetrics(strong).horizontalAdvance(passing);
    painter.setPen(look.muted);
    painter.setFont(plain);
    painter.drawText(place, Qt::AlignRight | Qt::AlignVCenter, all);
    if (!is_filtered) return place.right() - all_width;
    if (row.passing > 0) {
        painter.setPen(look.text);
        painter.setFont(strong);
    }
    painter.drawText(place.adjusted(0, 0, -all_width, 0), Qt::AlignRight | Qt::AlignVCenter, passing);
    return place.right() - all_width - passing_width;
}

// A row that stands for several has a stripe of each one's colour.
void paint_swatch(QPainter& painter, const theme& look, const timeline_row& row, const QRectF& swatch) {
    const QRectF box = swatch.adjusted(0.5, 0.5, -0.5, -0.5);
    const double radius = look.metrics.radius_clip;
    painter.setPen(look.clip_edge(row.colour));
    painter.setBrush(row.colour);
    if (row.merged.size() > 1) {
        QLinearGradient stripes(swatch.topLeft(), swatch.bottomLeft());
        const double height = 1.0 / static_cast<double>(row.merged.size());
        for (std::size_t i = 0; i < row.merged.size(); ++i) {
            const double top = static_cast<double>(i) * height;
            stripes.setColorAt(std::min(top + (i > 0 ? 1e-6 : 0), 1.0), row.merged[i]);
            stripes.setColorAt(std::min(top + height, 1.0), row.merged[i]);
        }
        painter.setBrush(stripes);
    }
    painter.drawRoundedRect(box, radius, radius);
}

// The clock of a timer row; in the place of the number of clips, unless that tells what passes the filter.
// Returns the left end.
int paint_clock(QPainter& painter, const theme& look, double seconds, const QRect& place) {
    const QFont font = theme::font(type_step::secondary_strong);
    const QString text = time_text(seconds, time_form::run_time);
    painter.setPen(look.text);
    draw_time_text(painter, place, Qt::AlignRight, text, font);
    return place.right() - static_cast<int>(std::ceil(time_text_width(text, font)));
}

void paint_name(QPainter& painter, const theme& look, const timeline_row& row, bool is_filtered,
                std::optional<double> clock, const QRect& place) {
    const theme_metrics& metrics = look.metrics;
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF swatch(place.left() + metrics.wide_padding,
                        place.top() + (place.height() - metrics.swatch) / 2.0, metrics.swatch,
                        metrics.swatch);
    paint_swatch(painter, look, row, swatch);
    const QRect facts = place.adjusted(0, 0, -metrics.padding, 0);
    int right = facts.right();
    if (is_filtered || !clock) right = paint_count(painter, look, row, is_filtered, facts) - metrics.padding;
    if (clock) {
        right = paint_clock(painter, look, *clock,
                            QRect(QPoint(facts.left(), facts.top()), QPoint(right, facts.bottom()))) -
                metrics.padding;
    }
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
    setFocusPolicy(Qt::TabFocus);
    connections_.push_back(state_.rows_changed.connect([this] {
        forget_those_gone();
        update();
    }));
    connections_.push_back(state_.rows_scrolled.connect([this] { update(); }));
    connections_.push_back(state_.playhead_moved.connect([this] {
        for (const timeline_row& row : state_.rows()) {
            if (row.is_timer) update(place_of(row));
        }
    }));
}

QRect timeline_names::place_of(const timeline_row& row) const {
    return {0, timeline_sizes.ruler_height + row.top - state_.first_y(), width(), row.height};
}

void timeline_names::paintEvent(QPaintEvent*) {
    const theme& look = theme::current();
    const theme_metrics& metrics = look.metrics;
    QPainter painter(this);
    painter.fillRect(rect(), look.pane);
    const QRect head(0, 0, width(), timeline_sizes.ruler_height);
    painter.setClipRect(rect().adjusted(0, timeline_sizes.ruler_height, 0, 0));
    for (const timeline_row& row : state_.rows()) {
        const QRect place = place_of(row);
        if (place.bottom() < timeline_sizes.ruler_height) continue;
        if (place.top() > height()) break;
        if (is_chosen(row.uuid)) painter.fillRect(place, look.accent_ground);
        painter.fillRect(QRect(0, place.bottom(), width(), metrics.line), look.line);
        painter.save();
        paint_name(painter, look, row, state_.is_filtered(), state_.clock_of_row(row), place);
        painter.restore();
        if (hasFocus() && row.uuid == current_) {
            painter.setPen(QPen(look.accent, metrics.focus_ring));
            painter.drawRect(QRectF(place).adjusted(1, 1, -2, -2));
        }
    }
    paint_gap(painter);
    painter.setClipping(false);
    painter.fillRect(head, look.window);
    painter.fillRect(QRect(0, head.bottom(), width(), metrics.line), look.line);
    painter.setFont(theme::font(type_step::smallest));
    painter.setPen(look.muted);
    painter.drawText(head.adjusted(metrics.wide_padding, 0, 0, 0), Qt::AlignVCenter | Qt::AlignLeft,
                     tr("Row"));
    painter.drawText(head.adjusted(0, 0, -metrics.padding, 0), Qt::AlignVCenter | Qt::AlignRight,
                     state_.is_filtered() ? tr("pass / all") : tr("clips"));
    painter.fillRect(QRect(width() - metrics.line, 0, metrics.line, height()), look.line);
}

bool timeline_names::event(QEvent* event) {
    if (event->type() == QEvent::ToolTip) {
        const auto* help = static_cast<QHelpEvent*>(event);
        const std::size_t index = row_at(help->pos().y());
        if (index < state_.rows().size()) {
            const timeline_row& row = state_.rows()[index];
            const QString category = row.record ? QString::fromStdString(row.record->category()) : QString();
            QString name = category.isEmpty() ? row.name : QStringLiteral("%1 – %2").arg(row.name, category);
            if (!row.merged.empty()) name += tr(" (%1 rows as one)").arg(row.merged.size());
            QToolTip::showText(help->globalPos(),
                               name + QStringLiteral("\n") + count_text(row, state_.is_filtered()), this);
        } else {
            QToolTip::hideText();
        }
        return true;
    }
    return QWidget::event(event);
}

void timeline_names::wheelEvent(QWheelEvent* event) {
    constexpr int notch = 120;
    const int rows = event->angleDelta().y() * timeline_sizes.row_height / notch;
    state_.scroll_rows_to(state_.first_y() - rows);
    event->accept();
}

std::size_t timeline_names::row_at(int y) const {
    const int below = y - timeline_sizes.ruler_height;
    return below < 0 ? state_.rows().size() : state_.rows().row_at(below + state_.first_y());
}

bool timeline_names::is_chosen(const shared_text& row) const {
    return std::find(chosen_.begin(), chosen_.end(), row) != chosen_.end();
}

std::vector<shared_text> timeline_names::chosen() const {
    std::vector<shared_text> rows;
    for (const timeline_row& row : state_.rows()) {
        if (is_chosen(row.uuid)) rows.push_back(row.uuid);
    }
    return rows;
}

void timeline_names::choose(std::vector<shared_text> rows) {
    chosen_ = std::move(rows);
    update();
}

// All rows from the anchor to this one.
void timeline_names::choose_up_to(std::size_t index) {
    const timeline_rows& rows = state_.rows();
    std::size_t from = rows.row_with(anchor_);
    if (from == rows.size()) from = index;
    std::vector<shared_text> range;
    for (std::size_t i = std::min(from, index); i <= std::max(from, index); ++i)
        range.push_back(rows[i].uuid);
    anchor_ = rows[from].uuid;
    choose(std::move(range));
}

void timeline_names::forget_those_gone() {
    std::erase_if(chosen_, [this](const shared_text& row) {
        return state_.rows().row_with(row) == state_.rows().size();
    });
}

void timeline_names::compact_chosen() {
    if (auto made = state_.compact_rows(chosen()); !made.empty()) choose(std::move(made));
}

void timeline_names::expand_chosen() {
    if (auto made = state_.expand_rows(chosen()); !made.empty()) choose(std::move(made));
}

void timeline_names::mousePressEvent(QMouseEvent* event) {
    const std::size_t index = row_at(event->pos().y());
    const bool is_row = index < state_.rows().size();
    if (event->button() == Qt::RightButton) return;  // the menu follows
    if (!is_row) return choose({});
    const shared_text row = state_.rows()[index].uuid;
    current_ = row;
    pressed_at_ = event->pos().y();
    const bool is_plain = (event->modifiers() & (Qt::ShiftModifier | Qt::ControlModifier)) == 0;
    if (is_plain && is_chosen(row) && chosen_.size() > 1) return;  // they may be dragged
    if (event->modifiers() & Qt::ShiftModifier) return choose_up_to(index);
    anchor_ = row;
    if (!(event->modifiers() & Qt::ControlModifier)) return choose({row});
    std::vector<shared_text> rows = chosen_;
    if (std::erase(rows, row) == 0) rows.push_back(row);
    choose(std::move(rows));
}

void timeline_names::keyPressEvent(QKeyEvent* event) {
    const timeline_rows& rows = state_.rows();
    if (event->key() == Qt::Key_Escape && gap_) {
        gap_.reset();
        pressed_at_.reset();
        return update();
    }
    if (event->key() == Qt::Key_Escape && !chosen_.empty()) return choose({});
    if (event->key() == Qt::Key_F2 && !current_.empty()) return edit_name(current_);
    if ((event->modifiers() & Qt::AltModifier) != 0 &&
        (event->key() == Qt::Key_Up || event->key() == Qt::Key_Down))
        return move_chosen_by(event->key() == Qt::Key_Up ? -1 : 1);
    const bool moves = event->key() == Qt::Key_Up || event->key() == Qt::Key_Down;
    if (!moves || rows.empty()) return QWidget::keyPressEvent(event);
    const std::size_t at = rows.row_with(current_);
    const bool is_down = event->key() == Qt::Key_Down;
    std::size_t to = is_down ? at + 1 : at - std::min<std::size_t>(at, 1);
    if (at == rows.size()) to = 0;
    to = std::min(to, rows.size() - 1);
    current_ = rows[to].uuid;
    const int top = rows[to].top;
    if (top < state_.first_y()) state_.scroll_rows_to(top);
    const int below = top + rows[to].height - state_.rows_height();
    if (below > state_.first_y()) state_.scroll_rows_to(below);
    if (event->modifiers() & Qt::ShiftModifier) return choose_up_to(to);
    anchor_ = current_;
    choose({current_});
}

void timeline_names::focusInEvent(QFocusEvent* event) {
    if (state_.rows().row_with(current_) == state_.rows().size() && !state_.rows().empty()) {
        current_ = state_.rows()[0].uuid;
    }
    update();
    QWidget::focusInEvent(event);
}

void timeline_names::focusOutEvent(QFocusEvent* event) {
    update();
    QWidget::focusOutEvent(event);
}

}  // namespace vistels
