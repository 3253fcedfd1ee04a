// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/picture_scaler.h"

#include <libyuv/convert_argb.h>
#include <libyuv/rotate_argb.h>
#include <libyuv/scale.h>
#include <libyuv/scale_argb.h>

#include <cstddef>

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

// The kind of frame that nearly all movies have: 8 bits, colours at half the width and height.
bool is_plain(const AVFrame& frame) {
    return frame.format == AV_PIX_FMT_YUV420P || frame.format == AV_PIX_FMT_YUVJ420P;
}

const libyuv::YuvConstants* weights_of(const AVFrame& frame) {
    if (is_bt709(frame))
        return is_full_range(frame) ? &libyuv::kYuvF709Constants : &libyuv::kYuvH709Constants;
    return is_full_range(frame) ? &libyuv::kYuvJPEGConstants : &libyuv::kYuvI601Constants;
}

constexpr int half(int length) {
    return (length + 1) / 2;
}

std::size_t bytes_of(int stride, int height) {
    return static_cast<std::size_t>(stride) * static_cast<std::size_t>(height);
}

// swscale takes seven to ten times as long for an odd number of columns: it is given one more, for which the
// end of each row has room, as a row's bytes are a multiple of 64.
int quick_width(int width, const AVFrame& frame) {
    return width == frame.width ? width : width + width % 2;
}

}  // namespace

// A picture of half the frame's width and height has its colours as they are.
void picture_scaler::halve_plain(const AVFrame& frame, std::uint8_t* to, int stride) {
    const int width = half(frame.width);
    const int height = half(frame.height);
    luma_.resize(bytes_of(width, height));
    libyuv::ScalePlane(frame.data[0], frame.linesize[0], frame.width, frame.height, luma_.data(), width,
                       width, height, libyuv::kFilterBox);
    libyuv::I444ToARGBMatrix(luma_.data(), width, frame.data[1], frame.linesize[1], frame.data[2],
                             frame.linesize[2], to, stride, weights_of(frame), width, height);
}

void picture_scaler::scale_plain(const AVFrame& frame, picture& to) {
    const int half_width = half(frame.width);
    const int half_height = half(frame.height);
    if (to.width == half_width && to.height == half_height) {
        return halve_plain(frame, to.bytes.data(), to.stride);
    }
    const bool halves = to.width < half_width && to.height < half_height;
    const bool scales = to.width != frame.width || to.height != frame.height;
    const int width = halves ? half_width : frame.width;
    const int height = halves ? half_height : frame.height;
    const int stride = scales ? 4 * width : to.stride;
    if (scales) pixels_.resize(bytes_of(stride, height));
    std::uint8_t* const pixels = scales ? pixels_.data() : to.bytes.data();
    if (halves) {
        halve_plain(frame, pixels, stride);
    } else {
        libyuv::I420ToARGBMatrix(frame.data[0], frame.linesize[0], frame.data[1], frame.linesize[1],
                                 frame.data[2], frame.linesize[2], pixels, stride, weights_of(frame), width,
                                 height);
    }
    if (!scales) return;
    // Which blends the fourth byte of pixels, too.
    libyuv::ARGBScale(pixels, stride, width, height, to.bytes.data(), to.stride, to.width, to.height,
                      libyuv::kFilterBox);
    for (std::size_t byte = 3; byte < to.bytes.size(); byte += 4) to.bytes[byte] = 255;
}

bool picture_scaler::scale_any(const AVFrame& frame, picture& to) {
    const auto format = static_cast<AVPixelFormat>(frame.format);
    SwsContext* const context = sws_getCachedContext(context_.release(), frame.width, frame.height, format,
                                                     quick_width(to.width, frame), to.height, AV_PIX_FMT_BGRA,
                                                     SWS_FAST_BILINEAR, nullptr, nullptr, nullptr);
    context_.reset(context);
    if (context == nullptr) return false;
    const int* weights = sws_getCoefficients(is_bt709(frame) ? SWS_CS_ITU709 : SWS_CS_ITU601);
    sws_setColorspaceDetails(context, weights, is_full_range(frame) ? 1 : 0, weights, 1, 0, 1 << 16, 1 << 16);
    std::uint8_t* rows[4] = {to.bytes.data(), nullptr, nullptr, nullptr};
    const int strides[4] = {to.stride, 0, 0, 0};
    sws_scale(context, frame.data, frame.linesize, 0, frame.height, rows, strides);
    return true;
}

result<std::shared_ptr<picture>> picture_scaler::scale(const AVFrame& frame, int width, int height,
                                                       int rotation) {
    const bool lies = rotation == 90 || rotation == 270;
    const int own_width = lies ? height : width;
    const int own_height = lies ? width : height;
    const bool fits =
        rotation != 0 && unturned_ && unturned_->width == own_width && unturned_->height == own_height;
    if (!fits) unturned_.reset();
    const auto made = fits ? unturned_ : pool_->make(own_width, own_height);
    if (is_plain(frame)) {
        scale_plain(frame, *made);
    } else if (!scale_any(frame, *made)) {
        return picture_kind_is_unknown();
    }
    if (rotation == 0) return made;
    unturned_ = made;
    auto turned = pool_->make(width, height);
    libyuv::ARGBRotate(made->bytes.data(), made->stride, turned->bytes.data(), turned->stride, own_width,
                       own_height, static_cast<libyuv::RotationMode>(rotation));
    return turned;
}

}  // namespace vistels
