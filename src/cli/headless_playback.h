// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "app/settings/places.h"
#include "media/picture.h"
#include "util/job.h"
#include "util/plain_run_loop.h"
#include "util/result.h"
#include "video/synchronised_playback.h"
#include "video/video_collection_ROOT.h"

namespace vistels {

// A collection played without a window and without sound. Nothing is written. Main thread.
class headless_playback {
  public:
    // `work` ends every wait when it is cancelled; it must outlive this.
    explicit headless_playback(job& work) : work_(work), playback_(loop_) {}

    // With `vistel` (a UUID or number) that one alone, else all. A collection none of whose vistels can be
    // shown is an error.
    result<void> open(const std::string& folder, const home_places& places, const std::string& vistel);

    const std::vector<playback_vistel>& vistels() const { return played_; }
    synchronised_playback& playback() { return playback_; }
    double clock_seconds() const { return loop_.time().seconds(); }

    // The size of every vistel's pictures; without it they have the movies' own.
    void set_view_sizes(int width, int height);

    // Waits until every vistel shows its frame at that time, or cannot.
    result<void> seek(double collection_seconds);
    // Runs until `done` is true or the seconds have passed.
    void run(double seconds, const std::function<bool()>& done);

    // The time of the frame that a vistel shows on its own time line; nothing when it shows none.
    std::optional<double> frame_time(const std::string& vistel) const;
    failure problem(const std::string& vistel) const;

    // What is shown, each vistel in its frame of the layout with its proportions kept, on black. A single
    // vistel fills the picture.
    result<picture> compose();

  private:
    struct size_in_pixels {
        int width = 0;
        int height = 0;
    };

    result<void> seek_in(const std::map<std::string, size_in_pixels>& sizes);
    rectangle frame_of(const std::string& vistel) const;

    job& work_;
    plain_run_loop loop_;
    synchronised_playback playback_;
    std::string folder_;
    video_collection_ROOT collection_;
    std::vector<playback_vistel> played_;
};

}  // namespace vistels
