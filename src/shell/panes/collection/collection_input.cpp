// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/panes/collection/collection_input.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QDropEvent>
#include <QKeyEvent>
#include <QMimeData>
#include <QMouseEvent>
#include <QUrl>

#include "app/event/change_names.h"
#include "app/start/open_requests.h"
#include "shell/panes/collection/collection_metrics.h"
#include "shell/panes/collection/collection_scrolling.h"
#include "shell/panes/collection/collection_view.h"
#include "util/file_system.h"
#include "util/wait_watch.h"
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
            // Whether it can be dropped is to be said at once; one folder is listed.
            const expected_waits looking("what is dragged is looked at");
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

collection_input::collection_input(collection_view& view, collection_geometry& geometry,
                                   collection_handling& handling, collection_scrolling& scrolling)
    : view_(view), geometry_(geometry), handling_(handling), scrolling_(scrolling), watch_(view, [this] {
          end_drag(false);
      }) {
    scrolling_.holds = [this] { return holds(); };
}

// An enlarged vistel fills the room; it has no edges to drag.
frame_grip collection_input::grip_at(const std::string& vistel, const QPoint& point) const {
    if (!handling_.is_changeable || handling_.is_aligning || !geometry_.enlarged().empty()) return {};
    if (view_.chip_of(vistel).contains(point)) {
        frame_grip whole;
        whole.whole = true;
        return whole;
    }
    return edges_at(geometry_.place(vistel), point, collection_sizes.vistel_grip);
}

void collection_input::hover(const QPoint& point) {
    const std::string over = geometry_.at(point);
    const frame_grip grip = over.empty() ? frame_grip() : grip_at(over, point);
    const bool drags_movies = handling_.is_aligning && handling_.is_changeable && !over.empty();
    view_.setCursor(drags_movies ? Qt::SizeHorCursor : cursor_of(grip));
    if (over == handling_.hovered && grip == handling_.hovered_grip) return;
    handling_.hovered = over;
    handling_.hovered_grip = grip;
    view_.update();
}

void collection_input::leave() {
    if (handling_.drag) return;
    handling_.hovered.clear();
    handling_.hovered_grip = {};
    view_.update();
}

void collection_input::press(const QMouseEvent& event) {
    const QPoint point = event.position().toPoint();
    const std::string vistel = geometry_.at(point);
    if (vistel.empty() || handling_.drag) return;
    view_.set_current(vistel);
    if (event.button() != Qt::LeftButton || !handling_.is_changeable) return;
    const frame_grip grip = grip_at(vistel, point);
    if (!grip.holds() && !handling_.is_aligning) return;
    auto& drag = handling_.drag.emplace();
    drag.vistel = vistel;
    drag.frame = geometry_.drag_of(vistel, grip);
    drag.pressed = point;
    drag.from = point - geometry_.area().topLeft();
    drag.pointer = point;
    drag.keys = event.modifiers();
    drag.shifts = handling_.is_aligning;
    drag.now.frame = drag.frame.start;
    // Escape is wanted wherever the focus is.
    watch_.begin();
    view_.update();
}

void collection_input::move(const QMouseEvent& event) {
    const QPoint point = event.position().toPoint();
    if (!handling_.drag) return hover(point);
    drag_to(point, event.modifiers());
}

void collection_input::drag_to(const QPoint& point, Qt::KeyboardModifiers keys) {
    auto& drag = *handling_.drag;
    drag.pointer = point;
    drag.keys = keys;
    // Counted in the area: what is held stays under the pointer while that is scrolled.
    const QPoint moved = point - geometry_.area().topLeft() - drag.from;
    if (!drag.moves && moved.manhattanLength() < QApplication::startDragDistance()) return;
    drag.moves = true;
    drag.pixels = moved.x();
    if (drag.shifts) {
        geometry_.hold(drag.vistel, {});
        Q_EMIT view_.shift_dragged(QString::fromStdString(drag.vistel), drag.pixels);
        return;
    }
    drag.frame.keeps_shape = !(keys & Qt::AltModifier);
    drag.now = drag_frame(drag.frame, moved);
    geometry_.hold(drag.vistel, drag.now.frame);
    scrolling_.hold_at(point, drag.pressed.y());
    view_.update();
}

void collection_input::release(const QMouseEvent& event) {
    if (event.button() != Qt::LeftButton || !handling_.drag) return;
    drag_to(event.position().toPoint(), event.modifiers());
    end_drag(true);
    hover(event.position().toPoint());
}

void collection_input::end_drag(bool keeps) {
    if (!handling_.drag) return;
    const collection_handling::dragging ended = *handling_.drag;
    handling_.drag.reset();
    geometry_.let_go();
    watch_.end();
    scrolling_.stop();
    view_.update();
    if (!ended.moves) return;
    Q_EMIT view_.sight_changed();
    if (ended.shifts) {
        Q_EMIT view_.shift_ended(QString::fromStdString(ended.vistel), ended.pixels, keeps);
    } else if (keeps) {
        ask_layout(ended.vistel, ended.now.frame,
                   ended.frame.grip.whole ? change_name::move_vistel : change_name::resize_vistel);
    }
}

// What was moved comes in front, as it was seen while it moved.
void collection_input::ask_layout(const std::string& vistel, const rectangle& frame, const char* name) {
    vistel_arrangement wanted = geometry_.arrangement();
    for (auto& one : wanted.vistels) {
        if (one.uuid == vistel) one.frame = frame;
    }
    wanted.vistels = restacked(std::move(wanted.vistels), vistel, true);
    Q_EMIT view_.layout_asked(wanted, name);
}

void collection_input::double_click(const QMouseEvent& event) {
    if (event.button() != Qt::LeftButton) return;
    end_drag(false);
    const std::string vistel = geometry_.at(event.position().toPoint());
    if (vistel.empty()) return;
    Q_EMIT view_.enlarge_asked(geometry_.enlarged().empty() ? QString::fromStdString(vistel) : QString());
}

void collection_input::open_menu(const QContextMenuEvent& event) {
    const bool by_key = event.reason() == QContextMenuEvent::Keyboard;
    const std::string vistel = by_key ? view_.current() : geometry_.at(event.pos());
    if (vistel.empty()) return;
    view_.set_current(vistel);
    if (by_key) view_.bring_into_sight(vistel);
    const QPoint at = by_key ? view_.mapToGlobal(geometry_.place(vistel).center()) : event.globalPos();
    Q_EMIT view_.menu_asked(QString::fromStdString(vistel), at);
}

// Page keys choose a vistel, Return enlarges it; with Alt the arrows move it and with Alt and Shift they
// resize it.
bool collection_input::takes_key(const QKeyEvent& event) const {
    const auto keys = event.modifiers() & ~Qt::KeypadModifier;
    const bool is_here = view_.hasFocus() && !geometry_.empty();
    switch (event.key()) {
        case Qt::Key_PageUp:
        case Qt::Key_PageDown:
        case Qt::Key_Return:
        case Qt::Key_Enter:
            return keys == Qt::NoModifier && is_here;
        case Qt::Key_Left:
        case Qt::Key_Right:
        case Qt::Key_Up:
        case Qt::Key_Down:
            return (keys & Qt::AltModifier) && !(keys & Qt::ControlModifier) && is_here &&
                   handling_.is_changeable && geometry_.enlarged().empty();
        default:
            return false;
    }
}

void collection_input::press_key(const QKeyEvent& event) {
    switch (event.key()) {
        case Qt::Key_PageUp:
            return choose_next(-1);
        case Qt::Key_PageDown:
            return choose_next(1);
        case Qt::Key_Return:
        case Qt::Key_Enter:
            Q_EMIT view_.enlarge_asked(geometry_.enlarged().empty() ? QString::fromStdString(view_.current())
                                                                    : QString());
            return;
        default:
            return move_by_key(event);
    }
}

void collection_input::choose_next(int direction) {
    const std::string next = geometry_.beside(view_.current(), direction);
    if (!geometry_.enlarged().empty()) Q_EMIT view_.enlarge_asked(QString::fromStdString(next));
    view_.set_current(next);
    if (geometry_.enlarged().empty()) view_.bring_into_sight(next);
}

void collection_input::move_by_key(const QKeyEvent& event) {
    const std::string vistel = view_.current();
    const bool resizes = event.modifiers() & Qt::ShiftModifier;
    frame_grip grip;
    grip.whole = !resizes;
    grip.right = resizes && (event.key() == Qt::Key_Left || event.key() == Qt::Key_Right);
    grip.bottom = resizes && !grip.right;
    frame_drag drag = geometry_.drag_of(vistel, grip);
    // A step by key goes where it is told to, lines or not.
    drag.snap_pixels = 0;
    const int step = collection_sizes.vistel_key_step;
    const int x = event.key() == Qt::Key_Left ? -step : event.key() == Qt::Key_Right ? step : 0;
    const int y = event.key() == Qt::Key_Up ? -step : event.key() == Qt::Key_Down ? step : 0;
    const rectangle frame = drag_frame(drag, QPointF(x, y)).frame;
    if (frame == drag.start) return;
    ask_layout(vistel, frame, resizes ? change_name::resize_vistel : change_name::move_vistel);
    view_.bring_into_sight(vistel);
}

bool collection_input::holds() const {
    const auto& drag = handling_.drag;
    return (drag && drag->moves && !drag->shifts) || handling_.drop;
}

void collection_input::follow_scroll() {
    if (handling_.drag) {
        drag_to(handling_.drag->pointer, handling_.drag->keys);
    } else if (handling_.drop) {
        show_drop(geometry_.at(drop_pointer_));
    } else if (view_.underMouse()) {
        hover(view_.mapFromGlobal(QCursor::pos()));
    }
}

void collection_input::show_drop(const std::optional<std::string>& vistel) {
    if (!vistel) scrolling_.stop();
    if (handling_.drop == vistel) return;
    handling_.drop = vistel;
    view_.update();
}

bool collection_input::takes_drop(const QDropEvent& event) const {
    return handling_.is_changeable && !movies_in(*event.mimeData()).isEmpty();
}

void collection_input::hold_drop(const QDropEvent& event) {
    drop_pointer_ = event.position().toPoint();
    show_drop(geometry_.at(drop_pointer_));
    scrolling_.hold_at(drop_pointer_, view_.height() / 2);
}

void collection_input::drop(const QDropEvent& event) {
    leave_drop();
    const QPoint point = event.position().toPoint();
    Q_EMIT view_.movies_dropped(movies_in(*event.mimeData()), QString::fromStdString(geometry_.at(point)),
                                view_.mapToGlobal(point));
}

}  // namespace vistels
