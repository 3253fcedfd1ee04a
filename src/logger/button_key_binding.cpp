// SPDX-License-Identifier: GPL-3.0-or-later
#include "logger/button_key_binding.h"

namespace vistels {

namespace {

struct binding_flag {
    const char* key;
    bool button_key_binding::*flag;
};

// In the stored order.
constexpr binding_flag flags[] = {
    {"caps", &button_key_binding::caps},   {"cmd", &button_key_binding::cmd},
    {"shift", &button_key_binding::shift}, {"opt", &button_key_binding::opt},
    {"ctr", &button_key_binding::ctr},     {"function", &button_key_binding::function},
};

constexpr const char* code_key = "key code";
constexpr const char* plain_key = "chars no mod";
constexpr const char* chars_key = "chars";

// The small letter of a capital one, for the letters that keyboards have: Latin, Greek, Cyrillic.
unsigned small_letter(unsigned letter) {
    const auto within = [letter](unsigned first, unsigned last) { return letter >= first && letter <= last; };
    if (within('A', 'Z') || within(0x391, 0x3A9) || within(0x410, 0x42F)) return letter + 0x20;
    if (within(0xC0, 0xDE) && letter != 0xD7) return letter + 0x20;
    if (within(0x400, 0x40F)) return letter + 0x50;
    return letter;
}

// One code for the letter at the front of `rest`, which is shortened; letters of more than two bytes are
// taken byte by byte, for they are only compared.
unsigned take_letter(std::string_view& rest) {
    const auto first = static_cast<unsigned char>(rest.front());
    if ((first & 0xE0U) == 0xC0U && rest.size() >= 2) {
        const unsigned letter = (first & 0x1FU) << 6U | (static_cast<unsigned char>(rest[1]) & 0x3FU);
        rest.remove_prefix(2);
        return letter;
    }
    rest.remove_prefix(1);
    return first < 0x80 ? first : 0x110000U + first;
}

bool same_but_for_case(std::string_view a, std::string_view b) {
    while (!a.empty() && !b.empty()) {
        if (small_letter(take_letter(a)) != small_letter(take_letter(b))) return false;
    }
    return a.empty() && b.empty();
}

void append_large(std::string& to, std::string_view text) {
    for (const char letter : text) {
        to += letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 'a' + 'A') : letter;
    }
}

}  // namespace

bool binding_matches(const button_key_binding& binding, const key_stroke& key) {
    if (binding.cmd != key.cmd || binding.shift != key.shift || binding.opt != key.opt ||
        binding.ctr != key.ctr) {
        return false;
    }
    if (!binding.chars_no_mod.empty()) return same_but_for_case(binding.chars_no_mod, key.chars_no_mod);
    return binding.key_code != 0 && binding.key_code == key.key_code;
}

std::string binding_text(const button_key_binding& binding) {
    std::string text;
    if (binding.ctr) text += "Ctrl ";
    if (binding.opt) text += "Alt ";
    if (binding.cmd) text += "Meta ";
    if (binding.shift) text += "Shift ";
    if (binding.chars_no_mod == " ") {
        text += "Space";
    } else {
        append_large(text, binding.chars_no_mod.empty() ? binding.chars : binding.chars_no_mod);
    }
    return text;
}

bool is_key_binding_key(std::string_view key) {
    for (const auto& one : flags) {
        if (key == one.key) return true;
    }
    return key == code_key || key == plain_key || key == chars_key;
}

button_key_binding read_key_binding(const property_dictionary& stored) {
    button_key_binding binding;
    for (const auto& one : flags) binding.*one.flag = stored.boolean(one.key).value_or(false);
    const auto code = stored.integer(code_key).value_or(0);
    if (code >= 0 && code <= 0xFFFF) binding.key_code = static_cast<std::uint16_t>(code);
    binding.chars_no_mod = stored.text_or_empty(plain_key);
    binding.chars = stored.text_or_empty(chars_key);
    return binding;
}

property_dictionary write_key_binding(const button_key_binding& binding) {
    property_dictionary stored;
    for (const auto& one : flags) {
        if (binding.*one.flag) stored.add(one.key, true);
    }
    stored.add(code_key, static_cast<std::int64_t>(binding.key_code));
    if (!binding.chars_no_mod.empty()) stored.add(plain_key, binding.chars_no_mod);
    if (!binding.chars.empty()) stored.add(chars_key, binding.chars);
    return stored;
}

}  // namespace vistels
