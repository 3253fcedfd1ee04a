// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <string_view>

namespace vistels {

// Names one content of a file. A missing file has size -1.
struct file_content_mark {
    std::int64_t size = -1;
    std::uint64_t hash = 0;
    bool operator==(const file_content_mark&) const = default;
};

file_content_mark content_mark_of(std::string_view file_content);

}  // namespace vistels
