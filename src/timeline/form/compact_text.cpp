// SPDX-License-Identifier: GPL-3.0-or-later
#include "timeline/form/compact_text.h"

#include <utility>

namespace vistels {

namespace {

constexpr std::size_t uuid_length = 36;

constexpr std::uint8_t no_digit = 0xFF;

constexpr auto digit_values(char ten) {
    std::array<std::uint8_t, 256> values{};
    values.fill(no_digit);
    for (unsigned digit = 0; digit < 10; ++digit) values['0' + digit] = static_cast<std::uint8_t>(digit);
    for (unsigned digit = 0; digit < 6; ++digit) {
        values[static_cast<unsigned char>(ten) + digit] = static_cast<std::uint8_t>(10 + digit);
    }
    return values;
}

constexpr auto small_values = digit_values('a');
constexpr auto capital_values = digit_values('A');

// Where the two digits of each byte stand in the text of a UUID.
constexpr std::array<std::uint8_t, 16> digit_places{0,  2,  4,  6,  9,  11, 14, 16,
                                                    19, 21, 24, 26, 28, 30, 32, 34};

}  // namespace

bool compact_text::take_uuid(std::string_view text) {
    if (text[8] != '-' || text[13] != '-' || text[18] != '-' || text[23] != '-') return false;
    for (const auto& [values, letters] :
         {std::pair(&capital_values, capital_uuid), std::pair(&small_values, small_uuid)}) {
        unsigned worst = 0;
        for (std::size_t at = 0; at < bytes_.size(); ++at) {
            const unsigned high = (*values)[static_cast<unsigned char>(text[digit_places[at]])];
            const unsigned low = (*values)[static_cast<unsigned char>(text[digit_places[at] + 1U])];
            worst |= high | low;
            bytes_[at] = static_cast<unsigned char>(high << 4U | low);
        }
        if ((worst & 0xF0U) == 0) {
            form_ = letters;
            return true;
        }
    }
    return false;
}

compact_text::compact_text(std::string_view text) {
    if (text.size() <= bytes_.size()) {
        if (!text.empty()) std::memcpy(bytes_.data(), text.data(), text.size());
        form_ = static_cast<std::uint8_t>(text.size());
        return;
    }
    if (text.size() == uuid_length && take_uuid(text)) return;
    const auto* kept = new std::string(text);
    bytes_ = {};
    std::memcpy(bytes_.data(), &kept, sizeof kept);
    form_ = on_heap;
}

compact_text::compact_text(const compact_text& other) : bytes_(other.bytes_), form_(other.form_) {
    if (form_ != on_heap) return;
    const auto* kept = new std::string(*other.heap());
    std::memcpy(bytes_.data(), &kept, sizeof kept);
}

compact_text::compact_text(compact_text&& other) noexcept
    : bytes_(other.bytes_), form_(std::exchange(other.form_, std::uint8_t{0})) {
    other.bytes_ = {};
}

compact_text& compact_text::operator=(compact_text other) noexcept {
    std::swap(bytes_, other.bytes_);
    std::swap(form_, other.form_);
    return *this;
}

compact_text::~compact_text() {
    if (form_ == on_heap) delete heap();
}

const std::string* compact_text::heap() const {
    const std::string* kept = nullptr;
    std::memcpy(&kept, bytes_.data(), sizeof kept);
    return kept;
}

std::string_view compact_text::text(buffer& room) const {
    if (form_ == on_heap) return *heap();
    if (form_ < small_uuid) return {reinterpret_cast<const char*>(bytes_.data()), form_};
    const char* digits = form_ == small_uuid ? "0123456789abcdef" : "0123456789ABCDEF";
    for (const std::size_t dash : {8U, 13U, 18U, 23U}) room[dash] = '-';
    for (std::size_t at = 0; at < bytes_.size(); ++at) {
        room[digit_places[at]] = digits[bytes_[at] >> 4U];
        room[digit_places[at] + 1U] = digits[bytes_[at] & 15U];
    }
    return {room.data(), room.size()};
}

std::string compact_text::str() const {
    buffer room;
    return std::string(text(room));
}

bool compact_text::operator==(const compact_text& other) const {
    if (form_ != other.form_) return false;
    return form_ == on_heap ? *heap() == *other.heap() : bytes_ == other.bytes_;
}

bool compact_text::operator==(std::string_view other) const {
    buffer room;
    return text(room) == other;
}

bool compact_text::operator<(const compact_text& other) const {
    // Digits stand before letters, so the bytes of two UUIDs in the same letters order as their texts do.
    const bool both_uuids = form_ == other.form_ && (form_ == small_uuid || form_ == capital_uuid);
    if (both_uuids) return bytes_ < other.bytes_;
    buffer room;
    buffer other_room;
    return text(room) < other.text(other_room);
}

std::size_t compact_text::hash() const {
    if (form_ == on_heap) return std::hash<std::string>()(*heap());
    return std::hash<std::string_view>()({reinterpret_cast<const char*>(bytes_.data()), bytes_.size()});
}

}  // namespace vistels
