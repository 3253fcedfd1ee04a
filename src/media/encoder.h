// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// For the sources of this folder only: frames into packets of a movie file.

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "media/multiplexer.h"

namespace vistels {

// Codes the frames of one track of a movie file. One thread at a time; `file` outlives it.
class encoder {
  public:
    explicit encoder(multiplexer& file) : file_(file) {}

    // Finds the coder; what settings() says is to be filled in before open(), which adds the track.
    result<void> find(const char* name);
    AVCodecContext& settings() { return *context_; }
    result<void> open(const std::vector<std::pair<std::string, std::string>>& options);
    bool is_open() const { return track_ != nullptr; }

    AVStream& track() { return *track_; }
    // A frame whose samples may be set, with memory as the coder takes it.
    result<AVFrame*> writable_frame();
    // Codes a frame and writes the packets that come; null: those that the coder still holds.
    result<void> encode(const AVFrame* frame);
    // How long each picture lasts that the coder says nothing of, in ticks of its time base.
    void set_packet_ticks(std::int64_t ticks) { packet_ticks_ = ticks; }

  private:
    multiplexer& file_;
    ffmpeg_owner<AVCodecContext> context_;
    ffmpeg_owner<AVFrame> frame_;
    ffmpeg_owner<AVPacket> packet_{av_packet_alloc()};
    AVStream* track_ = nullptr;  // owned by the file
    std::int64_t packet_ticks_ = 0;
};

}  // namespace vistels
