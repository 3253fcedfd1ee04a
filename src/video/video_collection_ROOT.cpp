// SPDX-License-Identifier: GPL-3.0-or-later
#include "video/video_collection_ROOT.h"

#include <algorithm>
#include <cmath>

#include "util/text_forms.h"
#include "video/video_coll_Records.h"

namespace vistels {

namespace {

constexpr const char* items_key = "array video group items";
constexpr std::int64_t numbers_end = std::int64_t{1} << 53;

constexpr const char* collection_keys[] = {
    "UUID video group",
    "UUID video group - secondary",
    "UUID video group quick",
    "UUID video group quick ORIGINAL source",
    "UUID video group - previous i7",
    "last time copied between folders - collection i7",
    "created by",
    "video group name",
    "video outside bounds ratio",
    "flicked_in_state",
    "remember_outside_bounds_video_ratio_for_vistel_FLICKING",
    "video type state",
    "volume",
    "date updated",
    "seconds updated",
    "movie time",
    "display vistel number",
    "UUID of linked composer archive",
    "UUID of linked timeline archive",
    "UUID_of_vistel_for_sound",
    "pushed vistel data",
    items_key,
    "show missing vistel starts",
};

// Only in files of a collection that is being archived; not part of the collection.
constexpr const char* archive_key = "temp_completion_UUID_created_during_archive";

struct state_text {
    video_type_state state;
    std::string_view text;
};
constexpr state_text state_texts[] = {
    {video_type_state::capture_preview, "CAPTURE PREVIEW"},
    {video_type_state::capturing_in_progress, "CAPTURING IN PROGRESS"},
    {video_type_state::playback, "PLAYBACK"},
    {video_type_state::none, "NONE"},
};

// Files hold the number as text; a number counts as well.
std::int64_t read_quick_number(const property_dictionary& stored) {
    const auto* value = stored.find("UUID video group quick");
    if (!value) return 0;
    std::optional<double> number = value->text() ? number_from_text(*value->text()) : value->number();
    if (!number || !(*number > 0) || *number >= static_cast<double>(numbers_end)) return 0;
    return std::floor(*number) == *number ? static_cast<std::int64_t>(*number) : 0;
}

}  // namespace

std::string_view video_type_state_text(video_type_state state) {
    for (const auto& entry : state_texts) {
        if (entry.state == state) return entry.text;
    }
    return "NONE";
}

video_type_state video_type_state_from_text(std::string_view text) {
    for (const auto& entry : state_texts) {
        if (entry.text == text) return entry.state;
    }
    return video_type_state::none;
}

std::shared_ptr<single_Vistel_CTR> video_collection_ROOT::find_vistel(std::string_view uuid_or_number) const {
    const auto all = vistels();
    for (const auto& vistel : all) {
        if (vistel->uuid() == uuid_or_number) return vistel;
    }
    const auto number = number_from_text(uuid_or_number);
    if (!number || !(*number > 0)) return nullptr;
    const auto found =
        std::find_if(all.begin(), all.end(), [&](const auto& vistel) { return vistel->number() == *number; });
    return found == all.end() ? nullptr : *found;
}

double video_collection_ROOT::unused_vistel_number() const {
    const auto all = vistels();
    double largest = 0;
    for (const auto& vistel : all) {
        if (vistel->number() < static_cast<double>(numbers_end - 1)) {
            largest = std::max(largest, std::floor(vistel->number()));
        }
    }
    return largest + 1;
}

video_collection_ROOT read_collection(const property_dictionary& stored) {
    video_collection_ROOT collection;
    collection.set_uuid(stored.text_or_empty("UUID video group"));
    collection.set_quick_number(read_quick_number(stored));
    collection.set_created_by(stored.text_or_empty("created by"));
    collection.set_name(stored.text_or_empty("video group name"));
    collection.set_state(video_type_state_from_text(stored.text_or_empty("video type state")));
    collection.set_volume(std::clamp(finite_number(stored, "volume").value_or(1), 0.0, 1.0));
    collection.set_movie_time(finite_number(stored, "movie time").value_or(0));
    collection.set_displays_vistel_number(stored.boolean("display vistel number").value_or(false));
    collection.set_linked_timeline(stored.text_or_empty("UUID of linked timeline archive"));
    collection.set_vistel_for_sound(stored.text_or_empty("UUID_of_vistel_for_sound"));
    std::vector<std::shared_ptr<single_Vistel_CTR>> vistels;
    if (const auto* items = stored.array(items_key)) {
        for (const auto& item : *items) {
            if (const auto* dictionary = item.dictionary()) {
                vistels.push_back(std::make_shared<single_Vistel_CTR>(read_vistel_item(*dictionary)));
            }
        }
    }
    collection.set_vistels(std::move(vistels));
    property_dictionary kept = stored;
    kept.remove(archive_key);
    kept.remove(items_key);
    collection.set_stored(std::move(kept));
    return collection;
}

property_dictionary write_collection(const video_collection_ROOT& collection, double now) {
    const auto as_read = collection.stored();
    record_writer writer(collection_keys, as_read);
    writer.text("UUID video group", collection.uuid());
    if (collection.quick_number() > 0) {
        writer.text("UUID video group quick", std::to_string(collection.quick_number()));
    }
    writer.text("created by", collection.created_by());
    writer.text("video group name", collection.name());
    writer.text("video type state", std::string(video_type_state_text(collection.state())));
    writer.value("volume", collection.volume());
    writer.value("date updated", property_date{now});
    writer.value("seconds updated", now);
    writer.value("movie time", collection.movie_time());
    writer.flag("display vistel number", collection.displays_vistel_number());
    writer.text("UUID of linked timeline archive", collection.linked_timeline());
    writer.text("UUID_of_vistel_for_sound", collection.vistel_for_sound());
    property_array items;
    for (const auto& vistel : collection.vistels()) items.emplace_back(write_vistel_item(*vistel));
    writer.value(items_key, std::move(items));
    return writer.finish();
}

std::vector<rectangle> grid_layout(std::size_t count) {
    std::size_t columns = 1;
    while (columns * columns < count) ++columns;
    const std::size_t lines = count == 0 ? 1 : (count + columns - 1) / columns;
    const double width = 1.0 / static_cast<double>(columns);
    const double height = 1.0 / static_cast<double>(lines);
    std::vector<rectangle> frames;
    for (std::size_t index = 0; index < count; ++index) {
        const std::size_t line = index / columns;
        const std::size_t in_line = std::min(columns, count - line * columns);
        const double left = (1 - static_cast<double>(in_line) * width) / 2;
        frames.push_back({left + static_cast<double>(index % columns) * width,
                          static_cast<double>(line) * height, width, height});
    }
    return frames;
}

}  // namespace vistels
