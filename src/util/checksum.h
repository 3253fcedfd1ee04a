// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace vistels {

// XXH3, 64 bits: tells torn or changed bytes from whole ones; not meant against forgery. Any thread.
std::uint64_t checksum(std::string_view bytes);

// The checksum of bytes that come in parts. Not for two threads at once.
class checksum_of_parts {
  public:
    checksum_of_parts();
    ~checksum_of_parts();
    checksum_of_parts(const checksum_of_parts&) = delete;
    checksum_of_parts& operator=(const checksum_of_parts&) = delete;

    void add(std::string_view bytes);
    std::uint64_t value() const;

  private:
    struct state;
    std::unique_ptr<state> state_;
};

// The number as 16 lower-case hexadecimal digits.
std::string checksum_text(std::uint64_t sum);
// The number in such a text; nothing when it is none.
std::optional<std::uint64_t> checksum_from_text(std::string_view text);

}  // namespace vistels
