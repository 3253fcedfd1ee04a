// SPDX-License-Identifier: GPL-3.0-or-later
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "util/colour_text.h"
#include "util/text_forms.h"

namespace {

using namespace vistels;

void require(bool holds) {
    if (!holds) std::abort();
}

// A colour is rounded when it is written; what was read of that is written the same for good.
void colours(std::string_view text) {
    const auto read = colour_from_text(text);
    if (!read) return;
    for (const int decimals : {3, 4, 5, 8}) {
        const auto again = colour_from_text(colour_text(*read, decimals));
        require(again.has_value());
        require(colour_from_text(colour_text(*again, decimals)) == again);
        constexpr double half = 0.500001;
        const double largest_change = half * std::pow(10.0, -decimals) + std::abs(read->red) * 1e-15;
        require(std::abs(again->red - read->red) <= largest_change);
    }
}

void numbers(std::string_view text) {
    if (const auto number = number_from_text(text); number && !std::isnan(*number)) {
        std::string written;
        append_shortest(written, *number);
        require(number_from_text(written) == number);
        written.clear();
        append_shortest_decimal(written, *number);
        require(number_from_text(written) == number);
    }
    if (const auto number = integer_from_text(text)) {
        std::string written;
        append_integer(written, *number);
        require(integer_from_text(written) == number);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    colours(text);
    numbers(text);
    if (const auto rectangle = rectangle_from(property_value(text))) {
        const auto again = rectangle_from(property_value(rectangle_text(*rectangle)));
        require(again && *again == *rectangle);
    }
    if (const auto date = date_from_text(text)) require(date_from_text(date_text(*date)) == date);
    if (const auto bytes = bytes_from_base64(text)) require(bytes_from_base64(base64_text(*bytes)) == bytes);
    require(bytes_from_base64(base64_text(text)) == text);
    std::string valid;
    append_valid_text(valid, text);
    require(is_valid_text(valid));
    require(!is_valid_text(text) || valid == text);
    return 0;
}
