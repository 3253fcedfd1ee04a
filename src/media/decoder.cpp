// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/decoder.h"

#include <cerrno>

namespace vistels {

namespace {

constexpr int most_failures_in_a_row = 200;

}  // namespace

result<void> decoder::open(const AVStream& stream, int threads) {
    const AVCodec* const codec = avcodec_find_decoder(stream.codecpar->codec_id);
    if (codec == nullptr)
        return ffmpeg_failure(movie_could_not_be_opened, source_.path(), AVERROR_DECODER_NOT_FOUND);
    context_.reset(avcodec_alloc_context3(codec));
    if (!context_) return ffmpeg_failure(movie_could_not_be_opened, source_.path(), AVERROR(ENOMEM));
    stream_ = stream.index;
    context_->pkt_timebase = stream.time_base;
    int error = avcodec_parameters_to_context(context_.get(), stream.codecpar);
    context_->thread_count = threads;
    if (error >= 0) error = avcodec_open2(context_.get(), codec, nullptr);
    return error < 0 ? result<void>(ffmpeg_failure(movie_could_not_be_opened, source_.path(), error))
                     : result<void>();
}

result<void> decoder::passed_over(int error) {
    if (++failures_ <= most_failures_in_a_row) return {};
    return ffmpeg_failure(unreadable_, source_.path(), error);
}

// Gives the decoder one packet, or at the end none; false when there is none yet.
result<bool> decoder::take_packet() {
    int error = source_.read(*packet_);
    if (error == AVERROR(EAGAIN)) return false;
    if (error == AVERROR_EOF) {
        is_at_end_ = true;
        avcodec_send_packet(context_.get(), nullptr);
        return true;
    }
    if (error < 0 && error != AVERROR_INVALIDDATA) return ffmpeg_failure(unreadable_, source_.path(), error);
    if (error >= 0) {
        const bool is_own = packet_->stream_index == stream_;
        const auto looked_at = look_ ? look_(*packet_) : result<void>();
        if (looked_at.ok() && is_own) error = avcodec_send_packet(context_.get(), packet_.get());
        av_packet_unref(packet_.get());
        if (!looked_at) return looked_at.error();
    }
    const auto passed = error < 0 && error != AVERROR(EAGAIN) ? passed_over(error) : result<void>();
    return passed.ok() ? result<bool>(true) : passed.error();
}

result<bool> decoder::next(AVFrame& frame) {
    for (;;) {
        const int error = avcodec_receive_frame(context_.get(), &frame);
        if (error == 0) {
            failures_ = 0;
            return true;
        }
        if (error == AVERROR_EOF || (is_at_end_ && error == AVERROR(EAGAIN))) return false;
        if (error != AVERROR(EAGAIN)) {
            if (auto passed = passed_over(error); !passed) return passed.error();
        }
        if (is_at_end_) continue;
        if (auto taken = take_packet(); !taken || !taken.value()) return taken;
    }
}

void decoder::restart() {
    avcodec_flush_buffers(context_.get());
    is_at_end_ = false;
    failures_ = 0;
}

}  // namespace vistels
