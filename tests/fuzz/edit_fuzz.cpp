// SPDX-License-Identifier: GPL-3.0-or-later
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "full_alpha.h"
#include "timeline/edits/timeline_edit.h"
#include "timeline/files/sxy_Save_Load.h"
#include "util/json.h"

// A recorded edit of any content is refused, and changes nothing, or it is applied and can be taken back.

namespace {

using namespace vistels;

constexpr std::string_view base = R"({"uuid_timeline": "T", "rows": [
    {"row_name": "Shot", "uuid_row": "R", "row_category": "Attack", "color": "1.0,0.0,0.0", "sort_number": 2,
     "deleted clips": [{"clip_ID": "D", "author": "A", "edit_seconds": 1e12}],
     "clips": [
         {"uuid": "1", "time_start": 1.0, "time_end": 4.0, "row_uuid_in_clip": "R", "stars": 3,
          "color": "0.5,0.5,0.5,0.5", "clip_group": "G", "pause_items": [{"seconds": 2.0}],
          "qualifiers": {"qualifiers_array": [
              {"time": 1.5, "name": "Goal", "category": "What", "uuid": "Q",
               "qualifier_attributes": [{"name": "n", "time": 2.0, "attr_uuid": "A"}]}]}},
         {"uuid": "2", "time_start": 1.0, "time_end": 4.0}]},
    {"row_name": "Empty", "uuid_row": "S"}]})";

void require(bool holds) {
    if (!holds) std::abort();
}

property_value parsed(std::string_view text) {
    auto value = read_json(text, "text");
    require(value.ok());
    return std::move(value).value();
}

sxy_DATA_root base_timeline() {
    static const property_value stored = parsed(base);
    sxy_DATA_root timeline(read_timeline(*stored.dictionary()).content);
    sxy_CLIP growing;
    growing.set_id("L");
    change_set touched;
    const timeline_edit begin{"", "", {operation::begin_clip{shared_text("R"), growing}}};
    require(apply_edit(timeline, begin, touched).ok());
    return timeline;
}

std::string state_of(sxy_DATA_root& timeline) {
    const auto snapshot = timeline.snapshot();
    std::string text = write_json(write_timeline(snapshot), json_layout::one_line);
    for (const auto& live : snapshot.live_clips) {
        text += "\n" + live.row.str() + write_json(write_clip(*live.clip), json_layout::one_line);
    }
    return fuzz::without_full_alpha(text, "\"");
}

template <class Item>
bool each_once(std::vector<Item> all) {
    std::sort(all.begin(), all.end());
    return std::adjacent_find(all.begin(), all.end()) == all.end();
}

// What is put on record is what was done: after one rounding of its numbers it stays the same.
void check_record(const timeline_edit& edit) {
    const auto once = read_edit(write_edit(edit));
    require(once.ok() && once.value().operations.size() == edit.operations.size());
    const auto stored = write_edit(once.value());
    const auto text = write_json(stored, json_layout::one_line);
    const auto twice = read_edit(*parsed(text).dictionary());
    require(twice.ok() && write_json(write_edit(twice.value()), json_layout::one_line) == text);
}

bool finishes_clips(const timeline_edit& edit) {
    return std::any_of(edit.operations.begin(), edit.operations.end(),
                       [](const auto& one) { return std::holds_alternative<operation::finish_clip>(one); });
}

void check_taking_back(sxy_DATA_root& timeline, const timeline_edit& inverse, const std::string& before) {
    const auto after = state_of(timeline);
    change_set touched;
    const auto redo = apply_edit(timeline, inverse, touched);
    require(redo.ok() && state_of(timeline) == before);
    require(apply_edit(timeline, redo.value(), touched).ok() && state_of(timeline) == after);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto document = read_json(std::string_view(reinterpret_cast<const char*>(data), size), "fuzz");
    if (!document || !document.value().dictionary()) return 0;
    const auto edit = read_edit(*document.value().dictionary());
    if (!edit) return 0;
    check_record(edit.value());
    auto timeline = base_timeline();
    const auto before = state_of(timeline);
    change_set touched;
    const auto inverse = apply_edit(timeline, edit.value(), touched);
    require(each_once(touched.clips));
    if (!inverse) {
        require(state_of(timeline) == before);
    } else if (!finishes_clips(edit.value())) {  // taking back a finish takes the clip away
        check_taking_back(timeline, inverse.value(), before);
    }
    return 0;
}
