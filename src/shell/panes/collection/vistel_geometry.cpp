// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/panes/collection/vistel_geometry.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "video/video_collection_ROOT.h"

namespace vistels {

namespace {

// The small vistels beside a large one have at most this share of its width.
constexpr double widest_small_share = 0.5;

struct snap {
    double by = 0;    // pixels
    double line = 0;  // fraction of the area
};

// One side of the area (across or down), in pixels.
struct axis {
    double size;                // of the area
    std::vector<double> lines;  // fractions

    std::optional<snap> nearest(double at, double reach) const {
        std::optional<snap> best;
        for (const double line : lines) {
            const double by = line * size - at;
            if (std::abs(by) <= reach && (!best || std::abs(by) < std::abs(best->by))) best = snap{by, line};
        }
        return best;
    }
};

axis across(const frame_drag& drag) {
    axis made{drag.area.width(), {0, 1}};
    for (const auto& one : drag.others) made.lines.insert(made.lines.end(), {one.x, one.x + one.width});
    return made;
}

axis down(const frame_drag& drag) {
    axis made{drag.area.height(), {0, 1}};
    for (const auto& one : drag.others) made.lines.insert(made.lines.end(), {one.y, one.y + one.height});
    return made;
}

struct moved_span {
    double from = 0;  // pixels
    double size = 0;
    std::optional<double> guide;
};

// Either edge may meet a line; the nearer one wins.
moved_span move_span(const axis& along, double from, double size, double by, double reach) {
    const double room = std::max(0.0, along.size - size);
    moved_span made{std::clamp(from + by, 0.0, room), size, {}};
    const auto low = along.nearest(made.from, reach);
    const auto high = along.nearest(made.from + size, reach);
    auto best = low;
    if (high && (!best || std::abs(high->by) < std::abs(best->by))) best = high;
    if (!best || made.from + best->by < -0.5 || made.from + best->by > room + 0.5) return made;
    made.from = std::clamp(made.from + best->by, 0.0, room);
    made.guide = best->line;
    return made;
}

moved_span stretch_span(const axis& along, double from, double size, bool low, bool high, double by,
                        const frame_drag& drag) {
    moved_span made{from, size, {}};
    if (!low && !high) return made;
    const double still = low ? from + size : from;
    const double least = std::min(drag.least_pixels, along.size);
    double edge = std::clamp((low ? from : from + size) + by, 0.0, along.size);
    if (const auto found = along.nearest(edge, drag.snap_pixels)) {
        edge += found->by;
        made.guide = found->line;
    }
    const double wanted = low ? std::min(edge, still - least) : std::max(edge, still + least);
    if (wanted != edge) made.guide.reset();
    made.from = low ? std::max(0.0, wanted) : still;
    made.size = std::abs(wanted - still);
    return made;
}

// Resizing by one factor about the edges that stay. An edge that nobody holds goes right or down.
struct scaling {
    double still_x, still_y;  // pixels
    double width, height;     // at the start
    double sign_x, sign_y;

    double edge_x(double factor) const { return still_x + sign_x * width * factor; }
    double edge_y(double factor) const { return still_y + sign_y * height * factor; }
};

scaling scaling_of(const frame_drag& drag) {
    const double x = drag.start.x * drag.area.width();
    const double y = drag.start.y * drag.area.height();
    const double width = drag.start.width * drag.area.width();
    const double height = drag.start.height * drag.area.height();
    return {drag.grip.left ? x + width : x, drag.grip.top ? y + height : y, width, height,
            drag.grip.left ? -1.0 : 1.0,    drag.grip.top ? -1.0 : 1.0};
}

double wanted_factor(const frame_drag& drag, const scaling& about, QPointF moved) {
    const bool by_x = drag.grip.left || drag.grip.right;
    const bool by_y = drag.grip.top || drag.grip.bottom;
    const double x = 1 + about.sign_x * moved.x() / about.width;
    const double y = 1 + about.sign_y * moved.y() / about.height;
    return by_x && by_y ? std::max(x, y) : by_x ? x : y;
}

dragged_frame scale_frame(const frame_drag& drag, QPointF moved) {
    const scaling about = scaling_of(drag);
    const double room_x = about.sign_x > 0 ? drag.area.width() - about.still_x : about.still_x;
    const double room_y = about.sign_y > 0 ? drag.area.height() - about.still_y : about.still_y;
    const double most = std::min(room_x / about.width, room_y / about.height);
    const double least = std::min(most, drag.least_pixels / std::min(about.width, about.height));
    double factor = std::clamp(wanted_factor(drag, about, moved), least, most);
    dragged_frame made;
    const auto by_x = across(drag).nearest(about.edge_x(factor), drag.snap_pixels);
    const auto by_y = down(drag).nearest(about.edge_y(factor), drag.snap_pixels);
    const double to_x = by_x ? factor + about.sign_x * by_x->by / about.width : 0;
    const double to_y = by_y ? factor + about.sign_y * by_y->by / about.height : 0;
    const double slack = 1e-9;
    const auto fits = [&](double to) { return to >= least - slack && to <= most + slack; };
    const bool x_wins =
        by_x && fits(to_x) && (!by_y || !fits(to_y) || std::abs(by_x->by) <= std::abs(by_y->by));
    if (x_wins) {
        factor = to_x;
    } else if (by_y && fits(to_y)) {
        factor = to_y;
    }
    // Both lines are met at once where the shape allows it.
    const auto meets = [&](const std::optional<snap>& line, double at, double size) {
        return line && std::abs(line->line * size - at) < 0.5;
    };
    if (meets(by_x, about.edge_x(factor), drag.area.width())) made.guide_x = by_x->line;
    if (meets(by_y, about.edge_y(factor), drag.area.height())) made.guide_y = by_y->line;
    const double width = about.width * factor / drag.area.width();
    const double height = about.height * factor / drag.area.height();
    made.frame = {std::max(0.0, drag.grip.left ? drag.start.x + drag.start.width - width : drag.start.x),
                  std::max(0.0, drag.grip.top ? drag.start.y + drag.start.height - height : drag.start.y),
                  width, height};
    return made;
}

ready_frames one_large_frames(std::size_t count, double aspect, std::size_t large) {
    const std::size_t small = count - 1;
    std::size_t columns = 1;
    const auto lines_of = [small](std::size_t in) { return std::max<std::size_t>(2, (small + in - 1) / in); };
    while (columns < small && static_cast<double>(columns + 1) <=
                                  widest_small_share * static_cast<double>(lines_of(columns + 1))) {
        ++columns;
    }
    const auto lines = static_cast<double>(lines_of(columns));
    const double beside = static_cast<double>(columns) / lines;  // in widths of the large one
    ready_frames made;
    made.ratio = aspect * (1 + beside);
    const double large_width = 1 / (1 + beside);
    const double width = large_width / lines;
    std::size_t at = 0;
    for (std::size_t i = 0; i < count; ++i) {
        if (i == large) {
            made.frames.push_back({0, 0, large_width, 1});
            continue;
        }
        const auto column = static_cast<double>(at / lines_of(columns));
        const auto line = static_cast<double>(at % lines_of(columns));
        made.frames.push_back({large_width + column * width, line / lines, width, 1 / lines});
        ++at;
    }
    return made;
}

}  // namespace

frame_grip edges_at(const QRect& view, const QPoint& point, int reach) {
    frame_grip grip;
    if (!view.contains(point)) return grip;
    const auto near_to = [](int away, int far) { return away >= 0 && away < far; };
    const int from_left = point.x() - view.left();
    const int from_top = point.y() - view.top();
    const int from_right = view.right() - point.x();
    const int from_bottom = view.bottom() - point.y();
    const int corner = 2 * reach;
    const bool is_corner =
        std::min(from_left, from_right) < corner && std::min(from_top, from_bottom) < corner;
    const int far = is_corner ? corner : reach;
    grip.left = near_to(from_left, far) && from_left <= from_right;
    grip.right = near_to(from_right, far) && !grip.left;
    grip.top = near_to(from_top, far) && from_top <= from_bottom;
    grip.bottom = near_to(from_bottom, far) && !grip.top;
    return grip;
}

dragged_frame drag_frame(const frame_drag& drag, QPointF moved) {
    const double area_width = drag.area.width();
    const double area_height = drag.area.height();
    if (!(area_width > 0) || !(area_height > 0) || !drag.grip.holds() || !(drag.start.width > 0) ||
        !(drag.start.height > 0)) {
        return {drag.start, {}, {}};
    }
    if (!drag.grip.whole && drag.keeps_shape) return scale_frame(drag, moved);
    const rectangle& start = drag.start;
    moved_span x;
    moved_span y;
    if (drag.grip.whole) {
        x = move_span(across(drag), start.x * area_width, start.width * area_width, moved.x(),
                      drag.snap_pixels);
        y = move_span(down(drag), start.y * area_height, start.height * area_height, moved.y(),
                      drag.snap_pixels);
    } else {
        x = stretch_span(across(drag), start.x * area_width, start.width * area_width, drag.grip.left,
                         drag.grip.right, moved.x(), drag);
        y = stretch_span(down(drag), start.y * area_height, start.height * area_height, drag.grip.top,
                         drag.grip.bottom, moved.y(), drag);
    }
    return {{x.from / area_width, y.from / area_height, x.size / area_width, y.size / area_height},
            x.guide,
            y.guide};
}

ready_frames ready_layout_frames(ready_layout layout, std::size_t count, double picture_aspect,
                                 std::size_t large) {
    const double aspect = picture_aspect > 0 ? picture_aspect : 16.0 / 9;
    const bool scrolls = layout == ready_layout::two_columns;
    if (count == 0) return {aspect, {}, scrolls};
    if (count == 1) return {aspect, {{0, 0, 1, 1}}, scrolls};
    if (layout == ready_layout::one_large) return one_large_frames(count, aspect, std::min(large, count - 1));
    ready_frames made;
    made.scrolls = scrolls;
    if (layout == ready_layout::grid) {
        made.frames = grid_layout(count);
    } else if (layout == ready_layout::two_columns) {
        const double height = 1.0 / static_cast<double>((count + 1) / 2);
        for (std::size_t i = 0; i < count; ++i)
            made.frames.push_back({i % 2 == 0 ? 0 : 0.5, static_cast<double>(i / 2) * height, 0.5, height});
    } else {
        const double width = 1.0 / static_cast<double>(count);
        for (std::size_t i = 0; i < count; ++i)
            made.frames.push_back({static_cast<double>(i) * width, 0, width, 1});
    }
    made.ratio = aspect * made.frames.front().height / made.frames.front().width;
    return made;
}

std::vector<placed_vistel> restacked(std::vector<placed_vistel> vistels, const std::string& uuid,
                                     bool front) {
    std::vector<placed_vistel*> from_back;
    for (auto& one : vistels) from_back.push_back(&one);
    std::stable_sort(from_back.begin(), from_back.end(), [&](const auto* a, const auto* b) {
        if ((a->uuid == uuid) != (b->uuid == uuid)) return (a->uuid == uuid) != front;
        return a->order < b->order;
    });
    int order = 0;
    for (auto* one : from_back) one->order = order++;
    return vistels;
}

}  // namespace vistels
