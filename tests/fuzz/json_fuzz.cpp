// SPDX-License-Identifier: GPL-3.0-or-later
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "util/json.h"

// What was read is written so that it reads back, and is then written the same; both layouts hold the same.
// (The values themselves may differ once: what is no character is replaced when it is written.)
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace vistels;
    const auto value = read_json(std::string_view(reinterpret_cast<const char*>(data), size), "fuzz");
    if (!value) return 0;
    const auto written = write_json(value.value());
    const auto again = read_json(written, "written");
    if (!again || write_json(again.value()) != written) std::abort();
    const auto one_line = write_json(value.value(), json_layout::one_line);
    const auto from_one_line = read_json(one_line, "one line");
    if (!from_one_line || !(from_one_line.value() == again.value())) std::abort();
    if (one_line.find('\n') != std::string::npos) std::abort();
    return 0;
}
