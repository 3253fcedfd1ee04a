// SPDX-License-Identifier: GPL-3.0-or-later
#include "video/playback_movie.h"

#include <sys/stat.h>

#include <algorithm>
#include <cmath>
#include <utility>

#include "media/movie_failures.h"
#include "util/wait_watch.h"
#include "video/collection_failures.h"

namespace vistels {

namespace {

constexpr double unknown_frame_seconds = 0.04;
constexpr double least_difference_seconds = 0.1;  // from what is on record: what can be told in tenths
constexpr double ahead_seconds = 0.4;             // held ahead while playing, of the machine's time
constexpr double behind_seconds = 1.6;  // ... and behind while playing backwards, where groups are read whole
constexpr double late_picture_seconds = 0.1;     // of the machine's time, from one late picture to the next
constexpr std::size_t most_playing_frames = 36;  // held ahead at most, however fast it goes
constexpr std::size_t most_reverse_frames = 60;
constexpr std::size_t least_playing_frames = 3;
constexpr std::size_t still_ahead_frames = 8;
constexpr std::size_t still_behind_frames = 3;
constexpr std::size_t passed_frames = 16;  // kept after they were shown, for stepping back
constexpr std::size_t stepping_frames = 24;
constexpr std::size_t stepping_group = 40;    // read at once while stepping back
constexpr std::size_t reverse_group = 72;     // ... and while playing backwards
constexpr std::size_t least_frames = 2;       // the one that is shown and the one that is made meanwhile
constexpr std::size_t moving_frames = 3;      // ... and one that was shown before and is still on the screen
constexpr std::size_t frames_on_the_way = 6;  // painted before the wanted one, for stepping back

int direction_of(const playback_demand& demand) {
    return demand.rate > 0 ? 1 : demand.rate < 0 ? -1 : demand.direction;
}

std::string tenths_of_seconds(double seconds) {
    const auto tenths = std::llround(seconds * 10);
    return std::to_string(tenths / 10) + "." + std::to_string(tenths % 10);
}

// A record counts the longest track, or the pictures alone: by either it may be right.
failure difference_of(const movie_information& movie, double recorded) {
    const double frame = movie.frame_rate > 0 ? 1 / movie.frame_rate : unknown_frame_seconds;
    const double tolerance = std::max(frame, least_difference_seconds);
    const bool is_known = recorded > 0 && movie.duration_of_all > 0;
    if (!is_known || (recorded > movie.duration - tolerance && recorded < movie.duration_of_all + tolerance))
        return {};
    return movie_is_changed(tenths_of_seconds(movie.duration), tenths_of_seconds(recorded));
}

}  // namespace

playback_movie::playback_movie(std::string path, std::shared_ptr<picture_pool> pool, double recorded_seconds)
    : path_(std::move(path)), pool_(std::move(pool)), recorded_seconds_(recorded_seconds) {}

file_stand file_stand::of(const std::string& path) {
    const wait_note note("stat", path);
    struct stat about {};
    if (stat(path.c_str(), &about) != 0) return {};
    constexpr std::int64_t nanoseconds = 1'000'000'000;
    return {true, about.st_dev, about.st_ino, about.st_size,
            about.st_mtim.tv_sec * nanoseconds + about.st_mtim.tv_nsec};
}

bool file_stand::goes_on_from(const file_stand& before) const {
    if (*this == before) return true;
    return is_there && before.is_there && device == before.device && number == before.number &&
           bytes > before.bytes;
}

void playback_movie::check_file() {
    const bool failed = static_cast<bool>(problem());
    if (!reader_ && !failed) return;
    const file_stand now = file_stand::of(path_);
    if (failed) {
        if (now.is_there && (now != opened_ || failed_in_reading_)) forget_problem();
    } else if (!now.is_there) {
        fail(movie_is_gone(path_));
        opened_ = now;
        const std::lock_guard lock(mutex_);
        cache_.clear();
    } else if (!now.goes_on_from(opened_)) {
        close();
    }
}

void playback_movie::forget_problem() {
    const std::lock_guard lock(mutex_);
    problem_ = {};
}

playback_movie::progress playback_movie::fail(failure reason) {
    failed_in_reading_ = reader_ != nullptr;
    reader_.reset();
    const std::lock_guard lock(mutex_);
    problem_ = std::move(reason);
    return progress::failed;
}

playback_movie::progress playback_movie::open() {
    opened_ = file_stand::of(path_);
    auto opened = frame_reader::open(path_, 1, pool_);
    if (!opened.ok()) return fail(opened.error());
    reader_ = std::move(opened).value();
    reader_has_current_ = false;
    forget_dead_ends();
    reader_->set_decoded(pace_.decoded());
    set_spacing();
    const double frame_rate = reader_->information().frame_rate;
    failure difference = difference_of(reader_->information(), recorded_seconds_);
    const std::lock_guard lock(mutex_);
    difference_ = std::move(difference);
    seconds_per_tick_ = reader_->seconds_per_tick();
    if (frame_rate > 0) frame_seconds_ = 1 / frame_rate;
    return progress::worked;
}

void playback_movie::forget_dead_ends() {
    nothing_before_.reset();
    nothing_after_.reset();
}

void playback_movie::close() {
    reader_.reset();
    const std::lock_guard lock(mutex_);
    cache_.clear();
}

void playback_movie::set_size(int width, int height) {
    if (width == width_ && height == height_) return;
    width_ = width;
    height_ = height;
    forget_dead_ends();
    const std::lock_guard lock(mutex_);
    cache_.clear();
}

void playback_movie::keep(const playback_demand& demand) {
    const targets wanted = reader_ && demand.memory > 0 ? targets_for(demand) : targets();
    const std::lock_guard lock(mutex_);
    const std::size_t before = cache_.bytes();
    if (!reader_ || demand.memory == 0) {
        cache_.clear();
    } else {
        cache_.keep_within(demand.alone ? 0 : demand.memory, stamp_at(demand.seconds),
                           wanted.behind + wanted.group, wanted.ahead);
    }
    if (cache_.bytes() < before) forget_dead_ends();
}

std::size_t playback_movie::frame_bytes(int width, int height) const {
    const movie_information& known = reader_->information();
    return picture_bytes(width > 0 ? width : known.width, height > 0 ? height : known.height);
}

// How far one frame that is shown is from the next.
double playback_movie::shown_seconds() const {
    const double frame = frame_seconds();
    return std::max(frame, pace_.spacing(frame));
}

std::size_t playback_movie::playing_frames(const playback_demand& demand) const {
    const double seconds = demand.rate < 0 ? behind_seconds : ahead_seconds;
    const double frames = std::ceil(seconds * std::abs(demand.rate) / shown_seconds());
    const std::size_t least = demand.rate < 0 ? stepping_frames : least_playing_frames;
    return std::clamp(static_cast<std::size_t>(frames), least,
                      demand.rate < 0 ? most_reverse_frames : most_playing_frames);
}

playback_needs playback_movie::needs(const playback_demand& demand) const {
    if (!reader_) return {};
    const std::size_t bytes = frame_bytes(demand.width, demand.height);
    if (demand.alone) return {least_frames * bytes, least_frames * bytes};
    std::size_t frames = 0;  // beside those on the move
    if (demand.rate > 0) {
        frames = playing_frames(demand) + passed_frames;
    } else if (demand.rate < 0) {
        frames = playing_frames(demand) + reverse_group;
    } else if (demand.direction < 0) {
        frames = stepping_frames + stepping_group;
    } else {
        frames = still_ahead_frames + passed_frames;
    }
    return {least_frames * bytes, (moving_frames + frames) * bytes};
}

// What is fetched never pushes out what is fetched as well: together they are no more than there is room for.
playback_movie::targets playback_movie::targets_for(const playback_demand& demand) const {
    const std::size_t frames = demand.memory / frame_bytes(demand.width, demand.height);
    const std::size_t room = demand.alone || frames < moving_frames ? 0 : frames - moving_frames;
    targets wanted;
    if (demand.rate > 0) {
        wanted.ahead = std::min(playing_frames(demand), room);
    } else if (demand.rate < 0) {
        wanted.behind = std::min(playing_frames(demand), room / 2);
        wanted.group = std::min(room - wanted.behind, reverse_group);
    } else if (demand.direction < 0) {
        wanted.behind = std::min(stepping_frames, room / 3);
        wanted.group = std::min(room - wanted.behind, stepping_group);
    } else {
        wanted.behind = std::min(still_behind_frames, room / 4);
        wanted.group = wanted.behind;
        wanted.ahead = std::min(still_ahead_frames, room - 2 * wanted.behind);
    }
    return wanted;
}

void playback_movie::set_spacing() {
    reader_->set_spacing(ticks_in(pace_.spacing(frame_seconds())));
}

void playback_movie::choose_decoded(const playback_demand& demand, bool is_missing, bool is_full) {
    pace_.look({demand.rate, demand.seconds, is_missing, is_full});
    reader_->set_decoded(pace_.decoded());
    set_spacing();
}

playback_movie::progress playback_movie::seek(std::int64_t stamp, std::int64_t needed_from) {
    reader_has_current_ = false;
    if (auto moved = reader_->seek(stamp, needed_from); !moved.ok()) return fail(moved.error());
    if (!reader_->next_stamp()) return fail(movie_has_no_picture_here(path_));
    return progress::worked;
}

std::int64_t playback_movie::ticks_in(double seconds) const {
    return static_cast<std::int64_t>(seconds / reader_->seconds_per_tick());
}

// That many frames that are shown take.
std::int64_t playback_movie::ticks_of(std::size_t frames) const {
    return ticks_in(static_cast<double>(frames) * shown_seconds());
}

// Lets go of what is wanted least, so that its memory is that of the picture that comes. False when there is
// no room all the same: what went is still on the screen.
bool playback_movie::make_room(bool is_wanted) {
    const std::size_t coming = frame_bytes(width_, height_);
    const auto keep_within = [&](std::size_t most) {
        cache_.keep_within(most, wanted_stamp_, targets_.behind + targets_.group, targets_.ahead);
    };
    const std::lock_guard lock(mutex_);
    keep_within(memory_ - std::min(memory_, coming));
    if (is_wanted && !pool_->has_room(coming)) keep_within(cache_.bytes() - std::min(cache_.bytes(), coming));
    return pool_->has_room(coming);
}

playback_movie::progress playback_movie::paint_current() {
    auto painted = reader_->paint(width_, height_);
    if (!painted.ok()) return fail(painted.error());
    last_painted_ = painted.value()->stamp;
    const std::lock_guard lock(mutex_);
    cache_.insert(std::move(painted).value());
    return progress::worked;
}

// Reads the next frame, and scales it when it stands at or after `paint_from` and is not held yet;
// `in_any_case`: even though there is no room beside others.
playback_movie::progress playback_movie::read_one(std::int64_t paint_from, bool in_any_case) {
    auto advanced = reader_->advance();
    if (!advanced.ok()) return fail(advanced.error());
    if (!advanced.value()) return progress::nothing_to_do;
    reader_has_current_ = true;
    if (reader_->current_until() <= paint_from && reader_->next_stamp()) return progress::worked;
    if (!reader_->is_certain()) return progress::worked;
    {
        const std::lock_guard lock(mutex_);
        const auto held = cache_.at(reader_->current_stamp());
        if (held && !held->sparse && held->stamp == reader_->current_stamp()) return progress::worked;
    }
    const bool is_wanted = in_any_case || (reader_->current_stamp() <= wanted_stamp_ &&
                                           wanted_stamp_ < reader_->current_until());
    return make_room(is_wanted) || is_wanted ? paint_current() : progress::worked;
}

// From where on frames are scaled on the way to the wanted one.
std::int64_t playback_movie::painted_from(const playback_demand& demand, std::int64_t stamp) const {
    if (demand.alone) return stamp;
    if (demand.rate < 0) return stamp - ticks_of(std::max(frames_on_the_way, targets_.group));
    if (demand.rate == 0) return stamp - ticks_of(frames_on_the_way);
    if (!pace_.is_behind()) return stamp;
    return std::min(stamp, last_painted_ + ticks_in(late_picture_seconds * demand.rate));
}

playback_movie::progress playback_movie::fetch(const playback_demand& demand, std::int64_t stamp) {
    const bool is_read = reader_has_current_ && reader_->current_stamp() <= stamp &&
                         (!reader_->next_stamp() || stamp < reader_->current_until());
    if (is_read && !reader_->is_certain()) {
        read_whole_for_ = stamp;
        return seek(stamp, 0);
    }
    if (is_read) {
        make_room(true);
        return paint_current();
    }
    // The wanted time moves on while a picture is on its way. Each seek yields one, however slow it is.
    const bool is_chased =
        pace_.decoded() == frames_decoded::key_frames_only || (demand.rate > 0 && pace_.is_behind());
    const auto next = reader_->next_stamp();
    if (demand.rate != 0 && is_chased && !reader_has_current_ && next) return read_one(*next, true);
    if (reader_->should_seek(stamp)) {
        const std::int64_t on_the_way = stamp - ticks_of(demand.alone ? 0 : frames_on_the_way);
        return seek(stamp, std::min(on_the_way, painted_from(demand, stamp)));
    }
    if (demand.rate == 0 && read_whole_for_ != stamp) reader_->set_needed_from(painted_from(demand, stamp));
    return read_one(painted_from(demand, stamp));
}

// Reads on from the key frame until a frame is near enough.
playback_movie::progress playback_movie::fetch_near(const playback_demand& demand, std::int64_t stamp) {
    if (frame_near(demand.seconds, demand.tolerance)) return progress::nothing_to_do;
    if (demand.tolerance >= key_frames_will_do) {
        const progress read = fetch_from_key(stamp);
        const bool is_there = read == progress::worked && frame_near(demand.seconds, demand.tolerance);
        return is_there ? progress::wanted_frame_came : read;
    }
    const std::int64_t from = reader_->stamp_at(demand.seconds - demand.tolerance);
    progress made = progress::nothing_to_do;
    if (reader_->should_seek(stamp)) {
        made = seek(stamp, from);
    } else if (reader_->next_stamp()) {
        made = read_one(from);
    } else {
        made = fetch(demand, stamp);
    }
    const bool has_come = made == progress::worked && frame_near(demand.seconds, demand.tolerance);
    return has_come ? progress::wanted_frame_came : made;
}

// Goes to the key frame before, unless the reader is between the two, and takes the next frame there.
playback_movie::progress playback_movie::fetch_from_key(std::int64_t stamp) {
    const auto key = reader_->key_stamp(stamp);
    const auto next = reader_->next_stamp();
    if (key && next && *next >= *key && *next <= stamp && reader_->is_certain()) {
        const std::lock_guard lock(mutex_);
        near_to_ = stamp;
        near_from_ = *key;
        const auto held = cache_.at_or_before(stamp);
        if (held && held->stamp >= near_from_) return progress::worked;
    } else {
        if (const progress made = seek(stamp, 0); made == progress::failed) return made;
        const std::lock_guard lock(mutex_);
        near_to_ = stamp;
        near_from_ = *reader_->next_stamp();
    }
    return read_one(near_from_);
}

playback_movie::progress playback_movie::fetch_ahead(const playback_frame_cache::run& held) {
    if (!make_room(false)) return progress::nothing_to_do;
    if (reader_->should_seek(held.until)) {
        // Here again with the frames after read already: of those that are decoded none joins what is held.
        if (nothing_after_ == held.until) return progress::nothing_to_do;
        nothing_after_ = held.until;
        return seek(held.until, held.until);
    }
    return read_one(held.until);
}

playback_movie::progress playback_movie::fetch_behind(const playback_frame_cache::run& held) {
    const std::int64_t target = held.from - 1;
    if (reader_->should_seek(target)) {
        // Here again with the frames before read already: they do not join what is held, let it be.
        if (nothing_before_ == held.from) return progress::nothing_to_do;
        nothing_before_ = held.from;
        return seek(target, held.from - ticks_of(targets_.group));
    }
    return read_one(held.from - ticks_of(targets_.group));
}

// While playing, what is held ahead runs down to a part before it is filled up again: several frames read one
// after the other cost less than each alone, when its time has come, since what they need is in the
// processor's memory then.
bool playback_movie::needs_more_ahead(const playback_demand& demand, const playback_frame_cache::run& held) {
    if (held.reaches_end) return false;
    const std::size_t low = std::max(targets_.ahead / 2, std::min(targets_.ahead, least_playing_frames));
    const std::size_t enough = demand.rate > 0 && !is_filling_ahead_ ? low : targets_.ahead;
    is_filling_ahead_ = held.frames_after < enough;
    return is_filling_ahead_;
}

playback_movie::progress playback_movie::work(const playback_demand& demand) {
    if (problem()) return progress::nothing_to_do;
    if (!reader_) return open();
    set_size(demand.width, demand.height);
    const std::int64_t stamp = std::max<std::int64_t>(0, reader_->stamp_at(demand.seconds));
    wanted_stamp_ = stamp;
    memory_ = demand.memory;
    targets_ = targets_for(demand);
    const int direction = direction_of(demand);
    if (std::exchange(last_direction_, direction) != direction) forget_dead_ends();

    picture_pointer standing;
    playback_frame_cache::run held;
    {
        const std::lock_guard lock(mutex_);
        standing = cache_.at(stamp);
        if (standing) held = cache_.run_at(stamp);
    }
    if (!standing && demand.tolerance > 0) return fetch_near(demand, stamp);
    const bool needs_ahead = needs_more_ahead(demand, held);
    const bool needs_behind = held.frames_before < targets_.behind && held.from > 0;
    choose_decoded(demand, !standing, !needs_ahead && !needs_behind);
    if (standing && standing->sparse && pace_.shows_all(frame_seconds())) {
        {
            const std::lock_guard lock(mutex_);
            cache_.forget_sparse();
        }
        return seek(stamp, 0);
    }
    if (!standing) {
        forget_dead_ends();
        const progress made = fetch(demand, stamp);
        if (made == progress::nothing_to_do) return fail(movie_has_no_picture_here(path_));
        return made == progress::worked && frame_at(demand.seconds) ? progress::wanted_frame_came : made;
    }
    if (demand.hurries) return progress::nothing_to_do;
    if (needs_behind && direction < 0) {
        if (const progress made = fetch_behind(held); made != progress::nothing_to_do) return made;
    }
    if (needs_ahead) return fetch_ahead(held);
    return needs_behind ? fetch_behind(held) : progress::nothing_to_do;
}

// Under mutex_. As frame_reader has it, on any thread.
std::int64_t playback_movie::stamp_at(double seconds) const {
    if (seconds_per_tick_ <= 0) return 0;
    const double ticks = std::floor((seconds + frame_tolerance_seconds) / seconds_per_tick_);
    return std::max<std::int64_t>(0, static_cast<std::int64_t>(ticks));
}

picture_pointer playback_movie::frame_at(double seconds) const {
    const std::lock_guard lock(mutex_);
    return cache_.at(stamp_at(seconds));
}

picture_pointer playback_movie::frame_before(double seconds) const {
    const std::lock_guard lock(mutex_);
    return cache_.at_or_before(stamp_at(seconds));
}

picture_pointer playback_movie::frame_after(double seconds) const {
    const std::lock_guard lock(mutex_);
    return cache_.after(stamp_at(seconds));
}

picture_pointer playback_movie::frame_near(double seconds, double tolerance) const {
    const std::lock_guard lock(mutex_);
    if (tolerance >= key_frames_will_do) {
        const std::int64_t stamp = stamp_at(seconds);
        auto before = near_to_ == stamp ? cache_.at_or_before(stamp) : nullptr;
        return before && before->stamp >= near_from_ ? before : nullptr;
    }
    return cache_.near(stamp_at(seconds), stamp_at(seconds - tolerance), stamp_at(seconds + tolerance));
}

picture_pointer playback_movie::frame_preceding(const picture& shown) const {
    const std::lock_guard lock(mutex_);
    auto before = cache_.at_or_before(shown.stamp - 1);
    return before && before->until_stamp == shown.stamp && !before->sparse ? before : nullptr;
}

failure playback_movie::problem() const {
    const std::lock_guard lock(mutex_);
    return problem_;
}

failure playback_movie::difference_from_record() const {
    const std::lock_guard lock(mutex_);
    return difference_;
}

double playback_movie::frame_seconds() const {
    const std::lock_guard lock(mutex_);
    return frame_seconds_;
}

}  // namespace vistels
