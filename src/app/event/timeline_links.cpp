// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/event/timeline_links.h"

#include <algorithm>

#include "app/event/collection_changes.h"
#include "app/settings/user_name.h"
#include "logger/code_window_document.h"
#include "util/file_system.h"
#include "util/property_list.h"
#include "video/blank_movie.h"
#include "video/collection_document.h"
#include "video/video_coll_LOAD.h"
#include "video/video_coll_Offsets.h"

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

double first_clip_seconds(const sxy_DATA_root& timeline) {
    double first = 0;
    for (const auto& row : timeline.rows()) {
        if (!row->clips().empty()) first = std::min(first, row->clips()[0]->secs_start());
    }
    return first;
}

double first_seconds(const timeline_document& timeline, const home_places& places) {
    double first = first_clip_seconds(timeline.timeline());
    if (!file_exists(path_join(timeline.folder(), collection_file_name))) return first;
    const auto loaded = load_collection(timeline.folder(), places.local_vistels());
    if (!loaded) return first;
    const auto vistels = loaded.value().collection.vistels();
    const auto items = offsets_of(loaded.value().collection);
    for (const auto& vistel : vistels) {
        if (vistel->is_inserted_picture()) continue;
        first = std::min(first, -lead_for_clips(items, {vistel->number(), vistel->manual_start_offset()}));
    }
    return first;
}

double seconds_recovered(const timeline_document& timeline) {
    double seconds = 0;
    for (const auto& [edit, inverse] : timeline.recovered()) seconds += seconds_shifted(edit);
    return seconds;
}

namespace {

// What the journal brought back of the collection is saved before the timeline is, whose file makes the
// journal forget it.
result<void> save_recovered_collection(timeline_document& timeline, const home_places& places,
                                       run_loop& loop) {
    blank_vistel_movie blank(places.temporary_folder());
    collection_document collection(timeline.folder(), loop);
    collection.set_blank_movie(blank);
    collection.set_keeper(timeline);
    if (file_exists(path_join(timeline.folder(), collection_file_name))) {
        auto loaded = load_collection(timeline.folder(), places.local_vistels());
        if (!loaded) return loaded.error();
        collection.take_up(std::move(loaded).value());
    }
    // The playheads stay on their frames.
    auto& record = collection.record();
    record.set_movie_time(record.movie_time() + collection_changes::seconds_not_saved(record, timeline));
    timeline.header().cursor_seconds += seconds_recovered(timeline);
    collection.take_up_recovered(timeline.recovered_others());
    return collection.save_now();
}

}  // namespace

result<void> save_recovered_buttons(timeline_document& timeline, run_loop& loop) {
    const auto& parts = timeline.recovered_others();
    const bool has_any = std::any_of(parts.begin(), parts.end(), [](const document_part& part) {
        return part.document.kind == document_kind::code_window;
    });
    if (!has_any) return {};
    code_window_document window(logger_folder_of(timeline.folder()), loop);
    if (has_button_dict(window.folder())) {
        auto loaded = load_code_window(window.folder());
        if (!loaded) return loaded.error();
        window.take_up(std::move(loaded).value(), true);
    }
    window.set_keeper(timeline);
    window.take_up_recovered(parts);
    return window.save_now();
}

result<std::unique_ptr<timeline_document>> open_linked_timeline(const std::string& folder,
                                                                const home_places& places, run_loop& loop) {
    auto opened = timeline_document::open(folder, loop);
    if (!opened) return opened;
    if (!opened.value()->is_read_only() && !opened.value()->recovered_others().empty()) {
        if (auto saved = save_recovered_buttons(*opened.value(), loop); !saved) return saved.error();
        if (auto saved = save_recovered_collection(*opened.value(), places, loop); !saved)
            return saved.error();
    }
    opened.value()->set_author(load_user_name(places));
    link_timeline(*opened.value(), links_of_folder(folder));
    return opened;
}

}  // namespace vistels
