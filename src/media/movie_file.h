// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// For the sources of this folder only: a movie file opened for reading.

#include <atomic>
#include <chrono>
#include <memory>
#include <string>

#include "media/ffmpeg_handles.h"
#include "media/movie_information.h"
#include "util/result.h"

namespace vistels {

// An open movie file. Every read gives up when it lasts longer than `read_limit_seconds`.
class movie_file {
  public:
    static constexpr double read_limit_seconds = 10;

    static result<std::unique_ptr<movie_file>> open(const std::string& path);

    AVFormatContext& format() { return *format_; }
    const movie_information& information() const { return information_; }
    // The stream shown or heard, null when there is none. Attached pictures are not movies.
    AVStream* video() const { return video_; }
    AVStream* sound() const { return sound_; }

    // The next packet, or FFmpeg's error.
    int read(AVPacket& packet);
    // To the last key frame at or before `stamp` of the stream, as far as the file's index knows.
    int seek(const AVStream& stream, std::int64_t stamp);

    // A decoder for one of the streams, on `threads` threads.
    result<ffmpeg_owner<AVCodecContext>> open_decoder(const AVStream& stream, int threads) const;

  private:
    void start_limit() { deadline_ = std::chrono::steady_clock::now() + limit_; }
    static int is_late(void* self);

    std::string path_;
    std::chrono::steady_clock::time_point deadline_;
    std::chrono::steady_clock::duration limit_{};
    ffmpeg_owner<AVFormatContext> format_;
    AVStream* video_ = nullptr;
    AVStream* sound_ = nullptr;
    movie_information information_;
};

}  // namespace vistels
