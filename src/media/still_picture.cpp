// SPDX-License-Identifier: GPL-3.0-or-later
#include <algorithm>

#include "media/ffmpeg_handles.h"
#include "media/movie_file.h"
#include "media/picture.h"

namespace vistels {

namespace {

constexpr int largest_side = 16384;

// The first frame that the file's decoder gives.
result<ffmpeg_owner<AVFrame>> decode_first(movie_file& file, AVCodecContext& decoder,
                                           const std::string& path) {
    const ffmpeg_owner<AVPacket> packet(av_packet_alloc());
    ffmpeg_owner<AVFrame> frame(av_frame_alloc());
    for (;;) {
        int error = avcodec_receive_frame(&decoder, frame.get());
        if (error == 0) return frame;
        if (error != AVERROR(EAGAIN)) return ffmpeg_failure("Could not read the picture", path, error);
        av_packet_unref(packet.get());
        error = file.read(*packet);
        if (error < 0 && error != AVERROR_EOF) {
            return ffmpeg_failure("Could not read the picture", path, error);
        }
        if (error == 0 && packet->stream_index != file.video()->index) continue;
        avcodec_send_packet(&decoder, error == 0 ? packet.get() : nullptr);
    }
}

}  // namespace

result<picture> read_still_picture(const std::string& path, int width, int height) {
    auto file = movie_file::open(path);
    if (!file) return file.error();
    if (file.value()->video() == nullptr) return failure{"“" + path + "” holds no picture"};
    auto decoder = file.value()->open_decoder(*file.value()->video(), 1);
    if (!decoder) return decoder.error();
    const auto frame = decode_first(*file.value(), *decoder.value(), path);
    if (!frame) return frame.error();
    const AVFrame& decoded = *frame.value();
    const double scale = width > 0 && height > 0 ? std::min(static_cast<double>(width) / decoded.width,
                                                            static_cast<double>(height) / decoded.height)
                                                 : 1;
    const auto side = [&](int length) {
        return std::clamp(static_cast<int>(length * scale + 0.5), 1, largest_side);
    };
    picture_pool pool;
    const auto made = pool.make(side(decoded.width), side(decoded.height));
    const ffmpeg_owner<SwsContext> scaler(
        sws_getContext(decoded.width, decoded.height, static_cast<AVPixelFormat>(decoded.format), made->width,
                       made->height, AV_PIX_FMT_BGRA, SWS_AREA, nullptr, nullptr, nullptr));
    if (!scaler) return failure{"“" + path + "” cannot be scaled"};
    std::uint8_t* to = made->bytes.data();
    sws_scale(scaler.get(), decoded.data, decoded.linesize, 0, decoded.height, &to, &made->stride);
    return std::move(*made);
}

}  // namespace vistels
