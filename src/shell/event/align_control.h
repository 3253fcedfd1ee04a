// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <optional>
#include <string>
#include <vector>

#include "app/event/offset_changes.h"
#include "shell/panes/collection/single_Adjust_offset_View.h"
#include "util/result.h"
#include "util/signal.h"

namespace vistels {

class collection_pane;
class event_notices;
class event_player;
class open_event;

// Brings the vistels of an event into step in a collection's pane: offsets typed, nudged, dragged and by
// "same moment", and the gaps between movie parts. Main thread.
class align_control : public QObject {
    Q_OBJECT
  public:
    // All must outlive the control.
    align_control(collection_pane& pane, event_player& player, event_notices& notices);

    // Null: none. The event must outlive its use here.
    void set_event(open_event* shown);

    void set_aligning(bool aligning);
    // The current vistel shows a frame later or earlier, at the same time of the collection.
    void nudge(int frames);
    // Remembers what the current vistel shows.
    void mark_moment();
    // The current vistel shows the marked instant now. Marked in the same vistel, what it shows now belongs
    // where it was marked.
    void same_moment();
    bool has_mark() const { return mark_.has_value(); }

  Q_SIGNALS:
    // Aligning began or ended, a moment was marked or forgotten.
    void changed();

  private:
    void connect_bar();
    void show();
    void show_playhead();
    void shift(const QString& vistel, double pixels);
    void end_shift(const QString& vistel, double pixels, bool keeps);
    void set_offset(double seconds);
    void change_offset(double by);
    void set_gap(int part, double seconds);
    void nudge_gap(int part, int frames);
    void set_locks_clips(bool locks);
    void forget_mark();
    bool make(const collection_change& change);
    // A held button makes one undo step, saved when it comes up.
    void begin_nudge();
    void end_nudge();
    double frame_seconds(const std::string& vistel) const;
    std::string current() const;
    void tell(const result<void>& done);
    open_event* event() const { return event_; }

    collection_pane& pane_;
    event_player& player_;
    event_notices& notices_;
    open_event* event_ = nullptr;
    std::optional<seen_moment> mark_;
    std::optional<double> shift_frame_;  // how long a frame stands in the movie that is being shifted
    bool nudges_ = false;
    std::vector<connection> connections_;
};

// The parts of a vistel as the strip shows them.
std::vector<shown_part> shown_parts_of(const single_Vistel_CTR& vistel);

}  // namespace vistels
