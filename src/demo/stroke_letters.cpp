// SPDX-License-Identifier: GPL-3.0-or-later
#include "demo/stroke_letters.h"

#include <array>
#include <cstddef>

namespace vistels::demo {

namespace {

constexpr double grid_height = 6;
constexpr double letter_advance = 5.7;
constexpr double narrow_advance = 2.9;

// Lines on a grid of 4 by 6: two digits are a point (x, y), a blank lifts the pen.
constexpr std::array<std::string_view, 10> digits{
    "103041453616050110",          "152620 1030", "05163645440040",
    "05163645443313 334241301001", "30360242",    "460604344341301001",
    "4536160501103041423303",      "064610",      "133344453616050413 1302011030414233",
    "0110304145361605041343"};
constexpr std::array<std::string_view, 26> letters{"002640 1232",
                                                   "00063645443303 3342413000",
                                                   "4536160501103041",
                                                   "00063645413000",
                                                   "46060040 0333",
                                                   "460600 0333",
                                                   "45361605011030414323",
                                                   "0006 4046 0343",
                                                   "2026",
                                                   "4641301001",
                                                   "0006 460340",
                                                   "060040",
                                                   "0006234640",
                                                   "00064046",
                                                   "103041453616050110",
                                                   "00063645443303",
                                                   "103041453616050110 2240",
                                                   "00063645443303 2340",
                                                   "453616050413334241301001",
                                                   "2026 0646",
                                                   "060110304146",
                                                   "062046",
                                                   "0610233046",
                                                   "0046 0640",
                                                   "062346 2320",
                                                   "06460040"};

bool is_narrow(char letter) {
    return letter == ':' || letter == '.' || letter == 'I';
}

std::string_view lines_of(char letter) {
    if (letter >= '0' && letter <= '9') return digits[static_cast<std::size_t>(letter - '0')];
    if (letter >= 'A' && letter <= 'Z') return letters[static_cast<std::size_t>(letter - 'A')];
    switch (letter) {
        case ':':
            return "2121 2424";
        case '.':
            return "2020";
        case '-':
            return "0343";
        default:
            return {};
    }
}

}  // namespace

strokes text_strokes(std::string_view text, double height) {
    const double scale = height / grid_height;
    strokes drawn;
    double pen = 0;
    for (const char letter : text) {
        const double left = is_narrow(letter) ? pen - 1.4 : pen;
        bool is_down = false;
        const std::string_view lines = lines_of(letter);
        for (std::size_t index = 0; index + 1 < lines.size();) {
            if (lines[index] == ' ') {
                is_down = false;
                ++index;
                continue;
            }
            if (!is_down) drawn.emplace_back();
            is_down = true;
            drawn.back().push_back(point{left + (lines[index] - '0'), 0.0 + (lines[index + 1] - '0')} *
                                   scale);
            index += 2;
        }
        pen += is_narrow(letter) ? narrow_advance : letter_advance;
    }
    return drawn;
}

double text_width(std::string_view text, double height) {
    double width = 0;
    for (const char letter : text) width += is_narrow(letter) ? narrow_advance : letter_advance;
    if (!text.empty()) width -= is_narrow(text.back()) ? narrow_advance - 1.2 : letter_advance - 4;
    return width * height / grid_height;
}

}  // namespace vistels::demo
