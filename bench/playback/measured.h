// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdio>
#include <filesystem>
#include <string>

#include "playback/movies.h"
#include "playback/played_event.h"

// What the parts of the benchmark share: where movies are, how long a part may last, and what came of it.
namespace vistels::bench {

class measured {
  public:
    measured(std::filesystem::path folder, std::string collection, bool is_quick)
        : is_short(is_quick), folder_(std::move(folder)), collection_(std::move(collection)) {
        std::filesystem::create_directories(folder_);
    }

    const bool is_short;

    // The demo event's vistels, which have leads, and a gap.
    std::vector<camera> demo_cameras() {
        if (collection_.empty())
            collection_ = make_demo_movies(folder_ / "demo", is_short ? 2 : 30, is_short ? 2 : 4);
        return cameras_of_collection(collection_);
    }
    // Vistels without leads, of the same kind of movie as the demo's, a little over a minute long.
    std::vector<camera> plain_cameras(int count) { return cameras_of_movie(plain_movie(), count, 30); }
    std::string plain_movie() { return movie({1280, 720, 30, 60, 65, 4'000'000}); }
    std::vector<camera> cameras_of(const movie_kind& kind, int count) {
        return cameras_of_movie(movie(kind), count, kind.frame_rate);
    }
    // The same so many times after itself.
    std::vector<camera> long_cameras(const movie_kind& kind, int count, int times) {
        const std::string from = movie(kind);
        return unknown_cameras(join_many_times(from, from + " joined.mp4", is_short ? 2 : times), count);
    }
    std::filesystem::path folder() const { return folder_; }

    // Of a figure that has a target.
    void expect(bool met) { all_met_ = all_met_ && met; }
    bool all_met() const { return all_met_; }
    // Frames other than those that were asked for were shown at rest.
    void expect_found(bool found) { all_found_ = all_found_ && found; }
    bool all_found() const { return all_found_; }

  private:
    std::string movie(movie_kind kind) {
        if (is_short) {
            kind.seconds = 2;
            kind.width /= 4;
            kind.height /= 4;
        }
        return make_movie(folder_, kind);
    }

    const std::filesystem::path folder_;
    std::string collection_;
    bool all_met_ = true;
    bool all_found_ = true;
};

inline const char* missed(bool met) {
    return met ? "" : "  MISSED";
}

}  // namespace vistels::bench
