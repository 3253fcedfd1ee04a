// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/video_filter.h"

extern "C" {
#include <libavfilter/avfilter.h>
#include <libavfilter/buffersink.h>
#include <libavfilter/buffersrc.h>
}

#include <algorithm>
#include <cstdio>

namespace vistels {

void video_filter::graph_deleter::operator()(AVFilterGraph* held) const {
    avfilter_graph_free(&held);
}

int video_filter::open(const std::string& filters, const AVFrame& like, AVRational time_base,
                       AVRational frame_rate) {
    const AVRational pixel = like.sample_aspect_ratio;
    char settings[256];
    std::snprintf(settings, sizeof settings,
                  "video_size=%dx%d:pix_fmt=%d:time_base=%d/%d:frame_rate=%d/%d:pixel_aspect=%d/%d",
                  like.width, like.height, like.format, time_base.num, time_base.den, frame_rate.num,
                  std::max(frame_rate.den, 1), pixel.num, std::max(pixel.den, 1));
    graph_.reset(avfilter_graph_alloc());
    int error = avfilter_graph_create_filter(&source_, avfilter_get_by_name("buffer"), "in", settings,
                                             nullptr, graph_.get());
    if (error >= 0) {
        error = avfilter_graph_create_filter(&sink_, avfilter_get_by_name("buffersink"), "out", nullptr,
                                             nullptr, graph_.get());
    }
    if (error < 0) return error;
    AVFilterInOut* inputs = avfilter_inout_alloc();
    AVFilterInOut* outputs = avfilter_inout_alloc();
    *outputs = {av_strdup("in"), source_, 0, nullptr};
    *inputs = {av_strdup("out"), sink_, 0, nullptr};
    error = avfilter_graph_parse_ptr(graph_.get(), filters.c_str(), &inputs, &outputs, nullptr);
    avfilter_inout_free(&inputs);
    avfilter_inout_free(&outputs);
    return error < 0 ? error : avfilter_graph_config(graph_.get(), nullptr);
}

int video_filter::add(AVFrame* frame) const {
    return av_buffersrc_add_frame(source_, frame);
}

int video_filter::next(AVFrame& frame) const {
    av_frame_unref(&frame);
    return av_buffersink_get_frame(sink_, &frame);
}

void video_filter::describe(AVCodecContext& encoder) const {
    encoder.width = av_buffersink_get_w(sink_);
    encoder.height = av_buffersink_get_h(sink_);
    encoder.pix_fmt = static_cast<AVPixelFormat>(av_buffersink_get_format(sink_));
    encoder.time_base = av_buffersink_get_time_base(sink_);
    encoder.framerate = av_buffersink_get_frame_rate(sink_);
    encoder.sample_aspect_ratio = av_buffersink_get_sample_aspect_ratio(sink_);
}

}  // namespace vistels
