// SPDX-License-Identifier: GPL-3.0-or-later
#include "video/playback_sound.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <condition_variable>
#include <map>
#include <mutex>
#include <utility>

#include "media/sound_output.h"
#include "media/sound_reader.h"
#include "media/sound_speed.h"
#include "util/serial_queue.h"

namespace vistels {

namespace {

constexpr double added_ahead_seconds = 0.2;
constexpr std::size_t frames_at_once = 1920;  // 40 ms
constexpr auto feeding_pause = std::chrono::milliseconds(15);
constexpr double largest_drift_seconds = 0.25;  // beyond, sound starts afresh
constexpr int most_reads = 64;                  // for one piece of sound of another speed

}  // namespace

struct playback_sound::implementation {
    mutable std::mutex mutex;
    std::condition_variable changed;
    std::vector<playback_part> parts;  // guarded by mutex, like all down to `ending`
    pitch_algorithm pitch = pitch_algorithm::varispeed;
    double volume = 1;
    double seconds = 0;  // where playback is
    double rate = 0;
    bool restart = false;
    bool feeding = false;
    bool ending = false;
    std::optional<double> heard;
    std::atomic<std::uint64_t> stages{0};  // begun and ended pieces of feeding

    // Of the queue.
    std::unique_ptr<sound_output> output;
    bool output_failed = false;
    double set_volume = -1;
    double from_seconds = 0;  // the vistel's time of the first sound since the last flush
    double fed_rate = 0;
    std::unique_ptr<sound_speed> speed;  // null at rate 1
    double read_until = 0;               // of the vistel's time; where the next read begins
    bool running = false;
    std::map<std::string, std::unique_ptr<sound_reader>> readers;  // null: has no sound
    std::vector<float> read_samples;
    std::vector<float> made_samples;

    serial_queue queue{"sound"};

    ~implementation() { end(); }
    void end() {
        const std::lock_guard lock(mutex);
        ending = true;
        changed.notify_all();
    }
    void feed();
    bool feed_once(std::unique_lock<std::mutex>& lock);
    void begin(double at, double at_rate, pitch_algorithm at_pitch);
    void add_some(const std::vector<playback_part>& from);
    result<void> read_and_change(const std::vector<playback_part>& from);
    void read_from(const std::vector<playback_part>& from, double at, std::size_t frames);
    bool can_sound() const { return sounds_at(rate) && volume > 0 && !parts.empty() && !output_failed; }
};

// Feeds the device while there is something to hear.
void playback_sound::implementation::feed() {
    std::unique_lock lock(mutex);
    while (!ending && can_sound()) {
        if (!feed_once(lock)) changed.wait_for(lock, feeding_pause);
    }
    feeding = false;
    running = false;
    heard.reset();
    lock.unlock();
    if (output) output->flush();
}

// Adds the next piece of sound; false when enough is waiting.
bool playback_sound::implementation::feed_once(std::unique_lock<std::mutex>& lock) {
    const double at = seconds;
    const double at_rate = rate;
    const double at_volume = volume;
    const pitch_algorithm at_pitch = pitch;
    bool afresh = std::exchange(restart, false) || !running || fed_rate != at_rate;
    if (heard && std::abs(*heard - at) > largest_drift_seconds) afresh = true;
    const auto from = parts;
    lock.unlock();
    ++stages;
    if (!output) {
        auto opened = sound_output::open();
        if (opened.ok()) output = std::move(opened).value();
    }
    bool added = false;
    std::optional<double> now;
    if (output) {
        if (set_volume != at_volume) output->set_volume(at_volume);
        set_volume = at_volume;
        if (afresh) begin(at, at_rate, at_pitch);
        added = output->added_seconds() - output->heard_seconds() < added_ahead_seconds;
        if (added) add_some(from);
        if (output->heard_seconds() > 0) now = from_seconds + output->heard_seconds() * fed_rate;
    }
    ++stages;
    lock.lock();
    if (!output) output_failed = true;
    if (!restart) heard = now;
    return added;
}

void playback_sound::implementation::begin(double at, double at_rate, pitch_algorithm at_pitch) {
    output->flush();
    from_seconds = read_until = at;
    fed_rate = at_rate;
    running = true;
    speed.reset();
    if (at_rate == 1) return;
    auto opened = sound_speed::open(at_rate, at_pitch == pitch_algorithm::time_domain);
    if (opened.ok()) speed = std::move(opened).value();
}

// Silence where the speed cannot be changed: sound at the wrong one would be no help.
void playback_sound::implementation::add_some(const std::vector<playback_part>& from) {
    made_samples.assign(frames_at_once * sound_channels, 0.0F);
    if (fed_rate == 1) {
        read_from(from, read_until, frames_at_once);
        made_samples.swap(read_samples);
        read_until += static_cast<double>(frames_at_once) / sound_samples_per_second;
    } else if (speed && !read_and_change(from).ok()) {
        speed.reset();
    }
    if (!output->add(made_samples.data(), frames_at_once).ok()) output.reset();
}

result<void> playback_sound::implementation::read_and_change(const std::vector<playback_part>& from) {
    std::size_t made = speed->take(made_samples.data(), frames_at_once);
    for (int reads = 0; made < frames_at_once && reads < most_reads; ++reads) {
        read_from(from, read_until, frames_at_once);
        read_until += static_cast<double>(frames_at_once) / sound_samples_per_second;
        if (auto added = speed->add(read_samples.data(), frames_at_once); !added.ok()) return added;
        made += speed->take(made_samples.data() + made * sound_channels, frames_at_once - made);
    }
    return {};
}

// The vistel's sound from a time on; silence in gaps and where it cannot be read.
void playback_sound::implementation::read_from(const std::vector<playback_part>& from, double at,
                                               std::size_t frames) {
    read_samples.assign(frames * sound_channels, 0.0F);
    for (const auto& part : from) {
        if (at < part.start || at >= part.start + part.duration) continue;
        auto [place, is_new] = readers.try_emplace(part.path);
        if (is_new) {
            auto opened = sound_reader::open(part.path);
            if (opened.ok()) place->second = std::move(opened).value();
        }
        if (!place->second) return;
        if (!place->second->read(at - part.start, read_samples.data(), frames).ok()) place->second.reset();
        return;
    }
}

playback_sound::playback_sound(const clock& patience)
    : patience_(patience), its_(std::make_shared<implementation>()) {}

playback_sound::~playback_sound() {
    look_at_reading();
    leave();
}

void playback_sound::look_at_reading() {
    const std::uint64_t stages = its_->stages;
    watch_.look({stages / 2, stages % 2 != 0}, patience_.seconds());
}

// What hangs at a file ends by itself.
void playback_sound::leave() {
    its_->end();
    if (watch_.is_slow()) its_->queue.post([held = its_] {});  // its last owner
}

void playback_sound::set_parts(std::vector<playback_part> parts) {
    look_at_reading();
    if (watch_.is_slow()) {
        auto made = std::make_shared<implementation>();
        {
            const std::lock_guard lock(its_->mutex);
            made->pitch = its_->pitch;
            made->volume = its_->volume;
        }
        leave();
        its_ = std::move(made);
        watch_ = {};
    }
    const std::lock_guard lock(its_->mutex);
    its_->parts = std::move(parts);
    its_->restart = true;
    its_->heard.reset();
}

void playback_sound::set_pitch(pitch_algorithm pitch) {
    const std::lock_guard lock(its_->mutex);
    if (its_->pitch == pitch) return;
    its_->pitch = pitch;
    its_->restart = true;
}

void playback_sound::set_volume(double volume) {
    const std::lock_guard lock(its_->mutex);
    its_->volume = volume;
}

void playback_sound::restart() {
    const std::lock_guard lock(its_->mutex);
    its_->restart = true;
    its_->heard.reset();
}

void playback_sound::update(double seconds, double rate) {
    look_at_reading();
    implementation& its = *its_;
    {
        const std::lock_guard lock(its.mutex);
        its.seconds = seconds;
        if (its.rate != rate) its.changed.notify_all();
        its.rate = rate;
        if (its.feeding || !its.can_sound()) return;
        its.feeding = true;
    }
    its.queue.post([&its] { its.feed(); });
}

std::optional<double> playback_sound::heard_seconds() const {
    if (watch_.is_slow()) return std::nullopt;
    const std::lock_guard lock(its_->mutex);
    return its_->heard;
}

}  // namespace vistels
