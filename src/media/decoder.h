// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// For the sources of this folder only: packets of a movie file into frames.

#include <functional>

#include "media/demultiplexer.h"

namespace vistels {

// Decodes one stream, packet by packet as they are read. Packets that are broken are passed over; after many
// in a row it fails. One thread at a time; `source` outlives it.
class decoder {
  public:
    // `unreadable`: what is told when reading fails (movie_could_not_be_read).
    decoder(packet_source& source, const failure_of<a_path, a_cause>& unreadable)
        : source_(source), unreadable_(unreadable) {}

    result<void> open(const AVStream& stream, int threads);
    // Shows every packet of the source, of whichever stream, before it is decoded.
    void set_look(std::function<result<void>(AVPacket&)> look) { look_ = std::move(look); }
    // The next frame; false at the end, and where the source has no more yet.
    result<bool> next(AVFrame& frame);
    bool is_at_end() const { return is_at_end_; }
    // Goes on from where the source is after a seek.
    void restart();

    AVCodecContext& context() const { return *context_; }

  private:
    result<bool> take_packet();
    result<void> passed_over(int error);

    packet_source& source_;
    const failure_of<a_path, a_cause>& unreadable_;
    int stream_ = -1;  // its number
    ffmpeg_owner<AVCodecContext> context_;
    ffmpeg_owner<AVPacket> packet_{av_packet_alloc()};
    std::function<result<void>(AVPacket&)> look_;
    bool is_at_end_ = false;
    int failures_ = 0;  // in a row
};

}  // namespace vistels
