// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QBackingStore>
#include <QImage>
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "demo/block_code.h"
#include "media/movie_writer.h"
#include "shell/panes/collection/collection_view.h"
#include "shell/panes/collection/vistel_layout.h"

namespace vistels::testing {

// Writes a movie whose every frame carries its number, from 0, as a block code.
inline result<void> write_block_coded_movie(const std::string& path, int width, int frame_rate,
                                            double seconds) {
    movie_writer_settings settings;
    settings.width = width;
    settings.height = width * 9 / 16;
    settings.frame_rate = frame_rate;
    settings.preset = "ultrafast";
    settings.gop_frames = frame_rate;
    auto writer = movie_writer::create(path, settings);
    if (!writer) return writer.error();
    const auto bytes = static_cast<std::size_t>(width) * static_cast<std::size_t>(settings.height) * 4;
    std::vector<std::uint8_t> pixels(bytes);
    const auto frames = static_cast<std::uint32_t>(std::lround(seconds * frame_rate));
    for (std::uint32_t frame = 0; frame < frames; ++frame) {
        // A band that moves, so that frames differ from each other.
        std::fill(pixels.begin(), pixels.end(), std::uint8_t{70});
        const std::size_t band = bytes / 8 * (frame % 7);
        std::fill_n(pixels.begin() + static_cast<std::ptrdiff_t>(band), bytes / 8, std::uint8_t{120});
        draw_block_code(pixels.data(), width, settings.height, width * 4, frame);
        if (auto added = writer.value()->add_picture(pixels.data(), width * 4); !added) return added;
    }
    return writer.value()->finish();
}

// The number in what the window has painted of a vistel; nothing when there is none to be read.
inline std::optional<std::uint32_t> painted_number(const collection_view& view, const std::string& vistel) {
    const QWidget* window = view.window();
    QBackingStore* const store = window->backingStore();
    const auto* painted = store ? dynamic_cast<const QImage*>(store->paintDevice()) : nullptr;
    const QRect place = view.place_of(vistel);
    if (!painted || place.isEmpty()) return std::nullopt;
    const QPoint corner = view.mapTo(window, QPoint());
    const QRect picture = picture_in(place, 16.0 / 9).translated(corner);
    if (!painted->rect().contains(picture)) return std::nullopt;
    const QImage shown = painted->copy(picture).convertToFormat(QImage::Format_RGB32);
    return read_block_code(shown.constBits(), shown.width(), shown.height(),
                           static_cast<int>(shown.bytesPerLine()));
}

}  // namespace vistels::testing
