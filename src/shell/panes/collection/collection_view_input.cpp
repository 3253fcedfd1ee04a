// SPDX-License-Identifier: GPL-3.0-or-later
// What mouse, keys and drops do in the collection's view.
#include <QApplication>
#include <QContextMenuEvent>
#include <QDragEnterEvent>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QMimeData>
#include <QMouseEvent>
#include <QToolTip>
#include <QUrl>
#include <algorithm>

#include "app/start/open_requests.h"
#include "shell/kit/theme.h"
#include "shell/panes/collection/collection_metrics.h"
#include "shell/panes/collection/collection_view.h"
#include "util/file_system.h"
#include "video/video_coll_Files.h"

namespace vistels {

namespace {

Qt::CursorShape cursor_of(const frame_grip& grip) {
    if (grip.whole) return Qt::SizeAllCursor;
    const bool falls = (grip.left && grip.top) || (grip.right && grip.bottom);
    const bool rises = (grip.right && grip.top) || (grip.left && grip.bottom);
    if (falls) return Qt::SizeFDiagCursor;
    if (rises) return Qt::SizeBDiagCursor;
    if (grip.left || grip.right) return Qt::SizeHorCursor;
    return grip.holds() ? Qt::SizeVerCursor : Qt::ArrowCursor;
}

// Nothing when something else is among them, such as a collection. A folder of movies stands for these.
QStringList movies_in(const QMimeData& data) {
    QStringList movies;
    for (const QUrl& url : data.urls()) {
        const QString path = url.toLocalFile();
        const std::string name = path.toStdString();
        if (!path.isEmpty() && is_folder(name)) {
            const open_requests what = what_to_open({name});
            if (what.found.empty() || what.found.front().what != open_request::kind::movies) return {};
            for (const auto& movie : what.found.front().movies) movies << QString::fromStdString(movie);
        } else if (is_movie_name(name) || is_picture_name(name)) {
            movies << path;
        } else {
            return {};
        }
    }
    return movies;
}

}  // namespace

// An enlarged vistel fills the room; it has no edges to drag.
frame_grip collection_view::grip_at(const tile& one, const QPoint& point) const {
    if (!changeable_ || aligning_ || !enlarged_.empty()) return {};
    const QRect view = place(one);
    if (chip_in(view, one).contains(point)) {
        frame_grip whole;
        whole.whole = true;
        return whole;
    }
    return edges_at(view, point, collection_sizes.vistel_grip);
}

void collection_view::hover(const QPoint& point) {
    const tile* one = tile_at(point);
    const frame_grip grip = one ? grip_at(*one, point) : frame_grip();
    const std::string over = one ? one->vistel.uuid : std::string();
    const bool drags_movies = aligning_ && changeable_ && one;
    setCursor(drags_movies ? Qt::SizeHorCursor : cursor_of(grip));
    if (over == hovered_ && grip == hovered_grip_) return;
    hovered_ = over;
    hovered_grip_ = grip;
    update();
}

frame_drag collection_view::drag_of(const tile& one, frame_grip grip) const {
    frame_drag drag;
    drag.start = one.vistel.frame;
    drag.grip = grip;
    for (const auto& other : tiles_) {
        if (other.vistel.uuid != one.vistel.uuid) drag.others.push_back(other.vistel.frame);
    }
    drag.area = area_.size();
    drag.snap_pixels = collection_sizes.vistel_snap;
    drag.least_pixels = collection_sizes.vistel_least;
    return drag;
}

void collection_view::mousePressEvent(QMouseEvent* event) {
    const QPoint point = event->position().toPoint();
    const tile* one = tile_at(point);
    if (!one || drag_) return;
    set_current(one->vistel.uuid);
    if (event->button() != Qt::LeftButton || !changeable_) return;
    const frame_grip grip = grip_at(*one, point);
    if (!grip.holds() && !aligning_) return;
    drag_.emplace();
    drag_->vistel = one->vistel.uuid;
    drag_->frame = drag_of(*one, grip);
    drag_->pressed = point;
    drag_->from = point - area_.topLeft();
    drag_->pointer = point;
    drag_->keys = event->modifiers();
    drag_->shifts = aligning_;
    drag_->now.frame = one->vistel.frame;
    // Escape is wanted wherever the focus is.
    watch_.begin();
    update();
}

bool collection_view::event(QEvent* event) {
    // Moved to a screen of another density: the same place has another number of pixels.
    if (event->type() == QEvent::ScreenChangeInternal) lay_out();
    if (event->type() == QEvent::ShortcutOverride && takes_key(*static_cast<QKeyEvent*>(event))) {
        event->accept();
        return true;
    }
    if (event->type() == QEvent::ToolTip) {
        const auto* help = static_cast<QHelpEvent*>(event);
        const tile* one = tile_at(help->pos());
        QToolTip::showText(help->globalPos(), one ? one->vistel.problem : QString(), this);
        return true;
    }
    return QWidget::event(event);
}

void collection_view::mouseMoveEvent(QMouseEvent* event) {
    const QPoint point = event->position().toPoint();
    if (!drag_) return hover(point);
    drag_to(point, event->modifiers());
}

void collection_view::drag_to(const QPoint& point, Qt::KeyboardModifiers keys) {
    drag_->pointer = point;
    drag_->keys = keys;
    // Counted in the area: what is held stays under the pointer while that is scrolled.
    const QPoint moved = point - area_.topLeft() - drag_->from;
    if (!drag_->moves && moved.manhattanLength() < QApplication::startDragDistance()) return;
    drag_->moves = true;
    drag_->pixels = moved.x();
    if (drag_->shifts) {
        Q_EMIT shift_dragged(QString::fromStdString(drag_->vistel), drag_->pixels);
        return;
    }
    drag_->frame.keeps_shape = !(keys & Qt::AltModifier);
    drag_->now = drag_frame(drag_->frame, moved);
    scroll_at_edge(point);
    update();
}

void collection_view::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton || !drag_) return;
    drag_to(event->position().toPoint(), event->modifiers());
    end_drag(true);
    hover(event->position().toPoint());
}

void collection_view::end_drag(bool keeps) {
    if (!drag_) return;
    const dragging ended = *drag_;
    drag_.reset();
    watch_.end();
    edge_time_.stop();
    update();
    if (!ended.moves) return;
    Q_EMIT sight_changed();
    const QString vistel = QString::fromStdString(ended.vistel);
    if (ended.shifts) {
        Q_EMIT shift_ended(vistel, ended.pixels, keeps);
    } else if (keeps) {
        ask_layout(ended.vistel, ended.now.frame,
                   ended.frame.grip.whole ? tr("Move Vistel") : tr("Resize Vistel"));
    }
}

// What was moved comes in front, as it was seen while it moved.
void collection_view::ask_layout(const std::string& vistel, const rectangle& frame, const QString& name) {
    vistel_arrangement wanted = arrangement();
    for (auto& one : wanted.vistels) {
        if (one.uuid == vistel) one.frame = frame;
    }
    wanted.vistels = restacked(std::move(wanted.vistels), vistel, true);
    Q_EMIT layout_asked(wanted, name);
}

void collection_view::mouseDoubleClickEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) return;
    end_drag(false);
    const tile* one = tile_at(event->position().toPoint());
    if (!one) return;
    Q_EMIT enlarge_asked(enlarged_.empty() ? QString::fromStdString(one->vistel.uuid) : QString());
}

void collection_view::leaveEvent(QEvent*) {
    if (drag_) return;
    hovered_.clear();
    hovered_grip_ = {};
    update();
}

void collection_view::contextMenuEvent(QContextMenuEvent* event) {
    const bool by_key = event->reason() == QContextMenuEvent::Keyboard;
    const tile* one = by_key ? find(current()) : tile_at(event->pos());
    if (!one) return;
    set_current(one->vistel.uuid);
    if (by_key) bring_into_sight(one->vistel.uuid);
    const QPoint at = by_key ? mapToGlobal(place(*one).center()) : event->globalPos();
    Q_EMIT menu_asked(QString::fromStdString(one->vistel.uuid), at);
}

// Page keys choose a vistel, Return enlarges it; with Alt the arrows move it and with Alt and Shift they
// resize it.
bool collection_view::takes_key(const QKeyEvent& event) const {
    const auto keys = event.modifiers() & ~Qt::KeypadModifier;
    switch (event.key()) {
        case Qt::Key_PageUp:
        case Qt::Key_PageDown:
        case Qt::Key_Return:
        case Qt::Key_Enter:
            return keys == Qt::NoModifier && hasFocus() && !tiles_.empty();
        case Qt::Key_Left:
        case Qt::Key_Right:
        case Qt::Key_Up:
        case Qt::Key_Down:
            return (keys & Qt::AltModifier) && !(keys & Qt::ControlModifier) && hasFocus() && changeable_ &&
                   enlarged_.empty() && !tiles_.empty();
        default:
            return false;
    }
}

void collection_view::keyPressEvent(QKeyEvent* event) {
    if (!takes_key(*event)) return QWidget::keyPressEvent(event);
    switch (event->key()) {
        case Qt::Key_PageUp:
            return choose_next(-1);
        case Qt::Key_PageDown:
            return choose_next(1);
        case Qt::Key_Return:
        case Qt::Key_Enter:
            Q_EMIT enlarge_asked(enlarged_.empty() ? QString::fromStdString(current()) : QString());
            return;
        default:
            return move_by_key(*event);
    }
}

void collection_view::choose_next(int direction) {
    const std::string now = current();
    const auto at =
        std::find_if(tiles_.begin(), tiles_.end(), [&](const tile& one) { return one.vistel.uuid == now; });
    const auto count = static_cast<int>(tiles_.size());
    const auto next = (static_cast<int>(at - tiles_.begin()) + direction + count) % count;
    const std::string uuid = tiles_[static_cast<std::size_t>(next)].vistel.uuid;
    if (!enlarged_.empty()) Q_EMIT enlarge_asked(QString::fromStdString(uuid));
    set_current(uuid);
    if (enlarged_.empty()) bring_into_sight(uuid);
}

void collection_view::move_by_key(const QKeyEvent& event) {
    const tile* one = find(current());
    if (!one) return;
    const bool resizes = event.modifiers() & Qt::ShiftModifier;
    frame_grip grip;
    grip.whole = !resizes;
    grip.right = resizes && (event.key() == Qt::Key_Left || event.key() == Qt::Key_Right);
    grip.bottom = resizes && !grip.right;
    frame_drag drag = drag_of(*one, grip);
    // A step by key goes where it is told to, lines or not.
    drag.snap_pixels = 0;
    const int step = collection_sizes.vistel_key_step;
    const int x = event.key() == Qt::Key_Left ? -step : event.key() == Qt::Key_Right ? step : 0;
    const int y = event.key() == Qt::Key_Up ? -step : event.key() == Qt::Key_Down ? step : 0;
    const rectangle frame = drag_frame(drag, QPointF(x, y)).frame;
    if (frame == one->vistel.frame) return;
    const std::string uuid = one->vistel.uuid;
    ask_layout(uuid, frame, resizes ? tr("Resize Vistel") : tr("Move Vistel"));
    bring_into_sight(uuid);
}

void collection_view::focusInEvent(QFocusEvent* event) {
    update();
    QWidget::focusInEvent(event);
}

void collection_view::focusOutEvent(QFocusEvent* event) {
    update();
    QWidget::focusOutEvent(event);
}

void collection_view::show_drop(const std::optional<std::string>& vistel) {
    if (!vistel) edge_time_.stop();
    if (drop_ == vistel) return;
    drop_ = vistel;
    update();
}

void collection_view::hold_drop(const QPoint& point) {
    drop_pointer_ = point;
    show_drop(vistel_at(point));
    scroll_at_edge(point);
}

void collection_view::dragEnterEvent(QDragEnterEvent* event) {
    // What is no movie goes on to the window, which opens it; so does everything while no collection is open.
    if (!changeable_ || !has_collection_ || movies_in(*event->mimeData()).isEmpty()) return event->ignore();
    event->setDropAction(Qt::CopyAction);
    event->accept();
    hold_drop(event->position().toPoint());
}

void collection_view::dragMoveEvent(QDragMoveEvent* event) {
    event->setDropAction(Qt::CopyAction);
    event->accept();
    hold_drop(event->position().toPoint());
}

void collection_view::dragLeaveEvent(QDragLeaveEvent*) {
    show_drop({});
}

void collection_view::dropEvent(QDropEvent* event) {
    show_drop({});
    const QPoint point = event->position().toPoint();
    event->setDropAction(Qt::CopyAction);
    event->accept();
    Q_EMIT movies_dropped(movies_in(*event->mimeData()), QString::fromStdString(vistel_at(point)),
                          mapToGlobal(point));
}

}  // namespace vistels
