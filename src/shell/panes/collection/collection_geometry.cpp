// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/panes/collection/collection_geometry.h"

#include <algorithm>
#include <cmath>

#include "shell/panes/collection/collection_metrics.h"
#include "shell/panes/collection/vistel_layout.h"

namespace vistels {

const collection_geometry::laid_vistel* collection_geometry::find(const std::string& vistel) const {
    const auto found = std::find_if(vistels_.begin(), vistels_.end(),
                                    [&](const laid_vistel& one) { return one.placed.uuid == vistel; });
    return found == vistels_.end() ? nullptr : &*found;
}

void collection_geometry::set_vistels(std::vector<placed_vistel> vistels, double ratio, bool scrolls) {
    std::vector<laid_vistel> laid;
    for (auto& one : vistels) {
        const laid_vistel* before = find(one.uuid);
        laid_vistel made = before ? *before : laid_vistel();
        made.placed = std::move(one);
        laid.push_back(std::move(made));
    }
    vistels_ = std::move(laid);
    ratio_ = ratio;
    scrolls_ = scrolls;
    if (!has(enlarged_)) enlarged_.clear();
    if (!has(leaving_)) leaving_.clear();
    if (!has(held_)) held_.clear();
}

bool collection_geometry::set_aspect(const std::string& vistel, double aspect) {
    auto* one = const_cast<laid_vistel*>(find(vistel));
    if (!one || !(aspect > 0) || one->aspect == aspect) return false;
    one->aspect = aspect;
    return true;
}

bool collection_geometry::lay_out(const QRect& room, int bar_width) {
    room_ = room;
    std::vector<rectangle> frames;
    for (const auto& one : vistels_) frames.push_back(one.placed.frame);
    const double aspect = empty() ? 0 : vistels_.front().aspect;
    area_ = scrolls_ && !empty() ? scrolling_video_area(room, frames, aspect, ratio_, bar_width)
                                 : video_area(room, frames, aspect, ratio_);
    return place_area();
}

int collection_geometry::greatest_offset() const {
    return std::max(0, area_.height() - room_.height());
}

bool collection_geometry::place_area() {
    const int before = offset_;
    const int over = greatest_offset();
    const double wanted = wanted_offset_.value_or(top_widths_ * area_.width());
    offset_ = static_cast<int>(std::lround(std::clamp(wanted, 0.0, over * 1.0)));
    if (over == 0) return false;
    area_.moveTop(-offset_);
    return !wanted_offset_ && offset_ != before;
}

void collection_geometry::scroll_to(int offset) {
    wanted_offset_.reset();
    offset_ = offset;
    top_widths_ = area_.width() > 0 ? static_cast<double>(offset) / area_.width() : 0;
    area_.moveTop(-offset);
}

int collection_geometry::offset_showing(const std::string& vistel) const {
    if (!has(vistel) || greatest_offset() == 0) return offset_;
    // With the gap below it, as whole lines of vistels are seen.
    const QRect seen = home(vistel).adjusted(0, 0, 0, collection_sizes.vistel_gap);
    const int height = room_.height();
    if (seen.top() < 0 || seen.height() > height) return offset_ + seen.top();
    if (seen.bottom() >= height) return offset_ + seen.bottom() - height + 1;
    return offset_;
}

bool collection_geometry::is_in_sight(const std::string& vistel) const {
    return has(vistel) && (vistel == enlarged_ || vistel == leaving_ || home(vistel).intersects(room_));
}

std::string collection_geometry::beside(const std::string& vistel, int direction) const {
    const laid_vistel* one = find(vistel);
    if (!one) return first();
    const auto count = static_cast<int>(vistels_.size());
    const auto next = (static_cast<int>(one - vistels_.data()) + direction + count) % count;
    return vistels_[static_cast<std::size_t>(next)].placed.uuid;
}

double collection_geometry::aspect_of(const std::string& vistel) const {
    const laid_vistel* one = find(vistel);
    return one ? one->aspect : 0;
}

vistel_arrangement collection_geometry::arrangement() const {
    vistel_arrangement now;
    // Whatever is moved from here on, the others stay where they are.
    now.ratio = area_.height() > 0 ? static_cast<double>(area_.width()) / area_.height() : ratio_;
    if (ratio_ > 0) now.ratio = ratio_;
    now.scrolls = scrolls_;
    for (const auto& one : vistels_) now.vistels.push_back(one.placed);
    return now;
}

void collection_geometry::enlarge(const std::string& vistel) {
    leaving_ = enlarged_;
    enlarged_ = has(vistel) ? vistel : std::string();
    growth_ = 0;
}

void collection_geometry::end_growth() {
    growth_ = 1;
    leaving_.clear();
}

QRect collection_geometry::home(const std::string& vistel) const {
    const laid_vistel* one = find(vistel);
    if (!one) return {};
    const bool is_held = held_ == vistel && held_frame_;
    return view_of(area_, is_held ? *held_frame_ : one->placed.frame, collection_sizes.vistel_gap);
}

QRect collection_geometry::place(const std::string& vistel) const {
    if (!has(vistel)) return {};
    const bool grows = vistel == enlarged_;
    const QRect from = home(vistel);
    if (!grows && vistel != leaving_) return from;
    const double share = grows ? growth_ : 1 - growth_;
    const auto between = [share](int at_home, int enlarged) {
        return at_home + static_cast<int>(std::lround((enlarged - at_home) * share));
    };
    return {QPoint(between(from.left(), room_.left()), between(from.top(), room_.top())),
            QPoint(between(from.right(), room_.right()), between(from.bottom(), room_.bottom()))};
}

std::vector<std::string> collection_geometry::from_back() const {
    std::vector<const placed_vistel*> order;
    for (const auto& one : vistels_) order.push_back(&one.placed);
    std::stable_sort(order.begin(), order.end(),
                     [](const auto* a, const auto* b) { return a->order < b->order; });
    const auto held =
        std::find_if(order.begin(), order.end(), [this](const auto* one) { return one->uuid == held_; });
    if (held != order.end()) std::rotate(held, held + 1, order.end());
    std::vector<std::string> names;
    for (const auto* one : order) names.push_back(one->uuid);
    return names;
}

std::string collection_geometry::at(const QPoint& point) const {
    if (!enlarged_.empty()) return enlarged_;
    const auto order = from_back();
    const auto found = std::find_if(order.rbegin(), order.rend(),
                                    [&](const std::string& one) { return place(one).contains(point); });
    return found == order.rend() ? std::string() : *found;
}

frame_drag collection_geometry::drag_of(const std::string& vistel, frame_grip grip) const {
    frame_drag drag;
    drag.grip = grip;
    for (const auto& one : vistels_) {
        if (one.placed.uuid == vistel) {
            drag.start = one.placed.frame;
        } else {
            drag.others.push_back(one.placed.frame);
        }
    }
    drag.area = area_.size();
    drag.snap_pixels = collection_sizes.vistel_snap;
    drag.least_pixels = collection_sizes.vistel_least;
    return drag;
}

void collection_geometry::hold(const std::string& vistel, const std::optional<rectangle>& frame) {
    held_ = vistel;
    held_frame_ = frame;
}

}  // namespace vistels
