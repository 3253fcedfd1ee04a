// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "timeline/files/timeline_document.h"
#include "util/result.h"
#include "util/signal.h"
#include "video/collection_document.h"
#include "video/collection_edit.h"
#include "video/video_collection_ROOT.h"

namespace vistels {

class undo_stack;

// A change of a collection that is to be made.
struct collection_change {
    std::string name;   // shown in the undo menu: "Move Vistel"
    std::string scope;  // the object that it belongs to; soon after each other, changes of the same values of
                        // one scope and name become one undo step
    // Changes a copy of the collection; the difference is the edit. A failure changes nothing.
    std::function<result<void>(video_collection_ROOT& copy)> change;
    // By how much the times of the timeline move along. Nothing: by the old largest offset less the new one,
    // which leaves every clip on its frames in all vistels whose own offset did not change.
    std::optional<double> shift = {};
    // What changes on the timeline besides, after that.
    std::vector<operation::any> operations = {};
};

// By how much the times of the timeline move when the change makes `after` of `before`; 0 when not worth it.
double shift_of(const collection_change& change, const video_collection_ROOT& before,
                const video_collection_ROOT& after);

// The only way to change an open collection so that it can be taken back: each change is one edit, planned
// whole, on record together with what it does to the timeline, as one edit of both. Saving follows in the
// background, and its result is told by the document. Undo and redo come the same way. Main thread.
class collection_changes {
  public:
    // The references must outlive this; the timeline is the collection's keeper. `undo` may be null, and set
    // later.
    collection_changes(collection_document& collection, timeline_document& timeline);
    collection_changes(const collection_changes&) = delete;
    collection_changes& operator=(const collection_changes&) = delete;
    void set_undo(undo_stack* undo) { undo_ = undo; }
    // What else lies on the collection's clock: the part of an edit that moves it by that many seconds.
    using shift_planner = std::function<std::optional<document_part>(double seconds)>;
    void set_shift_planner(shift_planner plan) { plan_shift_ = std::move(plan); }

    // Makes the change; it is on record then. A refused one, of a timeline that cannot be written for
    // instance, leaves everything as it was. A change that changes nothing is none.
    result<void> make(const collection_change& change);

    // Changes from begin() to end() become one undo step with that name: what a drag does. cancel() takes
    // back what was done since begin() and ends it. Not nested.
    void begin(std::string name);
    void end();
    result<void> cancel();
    bool is_within_change() const { return is_within_; }

    // By how many seconds the timeline's times moved, in what the journal brought back, since the collection
    // was saved as it is here. To be asked before that is taken up.
    static double seconds_not_saved(const video_collection_ROOT& collection,
                                    const timeline_document& timeline);

    // The collection changed, by a change, undo or redo, before it is saved; by how many seconds the times of
    // the timeline moved.
    signal<double> made;

  private:
    void follow(const timeline_edit& edit);

    collection_document& collection_;
    timeline_document& timeline_;
    shift_planner plan_shift_;
    undo_stack* undo_ = nullptr;
    bool is_within_ = false;
    bool has_steps_within_ = false;
    connection edited_;
};

}  // namespace vistels
