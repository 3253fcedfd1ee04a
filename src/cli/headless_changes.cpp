// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/headless_changes.h"

#include <algorithm>
#include <iostream>

#include "app/event/timeline_links.h"
#include "app/vaults/mending.h"
#include "cli/command_failures.h"
#include "logger/code_window_change.h"
#include "logger/logger_Dict_funcs.h"
#include "timeline/files/timeline_form.h"
#include "util/file_system.h"
#include "video/video_coll_LOAD.h"

namespace vistels {

namespace {

// The timeline itself, or what a dead program left of it.
bool has_timeline(const std::string& folder) {
    const auto names = names_in_folder(folder);
    return std::any_of(names.begin(), names.end(), [](const auto& name) {
        return name.starts_with(timeline_file_name) || name.starts_with("chron data journal");
    });
}

}  // namespace

// The lock first, so that what another program saves is not written over.
result<void> headless_changes::open(const std::string& folder, const home_places& places) {
    folder_ = folder;
    for (const auto& message : mend_event(folder, places.local_vistels()).messages)
        std::cerr << message.message() << '\n';
    blank_movie_ = std::make_unique<blank_vistel_movie>(places.temporary_folder());
    if (!has_timeline(folder)) {
        auto lock = writer_lock::take(folder, timeline_form);
        if (!lock) return lock.error();
        lock_ = std::move(lock).value();
        return load(places);
    }
    auto opened = timeline_document::open(folder, loop_);
    if (!opened) return opened.error();
    timeline_ = std::move(opened).value();
    if (timeline_->is_read_only()) return timeline_->read_only_reason();
    for (const auto& message : timeline_->messages()) std::cerr << message.message() << '\n';
    if (auto loaded = load(places); !loaded) return loaded;
    if (auto saved = save_recovered_buttons(*timeline_, loop_); !saved) return saved;
    // Saved with the next save even if there is nothing to change.
    collection_->set_keeper(*timeline_);
    collection_->take_up_recovered(timeline_->recovered_others());
    changes_ = std::make_unique<collection_changes>(*collection_, *timeline_);
    open_buttons();
    made_ = changes_->made.connect([this](double shift) {
        is_made_ = true;
        collection_->record().set_movie_time(collection_->record().movie_time() + shift);
        timeline_->header().cursor_seconds += shift;
    });
    return {};
}

// The triggers of buttons move with the clips.
void headless_changes::open_buttons() {
    const std::string logger_folder = logger_folder_of(folder_);
    if (!has_button_dict(logger_folder)) return;
    auto read = load_code_window(logger_folder);
    if (!read) {
        std::cerr << read.message() << '\n';
        return;
    }
    buttons_ = std::make_unique<code_window_document>(logger_folder, loop_);
    buttons_->take_up(std::move(read).value(), true);
    buttons_->set_keeper(*timeline_);
    changes_->set_shift_planner(
        [this](double seconds) { return plan_trigger_shift(buttons_->window(), seconds); });
}

result<void> headless_changes::load(const home_places& places) {
    auto loaded = load_collection(folder_, places.local_vistels());
    if (!loaded) return loaded.error();
    collection_ = std::make_unique<collection_document>(folder_, loop_);
    collection_->set_blank_movie(*blank_movie_);
    collection_->take_up(std::move(loaded).value());
    return {};
}

result<void> headless_changes::make(const collection_change& change) {
    if (!timeline_) return make_alone(change);
    if (auto made = changes_->make(change); !made) return made;
    if (auto saved = collection_->save_now(); !saved) return saved;
    if (buttons_) {
        if (auto saved = buttons_->save_now(); !saved) return saved;
    }
    return timeline_->save_now();
}

result<void> headless_changes::make_alone(const collection_change& change) {
    auto& collection = collection_->record();
    auto copy = detached_copy(collection);
    if (auto changed = change.change(copy); !changed) return changed;
    const double shift = shift_of(change, collection, copy);
    auto part = collection_part(collection, difference(collection, copy), difference(copy, collection));
    if (auto made = collection_->make({change.name, change.scope, {std::move(part)}}); !made) return made;
    collection.set_movie_time(collection.movie_time() + shift);
    // The collection's record is written before those of its vistels.
    const std::string record = path_join(folder_, collection_file_name);
    const auto before = read_file(record);
    auto saved = collection_->save_now();
    const auto after = read_file(record);
    is_made_ = saved || !before || !after || before.value() != after.value();
    return saved;
}

}  // namespace vistels
