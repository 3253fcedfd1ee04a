// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// For the sources of this folder only: the packets of a movie's stream, or only those of its key frames.

#include <cstdint>
#include <limits>
#include <string>

#include "media/demultiplexer.h"

namespace vistels {

// Gives the packets of a movie as they come, or passes over all but the key frames of one stream: by the
// file's index where it has one, else by reading on. (A file's reader that is told to discard other frames
// may give the rest the times of their neighbours.) One thread at a time; `file` and `stream` outlive it.
class key_packets final : public packet_source {
  public:
    key_packets(demultiplexer& file, const AVStream& stream) : file_(file), stream_(stream) {}

    // Takes effect at the next read.
    void set_only_keys(bool only_keys) { only_keys_ = only_keys; }
    // As the file's own.
    int seek(std::int64_t stamp);

    int read(AVPacket& packet) override;
    const std::string& path() const override { return file_.path(); }

  private:
    static constexpr std::int64_t nowhere = std::numeric_limits<std::int64_t>::min();

    void go_to_next_key();
    bool is_wanted(const AVPacket& packet) const;

    demultiplexer& file_;
    const AVStream& stream_;
    bool only_keys_ = false;
    std::int64_t last_key_ = nowhere;  // when the last key packet that was given is decoded
};

}  // namespace vistels
