// SPDX-License-Identifier: GPL-3.0-or-later
#include "demo/grain.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace vistels::demo {

namespace {

constexpr std::size_t pixels_of_noise = 1 << 15;  // rows begin at random places in it: no pattern shows
constexpr double brightness_noise = 3.2;          // standard deviation, of 255
constexpr double colour_noise = 1.4;

}  // namespace

grain::grain(std::uint64_t seed) : random_(seed) {
    const auto bell = [this] {
        return (random_.share() + random_.share() + random_.share() + random_.share() - 2) * std::sqrt(3.0);
    };
    noise_.reserve(pixels_of_noise * 4);
    for (std::size_t index = 0; index < pixels_of_noise; ++index) {
        const double light = brightness_noise * bell();
        for (int part = 0; part < 3; ++part)
            noise_.push_back(static_cast<std::int8_t>(std::lround(light + colour_noise * bell())));
        noise_.push_back(0);
    }
}

void grain::add_to(std::uint8_t* bgra, int width, int height, int stride) {
    const auto bytes = static_cast<std::size_t>(width) * 4;
    const std::size_t places = pixels_of_noise - static_cast<std::size_t>(width);
    for (int y = 0; y < height; ++y) {
        std::uint8_t* row = bgra + static_cast<std::ptrdiff_t>(y) * stride;
        const std::int8_t* noise = noise_.data() + random_.below(places) * 4;
        // In 16 bits, of which the compiler takes many at once.
        for (std::size_t index = 0; index < bytes; ++index) {
            auto sum = static_cast<std::int16_t>(row[index] + noise[index]);
            sum = sum < 0 ? std::int16_t{0} : sum;
            sum = sum > 255 ? std::int16_t{255} : sum;
            row[index] = static_cast<std::uint8_t>(sum);
        }
    }
}

}  // namespace vistels::demo
