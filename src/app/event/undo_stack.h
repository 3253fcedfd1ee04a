// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "app/event/undo_history.h"
#include "document/editable_document.h"
#include "util/result.h"
#include "util/run_loop.h"
#include "util/signal.h"

namespace vistels {

// The undo history of one document, and of those that are on record with it: it takes every edit from the
// document's signal and takes it back by making its inverse, which is an edit like any other and goes on
// record like any other. What a step means each document knows (editable_document). Main thread.
//
// A clip that begins to grow is no step, nor is one that is given up while it grows; its finish is one:
// taking it back takes the clip away, doing it again puts the finished clip back. What a step did to a clip
// that is no longer there is passed over, and a step of which nothing is left is forgotten.
class undo_stack {
  public:
    // Both must outlive the stack.
    undo_stack(editable_document& document, const run_loop& loop);

    bool can_undo() const { return !undo_.empty(); }
    bool can_redo() const { return !redo_.empty(); }
    // The name of the step for the menu; empty when there is none.
    std::string undo_name() const { return undo_.empty() ? std::string() : undo_.back().name; }
    std::string redo_name() const { return redo_.empty() ? std::string() : redo_.back().name; }

    // The step that undo() or redo() would take; null when there is none. Another one stands there, or
    // another list of operations, once something was done.
    const undo_step* next_undo() const { return undo_.empty() ? nullptr : &undo_.back(); }
    const undo_step* next_redo() const { return redo_.empty() ? nullptr : &redo_.back(); }

    // The steps that can be taken back, the last one at the end, and those that can be done again, the next
    // one at the end.
    const std::vector<undo_step>& done() const { return undo_; }
    const std::vector<undo_step>& taken_back() const { return redo_; }
    // Whether there were steps before done() that are no longer kept.
    bool lacks_older_steps() const { return lacks_older_; }

    // Takes back the last step, or does the last one that was taken back again. Nothing to do is no error.
    result<void> undo();
    result<void> redo();

    // Edits from begin_group() to end_group() become one step with that name. Groups may nest; the outermost
    // names the step.
    void begin_group(std::string name);
    void end_group();

    void clear();
    // What was taken back is not to be done again.
    void forget_redo();

    // The steps as they are now, at little cost; kept when the timeline is saved.
    undo_history history() const { return {undo_, redo_, prepared_, lacks_older_}; }
    // Takes over steps that were kept. The timeline must be in the state to which they belong.
    void restore(undo_history history);
    // Adds an edit that was done before this stack was connected.
    void add(const document_edit& edit, const document_edit& inverse);

    // What the menus show changed.
    signal<> changed;

    // Edits of values of the same objects, of one scope and name, no further apart than this are one step.
    static constexpr double merge_seconds = 0.6;
    static constexpr std::size_t most_steps = 500;

  private:
    using step = undo_step;

    using part_list = std::vector<document_part>;
    struct growth;

    void take(const document_edit& edit, const document_edit& inverse);
    growth growth_of(const document_edit& edit, const document_edit& inverse) const;
    bool only_sets_values(const document_edit& edit) const;
    bool joins_last(const document_edit& edit, double now) const;
    part_list joined(part_list earlier, const part_list& later) const;
    part_list still_possible(const part_list& parts) const;
    result<void> move_back(std::vector<step>& from, std::vector<step>& to);
    void forget_void_steps();

    editable_document& document_;
    const run_loop& loop_;
    std::vector<step> undo_;
    std::vector<step> redo_;
    std::map<std::string, part_list> prepared_;  // see undo_history
    bool lacks_older_ = false;
    std::optional<document_edit> moved_;  // the inverse that comes while a step is taken back
    bool is_moving_ = false;
    int group_depth_ = 0;
    bool group_has_step_ = false;
    std::string group_name_;
    connection made_;
};

}  // namespace vistels
