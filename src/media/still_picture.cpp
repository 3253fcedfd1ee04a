// SPDX-License-Identifier: GPL-3.0-or-later
#include <algorithm>

#include "media/decoder.h"
#include "media/demultiplexer.h"
#include "media/ffmpeg_handles.h"
#include "media/picture.h"

namespace vistels {

namespace {

constexpr int largest_side = 16384;

}  // namespace

result<picture> read_still_picture(const std::string& path, int width, int height) {
    auto file = demultiplexer::open(path);
    if (!file) return file.error();
    if (file.value()->video() == nullptr) return file_has_no_picture(path);
    decoder pictures(*file.value(), picture_could_not_be_read);
    if (auto opened = pictures.open(*file.value()->video(), 1); !opened) return opened.error();
    const ffmpeg_owner<AVFrame> frame(av_frame_alloc());
    const auto first = pictures.next(*frame);
    if (!first) return first.error();
    if (!first.value()) return ffmpeg_failure(picture_could_not_be_read, path, AVERROR_INVALIDDATA);
    const AVFrame& decoded = *frame;
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
    if (!scaler) return picture_cannot_be_scaled(path);
    std::uint8_t* to = made->bytes.data();
    sws_scale(scaler.get(), decoded.data, decoded.linesize, 0, decoded.height, &to, &made->stride);
    return std::move(*made);
}

}  // namespace vistels
