// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// For the sources of this folder only: decoded pictures through a chain of FFmpeg's filters.

#include <memory>
#include <string>

#include "media/ffmpeg_handles.h"

struct AVFilterContext;
struct AVFilterGraph;

namespace vistels {

// One thread at a time. Calls return FFmpeg's error, 0 or more when all went well.
class video_filter {
  public:
    // `filters` as FFmpeg writes them. `like` tells the format and the size of what comes in.
    int open(const std::string& filters, const AVFrame& like, AVRational time_base, AVRational frame_rate);
    bool is_open() const { return graph_ != nullptr; }
    // Null: no more comes.
    int add(AVFrame* frame) const;
    // The next frame that comes out; AVERROR(EAGAIN) when more has to be added first, AVERROR_EOF at the end.
    int next(AVFrame& frame) const;
    // Has an encoder's settings take size, times and proportions of what comes out.
    void describe(AVCodecContext& encoder) const;

  private:
    struct graph_deleter {
        void operator()(AVFilterGraph* held) const;
    };
    std::unique_ptr<AVFilterGraph, graph_deleter> graph_;
    AVFilterContext* source_ = nullptr;  // owned by the graph
    AVFilterContext* sink_ = nullptr;    // owned by the graph
};

}  // namespace vistels
