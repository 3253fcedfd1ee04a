// SPDX-License-Identifier: GPL-3.0-or-later
#include "video/single_Vistel_CTR.h"

#include <algorithm>
#include <limits>

#include "video/video_coll_Records.h"

namespace vistels {

namespace {

constexpr const char* unused_movies_key = "unused_movies";

constexpr const char* item_keys[] = {
    "UUID single video - g",
    "proportion rect - coll",
    "vistel_number_displayed",
    "save_video_data_locally",
    "proportion rect - coll - remember original",
    "flicked_IN_Vistel_Rotation",
    "this_vistel_flicked_in",
    "Vistel name UUID - coll",
    "inserted_Type_PICTURE",
    "manual start offset",
    "vistel_number_displayed_ordinal",
    "saved view order i8",
    "Vistel video name - coll",
    "drone_lock_clips",
    "http file - coll",
    "localized name of current device - coll",
    "capture preset - collection",
    "overlay",
    "UUID of linked composer archive",
};

constexpr const char* vistel_keys[] = {
    "UUID single video - g",
    "manual start offset",
    "Vistel name UUID - coll",
    "Vistel video name - coll",
    "proportion rect - coll",
    "proportion rect - coll - remember original",
    "flicked_IN_Vistel_Rotation",
    "save_video_data_locally",
    "drone_lock_clips",
    "http file - coll",
    "localized name of current device - coll",
    "Vistel video name",
    "Vistel name UUID",
    "vistel number",
    "creator",
    "proportion rect",
    "http file",
    "capture preset",
    "localized name of current Audio input device",
    "drone_array",
    unused_movies_key,
};

int small_integer(const property_dictionary& stored, const char* key) {
    const auto number = stored.integer(key).value_or(0);
    return static_cast<int>(
        std::clamp<std::int64_t>(number, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

std::optional<double> number_or_nothing(double number) {
    return number != 0 ? std::optional(number) : std::nullopt;
}

constexpr const char* overlay_keys[] = {"picture", "rect", "opacity"};

// Another form than the one written here is no overlay to be drawn, and stays as it is.
std::optional<vistel_overlay> read_overlay(const property_dictionary& item) {
    const auto* stored = item.dictionary("overlay");
    if (!stored || stored->text_or_empty("picture").empty()) return std::nullopt;
    vistel_overlay overlay;
    overlay.picture = stored->text_or_empty("picture");
    overlay.frame = stored_frame(*stored, "rect").value_or(overlay.frame);
    overlay.opacity = std::clamp(finite_number(*stored, "opacity").value_or(1), 0.0, 1.0);
    return overlay;
}

void write_overlay(record_writer& item, const single_Vistel_CTR& vistel, const property_dictionary& as_read) {
    const auto overlay = vistel.overlay();
    if (overlay == read_overlay(as_read)) return;
    if (!overlay) return item.value("overlay", property_value());
    const auto* read = as_read.dictionary("overlay");
    const property_dictionary kept = read ? *read : property_dictionary();
    record_writer writer(overlay_keys, kept);
    writer.text("picture", overlay->picture);
    writer.frame("rect", overlay->frame);
    writer.number_always("opacity", overlay->opacity);
    item.value("overlay", writer.finish());
}

// The values that the item record and the vistel's own record have in common. Where the collection knows
// no number or offset, the vistel's own record keeps its own.
void write_common(record_writer& writer, const single_Vistel_CTR& vistel, bool is_item) {
    writer.text("UUID single video - g", vistel.uuid());
    writer.frame("proportion rect - coll", vistel.proportion_rect());
    writer.frame("proportion rect - coll - remember original", vistel.remembered_proportion_rect());
    writer.number_if_set("flicked_IN_Vistel_Rotation", vistel.flicked_in_rotation());
    writer.flag("save_video_data_locally", vistel.saves_data_locally());
    if (is_item || vistel.number() != 0) {
        writer.number("Vistel name UUID - coll", number_or_nothing(vistel.number()));
    }
    if (is_item || vistel.manual_start_offset()) {
        writer.seconds("manual start offset", vistel.manual_start_offset());
    }
    writer.text("Vistel video name - coll", vistel.name());
    writer.flag("drone_lock_clips", vistel.locks_clips());
    writer.text("http file - coll", vistel.http_file());
    writer.text("localized name of current device - coll", vistel.capture_device());
}

std::string first_text(const property_dictionary& stored, const char* key, const char* other_key) {
    const std::string text = stored.text_or_empty(key);
    return text.empty() ? stored.text_or_empty(other_key) : text;
}

// What the item record left open.
void read_missing(single_Vistel_CTR& vistel, const property_dictionary& stored) {
    const auto item = vistel.stored_item();
    if (vistel.name().empty()) {
        vistel.set_name(first_text(stored, "Vistel video name - coll", "Vistel video name"));
    }
    if (!vistel.proportion_rect()) vistel.set_proportion_rect(stored_frame(stored, "proportion rect - coll"));
    if (!vistel.proportion_rect()) vistel.set_proportion_rect(stored_frame(stored, "proportion rect"));
    if (!vistel.remembered_proportion_rect()) {
        vistel.set_remembered_proportion_rect(
            stored_frame(stored, "proportion rect - coll - remember original"));
    }
    if (!finite_number(item, "flicked_IN_Vistel_Rotation")) {
        vistel.set_flicked_in_rotation(finite_number(stored, "flicked_IN_Vistel_Rotation").value_or(0));
    }
    if (!item.boolean("drone_lock_clips")) {
        vistel.set_locks_clips(stored.boolean("drone_lock_clips").value_or(false));
    }
    if (vistel.http_file().empty()) {
        vistel.set_http_file(first_text(stored, "http file - coll", "http file"));
    }
    if (vistel.capture_device().empty()) {
        vistel.set_capture_device(stored.text_or_empty("localized name of current device - coll"));
    }
    if (vistel.capture_preset().empty()) vistel.set_capture_preset(stored.text_or_empty("capture preset"));
}

vistel_own_values read_own_values(const property_dictionary& stored) {
    return {stored.text_or_empty("Vistel video name"), finite_number(stored, "Vistel name UUID").value_or(0),
            small_integer(stored, "vistel number"), stored.text_or_empty("http file"),
            stored.text_or_empty("capture preset")};
}

}  // namespace

void single_Vistel_CTR::set_number(double number) {
    const record_guard guard(lk);
    number_ = own_values_.number = number;
}

void single_Vistel_CTR::set_name(std::string name) {
    const record_guard guard(lk);
    own_values_.name = name;
    name_ = std::move(name);
}

void single_Vistel_CTR::set_vistel_number_displayed(int number) {
    const record_guard guard(lk);
    vistel_number_displayed_ = own_values_.shown_number = number;
}

void single_Vistel_CTR::set_http_file(std::string address) {
    const record_guard guard(lk);
    own_values_.http_file = address;
    http_file_ = std::move(address);
}

void single_Vistel_CTR::set_capture_preset(std::string preset) {
    const record_guard guard(lk);
    own_values_.capture_preset = preset;
    capture_preset_ = std::move(preset);
}

single_Vistel_CTR read_vistel_item(const property_dictionary& stored) {
    single_Vistel_CTR vistel;
    vistel.set_uuid(stored.text_or_empty("UUID single video - g"));
    vistel.set_proportion_rect(stored_frame(stored, "proportion rect - coll"));
    vistel.set_vistel_number_displayed(small_integer(stored, "vistel_number_displayed"));
    vistel.set_saves_data_locally(stored.boolean("save_video_data_locally").value_or(false));
    vistel.set_remembered_proportion_rect(stored_frame(stored, "proportion rect - coll - remember original"));
    vistel.set_flicked_in_rotation(finite_number(stored, "flicked_IN_Vistel_Rotation").value_or(0));
    vistel.set_flicked_in(stored.boolean("this_vistel_flicked_in").value_or(false));
    vistel.set_number(finite_number(stored, "Vistel name UUID - coll").value_or(0));
    vistel.set_is_inserted_picture(stored.boolean("inserted_Type_PICTURE").value_or(false));
    vistel.set_manual_start_offset(stored_seconds(stored, "manual start offset"));
    vistel.set_vistel_number_displayed_ordinal(small_integer(stored, "vistel_number_displayed_ordinal"));
    vistel.set_saved_view_order(small_integer(stored, "saved view order i8"));
    vistel.set_name(stored.text_or_empty("Vistel video name - coll"));
    vistel.set_locks_clips(stored.boolean("drone_lock_clips").value_or(false));
    vistel.set_http_file(stored.text_or_empty("http file - coll"));
    vistel.set_capture_device(stored.text_or_empty("localized name of current device - coll"));
    vistel.set_capture_preset(stored.text_or_empty("capture preset - collection"));
    vistel.set_overlay(read_overlay(stored));
    vistel.set_linked_composer(stored.text_or_empty("UUID of linked composer archive"));
    vistel.set_stored_item(stored);
    return vistel;
}

property_dictionary write_vistel_item(const single_Vistel_CTR& vistel) {
    const auto as_read = vistel.stored_item();
    record_writer writer(item_keys, as_read);
    write_common(writer, vistel, true);
    writer.integer("vistel_number_displayed", vistel.vistel_number_displayed());
    writer.flag("this_vistel_flicked_in", vistel.flicked_in());
    writer.flag("inserted_Type_PICTURE", vistel.is_inserted_picture());
    writer.integer("vistel_number_displayed_ordinal", vistel.vistel_number_displayed_ordinal());
    writer.integer("saved view order i8", vistel.saved_view_order());
    writer.text("capture preset - collection", vistel.capture_preset());
    write_overlay(writer, vistel, as_read);
    writer.text("UUID of linked composer archive", vistel.linked_composer());
    return writer.finish();
}

void read_vistel_record(single_Vistel_CTR& vistel, const property_dictionary& stored) {
    read_missing(vistel, stored);
    // Of a vistel whose record is missing, a new one says what the collection does.
    if (!stored.empty()) vistel.set_own_values(read_own_values(stored));
    vistel.set_creator(stored.text_or_empty("creator"));
    vistel.set_default_proportion_rect(stored_frame(stored, "proportion rect"));
    vistel.set_capture_sound_device(stored.text_or_empty("localized name of current Audio input device"));
    if (const auto* parts = stored.array("drone_array")) vistel.set_parts(read_movie_parts(*parts));
    vistel.set_stored_vistel(stored);
}

property_dictionary write_vistel_record(const single_Vistel_CTR& vistel) {
    const auto as_read = vistel.stored_vistel();
    record_writer writer(vistel_keys, as_read);
    write_common(writer, vistel, false);
    const auto own = vistel.own_values();
    writer.text("Vistel video name", own.name);
    writer.number_if_set("Vistel name UUID", own.number);
    writer.integer("vistel number", own.shown_number);
    writer.text("creator", vistel.creator());
    writer.frame("proportion rect", vistel.default_proportion_rect());
    writer.text("http file", own.http_file);
    writer.text("capture preset", own.capture_preset);
    writer.text("localized name of current Audio input device", vistel.capture_sound_device());
    const auto parts = vistel.parts();
    const auto on_record = vistel.parts_on_record();
    auto stored_parts = write_movie_parts(parts);
    const auto* as_read_parts = as_read.find("drone_array");
    const bool differ = on_record       ? parts != *on_record
                        : as_read_parts ? *as_read_parts != property_value(stored_parts)
                                        : !stored_parts.empty();
    if (differ) writer.value("drone_array", std::move(stored_parts));
    return writer.finish();
}

std::vector<std::string> unused_movies(const property_dictionary& vistel_record) {
    std::vector<std::string> names;
    const auto* listed = vistel_record.array(unused_movies_key);
    for (std::size_t index = 0; listed && index < listed->size(); ++index) {
        if (const auto* name = (*listed)[index].text()) names.push_back(*name);
    }
    return names;
}

void set_unused_movies(property_dictionary& vistel_record, const std::vector<std::string>& names) {
    if (names.empty()) return vistel_record.remove(unused_movies_key);
    vistel_record.set(unused_movies_key, property_array(names.begin(), names.end()));
}

}  // namespace vistels
