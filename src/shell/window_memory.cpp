// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/window_memory.h"

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

int small_number(const property_dictionary& stored, const char* key) {
    return static_cast<int>(std::clamp<std::int64_t>(stored.integer(key).value_or(0), 0, 100000));
}

}  // namespace

window_memory load_window_memory(const home_places& places) {
    const property_dictionary stored = read_dictionary_or_empty(memory_path(places));
    window_memory memory;
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
    memory.tab = small_number(stored, "tab");
    memory.theme = stored.text_or_empty("theme");
    if (const auto* folded = stored.array("folded vaults")) {
        for (const auto& one : *folded) {
            if (one.text()) memory.folded_vaults.push_back(*one.text());
        }
    }
    if (const auto* sizes = stored.dictionary("pane sizes")) memory.work_sizes = *sizes;
    return memory;
}

result<void> save_window_memory(const home_places& places, const window_memory& memory) {
    property_dictionary stored;
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
    stored.add("tab", memory.tab);
    if (!memory.theme.empty()) stored.add("theme", memory.theme);
    if (!memory.folded_vaults.empty()) {
        property_array folded;
        for (const auto& path : memory.folded_vaults) folded.emplace_back(path);
        stored.add("folded vaults", std::move(folded));
    }
    if (!memory.work_sizes.empty()) stored.add("pane sizes", memory.work_sizes);
    const std::string path = memory_path(places);
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

}  // namespace vistels
