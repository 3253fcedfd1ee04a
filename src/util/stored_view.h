// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <span>
#include <string_view>
#include <type_traits>
#include <vector>

#include "util/property_value.h"

namespace vistels {

struct stored_member;

// A stored value that is looked at, not owned: its texts and parts lie in the text or property_value that was
// read and in the arena that made it, and must not be used after either is gone. What records are read from.
// Sixteen bytes: of the shortest values a file can hold half as many as it has bytes.
class stored_view {
  public:
    enum class form : std::uint8_t { null, boolean, integer, real, text, data, date, array, dictionary };

    stored_view() : bits_(0) {}  // a null
    explicit stored_view(bool value) : form_and_size_(word(form::boolean, 0)), boolean_(value) {}
    explicit stored_view(std::int64_t value) : form_and_size_(word(form::integer, 0)), integer_(value) {}
    explicit stored_view(double value) : form_and_size_(word(form::real, 0)), real_(value) {}
    explicit stored_view(std::string_view value) : stored_view(form::text, value.data(), value.size()) {}
    explicit stored_view(std::span<const stored_view> value)
        : stored_view(form::array, value.data(), value.size()) {}
    explicit stored_view(std::span<const stored_member> value)
        : stored_view(form::dictionary, value.data(), value.size()) {}
    static stored_view of_data(std::string_view bytes);
    static stored_view of_date(double seconds_since_1970);

    form kind() const { return static_cast<form>(form_and_size_ & form_mask); }
    // As those of property_value: the value when it is of that type, nothing otherwise. A whole number counts
    // as `number`; a number without a fraction counts as `integer`; a boolean is neither.
    std::optional<bool> boolean() const;
    std::optional<std::int64_t> integer() const;
    std::optional<double> number() const;
    std::optional<std::string_view> text() const;
    // Empty for what is no array, or no dictionary. With a key that stands twice the last one counts.
    std::span<const stored_view> items() const;
    std::span<const stored_member> members() const;
    bool is_array() const { return kind() == form::array; }
    bool is_dictionary() const { return kind() == form::dictionary; }

    // The value of its own.
    property_value copy() const;

  private:
    static constexpr unsigned form_bits = 8;
    static constexpr std::uint64_t form_mask = (1U << form_bits) - 1;

    static constexpr std::uint64_t word(form kind, std::size_t size) {
        return std::uint64_t{size} << form_bits | static_cast<std::uint64_t>(kind);
    }
    stored_view(form kind, const void* data, std::size_t size)
        : form_and_size_(word(kind, size)), data_(data) {}
    std::size_t size() const { return static_cast<std::size_t>(form_and_size_ >> form_bits); }

    std::uint64_t form_and_size_ = 0;  // of what lies at data_
    union {
        std::uint64_t bits_;
        bool boolean_;
        std::int64_t integer_;
        double real_;
        const void* data_;
    };
};

struct stored_member {
    std::string_view key;
    stored_view value;
};

// Where views keep what is not in the text itself: lists of items and members, and texts with escapes undone.
// Grows in blocks; `clear` keeps the memory for the next use. One thread.
class stored_arena {
  public:
    std::span<const stored_view> keep(std::span<const stored_view> items);
    std::span<const stored_member> keep(std::span<const stored_member> members);
    std::string_view keep(std::string_view text);
    // Room for that many, to be filled by the caller.
    std::span<stored_view> room_for_items(std::size_t count);
    std::span<stored_member> room_for_members(std::size_t count);
    std::span<char> room_for_text(std::size_t bytes);
    void clear();

  private:
    struct block {
        std::unique_ptr<std::byte[]> bytes;
        std::size_t size = 0;
    };
    void* take(std::size_t bytes);
    void* take_apart(std::size_t bytes);
    void add_block(std::size_t place, std::size_t bytes);

    std::vector<block> blocks_;
    std::size_t block_ = 0;  // the one that is being filled
    std::size_t used_ = 0;   // of it
};

// The items or members of lists that are being read, those of the outer lists first. Needs no more memory
// than they do, and gives it back when they are taken.
template <class Part>
class part_stack {
  public:
    std::size_t size() const { return parts_.size(); }
    void push(const Part& part) { parts_.push_back(part); }
    // Takes those from `first` on into the arena.
    std::span<const Part> take(std::size_t first, stored_arena& arena) {
        const auto from = parts_.begin() + static_cast<std::ptrdiff_t>(first);
        std::span<Part> room;
        if constexpr (std::is_same_v<Part, stored_view>) {
            room = arena.room_for_items(parts_.size() - first);
        } else {
            room = arena.room_for_members(parts_.size() - first);
        }
        std::uninitialized_copy(from, parts_.end(), room.data());
        parts_.erase(from, parts_.end());
        return room;
    }
    void clear() { parts_.clear(); }

  private:
    std::deque<Part> parts_;
};

// A view of `value` (or of a dictionary), which must outlive it.
stored_view view_of(const property_value& value, stored_arena& arena);
stored_view view_of(const property_dictionary& value, stored_arena& arena);

}  // namespace vistels
