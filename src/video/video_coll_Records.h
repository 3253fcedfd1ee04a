// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cmath>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>

#include "util/colour_text.h"
#include "util/property_value.h"

namespace vistels {

// The finite number under `key`.
inline std::optional<double> finite_number(const property_dictionary& stored, const char* key) {
    const auto number = stored.number(key);
    return number && std::isfinite(*number) ? number : std::nullopt;
}

// A length or an offset beyond this, some 30 years, is none: times lose their milliseconds there.
inline constexpr double most_stored_seconds = 1e9;

// The number under `key` as seconds, when it is one that can be reckoned with.
inline std::optional<double> stored_seconds(const property_dictionary& stored, const char* key) {
    const auto seconds = finite_number(stored, key);
    return seconds && std::abs(*seconds) <= most_stored_seconds ? seconds : std::nullopt;
}

inline std::optional<rectangle> stored_frame(const property_dictionary& stored, const char* key) {
    const auto* value = stored.find(key);
    return value ? rectangle_from(*value) : std::nullopt;
}

// Writes a stored record: the keys of `order` first, with the values set here or else as they were read, then
// the keys as read that `order` does not know. Both arguments must outlive it.
class record_writer {
  public:
    record_writer(std::span<const char* const> order, const property_dictionary& as_read)
        : order_(order), as_read_(as_read) {}

    void value(const char* key, property_value value) { set_.set(key, std::move(value)); }
    // A text that did not change stays as it was read, a value of another type in its place too; an empty one
    // that did is left out.
    void text(const char* key, const std::string& text) {
        if (text == as_read_.text_or_empty(key)) return;
        set_.set(key, text.empty() ? property_value() : property_value(text));
    }
    // A value that is the default stays as it was read, in the file or not.
    void flag(const char* key, bool flag) {
        if (flag != as_read_.boolean(key).value_or(false)) set_.set(key, flag);
    }
    void integer(const char* key, std::int64_t number) {
        if (number != as_read_.integer(key).value_or(0)) set_.set(key, number);
    }
    void number(const char* key, std::optional<double> number) {
        if (number != finite_number(as_read_, key))
            set_.set(key, number ? property_value(*number) : property_value());
    }
    void seconds(const char* key, std::optional<double> seconds) {
        if (seconds != stored_seconds(as_read_, key))
            set_.set(key, seconds ? property_value(*seconds) : property_value());
    }
    // The same for a number whose default is 0.
    void number_if_set(const char* key, double number) {
        if (number != finite_number(as_read_, key).value_or(0)) set_.set(key, number);
    }
    // The same for one that is written always.
    void number_always(const char* key, double number) {
        if (finite_number(as_read_, key) != number) set_.set(key, number);
    }
    // A frame that did not change keeps the form in which it was read.
    void frame(const char* key, const std::optional<rectangle>& frame) {
        if (stored_frame(as_read_, key) == frame) return;
        set_.set(key, frame ? property_value(rectangle_text(*frame)) : property_value());
    }

    property_dictionary finish() const {
        property_dictionary stored;
        for (const char* key : order_) {
            const auto* value = set_.find(key);
            if (!value) value = as_read_.find(key);
            if (value && !value->is_null()) stored.add(key, *value);
        }
        for (const auto& entry : as_read_) {
            if (!knows(entry.key) && !entry.value.is_null()) stored.set(entry.key, entry.value);
        }
        return stored;
    }

  private:
    bool knows(std::string_view key) const {
        for (const char* known : order_) {
            if (key == known) return true;
        }
        return false;
    }

    std::span<const char* const> order_;
    const property_dictionary& as_read_;
    property_dictionary set_;  // null: left out
};

}  // namespace vistels
