// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <string>

#include "util/result.h"

namespace vistels {

// What is known of a movie file without decoding it.
struct movie_information {
    double duration = 0;         // seconds: of the pictures, or of the sound where there are none
    double duration_of_all = 0;  // ... and of the track that lasts longest; 0: the header does not say
    int tracks = 0;              // of all kinds
    bool has_video = false;
    bool has_sound = false;
    int width = 0;  // as shown: after rotation
    int height = 0;
    int rotation = 0;         // degrees clockwise by which the stored pictures are turned: 0, 90, 180 or 270
    double frame_rate = 0;    // frames a second, on average; 0: not known
    double data_rate = 0;     // bits a second of the whole file; 0: not known
    std::string video_codec;  // "h264"; empty without video
    std::string sound_codec;
    int sound_rate = 0;  // samples a second
    int sound_channels = 0;
};

// Reads a movie file's header; where that does not know the duration, the file to its end. The failure names
// the file and says why. May take as long as the volume is slow, but gives up when it does not answer for 10
// seconds. Any thread.
result<movie_information> probe_movie(const std::string& path);

}  // namespace vistels
