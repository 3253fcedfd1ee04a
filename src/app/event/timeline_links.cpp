// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/event/timeline_links.h"

#include "app/settings/user_name.h"
#include "util/file_system.h"
#include "util/property_list.h"
#include "video/video_coll_LOAD.h"

namespace vistels {

timeline_links links_to(const video_collection_ROOT& collection) {
    return {collection.uuid(), collection.name(), static_cast<double>(collection.quick_number())};
}

timeline_links links_of_folder(const std::string& folder) {
    const std::string record = path_join(folder, collection_file_name);
    timeline_links links;
    if (file_exists(record)) links = links_to(read_collection(read_dictionary_or_empty(record)));
    if (links.name.empty()) links.name = path_name(folder);
    return links;
}

void complete_header(timeline_header& header, const std::string& timeline_uuid, const timeline_links& links) {
    if (header.uuid.empty()) header.uuid = timeline_uuid;
    if (header.linked_collection.empty()) header.linked_collection = links.collection;
    if (header.name.empty()) header.name = links.name;
}

void link_timeline(timeline_document& timeline, const timeline_links& links) {
    complete_header(timeline.header(), timeline.timeline().uuid(), links);
    timeline.set_collection_number(links.number);
}

result<std::unique_ptr<timeline_document>> open_linked_timeline(const std::string& folder,
                                                                const home_places& places, run_loop& loop) {
    auto opened = timeline_document::open(folder, loop);
    if (!opened) return opened;
    opened.value()->set_author(load_user_name(places));
    link_timeline(*opened.value(), links_of_folder(folder));
    return opened;
}

}  // namespace vistels
