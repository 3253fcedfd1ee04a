// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/coded_pictures.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <memory>
#include <utility>

#include "media/ffmpeg_handles.h"
#include "media/movie_file.h"

namespace vistels {

namespace {

constexpr std::size_t most_pictures = 1000;
constexpr AVRational time_base{1, 90000};

using coded_pictures = std::vector<ffmpeg_owner<AVPacket>>;

result<coded_pictures> read_pictures(movie_file& movie, const std::string& path) {
    coded_pictures pictures;
    for (;;) {
        ffmpeg_owner<AVPacket> packet(av_packet_alloc());
        const int error = movie.read(*packet);
        if (error == AVERROR_EOF) break;
        if (error < 0) return ffmpeg_failure("Could not read the movie", path, error);
        if (packet->stream_index != movie.video()->index) continue;
        if ((packet->flags & AV_PKT_FLAG_KEY) == 0 || pictures.size() == most_pictures) {
            return failure{"The pictures of the movie “" + path + "” cannot be shown in any order"};
        }
        pictures.push_back(std::move(packet));
    }
    if (pictures.empty()) return failure{"The movie “" + path + "” holds no pictures"};
    return pictures;
}

// The file that is written; removed when it is not finished.
class written_file {
  public:
    explicit written_file(std::string path) : path_(std::move(path)) {}
    ~written_file() {
        if (file_ == nullptr) return;
        if (file_->pb != nullptr) avio_closep(&file_->pb);
        avformat_free_context(file_);
        if (made_ && !finished_) std::remove(path_.c_str());
    }
    written_file(const written_file&) = delete;
    written_file& operator=(const written_file&) = delete;

    int open(const AVStream& like) {
        int error = avformat_alloc_output_context2(&file_, nullptr, nullptr, path_.c_str());
        if (error < 0) return error;
        AVStream* stream = avformat_new_stream(file_, nullptr);
        if (stream == nullptr) return AVERROR(ENOMEM);
        stream->time_base = time_base;
        stream->sample_aspect_ratio = like.sample_aspect_ratio;
        error = avcodec_parameters_copy(stream->codecpar, like.codecpar);
        stream->codecpar->codec_tag = 0;  // that of the other container
        if (error >= 0) error = avio_open(&file_->pb, ("file:" + path_).c_str(), AVIO_FLAG_WRITE);
        if (error < 0) return error;
        made_ = true;
        return avformat_write_header(file_, nullptr);
    }
    int add(const AVPacket& picture, std::int64_t from, std::int64_t until) {
        ffmpeg_owner<AVPacket> packet(av_packet_clone(&picture));
        if (!packet) return AVERROR(ENOMEM);
        packet->stream_index = 0;
        packet->pts = packet->dts = from;
        packet->duration = until - from;
        packet->pos = -1;
        av_packet_rescale_ts(packet.get(), time_base, file_->streams[0]->time_base);
        return av_interleaved_write_frame(file_, packet.get());
    }
    int finish() {
        int error = av_write_trailer(file_);
        if (error >= 0) error = avio_closep(&file_->pb);
        finished_ = error >= 0;
        return error;
    }

  private:
    const std::string path_;
    AVFormatContext* file_ = nullptr;
    bool made_ = false;
    bool finished_ = false;
};

}  // namespace

result<void> show_coded_pictures(const std::string& from, const std::string& to,
                                 const std::vector<double>& times, double end, job& work) {
    silence_ffmpeg();
    auto movie = movie_file::open(from);
    if (!movie) return movie.error();
    if (movie.value()->video() == nullptr) return failure{"The movie “" + from + "” holds no pictures"};
    const auto pictures = read_pictures(*movie.value(), from);
    if (!pictures) return pictures.error();
    const auto stamp = [](double seconds) { return std::llround(seconds * time_base.den); };
    written_file file(to);
    int error = file.open(*movie.value()->video());
    for (std::size_t n = 0; error >= 0 && n < times.size(); ++n) {
        if (work.is_cancelled()) return failure{"It was cancelled."};
        const double until = n + 1 < times.size() ? times[n + 1] : end;
        error = file.add(*pictures.value()[n % pictures.value().size()], stamp(times[n]), stamp(until));
        work.set_progress(static_cast<double>(n + 1) / static_cast<double>(times.size() + 1));
    }
    if (error >= 0) error = file.finish();
    return error < 0 ? result<void>(ffmpeg_failure("Could not write the movie", to, error)) : result<void>();
}

}  // namespace vistels
