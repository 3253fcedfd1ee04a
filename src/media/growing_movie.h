// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>
#include <string>

#include "media/picture.h"
#include "util/result.h"

namespace vistels {

// Reads the pictures of an MP4 or MOV movie in fragments, one after the other, while it is still being
// written. What is there of a fragment that is not whole yet is left alone. One thread at a time; nothing
// waits for the writer.
class growing_movie {
  public:
    // Fails as long as the file's head and a first fragment are not there, and when it is no such movie.
    static result<std::unique_ptr<growing_movie>> open(const std::string& path);
    ~growing_movie();
    growing_movie(const growing_movie&) = delete;
    growing_movie& operator=(const growing_movie&) = delete;

    // The next picture, scaled to that size (0, 0: its own), its time counted from the movie's first; null:
    // not yet. The decoder may hold the last few pictures back until more is written. `until` is not known
    // and stays 0.
    result<picture_pointer> next(int width, int height);

  private:
    struct implementation;
    explicit growing_movie(std::unique_ptr<implementation> made);
    std::unique_ptr<implementation> its_;
};

}  // namespace vistels
