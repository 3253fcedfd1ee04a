// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "util/result.h"

namespace vistels {

// One frame of a movie, ready to be painted: rows from the top, 4 bytes a pixel in the order B, G, R, 255.
// Does not change once it is handed out.
struct picture {
    int width = 0;
    int height = 0;
    int stride = 0;                   // bytes from one row to the next, a multiple of 64
    std::vector<std::uint8_t> bytes;  // stride * height
    double time = 0;                  // seconds from the movie's first frame to this one
    double until = 0;                 // ... and to the next one, or to the movie's end
    std::int64_t stamp = 0;           // `time` and `until` in the stream's time base
    std::int64_t until_stamp = 0;
    bool last = false;    // no frame comes after it
    bool sparse = false;  // frames between this one and the next were passed over: the next one may be nearer

    const std::uint8_t* row(int y) const {
        return bytes.data() + static_cast<std::size_t>(y) * static_cast<std::size_t>(stride);
    }
};

using picture_pointer = std::shared_ptr<const picture>;

// How many bytes the pixels of a picture take.
std::size_t picture_bytes(int width, int height);

// Makes pictures and counts their memory, until the last one who holds a picture lets go of it. The memory of
// one picture that was let go is kept for the next one of the same size. Any thread.
class picture_pool {
  public:
    // `count`, when given, is told of bytes that are taken (or given back, below 0), on the thread that takes
    // them or lets them go.
    explicit picture_pool(std::function<void(std::ptrdiff_t)> count = {});
    ~picture_pool();
    picture_pool(const picture_pool&) = delete;
    picture_pool& operator=(const picture_pool&) = delete;
    // A picture of that size whose pixels are not set yet; it may outlive the pool.
    std::shared_ptr<picture> make(int width, int height);
    // Memory is kept for the next picture as long as all of it is within that; no picture is refused.
    void keep_within(std::size_t bytes);
    // Whether it is within that with one more picture of so many bytes.
    bool has_room(std::size_t bytes) const;

  private:
    struct shelf;
    std::shared_ptr<shelf> shelf_;
};

// Reads a picture file (PNG, JPEG) as large as fits into `width` times `height` (0: in its own size). The
// fourth byte of a pixel is its opacity, 0 to 255. Fails when built without media. Any thread.
result<picture> read_still_picture(const std::string& path, int width, int height);

// Writes a picture as a PNG file. Fails when built without media.
result<void> write_png(const picture& shown, const std::string& path);

}  // namespace vistels
