// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "document/recorded_form.h"
#include "timeline/edits/timeline_change.h"
#include "timeline/files/sxy_Save_Load.h"
#include "timeline/files/timeline_file_failures.h"

namespace vistels {

// How timelines are kept on record. Their journal holds each edit as a recorded_timeline_edit.
inline constexpr recorded_form timeline_form{
    .file_name = timeline_file_name,
    .segment_name = "chron data journal ",
    .lock_name = "chron data writer.plist",
    .read_edit = read_recorded_edit,
    .change_is_damaged = journalled_change_was_damaged,
    .changes_do_not_fit = unsaved_changes_do_not_fit,
    .is_open_elsewhere = timeline_is_open_elsewhere,
    .was_taken_over = timeline_was_taken_over,
    .writer_is_silent = writer_is_silent,
    .is_only_read_here = timeline_is_only_read_here,
    .is_only_read = timeline_is_only_read,
};

}  // namespace vistels
