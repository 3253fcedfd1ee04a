// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>
#include <string>

#include "app/event/collection_changes.h"
#include "app/settings/places.h"
#include "document/writer_lock.h"
#include "logger/code_window_document.h"
#include "timeline/files/timeline_document.h"
#include "util/result.h"
#include "util/simulated_run_loop.h"
#include "video/blank_movie.h"
#include "video/collection_document.h"

namespace vistels {

// A collection that is changed without a window, together with its timeline where it has one.
class headless_changes {
  public:
    // Fails, too, when another program has the event open.
    result<void> open(const std::string& folder, const home_places& places);
    // Not to be changed but by make().
    const video_collection_ROOT& collection() const { return collection_->record(); }
    blank_vistel_movie& blank_movie() { return *blank_movie_; }
    timeline_document* timeline() { return timeline_.get(); }  // null: it has none
    // Makes the change and saves collection and timeline; the playheads move along.
    result<void> make(const collection_change& change);
    // Whether the change is on record, also when make() failed: what it needs is to stay then.
    bool is_made() const { return is_made_; }

  private:
    result<void> load(const home_places& places);
    void open_buttons();
    result<void> make_alone(const collection_change& change);

    bool is_made_ = false;
    std::string folder_;
    simulated_run_loop loop_;
    std::unique_ptr<writer_lock> lock_;                // of a collection without a timeline
    std::unique_ptr<timeline_document> timeline_;      // null: there is none
    std::unique_ptr<collection_document> collection_;  // after its keeper, as the code window
    std::unique_ptr<code_window_document> buttons_;    // null: there are none, or none that can be read
    std::unique_ptr<blank_vistel_movie> blank_movie_;
    std::unique_ptr<collection_changes> changes_;
    connection made_;
};

}  // namespace vistels
