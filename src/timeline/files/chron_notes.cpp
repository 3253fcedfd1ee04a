// SPDX-License-Identifier: GPL-3.0-or-later
#include "timeline/files/chron_notes.h"

#include <memory>
#include <unordered_set>
#include <utility>

#include "timeline/files/timeline_file_failures.h"
#include "util/file_failures.h"
#include "util/property_list.h"
#include "util/safe_write.h"

namespace vistels {

namespace {

constexpr std::int64_t notes_version = 1;
constexpr const char* clip_key = "clip_uuid";

// The row with `change` made to a copy of each clip for which it is not null; the row itself when there is
// none.
template <typename change_of>
row_pointer with_changed_clips(const row_pointer& row, change_of change) {
    std::vector<clip_pointer> clips;
    for (std::size_t index = 0; index < row->clips().size(); ++index) {
        clip_pointer changed = change(*row->clips()[index]);
        if (!changed) continue;
        if (clips.empty()) clips.assign(row->clips().begin(), row->clips().end());
        clips[index] = std::move(changed);
    }
    if (clips.empty()) return row;
    auto copy = std::make_shared<sxy_ROW>(*row);
    copy->clips().assign(std::move(clips));
    return copy;
}

clip_pointer with_note(const sxy_CLIP& clip, std::shared_ptr<const clip_note> note) {
    auto copy = std::make_shared<sxy_CLIP>(clip);
    copy->set_note(std::move(note));
    return copy;
}

property_dictionary write_notes(const std::string& uuid, const notes_by_clip& notes) {
    property_array all;
    all.reserve(notes.size());
    for (const auto& [clip, note] : notes) {
        property_dictionary stored;
        stored.add(clip_key, clip);
        for (const auto& entry : write_clip_note(note)) stored.add(entry.key, entry.value);
        all.emplace_back(std::move(stored));
    }
    property_dictionary stored;
    stored.add("data_version", notes_version);
    stored.add("uuid_timeline", uuid);
    stored.add("notes", std::move(all));
    return stored;
}

notes_by_clip read_notes(const property_array& stored) {
    notes_by_clip notes;
    for (const auto& value : stored) {
        const auto* one = value.dictionary();
        const std::string clip = one ? one->text_or_empty(clip_key) : std::string();
        if (clip.empty()) continue;
        property_dictionary rest = *one;
        rest.remove(clip_key);
        notes.insert_or_assign(clip, read_clip_note(rest));
    }
    return notes;
}

notes_by_clip notes_of_gone_clips(const notes_by_clip& earlier, const separate_notes& now) {
    notes_by_clip gone;
    for (const auto& one : earlier) {
        if (!now.notes.contains(one.first)) gone.insert(one);
    }
    for (const auto& row : now.timeline.rows) {
        if (gone.empty()) break;
        for (const auto& clip : row->clips()) gone.erase(clip->id());
    }
    return gone;
}

result<notes_by_clip> notes_in(const std::string& bytes, const std::string& path) {
    const auto document = read_property_list(bytes, path);
    if (!document) return document.error();
    const auto* dictionary = document.value().dictionary();
    const auto* notes = dictionary ? dictionary->array("notes") : nullptr;
    if (!notes) return file_cannot_be_read(path, file_holds_no_notes());
    return read_notes(*notes);
}

}  // namespace

separate_notes take_notes_off(const timeline_snapshot& timeline) {
    separate_notes separate{timeline, {}};
    for (auto& row : separate.timeline.rows) {
        row = with_changed_clips(row, [&](const sxy_CLIP& clip) -> clip_pointer {
            if (timeline.only_selected && !(clip.selected() && clip.filtered_in())) return nullptr;
            const auto note = clip.note();
            if (!note || clip.id().empty() || note->kept.contains(clip_key)) return nullptr;
            const bool first = separate.notes.emplace(clip.id(), *note).second;
            return first ? with_note(clip, nullptr) : nullptr;
        });
    }
    return separate;
}

timeline_snapshot put_notes_on(timeline_snapshot timeline, notes_by_clip notes) {
    for (auto& row : timeline.rows) {
        if (notes.empty()) break;
        row = with_changed_clips(row, [&](const sxy_CLIP& clip) -> clip_pointer {
            auto found = notes.extract(clip.id());
            if (found.empty() || clip.note()) return nullptr;
            return with_note(clip, std::make_shared<const clip_note>(std::move(found.mapped())));
        });
    }
    return timeline;
}

notes_keeper::notes_keeper(std::string folder, file_system& files)
    : folder_(std::move(folder)), path_(path_join(folder_, timeline_notes_file_name)), files_(files) {}

result<notes_by_clip> notes_keeper::open(bool may_change, std::vector<failure>& messages) {
    const auto bytes = read_known(path_, known_, files_);
    if (!bytes) return bytes.error();
    auto notes = bytes.value() ? notes_in(*bytes.value(), path_) : notes_by_clip();
    is_open_ = true;
    is_damaged_ = !notes.ok();
    on_disk_ = notes ? notes.value() : notes_by_clip();
    saved_ = on_disk_;
    if (notes) return on_disk_;
    messages.push_back(notes_are_not_shown(notes.error()));
    if (may_change) {
        if (auto kept = keep_damaged(messages); !kept) messages.push_back(kept.error());
    }
    return notes_by_clip();
}

result<void> notes_keeper::keep_damaged(std::vector<failure>& messages) {
    const std::string kept = damaged_name(path_);
    if (const int fault = files_.rename(path_, kept)) {
        return file_could_not_be_set_aside(path_, system_failure(fault));
    }
    is_damaged_ = false;
    known_ = {};
    messages.push_back(damaged_file_was_kept(kept));
    return {};
}

result<std::string> notes_keeper::save(const separate_notes& coming, bool in_doubt) {
    std::vector<failure> told_when_opened;
    if (!is_open_) {
        if (auto opened = open(true, told_when_opened); !opened) return opened.error();
    }
    if (is_damaged_) {
        if (auto kept = keep_damaged(told_when_opened); !kept) return kept.error();
    }
    coming_ = coming.notes;
    notes_by_clip written = coming.notes;
    for (auto& [clip, note] : notes_of_gone_clips(saved_, coming)) written.emplace(clip, note);
    const bool is_there = written == on_disk_ && (written.empty() || file_exists(path_));
    if (is_there && !is_strangers(path_, known_, in_doubt, files_)) return std::string();
    auto kept = safe_write_known(path_, write_property_list(write_notes(coming.timeline.uuid, written)),
                                 known_, in_doubt, files_);
    if (kept) on_disk_ = std::move(written);
    return kept;
}

}  // namespace vistels
