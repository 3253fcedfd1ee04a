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

// Where a decoder's packets come from.
class packet_source {
  public:
    virtual ~packet_source() = default;
    // The next packet, or FFmpeg's error: AVERROR_EOF at the end, AVERROR(EAGAIN) where more is still to
    // come.
    virtual int read(AVPacket& packet) = 0;
    virtual const std::string& path() const = 0;
};

// Takes a movie file apart into the packets of its tracks. Every read gives up when it lasts longer than
// `read_limit_seconds`. One thread at a time.
class demultiplexer final : public packet_source {
  public:
    static constexpr double read_limit_seconds = 10;

    static result<std::unique_ptr<demultiplexer>> open(const std::string& path);

    AVFormatContext& format() { return *format_; }
    const movie_information& information() const { return information_; }
    // The stream shown or heard, null when there is none. Attached pictures are not movies.
    AVStream* video() const { return video_; }
    AVStream* sound() const { return sound_; }

    int read(AVPacket& packet) override;
    // The next one of a stream.
    int read(AVPacket& packet, const AVStream& stream);
    // Has the file's reader pass over what belongs to other streams, where it can.
    void read_only(const AVStream& stream);
    // To the last key frame at or before `stamp` of the stream, as far as the file's index knows.
    int seek(const AVStream& stream, std::int64_t stamp);

    const std::string& path() const override { return path_; }

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
