// SPDX-License-Identifier: GPL-3.0-or-later
#include "timeline/sxy_CLIP.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <tuple>

#include "timeline/stored_keys.h"
#include "util/text_forms.h"

namespace vistels {

namespace {

constexpr int clip_colour_decimals = 4;
constexpr std::string_view no_style = "CLIP_STYLE__NONE";

// The stored keys without a field of their own, by where they stand in the stored order.
constexpr stored_key after_row_uuid[] = {{"clip_style", nullptr, stored_kind::text}};
constexpr stored_key edit_keys[] = {
    {"edit_seconds", nullptr, stored_kind::number},
    {"author", "edit clip author", stored_kind::text},
    {"edit_info", nullptr, stored_kind::text},
};
constexpr stored_key timer_keys[] = {
    {"timeline_clip_position", "timeline clip position", stored_kind::integer},
    {"timer_clip_alt_offset_minutes", "Timer Clip ALT Offset Minutes", stored_kind::number},
    {"timer_clip_cumulative", "Timer Clip Cumulative", stored_kind::flag},
    {"timer_clip_count_down", "Timer Clip Count Down", stored_kind::flag},
    {"alt_count_down", "alt count down", stored_kind::flag},
    {"alt_seconds", "alt seconds", stored_kind::number},
    {"alt_color", nullptr, stored_kind::text},
};
constexpr stored_key after_type[] = {
    {"type_id", "type ID", stored_kind::text},
    {"clip_group", nullptr, stored_kind::text},
    {"inserted_Objects", nullptr, stored_kind::dictionary},
    {"coll_id", "coll ID", stored_kind::number},
    {"pause_items", "pause items", stored_kind::array},
    {"telestration", nullptr, stored_kind::dictionary},
    {"triggers", nullptr, stored_kind::array},
};
constexpr stored_key after_qualifiers[] = {
    {"vistels_data", "vistels data", stored_kind::dictionary},
    {"notes_dict", "Notes dict", stored_kind::dictionary},
};

std::optional<double> number_form(const property_dictionary& stored, const char* key) {
    const auto number = stored.number(key);
    return number && std::isfinite(*number) ? number : std::nullopt;
}

std::optional<double> text_form(const property_dictionary& stored, const char* key) {
    const auto* text = stored.text(key);
    const auto number = text ? number_from_text(*text) : std::nullopt;
    return number && std::isfinite(*number) ? number : std::nullopt;
}

// Both number forms come before both text forms.
std::optional<double> read_time(const property_dictionary& stored, const char* key, const char* short_key) {
    if (const auto number = number_form(stored, key)) return number;
    if (const auto number = number_form(stored, short_key)) return number;
    if (const auto number = text_form(stored, key)) return number;
    return text_form(stored, short_key);
}

std::optional<colour> read_colour(const property_dictionary& stored) {
    if (const auto* text = stored.text("color")) {
        if (const auto value = colour_from_text(*text)) return value;
    }
    const auto red = number_form(stored, "cl_red");
    const auto green = number_form(stored, "cl_grn");
    const auto blue = number_form(stored, "cl_blu");
    if (!red || !green || !blue) return std::nullopt;
    return colour{*red, *green, *blue, 1.0};
}

qual_ROOT read_qualifiers(const property_dictionary& stored) {
    qual_ROOT all;
    const auto* dictionary = stored.dictionary("qualifiers");
    if (!dictionary) return all;
    const auto* items =
        stored_value(*dictionary, {"qualifiers_array", "qualifiers array", stored_kind::array});
    if (!items) return all;
    for (const auto& item : *items->array()) {
        if (const auto* one = item.dictionary()) all.push_back(read_qual_item(*one));
    }
    return all;
}

// Kept values that are stored only when they say something.
void drop_defaults(property_dictionary& kept) {
    if (const auto* style = kept.text("clip_style"); style && *style == no_style) kept.remove("clip_style");
    if (kept.integer("timeline_clip_position").value_or(1) < 1) kept.remove("timeline_clip_position");
    if (kept.number("coll_id") == 0.0) kept.remove("coll_id");
    if (const auto* text = kept.text("alt_color"); text && !colour_from_text(*text)) kept.remove("alt_color");
}

// Everything but the qualifiers, in two parts, since these stand between them.
property_dictionary values_before_qualifiers(const sxy_CLIP& clip, const property_dictionary& kept) {
    property_dictionary stored;
    if (!clip.id().empty()) stored.add("uuid", clip.id());
    stored.add("time_start", clip.secs_start());
    stored.add("time_end", clip.secs_end());
    if (const auto category = clip.row_category_in_clip(); !category.empty()) {
        stored.add("row_category", category.str());
    }
    if (const auto row = clip.row_uuid_in_clip(); !row.empty()) stored.add("row_uuid_in_clip", row.str());
    put_kept(kept, after_row_uuid, stored);
    if (const auto colour = clip.col()) stored.add("color", colour_text(*colour, clip_colour_decimals));
    put_kept(kept, edit_keys, stored);
    if (clip.stars() >= 1) stored.add("stars", clip.stars());
    put_kept(kept, timer_keys, stored);
    if (auto type = clip_type_text(clip.type())) stored.add("type", std::move(*type));
    put_kept(kept, after_type, stored);
    return stored;
}

std::optional<sxy_CLIP> read_values(const property_dictionary& stored) {
    const auto start = read_time(stored, "time_start", "str");
    const auto end = read_time(stored, "time_end", "end");
    if (!start || !end) return std::nullopt;
    sxy_CLIP clip;
    if (const auto* uuid = stored_value(stored, {"uuid", "UUID", stored_kind::text}))
        clip.set_id(*uuid->text());
    clip.set_secs_start(*start);
    clip.set_secs_end(*end);
    clip.set_row_category_in_clip(shared_text(stored.text_or_empty("row_category")));
    clip.set_row_uuid_in_clip(shared_text(stored.text_or_empty("row_uuid_in_clip")));
    clip.set_col(read_colour(stored));
    const auto stars = stored.integer("stars").value_or(0);
    if (stars >= 1 && stars <= std::numeric_limits<int>::max()) clip.set_stars(static_cast<int>(stars));
    if (const auto* type = stored.text("type")) clip.set_type(clip_type_from_text(*type));
    property_dictionary kept;
    keep_stored(stored, after_row_uuid, kept);
    keep_stored(stored, edit_keys, kept);
    keep_stored(stored, timer_keys, kept);
    keep_stored(stored, after_type, kept);
    keep_stored(stored, after_qualifiers, kept);
    drop_defaults(kept);
    clip.set_kept(std::move(kept));
    return clip;
}

}  // namespace

std::shared_ptr<const qual_ROOT> sxy_CLIP::no_qualifiers() {
    static const auto none = std::make_shared<const qual_ROOT>();
    return none;
}

std::string sxy_CLIP::note_text() const {
    const record_guard guard(lk);
    const auto* note = kept_.dictionary("notes_dict");
    return note ? note->text_or_empty("note_string") : std::string();
}

void sxy_CLIP::order_times() {
    const record_guard guard(lk);
    if (secs_end_ < secs_start_) std::swap(secs_start_, secs_end_);
}

bool clip_before(const sxy_CLIP& a, const sxy_CLIP& b) {
    if (a.secs_start() != b.secs_start()) return a.secs_start() < b.secs_start();
    if (a.secs_end() != b.secs_end()) return a.secs_end() < b.secs_end();
    return a.id() < b.id();
}

std::optional<std::string> clip_type_text(clip_type type) {
    switch (type) {
        case clip_type::normal:
            return std::nullopt;
        case clip_type::picture:
            return "pic";
        case clip_type::movie:
            return "movie";
        default:
            return "unknown";
    }
}

clip_type clip_type_from_text(const std::string& text) {
    if (text == "pic") return clip_type::picture;
    if (text == "movie") return clip_type::movie;
    return text == "normal" ? clip_type::normal : clip_type::unknown;
}

std::optional<sxy_CLIP> read_clip(const property_dictionary& stored) {
    auto clip = read_values(stored);
    if (clip) {
        if (auto qualifiers = read_qualifiers(stored); !qualifiers.empty()) {
            clip->set_qualifiers(std::move(qualifiers));
        }
    }
    return clip;
}

property_dictionary write_clip(const sxy_CLIP& clip) {
    const auto kept = clip.kept();
    property_dictionary stored = values_before_qualifiers(clip, kept);
    const auto qualifiers = clip.qualifiers();
    if (!qualifiers->empty()) {
        property_array all;
        all.reserve(qualifiers->size());
        for (const auto& item : *qualifiers) all.emplace_back(write_qual_item(item));
        property_dictionary dictionary;
        dictionary.add("qualifiers_array", std::move(all));
        stored.add("qualifiers", std::move(dictionary));
    }
    put_kept(kept, after_qualifiers, stored);
    return stored;
}

sxy_CLIP clip_with(const sxy_CLIP& clip, const property_dictionary& set, const property_array& unset) {
    property_dictionary stored = write_clip_values(clip);
    for (const auto& key : unset) {
        if (key.text()) stored.remove(*key.text());
    }
    for (const auto& entry : set) stored.set(entry.key, entry.value);
    const auto changed = read_values(stored);
    if (!changed) return clip;
    sxy_CLIP copy = clip;  // identity, qualifiers and display state stay
    copy.set_secs_start(changed->secs_start());
    copy.set_secs_end(changed->secs_end());
    copy.order_times();
    copy.set_row_category_in_clip(changed->row_category_in_clip());
    copy.set_row_uuid_in_clip(changed->row_uuid_in_clip());
    copy.set_col(changed->col());
    copy.set_stars(changed->stars());
    copy.set_type(changed->type());
    copy.set_kept(changed->kept());
    return copy;
}

property_dictionary write_clip_values(const sxy_CLIP& clip) {
    const auto kept = clip.kept();
    property_dictionary stored = values_before_qualifiers(clip, kept);
    put_kept(kept, after_qualifiers, stored);
    return stored;
}

}  // namespace vistels
