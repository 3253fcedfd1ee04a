// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/sound_speed.h"

extern "C" {
#include <libavfilter/avfilter.h>
#include <libavfilter/buffersink.h>
#include <libavfilter/buffersrc.h>
}

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <vector>

#include "media/ffmpeg_handles.h"
#include "media/sound_reader.h"

namespace vistels {

namespace {

// One tempo filter leaves sound out when it makes it more than twice as fast, and goes no slower than half.
constexpr double most_at_once = 2;

failure not_changed(int error) {
    return sound_speed_could_not_be_changed(movie_library_refuses(ffmpeg_error_text(error)));
}

std::string filters_for(double rate, bool keeps_pitch) {
    char text[128];
    if (!keeps_pitch) {
        std::snprintf(text, sizeof text, "asetrate=%d,aresample=%d,",
                      static_cast<int>(sound_samples_per_second * rate), sound_samples_per_second);
    } else {
        const double first = std::clamp(rate, 1 / most_at_once, most_at_once);
        std::snprintf(text, sizeof text, "atempo=%.6f,atempo=%.6f,", first, rate / first);
    }
    return std::string(text) + "aformat=sample_fmts=flt:channel_layouts=stereo";
}

}  // namespace

struct sound_speed::implementation {
    struct graph_deleter {
        void operator()(AVFilterGraph* held) const { avfilter_graph_free(&held); }
    };
    std::unique_ptr<AVFilterGraph, graph_deleter> graph{avfilter_graph_alloc()};
    AVFilterContext* source = nullptr;  // owned by the graph
    AVFilterContext* sink = nullptr;    // owned by the graph
    ffmpeg_owner<AVFrame> out{av_frame_alloc()};
    std::vector<float> ready;
    std::int64_t added = 0;

    int open(const std::string& filters);
    int fill();
};

int sound_speed::implementation::open(const std::string& filters) {
    if (!graph || !out) return AVERROR(ENOMEM);
    char settings[128];
    std::snprintf(settings, sizeof settings,
                  "time_base=1/%d:sample_rate=%d:sample_fmt=flt:channel_layout=stereo",
                  sound_samples_per_second, sound_samples_per_second);
    int error = avfilter_graph_create_filter(&source, avfilter_get_by_name("abuffer"), "in", settings,
                                             nullptr, graph.get());
    if (error >= 0) {
        error = avfilter_graph_create_filter(&sink, avfilter_get_by_name("abuffersink"), "out", nullptr,
                                             nullptr, graph.get());
    }
    if (error < 0) return error;
    AVFilterInOut* inputs = avfilter_inout_alloc();
    AVFilterInOut* outputs = avfilter_inout_alloc();
    *outputs = {av_strdup("in"), source, 0, nullptr};
    *inputs = {av_strdup("out"), sink, 0, nullptr};
    error = avfilter_graph_parse_ptr(graph.get(), filters.c_str(), &inputs, &outputs, nullptr);
    avfilter_inout_free(&inputs);
    avfilter_inout_free(&outputs);
    return error < 0 ? error : avfilter_graph_config(graph.get(), nullptr);
}

// Takes over what the filters have made.
int sound_speed::implementation::fill() {
    for (;;) {
        const int error = av_buffersink_get_frame(sink, out.get());
        if (error == AVERROR(EAGAIN) || error == AVERROR_EOF) return 0;
        if (error < 0) return error;
        const auto* samples = reinterpret_cast<const float*>(out->data[0]);
        ready.insert(ready.end(), samples,
                     samples + static_cast<std::ptrdiff_t>(out->nb_samples) * sound_channels);
        av_frame_unref(out.get());
    }
}

sound_speed::sound_speed(std::unique_ptr<implementation> made) : its_(std::move(made)) {}
sound_speed::~sound_speed() = default;

result<std::unique_ptr<sound_speed>> sound_speed::open(double rate, bool keeps_pitch) {
    silence_ffmpeg();
    auto made = std::make_unique<implementation>();
    const double bounded = std::clamp(rate, slowest_rate, fastest_rate);
    if (const int error = made->open(filters_for(bounded, keeps_pitch)); error < 0) return not_changed(error);
    return std::unique_ptr<sound_speed>(new sound_speed(std::move(made)));
}

result<void> sound_speed::add(const float* interleaved, std::size_t frames) {
    implementation& its = *its_;
    const ffmpeg_owner<AVFrame> in(av_frame_alloc());
    if (!in) return not_changed(AVERROR(ENOMEM));
    in->format = AV_SAMPLE_FMT_FLT;
    in->sample_rate = sound_samples_per_second;
    in->nb_samples = static_cast<int>(frames);
    in->pts = its.added;
    av_channel_layout_default(&in->ch_layout, sound_channels);
    int error = av_frame_get_buffer(in.get(), 0);
    if (error >= 0) {
        std::memcpy(in->data[0], interleaved, frames * sound_channels * sizeof(float));
        its.added += static_cast<std::int64_t>(frames);
        error = av_buffersrc_add_frame(its.source, in.get());
    }
    if (error >= 0) error = its.fill();
    return error < 0 ? result<void>(not_changed(error)) : result<void>();
}

std::size_t sound_speed::take(float* interleaved, std::size_t frames) {
    std::vector<float>& ready = its_->ready;
    const std::size_t taken = std::min(frames, ready.size() / sound_channels);
    const auto end = ready.begin() + static_cast<std::ptrdiff_t>(taken * sound_channels);
    std::copy(ready.begin(), end, interleaved);
    ready.erase(ready.begin(), end);
    return taken;
}

}  // namespace vistels
