// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/picture_scaler.h"

#include "media/movie_failures.h"

namespace vistels {

namespace {

bool is_bt709(const AVFrame& frame) {
    if (frame.colorspace == AVCOL_SPC_BT709) return true;
    // Movies that do not say: as everyone does, by size.
    return frame.colorspace == AVCOL_SPC_UNSPECIFIED && frame.height >= 720;
}

bool is_full_range(const AVFrame& frame) {
    return frame.color_range == AVCOL_RANGE_JPEG || frame.format == AV_PIX_FMT_YUVJ420P;
}

// swscale takes seven to ten times as long for an odd number of columns: it is given one more, for which the
// end of each row has room, as a row's bytes are a multiple of 64.
int quick_width(int width, const AVFrame& frame) {
    return width == frame.width ? width : width + width % 2;
}

void turn(const picture& from, picture& to, int rotation) {
    for (int y = 0; y < to.height; ++y) {
        std::uint8_t* out = to.bytes.data() + static_cast<std::ptrdiff_t>(y) * to.stride;
        for (int x = 0; x < to.width; ++x, out += 4) {
            int from_x = from.width - 1 - x;  // 180
            int from_y = from.height - 1 - y;
            if (rotation == 90) {
                from_x = y;
                from_y = from.height - 1 - x;
            } else if (rotation == 270) {
                from_x = from.width - 1 - y;
                from_y = x;
            }
            const std::uint8_t* pixel = from.row(from_y) + static_cast<std::ptrdiff_t>(from_x) * 4;
            for (int byte = 0; byte < 4; ++byte) out[byte] = pixel[byte];
        }
    }
}

}  // namespace

result<std::shared_ptr<picture>> picture_scaler::scale(const AVFrame& frame, int width, int height,
                                                       int rotation) {
    const bool lies = rotation == 90 || rotation == 270;
    const int own_width = lies ? height : width;
    const int own_height = lies ? width : height;
    const bool fits =
        rotation != 0 && unturned_ && unturned_->width == own_width && unturned_->height == own_height;
    if (!fits) unturned_.reset();
    const auto made = fits ? unturned_ : pool_->make(own_width, own_height);
    const auto format = static_cast<AVPixelFormat>(frame.format);
    SwsContext* const context = sws_getCachedContext(
        context_.release(), frame.width, frame.height, format, quick_width(own_width, frame), own_height,
        AV_PIX_FMT_BGRA, SWS_FAST_BILINEAR, nullptr, nullptr, nullptr);
    context_.reset(context);
    if (context == nullptr) return picture_kind_is_unknown();
    const int* weights = sws_getCoefficients(is_bt709(frame) ? SWS_CS_ITU709 : SWS_CS_ITU601);
    sws_setColorspaceDetails(context, weights, is_full_range(frame) ? 1 : 0, weights, 1, 0, 1 << 16, 1 << 16);
    std::uint8_t* rows[4] = {made->bytes.data(), nullptr, nullptr, nullptr};
    const int strides[4] = {made->stride, 0, 0, 0};
    sws_scale(context, frame.data, frame.linesize, 0, frame.height, rows, strides);
    if (rotation == 0) return made;
    unturned_ = made;
    auto turned = pool_->make(width, height);
    turn(*made, *turned, rotation);
    return turned;
}

}  // namespace vistels
