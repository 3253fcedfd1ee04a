// SPDX-License-Identifier: GPL-3.0-or-later
#include <cmath>

#include "timeline/edits/edit_failures.h"
#include "timeline/edits/timeline_edit.h"
#include "timeline/form/text_cache.h"
#include "util/stored_view.h"

namespace vistels {

namespace {

// Each operation beside its reader: the code under "do", then its values.

property_dictionary write_one(const operation::insert_row& one) {
    property_dictionary stored;
    stored.add("do", "insert row");
    stored.add("index", static_cast<std::int64_t>(one.index));
    stored.add("values", write_row_values(*one.row, 0));
    return stored;
}

property_dictionary write_one(const operation::remove_row& one) {
    property_dictionary stored;
    stored.add("do", "remove row");
    stored.add("row", one.row.str());
    return stored;
}

property_dictionary write_one(const operation::move_row& one) {
    property_dictionary stored;
    stored.add("do", "move row");
    stored.add("row", one.row.str());
    stored.add("index", static_cast<std::int64_t>(one.index));
    return stored;
}

property_dictionary write_one(const operation::change_row& one) {
    property_dictionary stored;
    stored.add("do", "change row");
    stored.add("row", one.row.str());
    stored.add("set", one.set);
    stored.add("unset", one.unset);
    return stored;
}

property_dictionary clip_in_row(const char* code, const shared_text& row,
                                const shared_record<sxy_CLIP>& clip) {
    property_dictionary stored;
    stored.add("do", code);
    stored.add("row", row.str());
    stored.add("values", write_clip(*clip));
    return stored;
}

property_dictionary write_one(const operation::insert_clip& one) {
    return clip_in_row("insert clip", one.row, one.clip);
}

property_dictionary write_one(const operation::begin_clip& one) {
    return clip_in_row("begin clip", one.row, one.clip);
}

property_dictionary write_one(const operation::remove_clip& one) {
    property_dictionary stored;
    stored.add("do", "remove clip");
    stored.add("clip", one.clip);
    return stored;
}

property_dictionary write_one(const operation::change_clip& one) {
    property_dictionary stored;
    stored.add("do", "change clip");
    stored.add("clip", one.clip);
    stored.add("set", one.set);
    stored.add("unset", one.unset);
    return stored;
}

property_dictionary write_one(const operation::move_clip& one) {
    property_dictionary stored;
    stored.add("do", "move clip");
    stored.add("clip", one.clip);
    stored.add("row", one.row.str());
    return stored;
}

property_dictionary write_one(const operation::insert_qualifier& one) {
    property_dictionary stored;
    stored.add("do", "insert qualifier");
    stored.add("clip", one.clip);
    stored.add("index", static_cast<std::int64_t>(one.index));
    stored.add("values", write_qual_item(one.qualifier));
    return stored;
}

property_dictionary write_one(const operation::remove_qualifier& one) {
    property_dictionary stored;
    stored.add("do", "remove qualifier");
    stored.add("clip", one.clip);
    stored.add("qualifier", one.qualifier);
    return stored;
}

property_dictionary write_one(const operation::finish_clip& one) {
    property_dictionary stored;
    stored.add("do", "finish clip");
    stored.add("clip", one.clip);
    stored.add("start", one.secs_start);
    stored.add("end", one.secs_end);
    return stored;
}

property_dictionary write_one(const operation::add_tombstones& one) {
    property_array tombstones;
    for (const auto& tombstone : one.tombstones) {
        property_dictionary values;
        values.add("clip", tombstone.deleted_clip_ID);
        if (!tombstone.edit_author.empty()) values.add("author", tombstone.edit_author);
        values.add("seconds", tombstone.clip_last_Edited_secs);
        tombstones.emplace_back(std::move(values));
    }
    property_dictionary stored;
    stored.add("do", "add tombstones");
    stored.add("row", one.row.str());
    stored.add("tombstones", std::move(tombstones));
    return stored;
}

property_dictionary write_one(const operation::remove_tombstones& one) {
    property_dictionary stored;
    stored.add("do", "remove tombstones");
    stored.add("row", one.row.str());
    stored.add("clips", property_array(one.clips.begin(), one.clips.end()));
    return stored;
}

property_dictionary write_one(const operation::shift_times& one) {
    property_dictionary stored;
    stored.add("do", "shift times");
    stored.add("seconds", one.seconds);
    return stored;
}

property_dictionary write_one(const operation::shift_clips& one) {
    property_dictionary stored;
    stored.add("do", "shift clips");
    stored.add("clips", property_array(one.clips.begin(), one.clips.end()));
    stored.add("seconds", one.seconds);
    return stored;
}

const property_dictionary& dictionary_or_empty(const property_dictionary& stored, const char* key) {
    static const property_dictionary none;
    const auto* found = stored.dictionary(key);
    return found ? *found : none;
}

const property_array& array_or_empty(const property_dictionary& stored, const char* key) {
    static const property_array none;
    const auto* found = stored.array(key);
    return found ? *found : none;
}

operation::add_tombstones read_added_tombstones(const shared_text& row, const property_array& stored) {
    operation::add_tombstones add{row, {}};
    for (const auto& value : stored) {
        const auto* one = value.dictionary();
        const auto seconds = one ? one->number("seconds") : std::nullopt;
        if (seconds)
            add.tombstones.push_back({one->text_or_empty("clip"), one->text_or_empty("author"), *seconds});
    }
    return add;
}

operation::remove_tombstones read_removed_tombstones(const shared_text& row, const property_array& stored) {
    operation::remove_tombstones remove{row, {}};
    for (const auto& clip : stored) {
        if (clip.text()) remove.clips.push_back(*clip.text());
    }
    return remove;
}

// The records that come with an operation.

std::optional<sxy_CLIP> clip_in(const property_dictionary& stored, text_cache& texts) {
    stored_arena arena;
    return read_clip(view_of(dictionary_or_empty(stored, "values"), arena), texts);
}

qual_ITEM qualifier_in(const property_dictionary& stored, text_cache& texts) {
    stored_arena arena;
    return read_qual_item(view_of(dictionary_or_empty(stored, "values"), arena), texts);
}

sxy_ROW row_in(const property_dictionary& stored, text_cache& texts) {
    stored_arena arena;
    return read_row_values(view_of(dictionary_or_empty(stored, "values"), arena).members(), 0, texts);
}

std::optional<operation::any> read_row_operation(const std::string& code, const property_dictionary& stored,
                                                 text_cache& texts) {
    const auto index =
        static_cast<std::size_t>(std::max<std::int64_t>(stored.integer("index").value_or(0), 0));
    const shared_text row(stored.text_or_empty("row"));
    if (code == "insert row") {
        return operation::insert_row{index, row_in(stored, texts)};
    }
    if (code == "remove row") return operation::remove_row{row};
    if (code == "move row") return operation::move_row{row, index};
    if (code == "change row") {
        return operation::change_row{row, dictionary_or_empty(stored, "set"),
                                     array_or_empty(stored, "unset")};
    }
    if (code == "add tombstones") return read_added_tombstones(row, array_or_empty(stored, "tombstones"));
    if (code == "remove tombstones") return read_removed_tombstones(row, array_or_empty(stored, "clips"));
    return std::nullopt;
}

std::optional<operation::any> read_clip_operation(const std::string& code, const property_dictionary& stored,
                                                  text_cache& texts) {
    const auto index =
        static_cast<std::size_t>(std::max<std::int64_t>(stored.integer("index").value_or(0), 0));
    const shared_text row(stored.text_or_empty("row"));
    const std::string clip = stored.text_or_empty("clip");
    if (code == "insert clip" || code == "begin clip") {
        auto values = clip_in(stored, texts);
        if (!values) return std::nullopt;
        if (code == "insert clip") return operation::insert_clip{row, std::move(*values)};
        return operation::begin_clip{row, std::move(*values)};
    }
    if (code == "remove clip") return operation::remove_clip{clip};
    if (code == "change clip") {
        return operation::change_clip{clip, dictionary_or_empty(stored, "set"),
                                      array_or_empty(stored, "unset")};
    }
    if (code == "move clip") return operation::move_clip{clip, row};
    if (code == "insert qualifier") {
        return operation::insert_qualifier{clip, index, qualifier_in(stored, texts)};
    }
    if (code == "remove qualifier") {
        return operation::remove_qualifier{clip, stored.text_or_empty("qualifier")};
    }
    const auto start = stored.number("start");
    const auto end = stored.number("end");
    if (code == "finish clip" && start && end) return operation::finish_clip{clip, *start, *end};
    return std::nullopt;
}

// Of the timeline as a whole.
std::optional<operation::any> read_whole_operation(const std::string& code,
                                                   const property_dictionary& stored) {
    const auto seconds = stored.number("seconds");
    if (code == "shift times" && seconds) return operation::shift_times{*seconds};
    if (code == "shift clips" && seconds) {
        operation::shift_clips shift{{}, *seconds};
        for (const auto& clip : array_or_empty(stored, "clips")) {
            if (clip.text()) shift.clips.push_back(*clip.text());
        }
        return shift;
    }
    return std::nullopt;
}

// How a change of the timeline's collection stood among the operations before edits named their documents.
document_part read_change_beside(const property_dictionary& stored) {
    return {{document_kind::collection, ""},
            std::make_shared<const stored_change>(dictionary_or_empty(stored, "change")),
            std::make_shared<const stored_change>(dictionary_or_empty(stored, "back"))};
}

bool read_others(const property_array& stored, std::vector<document_part>& others) {
    for (const auto& value : stored) {
        auto part = value.dictionary() ? read_part(*value.dictionary()) : std::nullopt;
        if (!part || !part->back) return false;
        others.push_back(std::move(*part));
    }
    return true;
}

}  // namespace

property_dictionary write_edit(const timeline_edit& edit) {
    property_array operations;
    for (const auto& one : edit.operations) {
        operations.emplace_back(std::visit([](const auto& concrete) { return write_one(concrete); }, one));
    }
    property_dictionary stored;
    stored.add("name", edit.name);
    if (!edit.scope.empty()) stored.add("scope", edit.scope);
    if (edit.stamp) {
        stored.add("edit_seconds", edit.stamp->edit_seconds);
        if (!edit.stamp->author.empty()) stored.add("author", edit.stamp->author);
        if (edit.stamp->coll_id != 0) stored.add("coll_id", edit.stamp->coll_id);
    }
    stored.add("operations", std::move(operations));
    if (edit.others.empty()) return stored;
    property_array others;
    for (const auto& part : edit.others) others.emplace_back(write_part(part));
    stored.add("documents", std::move(others));
    return stored;
}

result<timeline_edit> read_edit(const property_dictionary& stored) {
    text_cache texts;
    timeline_edit edit{stored.text_or_empty("name"), stored.text_or_empty("scope"), {}};
    if (const auto seconds = stored.number("edit_seconds"); seconds && std::isfinite(*seconds)) {
        edit.stamp = edit_stamp{stored.text_or_empty("author"), *seconds};
        if (const auto number = stored.number("coll_id"); number && std::isfinite(*number))
            edit.stamp->coll_id = *number;
    }
    const failure unreadable = recorded_change_cannot_be_read(edit.name);
    if (!read_others(array_or_empty(stored, "documents"), edit.others)) return unreadable;
    const auto& operations = array_or_empty(stored, "operations");
    const auto is_operation = [](const property_value& value) {
        return value.dictionary() && !value.dictionary()->text_or_empty("do").empty();
    };
    edit.operations.reserve(
        static_cast<std::size_t>(std::count_if(operations.begin(), operations.end(), is_operation)));
    for (const auto& value : operations) {
        const auto* one = value.dictionary();
        const std::string code = one ? one->text_or_empty("do") : std::string();
        if (code == "change beside") {
            edit.others.push_back(read_change_beside(*one));
            continue;
        }
        auto read = one ? read_row_operation(code, *one, texts) : std::nullopt;
        if (one && !read) read = read_whole_operation(code, *one);
        if (one && !read) read = read_clip_operation(code, *one, texts);
        if (!read) return unreadable;
        edit.operations.push_back(std::move(*read));
    }
    return edit;
}

}  // namespace vistels
