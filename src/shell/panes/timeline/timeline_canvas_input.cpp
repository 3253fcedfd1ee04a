// SPDX-License-Identifier: GPL-3.0-or-later
// What a timeline's canvas does with the mouse, the wheel and the keys.
#include <QHelpEvent>
#include <QMouseEvent>
#include <QToolTip>
#include <QWheelEvent>
#include <algorithm>
#include <cmath>

#include "shell/kit/theme_time_text.h"
#include "shell/panes/timeline/timeline_canvas.h"
#include "shell/panes/timeline/timeline_metrics.h"
#include "shell/panes/timeline/timeline_state.h"

namespace vistels {
namespace {

constexpr double wheel_zoom = 1.2;          // for each notch
constexpr double wheel_scroll_share = 0.1;  // of the width for each notch
constexpr double notch = 120;               // of a wheel, in the units of its events

}  // namespace

bool timeline_canvas::event(QEvent* event) {
    if (event->type() == QEvent::ToolTip) {
        const auto* help = static_cast<QHelpEvent*>(event);
        const hit found = hit_at(help->pos());
        if (const QString told = triggers_at(help->pos()); !told.isEmpty()) {
            QToolTip::showText(help->globalPos(), told, this);
        } else if (found.clip) {
            QToolTip::showText(help->globalPos(), description(found), this, clip_place(found));
        } else {
            QToolTip::hideText();
        }
        return true;
    }
    return QWidget::event(event);
}

// What those of buttons do that are drawn there.
QString timeline_canvas::triggers_at(const QPoint& point) const {
    const hit found = hit_at(point);
    const bool is_ruler = found.what == hit::part::ruler;
    if (!is_ruler && found.row >= state_.rows().size()) return {};
    const double near = timeline_sizes.trigger_mark / 2.0;
    QStringList told;
    for (const button_trigger& one :
         is_ruler ? state_.rows().ruler_triggers() : state_.rows()[found.row].triggers) {
        if (std::abs(state_.scale().x_of(one.at) - point.x()) > near) continue;
        const QString at = time_text(one.at, time_form::clock);
        const QString words = one.effect == trigger_effect::goes_down ? tr("%1: “%2” goes down")
                              : one.effect == trigger_effect::goes_up ? tr("%1: “%2” goes up")
                                                                      : tr("%1: “%2”, does nothing");
        told << words.arg(at, one.button.toHtmlEscaped());
    }
    return told.join(QStringLiteral("<br>"));
}

QString timeline_canvas::description(const hit& found) const {
    const timeline_row& row = state_.rows()[found.row];
    const double start = found.clip->secs_start();
    const double end = found.clip->secs_end();
    QString made = QStringLiteral("<b>%1 %2</b><br>%3 – %4 (%5)")
                       .arg(row.name.toHtmlEscaped())
                       .arg(found.index + 1)
                       .arg(time_text(start, time_form::clock), time_text(end, time_form::clock),
                            time_text(end - start, time_form::clock));
    const clip_verdicts& verdicts = state_.verdicts();
    if (!verdicts.passes(*found.clip)) made += QStringLiteral("<br><i>%1</i>").arg(tr("filtered out"));
    const auto qualifiers = found.clip->qualifiers();
    for (const qual_ITEM& qualifier : *qualifiers) {
        const QString name = QString::fromStdString(qualifier.name().str()).toHtmlEscaped();
        const QString category = QString::fromStdString(qualifier.category().str()).toHtmlEscaped();
        const bool passes = verdicts.marks(qualifier);
        made += (passes ? QStringLiteral("<br><b>%1</b> <i>%2</i>") : QStringLiteral("<br>%1 <i>%2</i>"))
                    .arg(name, category);
    }
    const QString note = QString::fromStdString(found.clip->note_text()).toHtmlEscaped();
    return note.isEmpty() ? made : made + QStringLiteral("<br>%1").arg(note);
}

void timeline_canvas::show_cursor(const QPointF& point) {
    const hit found = hit_at(point);
    const bool on_edge = found.what == hit::part::start_edge || found.what == hit::part::end_edge;
    const bool on_flag = found.what == hit::part::ruler && flag_place().contains(point.toPoint());
    const bool draws = draws_ && found.what == hit::part::row;
    setCursor(on_edge || on_flag ? Qt::SizeHorCursor : draws ? Qt::CrossCursor : Qt::ArrowCursor);
}

void timeline_canvas::leaveEvent(QEvent*) {
    unsetCursor();
}

// After a click the ring would only distract: the hand is where the eye is.
void timeline_canvas::focusInEvent(QFocusEvent* event) {
    shows_focus_ = event->reason() == Qt::TabFocusReason || event->reason() == Qt::BacktabFocusReason;
    update();
}

void timeline_canvas::focusOutEvent(QFocusEvent*) {
    shows_focus_ = false;
    update();
}

// For assistive programs, which can't see the ring round a clip.
void timeline_canvas::describe_selection() {
    QString words;
    const std::size_t count = state_.selected_count();
    if (count > 1) words = tr("%1 clips selected").arg(count);
    for (std::size_t row = 0; count == 1 && row < state_.rows().size(); ++row) {
        const clip_track& track = state_.rows()[row].selected;
        if (track.size() == 0) continue;
        words =
            tr("%1 %2, %3 to %4")
                .arg(state_.rows()[row].name)
                .arg(track[0].index + 1)
                .arg(time_text(track[0].start, time_form::clock), time_text(track[0].end, time_form::clock));
    }
    setAccessibleDescription(words);
}

void timeline_canvas::wheelEvent(QWheelEvent* event) {
    const QPoint turned = event->angleDelta();
    const timeline_scale& scale = state_.scale();
    event->accept();
    if ((event->modifiers() & Qt::ControlModifier) != 0) {
        state_.zoom(std::pow(wheel_zoom, turned.y() / notch), event->position().x());
        return;
    }
    const bool sideways = (event->modifiers() & Qt::ShiftModifier) != 0;
    const double time_notches = (sideways && turned.x() == 0 ? turned.y() : turned.x()) / notch;
    if (time_notches != 0) {
        const double pixels = time_notches * width() * wheel_scroll_share;
        state_.scroll_to(scale.first_seconds - pixels * scale.seconds_per_pixel);
        return;
    }
    wheel_rest_ += -turned.y() / notch * timeline_sizes.row_height;
    const double whole = std::trunc(wheel_rest_);
    wheel_rest_ -= whole;
    state_.scroll_rows_to(state_.first_y() + static_cast<int>(whole));
}

void timeline_canvas::keyPressEvent(QKeyEvent* event) {
    if (event->matches(QKeySequence::SelectAll)) {
        state_.select_all();
        return;
    }
    const bool alt = (event->modifiers() & Qt::AltModifier) != 0;
    switch (event->key()) {
        case Qt::Key_Delete:
        case Qt::Key_Backspace:
            state_.delete_selected();
            return;
        case Qt::Key_Escape:
            if (drag_) {
                give_up_drag();
            } else if (state_.selected_count() > 0) {
                state_.select({});
            } else {
                break;  // whoever is around may have a use for it
            }
            return;
        case Qt::Key_Return:
        case Qt::Key_Enter:
            if (state_.selected_count() == 0) break;
            Q_EMIT play_asked();
            return;
        case Qt::Key_Plus:
        case Qt::Key_Equal:
            state_.zoom_in_place(wheel_zoom);
            return;
        case Qt::Key_Minus:
            state_.zoom_in_place(1 / wheel_zoom);
            return;
        case Qt::Key_Up:
            move_to_neighbour(-1, 0);
            return;
        case Qt::Key_Down:
            move_to_neighbour(1, 0);
            return;
        case Qt::Key_Left:
        case Qt::Key_Right:
            if (!alt) break;
            move_to_neighbour(0, event->key() == Qt::Key_Left ? -1 : 1);
            return;
        default:
            break;
    }
    QWidget::keyPressEvent(event);
}

// From the selected clip to the one before or after it in its row, or to the nearest one in the next row that
// has any; without a selection to the clip nearest to the playhead.
void timeline_canvas::move_to_neighbour(int rows, int clips) {
    const timeline_rows& all = state_.rows();
    std::size_t row = 0;
    while (row < all.size() && all[row].selected.size() == 0) ++row;
    const bool none = row == all.size();
    const double seconds = none ? state_.playhead() : all[row].selected[0].start;
    if (none) {
        row = 0;
        while (row < all.size() && all[row].shown.size() == 0) ++row;
        if (row == all.size()) return;
    } else {
        const std::size_t from = row;
        for (row += static_cast<std::size_t>(rows); row < all.size() && all[row].shown.size() == 0;) {
            row += static_cast<std::size_t>(rows);
        }
        if (row >= all.size()) row = from;
    }
    const clip_track& track = all[row].shown;
    if (track.size() == 0) return;
    std::size_t nearest = 0;
    for (std::size_t at = 0; at < track.size(); ++at) {
        if (std::abs(track[at].start - seconds) < std::abs(track[nearest].start - seconds)) nearest = at;
    }
    if (!none && clips < 0 && nearest > 0) --nearest;
    if (!none && clips > 0 && nearest + 1 < track.size()) ++nearest;
    if (const auto clip = clip_of(all[row], track[nearest].index)) state_.go_to(clip->id());
}

}  // namespace vistels
