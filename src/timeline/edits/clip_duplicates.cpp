// SPDX-License-Identifier: GPL-3.0-or-later
// The copies of clips, rows and timelines that clip_operations.h declares.
#include <cmath>
#include <map>

#include "timeline/edits/clip_operations.h"
#include "timeline/edits/edit_failures.h"
#include "timeline/edits/edit_names.h"
#include "timeline/records/shift_times.h"
#include "util/uuid.h"

namespace vistels {

namespace {

constexpr const char* merged_uuids_key = "uncompacted_row_Permanent_uuids";
constexpr const char* merged_rows_key = "uncompacted_rows";
constexpr const char* merged_clips_key = "clips";  // in "uncompacted_rows": UUIDs

// What has a new UUID in the copy, by the old one.
using renames = std::map<std::string, std::string>;

std::string renamed(const renames& all, const std::string& uuid) {
    const auto found = all.find(uuid);
    return found == all.end() ? uuid : found->second;
}

property_array renamed(const renames& all, const property_array& uuids) {
    property_array made;
    for (const auto& uuid : uuids) {
        made.push_back(uuid.text() ? property_value(renamed(all, *uuid.text())) : uuid);
    }
    return made;
}

// New names for a row and for the rows that were merged into it, as its stored values hold them.
void add_renames(const property_dictionary& row, renames& all) {
    if (const auto* uuid = row.text("uuid_row"); uuid && !uuid->empty()) all.emplace(*uuid, new_uuid());
    if (const auto* uuids = row.array(merged_uuids_key)) {
        for (const auto& uuid : *uuids) {
            if (uuid.text() && !uuid.text()->empty()) all.emplace(*uuid.text(), new_uuid());
        }
    }
    if (const auto* rows = row.array(merged_rows_key)) {
        for (const auto& one : *rows) {
            if (one.dictionary()) add_renames(*one.dictionary(), all);
        }
    }
}

// The stored values of a row with the rows and clips that they name renamed.
property_dictionary renamed(const renames& all, property_dictionary row) {
    if (const auto* uuid = row.text("uuid_row")) row.set("uuid_row", renamed(all, *uuid));
    for (const char* key : {merged_uuids_key, merged_clips_key}) {
        if (const auto* uuids = row.array(key)) row.set(key, renamed(all, *uuids));
    }
    if (const auto* rows = row.array(merged_rows_key)) {
        property_array made;
        for (const auto& one : *rows) {
            made.push_back(one.dictionary() ? property_value(renamed(all, *one.dictionary())) : one);
        }
        row.set(merged_rows_key, std::move(made));
    }
    return row;
}

std::shared_ptr<const clip_note> copied_note(const std::shared_ptr<const clip_note>& note) {
    if (!note || note->clip_notes_uuid.empty()) return note;
    clip_note copy = *note;
    copy.clip_notes_uuid = new_uuid();
    return std::make_shared<const clip_note>(std::move(copy));
}

// The clips of the row get new names in `all`, which knows those of the rows.
sxy_ROW copied_row(const sxy_ROW& row, renames& all) {
    std::vector<clip_pointer> clips;
    clips.reserve(row.clips().size());
    for (const auto& clip : row.clips()) {
        auto made = std::make_shared<sxy_CLIP>(duplicate_copy_sxy_data(*clip));
        all.insert_or_assign(clip->id(), made->id());
        const auto made_on = made->row_uuid_in_clip();
        if (!made_on.empty()) made->set_row_uuid_in_clip(shared_text(renamed(all, made_on.str())));
        clips.push_back(std::move(made));
    }
    sxy_ROW copy = read_row_values(renamed(all, write_row_values(row, 0)), 0);
    copy.set_deleted_clips({});
    copy.clips().assign(std::move(clips));
    return copy;
}

}  // namespace

sxy_CLIP duplicate_copy_sxy_data(const sxy_CLIP& clip) {
    sxy_CLIP copy = clip;
    copy.set_id(new_uuid());
    copy.set_selected(false);
    copy.set_note(copied_note(clip.note()));
    qual_ROOT qualifiers = *clip.qualifiers();
    for (auto& qualifier : qualifiers) {
        qualifier.set_uuid(new_uuid());
        auto attributes = qualifier.attributes();
        for (auto& attribute : attributes) attribute.uuid = compact_text(new_uuid());
        if (!attributes.empty()) qualifier.set_attributes(std::move(attributes));
    }
    if (!qualifiers.empty()) copy.set_qualifiers(std::move(qualifiers));
    return copy;
}

sxy_ROW duplicate_copy_sxy_data(const sxy_ROW& row) {
    renames all;
    add_renames(write_row_values(row, 0), all);
    return copied_row(row, all);
}

timeline_snapshot duplicate_copy_sxy_data(const timeline_snapshot& timeline) {
    timeline_snapshot copy = timeline;
    copy.uuid = new_uuid();
    copy.live_clips.clear();
    renames all;
    for (const auto& row : copy.rows) add_renames(write_row_values(*row, 0), all);
    for (auto& row : copy.rows) row = std::make_shared<const sxy_ROW>(copied_row(*row, all));
    return copy;
}

sxy_CLIP copy_moved(const sxy_CLIP& clip, double later_by, const edit_stamp& stamp) {
    auto copy = clip_shifted(duplicate_copy_sxy_data(clip), later_by);
    auto info = copy->edit_info();
    info.edit_seconds = stamp.edit_seconds;
    if (!stamp.author.empty()) info.author = shared_text(stamp.author);
    copy->set_edit_info(std::move(info));
    return std::move(*copy);
}

result<timeline_edit> plan_duplicate_clips(const sxy_DATA_root& timeline,
                                           const std::vector<std::string>& clips, double later_by,
                                           const edit_stamp& stamp) {
    if (!std::isfinite(later_by)) return clip_copied_to_no_time();
    timeline_edit edit{clips.size() == 1 ? edit_name::duplicate_clip : edit_name::duplicate_clips, "", {}};
    for (const auto& uuid : clips) {
        const auto place = timeline.find_clip(uuid);
        if (!place) return clip_to_copy_is_gone();
        if (place->is_live) return growing_clip_cannot_be_copied();
        edit.operations.emplace_back(
            operation::insert_clip{place->row, copy_moved(*place->clip, later_by, stamp)});
    }
    return edit;
}

result<timeline_edit> plan_duplicate_row(const sxy_DATA_root& timeline, const shared_text& row) {
    const auto index = timeline.row_index(row);
    if (!index) return row_to_copy_is_gone();
    sxy_ROW copy = duplicate_copy_sxy_data(*timeline.rows()[*index]);
    copy.set_name(copy.name() + " copy");
    timeline_edit edit{edit_name::duplicate_row, copy.uuid().str(), {}};
    std::vector<clip_pointer> clips(copy.clips().begin(), copy.clips().end());
    copy.clips().assign({});
    const shared_text uuid = copy.uuid();
    edit.operations.emplace_back(operation::insert_row{*index + 1, std::move(copy)});
    for (const auto& clip : clips) edit.operations.emplace_back(operation::insert_clip{uuid, *clip});
    return edit;
}

}  // namespace vistels
