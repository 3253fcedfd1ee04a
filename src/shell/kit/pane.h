// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class QWidget;

namespace vistels {

enum class pane_kind { collection, timeline, code_window, inspector };

// A part of a window that shows an event in its own way. Any window hosts panes of any kind, none, one or
// several of each; a binder connects a pane to the event it shows (`event_binder`). It holds nothing of the
// event itself. Main thread.
class pane {
  public:
    virtual pane_kind kind() const = 0;
    virtual QWidget& widget() = 0;

  protected:
    // Panes are destroyed as widgets.
    ~pane() = default;
};

}  // namespace vistels
