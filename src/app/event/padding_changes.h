// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <vector>

#include "app/event/collection_changes.h"
#include "app/event/undo_history.h"
#include "video/padding_movies.h"

namespace vistels {

// The commands of the offsets menu about padding movies.
enum class padding_command { replace_with_padding, remove_offsets_and_padding, restore_offsets };
// "Replace Vistel Offsets With Padding Movies" and so on.
const char* padding_command_title(padding_command command);

// A padding command on its way: plan, on the main thread; make_padding_files(files, blank, work), in a job;
// then collection_changes::make(change), on the main thread. It is refused when the collection changed in
// between. Until then nothing names the files: of a command that is given up, remove_unused_padding_files()
// deletes them.
struct planned_padding {
    collection_change change;
    std::vector<padding_file> files;
};
result<planned_padding> plan_padding(const video_collection_ROOT& collection, padding_command command);

// The padding movies that the collection will name when the step was taken back (or done again) and does not
// name now: they may have to be made, and taking it back does not wait for them when they were. Reads no
// disk.
std::vector<padding_file> padding_needed_by(const undo_step& step, const video_collection_ROOT& collection);

}  // namespace vistels
