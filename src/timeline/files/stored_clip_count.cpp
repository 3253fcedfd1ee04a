// SPDX-License-Identifier: GPL-3.0-or-later
#include "timeline/files/stored_clip_count.h"

#include <cmath>
#include <optional>
#include <string_view>

#include "timeline/files/sxy_Save_Load.h"
#include "util/file_system.h"
#include "util/property_list_cursor.h"

namespace vistels {

namespace {

using form = stored_view::form;

// Goes through the dictionary that comes next and calls `list` at the beginning of each array of that name
// and `item` for each of its items, which it takes from the cursor.
template <class List, class Item>
void visit_list(property_list_cursor& cursor, stored_arena& arena, std::string_view name, const List& list,
                const Item& item) {
    if (cursor.next_form() != form::dictionary || !cursor.enter()) return cursor.skip();
    while (const auto key = cursor.next_key(arena)) {
        if (*key != name || cursor.next_form() != form::array) {
            cursor.skip();
            continue;
        }
        list();
        cursor.enter();
        while (cursor.next_item()) item();
    }
}

// Both times are plain numbers: it is one that loading takes.
bool is_clip(property_list_cursor& cursor, stored_arena& arena) {
    bool has_start = false;
    bool has_end = false;
    if (cursor.next_form() != form::dictionary || !cursor.enter()) {
        cursor.skip();
        return false;
    }
    while (const auto key = cursor.next_key(arena)) {
        if (*key != "time_start" && *key != "time_end") {
            cursor.skip();
            continue;
        }
        const auto seconds = cursor.read(arena).number();
        (*key == "time_start" ? has_start : has_end) = seconds && std::isfinite(*seconds);
    }
    return has_start && has_end;
}

// Where a list stands twice, the last one counts. Nothing when the file is to be read in the usual way.
std::optional<std::size_t> counted_quickly(std::string_view bytes) {
    property_list_cursor cursor(bytes);
    stored_arena arena;
    std::size_t all = 0;
    bool is_plain = true;
    if (cursor.next_form() != form::dictionary) return std::nullopt;
    const auto count_row = [&] {
        std::size_t clips = 0;
        visit_list(
            cursor, arena, "clips", [&] { clips = 0; },
            [&] {
                is_plain = is_clip(cursor, arena) && is_plain;
                ++clips;
                arena.clear();
            });
        all += clips;
    };
    visit_list(
        cursor, arena, "rows", [&] { all = 0; }, count_row);
    return cursor.finish() && is_plain ? std::optional(all) : std::nullopt;
}

}  // namespace

result<std::size_t> count_stored_clips(const std::string& folder) {
    const auto bytes = read_file(path_join(folder, timeline_file_name));
    if (!bytes) return bytes.error();
    if (const auto count = counted_quickly(bytes.value())) return *count;
    const auto loaded = load_timeline(folder);
    if (!loaded) return loaded.error();
    std::size_t count = 0;
    for (const auto& row : loaded.value().content.rows) count += row->clips().size();
    return count;
}

}  // namespace vistels
