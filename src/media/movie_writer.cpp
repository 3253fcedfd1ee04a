// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/movie_writer.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <vector>

#include "media/ffmpeg_handles.h"
#include "media/limited_yuv.h"

namespace vistels {

namespace {

constexpr int variable_rate_ticks_per_second = 90000;

struct track {
    ffmpeg_owner<AVCodecContext> encoder;
    ffmpeg_owner<AVFrame> frame;
    AVStream* stream = nullptr;  // owned by the file
    std::int64_t next_stamp = 0;
};

}  // namespace

struct movie_writer::implementation {
    std::string path;
    movie_writer_settings settings;
    AVFormatContext* file = nullptr;
    track pictures;
    track sound;
    ffmpeg_owner<AVPacket> packet{av_packet_alloc()};
    std::vector<float> waiting_sound;  // interleaved, less than one encoder frame
    bool file_made = false;
    bool finished = false;

    ~implementation();
    result<void> open();
    result<void> open_pictures();
    result<void> open_sound();
    result<void> open_encoder(track& made, const AVCodec* codec, AVDictionary** options);
    result<void> encode(track& to, const AVFrame* frame);
    result<void> encode_sound(const float* interleaved, int frames);
    result<void> add_picture(const std::uint8_t* bgra, int stride, std::int64_t stamp);
    failure failed(int error) const { return ffmpeg_failure("Could not write the movie", path, error); }
};

movie_writer::implementation::~implementation() {
    if (file == nullptr) return;
    if (file->pb != nullptr) avio_closep(&file->pb);
    avformat_free_context(file);
    if (file_made && !finished) std::remove(path.c_str());
}

result<void> movie_writer::implementation::open_encoder(track& made, const AVCodec* codec,
                                                        AVDictionary** options) {
    if ((file->oformat->flags & AVFMT_GLOBALHEADER) != 0) {
        made.encoder->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    }
    if (const int error = avcodec_open2(made.encoder.get(), codec, options); error < 0) return failed(error);
    made.stream = avformat_new_stream(file, nullptr);
    if (made.stream == nullptr) return failed(AVERROR(ENOMEM));
    made.stream->time_base = made.encoder->time_base;
    if (const int error = avcodec_parameters_from_context(made.stream->codecpar, made.encoder.get());
        error < 0) {
        return failed(error);
    }
    made.frame.reset(av_frame_alloc());
    return {};
}

result<void> movie_writer::implementation::open_pictures() {
    const AVCodec* codec = avcodec_find_encoder_by_name("libx264");
    if (codec == nullptr) return failed(AVERROR_ENCODER_NOT_FOUND);
    pictures.encoder.reset(avcodec_alloc_context3(codec));
    AVCodecContext& encoder = *pictures.encoder;
    encoder.width = settings.width;
    encoder.height = settings.height;
    encoder.pix_fmt = AV_PIX_FMT_YUV420P;
    // Fine enough for add_picture_at(); ticks of a whole frame rate fall on it exactly.
    encoder.time_base = {1, variable_rate_ticks_per_second};
    encoder.framerate = {settings.frame_rate, settings.frame_rate_divisor};
    encoder.bit_rate = settings.video_bit_rate;
    encoder.gop_size = settings.gop_frames;
    encoder.max_b_frames = settings.b_frames;
    encoder.thread_count = settings.threads;
    encoder.color_range = AVCOL_RANGE_MPEG;
    encoder.colorspace = AVCOL_SPC_BT709;
    encoder.color_primaries = AVCOL_PRI_BT709;
    encoder.color_trc = AVCOL_TRC_BT709;
    AVDictionary* options = nullptr;
    av_dict_set(&options, "preset", settings.preset.c_str(), 0);
    if (!settings.encoder_options.empty())
        av_dict_set(&options, "x264-params", settings.encoder_options.c_str(), 0);
    const auto opened = open_encoder(pictures, codec, &options);
    av_dict_free(&options);
    if (!opened.ok()) return opened;

    pictures.stream->avg_frame_rate = encoder.framerate;
    if (settings.rotation != 0) {
        auto* matrix = reinterpret_cast<std::int32_t*>(
            av_stream_new_side_data(pictures.stream, AV_PKT_DATA_DISPLAYMATRIX, 9 * sizeof(std::int32_t)));
        if (matrix == nullptr) return failed(AVERROR(ENOMEM));
        av_display_rotation_set(matrix, settings.rotation);  // clockwise, unlike the reading call
    }
    AVFrame& frame = *pictures.frame;
    frame.format = encoder.pix_fmt;
    frame.width = encoder.width;
    frame.height = encoder.height;
    frame.color_range = encoder.color_range;
    frame.colorspace = encoder.colorspace;
    if (const int error = av_frame_get_buffer(&frame, 0); error < 0) return failed(error);
    return {};
}

result<void> movie_writer::implementation::open_sound() {
    const AVCodec* codec = avcodec_find_encoder(AV_CODEC_ID_AAC);
    if (codec == nullptr) return failed(AVERROR_ENCODER_NOT_FOUND);
    sound.encoder.reset(avcodec_alloc_context3(codec));
    AVCodecContext& encoder = *sound.encoder;
    encoder.sample_fmt = AV_SAMPLE_FMT_FLTP;
    encoder.sample_rate = settings.sound_rate;
    encoder.time_base = {1, settings.sound_rate};
    encoder.bit_rate = 64000LL * settings.sound_channels;
    av_channel_layout_default(&encoder.ch_layout, settings.sound_channels);
    AVDictionary* options = nullptr;
    if (!settings.sound_coder.empty()) av_dict_set(&options, "aac_coder", settings.sound_coder.c_str(), 0);
    const auto opened = open_encoder(sound, codec, &options);
    av_dict_free(&options);
    if (!opened.ok()) return opened;
    AVFrame& frame = *sound.frame;
    frame.format = encoder.sample_fmt;
    frame.sample_rate = encoder.sample_rate;
    frame.nb_samples = encoder.frame_size;
    if (const int error = av_channel_layout_copy(&frame.ch_layout, &encoder.ch_layout); error < 0) {
        return failed(error);
    }
    if (const int error = av_frame_get_buffer(&frame, 0); error < 0) return failed(error);
    return {};
}

result<void> movie_writer::implementation::open() {
    silence_ffmpeg();
    if (settings.width <= 0 || settings.height <= 0 || settings.width % 2 != 0 || settings.height % 2 != 0 ||
        settings.frame_rate <= 0 || settings.frame_rate_divisor <= 0 || settings.sound_channels < 0) {
        return failed(AVERROR(EINVAL));
    }
    if (const int error = avformat_alloc_output_context2(&file, nullptr, nullptr, path.c_str()); error < 0) {
        return failed(error);
    }
    if (auto opened = open_pictures(); !opened.ok()) return opened;
    if (settings.sound_channels > 0) {
        if (auto opened = open_sound(); !opened.ok()) return opened;
    }
    if (const int error = avio_open(&file->pb, path.c_str(), AVIO_FLAG_WRITE); error < 0)
        return failed(error);
    file_made = true;
    AVDictionary* options = nullptr;
    if (settings.fast_start) av_dict_set(&options, "movflags", "+faststart", 0);
    const int error = avformat_write_header(file, &options);
    av_dict_free(&options);
    if (error < 0) return failed(error);
    return {};
}

// `frame` null: the encoder gives up what it still holds.
result<void> movie_writer::implementation::encode(track& to, const AVFrame* frame) {
    int error = avcodec_send_frame(to.encoder.get(), frame);
    if (error < 0) return failed(error);
    for (;;) {
        error = avcodec_receive_packet(to.encoder.get(), packet.get());
        if (error == AVERROR(EAGAIN) || error == AVERROR_EOF) return {};
        if (error < 0) return failed(error);
        packet->stream_index = to.stream->index;
        av_packet_rescale_ts(packet.get(), to.encoder->time_base, to.stream->time_base);
        error = av_interleaved_write_frame(file, packet.get());
        if (error < 0) return failed(error);
    }
}

result<void> movie_writer::implementation::add_picture(const std::uint8_t* bgra, int stride,
                                                       std::int64_t stamp) {
    if (finished || stamp < pictures.next_stamp) return failed(AVERROR(EINVAL));
    AVFrame& frame = *pictures.frame;
    if (const int error = av_frame_make_writable(&frame); error < 0) return failed(error);
    to_limited_yuv(bgra, stride, settings.width, settings.height,
                   {frame.data[0], frame.data[1], frame.data[2], frame.linesize[0], frame.linesize[1],
                    frame.linesize[2]});
    frame.pts = stamp;
    const std::int64_t divisor = settings.frame_rate_divisor;
    frame.pkt_duration = variable_rate_ticks_per_second * divisor / settings.frame_rate;
    pictures.next_stamp = stamp + 1;
    return encode(pictures, &frame);
}

result<void> movie_writer::implementation::encode_sound(const float* interleaved, int frames) {
    AVFrame& frame = *sound.frame;
    if (const int error = av_frame_make_writable(&frame); error < 0) return failed(error);
    const int channels = settings.sound_channels;
    for (int channel = 0; channel < channels; ++channel) {
        auto* samples = reinterpret_cast<float*>(frame.extended_data[channel]);
        for (int i = 0; i < frames; ++i) samples[i] = interleaved[i * channels + channel];
    }
    frame.nb_samples = frames;
    frame.pts = sound.next_stamp;
    sound.next_stamp += frames;
    return encode(sound, &frame);
}

movie_writer::movie_writer(std::unique_ptr<implementation> made) : its_(std::move(made)) {}
movie_writer::~movie_writer() = default;

result<std::unique_ptr<movie_writer>> movie_writer::create(const std::string& path,
                                                           const movie_writer_settings& settings) {
    auto made = std::make_unique<implementation>();
    made->path = path;
    made->settings = settings;
    if (auto opened = made->open(); !opened.ok()) return opened.error();
    return std::unique_ptr<movie_writer>(new movie_writer(std::move(made)));
}

result<void> movie_writer::add_picture(const std::uint8_t* bgra, int stride) {
    // Frames are counted, so that a rate such as 30000/1001 does not drift by rounding.
    const movie_writer_settings& settings = its_->settings;
    const AVRational frame_seconds{settings.frame_rate_divisor, settings.frame_rate};
    const AVRational tick{1, variable_rate_ticks_per_second};
    const std::int64_t frames = its_->pictures.next_stamp == 0
                                    ? 0
                                    : av_rescale_q(its_->pictures.next_stamp - 1, tick, frame_seconds) + 1;
    return its_->add_picture(bgra, stride, av_rescale_q(frames, frame_seconds, tick));
}

result<void> movie_writer::add_picture_at(const std::uint8_t* bgra, int stride, double seconds) {
    if (!std::isfinite(seconds) || seconds < 0) return its_->failed(AVERROR(EINVAL));
    return its_->add_picture(bgra, stride, std::llround(seconds * variable_rate_ticks_per_second));
}

result<void> movie_writer::add_sound(const float* interleaved, std::size_t frames) {
    if (its_->finished || !its_->sound.encoder) return its_->failed(AVERROR(EINVAL));
    auto& waiting = its_->waiting_sound;
    const auto channels = static_cast<std::size_t>(its_->settings.sound_channels);
    waiting.insert(waiting.end(), interleaved, interleaved + frames * channels);
    const auto size = static_cast<std::size_t>(its_->sound.encoder->frame_size) * channels;
    std::size_t done = 0;
    for (; waiting.size() - done >= size; done += size) {
        if (auto added = its_->encode_sound(waiting.data() + done, its_->sound.encoder->frame_size);
            !added.ok()) {
            return added;
        }
    }
    waiting.erase(waiting.begin(), waiting.begin() + static_cast<std::ptrdiff_t>(done));
    return {};
}

result<void> movie_writer::finish() {
    implementation& its = *its_;
    if (its.finished) return {};
    if (!its.waiting_sound.empty()) {
        const int left = static_cast<int>(its.waiting_sound.size()) / its.settings.sound_channels;
        if (auto added = its.encode_sound(its.waiting_sound.data(), left); !added.ok()) return added;
        its.waiting_sound.clear();
    }
    if (auto ended = its.encode(its.pictures, nullptr); !ended.ok()) return ended;
    if (its.sound.encoder) {
        if (auto ended = its.encode(its.sound, nullptr); !ended.ok()) return ended;
    }
    if (const int error = av_write_trailer(its.file); error < 0) return its.failed(error);
    if (const int error = avio_closep(&its.file->pb); error < 0) return its.failed(error);
    its.finished = true;
    return {};
}

}  // namespace vistels
