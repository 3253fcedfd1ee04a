// SPDX-License-Identifier: GPL-3.0-or-later
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "util/property_list.h"

// What can be read can be written, and is then read as the same.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto value =
        vistels::read_property_list(std::string_view(reinterpret_cast<const char*>(data), size), "fuzz");
    if (!value) return 0;
    const auto written = vistels::write_property_list(value.value());
    const auto again = vistels::read_property_list(written, "written");
    if (value.value().is_null()) return 0;  // a lone unreadable number has no written form
    if (!again || vistels::write_property_list(again.value()) != written) std::abort();
    return 0;
}
