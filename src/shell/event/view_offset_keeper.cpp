// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/event/view_offset_keeper.h"

#include <chrono>
#include <utility>

#include "app/settings/settings.h"
#include "shell/panes/collection/collection_view.h"

namespace vistels {

namespace {

constexpr auto rest_before_keeping = std::chrono::seconds(1);

}  // namespace

view_offset_keeper::view_offset_keeper(collection_view& view, home_places places)
    : view_(view), places_(std::move(places)) {
    rest_time_.setSingleShot(true);
    rest_time_.setInterval(rest_before_keeping);
    connect(&rest_time_, &QTimer::timeout, this, &view_offset_keeper::keep);
    connect(&view, &collection_view::scrolled, this, [this](double offset) {
        unwritten_ = offset;
        rest_time_.start();
    });
}

view_offset_keeper::~view_offset_keeper() {
    keep();
}

void view_offset_keeper::restore() {
    keep();
    view_.set_offset(load_view_offsets(places_).vertical);
}

// What cannot be kept is no reason to disturb: it is tried again with the next turn of the wheel.
void view_offset_keeper::keep() {
    rest_time_.stop();
    if (!unwritten_) return;
    (void)save_view_offsets(places_, {*unwritten_});
    unwritten_.reset();
}

}  // namespace vistels
