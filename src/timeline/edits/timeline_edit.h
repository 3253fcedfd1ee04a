// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "document/document_edit.h"
#include "timeline/form/value_change.h"
#include "timeline/records/sxy_DATA_root.h"
#include "util/property_value.h"
#include "util/result.h"
#include "util/shared_record.h"

namespace vistels {

// The single changes of which edits are made. They hold UUIDs and values; a record in one never changes, and
// stays as it is whatever becomes of the timeline.
namespace operation {

struct insert_row {
    std::size_t index = 0;       // lowered to the number of rows at most
    shared_record<sxy_ROW> row;  // without clips
};
struct remove_row {
    shared_text row;  // must have no clips
};
struct move_row {
    shared_text row;
    std::size_t index = 0;
};
// Sets and takes away stored values of a row by their stored keys.
struct change_row {
    shared_text row;
    property_dictionary set;
    property_array unset;
};
struct insert_clip {
    shared_text row;
    shared_record<sxy_CLIP> clip;
};
// Takes away a clip, in a row or live.
struct remove_clip {
    std::string clip;
};
// Sets and takes away stored values of a clip by their stored keys ("time_start", "stars", "color" ...).
struct change_clip {
    std::string clip;
    property_dictionary set;
    property_array unset;
};
struct move_clip {
    std::string clip;
    shared_text row;
};
struct insert_qualifier {
    std::string clip;
    std::size_t index = 0;  // lowered to the number of qualifiers at most
    qual_ITEM qualifier;
};
struct remove_qualifier {
    std::string clip;
    std::string qualifier;
};
// A clip begins to grow: its button is down. It is in no row until finish_clip.
struct begin_clip {
    shared_text row;
    shared_record<sxy_CLIP> clip;
};
// A growing clip gets its times and goes into its row.
struct finish_clip {
    std::string clip;
    double secs_start = 0;
    double secs_end = 0;
};

// Notes in a row that clips of it were deleted, behind what is noted there.
struct add_tombstones {
    shared_text row;
    std::vector<sxy_Deleted_Clip_Item_k11> tombstones;
};
// Takes away the last tombstone of each clip; passes over clips that have none.
struct remove_tombstones {
    shared_text row;
    std::vector<std::string> clips;
};

// Moves every time of the timeline that lies on the collection's clock, growing clips and the markers of the
// time ruler included (see clip_shifted).
struct shift_times {
    double seconds = 0;
};
// The same for some clips; those that are not there, and growing ones, are passed over.
struct shift_clips {
    std::vector<std::string> clips;
    double seconds = 0;
};
using any = std::variant<insert_row, remove_row, move_row, change_row, insert_clip, remove_clip, change_clip,
                         move_clip, insert_qualifier, remove_qualifier, begin_clip, finish_clip,
                         add_tombstones, remove_tombstones, shift_times, shift_clips>;

}  // namespace operation

// Who edits, when, and where.
struct edit_stamp {
    std::string author;       // may be empty
    double edit_seconds = 0;  // since 1970
    double coll_id = 0;       // the number of the collection that the timeline belongs to; 0 = none
};

// One change of a timeline as a person sees it, planned whole and applied whole.
struct timeline_edit {
    std::string name;   // shown in the undo menu: "Shot", "Delete 3 Clips"
    std::string scope;  // the object that it belongs to; edits of one scope and name may be merged by undo
    std::vector<operation::any> operations;
    // Noted as the last edit of every clip that the operations change, but for the key of the two that they
    // set or take away themselves ("edit_seconds", "author"), and of clips that come with the edit and do not
    // say when they were edited, growing ones too, which get it anew when they are finished. All of them get
    // the collection's number where they have none. What changes a growing clip is passed over.
    std::optional<edit_stamp> stamp = {};
    // Nothing is to be added to it when it is made: it takes back or repeats another, or only arranges rows.
    bool is_complete = false;
    // What it changes of other documents (the timeline's collection), so that all change, and are taken back,
    // as one. Each part knows what takes it back.
    std::vector<document_part> others = {};
};

// What an edit touched.
struct change_set {
    enum kind : unsigned {
        rows_changed = 1,        // a row came, went, moved or changed
        clips_changed = 2,       // a clip came, went, moved or changed
        qualifiers_changed = 4,  // of a clip
        live_changed = 8,        // a growing clip came, went or changed
        others_changed = 16,     // another document, in the same edit
        everything = 31,         // rows and clips are not named one by one
    };
    unsigned kinds = 0;
    std::vector<shared_text> rows;   // each once
    std::vector<std::string> clips;  // UUIDs, each once
    std::uint64_t revision = 0;      // of the timeline after the edit
};

// Applies the operations in order and returns the edit that takes them back, the stamps too. When one cannot
// be done the timeline is left as it was. `touched` is added to. A finished clip is taken back by taking the
// clip away, a begun one too. Parts that concern other documents are not made here; the edit that is returned
// takes them back.
result<timeline_edit> apply_edit(sxy_DATA_root& timeline, const timeline_edit& edit, change_set& touched);

// Takes back an edit that counts as never made: by the inverse that apply_edit gave, and with the growing
// clips as they were (taking back a finish does not make its clip grow again).
void withdraw_edit(sxy_DATA_root& timeline, const timeline_edit& inverse, std::vector<clip_place> growing);

// What makes `before` of `after`, by stored keys: all that differs, whatever was asked for (a start moved
// behind the end moves the end, too).
value_change inverse_values(const property_dictionary& before, const property_dictionary& after);

// By how much the edit moves the times of the timeline.
double seconds_shifted(const timeline_edit& edit);

// Completes an edit as one that is made now: with the stamp, unless it has one or neither changes nor brings
// clips, and with its author in the tombstones that have none.
void complete_edit(timeline_edit& edit, const edit_stamp& stamp);

// The edit that deletes the clips (unknown UUIDs are passed over) and leaves a tombstone of each in its row.
// `now` in seconds since 1970.
timeline_edit plan_delete_clips(const sxy_DATA_root& timeline, const std::vector<std::string>& clips,
                                const std::string& author, double now);

// The stored form, for the journal and the undo history.
property_dictionary write_edit(const timeline_edit& edit);
result<timeline_edit> read_edit(const property_dictionary& stored);

}  // namespace vistels
