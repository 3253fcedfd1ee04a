// SPDX-License-Identifier: GPL-3.0-or-later
#include "video/single_Vistel_CTR.h"

#include <algorithm>
#include <limits>

#include "video/video_coll_Records.h"

namespace vistels {

namespace {

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
};

int small_integer(const property_dictionary& stored, const char* key) {
    const auto number = stored.integer(key).value_or(0);
    return static_cast<int>(
        std::clamp<std::int64_t>(number, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

std::optional<double> number_or_nothing(double number) {
    return number != 0 ? std::optional(number) : std::nullopt;
}

// The values that the item record and the vistel's own record have in common.
void write_common(record_writer& writer, const single_Vistel_CTR& vistel) {
    writer.text("UUID single video - g", vistel.uuid());
    writer.frame("proportion rect - coll", vistel.proportion_rect());
    writer.flag("save_video_data_locally", vistel.saves_data_locally());
    writer.number("Vistel name UUID - coll", number_or_nothing(vistel.number()));
    writer.number("manual start offset", vistel.manual_start_offset());
    writer.text("Vistel video name - coll", vistel.name());
    writer.flag("drone_lock_clips", vistel.locks_clips());
}

}  // namespace

single_Vistel_CTR read_vistel_item(const property_dictionary& stored) {
    single_Vistel_CTR vistel;
    vistel.set_uuid(stored.text_or_empty("UUID single video - g"));
    vistel.set_proportion_rect(stored_frame(stored, "proportion rect - coll"));
    vistel.set_vistel_number_displayed(small_integer(stored, "vistel_number_displayed"));
    vistel.set_saves_data_locally(stored.boolean("save_video_data_locally").value_or(false));
    vistel.set_flicked_in(stored.boolean("this_vistel_flicked_in").value_or(false));
    vistel.set_number(finite_number(stored, "Vistel name UUID - coll").value_or(0));
    vistel.set_manual_start_offset(finite_number(stored, "manual start offset"));
    vistel.set_saved_view_order(small_integer(stored, "saved view order i8"));
    vistel.set_name(stored.text_or_empty("Vistel video name - coll"));
    vistel.set_locks_clips(stored.boolean("drone_lock_clips").value_or(false));
    vistel.set_stored_item(stored);
    return vistel;
}

property_dictionary write_vistel_item(const single_Vistel_CTR& vistel) {
    const auto as_read = vistel.stored_item();
    record_writer writer(item_keys, as_read);
    write_common(writer, vistel);
    writer.integer("vistel_number_displayed", vistel.vistel_number_displayed());
    writer.flag("this_vistel_flicked_in", vistel.flicked_in());
    writer.integer("saved view order i8", vistel.saved_view_order());
    return writer.finish();
}

void read_vistel_record(single_Vistel_CTR& vistel, const property_dictionary& stored) {
    if (vistel.name().empty()) vistel.set_name(stored.text_or_empty("Vistel video name - coll"));
    if (vistel.name().empty()) vistel.set_name(stored.text_or_empty("Vistel video name"));
    if (!vistel.proportion_rect()) vistel.set_proportion_rect(stored_frame(stored, "proportion rect - coll"));
    if (!vistel.proportion_rect()) vistel.set_proportion_rect(stored_frame(stored, "proportion rect"));
    vistel.set_creator(stored.text_or_empty("creator"));
    if (const auto* parts = stored.array("drone_array")) vistel.set_parts(read_movie_parts(*parts));
    vistel.set_stored_vistel(stored);
}

property_dictionary write_vistel_record(const single_Vistel_CTR& vistel) {
    const auto as_read = vistel.stored_vistel();
    record_writer writer(vistel_keys, as_read);
    write_common(writer, vistel);
    writer.text("Vistel video name", vistel.name());
    writer.number("Vistel name UUID", number_or_nothing(vistel.number()));
    writer.integer("vistel number", vistel.vistel_number_displayed());
    writer.text("creator", vistel.creator());
    const auto parts = vistel.parts();
    if (!parts.parts.empty() || as_read.contains("drone_array")) {
        writer.value("drone_array", write_movie_parts(parts));
    }
    return writer.finish();
}

}  // namespace vistels
