// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/headless_changes.h"

#include <algorithm>
#include <iostream>

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
    if (!has_timeline(folder)) {
        auto lock = writer_lock::take(folder);
        if (!lock) return lock.error();
        lock_ = std::move(lock).value();
        return load(places);
    }
    auto opened = timeline_document::open(folder, loop_);
    if (!opened) return opened.error();
    timeline_ = std::move(opened).value();
    if (timeline_->is_read_only()) return failure{timeline_->read_only_reason()};
    for (const auto& message : timeline_->messages()) std::cerr << message << '\n';
    if (auto loaded = load(places); !loaded) return loaded;
    collection_changes::take_up_recovered(collection_, *timeline_);
    changes_ = std::make_unique<collection_changes>(collection_, *timeline_,
                                                    [this] { return save_collection(collection_, folder_); });
    made_ = changes_->made.connect([this](double shift) {
        collection_.set_movie_time(collection_.movie_time() + shift);
        timeline_->header().cursor_seconds += shift;
    });
    return {};
}

result<void> headless_changes::load(const home_places& places) {
    auto loaded = load_collection(folder_, places.local_vistels());
    if (!loaded) return loaded.error();
    collection_ = std::move(loaded.value().collection);
    return {};
}

result<void> headless_changes::make(const collection_change& change) {
    if (!timeline_) return make_alone(change);
    if (auto made = changes_->make(change); !made) return made;
    // What opening brought back is saved even if there was nothing to change.
    if (auto saved = save_collection(collection_, folder_); !saved) return saved;
    return timeline_->save_now();
}

result<void> headless_changes::make_alone(const collection_change& change) {
    auto copy = detached_copy(collection_);
    if (auto changed = change.change(copy); !changed) return changed;
    const double shift = shift_of(change, collection_, copy);
    if (auto applied = apply_collection_edit(collection_, difference(collection_, copy)); !applied)
        return applied;
    collection_.set_movie_time(collection_.movie_time() + shift);
    return save_collection(collection_, folder_);
}

}  // namespace vistels
