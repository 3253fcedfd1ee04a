// SPDX-License-Identifier: GPL-3.0-or-later
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "util/colour_text.h"
#include "util/text_forms.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace vistels;
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    if (const auto colour = colour_from_text(text)) {
        const auto again = colour_from_text(colour_text(*colour, 4));
        if (!again || colour_from_text(colour_text(*again, 4)) != again) std::abort();
    }
    if (const auto rectangle = rectangle_from(property_value(text))) {
        const auto again = rectangle_from(property_value(rectangle_text(*rectangle)));
        if (!again || !(*again == *rectangle)) std::abort();
    }
    if (const auto date = date_from_text(text)) {
        if (date_from_text(date_text(*date)) != date) std::abort();
    }
    if (const auto bytes = bytes_from_base64(text)) {
        if (bytes_from_base64(base64_text(*bytes)) != bytes) std::abort();
    }
    std::string valid;
    append_valid_text(valid, text);
    if (!is_valid_text(valid)) std::abort();
    return 0;
}
