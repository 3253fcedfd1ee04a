// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>
#include <string>

#include "app/settings/places.h"
#include "timeline/files/timeline_document.h"
#include "util/result.h"
#include "util/run_loop.h"

namespace vistels {

class video_collection_ROOT;

// What a timeline keeps of the collection that it belongs to.
struct timeline_links {
    std::string collection;  // its UUID; empty: none
    std::string name;        // the collection's, else that of the folder
    double number = 0;       // the collection's, see timeline_document::set_collection_number
};

timeline_links links_to(const video_collection_ROOT& collection);
// Of the timeline in `folder`: to the collection whose record lies there, if one does. Any thread.
timeline_links links_of_folder(const std::string& folder);

// Gives a header what it lacks: the timeline's UUID as its own, the collection's, and a name.
void complete_header(timeline_header& header, const std::string& timeline_uuid, const timeline_links& links);
// The same for an open timeline, whose clips get the collection's number from now on.
void link_timeline(timeline_document& timeline, const timeline_links& links);

// When the first clip starts, at most 0.
double first_clip_seconds(const sxy_DATA_root& timeline);
// From when on there is anything to be seen, for presses without a window: the start of the earliest camera
// of the collection whose record lies beside the timeline, of the first clip, or 0.
double first_seconds(const timeline_document& timeline, const home_places& places);

// By how many seconds all that the journal brought back moved the timeline's times.
double seconds_recovered(const timeline_document& timeline);

// What the journal brought back of the code window that lies beside the timeline is saved before the timeline
// is, whose file makes the journal forget it.
result<void> save_recovered_buttons(timeline_document& timeline, run_loop& loop);

// Opens the timeline in `folder` (made when missing) to be changed without a window: edits go on record under
// the user's name, and header and clips get what they get in a window. What the journal brings back of the
// collection and of the code window is made and saved first.
result<std::unique_ptr<timeline_document>> open_linked_timeline(const std::string& folder,
                                                                const home_places& places, run_loop& loop);

}  // namespace vistels
