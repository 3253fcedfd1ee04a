// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/movie_writer.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

#include "media/encoder.h"
#include "media/limited_yuv.h"
#include "media/multiplexer.h"

namespace vistels {

namespace {

constexpr int variable_rate_ticks_per_second = 90000;

}  // namespace

struct movie_writer::implementation {
    implementation(movie_writer_settings how, std::unique_ptr<multiplexer> to)
        : settings(std::move(how)), file(std::move(to)) {}

    const movie_writer_settings settings;
    const std::unique_ptr<multiplexer> file;
    encoder pictures{*file};
    encoder sound{*file};
    std::int64_t next_picture = 0;
    std::int64_t next_sound = 0;
    std::vector<float> waiting_sound;  // interleaved, less than one encoder frame
    bool finished = false;

    result<void> open();
    result<void> open_pictures();
    result<void> open_sound();
    result<void> encode_sound(const float* interleaved, int frames);
    result<void> add_picture(const std::uint8_t* bgra, int stride, std::int64_t stamp);
    failure wrong_use() const { return file->failed(AVERROR(EINVAL)); }
};

result<void> movie_writer::implementation::open_pictures() {
    if (auto found = pictures.find("libx264"); !found.ok()) return found;
    AVCodecContext& coded = pictures.settings();
    coded.width = settings.width;
    coded.height = settings.height;
    coded.pix_fmt = AV_PIX_FMT_YUV420P;
    // Fine enough for add_picture_at(); ticks of a whole frame rate fall on it exactly.
    coded.time_base = {1, variable_rate_ticks_per_second};
    coded.framerate = {settings.frame_rate, settings.frame_rate_divisor};
    coded.bit_rate = settings.video_bit_rate;
    coded.gop_size = settings.gop_frames;
    coded.max_b_frames = settings.b_frames;
    coded.thread_count = settings.threads;
    coded.color_range = AVCOL_RANGE_MPEG;
    coded.colorspace = AVCOL_SPC_BT709;
    coded.color_primaries = AVCOL_PRI_BT709;
    coded.color_trc = AVCOL_TRC_BT709;
    auto opened = pictures.open({{"preset", settings.preset}, {"x264-params", settings.encoder_options}});
    return opened.ok() ? file->set_rotation(pictures.track(), settings.rotation) : opened;
}

result<void> movie_writer::implementation::open_sound() {
    if (auto found = sound.find("aac"); !found.ok()) return found;
    AVCodecContext& coded = sound.settings();
    coded.sample_fmt = AV_SAMPLE_FMT_FLTP;
    coded.sample_rate = settings.sound_rate;
    coded.time_base = {1, settings.sound_rate};
    coded.bit_rate = 64000LL * settings.sound_channels;
    av_channel_layout_default(&coded.ch_layout, settings.sound_channels);
    return sound.open({{"aac_coder", settings.sound_coder}});
}

result<void> movie_writer::implementation::open() {
    if (settings.width <= 0 || settings.height <= 0 || settings.width % 2 != 0 || settings.height % 2 != 0 ||
        settings.frame_rate <= 0 || settings.frame_rate_divisor <= 0 || settings.sound_channels < 0) {
        return wrong_use();
    }
    if (auto opened = open_pictures(); !opened.ok()) return opened;
    if (settings.sound_channels > 0) {
        if (auto opened = open_sound(); !opened.ok()) return opened;
    }
    return file->begin(settings.in_fragments ? "+frag_keyframe+empty_moov+default_base_moof"
                       : settings.fast_start ? "+faststart"
                                             : nullptr);
}

result<void> movie_writer::implementation::add_picture(const std::uint8_t* bgra, int stride,
                                                       std::int64_t stamp) {
    if (finished || stamp < next_picture) return wrong_use();
    const auto writable = pictures.writable_frame();
    if (!writable.ok()) return writable.error();
    AVFrame& frame = *writable.value();
    to_limited_yuv(bgra, stride, settings.width, settings.height,
                   {frame.data[0], frame.data[1], frame.data[2], frame.linesize[0], frame.linesize[1],
                    frame.linesize[2]});
    frame.pts = stamp;
    const std::int64_t divisor = settings.frame_rate_divisor;
    frame.pkt_duration = variable_rate_ticks_per_second * divisor / settings.frame_rate;
    next_picture = stamp + 1;
    return pictures.encode(&frame);
}

result<void> movie_writer::implementation::encode_sound(const float* interleaved, int frames) {
    const auto writable = sound.writable_frame();
    if (!writable.ok()) return writable.error();
    AVFrame& frame = *writable.value();
    const int channels = settings.sound_channels;
    for (int channel = 0; channel < channels; ++channel) {
        auto* samples = reinterpret_cast<float*>(frame.extended_data[channel]);
        for (int i = 0; i < frames; ++i) samples[i] = interleaved[i * channels + channel];
    }
    frame.nb_samples = frames;
    frame.pts = next_sound;
    next_sound += frames;
    return sound.encode(&frame);
}

movie_writer::movie_writer(std::unique_ptr<implementation> made) : its_(std::move(made)) {}
movie_writer::~movie_writer() = default;

result<std::unique_ptr<movie_writer>> movie_writer::create(const std::string& path,
                                                           const movie_writer_settings& settings) {
    auto file = multiplexer::create(path, path);
    if (!file.ok()) return file.error();
    auto made = std::make_unique<implementation>(settings, std::move(file).value());
    if (auto opened = made->open(); !opened.ok()) return opened.error();
    return std::unique_ptr<movie_writer>(new movie_writer(std::move(made)));
}

result<void> movie_writer::add_picture(const std::uint8_t* bgra, int stride) {
    // Frames are counted, so that a rate such as 30000/1001 does not drift by rounding.
    const movie_writer_settings& settings = its_->settings;
    const AVRational frame_seconds{settings.frame_rate_divisor, settings.frame_rate};
    const AVRational tick{1, variable_rate_ticks_per_second};
    const std::int64_t frames =
        its_->next_picture == 0 ? 0 : av_rescale_q(its_->next_picture - 1, tick, frame_seconds) + 1;
    return its_->add_picture(bgra, stride, av_rescale_q(frames, frame_seconds, tick));
}

result<void> movie_writer::add_picture_at(const std::uint8_t* bgra, int stride, double seconds) {
    if (!std::isfinite(seconds) || seconds < 0) return its_->wrong_use();
    return its_->add_picture(bgra, stride, std::llround(seconds * variable_rate_ticks_per_second));
}

result<void> movie_writer::add_sound(const float* interleaved, std::size_t frames) {
    if (its_->finished || !its_->sound.is_open()) return its_->wrong_use();
    auto& waiting = its_->waiting_sound;
    const auto channels = static_cast<std::size_t>(its_->settings.sound_channels);
    waiting.insert(waiting.end(), interleaved, interleaved + frames * channels);
    const auto size = static_cast<std::size_t>(its_->sound.settings().frame_size) * channels;
    std::size_t done = 0;
    for (; waiting.size() - done >= size; done += size) {
        if (auto added = its_->encode_sound(waiting.data() + done, its_->sound.settings().frame_size);
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
    if (auto ended = its.pictures.encode(nullptr); !ended.ok()) return ended;
    if (its.sound.is_open()) {
        if (auto ended = its.sound.encode(nullptr); !ended.ok()) return ended;
    }
    if (auto closed = its.file->finish(); !closed.ok()) return closed;
    its.finished = true;
    return {};
}

}  // namespace vistels
