// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/event/event_player.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "app/event/open_event.h"
#include "app/event/pause_points.h"
#include "app/event/shuttle.h"
#include "app/settings/step_settings.h"
#include "logger/press_engine.h"
#include "timeline/edits/clip_edits.h"
#include "video/synchronised_playback.h"

namespace vistels {

namespace {

constexpr double volume_step = 0.1;
// A step where there are no frames.
constexpr double frame_without_pictures = 0.04;

}  // namespace

// Playback of the event, but that a seek is the player's.
class event_player::person_commands final : public transport {
  public:
    explicit person_commands(event_player& player) : player_(player) {}

    double collection_time() const override { return playing() ? playing()->collection_time() : 0; }
    double collection_time_at(double clock_seconds) const override {
        return playing() ? playing()->collection_time_at(clock_seconds) : 0;
    }
    double shown_time() const override { return playing() ? playing()->shown_time() : 0; }
    bool is_playing() const override { return playing() && playing()->is_playing(); }
    double rate() const override { return playing() ? playing()->rate() : 1; }
    void play() override {
        if (playing()) playing()->play();
    }
    void pause() override {
        if (playing()) playing()->pause();
    }
    void set_rate(double rate) override { player_.set_rate(rate); }
    void seek(double collection_seconds) override { player_.seek(collection_seconds); }
    void scrub(double collection_seconds) override { player_.scrub(collection_seconds); }

  private:
    synchronised_playback* playing() const { return player_.event_ ? &player_.event_->playback() : nullptr; }

    event_player& player_;
};

event_player::event_player() : commands_(std::make_unique<person_commands>(*this)) {}
event_player::~event_player() = default;

void event_player::set_event(open_event* event) {
    state_.disconnect();
    task_.reset();
    if (event_) event_->logger().set_selected_clips({});
    forget_played();
    plays_list_ = false;
    event_ = event;
    followed_ = nullptr;
    if (!event_) return;
    task_ = std::make_unique<tick_task>(event_->playback().ticks(), tick_step::time, [this] { tick(); });
    state_ = event_->playback().state_changed.connect([this] { follow_playing(); });
    event_->logger().set_selected_clips([this] {
        std::vector<std::string> clips;
        for (const auto& place : selection().clips()) clips.push_back(place.clip->id());
        return clips;
    });
    follow_selection();
    apply_volume();
}

void event_player::follow_playing() {
    const bool plays = event_->playback().is_playing();
    if (plays && !task_->is_running()) seen_ = event_->playback().collection_time();
    task_->set_running(plays);
}

void event_player::tick() {
    synchronised_playback& playback = event_->playback();
    const double seconds = playback.collection_time();
    const double from = std::exchange(seen_, seconds);
    if (plays_list_) return;
    if (looping_) {
        if (halt_at_pause_point(loop_, from, seconds)) return;
        const double to = looped(seconds, playback.rate(), loop_.start, loop_.end);
        const double lead_in = playback.rate() > 0 && !loop_.clip.empty() ? lead_in_seconds() : 0;
        if (to != seconds) go_to(std::max(to - lead_in, event_->start_seconds()), true);
    } else if (played_ && !halt_at_pause_point(*played_, from, seconds) &&
               seconds_still_to_play(played_->start, played_->end, *clip_fraction()) <= 0) {
        forget_played();
        playback.pause();
    }
}

void event_player::forget_played() {
    played_.reset();
    halts_ = false;
}

// A clip that halts is played on.
void event_player::forget_played_unless_halting() {
    if (!std::exchange(halts_, false)) played_.reset();
}

double event_player::lead_in_seconds() const {
    return load_step_settings(event_->places()).lead_in_seconds;
}

void event_player::play_or_pause() {
    if (!event_) return;
    synchronised_playback& playback = event_->playback();
    forget_played_unless_halting();
    if (playback.is_playing()) return playback.pause();
    if (playback.rate() < 0) playback.set_rate(1);
    // At the end there is nothing left to play: begin anew. A clock without pictures runs on, to code more.
    if (!event_->runs_on_clock() && playback.collection_time() >= event_->end_seconds())
        go_to(event_->start_seconds());
    playback.play();
}

void event_player::pause() {
    if (!event_) return;
    event_->playback().pause();
    event_->playback().set_rate(1);
}

void event_player::shuttle(int direction) {
    if (!event_) return;
    synchronised_playback& playback = event_->playback();
    direction > 0 ? forget_played_unless_halting() : forget_played();
    playback.set_rate(
        next_shuttle_rate(playback.rate(), playback.is_playing(), direction, playback.top_speed(direction)));
    playback.play();
}

void event_player::play_slower(int direction) {
    if (!event_) return;
    synchronised_playback& playback = event_->playback();
    direction > 0 ? forget_played_unless_halting() : forget_played();
    playback.set_rate(
        next_slow_rate(playback.rate(), playback.is_playing(), direction, playback.top_speed(direction)));
    playback.play();
}

void event_player::step(int frames) {
    if (!event_) return;
    if (!event_->runs_on_clock()) return event_->playback().step(frames);
    pause();
    move_to(event_->playback().collection_time() + frames * frame_without_pictures, false);
}

void event_player::step_several(int direction) {
    if (!event_) return;
    const step_settings steps = load_step_settings(event_->places());
    step(direction > 0 ? steps.frames_on : -steps.frames_back);
}

void event_player::scrub(double seconds) {
    if (!event_) return;
    forget_played();
    event_->scrub(within(seconds));
    seen_ = event_->playback().collection_time();
    sought.emit();
}

void event_player::jump(double seconds) {
    if (event_) seek(event_->playback().collection_time() + seconds);
}

void event_player::seek(double seconds) {
    if (event_) move_to(seconds, true);
}

void event_player::move_to(double seconds, bool is_jump) {
    forget_played();
    const double to = within(seconds);
    if (is_jump) {
        go_to(to);
    } else {
        event_->playback().seek(to);
        seen_ = to;
    }
    sought.emit();
}

double event_player::within(double seconds) const {
    const double end = event_->runs_on_clock() ? event_->playback().last_time() : event_->end_seconds();
    return std::clamp(seconds, event_->start_seconds(), end);
}

void event_player::go_to(double seconds, bool is_loop_turn) {
    event_->jump(seconds, is_loop_turn);
    seen_ = event_->playback().collection_time();
}

void event_player::to_start() {
    if (event_) seek(event_->start_seconds());
}

void event_player::to_end() {
    if (event_) seek(event_->runs_on_clock() ? event_->last_clip_end_seconds() : event_->end_seconds());
}

void event_player::set_rate(double rate) {
    if (event_) event_->playback().set_rate(rate);
}

void event_player::set_looping(bool looping) {
    looping_ = looping;
    follow_selection();
    looping_changed.emit();
}

const clip_selection& event_player::selection() const {
    return followed_ ? *followed_ : std::as_const(event_->view().selection());
}

void event_player::follow_selection(const clip_selection& selection) {
    followed_ = &selection;
    follow_selection();
}

void event_player::forget_selection(const clip_selection& gone) {
    if (followed_ == &gone) followed_ = nullptr;
}

void event_player::follow_selection() {
    if (!event_ || !looping_) return;
    const auto chosen = selection().clips();
    const bool one = chosen.size() == 1;
    loop_.clip = one ? chosen.front().clip->id() : std::string();
    loop_.start = one ? chosen.front().clip->secs_start() : event_->start_seconds();
    loop_.end = one ? chosen.front().clip->secs_end() : event_->end_seconds();
}

std::optional<double> event_player::clip_fraction() const {
    if (!event_ || !played_) return std::nullopt;
    return fraction_at(played_->start, played_->end, event_->playback().collection_time());
}

// Whether it did, on the way from one time to another. What is edited meanwhile counts.
bool event_player::halt_at_pause_point(const stretch& clip, double from, double to) {
    const auto place = event_->timeline().timeline().find_clip(clip.clip);
    if (!place) return false;
    const auto pause = pause_point_between(place->clip->pause_items(), from, to, clip.start, clip.end);
    if (!pause) return false;
    event_->playback().pause();
    event_->playback().seek(*pause);
    halts_ = true;
    return true;
}

void event_player::play_clip(const std::string& clip, double from) {
    if (!event_) return;
    const sxy_DATA_root& timeline = event_->timeline().timeline();
    const auto chosen = clip.empty() ? selection().clips() : std::vector<clip_place>();
    const auto place = !clip.empty()    ? timeline.find_clip(clip)
                       : chosen.empty() ? std::nullopt
                                        : std::optional(chosen.front());
    if (!place) return;
    const stretch played{place->clip->secs_start(), place->clip->secs_end(), place->clip->id()};
    const double lead_in = from > 0 ? 0 : lead_in_seconds();
    seek(played.end - seconds_still_to_play(played.start, played.end, from) - lead_in);
    played_ = played;
    if (event_->playback().rate() < 0) event_->playback().set_rate(1);
    event_->playback().play();
}

void event_player::apply_volume() {
    if (event_) {
        event_->set_silenced(muted_ || !heard_);
        event_->playback().set_in_front(heard_);
    }
    volumes_changed.emit();
}

void event_player::set_volume(double volume) {
    if (!event_) return;
    event_->set_volume(volume);
    muted_ = false;
    apply_volume();
}

void event_player::change_volume(int steps) {
    // In whole steps, so that nothing adds up.
    set_volume(std::round(volume() / volume_step + steps) * volume_step);
}

double event_player::volume() const {
    return event_ ? event_->collection().volume() : 1;
}

void event_player::set_application_volume(double volume) {
    if (!event_) return;
    event_->set_application_volume(volume);
    muted_ = false;
    apply_volume();
}

double event_player::application_volume() const {
    return event_ ? event_->application_volume() : 1;
}

result<void> event_player::keep_volumes() {
    return event_ ? event_->keep_volumes() : result<void>();
}

void event_player::take_application_volume(double volume) {
    if (!event_) return;
    event_->take_application_volume(volume);
    apply_volume();
}

void event_player::set_muted(bool muted) {
    muted_ = muted;
    apply_volume();
}

void event_player::set_heard(bool heard) {
    if (heard == heard_) return;
    heard_ = heard;
    apply_volume();
}

void event_player::enlarge(const std::string& vistel) {
    if (!event_) return;
    event_->set_enlarged(vistel);
    enlarged_changed.emit();
}

void event_player::enlarge_next() {
    if (!event_) return;
    const auto all = event_->collection().vistels();
    const std::string now = event_->enlarged();
    const auto at = std::find_if(all.begin(), all.end(), [&](const auto& one) { return one->uuid() == now; });
    const auto next = at == all.end() ? all.begin() : at + 1;
    enlarge(next == all.end() ? std::string() : (*next)->uuid());
}

}  // namespace vistels
