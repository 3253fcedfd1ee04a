// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/event/collection_changes.h"

#include <cmath>
#include <utility>

#include "app/event/undo_stack.h"
#include "video/video_coll_Offsets.h"

namespace vistels {

namespace {

// Two sums of the same offsets may differ by so much.
constexpr double no_shift_seconds = 1e-9;

double largest_offset(const video_collection_ROOT& collection) {
    return largest_offset_for_clips(offsets_of(collection));
}

}  // namespace

double shift_of(const collection_change& change, const video_collection_ROOT& before,
                const video_collection_ROOT& after) {
    const double shift = change.shift.value_or(largest_offset(before) - largest_offset(after));
    return std::abs(shift) > no_shift_seconds ? shift : 0;
}

collection_changes::collection_changes(collection_document& collection, timeline_document& timeline)
    : collection_(collection), timeline_(timeline) {
    edited_ =
        timeline_.edited.connect([this](const timeline_edit& edit, const timeline_edit&) { follow(edit); });
}

result<void> collection_changes::make(const collection_change& change) {
    const auto& before = collection_.record();
    auto copy = detached_copy(before);
    if (auto changed = change.change(copy); !changed) return changed;
    auto edit = difference(before, copy);
    const double shift = shift_of(change, before, copy);
    const bool shifts = shift != 0;
    if (edit.empty() && !shifts && change.operations.empty()) return {};
    timeline_edit whole{change.name, change.scope, {}};
    whole.others.push_back(collection_part(before, std::move(edit), difference(copy, before)));
    if (shifts) whole.operations.emplace_back(operation::shift_times{shift});
    if (auto part = shifts && plan_shift_ ? plan_shift_(shift) : std::nullopt) whole.others.push_back(*part);
    whole.operations.insert(whole.operations.end(), change.operations.begin(), change.operations.end());
    return timeline_.apply(std::move(whole));
}

void collection_changes::follow(const timeline_edit& edit) {
    if (parts_of_collection(edit.others, collection_.record()).empty()) return;
    has_steps_within_ = has_steps_within_ || is_within_;
    made.emit(seconds_shifted(edit));
}

// A collection is saved as one of its changes left it: the last that it holds.
double collection_changes::seconds_not_saved(const video_collection_ROOT& collection,
                                             const timeline_document& timeline) {
    double seconds = 0;
    for (const auto& [edit, inverse] : timeline.recovered()) {
        bool is_held = false;
        for (const auto& part : parts_of_collection(edit.others, collection)) {
            auto copy = detached_copy(collection);
            (void)apply_collection_edit(copy, collection_edit_in(*part.change), edit_manner::lenient);
            is_held = difference(collection, copy).empty();
        }
        seconds = is_held ? 0 : seconds + seconds_shifted(edit);
    }
    return seconds;
}

void collection_changes::begin(std::string name) {
    if (is_within_) return;
    is_within_ = true;
    has_steps_within_ = false;
    if (undo_) undo_->begin_group(std::move(name));
}

void collection_changes::end() {
    if (!std::exchange(is_within_, false)) return;
    if (undo_) undo_->end_group();
}

result<void> collection_changes::cancel() {
    if (!is_within_) return {};
    const bool has_steps = has_steps_within_;
    end();
    if (!has_steps || !undo_) return {};
    auto taken_back = undo_->undo();
    if (taken_back) undo_->forget_redo();
    return taken_back;
}

}  // namespace vistels
