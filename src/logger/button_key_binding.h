// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "util/property_value.h"

namespace vistels {

// The key that presses a button. Part of its markup_Button_Item, whose lock guards it.
struct button_key_binding {
    bool caps = false;
    bool cmd = false;
    bool shift = false;
    bool opt = false;
    bool ctr = false;
    bool function = false;
    std::uint16_t key_code = 0;  // of the hardware, as the kernel numbers keys (evdev); 0: none
    std::string chars_no_mod;    // what the key types without modifiers, UTF-8
    std::string chars;           // what it types with them

    bool operator==(const button_key_binding&) const = default;
};

// A key that was pressed, as the toolkit tells it.
struct key_stroke {
    bool cmd = false;
    bool shift = false;
    bool opt = false;
    bool ctr = false;
    std::uint16_t key_code = 0;
    std::string chars_no_mod;
};

// True when the key presses a button bound so: it types the same characters without modifiers, whatever their
// case, and cmd, shift, opt and ctr agree. A binding without characters goes by the key code, when it has
// one. Caps lock does not matter (a lock left on must not stop the coding), nor does the function key, which
// most systems do not tell.
bool binding_matches(const button_key_binding& binding, const key_stroke& key);

// What a key cap shows: "Shift G".
std::string binding_text(const button_key_binding& binding);

// The dictionary stored under "bindings". Flags only when true, characters only when there are any.
bool is_key_binding_key(std::string_view key);
button_key_binding read_key_binding(const property_dictionary& stored);
property_dictionary write_key_binding(const button_key_binding& binding);

}  // namespace vistels
