// SPDX-License-Identifier: GPL-3.0-or-later
#include "timeline/files/sxy_Save_Load.h"

#include <algorithm>
#include <mutex>

#include "timeline/files/chron_notes.h"
#include "timeline/files/timeline_file_failures.h"
#include "timeline/form/stored_values.h"
#include "util/clock.h"
#include "util/file_failures.h"
#include "util/json.h"
#include "util/json_cursor.h"
#include "util/property_list.h"
#include "util/property_list_cursor.h"
#include "util/safe_write.h"

namespace vistels {

template <>
struct stored_form<sXY_data_TAG> {
    static constexpr std::array fields{
        [] {
            auto field = stored_member_field<in_record<sXY_data_TAG>, &sXY_data_TAG::secs_tag>("secs_tag");
            field.write = [](const sXY_data_TAG& tag, std::string_view key, stored_sink& to) {
                to.put(key, tag.secs_tag);
            };
            return field;
        }(),
        stored_member_field<in_record<sXY_data_TAG>, &sXY_data_TAG::xy_tag>("xy_tag"),
    };
};

namespace {

constexpr std::int64_t data_version = 2;
constexpr const char* rows_key = "rows";
constexpr const char* clips_key = "clips";
constexpr const char* by_category_key = "show_rows_by_category";

bool is_written(const sxy_CLIP& clip, bool only_selected) {
    return !only_selected || (clip.selected() && clip.filtered_in());
}

bool is_key_of_row(std::string_view key) {
    return key == clips_key || is_row_key(key);
}

// Rows without any of a row's keys are passed over, as such records are everywhere.
bool is_row(const stored_view& stored) {
    const auto members = stored.members();
    return std::any_of(members.begin(), members.end(),
                       [](const stored_member& member) { return is_key_of_row(member.key); });
}

// The timeline's own values, as they are written below but for "rows".
class timeline_reader {
  public:
    timeline_reader() : texts_(text_cache::size_for_files), now_(seconds_since_1970()) {}

    static bool knows(std::string_view key) {
        return key == by_category_key || key == "description" || key == "uuid_timeline" || key == "tags";
    }
    void value(std::string_view key, const stored_view& from) {
        auto& content = loaded_.content;
        const bool is_kept = key == by_category_key && !from.is_array() && !from.is_dictionary();
        if (is_kept) content.kept.set(key, from.copy());
        if (key == "description") take_value(content.description, from, texts_);
        if (key == "uuid_timeline") take_value(content.uuid, from, texts_);
        if (key == "tags") take_value(content.tags, from, texts_);
    }

    // Where "rows", or "clips" in a row, stands twice, the last one counts.
    void begin_rows() {
        loaded_.content.rows.clear();
        loaded_.skipped_clips = 0;
    }
    void begin_row() {
        clips_.clear();
        skipped_before_row_ = loaded_.skipped_clips;
    }
    void begin_clips() {
        clips_.clear();
        loaded_.skipped_clips = skipped_before_row_;
    }
    void clip(const stored_view& from) {
        if (auto clip = read_clip(from, texts_)) {
            clips_.push_back(std::make_shared<const sxy_CLIP>(std::move(*clip)));
        } else {
            ++loaded_.skipped_clips;
        }
    }

    // The row with those values, to which the clips since it began belong.
    void row(std::span<const stored_member> members) {
        auto row = std::make_shared<sxy_ROW>(read_row_values(members, now_, texts_));
        row->set_row_number(static_cast<int>(loaded_.content.rows.size() + 1));
        row->clips().assign(std::exchange(clips_, {}));
        loaded_.content.rows.push_back(std::move(row));
    }

    loaded_timeline take() { return std::move(loaded_); }

  private:
    loaded_timeline loaded_;
    std::vector<clip_pointer> clips_;
    std::size_t skipped_before_row_ = 0;
    text_cache texts_;
    const double now_;
};

// Reads a document clip by clip, so that no more than one clip is in memory in another form. Nothing when the
// cursor finds a fault or the document is no dictionary.
template <class Cursor>
class cursor_reader {
  public:
    explicit cursor_reader(Cursor& cursor) : cursor_(cursor) {}

    std::optional<loaded_timeline> read() {
        if (cursor_.next_form() != form::dictionary || !cursor_.enter()) return std::nullopt;
        while (const auto key = cursor_.next_key(arena_)) {
            if (*key == rows_key) {
                read_rows();
            } else if (timeline_reader::knows(*key)) {
                timeline_.value(*key, cursor_.read(arena_));
            } else {
                cursor_.skip();
            }
            arena_.clear();
        }
        return cursor_.finish() ? std::optional(timeline_.take()) : std::nullopt;
    }

  private:
    using form = stored_view::form;

    void read_rows() {
        timeline_.begin_rows();
        if (cursor_.next_form() != form::array) return cursor_.skip();
        cursor_.enter();
        while (cursor_.next_item()) {
            if (cursor_.next_form() == form::dictionary) {
                read_row();
            } else {
                cursor_.skip();
            }
        }
    }

    void read_row() {
        arena_.clear();
        members_.clear();
        timeline_.begin_row();
        cursor_.enter();
        bool has_key = false;
        while (const auto key = cursor_.next_key(arena_)) {
            has_key |= is_key_of_row(*key);
            if (*key == clips_key) {
                read_clips();
            } else if (is_row_key(*key)) {
                members_.push({*key, cursor_.read(arena_)});
            } else {
                cursor_.skip();
            }
        }
        if (has_key) timeline_.row(members_.take(0, arena_));
    }

    void read_clips() {
        timeline_.begin_clips();
        if (cursor_.next_form() != form::array) return cursor_.skip();
        cursor_.enter();
        while (cursor_.next_item()) {
            clip_arena_.clear();
            timeline_.clip(cursor_.read(clip_arena_));
        }
    }

    Cursor& cursor_;
    timeline_reader timeline_;
    stored_arena arena_;
    stored_arena clip_arena_;
    part_stack<stored_member> members_;
};

// A whole document.
loaded_timeline read_view(const stored_view& document) {
    timeline_reader timeline;
    std::vector<stored_member> row_members;
    for (const auto& [key, value] : document.members()) {
        if (key != rows_key) {
            timeline.value(key, value);
            continue;
        }
        timeline.begin_rows();
        for (const auto& row : value.items()) {
            if (!is_row(row)) continue;
            row_members.clear();
            timeline.begin_row();
            for (const auto& member : row.members()) {
                if (member.key != clips_key) {
                    row_members.push_back(member);
                    continue;
                }
                timeline.begin_clips();
                for (const auto& clip : member.value.items()) timeline.clip(clip);
            }
            timeline.row(row_members);
        }
    }
    return timeline.take();
}

std::string row_name_in(const stored_view& row) {
    std::optional<std::string_view> name;
    std::optional<std::string_view> older;
    for (const auto& [key, value] : row.members()) {
        if (key == "row_name" && value.text()) name = value.text();
        if (key == "row name" && value.text()) older = value.text();
    }
    return std::string(name ? *name : older.value_or(std::string_view()));
}

void write_row(const sxy_ROW& row, std::size_t row_number, bool only_selected, stored_sink& to) {
    to.begin_dictionary({});
    write_row_values(row, row_number, to);
    bool begun = false;
    for (const auto& clip : row.clips()) {
        if (!is_written(*clip, only_selected)) continue;
        if (!begun) to.begin_array(clips_key);
        begun = true;
        to.begin_dictionary({});
        write_clip(*clip, to);
        to.end();
    }
    if (begun) to.end();
    to.end();
}

bool has_written_clip(const sxy_ROW& row) {
    return std::any_of(row.clips().begin(), row.clips().end(),
                       [](const auto& clip) { return is_written(*clip, true); });
}

// About the size of the file, from that of a few clips of each row.
std::size_t guessed_bytes(const timeline_snapshot& timeline) {
    constexpr std::size_t bytes_of_a_row = 2000;
    constexpr std::size_t looked_at = 16;
    constexpr std::string_view levels[] = {"", "", "", ""};  // as deep as in the file
    std::size_t bytes = 0;
    for (const auto& row : timeline.rows) {
        const auto& clips = row->clips();
        std::size_t counted = 0;
        property_list_sink sink;
        for (const auto level : levels) sink.begin_array(level);
        for (std::size_t at = 0; at < clips.size(); at += clips.size() / looked_at + 1, ++counted) {
            sink.begin_dictionary({});
            write_clip(*clips[at], sink);
            sink.end();
        }
        for (std::size_t level = 0; level < std::size(levels); ++level) sink.end();
        bytes += bytes_of_a_row;
        if (counted > 0) bytes += sink.take().size() * clips.size() / counted;
    }
    constexpr std::size_t spare_part = 16;
    return bytes + bytes / spare_part;
}

std::optional<std::vector<std::string>> row_names_quickly(std::string_view bytes) {
    using form = stored_view::form;
    property_list_cursor cursor(bytes);
    stored_arena arena;
    std::vector<std::string> names;
    if (cursor.next_form() != form::dictionary || !cursor.enter()) return std::nullopt;
    while (const auto key = cursor.next_key(arena)) {
        if (*key == rows_key) names.clear();
        if (*key != rows_key || cursor.next_form() != form::array) {
            cursor.skip();
            continue;
        }
        cursor.enter();
        while (cursor.next_item()) {
            if (cursor.next_form() != form::dictionary) {
                cursor.skip();
                continue;
            }
            std::string name;
            bool has_key = false;
            cursor.enter();
            // A name that stands behind others under the older spelling is for the usual reader.
            while (const auto row_key = cursor.next_key(arena)) {
                has_key |= is_key_of_row(*row_key);
                const bool is_name = *row_key == "row_name";
                if (*row_key == "row name") return std::nullopt;
                if (!is_name) {
                    cursor.skip();
                } else if (const auto text = cursor.read(arena).text()) {
                    name = *text;
                }
            }
            if (has_key) names.push_back(std::move(name));
        }
    }
    if (!cursor.finish()) return std::nullopt;
    return names;
}

}  // namespace

failure skipped_clips(const std::string& path, std::size_t count) {
    return count == 1 ? one_clip_was_left_out(path) : clips_were_left_out(path, count);
}

loaded_timeline read_timeline(const property_dictionary& stored) {
    stored_arena arena;
    return read_view(view_of(stored, arena));
}

result<loaded_timeline> read_timeline_bytes(std::string_view bytes, const std::string& path) {
    property_list_cursor cursor(bytes);
    if (auto loaded = cursor_reader(cursor).read()) return std::move(*loaded);
    stored_arena arena;
    const auto document = read_property_list(bytes, path, arena);
    if (!document) return document.error();
    if (!document.value().is_dictionary()) return file_cannot_be_read(path, file_holds_no_timeline());
    return read_view(document.value());
}

result<loaded_timeline> read_timeline_json(std::string_view bytes, const std::string& path) {
    json_cursor cursor(bytes);
    if (cursor.next_form() == stored_view::form::dictionary) {
        if (auto loaded = cursor_reader(cursor).read()) return std::move(*loaded);
    } else {
        cursor.skip();
    }
    return cursor.finish() ? file_cannot_be_read(path, file_holds_no_timeline())
                           : file_cannot_be_read(path, cursor.fault());
}

void write_timeline(const timeline_snapshot& timeline, stored_sink& to) {
    const bool only_selected = timeline.only_selected;
    to.put("row_count", static_cast<std::int64_t>(timeline.rows.size()));
    const auto* by_category = timeline.kept.find(by_category_key);
    to.put(by_category_key, by_category ? *by_category : property_value(false));
    to.put("data_version", data_version);
    put_value(timeline.description, "description", to);
    if (only_selected) to.put("only contains selected and filtered in clips", true);
    to.put("uuid_timeline", timeline.uuid);
    put_value(timeline.tags, "tags", to);
    to.begin_array(rows_key);
    std::size_t row_number = 0;
    for (const auto& row : timeline.rows) {
        const record_guard guard(row->lock());
        if (only_selected && !has_written_clip(*row)) continue;
        write_row(*row, ++row_number, only_selected, to);
    }
    to.end();
}

void write_whole_timeline(const timeline_snapshot& timeline, stored_sink& to) {
    to.begin_dictionary({});
    write_timeline(timeline, to);
    to.end();
}

property_dictionary write_timeline(const timeline_snapshot& timeline) {
    dictionary_sink sink;
    write_timeline(timeline, sink);
    return sink.take();
}

std::string timeline_bytes(const timeline_snapshot& timeline) {
    property_list_sink sink;
    sink.expect(guessed_bytes(timeline));
    write_whole_timeline(timeline, sink);
    return sink.take();
}

result<loaded_timeline> load_timeline(const std::string& source) {
    const std::string path = is_folder(source) ? path_join(source, timeline_file_name) : source;
    const auto bytes = read_file(path);
    if (!bytes) return bytes.error();
    auto loaded = path.ends_with(".json") ? read_timeline_json(bytes.value(), path)
                                          : read_timeline_bytes(bytes.value(), path);
    if (!loaded) return loaded;
    if (const auto count = loaded.value().skipped_clips; count > 0)
        loaded.value().messages.push_back(skipped_clips(path, count));
    if (path_name(path) != timeline_file_name) return loaded;
    notes_keeper keeper(path_folder(path));
    auto& timeline = loaded.value();
    auto notes = keeper.open(false, timeline.messages);
    if (!notes) return notes.error();
    timeline.content = put_notes_on(std::move(timeline.content), std::move(notes).value());
    return loaded;
}

result<void> save_timeline(const timeline_snapshot& timeline, const std::string& folder, file_system& files) {
    const std::string path = path_join(folder, timeline_file_name);
    // Before the notes beside it are written.
    if (auto checked = check_replaceable(path, files); !checked) return checked;
    const auto separate = take_notes_off(timeline);
    notes_keeper keeper(folder, files);
    if (auto saved = keeper.save(separate); !saved) return saved.error();
    return safe_write_blocks(
        path,
        [&](const block_writer& put) {
            property_list_sink sink(put);
            write_whole_timeline(separate.timeline, sink);
            sink.finish();
        },
        files);
}

std::optional<std::vector<std::string>> read_row_names(const std::string& folder) {
    const std::string path = path_join(folder, timeline_file_name);
    const auto bytes = read_file(path);
    if (!bytes) return std::nullopt;
    auto names = row_names_quickly(bytes.value());
    if (!names) {
        stored_arena arena;
        const auto document = read_property_list(bytes.value(), path, arena);
        if (!document) return std::nullopt;
        names.emplace();
        for (const auto& [key, value] : document.value().members()) {
            if (key != rows_key) continue;
            names->clear();
            for (const auto& row : value.items()) {
                if (is_row(row)) names->push_back(row_name_in(row));
            }
        }
    }
    if (names->empty()) return std::nullopt;
    return names;
}

}  // namespace vistels
