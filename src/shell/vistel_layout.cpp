// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/vistel_layout.h"

#include <algorithm>
#include <cmath>

namespace vistels {

namespace {

QRect inside(const QRect& room, double aspect) {
    int width = room.width();
    int height = static_cast<int>(std::lround(width / aspect));
    if (height > room.height()) {
        height = room.height();
        width = static_cast<int>(std::lround(height * aspect));
    }
    return {room.left() + (room.width() - width) / 2, room.top() + (room.height() - height) / 2,
            std::max(1, width), std::max(1, height)};
}

}  // namespace

QRect video_area(const QRect& room, const std::vector<rectangle>& frames, double picture_aspect,
                 double ratio) {
    if (ratio > 0 && !frames.empty()) return inside(room, ratio);
    if (frames.empty() || !(picture_aspect > 0)) return room;
    const rectangle& first = frames.front();
    if (!(first.width > 0) || !(first.height > 0)) return room;
    return inside(room, picture_aspect * first.height / first.width);
}

QRect view_of(const QRect& area, const rectangle& frame, int gap) {
    const auto edge = [](int from, int size, double share) {
        return from + static_cast<int>(std::lround(std::clamp(share, 0.0, 1.0) * size));
    };
    const int left = edge(area.left(), area.width(), frame.x);
    const int top = edge(area.top(), area.height(), frame.y);
    int right = edge(area.left(), area.width(), frame.x + frame.width);
    int bottom = edge(area.top(), area.height(), frame.y + frame.height);
    if (right < area.left() + area.width()) right -= gap;
    if (bottom < area.top() + area.height()) bottom -= gap;
    return {left, top, std::max(1, right - left), std::max(1, bottom - top)};
}

QRect picture_in(const QRect& view, double picture_aspect) {
    if (!(picture_aspect > 0)) return view;
    const QRect fitted = inside(view, picture_aspect);
    // A sliver at the side would look like a fault.
    const bool nearly = view.width() - fitted.width() <= 2 && view.height() - fitted.height() <= 2;
    return nearly ? view : fitted;
}

}  // namespace vistels
