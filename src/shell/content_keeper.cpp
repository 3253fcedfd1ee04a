// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/content_keeper.h"

#include <utility>

namespace vistels {

content_keeper::content_keeper(home_places places, run_loop& loop, std::function<void(const finding&)> found)
    : places_(std::move(places)),
      loop_(loop),
      found_(std::make_shared<std::function<void(const finding&)>>(std::move(found))) {}

content_keeper::~content_keeper() {
    queue_.forget_waiting();
}

void content_keeper::refresh() {
    queue_.forget_waiting();
    queue_.post([this] { look(); });
}

void content_keeper::look() {
    finding what;
    what.vaults = read_content(places_);
    if (const auto space = space_of(places_.home_vault)) what.space = space.value();
    hand_over(what);
    count_clips(what.vaults);
    hand_over(std::move(what));
}

void content_keeper::hand_over(finding what) {
    // The keeper may be gone when the loop comes to it.
    loop_.post([weak = std::weak_ptr(found_), what = std::move(what)] {
        if (const auto found = weak.lock()) (*found)(what);
    });
}

}  // namespace vistels
