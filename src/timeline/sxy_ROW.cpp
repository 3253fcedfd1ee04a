// SPDX-License-Identifier: GPL-3.0-or-later
#include "timeline/sxy_ROW.h"

#include <algorithm>
#include <cmath>

#include "timeline/stored_keys.h"

namespace vistels {

namespace {

constexpr int row_colour_decimals = 4;

// The stored keys without a field of their own, by where they stand in the stored order.
constexpr stored_key after_sort_number[] = {
    {"sort_number_(for_row_Compactor_or_Expander)", nullptr, stored_kind::integer},
};
constexpr stored_key compaction_keys[] = {
    {"uncompacted_row_categories", nullptr, stored_kind::array},
    {"uncompacted_row_colors", nullptr, stored_kind::array},
    {"uncompacted_row_Permanent_uuids", nullptr, stored_kind::array},
    {"uncompacted_sort_number", nullptr, stored_kind::array},
    {"uncompacted_sort_number_Compactor_Expander", nullptr, stored_kind::array},
};

std::vector<sxy_Deleted_Clip_Item_k11> read_tombstones(const property_dictionary& stored, double now) {
    std::vector<sxy_Deleted_Clip_Item_k11> all;
    const auto* array = stored.array("deleted clips");
    if (!array) return all;
    for (const auto& item : *array) {
        const auto* one = item.dictionary();
        const auto deleted = one ? one->number("edit_seconds") : std::nullopt;
        if (!deleted || !(now - *deleted < tombstone_life_seconds)) continue;
        all.push_back({one->text_or_empty("clip_ID"), one->text_or_empty("author"), *deleted});
    }
    return all;
}

property_array write_tombstones(const std::vector<sxy_Deleted_Clip_Item_k11>& all) {
    property_array array;
    for (const auto& one : all) {
        property_dictionary stored;
        stored.add("clip_ID", one.deleted_clip_ID);
        if (!one.edit_author.empty()) stored.add("author", one.edit_author);
        stored.add("edit_seconds", one.clip_last_Edited_secs);
        array.emplace_back(std::move(stored));
    }
    return array;
}

std::optional<double> finite(std::optional<double> number) {
    return number && std::isfinite(*number) ? number : std::nullopt;
}

}  // namespace

std::size_t clip_list::position(const sxy_CLIP& clip) const {
    const auto found = std::lower_bound(clips_.begin(), clips_.end(), clip,
                                        [](const auto& a, const sxy_CLIP& b) { return clip_before(*a, b); });
    if (found == clips_.end() || (*found)->id() != clip.id()) return size();
    return static_cast<std::size_t>(found - clips_.begin());
}

std::size_t clip_list::first_starting_at(double seconds) const {
    const auto found = std::lower_bound(clips_.begin(), clips_.end(), seconds,
                                        [](const auto& a, double at) { return a->secs_start() < at; });
    return static_cast<std::size_t>(found - clips_.begin());
}

std::size_t clip_list::insert(clip_pointer clip) {
    const auto place = std::upper_bound(clips_.begin(), clips_.end(), clip,
                                        [](const auto& a, const auto& b) { return clip_before(*a, *b); });
    const auto index = static_cast<std::size_t>(place - clips_.begin());
    clips_.insert(place, std::move(clip));
    return index;
}

void clip_list::remove(std::size_t index) {
    clips_.erase(clips_.begin() + static_cast<std::ptrdiff_t>(index));
}

void clip_list::assign(std::vector<clip_pointer> clips) {
    clips_ = std::move(clips);
    const auto before = [](const auto& a, const auto& b) { return clip_before(*a, *b); };
    if (!std::is_sorted(clips_.begin(), clips_.end(), before)) {
        std::stable_sort(clips_.begin(), clips_.end(), before);
    }
}

sxy_ROW read_row_values(const property_dictionary& stored, double now) {
    sxy_ROW row;
    const auto text = [&](const char* name, const char* older) {
        const auto* value = stored_value(stored, {name, older, stored_kind::text});
        return value ? *value->text() : std::string();
    };
    const auto sort_number = stored.integer("sort_number").value_or(0);
    if (sort_number >= 1) row.set_sort_number(static_cast<int>(std::min<std::int64_t>(sort_number, 1 << 30)));
    row.set_name(text("row_name", "row name"));
    row.set_category(stored.text_or_empty("row_category"));
    row.set_deleted_clips(read_tombstones(stored, now));
    if (const auto height = finite(stored.number("height"))) row.set_height(*height);
    if (const auto* height = stored_value(stored, {"height_real", "height real", stored_kind::number})) {
        row.set_real_height(height->number());
    }
    row.set_uuid(shared_text(text("uuid_row", "UUID row")));
    if (const auto* colour = stored.text("color")) row.set_col(colour_from_text(*colour));
    if (const auto* timer = stored_value(stored, {"timer_row", "timer row", stored_kind::flag})) {
        row.set_is_timer_row(*timer->boolean());
    }
    property_dictionary kept;
    keep_stored(stored, after_sort_number, kept);
    if (kept.integer(after_sort_number[0].name).value_or(1) < 1) kept.remove(after_sort_number[0].name);
    keep_stored(stored, compaction_keys, kept);
    row.set_kept(std::move(kept));
    return row;
}

property_dictionary write_row_values(const sxy_ROW& row, std::size_t row_number) {
    property_dictionary stored;
    const auto kept = row.kept();
    stored.add("row_number", static_cast<std::int64_t>(row_number));
    if (row.sort_number() >= 1) stored.add("sort_number", row.sort_number());
    put_kept(kept, after_sort_number, stored);
    stored.add("row_name", row.name());
    if (!row.category().empty()) stored.add("row_category", row.category());
    put_kept(kept, compaction_keys, stored);
    if (const auto tombstones = row.deleted_clips(); !tombstones.empty()) {
        stored.add("deleted clips", write_tombstones(tombstones));
    }
    stored.add("height", row.height());
    if (const auto height = row.real_height()) stored.add("height_real", *height);
    stored.add("uuid_row", row.uuid().str());
    if (const auto colour = row.col()) stored.add("color", colour_text(*colour, row_colour_decimals));
    if (row.is_timer_row()) stored.add("timer_row", true);
    return stored;
}

sxy_ROW row_with(const sxy_ROW& row, const property_dictionary& set, const property_array& unset) {
    property_dictionary stored = write_row_values(row, 0);
    for (const auto& key : unset) {
        if (key.text()) stored.remove(*key.text());
    }
    for (const auto& entry : set) stored.set(entry.key, entry.value);
    // Tombstones expire when a file is read, not by an edit: with 0 for now, none is old.
    sxy_ROW changed = read_row_values(stored, 0);
    changed.set_uuid(row.uuid());
    changed.clips() = row.clips();
    return changed;
}

}  // namespace vistels
