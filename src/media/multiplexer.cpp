// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/multiplexer.h"

#include <cstdio>

namespace vistels {

result<std::unique_ptr<multiplexer>> multiplexer::create(const std::string& path,
                                                         const std::string& container) {
    silence_ffmpeg();
    AVFormatContext* format = nullptr;
    if (const int error = avformat_alloc_output_context2(&format, nullptr, nullptr, container.c_str());
        error < 0) {
        return ffmpeg_failure(movie_could_not_be_written, path, error);
    }
    return std::unique_ptr<multiplexer>(new multiplexer(path, *format));
}

multiplexer::~multiplexer() {
    const bool is_made = format_->pb != nullptr || has_begun_;
    if (format_->pb != nullptr) avio_closep(&format_->pb);
    avformat_free_context(format_);
    if (is_made && !is_finished_) std::remove(path_.c_str());
}

result<AVStream*> multiplexer::add_track() {
    AVStream* const track = avformat_new_stream(format_, nullptr);
    if (track == nullptr) return failed(AVERROR(ENOMEM));
    return track;
}

result<AVStream*> multiplexer::add_track(const AVCodecContext& encoder) {
    auto track = add_track();
    if (!track) return track;
    track.value()->time_base = encoder.time_base;
    track.value()->avg_frame_rate = encoder.framerate;
    track.value()->sample_aspect_ratio = encoder.sample_aspect_ratio;
    const int error = avcodec_parameters_from_context(track.value()->codecpar, &encoder);
    return error < 0 ? failed(error) : track;
}

result<AVStream*> multiplexer::add_track(const AVStream& like, AVRational time_base) {
    auto track = add_track();
    if (!track) return track;
    track.value()->time_base = time_base;
    track.value()->sample_aspect_ratio = like.sample_aspect_ratio;
    const int error = avcodec_parameters_copy(track.value()->codecpar, like.codecpar);
    track.value()->codecpar->codec_tag = 0;  // that of the other container
    return error < 0 ? failed(error) : track;
}

result<void> multiplexer::set_rotation(AVStream& track, int degrees) {
    if (degrees == 0) return {};
    auto* matrix = reinterpret_cast<std::int32_t*>(
        av_stream_new_side_data(&track, AV_PKT_DATA_DISPLAYMATRIX, 9 * sizeof(std::int32_t)));
    if (matrix == nullptr) return failed(AVERROR(ENOMEM));
    av_display_rotation_set(matrix, degrees);  // clockwise, unlike the reading call
    return {};
}

result<void> multiplexer::begin(const char* flags) {
    if (const int error = avio_open(&format_->pb, ("file:" + path_).c_str(), AVIO_FLAG_WRITE); error < 0)
        return failed(error);
    AVDictionary* options = nullptr;
    if (flags != nullptr) av_dict_set(&options, "movflags", flags, 0);
    const int error = avformat_write_header(format_, &options);
    av_dict_free(&options);
    if (error < 0) return failed(error);
    has_begun_ = true;
    return {};
}

result<void> multiplexer::write(AVPacket& packet, const AVStream& track, AVRational time_base) {
    packet.stream_index = track.index;
    packet.pos = -1;
    av_packet_rescale_ts(&packet, time_base, track.time_base);
    const int error = av_interleaved_write_frame(format_, &packet);
    return error < 0 ? result<void>(failed(error)) : result<void>();
}

result<void> multiplexer::finish() {
    if (is_finished_) return {};
    int error = av_write_trailer(format_);
    if (error >= 0) error = avio_closep(&format_->pb);
    if (error < 0) return failed(error);
    is_finished_ = true;
    return {};
}

}  // namespace vistels
