// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/event/padding_changes.h"

#include <algorithm>

#include "app/event/change_names.h"
#include "app/event/event_failures.h"
#include "video/collection_edit.h"

namespace vistels {

namespace {

result<padding_outcome> perform(video_collection_ROOT& collection, padding_command command) {
    switch (command) {
        case padding_command::replace_with_padding:
            return pad_collection(collection);
        case padding_command::remove_offsets_and_padding:
            return remove_offsets_and_padding(collection);
        case padding_command::restore_offsets:
            break;
    }
    return restore_offsets(collection);
}

}  // namespace

const char* padding_command_title(padding_command command) {
    switch (command) {
        case padding_command::replace_with_padding:
            return change_name::replace_with_padding;
        case padding_command::remove_offsets_and_padding:
            return change_name::remove_offsets_and_padding;
        case padding_command::restore_offsets:
            break;
    }
    return change_name::restore_offsets;
}

result<planned_padding> plan_padding(const video_collection_ROOT& collection, padding_command command) {
    auto copy = detached_copy(collection);
    const auto planned = perform(copy, command);
    if (!planned) return planned.error();
    const auto outcome = planned.value();
    collection_change change{padding_command_title(command), "", {}, outcome.shift, {}};
    change.change = [command, outcome](video_collection_ROOT& changed) -> result<void> {
        const auto now = perform(changed, command);
        if (!now) return now.error();
        if (now.value() == outcome) return {};
        return padding_was_not_done(padding_command_title(command));
    };
    return planned_padding{std::move(change), outcome.files};
}

std::vector<padding_file> padding_needed_by(const undo_step& step, const video_collection_ROOT& collection) {
    auto changed = detached_copy(collection);
    // What does not fit is refused when the step is taken back.
    for (const auto& part : parts_of_collection(*step.parts, collection))
        (void)apply_collection_edit(changed, collection_edit_in(*part.change), edit_manner::lenient);
    auto needed = padding_files_of(changed);
    const auto there = padding_files_of(collection);
    std::erase_if(needed, [&](const padding_file& file) {
        return std::find(there.begin(), there.end(), file) != there.end();
    });
    return needed;
}

}  // namespace vistels
