// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/panes/collection/vistel_layout.h"

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

// The area's width to height; 0: whatever room there is.
double ratio_of_area(const std::vector<rectangle>& frames, double picture_aspect, double ratio) {
    if (frames.empty()) return 0;
    if (ratio > 0) return ratio;
    const rectangle& first = frames.front();
    if (!(picture_aspect > 0) || !(first.width > 0) || !(first.height > 0)) return 0;
    return picture_aspect * first.height / first.width;
}

// The middle one, so that a single large vistel does not make the others small.
double usual_height(const std::vector<rectangle>& frames) {
    std::vector<double> heights;
    for (const auto& one : frames) heights.push_back(one.height);
    const auto middle = heights.begin() + static_cast<std::ptrdiff_t>((heights.size() - 1) / 2);
    std::nth_element(heights.begin(), middle, heights.end());
    return *middle;
}

}  // namespace

QRect video_area(const QRect& room, const std::vector<rectangle>& frames, double picture_aspect,
                 double ratio) {
    const double wanted = ratio_of_area(frames, picture_aspect, ratio);
    return wanted > 0 ? inside(room, wanted) : room;
}

QRect scrolling_video_area(const QRect& room, const std::vector<rectangle>& frames, double picture_aspect,
                           double ratio, int bar) {
    const double wanted = ratio_of_area(frames, picture_aspect, ratio);
    if (!(wanted > 0)) return room;
    const int beside_bar = std::max(1, room.width() - bar);
    double width = beside_bar;
    if (const double usual = usual_height(frames); usual > 0)
        width = std::min(width, room.height() / usual * wanted);
    const int height = static_cast<int>(std::lround(width / wanted));
    if (height <= room.height()) return inside(room, wanted);
    const int across = std::max(1, static_cast<int>(std::lround(width)));
    return {room.left() + (beside_bar - across) / 2, room.top(), across, height};
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
