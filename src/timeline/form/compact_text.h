// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <string>
#include <string_view>

namespace vistels {

// A text that is seldom the same twice, such as a UUID or a time of day, in 17 bytes: texts up to 16 bytes
// and UUIDs (all capitals or all small letters) lie in it, longer ones on the heap. Reads back letter for
// letter.
class compact_text {
  public:
    static constexpr std::size_t longest_inside = 36;
    using buffer = std::array<char, longest_inside>;

    compact_text() = default;
    explicit compact_text(std::string_view text);
    compact_text(const compact_text& other);
    compact_text(compact_text&& other) noexcept;
    compact_text& operator=(compact_text other) noexcept;
    ~compact_text();

    bool empty() const { return form_ == 0; }
    std::string str() const;
    // The text, which lies in `room` or in this object: no longer valid than both.
    std::string_view text(buffer& room) const;

    bool operator==(const compact_text& other) const;
    bool operator==(std::string_view text) const;
    // The order of the texts, byte by byte.
    bool operator<(const compact_text& other) const;
    std::size_t hash() const;

  private:
    // Up to 16: the length of the text in bytes_.
    enum form : std::uint8_t { small_uuid = 17, capital_uuid = 18, on_heap = 19 };

    const std::string* heap() const;
    bool take_uuid(std::string_view text);

    std::array<unsigned char, 16> bytes_{};  // those not used are 0
    std::uint8_t form_ = 0;
};

}  // namespace vistels

template <>
struct std::hash<vistels::compact_text> {
    std::size_t operator()(const vistels::compact_text& text) const noexcept { return text.hash(); }
};
