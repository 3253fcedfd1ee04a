// SPDX-License-Identifier: GPL-3.0-or-later
#include "video/synchronised_playback.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <mutex>
#include <utility>

#include "video/collection_failures.h"

namespace vistels {

namespace {

constexpr double follow_interval_seconds = 0.2;
// What comes back into sight does not show a frame farther from the right one than that.
constexpr double late_frame_seconds = 1;

}  // namespace

// What the vistels' queues hold on to, so that news which comes late finds nobody instead of somebody gone.
struct synchronised_playback::arrival_link {
    synchronised_playback* playback;  // main thread only
    std::mutex mutex;
    run_loop* loop = nullptr;            // guarded by mutex; null: gone with the playback
    std::atomic<bool> is_posted{false};  // one visit to the main thread serves all news until then
};

synchronised_playback::synchronised_playback(run_loop& loop, std::shared_ptr<frame_budget> budget,
                                             const clock* patience)
    : loop_(loop),
      patience_(patience == nullptr ? machine_clock_ : *patience),
      budget_(std::move(budget)),
      clock_(loop.time()),
      ticks_(loop),
      task_(ticks_, tick_step::players, [this] { timer_tick(); }),
      sound_(patience_),
      arrivals_(std::make_shared<arrival_link>()) {
    arrivals_->playback = this;
    arrivals_->loop = &loop_;
}

synchronised_playback::~synchronised_playback() {
    arrivals_->playback = nullptr;
    {
        const std::lock_guard lock(arrivals_->mutex);
        arrivals_->loop = nullptr;
    }
    for (const auto timer : {watch_timer_, rest_timer_}) loop_.stop_timer(timer);
    for (auto& vistel : vistels_) {
        vistel.watch.look(vistel.player->progress(), patience_.seconds());
        if (vistel.watch.is_slow()) vistel_player::leave(std::move(vistel.player));
    }
}

std::unique_ptr<vistel_player> synchronised_playback::make_player(const playback_vistel& vistel) {
    const auto tell = [link = arrivals_] {
        if (link->is_posted.exchange(true)) return;
        const std::lock_guard lock(link->mutex);
        if (link->loop == nullptr) return;
        link->loop->post([link] {
            link->is_posted = false;
            if (link->playback != nullptr) link->playback->take_arrivals();
        });
    };
    return std::make_unique<vistel_player>(vistel.parts, tell, budget_);
}

void synchronised_playback::set_vistels(std::vector<playback_vistel> vistels) {
    std::vector<entry> made;
    for (auto& vistel : vistels) {
        entry* const before = find(vistel.uuid);
        if (before != nullptr && before->player && before->vistel.parts == vistel.parts) {
            made.push_back(std::move(*before));
        } else {
            made.emplace_back();
            made.back().player = make_player(vistel);
        }
        made.back().vistel = std::move(vistel);
    }
    for (auto& gone : vistels_) retire(gone);
    vistels_ = std::move(made);
    update_range();
    set_sound_vistel(sound_vistel_);
    tick();
    pictures_changed.emit();
}

// A read that its queue is at may take long on a volume that is slow, or gone.
void synchronised_playback::retire(entry& gone) {
    if (!gone.player) return;
    if (gone.watch.is_slow()) {
        vistel_player::leave(std::move(gone.player));
        return;
    }
    gone.player->rest();
    if (!retired_) retired_ = std::make_unique<serial_queue>("vistels gone");
    retired_->post([player = std::shared_ptr<vistel_player>(std::move(gone.player))] {});
}

void synchronised_playback::update_range() {
    double first = least_first_;
    double last = least_last_;
    for (const auto& vistel : vistels_) {
        if (vistel.player->is_still()) continue;
        first = std::min(first, -vistel.vistel.lead);
        last = std::max(last, vistel.player->duration() - vistel.vistel.lead);
    }
    clock_.set_range(first, last);
    state_changed.emit();
}

void synchronised_playback::set_least_range(double first, double last) {
    least_first_ = first;
    least_last_ = last;
    update_range();
}

const synchronised_playback::entry* synchronised_playback::find(const std::string& uuid) const {
    const auto found =
        std::find_if(vistels_.begin(), vistels_.end(), [&](const entry& v) { return v.vistel.uuid == uuid; });
    return found == vistels_.end() ? nullptr : &*found;
}

synchronised_playback::entry* synchronised_playback::find(const std::string& uuid) {
    return const_cast<entry*>(std::as_const(*this).find(uuid));
}

const synchronised_playback::entry* synchronised_playback::stepped() const {
    const entry* const enlarged = find(enlarged_);
    return enlarged != nullptr && !enlarged->player->is_still() ? enlarged : first_movie();
}

const synchronised_playback::entry* synchronised_playback::first_movie() const {
    const auto found = std::find_if(vistels_.begin(), vistels_.end(),
                                    [](const entry& vistel) { return !vistel.player->is_still(); });
    return found == vistels_.end() ? nullptr : &*found;
}

void synchronised_playback::set_lead(const std::string& uuid, double lead) {
    entry* const found = find(uuid);
    if (found == nullptr || !std::isfinite(lead)) return;
    found->vistel.lead = lead;
    found->is_from_before = true;
    update_range();
    sound_.restart();
    tick();
}

void synchronised_playback::set_view_size(const std::string& uuid, int width, int height) {
    entry* const found = find(uuid);
    if (found == nullptr || (found->width == width && found->height == height)) return;
    found->width = width;
    found->height = height;
    found->player->set_size(width, height);
    tick();
}

void synchronised_playback::set_seen(const std::string& uuid, bool seen) {
    entry* const found = find(uuid);
    if (found == nullptr || found->is_seen == seen) return;
    found->is_seen = seen;
    tick();
}

void synchronised_playback::set_in_front(bool in_front) {
    if (in_front == is_in_front_) return;
    is_in_front_ = in_front;
    tick();
}

bool synchronised_playback::is_followed(const entry& vistel) const {
    return vistel.is_seen || (!is_playing() && stepped() == &vistel);
}

void synchronised_playback::set_sound_vistel(const std::string& uuid) {
    sound_vistel_ = uuid;
    const entry* found = find(uuid);
    if (found == nullptr || found->player->is_still()) found = first_movie();
    sound_.set_parts(found == nullptr ? std::vector<playback_part>{} : found->vistel.parts);
}

void synchronised_playback::set_volume(double volume) {
    volume_ = std::clamp(volume, 0.0, 1.0);
    sound_.set_volume(volume_);
}

void synchronised_playback::set_pitch(pitch_algorithm pitch) {
    pitch_ = pitch;
    sound_.set_pitch(pitch);
}

void synchronised_playback::set_top_speed(double stored) {
    const double top = clamped_top_speed(stored);
    if (top > 0) top_forward_ = top;
    if (top < 0) top_reverse_ = top;
    set_rate(clock_.rate());
}

void synchronised_playback::play() {
    if (is_playing() || !clock_.can_move()) return;
    direction_ = 0;
    tolerance_ = 0;
    stop_stepping();
    if (rest_timer_ != 0) loop_.stop_timer(std::exchange(rest_timer_, 0));
    snap_to_frame_ = false;
    clock_.play();
    start_timer();
    state_changed.emit();
    tick();
}

void synchronised_playback::pause() {
    if (!is_playing()) return;
    clock_.pause();
    state_changed.emit();
    tick();
}

void synchronised_playback::set_rate(double rate) {
    if (!std::isfinite(rate) || rate == 0) return;
    const double bounded = std::clamp(rate, top_reverse_, top_forward_);
    if (bounded == clock_.rate()) return;
    clock_.set_rate(bounded);
    sound_.restart();
    state_changed.emit();
    tick();
}

void synchronised_playback::start_timer() {
    if (task_.is_running()) return;
    timer_record_ = {};
    task_.start();
}

void synchronised_playback::timer_tick() {
    if (!timer_record_.tick(clock_.time())) task_.stop();
    if (is_playing()) correct_lags();
    show(is_playing() ? clock_.time_to_show(ticks_.seconds()) : clock_.time());
}

// A frame that came late is shown in its tick's place; the next tick's frame waits for that tick.
void synchronised_playback::take_arrivals() {
    show(shown_time());
}

double synchronised_playback::tolerance_of(const entry& vistel) const {
    return vistel.seeks ? vistel.seeks->wish.tolerance : is_playing() ? 0 : tolerance_;
}

double synchronised_playback::seconds_of(const entry& vistel, double now) {
    return (vistel.seeks ? vistel.seeks->wish.collection_seconds : now) + vistel.vistel.lead;
}

void synchronised_playback::ask(const entry& vistel, double now) {
    vistel.player->want(seconds_of(vistel, now), is_playing() ? clock_.rate() : 0, direction_,
                        !is_in_front_ && !is_playing(), tolerance_of(vistel), hurries_);
}

void synchronised_playback::end_hurry() {
    if (!hurries_ || !is_settled()) return;
    hurries_ = false;
    for (const auto& vistel : vistels_) {
        if (is_followed(vistel)) ask(vistel, shown_time_);
    }
}

// What a vistel shows as of now, or where it is sought alone; true when that is something else than before.
bool synchronised_playback::show(entry& vistel, double now) {
    const double tolerance = tolerance_of(vistel);
    const double seconds = seconds_of(vistel, now);
    ask(vistel, now);
    auto seen = vistel.player->look(seconds, tolerance);
    if (!vistel.watch.answers()) {
        seen = {};
        seen.state = vistel_state::unreadable;
        seen.problem = movie_does_not_answer(vistel.vistel.parts.front().path);
    }
    const bool is_news =
        seen.state != vistel.state || seen.problem != vistel.problem || seen.difference != vistel.difference;
    vistel.state = seen.state;
    vistel.is_near = seen.is_near;
    vistel.problem = std::move(seen.problem);
    vistel.difference = std::move(seen.difference);
    if (seen.state == vistel_state::waiting && !seen.is_near) {
        // Better the last picture than none; while playing, better a late one than one that stands still.
        const double away = std::abs(seen.frame_seconds - seconds);
        const bool is_nearer = vistel.shown ? away < std::abs(vistel.shown_seconds - seconds)
                                            : !vistel.returns || away < late_frame_seconds;
        if (!is_playing() || !seen.frame || !is_nearer) return is_news;
    }
    // Of frames that stand for others which were left out, one farther away is no progress.
    if (is_playing() && seen.frame && seen.frame->sparse && vistel.shown && !vistel.is_from_before &&
        !vistel.returns) {
        const bool is_against = (seen.frame_seconds - vistel.shown_seconds) * clock_.rate() < 0;
        const bool is_farther =
            std::abs(seen.frame_seconds - seconds) > std::abs(vistel.shown_seconds - seconds);
        if (is_against && is_farther) return is_news;
    }
    vistel.returns = false;
    vistel.is_from_before = false;
    const bool is_same = vistel.shown == seen.frame;
    vistel.shown = std::move(seen.frame);
    vistel.shown_seconds = seen.frame_seconds;
    return !is_same || is_news;
}

void synchronised_playback::show(double now) {
    shown_time_ = now;
    hurries_ = hurries_ && !is_playing();
    bool changed = false;
    std::vector<std::function<void()>> sought;
    for (auto& vistel : vistels_) {
        if (is_followed(vistel)) {
            changed = show(vistel, now) || changed;
            if (auto done = end_own_seek(vistel)) sought.push_back(std::move(done));
        } else {
            vistel.player->rest();
            vistel.shown.reset();
            vistel.seeks.reset();
            vistel.returns = true;
            if (vistel.state == vistel_state::showing) vistel.state = vistel_state::waiting;
        }
    }
    end_hurry();
    need_watch();
    update_sound(clock_.time());
    const bool ends = is_playing() && !clock_.can_move();
    if (ends) {
        clock_.pause();
        state_changed.emit();
    }
    if (changed) pictures_changed.emit();
    for (const auto& done : sought) done();
    // A frame that will do while playing need not be the very one at rest.
    if (ends) return show(clock_.time());
    settle();
}

void synchronised_playback::update_sound(double now) {
    const entry* heard = find(sound_vistel_);
    if (heard == nullptr || heard->player->is_still()) heard = first_movie();
    if (heard == nullptr) return;
    sound_.update(now + heard->vistel.lead, is_playing() ? clock_.rate() : 0);
    const double machine_now = loop_.time().seconds();
    if (machine_now - last_follow_seconds_ < follow_interval_seconds) return;
    last_follow_seconds_ = machine_now;
    if (const auto seconds = sound_.heard_seconds()) clock_.follow(*seconds - heard->vistel.lead);
}

picture_pointer synchronised_playback::picture(const std::string& uuid) const {
    const entry* const found = find(uuid);
    return found == nullptr ? nullptr : found->shown;
}

std::optional<double> synchronised_playback::picture_seconds(const std::string& uuid) const {
    const entry* const found = find(uuid);
    return found == nullptr || !found->shown ? std::nullopt : std::optional(found->shown_seconds);
}

bool synchronised_playback::is_over(const std::string& uuid) const {
    const entry* const found = find(uuid);
    if (found == nullptr || found->player->is_still() || found->state == vistel_state::unreadable)
        return false;
    return clock_.time() + found->vistel.lead >= found->player->duration() + frame_tolerance_seconds;
}

double synchronised_playback::frame_seconds(const std::string& uuid) const {
    const entry* const found = find(uuid);
    return found == nullptr ? 0 : found->player->frame_seconds(clock_.time() + found->vistel.lead);
}

vistel_state synchronised_playback::state(const std::string& uuid) const {
    const entry* const found = find(uuid);
    return found == nullptr ? vistel_state::blank : found->state;
}

failure synchronised_playback::problem(const std::string& uuid) const {
    const entry* const found = find(uuid);
    return found == nullptr ? failure() : found->problem;
}

failure synchronised_playback::difference_from_record(const std::string& uuid) const {
    const entry* const found = find(uuid);
    return found == nullptr ? failure() : found->difference;
}

}  // namespace vistels
