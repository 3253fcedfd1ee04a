// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/event/picture_wishes.h"

#include "app/event/open_event.h"

namespace vistels {

picture_wishes::picture_wishes(open_event& event) : event_(event) {
    // A vistel that comes is seen from the beginning, as far as playback knows.
    collection_changed_ = event.collection_changed.connect([this] {
        if (views_.empty()) bring_all();
    });
}

void picture_wishes::add(const void* view) {
    const bool is_first = views_.empty();
    views_.try_emplace(view);
    if (is_first) bring_all();
}

void picture_wishes::remove(const void* view) {
    if (views_.erase(view) > 0) bring_all();
}

void picture_wishes::set_seen(const void* view, const std::string& vistel, bool seen) {
    views_[view][vistel].is_seen = seen;
    bring(vistel);
}

void picture_wishes::set_size(const void* view, const std::string& vistel, QSize size) {
    views_[view][vistel].size = size;
    bring(vistel);
}

void picture_wishes::settle() {
    if (views_.empty()) bring_all();
}

void picture_wishes::bring(const std::string& vistel) {
    wish all{false, {}};
    for (const auto& [view, wishes] : views_) {
        const auto known = wishes.find(vistel);
        const wish one = known == wishes.end() ? wish() : known->second;
        all.is_seen = all.is_seen || one.is_seen;
        if (one.is_seen && one.size.width() > all.size.width()) all.size = one.size;
    }
    synchronised_playback& playback = event_.playback();
    if (!all.size.isEmpty()) playback.set_view_size(vistel, all.size.width(), all.size.height());
    playback.set_seen(vistel, all.is_seen);
}

void picture_wishes::bring_all() {
    for (const auto& one : event_.collection().vistels()) bring(one->uuid());
}

}  // namespace vistels
