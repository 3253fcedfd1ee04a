// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/panes/collection/vistel_placing.h"

#include <algorithm>
#include <cmath>

namespace vistels {

namespace {

// A new vistel among placed ones has this share of the area's sides, each further one a little farther up.
constexpr double new_share = 1.0 / 3;
constexpr double new_step = 0.04;
constexpr int most_steps = 12;

bool is_close(const rectangle& a, const rectangle& b) {
    const double near = 0.01;
    return std::abs(a.x - b.x) < near && std::abs(a.y - b.y) < near && std::abs(a.width - b.width) < near &&
           std::abs(a.height - b.height) < near;
}

// Below all others, in two columns: the area gets higher by these lines.
void append_lines(vistel_arrangement& wanted, const std::vector<std::size_t>& added, double picture_aspect) {
    const double aspect = picture_aspect > 0 ? picture_aspect : 16.0 / 9;
    double bottom = 0;
    for (std::size_t i = 0; i < wanted.vistels.size(); ++i) {
        const bool is_new = std::find(added.begin(), added.end(), i) != added.end();
        const rectangle& frame = wanted.vistels[i].frame;
        if (!is_new) bottom = std::max(bottom, frame.y + frame.height);
    }
    const double line = 0.5 * wanted.ratio / aspect;  // of the height as it was
    for (std::size_t i = 0; i < added.size(); ++i) {
        wanted.vistels[added[i]].frame = {i % 2 == 0 ? 0 : 0.5, bottom + static_cast<double>(i / 2) * line,
                                          0.5, line};
    }
    const double height = std::max(1.0, bottom + static_cast<double>((added.size() + 1) / 2) * line);
    for (auto& one : wanted.vistels) {
        one.frame.y /= height;
        one.frame.height /= height;
    }
    wanted.ratio /= height;
}

}  // namespace

vistel_arrangement arrangement_of(const video_collection_ROOT& collection) {
    const auto all = collection.vistels();
    const auto grid = grid_layout(all.size());
    vistel_arrangement made;
    made.ratio = collection.outside_bounds_ratio().value_or(0);
    made.scrolls = collection.area_scrolls();
    for (std::size_t i = 0; i < all.size(); ++i) {
        made.vistels.push_back(
            {all[i]->uuid(), all[i]->proportion_rect().value_or(grid[i]), all[i]->saved_view_order()});
    }
    return made;
}

std::optional<ready_layout> placing_of(const video_collection_ROOT& collection, double picture_aspect) {
    const vistel_arrangement now = arrangement_of(collection);
    const std::size_t count = now.vistels.size();
    if (count == 0) return now.scrolls ? ready_layout::two_columns : ready_layout::grid;
    for (const auto layout : {ready_layout::grid, ready_layout::side_by_side, ready_layout::one_large,
                              ready_layout::two_columns}) {
        for (std::size_t large = 0; large < (layout == ready_layout::one_large ? count : 1); ++large) {
            const auto ready = ready_layout_frames(layout, count, picture_aspect, large);
            if (ready.scrolls != now.scrolls) continue;
            std::size_t alike = 0;
            while (alike < count && is_close(ready.frames[alike], now.vistels[alike].frame)) ++alike;
            if (alike == count) return layout;
        }
    }
    return {};
}

void place_again(video_collection_ROOT& collection, std::optional<ready_layout> layout,
                 double picture_aspect) {
    vistel_arrangement wanted = arrangement_of(collection);
    const std::size_t count = wanted.vistels.size();
    if (layout) {
        const auto widest =
            std::max_element(wanted.vistels.begin(), wanted.vistels.end(),
                             [](const auto& a, const auto& b) { return a.frame.width < b.frame.width; });
        const auto large = static_cast<std::size_t>(widest - wanted.vistels.begin());
        const auto ready = ready_layout_frames(*layout, count, picture_aspect, large);
        wanted.ratio = ready.ratio;
        wanted.scrolls = ready.scrolls;
        for (std::size_t i = 0; i < count; ++i) wanted.vistels[i].frame = ready.frames[i];
        return set_arrangement(collection, wanted);
    }
    const auto all = collection.vistels();
    if (wanted.scrolls && wanted.ratio > 0) {
        std::vector<std::size_t> added;
        for (std::size_t i = 0; i < count; ++i) {
            if (!all[i]->proportion_rect()) added.push_back(i);
        }
        append_lines(wanted, added, picture_aspect);
        return set_arrangement(collection, wanted);
    }
    int next = 0;
    for (std::size_t i = 0; i < count; ++i) {
        if (all[i]->proportion_rect()) continue;
        const double back = new_step * (next++ % most_steps);
        const double at = 1 - new_share - back;
        wanted.vistels[i].frame = {at, at, new_share, new_share};
        wanted.vistels = restacked(std::move(wanted.vistels), all[i]->uuid(), true);
    }
    set_arrangement(collection, wanted);
}

void set_arrangement(video_collection_ROOT& collection, const vistel_arrangement& wanted) {
    if (wanted.ratio > 0) collection.set_outside_bounds_ratio(wanted.ratio);
    collection.set_area_scrolls(wanted.scrolls);
    for (const auto& one : wanted.vistels) {
        const auto found = collection.find_vistel(one.uuid);
        if (!found) continue;
        found->set_proportion_rect(one.frame);
        found->set_saved_view_order(one.order);
    }
}

}  // namespace vistels
