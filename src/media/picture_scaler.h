// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// For the sources of this folder only: decoded frames into pictures.

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "media/ffmpeg_handles.h"
#include "media/picture.h"
#include "util/result.h"

namespace vistels {

// Turns decoded frames into pictures of an asked size.
class picture_scaler {
  public:
    explicit picture_scaler(std::shared_ptr<picture_pool> pool) : pool_(std::move(pool)) {}

    // `rotation`: degrees clockwise by which the frame is turned first. One thread at a time.
    result<std::shared_ptr<picture>> scale(const AVFrame& frame, int width, int height, int rotation);

  private:
    void scale_plain(const AVFrame& frame, picture& to);
    void halve_plain(const AVFrame& frame, std::uint8_t* to, int stride);
    bool scale_any(const AVFrame& frame, picture& to);

    ffmpeg_owner<SwsContext> context_;
    const std::shared_ptr<picture_pool> pool_;
    std::shared_ptr<picture> unturned_;
    // Between two steps; as large as the frame, or half as wide and high.
    std::vector<std::uint8_t> luma_;
    std::vector<std::uint8_t> pixels_;
};

}  // namespace vistels
