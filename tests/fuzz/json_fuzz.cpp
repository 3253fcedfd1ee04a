// SPDX-License-Identifier: GPL-3.0-or-later
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "util/json.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto value =
        vistels::read_json(std::string_view(reinterpret_cast<const char*>(data), size), "fuzz");
    if (!value) return 0;
    const auto written = vistels::write_json(value.value());
    const auto again = vistels::read_json(written, "written");
    if (!again || vistels::write_json(again.value()) != written) std::abort();
    return 0;
}
