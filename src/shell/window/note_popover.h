// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

#include "shell/event/event_binder.h"
#include "shell/kit/popover.h"
#include "util/signal.h"

class QLabel;

namespace vistels {

class event_notices;
class note_field;
class open_event;

// The note of a clip whose button asks for one, to be written while the event plays on and the button stays
// as it is. It comes up beside the button, with the keys, which are those of the note until it is done: by
// Ctrl+Return, Escape (what was typed is left out then), or a press elsewhere. A further clip takes its
// place. Main thread.
class note_popover final : public popover {
    Q_OBJECT
  public:
    // Both must outlive its use here; the window is its parent.
    note_popover(QWidget& window, event_notices& notices);

    // Null: none. What was typed is kept first.
    void set_event(open_event* event);
    void keep_typed();

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void open(const std::string& clip, const std::string& button);
    bool keep(const std::string& clip, const std::string& text);
    void place_beside(const std::string& button);

    QWidget& window_;
    event_notices& notices_;
    open_event* event_ = nullptr;
    QLabel* title_;
    note_field* field_;
    connection wanted_;
};

// Brings the notes of the event that is open to the window's popover, which it must outlive.
class note_binder final : public event_binder {
  public:
    explicit note_binder(note_popover& popover) : popover_(popover) {}

    void show(open_event* event) override { popover_.set_event(event); }
    pane* shown_in() override { return nullptr; }
    void let_go() override { popover_.keep_typed(); }

  private:
    note_popover& popover_;
};

}  // namespace vistels
