// SPDX-License-Identifier: GPL-3.0-or-later
#include <cstdio>

#include "media/ffmpeg_handles.h"
#include "media/picture.h"

namespace vistels {

namespace {

result<void> encode_png(const picture& shown, const std::string& path, AVPacket& packet) {
    const AVCodec* codec = avcodec_find_encoder(AV_CODEC_ID_PNG);
    if (codec == nullptr)
        return ffmpeg_failure(picture_could_not_be_written, path, AVERROR_ENCODER_NOT_FOUND);
    const ffmpeg_owner<AVCodecContext> encoder(avcodec_alloc_context3(codec));
    encoder->width = shown.width;
    encoder->height = shown.height;
    encoder->pix_fmt = AV_PIX_FMT_RGB24;
    encoder->time_base = {1, 1};
    int error = avcodec_open2(encoder.get(), codec, nullptr);
    if (error < 0) return ffmpeg_failure(picture_could_not_be_written, path, error);
    const ffmpeg_owner<AVFrame> frame(av_frame_alloc());
    frame->format = encoder->pix_fmt;
    frame->width = shown.width;
    frame->height = shown.height;
    error = av_frame_get_buffer(frame.get(), 0);
    if (error < 0) return ffmpeg_failure(picture_could_not_be_written, path, error);
    for (int y = 0; y < shown.height; ++y) {
        const std::uint8_t* from = shown.row(y);
        std::uint8_t* to = frame->data[0] + static_cast<std::ptrdiff_t>(y) * frame->linesize[0];
        for (int x = 0; x < shown.width; ++x, from += 4, to += 3) {
            to[0] = from[2];
            to[1] = from[1];
            to[2] = from[0];
        }
    }
    error = avcodec_send_frame(encoder.get(), frame.get());
    if (error >= 0) error = avcodec_receive_packet(encoder.get(), &packet);
    if (error < 0) return ffmpeg_failure(picture_could_not_be_written, path, error);
    return {};
}

}  // namespace

result<void> write_png(const picture& shown, const std::string& path) {
    silence_ffmpeg();
    const ffmpeg_owner<AVPacket> packet(av_packet_alloc());
    if (auto encoded = encode_png(shown, path, *packet); !encoded.ok()) return encoded;
    std::FILE* file = std::fopen(path.c_str(), "wb");
    if (file == nullptr) return ffmpeg_failure(picture_could_not_be_written, path, AVERROR(errno));
    const auto size = static_cast<std::size_t>(packet->size);
    const bool written = std::fwrite(packet->data, 1, size, file) == size;
    const bool closed = std::fclose(file) == 0;
    if (written && closed) return {};
    std::remove(path.c_str());
    return picture_could_not_be_written(path, volume_took_a_part());
}

}  // namespace vistels
