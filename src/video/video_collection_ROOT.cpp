// SPDX-License-Identifier: GPL-3.0-or-later
#include "video/video_collection_ROOT.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <set>

#include "util/text_forms.h"
#include "video/collection_failures.h"
#include "video/video_coll_Records.h"

namespace vistels {

namespace {

// Only in files of a collection that is being archived; not part of the collection.
constexpr const char* archive_key = "temp_completion_UUID_created_during_archive";
constexpr const char* pushed_key = "pushed vistel data";
constexpr const char* remembered_ratio_key = "remember_outside_bounds_video_ratio_for_vistel_FLICKING";
constexpr const char* area_scrolls_key = "video area scrolls";
constexpr std::int64_t numbers_end = std::int64_t{1} << 53;

// What has a greater number is no camera.
constexpr double largest_camera_number = 100'000;
constexpr const char* largest_number_key = "largest vistel number";

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
    remembered_ratio_key,
    "video type state",
    "volume",
    "date updated",
    "seconds updated",
    "movie time",
    "display vistel number",
    "UUID of linked composer archive",
    "UUID of linked timeline archive",
    "UUID_of_vistel_for_sound",
    pushed_key,
    collection_items_key,
    "show missing vistel starts",
    area_scrolls_key,
    largest_number_key,
    archive_key,
};

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

std::optional<double> positive_number(const property_dictionary& stored, const char* key) {
    const auto number = finite_number(stored, key);
    return number && *number > 0 ? number : std::nullopt;
}

// A ratio that is none stays as it was read.
void write_ratio(record_writer& writer, const property_dictionary& as_read, const char* key,
                 std::optional<double> ratio) {
    if (ratio != positive_number(as_read, key)) {
        writer.value(key, ratio ? property_value(*ratio) : property_value());
    }
}

std::vector<pushed_vistel> read_pushed(const property_dictionary& stored) {
    std::vector<pushed_vistel> pushed;
    const auto* entries = stored.dictionary(pushed_key);
    if (!entries) return pushed;
    for (const auto& entry : *entries) {
        if (const auto frame = rectangle_from(entry.value)) pushed.push_back({entry.key, *frame});
    }
    return pushed;
}

// What in the dictionary is no frame stays.
void write_pushed(record_writer& writer, const video_collection_ROOT& collection,
                  const property_dictionary& as_read) {
    const auto pushed = collection.pushed_vistels();
    if (pushed == read_pushed(as_read)) return;
    property_dictionary written;
    if (const auto* entries = as_read.dictionary(pushed_key)) {
        for (const auto& entry : *entries) {
            if (!rectangle_from(entry.value)) written.set(entry.key, entry.value);
        }
    }
    for (const auto& one : pushed) written.set(one.uuid, rectangle_text(one.frame));
    writer.value(pushed_key, written.empty() ? property_value() : property_value(std::move(written)));
}

// Whether a vistel is enlarged: any value that says yes counts, and keeps its form as long as it is right.
bool says_yes(const property_value* value) {
    if (!value) return false;
    if (const auto* text = value->text()) return number_from_text(*text).value_or(0) != 0;
    return value->boolean().value_or(value->number().value_or(0) != 0);
}

void write_enlargement(record_writer& writer, const video_collection_ROOT& collection,
                       const property_dictionary& as_read) {
    const auto all = collection.vistels();
    const bool is_enlarged =
        std::any_of(all.begin(), all.end(), [](const auto& vistel) { return vistel->flicked_in(); });
    if (is_enlarged != says_yes(as_read.find("flicked_in_state"))) {
        writer.value("flicked_in_state", is_enlarged);
    }
}

std::vector<std::shared_ptr<single_Vistel_CTR>> read_items(const property_dictionary& stored) {
    std::vector<std::shared_ptr<single_Vistel_CTR>> vistels;
    const auto* items = stored.array(collection_items_key);
    for (std::size_t index = 0; items && index < items->size(); ++index) {
        if (const auto* dictionary = (*items)[index].dictionary()) {
            vistels.push_back(std::make_shared<single_Vistel_CTR>(read_vistel_item(*dictionary)));
        }
    }
    return vistels;
}

// The elements that are no records, in their places, with nulls in those of the vistels.
property_array foreign_items(const property_dictionary& stored) {
    const auto* items = stored.array(collection_items_key);
    property_array foreign = items ? *items : property_array();
    for (auto& item : foreign) {
        if (item.dictionary()) item = property_value();
    }
    while (!foreign.empty() && foreign.back().is_null()) foreign.pop_back();
    return foreign;
}

property_array write_items(const video_collection_ROOT& collection) {
    property_array items;
    for (const auto& vistel : collection.vistels()) items.emplace_back(write_vistel_item(*vistel));
    const auto foreign = foreign_items(collection.stored());
    for (std::size_t index = 0; index < foreign.size(); ++index) {
        if (foreign[index].is_null()) continue;
        const auto place = std::min(index, items.size());
        items.insert(items.begin() + static_cast<std::ptrdiff_t>(place), foreign[index]);
    }
    return items;
}

// The largest of the vistels' numbers that may be a camera's, or `least`.
double largest_number(double least, const std::vector<std::shared_ptr<single_Vistel_CTR>>& vistels) {
    for (const auto& vistel : vistels) {
        const double number = std::floor(vistel->number());
        if (number <= largest_camera_number) least = std::max(least, number);
    }
    return least;
}

double stored_largest_number(const property_dictionary& stored) {
    const double number = std::floor(finite_number(stored, largest_number_key).value_or(0));
    return number > 0 && number <= largest_camera_number ? number : 0;
}

// Only what neither the record nor the vistels say already.
void write_largest_number(record_writer& writer, const video_collection_ROOT& collection,
                          const property_dictionary& as_read) {
    const double largest = collection.largest_vistel_number();
    if (largest > largest_number(stored_largest_number(as_read), collection.vistels()))
        writer.value(largest_number_key, static_cast<std::int64_t>(largest));
}

// How a problem names a vistel.
std::string shown_name(const single_Vistel_CTR& vistel) {
    return vistel.name().empty() ? vistel.uuid() : vistel.name();
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

void video_collection_ROOT::insert_vistel(std::size_t index, std::shared_ptr<single_Vistel_CTR> vistel) {
    auto all = vistels();
    all.insert(all.begin() + static_cast<std::ptrdiff_t>(std::min(index, all.size())), std::move(vistel));
    set_vistels(std::move(all));
}

std::optional<std::size_t> video_collection_ROOT::remove_vistel(const single_Vistel_CTR& vistel) {
    auto all = vistels();
    const auto found =
        std::find_if(all.begin(), all.end(), [&](const auto& one) { return one.get() == &vistel; });
    if (found == all.end()) return std::nullopt;
    const auto index = static_cast<std::size_t>(found - all.begin());
    all.erase(found);
    set_vistels(std::move(all));
    return index;
}

bool video_collection_ROOT::move_vistel(const single_Vistel_CTR& vistel, std::size_t index) {
    for (const auto& one : vistels()) {
        if (one.get() != &vistel) continue;
        remove_vistel(vistel);
        insert_vistel(index, one);
        return true;
    }
    return false;
}

saving_block::saving_block(video_collection_ROOT& collection) : collection_(collection) {
    const record_guard guard(collection_.lk);
    ++collection_.saving_blocks_.number;
}

saving_block::~saving_block() {
    const record_guard guard(collection_.lk);
    --collection_.saving_blocks_.number;
}

// What has been in the collection counts as well as what is in it.
void video_collection_ROOT::set_vistels(std::vector<std::shared_ptr<single_Vistel_CTR>> all) {
    const record_guard guard(lk);
    largest_number_ = largest_number(largest_number_, vistels_);
    vistels_ = std::move(all);
    largest_number_ = largest_number(largest_number_, vistels_);
}

double video_collection_ROOT::take_vistel_number() {
    const record_guard guard(lk);
    double largest = largest_number(largest_number_, vistels_);
    for (const double number : numbers_in_use_) {
        if (number <= largest_camera_number) largest = std::max(largest, std::floor(number));
    }
    if (largest < largest_camera_number) return largest_number_ = largest + 1;
    std::set<double> used = numbers_in_use_;
    for (const auto& vistel : vistels_) used.insert(std::floor(vistel->number()));
    double number = 1;
    while (used.contains(number)) ++number;
    numbers_in_use_.insert(number);
    return number;
}

video_collection_ROOT read_collection(const property_dictionary& stored) {
    video_collection_ROOT collection;
    collection.set_uuid(stored.text_or_empty("UUID video group"));
    collection.set_secondary_uuid(stored.text_or_empty("UUID video group - secondary"));
    collection.set_quick_number(read_quick_number(stored));
    collection.set_original_quick_number(stored.text_or_empty("UUID video group quick ORIGINAL source"));
    collection.set_previous_uuid(stored.text_or_empty("UUID video group - previous i7"));
    collection.set_last_copied(
        finite_number(stored, "last time copied between folders - collection i7").value_or(0));
    collection.set_created_by(stored.text_or_empty("created by"));
    collection.set_name(stored.text_or_empty("video group name"));
    collection.set_outside_bounds_ratio(positive_number(stored, "video outside bounds ratio"));
    collection.set_remembered_outside_bounds_ratio(positive_number(stored, remembered_ratio_key));
    collection.set_state(video_type_state_from_text(stored.text_or_empty("video type state")));
    collection.set_volume(std::clamp(finite_number(stored, "volume").value_or(1), 0.0, 1.0));
    collection.set_movie_time(finite_number(stored, "movie time").value_or(0));
    collection.set_displays_vistel_number(stored.boolean("display vistel number").value_or(false));
    collection.set_linked_composer(stored.text_or_empty("UUID of linked composer archive"));
    collection.set_linked_timeline(stored.text_or_empty("UUID of linked timeline archive"));
    collection.set_vistel_for_sound(stored.text_or_empty("UUID_of_vistel_for_sound"));
    collection.set_pushed_vistels(read_pushed(stored));
    collection.set_shows_missing_starts(stored.boolean("show missing vistel starts").value_or(false));
    collection.set_area_scrolls(stored.boolean(area_scrolls_key).value_or(false));
    collection.set_largest_vistel_number(stored_largest_number(stored));
    collection.set_vistels(read_items(stored));
    property_dictionary kept = stored;
    kept.remove(archive_key);
    auto foreign = foreign_items(stored);
    kept.remove(collection_items_key);
    if (!foreign.empty()) kept.set(collection_items_key, std::move(foreign));
    collection.set_stored(std::move(kept));
    return collection;
}

property_dictionary write_collection(const video_collection_ROOT& collection, double now,
                                     const std::string& archive_uuid) {
    const auto as_read = collection.stored();
    record_writer writer(collection_keys, as_read);
    writer.text("UUID video group", collection.uuid());
    writer.text("UUID video group - secondary", collection.secondary_uuid());
    if (collection.quick_number() > 0 && collection.quick_number() != read_quick_number(as_read)) {
        writer.text("UUID video group quick", std::to_string(collection.quick_number()));
    }
    writer.text("UUID video group quick ORIGINAL source", collection.original_quick_number());
    writer.text("UUID video group - previous i7", collection.previous_uuid());
    writer.number_if_set("last time copied between folders - collection i7", collection.last_copied());
    writer.text("created by", collection.created_by());
    writer.text("video group name", collection.name());
    write_ratio(writer, as_read, "video outside bounds ratio", collection.outside_bounds_ratio());
    write_enlargement(writer, collection, as_read);
    write_ratio(writer, as_read, remembered_ratio_key, collection.remembered_outside_bounds_ratio());
    const auto* state = as_read.text("video type state");
    if (!state || video_type_state_from_text(*state) != collection.state()) {
        writer.value("video type state", video_type_state_text(collection.state()));
    }
    writer.number_always("volume", collection.volume());
    writer.value("date updated", property_date{now});
    writer.value("seconds updated", now);
    writer.number_always("movie time", collection.movie_time());
    writer.flag("display vistel number", collection.displays_vistel_number());
    writer.text("UUID of linked composer archive", collection.linked_composer());
    writer.text("UUID of linked timeline archive", collection.linked_timeline());
    writer.text("UUID_of_vistel_for_sound", collection.vistel_for_sound());
    write_pushed(writer, collection, as_read);
    writer.value(collection_items_key, write_items(collection));
    writer.flag("show missing vistel starts", collection.shows_missing_starts());
    // Of this program alone: only there when it says something.
    if (collection.area_scrolls() != as_read.boolean(area_scrolls_key).value_or(false)) {
        writer.value(area_scrolls_key, collection.area_scrolls() ? property_value(true) : property_value());
    }
    write_largest_number(writer, collection, as_read);
    if (!archive_uuid.empty()) writer.value(archive_key, archive_uuid);
    return writer.finish();
}

bool has_foreign_items(const video_collection_ROOT& collection) {
    return !foreign_items(collection.stored()).empty();
}

bool has_number(const single_Vistel_CTR& vistel) {
    return vistel.number() > 0;
}

std::vector<failure> numbering_problems(const video_collection_ROOT& collection) {
    std::vector<failure> problems;
    const auto all = collection.vistels();
    for (auto one = all.begin(); one != all.end(); ++one) {
        const double number = (*one)->number();
        const auto same_number = [&](const auto& other) { return other->number() == number; };
        const auto same_uuid = [&](const auto& other) { return other->uuid() == (*one)->uuid(); };
        const auto namesake = std::find_if(all.begin(), one, same_number);
        if (namesake != one && has_number(**one)) {
            problems.push_back(vistels_share_a_number(shown_name(**namesake), shown_name(**one)));
        }
        if (!(*one)->uuid().empty() && std::find_if(all.begin(), one, same_uuid) != one) {
            problems.push_back(vistel_is_there_twice(shown_name(**one)));
        }
    }
    return problems;
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
