// SPDX-License-Identifier: GPL-3.0-or-later
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "../support/simdjson_tree.h"
#include "allocation_count.h"
#include "util/json.h"
#include "util/property_list.h"

namespace {

using namespace vistels;

void require(bool holds) {
    if (!holds) std::abort();
}

// What another reader takes is taken, and is the same; what it refuses is refused.
void check_against_simdjson(std::string_view input, const result<property_value>& value) {
    const auto expected = tree_by_simdjson(input, deepest_nesting);
    if (!value && value.message().find("nested") != std::string::npos) return;  // it may take one level more
    require(value.ok() == expected.has_value());
    if (expected) require(value.value() == *expected);
}

// Written so that it reads back, and is then written the same; both layouts hold the same. (The values
// themselves may differ once: what is no character is replaced when it is written.)
void check_written(const property_value& value) {
    const auto written = write_json(value);
    const auto again = read_json(written, "written");
    require(again.ok() && write_json(again.value()) == written);
    const auto one_line = write_json(value, json_layout::one_line);
    const auto from_one_line = read_json(one_line, "one line");
    require(from_one_line.ok() && from_one_line.value() == again.value());
    require(one_line.find('\n') == std::string::npos);
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    fuzz::count_allocations();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    require(fuzz::is_lean(size, "reading", [&] {
        stored_arena arena;
        (void)read_json(input, "fuzz", arena);
    }));
    const auto value = read_json(input, "fuzz");
    check_against_simdjson(input, value);
    if (value) check_written(value.value());
    return 0;
}
