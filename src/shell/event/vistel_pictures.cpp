// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/event/vistel_pictures.h"

#include <QImage>
#include <algorithm>
#include <chrono>
#include <cmath>
#include <limits>
#include <utility>

#include "app/event/offset_changes.h"
#include "app/event/open_event.h"
#include "shell/event/picture_wishes.h"
#include "shell/kit/pane_header.h"
#include "shell/panes/collection/collection_pane.h"
#include "shell/panes/collection/collection_view.h"
#include "util/file_system.h"
#include "video/synchronised_playback.h"
#include "video/video_coll_Offsets.h"
#include "video/video_coll_Pictures.h"
#include "video/video_coll_Playback.h"

namespace vistels {

namespace {

constexpr auto size_patience = std::chrono::milliseconds(80);

// The picture's pixels without a copy; they live as long as the image does.
QImage image_of(const picture_pointer& picture) {
    if (!picture) return {};
    auto* held = new picture_pointer(picture);
    return QImage(
        picture->bytes.data(), picture->width, picture->height, picture->stride, QImage::Format_RGB32,
        [](void* pointer) { delete static_cast<picture_pointer*>(pointer); }, held);
}

std::vector<shown_vistel> vistels_of(const video_collection_ROOT& collection, bool shows_names) {
    const auto all = collection.vistels();
    const auto grid = grid_layout(all.size());
    const std::string heard = collection.vistel_for_sound();
    const bool someone_heard = collection.find_vistel(heard) != nullptr;
    std::vector<shown_vistel> vistels;
    for (std::size_t i = 0; i < all.size(); ++i) {
        shown_vistel one;
        one.uuid = all[i]->uuid();
        one.name = vistel_chip_words(*all[i], i, collection.displays_vistel_number(), shows_names);
        one.frame = all[i]->proportion_rect().value_or(grid[i]);
        one.has_sound = someone_heard ? one.uuid == heard : i == 0;
        one.order = all[i]->saved_view_order();
        vistels.push_back(std::move(one));
    }
    return vistels;
}

}  // namespace

QString vistel_chip_words(const single_Vistel_CTR& vistel, std::size_t place, bool shows_number,
                          bool shows_name_with_number) {
    const QString name = QString::fromStdString(vistel.name());
    if (!shows_number) return name;
    const int own = vistel.vistel_number_displayed();
    const QString number = QString::number(own > 0 ? own : static_cast<int>(place) + 1);
    if (!shows_name_with_number || name.isEmpty()) return number;
    const bool has_it = name == number || name.startsWith(number + QLatin1Char(' '));
    return has_it ? name : number + QLatin1Char(' ') + name;
}

vistel_pictures::vistel_pictures(collection_pane& pane) : pane_(pane) {
    size_time_.setSingleShot(true);
    size_time_.setInterval(size_patience);
    connect(&size_time_, &QTimer::timeout, this, &vistel_pictures::tell_sizes);
    // While a border is dragged the pictures that are there are stretched.
    connect(&pane.view(), &collection_view::sizes_changed, &size_time_, qOverload<>(&QTimer::start));
    connect(&pane.view(), &collection_view::sight_changed, this, &vistel_pictures::tell_sight);
}

void vistel_pictures::set_event(open_event* event, picture_wishes* wishes) {
    if (wishes_) wishes_->remove(this);
    event_ = event;
    tally_.reset();
    wishes_ = wishes;
    if (wishes_) wishes_->add(this);
    shown_.clear();
    pane_.view().set_vistels({});
    pane_.header().set_name(tr("Collection"));
    pane_.header().set_fact({});
    pane_.view().set_has_collection(event_ && event_->has_collection());
    if (!event_) return;
    show_vistels();
    set_shows_health(shows_health_);
    show_pictures();
}

void vistel_pictures::set_shows_health(bool shows) {
    shows_health_ = shows;
    tally_.reset();
    if (!event_) return;
    if (shows) {
        tally_ =
            std::make_unique<playback_tally>(playback_vistels_of(event_->collection()), event_->playback());
    }
    for (const auto& one : shown_) pane_.view().set_health(one.first, {});
    show_health();
}

// On each vistel's chip, as "240 shown, 2 dropped, 3.1 ms, -0.02 s".
void vistel_pictures::show_health() {
    if (!tally_) return;
    for (const auto& vistel : tally_->health()) {
        pane_.view().set_health(vistel.uuid, tr("%1 shown, %2 dropped, %3 ms, %4 s")
                                                 .arg(vistel.frames)
                                                 .arg(vistel.dropped)
                                                 .arg(vistel.decode_milliseconds, 0, 'f', 1)
                                                 .arg(vistel.difference, 0, 'f', 2));
    }
}

void vistel_pictures::show_vistels() {
    if (!event_) return;
    const video_collection_ROOT& collection = event_->collection();
    auto vistels = vistels_of(collection, shows_names_);
    const bool is_first = shown_.empty();
    bool came_or_went =
        std::erase_if(shown_, [&](const auto& one) { return !collection.find_vistel(one.first); }) > 0;
    for (auto& one : vistels) {
        const auto [known, came] = shown_.try_emplace(one.uuid);
        if (came) known->second.is_new = !is_first;
        came_or_went = came_or_went || came;
        one.problem = event_->problem(one.uuid);
        one.is_waiting = known->second.is_new && !one.problem;
    }
    pane_.view().set_vistels(std::move(vistels), collection.outside_bounds_ratio().value_or(0),
                             collection.area_scrolls());
    for (const auto& one : collection.vistels()) show_overlay(*one, shown_[one->uuid()]);
    if (tally_ && came_or_went) set_shows_health(true);
}

// The picture is read when it becomes another one, and again as long as it could not be read: its file may
// come back.
void vistel_pictures::show_overlay(const single_Vistel_CTR& vistel, shown& one) {
    const std::string path = overlay_file(vistel);
    if (path != one.overlay) {
        one.overlay = path;
        one.overlay_reading = shown::reading::none;
        pane_.view().set_overlay(vistel.uuid(), {}, {}, 1);
    }
    if (path.empty() || one.overlay_reading != shown::reading::none) return;
    one.overlay_reading = shown::reading::asked;
    if (!overlays_) overlays_ = std::make_unique<serial_queue>("overlays");
    overlays_->post([this, path, uuid = vistel.uuid()] {
        const QImage picture(QString::fromStdString(path));
        QMetaObject::invokeMethod(
            this, [this, uuid, path, picture] { take_overlay(uuid, path, picture); }, Qt::QueuedConnection);
    });
}

void vistel_pictures::take_overlay(const std::string& vistel, const std::string& path,
                                   const QImage& picture) {
    const auto known = shown_.find(vistel);
    const auto record = event_ ? event_->collection().find_vistel(vistel) : nullptr;
    if (known == shown_.end() || known->second.overlay != path || !record) return;
    known->second.overlay_reading = picture.isNull() ? shown::reading::none : shown::reading::read;
    const auto overlay = record->overlay().value_or(vistel_overlay());
    pane_.view().set_overlay(vistel, picture, overlay.frame, overlay.opacity);
}

void vistel_pictures::set_shows_names(bool shows) {
    if (shows_names_ == shows) return;
    shows_names_ = shows;
    show_vistels();
    show_pictures();
}

void vistel_pictures::tell_sizes() {
    if (!event_) return;
    for (auto& [vistel, one] : shown_) {
        // The first picture comes in its movie's own size and tells the aspect.
        if (one.aspect <= 0) continue;
        const QSize size = pane_.view().picture_size(vistel);
        if (size.isEmpty() || size == one.asked) continue;
        one.asked = size;
        wishes_->set_size(this, vistel, size);
    }
}

void vistel_pictures::tell_sight() {
    if (!event_) return;
    bool came = false;
    for (auto& [vistel, one] : shown_) {
        const bool is_seen = pane_.view().is_in_sight(vistel);
        came = came || (is_seen && !one.in_sight);
        one.in_sight = is_seen;
        // The first picture tells the aspect, whether it is seen or not.
        wishes_->set_seen(this, vistel, is_seen || one.aspect <= 0);
        if (is_seen || one.aspect <= 0) continue;
        one.picture.reset();
        // When it comes back an old picture would pass for the one of that time.
        pane_.view().forget_picture(vistel);
    }
    if (came) show_pictures();
}

void vistel_pictures::show_pictures() {
    if (!event_) return;
    const bool knew_all = are_complete();
    for (auto& [vistel, one] : shown_) show_picture(vistel, one);
    show_health();
    pane_.header().set_fact(fact());
    if (knew_all) return;
    tell_sizes();
    tell_sight();
}

void vistel_pictures::show_picture(const std::string& vistel, shown& one) {
    const synchronised_playback& playback = event_->playback();
    collection_view& view = pane_.view();
    if (const failure problem = event_->problem(vistel)) {
        view.set_problem(vistel, problem);
        return;
    }
    if (!one.in_sight && one.aspect > 0) return;
    view.set_over(vistel, playback.is_over(vistel));
    view.set_difference(vistel, playback.difference_from_record(vistel));
    switch (playback.state(vistel)) {
        case vistel_state::unreadable:
            return;
        case vistel_state::blank:
            one.picture.reset();
            if (std::exchange(one.is_new, false)) view.set_ready(vistel);
            view.set_gap(vistel, gap_end(vistel), marks_start(vistel));
            return;
        case vistel_state::waiting:
        case vistel_state::showing:
            break;
    }
    view.set_problem(vistel, {});
    const picture_pointer picture = playback.picture(vistel);
    if (!picture || picture == one.picture) return;
    if (one.in_sight) one.picture = picture;
    if (std::exchange(one.is_new, false)) view.set_ready(vistel);
    if (one.aspect <= 0 && picture->height > 0)
        one.aspect = static_cast<double>(picture->width) / picture->height;
    view.set_picture(vistel, image_of(one.picture), one.aspect);
}

bool vistel_pictures::are_complete() const {
    if (!event_) return false;
    return std::all_of(shown_.begin(), shown_.end(), [this](const auto& one) {
        const vistel_state state = event_->playback().state(one.first);
        const bool is_away = !one.second.in_sight && one.second.aspect > 0;
        return is_away || one.second.picture || state == vistel_state::blank ||
               state == vistel_state::unreadable;
    });
}

QString vistel_pictures::fact() const {
    const auto count = static_cast<int>(shown_.size());
    if (!event_->has_collection()) return tr("Timeline without pictures");
    const auto unreadable = std::count_if(shown_.begin(), shown_.end(), [this](const auto& one) {
        return event_->playback().state(one.first) == vistel_state::unreadable;
    });
    if (count == 0) return tr("No movies yet");
    if (unreadable > 0) return tr("%1 of %2 vistels play").arg(count - unreadable).arg(count);
    return count == 1 ? tr("1 vistel") : tr("%1 vistels in step").arg(count);
}

long long vistel_pictures::frame_number() const {
    if (!event_) return -1;
    const auto all = event_->collection().vistels();
    if (all.empty()) return -1;
    const std::string enlarged = pane_.view().enlarged();
    const std::string vistel = enlarged.empty() ? all.front()->uuid() : enlarged;
    if (!pane_.view().is_in_sight(vistel)) return frame_number_by_time(vistel);
    const auto seconds = event_->playback().picture_seconds(vistel);
    const auto picture = event_->playback().picture(vistel);
    if (!seconds || !picture || picture->sparse || !(picture->until > picture->time)) return -1;
    return std::llround(*seconds / (picture->until - picture->time));
}

long long vistel_pictures::frame_number_by_time(const std::string& vistel) const {
    const double now = event_->playback().shown_time();
    const auto seconds = movie_time_at(event_->collection(), vistel, now);
    const double each = event_->playback().frame_seconds(vistel);
    if (!seconds || !(each > 0)) return -1;
    return static_cast<long long>(std::floor(*seconds / each + 1e-3));
}

// Before its first part, where the collection wants that seen.
bool vistel_pictures::marks_start(const std::string& vistel) const {
    const auto record = event_->collection().find_vistel(vistel);
    if (!record || !event_->collection().shows_missing_starts()) return false;
    const auto starts = record->parts().starts();
    const auto now = movie_time_at(event_->collection(), vistel, event_->playback().shown_time());
    return now && !starts.empty() && *now < starts.front();
}

double vistel_pictures::gap_end(const std::string& vistel) const {
    const auto record = event_->collection().find_vistel(vistel);
    if (!record) return std::numeric_limits<double>::infinity();
    const vistel_offset offset{record->number(), record->manual_start_offset()};
    const double lead = lead_for_clips(offsets_of(event_->collection()), offset);
    const double now = event_->playback().shown_time();
    for (const double start : record->parts().starts()) {
        if (start - lead > now) return start - lead;
    }
    return std::numeric_limits<double>::infinity();
}

}  // namespace vistels
