// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/start/last_focus.h"

#include "app/settings/settings_file.h"
#include "app/start/run_record.h"
#include "timeline/files/chron_header.h"
#include "util/file_system.h"
#include "util/property_list.h"
#include "video/video_coll_LOAD.h"

namespace vistels {

namespace {

// Of the collection in the folder, or else of the timeline.
std::string uuid_in(const std::string& folder) {
    const auto collection = read_dictionary_or_empty(path_join(folder, collection_file_name));
    const std::string uuid = collection.text_or_empty("UUID video group");
    return uuid.empty() ? load_timeline_header(folder).uuid : uuid;
}

}  // namespace

result<void> note_focus(const home_places& places, const std::string& uuid) {
    property_dictionary stored;
    stored.add(last_focus_key, uuid);
    return write_settings(places, correctly_terminated_file, stored);
}

std::string folder_of_last_focus(const std::string& uuid, const std::vector<open_window>& windows,
                                 const std::vector<vault_tree>& vaults) {
    if (uuid.empty()) return {};
    for (const auto& window : windows) {
        if (uuid_in(window.open_from_path) == uuid) return window.open_from_path;
    }
    if (!windows.empty()) return {};
    for (const auto& vault : vaults) {
        for (const auto& item : vault.content().items) {
            const bool is_event = item.kind == item_kind::collection || item.kind == item_kind::timeline;
            if (is_event && uuid_in(item.full_file_path) == uuid) return item.full_file_path;
        }
    }
    return {};
}

}  // namespace vistels
