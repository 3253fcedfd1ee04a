// SPDX-License-Identifier: GPL-3.0-or-later
#include "demo/sound_mixer.h"

#include <algorithm>
#include <cmath>

#include "demo/geometry.h"
#include "demo/seeded_random.h"

namespace vistels::demo {

namespace {

constexpr double crowd_loop_seconds = 7;
constexpr float murmur_level = 0.16f;
constexpr float roar_level = 0.62f;

std::size_t samples_in(double seconds) {
    return static_cast<std::size_t>(seconds * sound_rate);
}

// Noise between two frequencies (hertz), swelling and ebbing `swells` times in the loop; ends meet.
std::vector<float> crowd_noise(seeded_random& random, double low, double high, int swells, double depth) {
    const std::size_t count = samples_in(crowd_loop_seconds);
    const std::size_t overlap = samples_in(0.5);
    const double low_pass = 1 - std::exp(-2 * pi * high / sound_rate);
    const double high_pass = 1 - std::exp(-2 * pi * low / sound_rate);
    std::vector<float> made(count + overlap);
    double first = 0;
    double second = 0;
    double base = 0;
    for (float& sample : made) {
        first += low_pass * (random.between(-1, 1) - first);
        second += low_pass * (first - second);
        base += high_pass * (second - base);
        sample = static_cast<float>(second - base);
    }
    for (std::size_t index = 0; index < overlap; ++index) {
        const float share = static_cast<float>(index) / static_cast<float>(overlap);
        made[index] = made[index] * std::sqrt(share) + made[count + index] * std::sqrt(1 - share);
    }
    made.resize(count);
    double power = 0;
    for (const float sample : made) power += sample * sample;
    const double level = 0.25 / std::sqrt(power / static_cast<double>(count));
    const double phase = random.between(0, 2 * pi);
    for (std::size_t index = 0; index < count; ++index) {
        const double turn = 2 * pi * static_cast<double>(index) / static_cast<double>(count);
        const double swell =
            1 + depth * std::sin(swells * turn + phase) + 0.4 * depth * std::sin((2 * swells + 1) * turn);
        made[index] = static_cast<float>(made[index] * level * swell);
    }
    return made;
}

std::vector<float> kick_sound(seeded_random& random) {
    std::vector<float> made(samples_in(0.16));
    for (std::size_t index = 0; index < made.size(); ++index) {
        const double time = static_cast<double>(index) / sound_rate;
        const double thump =
            std::sin(2 * pi * (70 + 60 * std::exp(-time * 60)) * time) * std::exp(-time * 32);
        const double slap = random.between(-1, 1) * std::exp(-time * 260);
        made[index] = static_cast<float>(0.75 * thump + 0.4 * slap);
    }
    return made;
}

std::vector<float> whistle_sound(seeded_random& random, double seconds) {
    std::vector<float> made(samples_in(seconds));
    double turn = 0;
    for (std::size_t index = 0; index < made.size(); ++index) {
        const double time = static_cast<double>(index) / sound_rate;
        const double pea = std::sin(2 * pi * 31 * time);
        turn += 2 * pi * (2900 + 130 * pea) / sound_rate;
        const double rise = std::min({1.0, time / 0.012, (seconds - time) / 0.05});
        made[index] = static_cast<float>(
            rise * (0.8 + 0.2 * pea) *
            (0.42 * std::sin(turn) + 0.1 * std::sin(2 * turn) + 0.05 * random.between(-1, 1)));
    }
    return made;
}

}  // namespace

sound_mixer::sound_mixer(const game_record& game, const film_camera& camera, std::uint64_t seed)
    : game_(game), camera_(camera) {
    seeded_random random(seed);
    for (auto& loop : murmur_) loop = crowd_noise(random, 180, 900, 3, 0.25);
    for (auto& loop : roar_) loop = crowd_noise(random, 400, 1700, 5, 0.15);
    kick_ = kick_sound(random);
    whistle_ = whistle_sound(random, 0.45);
    long_whistle_ = whistle_sound(random, 1.1);
}

const sound_mixer::samples& sound_mixer::voice_of(cue_kind kind) const {
    static const samples none;
    switch (kind) {
        case cue_kind::kick:
            return kick_;
        case cue_kind::whistle:
            return whistle_;
        case cue_kind::long_whistle:
            return long_whistle_;
        default:
            return none;  // the crowd's loops are used for these
    }
}

sound_mixer::ear_gains sound_mixer::gains_of(const sound_cue& cue) const {
    const point way = cue.place - camera_.eye.ground();
    const point ahead = with_length(camera_.looks_at.ground() - camera_.eye.ground(), 1);
    const double away = std::max(1.0, length(way));
    const double side = (way.x * ahead.y - way.y * ahead.x) / away;  // -1 left to 1 right
    const double carries = cue.kind == cue_kind::kick ? 26 : 60;
    const double gain = cue.strength * std::min(1.0, carries / (6 + away));
    return {static_cast<float>(gain * std::sqrt(0.5 - 0.35 * side)),
            static_cast<float>(gain * std::sqrt(0.5 + 0.35 * side))};
}

double sound_mixer::excitement_at(double seconds) const {
    double sum = 0;
    for (const sound_cue& cue : game_.cues()) {
        const double since = seconds - cue.at;
        if (since < 0) break;
        const bool cheers = cue.kind == cue_kind::cheer;
        if (!cheers && cue.kind != cue_kind::gasp) continue;
        const double lasts = cheers ? 2.4 : 0.55;
        if (since > 8 * lasts) continue;
        sum += cue.strength * (cheers ? 1 : 0.45) * std::min(1.0, since / 0.18) * std::exp(-since / lasts);
    }
    return std::min(sum, 1.0);
}

void sound_mixer::add_crowd(std::vector<float>& mixed, std::int64_t first, std::size_t frames) const {
    const double start = static_cast<double>(first) / sound_rate;
    const auto from = static_cast<float>(excitement_at(start));
    const auto to = static_cast<float>(excitement_at(start + static_cast<double>(frames) / sound_rate));
    const auto loop = static_cast<std::int64_t>(murmur_[0].size());
    std::size_t place = static_cast<std::size_t>(((first % loop) + loop) % loop);
    for (std::size_t index = 0; index < frames; ++index) {
        const float share = static_cast<float>(index) / static_cast<float>(frames);
        const float excited = from + (to - from) * share;
        for (std::size_t ear = 0; ear < sound_channels; ++ear)
            mixed[index * sound_channels + ear] +=
                murmur_level * murmur_[ear][place] + roar_level * excited * roar_[ear][place];
        if (++place == static_cast<std::size_t>(loop)) place = 0;
    }
}

std::vector<float> sound_mixer::mix(double seconds, std::size_t frames) const {
    std::vector<float> mixed(frames * sound_channels);
    const std::int64_t first = std::llround(seconds * sound_rate);
    add_crowd(mixed, first, frames);
    for (const sound_cue& cue : game_.cues()) {
        const std::int64_t begins = std::llround(cue.at * sound_rate) - first;
        if (begins >= static_cast<std::int64_t>(frames)) break;
        const samples& voice = voice_of(cue.kind);
        if (begins + static_cast<std::int64_t>(voice.size()) <= 0) continue;
        const ear_gains gains = gains_of(cue);
        const auto end = std::min<std::int64_t>(static_cast<std::int64_t>(frames),
                                                begins + static_cast<std::int64_t>(voice.size()));
        for (std::int64_t index = std::max<std::int64_t>(0, begins); index < end; ++index)
            for (std::size_t ear = 0; ear < sound_channels; ++ear)
                mixed[static_cast<std::size_t>(index) * sound_channels + ear] +=
                    gains[ear] * voice[static_cast<std::size_t>(index - begins)];
    }
    for (float& sample : mixed) sample = std::clamp(sample, -0.98f, 0.98f);
    return mixed;
}

}  // namespace vistels::demo
