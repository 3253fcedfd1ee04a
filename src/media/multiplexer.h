// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// For the sources of this folder only: a movie file that is written.

#include <memory>
#include <string>

#include "media/ffmpeg_handles.h"
#include "util/result.h"

namespace vistels {

// Puts coded packets into a movie file. What is destroyed without finish() having succeeded removes the file.
// One thread at a time.
class multiplexer {
  public:
    // The file comes to be at begin(). `container` is a name whose ending says of which kind it is.
    static result<std::unique_ptr<multiplexer>> create(const std::string& path, const std::string& container);
    ~multiplexer();
    multiplexer(const multiplexer&) = delete;
    multiplexer& operator=(const multiplexer&) = delete;

    // Tracks, before begin(): of what an encoder makes, or of packets that are coded like those of a stream.
    // They belong to this.
    result<AVStream*> add_track(const AVCodecContext& encoder);
    result<AVStream*> add_track(const AVStream& like, AVRational time_base);
    // Degrees clockwise by which players turn the picture.
    result<void> set_rotation(AVStream& track, int degrees);
    bool has_global_headers() const { return (format_->oformat->flags & AVFMT_GLOBALHEADER) != 0; }

    // `flags`: of the container ("+faststart").
    result<void> begin(const char* flags = nullptr);
    bool has_begun() const { return has_begun_; }
    // The packet's times count in `time_base`; it is empty afterwards.
    result<void> write(AVPacket& packet, const AVStream& track, AVRational time_base);
    // Closes the file.
    result<void> finish();

    failure failed(int error) const { return ffmpeg_failure(movie_could_not_be_written, path_, error); }

  private:
    multiplexer(std::string path, AVFormatContext& format) : path_(std::move(path)), format_(&format) {}
    result<AVStream*> add_track();

    const std::string path_;
    AVFormatContext* const format_;
    bool has_begun_ = false;
    bool is_finished_ = false;
};

}  // namespace vistels
