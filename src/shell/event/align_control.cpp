// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/event/align_control.h"

#include <algorithm>
#include <utility>

#include "app/event/change_names.h"
#include "app/event/event_player.h"
#include "app/event/open_event.h"
#include "app/event/part_changes.h"
#include "shell/event/event_notices.h"
#include "shell/kit/theme.h"
#include "shell/kit/theme_time_text.h"
#include "shell/panes/collection/align_bar.h"
#include "shell/panes/collection/collection_metrics.h"
#include "shell/panes/collection/collection_pane.h"
#include "shell/panes/collection/collection_view.h"
#include "shell/panes/collection/vistel_alignment.h"
#include "video/padding_movies.h"
#include "video/synchronised_playback.h"
#include "video/video_coll_Offsets.h"

namespace vistels {

namespace {

// Where no picture says how long a frame stands.
constexpr double usual_frame_seconds = 0.04;

double lead_of(const video_collection_ROOT& collection, const single_Vistel_CTR& vistel) {
    return lead_for_clips(offsets_of(collection), {vistel.number(), vistel.manual_start_offset()});
}

}  // namespace

std::vector<shown_part> shown_parts_of(const single_Vistel_CTR& vistel) {
    std::vector<shown_part> shown;
    for (const auto& part : vistel.parts().parts) {
        shown.push_back({part.gap_before, part.part_duration, is_padding(part), part.path.empty()});
    }
    return shown;
}

align_control::align_control(collection_pane& pane, event_player& player, event_notices& notices)
    : pane_(pane), player_(player), notices_(notices) {
    connect_bar();
    connect(&pane, &collection_pane::aligning_asked, this, &align_control::set_aligning);
    connect(&pane.view(), &collection_view::shift_dragged, this, &align_control::shift);
    connect(&pane.view(), &collection_view::shift_ended, this, &align_control::end_shift);
    connect(&pane.view(), &collection_view::current_changed, this, &align_control::show);
}

void align_control::connect_bar() {
    align_bar& bar = pane_.alignment();
    connect(&bar, &align_bar::offset_asked, this, &align_control::set_offset);
    connect(&bar, &align_bar::nudge_asked, this, [this](int frames) {
        begin_nudge();
        change_offset(frames * frame_seconds(current()));
    });
    connect(&bar, &align_bar::nudge_ended, this, &align_control::end_nudge);
    connect(&bar, &align_bar::mark_asked, this, &align_control::mark_moment);
    connect(&bar, &align_bar::same_moment_asked, this, &align_control::same_moment);
    connect(&bar, &align_bar::unmark_asked, this, &align_control::forget_mark);
    connect(&bar, &align_bar::gap_asked, this, &align_control::set_gap);
    connect(&bar, &align_bar::gap_nudge_asked, this, [this](int part, int frames) {
        begin_nudge();
        nudge_gap(part, frames);
    });
    connect(&bar, &align_bar::lock_asked, this, &align_control::set_locks_clips);
}

std::string align_control::current() const {
    return pane_.view().current();
}

void align_control::set_event(open_event* shown) {
    connections_.clear();
    event_ = shown;
    if (!event_) {
        nudges_ = false;
        shift_frame_.reset();
        forget_mark();
        return set_aligning(false);
    }
    connections_.push_back(event()->collection_changed.connect([this] { show(); }));
    connections_.push_back(event()->timeline().access_changed.connect([this] { show(); }));
    connections_.push_back(event()->playback().pictures_changed.connect([this] { show_playhead(); }));
    show();
}

void align_control::set_aligning(bool aligning) {
    const bool may = event() && event()->has_collection();
    pane_.set_aligning(aligning && may);
    show();
    Q_EMIT changed();
}

void align_control::show() {
    if (!event()) return;
    align_bar& bar = pane_.alignment();
    const bool can_change = !event()->timeline().is_read_only();
    pane_.view().set_changeable(can_change);
    const auto vistel = event()->collection().find_vistel(current());
    if (vistel) {
        bar.set_vistel(QString::fromStdString(vistel->name()), vistel->manual_start_offset().value_or(0));
        bar.set_parts(shown_parts_of(*vistel), vistel->locks_clips());
    } else {
        bar.set_vistel(tr("No vistel"), {});
        bar.set_parts({}, false);
    }
    bar.set_changeable(can_change);
    show_playhead();
}

void align_control::show_playhead() {
    if (!event() || !pane_.is_aligning()) return;
    const auto seconds =
        movie_time_at(event()->collection(), current(), event()->playback().collection_time());
    if (seconds) pane_.alignment().set_seconds(*seconds);
}

double align_control::frame_seconds(const std::string& vistel) const {
    const double known = event() ? event()->playback().frame_seconds(vistel) : 0;
    return known > 0 ? known : usual_frame_seconds;
}

bool align_control::make(const collection_change& change) {
    if (!event()) return false;
    const auto done = event()->changes().make(change);
    tell(done);
    show();
    return done.ok();
}

void align_control::tell(const result<void>& done) {
    if (!done) notices_.tell_failure(tr("This could not be changed"), done.error());
}

// The movie is shifted in playback alone while it is dragged; the record changes once, at the end.
void align_control::shift(const QString& vistel, double pixels) {
    if (!event()) return;
    event()->playback().pause();
    const std::string uuid = vistel.toStdString();
    const auto record = event()->collection().find_vistel(uuid);
    if (!record) return;
    const int frames = dragged_frames(pixels, collection_sizes.align_frame_width);
    // What is shown while shifting says nothing, where it comes before the movie's beginning.
    if (!shift_frame_) shift_frame_ = frame_seconds(uuid);
    const double frame = *shift_frame_;
    event()->playback().set_lead(uuid, lead_of(event()->collection(), *record) + frames * frame);
    const double offset = shifted_offset(record->manual_start_offset().value_or(0), frames, frame);
    pane_.view().set_note(uuid, shift_words(frames, frame) + QLatin1Char('\n') +
                                    tr("offset %1").arg(time_text(offset, time_form::field)));
}

void align_control::end_shift(const QString& vistel, double pixels, bool keeps) {
    const std::string uuid = vistel.toStdString();
    pane_.view().set_note(uuid, {});
    const auto record = event() ? event()->collection().find_vistel(uuid) : nullptr;
    if (!record) return;
    const int frames = dragged_frames(pixels, collection_sizes.align_frame_width);
    const double frame = shift_frame_.value_or(frame_seconds(uuid));
    shift_frame_.reset();
    const double offset = shifted_offset(record->manual_start_offset().value_or(0), frames, frame);
    if (keeps && frames != 0) make(plan_offset(uuid, offset));
    // Whatever the lead is now, playback has another one.
    event()->playback().set_lead(uuid, lead_of(event()->collection(), *record));
}

void align_control::begin_nudge() {
    if (!event() || nudges_ || event()->changes().is_within_change()) return;
    nudges_ = true;
    event()->changes().begin(change_name::nudge_vistel);
}

void align_control::end_nudge() {
    if (!std::exchange(nudges_, false) || !event() || !event()->changes().is_within_change()) return;
    event()->changes().end();
}

void align_control::nudge(int frames) {
    change_offset(-frames * frame_seconds(current()));
}

void align_control::set_offset(double seconds) {
    if (event()) make(plan_offset(current(), seconds));
}

void align_control::change_offset(double by) {
    if (!event() || current().empty()) return;
    event()->playback().pause();
    make(plan_offset_nudge(current(), by));
}

void align_control::mark_moment() {
    if (!event()) return;
    const double now = event()->playback().collection_time();
    const auto seconds = movie_time_at(event()->collection(), current(), now);
    if (!seconds) return;
    event()->playback().pause();
    // The line for it says what is marked, and what comes next.
    if (!pane_.is_aligning()) set_aligning(true);
    mark_ = seen_moment{current(), *seconds};
    const auto vistel = event()->collection().find_vistel(current());
    pane_.alignment().set_mark(
        tr("%1 at %2").arg(QString::fromStdString(vistel->name()), time_text(now, time_form::clock)));
    Q_EMIT changed();
}

void align_control::same_moment() {
    const auto record = event() ? event()->collection().find_vistel(current()) : nullptr;
    if (!mark_ || !record) return;
    const double now = event()->playback().collection_time();
    const auto seconds = movie_time_at(event()->collection(), current(), now);
    const auto marked = collection_time_of(event()->collection(), *mark_);
    if (!seconds || !marked) return forget_mark();
    const bool is_same = mark_->vistel == current();
    // A second click where "Mark Moment" was.
    if (is_same && *seconds == mark_->movie_seconds) return;
    const auto change = is_same ? plan_coded_moment(*marked, {current(), *seconds})
                                : plan_same_moment(*mark_, {current(), *seconds});
    const seen_moment met = *mark_;
    if (!make(change)) return;
    forget_mark();
    // Both are seen at the instant that they share now.
    const auto shared =
        collection_time_of(event()->collection(), is_same ? seen_moment{current(), *seconds} : met);
    if (shared) player_.seek(*shared);
}

void align_control::forget_mark() {
    mark_.reset();
    pane_.alignment().set_mark({});
    Q_EMIT changed();
}

void align_control::set_gap(int part, double seconds) {
    if (!event() || part < 0) return;
    make(plan_gap(event()->collection(), event()->timeline().timeline(), current(),
                  static_cast<std::size_t>(part), seconds));
}

void align_control::nudge_gap(int part, int frames) {
    const auto record = event() ? event()->collection().find_vistel(current()) : nullptr;
    if (!record || part < 0 || part >= static_cast<int>(record->parts().parts.size())) return;
    const double gap = record->parts().parts[static_cast<std::size_t>(part)].gap_before;
    const double wanted = std::max(0.0, gap + frames * frame_seconds(current()));
    if (wanted != gap) set_gap(part, wanted);
}

void align_control::set_locks_clips(bool locks) {
    make(plan_clip_lock(current(), locks));
}

}  // namespace vistels
