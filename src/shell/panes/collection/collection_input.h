// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QPoint>
#include <optional>
#include <string>

#include "shell/kit/drag_watch.h"
#include "shell/panes/collection/collection_layers.h"

class QContextMenuEvent;
class QDropEvent;
class QKeyEvent;
class QMouseEvent;

namespace vistels {

class collection_scrolling;
class collection_view;

// What mouse, keys and drops do in the collection's view: changes what is chosen and held, and asks for the
// rest by the view's signals. Main thread.
class collection_input : public QObject {
    Q_OBJECT
  public:
    // All must outlive it.
    collection_input(collection_view& view, collection_geometry& geometry, collection_handling& handling,
                     collection_scrolling& scrolling);

    void press(const QMouseEvent& event);
    void move(const QMouseEvent& event);
    void release(const QMouseEvent& event);
    void double_click(const QMouseEvent& event);
    void leave();
    void open_menu(const QContextMenuEvent& event);
    bool takes_key(const QKeyEvent& event) const;
    void press_key(const QKeyEvent& event);
    // Movies, or something else, are held over the view, which does not change with `is_changeable` false.
    bool takes_drop(const QDropEvent& event) const;
    void hold_drop(const QDropEvent& event);
    void leave_drop() { show_drop({}); }
    void drop(const QDropEvent& event);

    void hover(const QPoint& point);
    void end_drag(bool keeps);
    // The layout was scrolled below the pointer.
    void follow_scroll();

  private:
    frame_grip grip_at(const std::string& vistel, const QPoint& point) const;
    void drag_to(const QPoint& point, Qt::KeyboardModifiers keys);
    void ask_layout(const std::string& vistel, const rectangle& frame, const char* name);
    void choose_next(int direction);
    void move_by_key(const QKeyEvent& event);
    void show_drop(const std::optional<std::string>& vistel);
    bool holds() const;

    collection_view& view_;
    collection_geometry& geometry_;
    collection_handling& handling_;
    collection_scrolling& scrolling_;
    QPoint drop_pointer_;
    drag_watch watch_;
};

}  // namespace vistels
