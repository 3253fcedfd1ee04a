// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/event/undo_stack.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <type_traits>
#include <utility>

#include "video/collection_edit.h"

namespace vistels {

namespace {

using operations = std::vector<operation::any>;

template <class... Kinds>
bool is_one_of(const operation::any& any) {
    return (std::holds_alternative<Kinds>(any) || ...);
}

// Only sets values of what is there: the kind of edit that a drag makes many of.
bool only_sets_values(const operations& all) {
    return std::all_of(all.begin(), all.end(), [](const operation::any& any) {
        if (const auto* beside = std::get_if<operation::change_beside>(&any))
            return !read_collection_edit(beside->change).order;
        return is_one_of<operation::change_clip, operation::change_row, operation::move_clip,
                         operation::shift_times>(any);
    });
}

bool sets_key(const property_dictionary& set, const property_array& unset, const std::string& key) {
    return set.contains(key) || std::find(unset.begin(), unset.end(), property_value(key)) != unset.end();
}

template <class Change>
bool covers_values(const Change& earlier, const Change& later) {
    for (const auto& entry : later.set) {
        if (!sets_key(earlier.set, earlier.unset, entry.key)) return false;
    }
    return std::all_of(later.unset.begin(), later.unset.end(), [&](const property_value& key) {
        return key.text() && sets_key(earlier.set, earlier.unset, *key.text());
    });
}

// True when taking back `earlier` leaves nothing of what taking back `later` would do.
bool covers(const operation::any& earlier, const operation::any& later) {
    return std::visit(
        [&](const auto& first) {
            using kind = std::decay_t<decltype(first)>;
            const auto* second = std::get_if<kind>(&later);
            if (!second) return false;
            if constexpr (std::is_same_v<kind, operation::change_clip>) {
                return first.clip == second->clip && covers_values(first, *second);
            } else if constexpr (std::is_same_v<kind, operation::change_row>) {
                return first.row == second->row && covers_values(first, *second);
            } else if constexpr (std::is_same_v<kind, operation::move_clip>) {
                return first.clip == second->clip;
            } else {
                return false;
            }
        },
        earlier);
}

bool cover(const operations& earlier, const operations& later) {
    return std::all_of(later.begin(), later.end(), [&](const operation::any& one) {
        return std::any_of(earlier.begin(), earlier.end(),
                           [&](const operation::any& first) { return covers(first, one); });
    });
}

// Follows what operations do to which clips and rows exist, to tell which of them can be done.
class feasibility_check {
  public:
    explicit feasibility_check(const sxy_DATA_root& timeline) : timeline_(timeline) {}

    bool can_do(const operation::any& any) {
        return std::visit([this](const auto& one) { return check(one); }, any);
    }

  private:
    bool has_clip(const std::string& clip) const {
        return come_.contains(clip) || (!gone_.contains(clip) && timeline_.find_clip(clip));
    }
    bool has_row(const shared_text& row) const {
        return come_rows_.contains(row.str()) ||
               (!gone_rows_.contains(row.str()) && timeline_.row_index(row).has_value());
    }
    bool is_empty(const shared_text& row) const {
        for (const auto& clip : come_) {
            if (clip.second == row.str()) return false;
        }
        const auto stands_here = [&](const std::string& id) { return !gone_.contains(id); };
        for (const auto& place : timeline_.live_clips()) {
            if (place.row == row && stands_here(place.clip->id())) return false;
        }
        const auto there = timeline_.row(row);
        return !there || std::none_of(there->clips().begin(), there->clips().end(),
                                      [&](const clip_pointer& clip) { return stands_here(clip->id()); });
    }
    bool add(const std::string& clip, const shared_text& row) {
        if (has_clip(clip) || !has_row(row)) return false;
        come_.emplace(clip, row.str());
        return true;
    }

    bool check(const operation::insert_row& one) {
        if (has_row(one.row->uuid())) return false;
        come_rows_.insert(one.row->uuid().str());
        return true;
    }
    bool check(const operation::remove_row& one) {
        if (!has_row(one.row) || !is_empty(one.row)) return false;
        come_rows_.erase(one.row.str());
        gone_rows_.insert(one.row.str());
        return true;
    }
    bool check(const operation::move_row& one) { return has_row(one.row); }
    bool check(const operation::change_row& one) { return has_row(one.row); }
    bool check(const operation::shift_times&) { return true; }
    bool check(const operation::change_beside&) { return true; }
    bool check(const operation::shift_clips& one) {
        return std::any_of(one.clips.begin(), one.clips.end(),
                           [this](const std::string& clip) { return has_clip(clip); });
    }
    bool check(const operation::add_tombstones& one) { return has_row(one.row); }
    bool check(const operation::remove_tombstones& one) { return has_row(one.row); }
    bool check(const operation::insert_clip& one) { return add(one.clip->id(), one.row); }
    bool check(const operation::begin_clip& one) { return add(one.clip->id(), one.row); }
    bool check(const operation::remove_clip& one) {
        if (!has_clip(one.clip)) return false;
        come_.erase(one.clip);
        gone_.insert(one.clip);
        return true;
    }
    bool check(const operation::move_clip& one) {
        if (!has_clip(one.clip) || !has_row(one.row)) return false;
        gone_.insert(one.clip);
        come_[one.clip] = one.row.str();
        return true;
    }
    bool check(const operation::change_clip& one) { return has_clip(one.clip); }
    bool check(const operation::insert_qualifier& one) { return has_clip(one.clip); }
    bool check(const operation::remove_qualifier& one) { return has_clip(one.clip); }
    bool check(const operation::finish_clip& one) { return has_clip(one.clip); }

    const sxy_DATA_root& timeline_;
    std::map<std::string, std::string> come_;  // clip -> its row
    std::set<std::string> gone_;
    std::set<std::string> come_rows_;
    std::set<std::string> gone_rows_;
};

operations still_possible(const sxy_DATA_root& timeline, const operations& all) {
    feasibility_check feasible(timeline);
    operations possible;
    std::copy_if(all.begin(), all.end(), std::back_inserter(possible),
                 [&](const operation::any& one) { return feasible.can_do(one); });
    return possible;
}

using shared_operations = std::shared_ptr<const operations>;

shared_operations shared(operations all) {
    return std::make_shared<const operations>(std::move(all));
}

// `later` and then `earlier`, both taking back changes of a collection, as one; nothing when they are more
// than that, or change different things.
std::optional<operations> joined_changes(const operations& earlier, const operations& later) {
    double shift = 0;
    const operation::change_beside* changes[2] = {};
    const operations* both[2] = {&earlier, &later};
    for (std::size_t which = 0; which < 2; ++which) {
        for (const auto& any : *both[which]) {
            const auto* change = std::get_if<operation::change_beside>(&any);
            const auto* moved = std::get_if<operation::shift_times>(&any);
            if ((!change && !moved) || (change && changes[which])) return std::nullopt;
            if (change) changes[which] = change;
            if (moved) shift += moved->seconds;
        }
    }
    if (!changes[0] || !changes[1]) return std::nullopt;
    if (!sets_the_same(read_collection_edit(changes[0]->change), read_collection_edit(changes[1]->change)))
        return std::nullopt;
    operations joined{operation::change_beside{changes[0]->change, changes[1]->back}};
    if (shift != 0) joined.emplace_back(operation::shift_times{shift});
    return joined;
}

shared_operations put_before(const operations& all, operations first) {
    if (auto joined = joined_changes(all, first)) return shared(std::move(*joined));
    first.insert(first.end(), all.begin(), all.end());
    return shared(std::move(first));
}

}  // namespace

undo_stack::undo_stack(timeline_document& document, const run_loop& loop) : document_(document), loop_(loop) {
    edited_ = document.edited.connect(
        [this](const timeline_edit& edit, const timeline_edit& inverse) { take(edit, inverse); });
}

void undo_stack::take(const timeline_edit& edit, const timeline_edit& inverse) {
    if (is_moving_) {
        moved_ = inverse;
        return;
    }
    if (inverse.operations.empty()) return;
    const bool begins = std::any_of(edit.operations.begin(), edit.operations.end(),
                                    [](const auto& any) { return is_one_of<operation::begin_clip>(any); });
    if (begins) {
        take_growing(edit, inverse);
        return;
    }
    operations back = inverse.operations;
    for (const auto& any : edit.operations) {
        const auto* finish = std::get_if<operation::finish_clip>(&any);
        if (!finish) continue;
        if (auto begun = begun_.extract(finish->clip)) {
            back.insert(back.end(), begun.mapped().begin(), begun.mapped().end());
        }
    }
    const double now = loop_.time().seconds();
    if (joins_last(edit, now)) {
        auto& last = undo_.back();
        if (!cover(*last.operations, back)) {
            last.operations = put_before(*last.operations, std::move(back));
        }
        last.seconds = now;
    } else {
        const bool in_group = group_depth_ > 0;
        undo_.push_back({in_group ? group_name_ : edit.name, edit.scope, shared(std::move(back)), state_, now,
                         !in_group && only_sets_values(edit.operations)});
        group_has_step_ = in_group;
        if (undo_.size() > most_steps) undo_.erase(undo_.begin());
    }
    state_ = ++last_state_;
    redo_.clear();
    forget_void_steps();
    changed.emit();
}

// The clip itself is left out: its finish takes it back.
void undo_stack::take_growing(const timeline_edit& edit, const timeline_edit& inverse) {
    std::set<std::string> growing;
    for (const auto& any : edit.operations) {
        if (const auto* begin = std::get_if<operation::begin_clip>(&any)) growing.insert(begin->clip->id());
    }
    operations rest;
    for (const auto& any : inverse.operations) {
        const auto* remove = std::get_if<operation::remove_clip>(&any);
        if (!remove || !growing.contains(remove->clip)) rest.push_back(any);
    }
    if (!rest.empty()) begun_[*growing.begin()] = std::move(rest);
    redo_.clear();
    changed.emit();
}

bool undo_stack::joins_last(const timeline_edit& edit, double now) const {
    if (undo_.empty()) return false;
    if (group_depth_ > 0) return group_has_step_;
    const auto& last = undo_.back();
    return last.may_merge && last.name == edit.name && last.scope == edit.scope &&
           now - last.seconds <= merge_seconds && only_sets_values(edit.operations);
}

result<void> undo_stack::undo() {
    return move_back(undo_, redo_);
}

result<void> undo_stack::redo() {
    return move_back(redo_, undo_);
}

result<void> undo_stack::move_back(std::vector<step>& from, std::vector<step>& to) {
    forget_void_steps();
    if (from.empty() || is_moving_) return {};
    step back = from.back();
    moved_.reset();
    is_moving_ = true;
    auto applied = document_.apply(
        {back.name, back.scope, still_possible(document_.timeline(), *back.operations), {}, true});
    is_moving_ = false;
    // A step that cannot be put on record stays; so does the history before it.
    if (!applied) return applied;
    from.pop_back();
    const std::uint64_t state_after = std::exchange(state_, back.state_before);
    if (moved_) {
        to.push_back({back.name, back.scope, shared(std::move(moved_->operations)), state_after, 0, false});
    }
    forget_void_steps();
    changed.emit();
    return {};
}

void undo_stack::forget_void_steps() {
    for (auto* steps : {&undo_, &redo_}) {
        while (!steps->empty() && still_possible(document_.timeline(), *steps->back().operations).empty()) {
            steps->pop_back();
        }
    }
}

// The states before the steps are counted anew; the present one is the saved one.
void undo_stack::restore(undo_history history) {
    undo_ = std::move(history.undo);
    redo_ = std::move(history.redo);
    begun_ = std::move(history.begun);
    last_state_ = 0;
    for (auto& one : undo_) one.state_before = last_state_++;
    state_ = saved_state_ = last_state_;
    for (auto one = redo_.rbegin(); one != redo_.rend(); ++one) one->state_before = ++last_state_;
    forget_void_steps();
    changed.emit();
}

void undo_stack::add(const timeline_edit& edit, const timeline_edit& inverse) {
    take(edit, inverse);
    if (!undo_.empty()) undo_.back().may_merge = false;  // when it was done is not known
}

void undo_stack::begin_group(std::string name) {
    if (group_depth_++ > 0) return;
    group_name_ = std::move(name);
    group_has_step_ = false;
}

void undo_stack::end_group() {
    if (group_depth_ > 0) --group_depth_;
}

void undo_stack::forget_redo() {
    redo_.clear();
    changed.emit();
}

void undo_stack::clear() {
    undo_.clear();
    redo_.clear();
    begun_.clear();
    changed.emit();
}

}  // namespace vistels
