// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "util/property_value.h"

namespace vistels {

struct stored_member;

// A stored value that is looked at, not owned: its texts and parts lie in the text or property_value that was
// read and in the arena that made it, and must not be used after either is gone. What records are read from.
class stored_view {
  public:
    enum class form : std::uint8_t { null, boolean, integer, real, text, data, date, array, dictionary };

    stored_view() = default;  // a null
    explicit stored_view(bool value) : form_(form::boolean) { boolean_ = value; }
    explicit stored_view(std::int64_t value) : form_(form::integer) { integer_ = value; }
    explicit stored_view(double value) : form_(form::real) { real_ = value; }
    explicit stored_view(std::string_view value) : form_(form::text) { set(value.data(), value.size()); }
    explicit stored_view(std::span<const stored_view> value) : form_(form::array) {
        set(value.data(), value.size());
    }
    explicit stored_view(std::span<const stored_member> value) : form_(form::dictionary) {
        set(value.data(), value.size());
    }
    static stored_view of_data(std::string_view bytes);
    static stored_view of_date(double seconds_since_1970);

    form kind() const { return form_; }
    // As those of property_value: the value when it is of that type, nothing otherwise. A whole number counts
    // as `number`; a number without a fraction counts as `integer`; a boolean is neither.
    std::optional<bool> boolean() const;
    std::optional<std::int64_t> integer() const;
    std::optional<double> number() const;
    std::optional<std::string_view> text() const;
    // Empty for what is no array, or no dictionary. With a key that stands twice the last one counts.
    std::span<const stored_view> items() const;
    std::span<const stored_member> members() const;
    bool is_array() const { return form_ == form::array; }
    bool is_dictionary() const { return form_ == form::dictionary; }

    // The value of its own.
    property_value copy() const;

  private:
    void set(const void* data, std::size_t size) {
        part_.data = data;
        part_.size = size;
    }

    struct part {
        const void* data;
        std::size_t size;
    };

    form form_ = form::null;
    union {
        bool boolean_;
        std::int64_t integer_;
        double real_;
        part part_;
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

// A view of `value` (or of a dictionary), which must outlive it.
stored_view view_of(const property_value& value, stored_arena& arena);
stored_view view_of(const property_dictionary& value, stored_arena& arena);

}  // namespace vistels
