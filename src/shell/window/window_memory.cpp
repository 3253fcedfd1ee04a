// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/window/window_memory.h"

#include <algorithm>

#include "util/colour_text.h"
#include "util/file_system.h"
#include "util/property_list.h"
#include "util/safe_write.h"

namespace vistels {

namespace {

std::string memory_path(const home_places& places) {
    return path_join(path_join(places.state_folder, "Windows"), "main window.plist");
}

constexpr const char* windows_key = "windows";
constexpr const char* root_key = "root ID";
// From one cascaded window to the next, in logical pixels: a title bar shows.
constexpr int cascade_step = 32;

int small_number(const property_dictionary& stored, const char* key) {
    return static_cast<int>(std::clamp<std::int64_t>(stored.integer(key).value_or(0), 0, 100000));
}

void read_window(const property_dictionary& stored, window_memory& memory) {
    if (const auto* value = stored.find("place")) {
        const auto place = rectangle_from(*value);
        const auto whole = [](double number) { return static_cast<int>(std::clamp(number, -1e5, 1e5)); };
        if (place && place->width >= 1 && place->height >= 1) {
            memory.place = {whole(place->x), whole(place->y), whole(place->width), whole(place->height)};
        }
    }
    memory.is_maximized = stored.boolean("maximized").value_or(false);
    memory.side_bar_width = small_number(stored, "side bar width");
    memory.inspector_width = small_number(stored, "inspector width");
    memory.side_bar_shown = stored.boolean("side bar shown").value_or(true);
    memory.inspector_shown = stored.boolean("inspector shown").value_or(true);
    memory.playback_health_shown = stored.boolean("playback health shown").value_or(false);
    memory.tab = small_number(stored, "tab");
    if (const auto* sizes = stored.dictionary("pane sizes")) memory.work_sizes = *sizes;
}

void write_window(const window_memory& memory, property_dictionary& stored) {
    if (!memory.place.isNull()) {
        stored.add("place", rectangle_text({static_cast<double>(memory.place.x()),
                                            static_cast<double>(memory.place.y()),
                                            static_cast<double>(memory.place.width()),
                                            static_cast<double>(memory.place.height())}));
    }
    stored.add("maximized", memory.is_maximized);
    if (memory.side_bar_width > 0) stored.add("side bar width", memory.side_bar_width);
    if (memory.inspector_width > 0) stored.add("inspector width", memory.inspector_width);
    stored.add("side bar shown", memory.side_bar_shown);
    stored.add("inspector shown", memory.inspector_shown);
    stored.add("playback health shown", memory.playback_health_shown);
    stored.add("tab", memory.tab);
    if (!memory.work_sizes.empty()) stored.add("pane sizes", memory.work_sizes);
}

}  // namespace

window_memory load_window_memory(const home_places& places, const std::string& root_id) {
    const property_dictionary stored = read_dictionary_or_empty(memory_path(places));
    window_memory memory;
    read_window(stored, memory);
    memory.theme = stored.text_or_empty("theme");
    if (const auto* folded = stored.array("folded vaults")) {
        for (const auto& one : *folded) {
            if (one.text()) memory.folded_vaults.push_back(*one.text());
        }
    }
    if (root_id.empty()) return memory;
    const auto* all = stored.array(windows_key);
    for (const auto& one : all ? *all : property_array()) {
        const auto* window = one.dictionary();
        if (!window || window->text_or_empty(root_key) != root_id) continue;
        memory.work_sizes = {};
        read_window(*window, memory);
        break;
    }
    return memory;
}

result<void> save_window_memories(const home_places& places, const std::vector<remembered_window>& windows) {
    if (windows.empty()) return {};
    const std::string path = memory_path(places);
    property_array kept;
    for (const auto& window : windows) {
        property_dictionary one;
        one.add(root_key, window.root_id);
        write_window(window.memory, one);
        kept.emplace_back(std::move(one));
    }
    const window_memory& front = windows.front().memory;
    property_dictionary stored;
    write_window(front, stored);
    if (!front.theme.empty()) stored.add("theme", front.theme);
    if (!front.folded_vaults.empty()) {
        property_array folded;
        for (const auto& vault : front.folded_vaults) folded.emplace_back(vault);
        stored.add("folded vaults", std::move(folded));
    }
    stored.add(windows_key, std::move(kept));
    if (auto made = make_folders(path_folder(path)); !made) return made;
    return safe_write(path, stored);
}

QRect place_on_screen(QRect place, const QRect& screen) {
    place.setSize(place.size().boundedTo(screen.size()));
    const int left = std::clamp(place.left(), screen.left(), screen.right() - place.width() + 1);
    const int top = std::clamp(place.top(), screen.top(), screen.bottom() - place.height() + 1);
    place.moveTo(left, top);
    return place;
}

QRect cascaded_place(const QRect& front, const std::vector<QRect>& others, QSize least, const QRect& screen) {
    QRect place = place_on_screen(front, screen);
    const QSize smallest = least.boundedTo(place.size());
    const auto is_taken = [&](const QRect& wanted) {
        return wanted.topLeft() == front.topLeft() ||
               std::any_of(others.begin(), others.end(),
                           [&](const QRect& one) { return one.topLeft() == wanted.topLeft(); });
    };
    // Every further window may take one place, so that many steps find a free one if there is any.
    for (std::size_t tried = 0; tried <= 2 * others.size() + 1; ++tried) {
        place.translate(cascade_step, cascade_step);
        const QSize room(screen.right() - place.left() + 1, screen.bottom() - place.top() + 1);
        room.width() < smallest.width() ? place.moveLeft(screen.left())
                                        : place.setWidth(std::min(place.width(), room.width()));
        room.height() < smallest.height() ? place.moveTop(screen.top())
                                          : place.setHeight(std::min(place.height(), room.height()));
        if (!is_taken(place)) break;
    }
    return place;
}

}  // namespace vistels
