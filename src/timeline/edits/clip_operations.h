// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "timeline/edits/sxy_Adjust_Clip_Overlaps.h"
#include "timeline/edits/timeline_edit.h"
#include "util/result.h"

namespace vistels {

// What a person does to whole clips, planned as edits and not yet applied. Each is checked first: when it
// cannot be done the message says why, and nothing changes. An edit that would change nothing has no
// operations. Clips are named by UUID. Any thread that owns the timeline.

// A growing clip that ends: its place, and the times that it gets (seconds).
struct ended_clip {
    clip_place place;
    clip_span span;
};
// What puts it into its row; it may be missing from the timeline meanwhile.
operation::any plan_end(const sxy_DATA_root& timeline, const ended_clip& ending);

// Merges two or more clips into the earliest of them (by start, then end, then UUID), in its row; the one
// that `ending` brings is one of them, and the later one where another starts with it. The clip that stays
// spans from the earliest start to the latest end. It has the qualifiers, triggers, pause points and inserted
// objects of all in order of time, the texts of all notes, a line break between them, and the most stars;
// every other value is its own, or where it has none that of the first clip with one. The other clips are
// deleted and leave tombstones. The edit's scope is the clip that stays.
result<timeline_edit> plan_clips_Merge(const sxy_DATA_root& timeline, const std::vector<std::string>& clips,
                                       const edit_stamp& stamp, const std::optional<ended_clip>& ending = {});

// Moves the start of the clips to `mark_in` and their end to `mark_out` (seconds), where given. Refused when
// that would leave nothing of one of them.
result<timeline_edit> plan_clips_Trim_Mark_in_Mark_Out(const sxy_DATA_root& timeline,
                                                       const std::vector<std::string>& clips,
                                                       std::optional<double> mark_in,
                                                       std::optional<double> mark_out);

// Gives the clip that start and end, and its drawings with it.
operation::change_clip plan_new_times(const sxy_CLIP& clip, clip_span span);

// Splits two clips that overlap or touch, as split_overlapping does. One clip alone is split from the first
// clip of its row, in the row's order, that it overlaps or touches. Refused when there is nothing to split or
// one of the two is too short to give up its part.
result<timeline_edit> plan_split_overlap(const sxy_DATA_root& timeline,
                                         const std::vector<std::string>& clips);

// A plain text as the clip's note. The empty text takes the note away.
result<timeline_edit> plan_note(const sxy_DATA_root& timeline, const std::string& clip,
                                const std::string& text);

// Takes away a row with its clips. Their tombstones, and those of the row, go to the row before it (the one
// after it when it is the first): with no other row left they are lost with it.
result<timeline_edit> plan_delete_row(const sxy_DATA_root& timeline, const shared_text& row,
                                      const edit_stamp& stamp);

// Copies that share nothing: the clips, their qualifiers, attributes and notes get UUIDs of their own.
sxy_CLIP duplicate_copy_sxy_data(const sxy_CLIP& clip);
// The copy of a row and of its clips, without the tombstones. Clips made on the row count as made on the
// copy.
sxy_ROW duplicate_copy_sxy_data(const sxy_ROW& row);
// The copy of a whole timeline; growing clips are left out.
timeline_snapshot duplicate_copy_sxy_data(const timeline_snapshot& timeline);

// A copy, later by so many seconds with all that is on it, edited now.
sxy_CLIP copy_moved(const sxy_CLIP& clip, double later_by, const edit_stamp& stamp);
// Puts a copy of each clip into its row, `later_by` seconds later. The edit's insert_clip operations stand in
// the order of `clips`.
result<timeline_edit> plan_duplicate_clips(const sxy_DATA_root& timeline,
                                           const std::vector<std::string>& clips, double later_by,
                                           const edit_stamp& stamp);
// Puts a copy of the row and its clips below it, named "NAME copy".
result<timeline_edit> plan_duplicate_row(const sxy_DATA_root& timeline, const shared_text& row);

// The clips in a row's order, each once. One that is not there, or still grows, is a failure.
result<std::vector<clip_place>> find_whole_clips(const sxy_DATA_root& timeline,
                                                 const std::vector<std::string>& clips);
// The stored drawings of a clip that gets this span.
property_dictionary drawings_trimmed(property_dictionary drawings, clip_span span);

}  // namespace vistels
