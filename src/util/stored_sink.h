// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "util/property_value.h"

namespace vistels {

// What records are written to, value by value in the stored order: a property list's bytes or a
// property_dictionary. In a dictionary every value has a key; in an array the key is not looked at and is
// given as an empty text.
class stored_sink {
  public:
    virtual ~stored_sink() = default;
    virtual void put(std::string_view key, bool value) = 0;
    virtual void put(std::string_view key, std::int64_t value) = 0;
    virtual void put(std::string_view key, double value) = 0;
    virtual void put(std::string_view key, std::string_view value) = 0;
    virtual void put(std::string_view key, const property_value& value) = 0;
    virtual void begin_dictionary(std::string_view key) = 0;
    virtual void begin_array(std::string_view key) = 0;
    virtual void end() = 0;  // of the dictionary or array begun last

    void put(std::string_view key, int value) { put(key, std::int64_t{value}); }
    void put(std::string_view key, const char* value) { put(key, std::string_view(value)); }
    void put(std::string_view key, const std::string& value) { put(key, std::string_view(value)); }
};

// Builds a dictionary.
class dictionary_sink : public stored_sink {
  public:
    dictionary_sink();
    using stored_sink::put;
    void put(std::string_view key, bool value) override;
    void put(std::string_view key, std::int64_t value) override;
    void put(std::string_view key, double value) override;
    void put(std::string_view key, std::string_view value) override;
    void put(std::string_view key, const property_value& value) override;
    void begin_dictionary(std::string_view key) override;
    void begin_array(std::string_view key) override;
    void end() override;

    // What was put; everything begun must have ended.
    property_dictionary take();

  private:
    struct level {
        std::string key;
        property_value value;
    };
    void add(std::string_view key, property_value value);

    std::vector<level> levels_;
};

// Writes the bytes of a property list, exactly as write_property_list does. What is put first must be one
// value: begin_dictionary("") for a dictionary.
class property_list_sink : public stored_sink {
  public:
    // Keeps all of the bytes, for `take`.
    property_list_sink();
    // Hands on the bytes in order, in blocks of 64 KB, the last of them, which may be of another size, in
    // `finish`; keeps none.
    using block_taker = std::function<void(std::string_view bytes)>;
    explicit property_list_sink(block_taker taker);

    using stored_sink::put;
    void put(std::string_view key, bool value) override;
    void put(std::string_view key, std::int64_t value) override;
    void put(std::string_view key, double value) override;
    void put(std::string_view key, std::string_view value) override;
    void put(std::string_view key, const property_value& value) override;
    void begin_dictionary(std::string_view key) override;
    void begin_array(std::string_view key) override;
    void end() override;

    // With a good guess of the size beforehand, nothing is copied while the bytes grow.
    void expect(std::size_t bytes) { bytes_.reserve(bytes); }
    // The whole file; everything begun must have ended. For one without a taker.
    std::string take();
    // The same for one with a taker, to which it hands what is left.
    void finish();
    // Instead of finish(), for who hands on the last block itself: what is left, good as long as the sink.
    std::string_view last_block();

  private:
    struct line_part;

    char* room(std::size_t bytes);
    char* begin_line(char* to) const;
    char* put_text(char* to, std::string_view text, std::size_t bytes_after);
    void put_value(std::string_view key, const line_part& open, std::string_view text,
                   const line_part& close);
    void begin(std::string_view key, bool dictionary);
    void write_begun();
    void hand_on();

    block_taker taker_;
    std::string bytes_;        // what has left the block, without a taker
    std::vector<char> block_;  // filled up to used_
    std::size_t used_ = 0;
    std::vector<bool> dictionaries_;  // for each open level whether it is a dictionary, else an array
    bool begun_ =
        false;  // the innermost level has been begun, and is not written yet since it may stay empty
};

}  // namespace vistels
