// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "app/settings/places.h"
#include "document/document_edit.h"
#include "document/file_content_mark.h"
#include "util/property_value.h"
#include "util/result.h"

namespace vistels {

// What takes one step back, as the parts of one edit. Copies share the parts.
struct undo_step {
    std::string name;
    std::string scope;
    std::shared_ptr<const std::vector<document_part>> parts;
    double seconds = 0;  // on the run loop's clock, of its last edit; not stored
    bool may_merge = false;
};

// The steps of one document, and of those on record with it, in one state of it. Unchanging once taken, so
// any thread may write it.
struct undo_history {
    std::vector<undo_step> undo;
    std::vector<undo_step> redo;
    // What takes back what was made for things that still grow (the rows of clips), by the place: see
    // editable_document::growing_things.
    std::map<std::string, std::vector<document_part>> prepared;
    bool lacks_older = false;  // there were steps before those in `undo`
};

property_dictionary write_undo_history(const undo_history& history);
// A step that cannot be read ends its list: what lies before it is not to be taken back without it.
undo_history read_undo_history(const property_dictionary& stored);

// Keeps the history for the timeline file with the content `mark`, in "Undo/TIMELINE/" of the state folder,
// beside that for the content `earlier`, so that one fits whichever of the two stands there after a kill.
// Histories of other contents are deleted, and those of timelines not used for long. Any thread.
result<void> save_undo_history(const home_places& places, const std::string& timeline,
                               const file_content_mark& mark, const file_content_mark& earlier,
                               const undo_history& history);
// The history kept for this content of the timeline's file; an empty one when there is none. Any thread.
undo_history load_undo_history(const home_places& places, const std::string& timeline,
                               const file_content_mark& mark);

}  // namespace vistels
