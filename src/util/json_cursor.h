// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <bitset>
#include <cstddef>
#include <optional>
#include <string_view>

#include "util/failure.h"
#include "util/property_list.h"
#include "util/stored_view.h"

namespace vistels {

// Reads a JSON document forwards, value by value, as property_list_cursor does a property list, and needs no
// memory but for what it is told to read. Strict: with the first fault every call returns nothing, and only a
// `finish` that returns true says that the document was whole and right, so until then what was read is not
// to be relied on.
//
// An object is walked so:
//     if (cursor.next_form() == stored_view::form::dictionary) {
//         cursor.enter();
//         while (const auto key = cursor.next_key(arena)) {
//             ... one of read, skip, enter for the value of the key
//         }
//     }
// and an array with next_item instead of next_key. Views point into the bytes and the arena. One thread.
class json_cursor {
  public:
    // The bytes must outlive it and the views. Looks once over all of them, for what is not UTF-8.
    explicit json_cursor(std::string_view bytes);

    // True when the value, read or skipped to its end, was all that the document holds.
    bool finish();
    // Why `finish` returned false: text_is_not_json or nested_too_deep.
    const failure& fault() const { return fault_; }

    // The kind of the value that comes next (real for every number); null also when none does.
    stored_view::form next_form();
    // Goes into the array or object that comes next.
    bool enter();
    // In an object: the next key; at its end nothing, and it has been left.
    std::optional<std::string_view> next_key(stored_arena& arena);
    // In an array: whether an item comes; at its end it has been left.
    bool next_item();

    // The value that comes next, whole. Whole numbers are integers, but reals where they need 64 bits and no
    // sign; all others are reals.
    stored_view read(stored_arena& arena);
    void skip();

  private:
    char ahead();
    stored_view stop(failure fault);
    bool open(bool dictionary);
    bool part_follows(char close);
    bool read_key(std::string_view& key, stored_arena* arena);
    bool read_text(std::string_view& text, stored_arena* arena);
    bool read_escaped(const char* start, std::string_view& text, stored_arena* arena);
    stored_view read_value(stored_arena* arena);
    stored_view read_array(stored_arena* arena);
    stored_view read_dictionary(stored_arena* arena);
    stored_view read_word(std::string_view word, stored_view value);
    stored_view read_number();

    const char* begin_;
    const char* at_;
    const char* end_;  // of the bytes
    std::size_t depth_ = 0;
    std::bitset<deepest_nesting> dictionaries_;  // for each open level whether it is an object
    bool is_first_ = false;                      // what comes next begins the array or object
    failure fault_;
    // What has been read of the arrays and objects that are being read, the outer ones first.
    part_stack<stored_view> items_;
    part_stack<stored_member> members_;
};

}  // namespace vistels
