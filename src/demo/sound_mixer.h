// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "demo/film_camera.h"
#include "demo/simulation.h"

namespace vistels::demo {

inline constexpr int sound_rate = 48000;  // samples a second
inline constexpr int sound_channels = 2;

// What the microphone of one camera hears of a game: the crowd all the time, louder after goals and chances,
// kicks and whistles at their moments, louder the nearer they are. Sound takes no time to travel here, so
// that cameras can be aligned by it. One thread at a time; `game` must outlive it.
class sound_mixer {
  public:
    sound_mixer(const game_record& game, const film_camera& camera, std::uint64_t seed);

    // Interleaved samples from -1 to 1, beginning at a moment of the game (seconds), `frames` for each
    // channel.
    std::vector<float> mix(double seconds, std::size_t frames) const;

  private:
    using samples = std::vector<float>;
    using ear_gains = std::array<float, sound_channels>;

    ear_gains gains_of(const sound_cue& cue) const;
    double excitement_at(double seconds) const;
    void add_crowd(std::vector<float>& mixed, std::int64_t first, std::size_t frames) const;
    const samples& voice_of(cue_kind kind) const;

    const game_record& game_;
    film_camera camera_;
    std::array<samples, sound_channels> murmur_;  // loops
    std::array<samples, sound_channels> roar_;
    samples kick_;
    samples whistle_;
    samples long_whistle_;
};

}  // namespace vistels::demo
