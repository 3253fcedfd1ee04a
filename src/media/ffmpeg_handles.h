// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// For the sources of this folder only: owners of FFmpeg's objects, and its errors as text.

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/display.h>
#include <libavutil/imgutils.h>
#include <libavutil/opt.h>
#include <libswresample/swresample.h>
#include <libswscale/swscale.h>
}

#include <memory>
#include <string>

#include "media/movie_failures.h"
#include "util/result.h"

namespace vistels {

struct ffmpeg_deleter {
    void operator()(AVCodecContext* held) const { avcodec_free_context(&held); }
    void operator()(AVFrame* held) const { av_frame_free(&held); }
    void operator()(AVPacket* held) const { av_packet_free(&held); }
    void operator()(SwsContext* held) const { sws_freeContext(held); }
    void operator()(SwrContext* held) const { swr_free(&held); }
    void operator()(AVFormatContext* held) const { avformat_close_input(&held); }
};
template <class Object>
using ffmpeg_owner = std::unique_ptr<Object, ffmpeg_deleter>;

// Keeps FFmpeg from writing to the program's standard error. Any thread.
void silence_ffmpeg();

std::string ffmpeg_error_text(int error);

// Of that kind, with the library's reason.
failure ffmpeg_failure(const failure_of<a_path, a_cause>& kind, const std::string& path, int error);

inline double seconds_of(AVRational base) {
    return base.den == 0 ? 0 : static_cast<double>(base.num) / static_cast<double>(base.den);
}

}  // namespace vistels
