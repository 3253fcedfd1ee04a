// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/sound_reader.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <vector>

#include "media/decoder.h"
#include "media/demultiplexer.h"

namespace vistels {

namespace {

constexpr double same_place_seconds = 0.0005;
constexpr double reading_on_seconds = 1;

}  // namespace

struct sound_reader::implementation {
    std::string path;
    std::unique_ptr<demultiplexer> file;
    AVStream* stream = nullptr;
    std::optional<decoder> sound;
    ffmpeg_owner<SwrContext> converter;
    ffmpeg_owner<AVFrame> frame{av_frame_alloc()};
    std::vector<float> waiting;  // decoded, interleaved
    double waiting_from = 0;     // the time of its first sample
    double zero_seconds = 0;     // the stream's time at the movie's first picture
    bool has_waiting = false;

    double waiting_until() const {
        return waiting_from + static_cast<double>(waiting.size() / sound_channels) / sound_samples_per_second;
    }
    result<void> prepare_converter();
    result<void> seek(double seconds);
    result<bool> decode_more();
    result<void> take_frame();
    void drop_before(double seconds);
};

result<void> sound_reader::implementation::prepare_converter() {
    AVChannelLayout stereo = AV_CHANNEL_LAYOUT_STEREO;
    AVCodecContext& decoded = sound->context();
    SwrContext* made = nullptr;
    int error = swr_alloc_set_opts2(&made, &stereo, AV_SAMPLE_FMT_FLT, sound_samples_per_second,
                                    &decoded.ch_layout, decoded.sample_fmt, decoded.sample_rate, 0, nullptr);
    converter.reset(made);
    if (error >= 0) error = swr_init(made);
    if (error < 0) return ffmpeg_failure(sound_could_not_be_read, path, error);
    return {};
}

result<void> sound_reader::implementation::seek(double seconds) {
    const double in_stream = (seconds + zero_seconds) / seconds_of(stream->time_base);
    if (file->seek(*stream, std::llround(in_stream)) < 0 &&
        file->seek(*stream, std::numeric_limits<std::int64_t>::min() / 4) < 0) {
        return sound_could_not_be_moved_in(path);
    }
    sound->restart();
    waiting.clear();
    has_waiting = false;
    return prepare_converter();  // forgets what it still holds
}

result<void> sound_reader::implementation::take_frame() {
    const int most = swr_get_out_samples(converter.get(), frame->nb_samples);
    const std::size_t before = waiting.size();
    waiting.resize(before + static_cast<std::size_t>(std::max(0, most)) * sound_channels);
    auto* out = reinterpret_cast<std::uint8_t*>(waiting.data() + before);
    const int got = swr_convert(converter.get(), &out, most,
                                const_cast<const std::uint8_t**>(frame->extended_data), frame->nb_samples);
    waiting.resize(before + static_cast<std::size_t>(std::max(0, got)) * sound_channels);
    if (got < 0) return ffmpeg_failure(sound_could_not_be_read, path, got);
    const std::int64_t stamp = frame->best_effort_timestamp;
    if (!has_waiting && stamp != AV_NOPTS_VALUE) {
        waiting_from = static_cast<double>(stamp) * seconds_of(stream->time_base) - zero_seconds;
    }
    has_waiting = true;
    return {};
}

// False at the end.
result<bool> sound_reader::implementation::decode_more() {
    auto decoded = sound->next(*frame);
    if (!decoded.ok() || !decoded.value()) return decoded;
    if (auto taken = take_frame(); !taken.ok()) return taken.error();
    return true;
}

void sound_reader::implementation::drop_before(double seconds) {
    const double frames = std::round((seconds - waiting_from) * sound_samples_per_second);
    if (frames <= 0) return;
    const auto gone = std::min(waiting.size() / sound_channels, static_cast<std::size_t>(frames));
    waiting.erase(waiting.begin(), waiting.begin() + static_cast<std::ptrdiff_t>(gone * sound_channels));
    waiting_from += static_cast<double>(gone) / sound_samples_per_second;
}

sound_reader::sound_reader(std::unique_ptr<implementation> made) : its_(std::move(made)) {}
sound_reader::~sound_reader() = default;

result<std::unique_ptr<sound_reader>> sound_reader::open(const std::string& path) {
    auto opened = demultiplexer::open(path);
    if (!opened.ok()) return opened.error();
    auto made = std::make_unique<implementation>();
    made->path = path;
    made->file = std::move(opened).value();
    made->stream = made->file->sound();
    if (made->stream == nullptr) return movie_has_no_sound(path);
    if (const AVStream* video = made->file->video();
        video != nullptr && video->start_time != AV_NOPTS_VALUE) {
        made->zero_seconds = static_cast<double>(video->start_time) * seconds_of(video->time_base);
    }
    made->file->read_only(*made->stream);
    made->sound.emplace(*made->file, sound_could_not_be_read);
    if (auto opened_sound = made->sound->open(*made->stream, 1); !opened_sound.ok())
        return opened_sound.error();
    if (auto ready = made->prepare_converter(); !ready.ok()) return ready.error();
    return std::unique_ptr<sound_reader>(new sound_reader(std::move(made)));
}

result<void> sound_reader::read(double seconds, float* interleaved, std::size_t frames) {
    implementation& its = *its_;
    std::fill(interleaved, interleaved + frames * sound_channels, 0.0F);
    const bool goes_on = its.has_waiting && seconds >= its.waiting_from - same_place_seconds &&
                         seconds < its.waiting_until() + reading_on_seconds;
    if (!goes_on) {
        if (auto moved = its.seek(std::max(0.0, seconds)); !moved.ok()) return moved;
    }
    const double until = seconds + static_cast<double>(frames) / sound_samples_per_second;
    while (!its.has_waiting || its.waiting_until() < until) {
        auto more = its.decode_more();
        if (!more.ok()) return more.error();
        if (!more.value()) break;
        its.drop_before(seconds);
    }
    its.drop_before(seconds);
    const double late = std::round((its.waiting_from - seconds) * sound_samples_per_second);
    const std::size_t skipped = late > 0 ? static_cast<std::size_t>(late) : 0;
    if (skipped >= frames) return {};
    const std::size_t there = std::min(frames - skipped, its.waiting.size() / sound_channels);
    std::copy_n(its.waiting.begin(), there * sound_channels, interleaved + skipped * sound_channels);
    its.drop_before(its.waiting_from + static_cast<double>(there) / sound_samples_per_second);
    return {};
}

}  // namespace vistels
