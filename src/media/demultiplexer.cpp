// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/demultiplexer.h"

#include <sys/stat.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "util/wait_watch.h"

namespace vistels {

namespace {

int rotation_of(const AVStream& stream) {
    const auto* matrix = reinterpret_cast<const std::int32_t*>(
        av_stream_get_side_data(&stream, AV_PKT_DATA_DISPLAYMATRIX, nullptr));
    if (matrix == nullptr) return 0;
    const double degrees = av_display_rotation_get(matrix);  // anticlockwise, NaN when it makes no sense
    if (!std::isfinite(degrees)) return 0;
    const int quarters = static_cast<int>(std::lround(-degrees / 90)) % 4;
    return (quarters + 4) % 4 * 90;
}

double duration_of(const AVFormatContext& format, const AVStream* stream) {
    if (stream != nullptr && stream->duration > 0) {
        return static_cast<double>(stream->duration) * seconds_of(stream->time_base);
    }
    return format.duration > 0 ? static_cast<double>(format.duration) / AV_TIME_BASE : 0;
}

// The header of a recording that was broken off, or went through a pipe, does not say how long it is; some
// say only when the last picture ends, though the first comes late.
bool knows_duration(const AVStream& stream, double duration) {
    const bool comes_late = stream.start_time != AV_NOPTS_VALUE && stream.start_time > 0;
    return stream.duration > 0 || (duration > 0 && !comes_late);
}

movie_information information_of(const AVFormatContext& format, const AVStream* video,
                                 const AVStream* sound) {
    movie_information known;
    known.tracks = static_cast<int>(format.nb_streams);
    const AVStream* const main = video != nullptr ? video : sound;
    known.duration = duration_of(format, main);
    if (main != nullptr && knows_duration(*main, known.duration))
        known.duration_of_all = std::max(known.duration, duration_of(format, nullptr));
    known.data_rate = static_cast<double>(format.bit_rate);
    if (video != nullptr) {
        known.has_video = true;
        known.rotation = rotation_of(*video);
        const bool lies = known.rotation % 180 != 0;
        known.width = lies ? video->codecpar->height : video->codecpar->width;
        known.height = lies ? video->codecpar->width : video->codecpar->height;
        known.frame_rate = seconds_of(video->avg_frame_rate);
        known.video_codec = avcodec_get_name(video->codecpar->codec_id);
    }
    if (sound != nullptr) {
        known.has_sound = true;
        known.sound_codec = avcodec_get_name(sound->codecpar->codec_id);
        known.sound_rate = sound->codecpar->sample_rate;
        known.sound_channels = sound->codecpar->ch_layout.nb_channels;
    }
    return known;
}

AVStream* best_stream(AVFormatContext& format, AVMediaType kind) {
    const int index = av_find_best_stream(&format, kind, -1, -1, nullptr, 0);
    if (index < 0) return nullptr;
    AVStream* const stream = format.streams[index];
    return (stream->disposition & AV_DISPOSITION_ATTACHED_PIC) != 0 ? nullptr : stream;
}

}  // namespace

int demultiplexer::is_late(void* self) {
    return std::chrono::steady_clock::now() > static_cast<demultiplexer*>(self)->deadline_ ? 1 : 0;
}

result<std::unique_ptr<demultiplexer>> demultiplexer::open(const std::string& path) {
    silence_ffmpeg();
    const wait_note note("open movie", path);
    // A pipe or a device could keep the opening call waiting for ever.
    struct stat about {};
    if (stat(path.c_str(), &about) != 0)
        return ffmpeg_failure(movie_could_not_be_opened, path, AVERROR(errno));
    if (!S_ISREG(about.st_mode)) {
        return movie_could_not_be_opened(path, movie_is_no_file());
    }
    auto made = std::make_unique<demultiplexer>();
    made->path_ = path;
    made->limit_ = std::chrono::duration_cast<std::chrono::steady_clock::duration>(
        std::chrono::duration<double>(read_limit_seconds));
    made->start_limit();
    AVFormatContext* format = avformat_alloc_context();
    if (format == nullptr) return ffmpeg_failure(movie_could_not_be_opened, path, AVERROR(ENOMEM));
    format->interrupt_callback = {&demultiplexer::is_late, made.get()};
    // A movie's text must not send the reader to other files or to the network.
    AVDictionary* options = nullptr;
    av_dict_set(&options, "protocol_whitelist", "file", 0);
    int error = avformat_open_input(&format, ("file:" + path).c_str(), nullptr, &options);
    av_dict_free(&options);
    if (error < 0) return ffmpeg_failure(movie_could_not_be_opened, path, error);
    made->format_.reset(format);
    error = avformat_find_stream_info(format, nullptr);
    if (error < 0) return ffmpeg_failure(movie_could_not_be_opened, path, error);
    made->video_ = best_stream(*format, AVMEDIA_TYPE_VIDEO);
    made->sound_ = best_stream(*format, AVMEDIA_TYPE_AUDIO);
    if (made->video_ == nullptr && made->sound_ == nullptr) {
        return movie_could_not_be_opened(path, movie_is_empty());
    }
    made->information_ = information_of(*format, made->video_, made->sound_);
    return made;
}

int demultiplexer::read(AVPacket& packet) {
    const wait_note note("read movie", path_);
    start_limit();
    return av_read_frame(format_.get(), &packet);
}

int demultiplexer::read(AVPacket& packet, const AVStream& stream) {
    for (;;) {
        const int error = read(packet);
        if (error < 0 || packet.stream_index == stream.index) return error;
        av_packet_unref(&packet);
    }
}

void demultiplexer::read_only(const AVStream& stream) {
    for (unsigned i = 0; i < format_->nb_streams; ++i) {
        if (format_->streams[i] != &stream) format_->streams[i]->discard = AVDISCARD_ALL;
    }
}

int demultiplexer::seek(const AVStream& stream, std::int64_t stamp) {
    const wait_note note("seek in movie", path_);
    start_limit();
    return av_seek_frame(format_.get(), stream.index, stamp, AVSEEK_FLAG_BACKWARD);
}

namespace {

// How long the packets from here on show a stream, counted from its beginning; 0 when there are none.
double seconds_until_end(demultiplexer& movie, const AVStream& stream) {
    const ffmpeg_owner<AVPacket> packet(av_packet_alloc());
    const std::int64_t first = stream.start_time != AV_NOPTS_VALUE ? stream.start_time : 0;
    std::int64_t last = 0;
    while (packet && movie.read(*packet, stream) >= 0) {
        const std::int64_t stamp = packet->pts != AV_NOPTS_VALUE ? packet->pts : packet->dts;
        if (stamp != AV_NOPTS_VALUE) {
            last = std::max(last, stamp + std::max<std::int64_t>(packet->duration, 0) - first);
        }
        av_packet_unref(packet.get());
    }
    return static_cast<double>(last) * seconds_of(stream.time_base);
}

const AVStream& main_stream(const demultiplexer& movie) {
    return movie.video() != nullptr ? *movie.video() : *movie.sound();
}

double measured_duration(demultiplexer& movie) {
    const AVStream& stream = main_stream(movie);
    constexpr std::int64_t end = std::numeric_limits<std::int64_t>::max() / 4;
    double seconds = movie.seek(stream, end) >= 0 ? seconds_until_end(movie, stream) : 0;
    if (seconds <= 0 && movie.seek(stream, std::numeric_limits<std::int64_t>::min() / 4) >= 0) {
        seconds = seconds_until_end(movie, stream);
    }
    return seconds;
}

}  // namespace

result<movie_information> probe_movie(const std::string& path) {
    auto opened = demultiplexer::open(path);
    if (!opened.ok()) return opened.error();
    auto known = opened.value()->information();
    if (knows_duration(main_stream(*opened.value()), known.duration)) return known;
    const double measured = measured_duration(*opened.value());
    if (measured > 0) known.duration = measured;
    return known;
}

}  // namespace vistels
