// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/event/clip_playlist.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "app/event/pause_points.h"
#include "timeline/records/clip_row.h"

namespace vistels {

namespace {

// Further from where it should be than that, the playhead was moved by a person. Following the sound's clock
// moves it less.
constexpr double most_drift_seconds = 0.25;
constexpr double most_drift_share = 0.1;  // of the time since the last look

}  // namespace

std::vector<playlist_clip> clips_that_pass(const sxy_DATA_root& timeline, const clip_verdicts& verdicts) {
    std::vector<playlist_clip> clips;
    for (const auto& one : clips_in_start_order(timeline.rows(), verdicts.passing())) {
        clips.push_back({one.clip_->id(), one.clip_start_, one.clip_->secs_end(), one.clip_->pause_items()});
    }
    return clips;
}

clip_playlist::clip_playlist(transport& playback, display_tick& ticks, const clock& source)
    : playback_(playback), source_(source), task_(ticks, tick_step::time, [this] { tick(); }) {}

void clip_playlist::play(std::vector<playlist_clip> clips, std::optional<double> from_seconds,
                         double lead_in_seconds) {
    const auto first = std::find_if(clips.begin(), clips.end(), [&](const playlist_clip& clip) {
        return !from_seconds || clip.end > *from_seconds;
    });
    if (first == clips.end()) return;
    at_ = static_cast<std::size_t>(first - clips.begin());
    clips_ = std::move(clips);
    lead_in_ = lead_in_seconds;
    halts_ = false;
    const double start = clips_[at_].start;
    begin_at(from_seconds && *from_seconds > start ? *from_seconds : start - lead_in_);
    if (playback_.rate() < 0) playback_.set_rate(1);
    playback_.play();
    note_time();
    task_.start();
    changed.emit();
}

void clip_playlist::stop() {
    if (!is_playing()) return;
    task_.stop();
    clips_.clear();
    changed.emit();
}

void clip_playlist::begin_at(double seconds) {
    playback_.seek(seconds);
    note_time();
}

void clip_playlist::note_time() {
    noted_time_ = playback_.collection_time();
    noted_rate_ = playback_.rate();
    noted_at_ = source_.seconds();
}

bool clip_playlist::was_moved(double now) const {
    const double passed = source_.seconds() - noted_at_;
    const double slower = std::min(noted_rate_, playback_.rate());
    const double faster = std::max(noted_rate_, playback_.rate());
    const double drift = most_drift_seconds + passed * faster * most_drift_share;
    return now < noted_time_ + passed * slower - drift || now > noted_time_ + passed * faster + drift;
}

void clip_playlist::tick() {
    const double now = playback_.collection_time();
    if (halts_ && follow_halt(now)) return;
    if (!playback_.is_playing() || playback_.rate() < 0 || was_moved(now)) return stop();
    const playlist_clip& clip = clips_[at_];
    const auto pause = pause_point_between(clip.pauses, noted_time_, now, clip.start, clip.end);
    if (pause) return halt_at(*pause);
    note_time();
    if (now >= clip.end) go_on(now);
}

void clip_playlist::halt_at(double seconds) {
    playback_.pause();
    playback_.seek(seconds);
    note_time();
    halts_ = true;
}

// Whether playing still halts there, or the list is over: somebody went away from there.
bool clip_playlist::follow_halt(double now) {
    halts_ = !playback_.is_playing();
    if (!halts_) return false;
    if (now != noted_time_) {
        stop();
    } else {
        note_time();
    }
    return true;
}

void clip_playlist::go_on(double now) {
    do {
        ++at_;
    } while (at_ < clips_.size() && clips_[at_].start <= now && clips_[at_].end <= now);
    if (at_ == clips_.size()) {
        playback_.pause();
        return stop();
    }
    const double start = clips_[at_].start - lead_in_;
    if (start > now) begin_at(start);
    changed.emit();
}

}  // namespace vistels
