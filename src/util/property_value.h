// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace vistels {

class property_value;
struct property_entry;
using property_array = std::vector<property_value>;

// Bytes kept as they are ("data" in a property list).
struct property_data {
    std::string bytes;
    bool operator==(const property_data&) const = default;
};

// A moment, in seconds since 1970-01-01 00:00 UTC.
struct property_date {
    double seconds = 0;
    bool operator==(const property_date&) const = default;
};

// Keys with their values in the order in which they were added or read. Looking up is linear, which is
// quickest for the few dozen keys a stored record has. With a key that stands twice the last one counts.
class property_dictionary {
  public:
    // Defined below, where property_entry is whole.
    property_dictionary() noexcept;
    property_dictionary(const property_dictionary&);
    property_dictionary(property_dictionary&&) noexcept;
    property_dictionary& operator=(const property_dictionary&);
    property_dictionary& operator=(property_dictionary&&) noexcept;
    ~property_dictionary();

    const property_value* find(std::string_view key) const;
    property_value* find(std::string_view key);
    bool contains(std::string_view key) const { return find(key) != nullptr; }

    // Replaces the value of `key` where it stands, or appends it.
    void set(std::string_view key, property_value value);
    // Appends without looking for `key`: for writers, who give each key once.
    void add(std::string_view key, property_value value);
    void add(std::string&& key, property_value value);
    void add(const char* key, property_value value);
    void reserve(std::size_t count);
    void remove(std::string_view key);

    // The value of `key` when it is there and of that type; nothing otherwise. A whole number counts as
    // `number`; a number without a fraction counts as `integer`; a boolean is neither.
    std::optional<bool> boolean(std::string_view key) const;
    std::optional<std::int64_t> integer(std::string_view key) const;
    std::optional<double> number(std::string_view key) const;
    const std::string* text(std::string_view key) const;
    const property_array* array(std::string_view key) const;
    const property_dictionary* dictionary(std::string_view key) const;

    // The text of `key`, or the empty text.
    std::string text_or_empty(std::string_view key) const;

    bool empty() const { return entries_.empty(); }
    std::size_t size() const;
    const property_entry* begin() const;
    const property_entry* end() const;

    bool operator==(const property_dictionary&) const;

  private:
    std::vector<property_entry> entries_;
};

// One value of a property list or of a JSON document. A null stands for a value of no known type; it is never
// written to a property list.
class property_value {
  public:
    using storage = std::variant<std::monostate, bool, std::int64_t, double, std::string, property_data,
                                 property_date, property_array, property_dictionary>;

    property_value() = default;
    property_value(bool value) : value_(value) {}
    property_value(int value) : value_(std::int64_t{value}) {}
    property_value(std::int64_t value) : value_(value) {}
    property_value(double value) : value_(value) {}
    property_value(const char* value) : value_(std::string(value)) {}
    property_value(std::string_view value) : value_(std::string(value)) {}
    property_value(std::string value) : value_(std::move(value)) {}
    property_value(property_data value) : value_(std::move(value)) {}
    property_value(property_date value) : value_(value) {}
    property_value(property_array value) : value_(std::move(value)) {}
    property_value(property_dictionary value) : value_(std::move(value)) {}

    const storage& get() const { return value_; }

    bool is_null() const { return std::holds_alternative<std::monostate>(value_); }
    std::optional<bool> boolean() const;
    std::optional<std::int64_t> integer() const;
    std::optional<double> number() const;
    const std::string* text() const { return std::get_if<std::string>(&value_); }
    const property_data* data() const { return std::get_if<property_data>(&value_); }
    const property_date* date() const { return std::get_if<property_date>(&value_); }
    const property_array* array() const { return std::get_if<property_array>(&value_); }
    property_array* array() { return std::get_if<property_array>(&value_); }
    const property_dictionary* dictionary() const { return std::get_if<property_dictionary>(&value_); }
    property_dictionary* dictionary() { return std::get_if<property_dictionary>(&value_); }

    bool operator==(const property_value& other) const { return value_ == other.value_; }

  private:
    storage value_;
};

struct property_entry {
    std::string key;
    property_value value;
    bool operator==(const property_entry&) const = default;
};

inline property_dictionary::property_dictionary() noexcept = default;
inline property_dictionary::property_dictionary(const property_dictionary&) = default;
inline property_dictionary::property_dictionary(property_dictionary&&) noexcept = default;
inline property_dictionary& property_dictionary::operator=(const property_dictionary&) = default;
inline property_dictionary& property_dictionary::operator=(property_dictionary&&) noexcept = default;
inline property_dictionary::~property_dictionary() = default;
inline void property_dictionary::add(const char* key, property_value value) {
    add(std::string_view(key), std::move(value));
}
inline std::size_t property_dictionary::size() const {
    return entries_.size();
}
inline const property_entry* property_dictionary::begin() const {
    return entries_.data();
}
inline const property_entry* property_dictionary::end() const {
    return entries_.data() + entries_.size();
}
inline bool property_dictionary::operator==(const property_dictionary&) const = default;

}  // namespace vistels
