// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPoint>
#include <QPointF>
#include <QRect>
#include <QSizeF>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "util/colour_text.h"

namespace vistels {

// How the vistels of a collection lie: moving and resizing one, and the ready layouts. Frames are fractions
// of the video area. Any thread.

// Where one vistel lies, and how far in front: the greater order covers the smaller.
struct placed_vistel {
    std::string uuid;
    rectangle frame;
    int order = 0;
    bool operator==(const placed_vistel&) const = default;
};

struct vistel_arrangement {
    double ratio = 0;      // width to height of the video area; 0: as the first frame asks for
    bool scrolls = false;  // the area is as wide as its pane and may be higher
    std::vector<placed_vistel> vistels;
    bool operator==(const vistel_arrangement&) const = default;
};

// What of a view is held: the whole of it, or some of its edges.
struct frame_grip {
    bool whole = false;
    bool left = false;
    bool top = false;
    bool right = false;
    bool bottom = false;

    bool holds() const { return whole || left || top || right || bottom; }
    bool operator==(const frame_grip&) const = default;
};

// The edges of `view` within `reach` pixels inside of `point`; both edges at a corner, which reaches twice as
// far.
frame_grip edges_at(const QRect& view, const QPoint& point, int reach);

// A drag from its beginning on.
struct frame_drag {
    rectangle start;
    frame_grip grip;
    std::vector<rectangle> others;
    QSizeF area;              // pixels
    double snap_pixels = 0;   // 0: nothing snaps
    double least_pixels = 1;  // of either side
    bool keeps_shape = true;  // width to height stays while edges are dragged
};

struct dragged_frame {
    rectangle frame;
    std::optional<double> guide_x;  // the line that it snapped to, as a fraction of the area
    std::optional<double> guide_y;
};

// Where the frame is after the pointer moved by so many pixels. It stays inside the area and snaps to the
// area's edges and to those of the others.
dragged_frame drag_frame(const frame_drag& drag, QPointF moved);

enum class ready_layout { grid, one_large, side_by_side, two_columns };

// Frames for `count` vistels whose pictures have that aspect, with the ratio of the area that leaves no bars.
// In `one_large` the vistel with the index `large` has most of the room, and the rest stand in columns at its
// right in their order. `two_columns` scrolls.
struct ready_frames {
    double ratio = 0;
    std::vector<rectangle> frames;
    bool scrolls = false;
};
ready_frames ready_layout_frames(ready_layout layout, std::size_t count, double picture_aspect,
                                 std::size_t large = 0);

// The vistels with `uuid` moved in front of all others, or behind them. Orders become 0, 1, 2 ... from the
// back.
std::vector<placed_vistel> restacked(std::vector<placed_vistel> vistels, const std::string& uuid, bool front);

}  // namespace vistels
