// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/deinterlace.h"

extern "C" {
#include <libavfilter/avfilter.h>
#include <libavfilter/buffersink.h>
#include <libavfilter/buffersrc.h>
}

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <memory>
#include <utility>
#include <vector>

#include "media/ffmpeg_handles.h"
#include "media/movie_file.h"

namespace vistels {

namespace {

constexpr const char* filters = "bwdif=mode=send_field:parity=auto:deint=all,format=yuv420p";
constexpr const char* quality = "18";  // x264's constant rate factor: no loss that is seen
constexpr const char* preset = "veryfast";
constexpr int unlimited_threads = 0;

struct graph_deleter {
    void operator()(AVFilterGraph* held) const { avfilter_graph_free(&held); }
};

// One movie being written anew, from opening to the trailer.
class deinterlacing {
  public:
    deinterlacing(std::string from, std::string to, std::string container)
        : from_(std::move(from)), to_(std::move(to)), container_(std::move(container)) {}
    ~deinterlacing() {
        if (file_ == nullptr) return;
        if (file_->pb != nullptr) avio_closep(&file_->pb);
        avformat_free_context(file_);
        if (made_ && !finished_) std::remove(to_.c_str());
    }
    deinterlacing(const deinterlacing&) = delete;
    deinterlacing& operator=(const deinterlacing&) = delete;

    result<void> run(job& work);

  private:
    result<void> open();
    result<void> open_filters(const AVFrame& first);
    result<void> open_encoder(const AVFrame& first);
    result<void> open_file();
    result<void> take_packet();
    result<void> take_decoded();
    result<void> take_filtered();
    result<void> encode(const AVFrame* frame);
    result<void> copy_sound();
    result<void> finish();
    failure cannot_read(int error) const { return ffmpeg_failure("Could not read the movie", from_, error); }
    failure cannot_write(int error) const { return ffmpeg_failure("Could not write the movie", to_, error); }

    const std::string from_;
    const std::string to_;
    const std::string container_;
    std::unique_ptr<movie_file> movie_;
    ffmpeg_owner<AVCodecContext> decoder_;
    std::unique_ptr<AVFilterGraph, graph_deleter> graph_;
    AVFilterContext* source_ = nullptr;  // owned by the graph
    AVFilterContext* sink_ = nullptr;    // owned by the graph
    ffmpeg_owner<AVCodecContext> encoder_;
    AVFormatContext* file_ = nullptr;
    AVStream* pictures_ = nullptr;  // owned by the file
    AVStream* sound_ = nullptr;     // owned by the file; null without sound
    ffmpeg_owner<AVPacket> packet_{av_packet_alloc()};
    ffmpeg_owner<AVPacket> written_{av_packet_alloc()};
    ffmpeg_owner<AVFrame> frame_{av_frame_alloc()};
    ffmpeg_owner<AVFrame> filtered_{av_frame_alloc()};
    std::vector<ffmpeg_owner<AVPacket>> early_sound_;  // read before the file was open
    bool made_ = false;
    bool finished_ = false;
};

result<void> deinterlacing::open() {
    auto opened = movie_file::open(from_);
    if (!opened) return opened.error();
    movie_ = std::move(opened).value();
    if (movie_->video() == nullptr) return failure{"The movie “" + from_ + "” holds no pictures"};
    auto decoder = movie_->open_decoder(*movie_->video(), unlimited_threads);
    if (!decoder) return decoder.error();
    decoder_ = std::move(decoder).value();
    return {};
}

// What is not known before the first picture: its format and colours.
result<void> deinterlacing::open_filters(const AVFrame& first) {
    const AVRational base = movie_->video()->time_base;
    const AVRational rate = av_guess_frame_rate(&movie_->format(), movie_->video(), nullptr);
    const AVRational pixel = first.sample_aspect_ratio;
    char settings[256];
    std::snprintf(settings, sizeof settings,
                  "video_size=%dx%d:pix_fmt=%d:time_base=%d/%d:frame_rate=%d/%d:pixel_aspect=%d/%d",
                  first.width, first.height, first.format, base.num, base.den, rate.num,
                  std::max(rate.den, 1), pixel.num, std::max(pixel.den, 1));
    graph_.reset(avfilter_graph_alloc());
    int error = avfilter_graph_create_filter(&source_, avfilter_get_by_name("buffer"), "in", settings,
                                             nullptr, graph_.get());
    if (error >= 0) {
        error = avfilter_graph_create_filter(&sink_, avfilter_get_by_name("buffersink"), "out", nullptr,
                                             nullptr, graph_.get());
    }
    if (error < 0) return cannot_read(error);
    AVFilterInOut* inputs = avfilter_inout_alloc();
    AVFilterInOut* outputs = avfilter_inout_alloc();
    *outputs = {av_strdup("in"), source_, 0, nullptr};
    *inputs = {av_strdup("out"), sink_, 0, nullptr};
    error = avfilter_graph_parse_ptr(graph_.get(), filters, &inputs, &outputs, nullptr);
    avfilter_inout_free(&inputs);
    avfilter_inout_free(&outputs);
    if (error >= 0) error = avfilter_graph_config(graph_.get(), nullptr);
    return error < 0 ? result<void>(cannot_read(error)) : result<void>();
}

result<void> deinterlacing::open_encoder(const AVFrame& first) {
    const AVCodec* codec = avcodec_find_encoder_by_name("libx264");
    if (codec == nullptr) return cannot_write(AVERROR_ENCODER_NOT_FOUND);
    encoder_.reset(avcodec_alloc_context3(codec));
    encoder_->width = av_buffersink_get_w(sink_);
    encoder_->height = av_buffersink_get_h(sink_);
    encoder_->pix_fmt = AV_PIX_FMT_YUV420P;
    encoder_->time_base = av_buffersink_get_time_base(sink_);
    encoder_->framerate = av_buffersink_get_frame_rate(sink_);
    // A key frame a second: what lies before it has to be decoded whenever somebody goes there.
    const double rate = av_q2d(encoder_->framerate);
    if (rate >= 1) encoder_->gop_size = static_cast<int>(std::lround(rate));
    encoder_->sample_aspect_ratio = av_buffersink_get_sample_aspect_ratio(sink_);
    encoder_->color_range = first.color_range;
    encoder_->colorspace = first.colorspace;
    encoder_->color_primaries = first.color_primaries;
    encoder_->color_trc = first.color_trc;
    if ((file_->oformat->flags & AVFMT_GLOBALHEADER) != 0) encoder_->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    AVDictionary* options = nullptr;
    av_dict_set(&options, "preset", preset, 0);
    av_dict_set(&options, "crf", quality, 0);
    const int error = avcodec_open2(encoder_.get(), codec, &options);
    av_dict_free(&options);
    return error < 0 ? result<void>(cannot_write(error)) : result<void>();
}

result<void> deinterlacing::open_file() {
    pictures_ = avformat_new_stream(file_, nullptr);
    if (pictures_ == nullptr) return cannot_write(AVERROR(ENOMEM));
    pictures_->time_base = encoder_->time_base;
    pictures_->avg_frame_rate = encoder_->framerate;
    pictures_->sample_aspect_ratio = encoder_->sample_aspect_ratio;
    int error = avcodec_parameters_from_context(pictures_->codecpar, encoder_.get());
    if (error >= 0 && movie_->information().rotation != 0) {
        auto* matrix = reinterpret_cast<std::int32_t*>(
            av_stream_new_side_data(pictures_, AV_PKT_DATA_DISPLAYMATRIX, 9 * sizeof(std::int32_t)));
        if (matrix == nullptr) return cannot_write(AVERROR(ENOMEM));
        av_display_rotation_set(matrix, movie_->information().rotation);
    }
    if (error >= 0 && movie_->sound() != nullptr) {
        sound_ = avformat_new_stream(file_, nullptr);
        if (sound_ == nullptr) return cannot_write(AVERROR(ENOMEM));
        error = avcodec_parameters_copy(sound_->codecpar, movie_->sound()->codecpar);
        sound_->codecpar->codec_tag = 0;  // that of the other container
        sound_->time_base = movie_->sound()->time_base;
    }
    if (error >= 0) error = avio_open(&file_->pb, ("file:" + to_).c_str(), AVIO_FLAG_WRITE);
    if (error < 0) return cannot_write(error);
    made_ = true;
    error = avformat_write_header(file_, nullptr);
    return error < 0 ? result<void>(cannot_write(error)) : result<void>();
}

// `frame` null: what the encoder still holds.
result<void> deinterlacing::encode(const AVFrame* frame) {
    int error = avcodec_send_frame(encoder_.get(), frame);
    if (error < 0) return cannot_write(error);
    for (;;) {
        error = avcodec_receive_packet(encoder_.get(), written_.get());
        if (error == AVERROR(EAGAIN) || error == AVERROR_EOF) return {};
        if (error < 0) return cannot_write(error);
        written_->stream_index = pictures_->index;
        written_->duration = av_rescale_q(1, av_inv_q(encoder_->framerate), encoder_->time_base);
        av_packet_rescale_ts(written_.get(), encoder_->time_base, pictures_->time_base);
        error = av_interleaved_write_frame(file_, written_.get());
        if (error < 0) return cannot_write(error);
    }
}

result<void> deinterlacing::take_filtered() {
    for (;;) {
        av_frame_unref(filtered_.get());
        const int error = av_buffersink_get_frame(sink_, filtered_.get());
        if (error == AVERROR(EAGAIN) || error == AVERROR_EOF) return {};
        if (error < 0) return cannot_read(error);
        filtered_->pict_type = AV_PICTURE_TYPE_NONE;  // the encoder chooses its key frames
        filtered_->interlaced_frame = 0;
        if (auto encoded = encode(filtered_.get()); !encoded) return encoded;
    }
}

result<void> deinterlacing::take_decoded() {
    for (;;) {
        const int error = avcodec_receive_frame(decoder_.get(), frame_.get());
        if (error == AVERROR(EAGAIN) || error == AVERROR_EOF) return {};
        if (error < 0) return cannot_read(error);
        frame_->pts = frame_->best_effort_timestamp;
        if (!graph_) {
            if (auto opened = open_filters(*frame_); !opened) return opened;
            if (auto opened = open_encoder(*frame_); !opened) return opened;
            if (auto opened = open_file(); !opened) return opened;
        }
        const int added = av_buffersrc_add_frame(source_, frame_.get());
        if (added < 0) return cannot_read(added);
        if (auto taken = take_filtered(); !taken) return taken;
    }
}

result<void> deinterlacing::copy_sound() {
    ffmpeg_owner<AVPacket> kept(av_packet_alloc());
    av_packet_move_ref(kept.get(), packet_.get());
    early_sound_.push_back(std::move(kept));
    if (!made_) return {};
    for (const auto& sound : early_sound_) {
        sound->stream_index = sound_->index;
        av_packet_rescale_ts(sound.get(), movie_->sound()->time_base, sound_->time_base);
        sound->pos = -1;
        if (const int error = av_interleaved_write_frame(file_, sound.get()); error < 0) {
            return cannot_write(error);
        }
    }
    early_sound_.clear();
    return {};
}

result<void> deinterlacing::take_packet() {
    if (movie_->sound() != nullptr && packet_->stream_index == movie_->sound()->index) return copy_sound();
    if (packet_->stream_index != movie_->video()->index) return {};
    const int error = avcodec_send_packet(decoder_.get(), packet_.get());
    // A broken packet loses its picture, not the movie.
    if (error < 0 && error != AVERROR_INVALIDDATA) return cannot_read(error);
    return take_decoded();
}

result<void> deinterlacing::finish() {
    avcodec_send_packet(decoder_.get(), nullptr);
    if (auto taken = take_decoded(); !taken) return taken;
    if (!graph_) return failure{"The movie “" + from_ + "” holds no picture that can be decoded"};
    if (const int error = av_buffersrc_add_frame(source_, nullptr); error < 0) return cannot_read(error);
    if (auto taken = take_filtered(); !taken) return taken;
    if (auto encoded = encode(nullptr); !encoded) return encoded;
    int error = av_write_trailer(file_);
    if (error >= 0) error = avio_closep(&file_->pb);
    if (error < 0) return cannot_write(error);
    finished_ = true;
    return {};
}

result<void> deinterlacing::run(job& work) {
    if (auto opened = open(); !opened) return opened;
    if (const int error = avformat_alloc_output_context2(&file_, nullptr, nullptr, container_.c_str());
        error < 0) {
        return cannot_write(error);
    }
    const double duration = movie_->information().duration;
    const AVStream& video = *movie_->video();
    for (;;) {
        if (work.is_cancelled()) return failure{"Deinterlacing “" + from_ + "” was cancelled"};
        av_packet_unref(packet_.get());
        const int error = movie_->read(*packet_);
        if (error == AVERROR_EOF) break;
        if (error == AVERROR_INVALIDDATA) continue;
        if (error < 0) return cannot_read(error);
        if (packet_->stream_index == video.index && packet_->pts != AV_NOPTS_VALUE && duration > 0) {
            const std::int64_t first = video.start_time == AV_NOPTS_VALUE ? 0 : video.start_time;
            const double done = static_cast<double>(packet_->pts - first) * seconds_of(video.time_base);
            work.set_progress(std::clamp(done / duration, 0.0, 1.0));
        }
        if (auto taken = take_packet(); !taken) return taken;
    }
    return finish();
}

}  // namespace

result<void> deinterlace_movie(const std::string& from, const std::string& to, const std::string& container,
                               job& work) {
    silence_ffmpeg();
    return deinterlacing(from, to, container).run(work);
}

}  // namespace vistels
