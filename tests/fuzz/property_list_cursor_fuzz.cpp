// SPDX-License-Identifier: GPL-3.0-or-later
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>

#include "util/property_list.h"
#include "util/property_list_cursor.h"

namespace {

using namespace vistels;

[[noreturn]] void differs() {
    std::abort();
}

// A value with a number that is not one does not equal itself, so the written forms are compared.
bool same(const property_value& one, const property_value& other) {
    return write_property_list(one) == write_property_list(other);
}

bool is_container(stored_view::form form) {
    return form == stored_view::form::dictionary || form == stored_view::form::array;
}

// The value part by part: the first byte of each key, and the place of each item, decide whether it is read
// at once, entered, or left half way.
property_value walk(property_list_cursor& cursor, stored_arena& arena, bool& left_out) {
    using form = stored_view::form;
    const form next = cursor.next_form();
    if (next == form::dictionary) {
        property_dictionary made;
        cursor.enter();
        while (const auto key = cursor.next_key(arena)) {
            std::string kept(*key);
            arena.clear();
            if (kept.starts_with('s')) {
                cursor.skip();
                left_out = true;
            } else if (kept.starts_with('l') && is_container(cursor.next_form())) {
                cursor.enter();
                cursor.leave();
                left_out = true;
            } else {
                made.add(std::move(kept), walk(cursor, arena, left_out));
            }
        }
        return property_value(std::move(made));
    }
    if (next == form::array) {
        property_array made;
        cursor.enter();
        while (cursor.next_item()) {
            made.push_back(made.size() % 3 == 2 ? cursor.read(arena).copy() : walk(cursor, arena, left_out));
            arena.clear();
        }
        return property_value(std::move(made));
    }
    return cursor.read(arena).copy();
}

// Whatever way the quick reader takes, it accepts the same; and then what it read is the strict reader's
// value.
void compare(std::string_view bytes) {
    stored_arena arena;
    property_list_cursor skipping(bytes);
    skipping.skip();
    property_list_cursor whole(bytes);
    const auto read = whole.read(arena).copy();
    if (whole.finish() != skipping.finish()) differs();
    bool left_out = false;
    property_list_cursor walking(bytes);
    const auto walked = walk(walking, arena, left_out);
    if (walking.finish() != whole.usual()) differs();
    if (!whole.usual()) return;
    const auto strict = read_property_list(bytes, "fuzz");
    if (!strict || !same(strict.value(), read)) differs();
    if (!left_out && !same(walked, read)) differs();
}

}  // namespace

// The input is compared as it stands, with the head and foot of a file around it, and in the form in which
// this program writes it, which the quick reader must know.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    compare(input);
    std::string framed(property_list_head);
    framed += input;
    framed += property_list_foot;
    compare(framed);
    for (const auto bytes : {input, std::string_view(framed)}) {
        const auto value = read_property_list(bytes, "fuzz");
        if (!value || value.value().is_null()) continue;
        const auto written = write_property_list(value.value());
        compare(written);
        stored_arena arena;
        property_list_cursor cursor(written);
        if (!same(cursor.read(arena).copy(), value.value()) || !cursor.finish()) differs();
    }
    return 0;
}
