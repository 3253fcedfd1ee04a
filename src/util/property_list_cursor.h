// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <bitset>
#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

#include "util/property_list.h"
#include "util/stored_view.h"

namespace vistels {

// Reads a property list forwards, value by value, when it has the very shape that property_list_sink writes;
// a line that names the document type may stand in its head. It takes nothing that read_property_list
// refuses, and what it takes it reads as equal; anything else in the file, be it only a blank more, makes it
// give up: then `usual` is false for good, every call returns nothing, and the file has to be read again from
// its start by read_property_list. Only a `finish` that returns true says that the file was whole, so until
// then what was read is not to be relied on.
//
// A list is walked so:
//     if (cursor.next_form() == stored_view::form::dictionary) {
//         cursor.enter();
//         while (const auto key = cursor.next_key(arena)) {
//             ... one of read, skip, enter for the value of the key
//         }
//     }
// and an array with next_item instead of next_key. Views point into the bytes and the arena. One thread.
class property_list_cursor {
  public:
    // The bytes must outlive it and the views. Looks once over all of them, for what is not UTF-8.
    explicit property_list_cursor(std::string_view bytes);

    bool usual() const { return usual_; }
    // True when the value, read or skipped to its end, was all that the file holds.
    bool finish();

    // The kind of the value that comes next; null when none does.
    stored_view::form next_form() const;
    // Goes into the array or dictionary that comes next.
    bool enter();
    // In a dictionary: the next key; at its end nothing, and it has been left.
    std::optional<std::string_view> next_key(stored_arena& arena);
    // In an array: whether an item comes; at its end it has been left.
    bool next_item();
    // Skips what is left of the array or dictionary entered last, and leaves it. To be called between its
    // items, or between a value and the next key.
    void leave();

    // The value that comes next, whole, never a null unless it gives up.
    stored_view read(stored_arena& arena);
    void skip();

  private:
    enum class tag : unsigned char {
        none,
        string,
        integer,
        real,
        yes,
        no,
        data,
        date,
        dict,
        empty_dict,
        array,
        empty_array
    };

    void give_up();
    bool begin_line(std::size_t tabs);
    tag tag_ahead(const char* at) const;
    tag begin_value(std::size_t tabs);
    bool is_at_end(std::string_view close);
    bool open(bool dictionary, bool is_empty);
    bool read_key(std::string_view& key, stored_arena* arena);
    bool read_text(std::string_view close, std::string_view& text, stored_arena* arena);
    bool read_escaped(const char* start, std::string_view close, std::string_view& text, stored_arena* arena);
    bool read_plain(std::string_view close, std::string_view& text);
    stored_view read_tagged(tag kind, stored_arena* arena);
    stored_view read_scalar(tag kind, std::string_view text, stored_arena* arena);
    stored_view read_array(stored_arena* arena);
    stored_view read_dictionary(stored_arena* arena);

    const char* begin_;
    const char* at_;   // always the start of a line
    const char* end_;  // of the bytes
    std::size_t depth_ = 0;
    std::bitset<deepest_nesting> dictionaries_;  // for each open level whether it is a dictionary
    bool in_empty_ = false;                      // an empty one was entered and not yet left
    bool has_root_ = false;                      // the outermost value has begun
    bool usual_ = true;
    // What has been read of the arrays and dictionaries that are being read, the outer ones first.
    std::vector<stored_view> items_;
    std::vector<stored_member> members_;
};

}  // namespace vistels
