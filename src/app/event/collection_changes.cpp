// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/event/collection_changes.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "app/event/undo_stack.h"
#include "video/blank_movie.h"
#include "video/padding_movies.h"
#include "video/video_coll_Offsets.h"

namespace vistels {

namespace {

// Two sums of the same offsets may differ by so much.
constexpr double no_shift_seconds = 1e-9;

bool changes_beside(const timeline_edit& edit) {
    for (const auto& any : edit.operations) {
        if (std::holds_alternative<operation::change_beside>(any)) return true;
    }
    return false;
}

bool changes_parts(const collection_edit& edit) {
    return std::any_of(edit.vistels.begin(), edit.vistels.end(),
                       [](const vistel_change& change) { return change.parts.has_value(); });
}

// Padding movies that no part named were deleted; doing a change again needs them again.
result<void> make_padding_again(const video_collection_ROOT& collection, const collection_edit& edit,
                                blank_vistel_movie& blank) {
    auto changed = detached_copy(collection);
    if (auto applied = apply_collection_edit(changed, edit, edit_manner::lenient); !applied) return applied;
    job work;
    return make_padding_files(padding_files_of(changed), blank, work);
}

double largest_offset(const video_collection_ROOT& collection) {
    return largest_offset_for_clips(offsets_of(collection));
}

}  // namespace

double shift_of(const collection_change& change, const video_collection_ROOT& before,
                const video_collection_ROOT& after) {
    const double shift = change.shift.value_or(largest_offset(before) - largest_offset(after));
    return std::abs(shift) > no_shift_seconds ? shift : 0;
}

collection_changes::collection_changes(video_collection_ROOT& collection, timeline_document& timeline,
                                       blank_vistel_movie& blank, saver save)
    : collection_(collection), timeline_(timeline), blank_(blank), save_(std::move(save)) {
    timeline_.set_beside_changer([this](const property_dictionary& stored) -> result<void> {
        const auto edit = read_collection_edit(stored);
        if (changes_parts(edit)) {
            if (auto ready = make_padding_again(collection_, edit, blank_); !ready) return ready;
            parts_changed_ = true;
        }
        return apply_collection_edit(collection_, edit);
    });
    edited_ =
        timeline_.edited.connect([this](const timeline_edit& edit, const timeline_edit&) { follow(edit); });
}

collection_changes::~collection_changes() {
    timeline_.set_beside_changer({});
}

result<void> collection_changes::make(const collection_change& change) {
    auto copy = detached_copy(collection_);
    if (auto changed = change.change(copy); !changed) return changed;
    const auto edit = difference(collection_, copy);
    const double shift = shift_of(change, collection_, copy);
    const bool shifts = shift != 0;
    if (edit.empty() && !shifts && change.operations.empty()) return {};
    timeline_edit whole{change.name, change.scope, {}};
    whole.operations.emplace_back(operation::change_beside{
        write_collection_edit(edit), write_collection_edit(difference(copy, collection_))});
    if (shifts) whole.operations.emplace_back(operation::shift_times{shift});
    whole.operations.insert(whole.operations.end(), change.operations.begin(), change.operations.end());
    last_save_ = {};
    if (auto applied = timeline_.apply(std::move(whole)); !applied) return applied;
    return last_save_;
}

void collection_changes::follow(const timeline_edit& edit) {
    if (!changes_beside(edit)) return;
    is_unsaved_ = true;
    has_steps_within_ = has_steps_within_ || is_within_;
    made.emit(seconds_shifted(edit));
    if (!is_within_) last_save_ = save();
}

// The timeline's part first: what stands in the journal is made good when the program dies in between.
result<void> collection_changes::save() {
    auto saved = timeline_.sync_edits();
    if (saved) saved = save_();
    is_unsaved_ = !saved;
    if (saved && std::exchange(parts_changed_, false)) remove_unused_padding_files(collection_);
    if (saved.message() != trouble_) {
        trouble_ = saved.message();
        trouble.emit(trouble_);
    }
    return saved;
}

// Every change was saved on its own, so the collection is as one of them left it: the last that it holds.
double collection_changes::seconds_not_saved(const video_collection_ROOT& collection,
                                             const timeline_document& timeline) {
    double seconds = 0;
    for (const auto& [edit, inverse] : timeline.recovered()) {
        bool is_held = false;
        for (const auto& any : edit.operations) {
            const auto* beside = std::get_if<operation::change_beside>(&any);
            if (!beside) continue;
            auto copy = detached_copy(collection);
            (void)apply_collection_edit(copy, read_collection_edit(beside->change), edit_manner::lenient);
            is_held = difference(collection, copy).empty();
        }
        seconds = is_held ? 0 : seconds + seconds_shifted(edit);
    }
    return seconds;
}

result<void> collection_changes::save_all() {
    is_unsaved_ = true;
    return save_pending();
}

result<void> collection_changes::save_pending() {
    return is_unsaved_ ? save() : result<void>();
}

void collection_changes::begin(std::string name) {
    if (is_within_) return;
    is_within_ = true;
    has_steps_within_ = false;
    if (undo_) undo_->begin_group(std::move(name));
}

result<void> collection_changes::end() {
    if (!is_within_) return {};
    is_within_ = false;
    if (undo_) undo_->end_group();
    return save_pending();
}

result<void> collection_changes::cancel() {
    if (!is_within_) return {};
    const bool has_steps = has_steps_within_;
    auto ended = end();
    if (!has_steps || !undo_) return ended;
    auto taken_back = undo_->undo();
    if (taken_back) undo_->forget_redo();
    return taken_back;
}

bool collection_changes::take_up_recovered(video_collection_ROOT& collection,
                                           const timeline_document& timeline, blank_vistel_movie& blank) {
    bool found = false;
    for (const auto& [edit, inverse] : timeline.recovered()) {
        for (const auto& any : edit.operations) {
            const auto* beside = std::get_if<operation::change_beside>(&any);
            if (!beside) continue;
            found = true;
            const auto change = read_collection_edit(beside->change);
            if (changes_parts(change)) (void)make_padding_again(collection, change, blank);
            (void)apply_collection_edit(collection, change, edit_manner::lenient);
        }
    }
    return found;
}

}  // namespace vistels
