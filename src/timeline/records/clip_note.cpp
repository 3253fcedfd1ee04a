// SPDX-License-Identifier: GPL-3.0-or-later
#include "timeline/records/clip_note.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "util/stored_view.h"

namespace vistels {

namespace {

constexpr std::string_view empty_text = "<empty>";
constexpr const char* items_keys[] = {"note_items", "note items"};
constexpr const char* rich_text_keys[] = {"note_text_storage_rtf", "note_text_storage_rtfd"};

// The keys of the fields that are texts, and of those that are kept in whatever type they came.
struct text_field {
    const char* key;
    std::string clip_note::*field;
};
constexpr text_field text_fields[] = {
    {"clip_notes_uuid", &clip_note::clip_notes_uuid},
    {"note_string", &clip_note::note_string},
};
struct value_field {
    const char* key;
    property_value clip_note::*field;
};
constexpr value_field value_fields[] = {
    {"display_on", &clip_note::display_on},
    {"link_id", &clip_note::link_id},
    {"id_type", &clip_note::id_type},
    {"chars", &clip_note::chars},
    {"presentation_type", &clip_note::presentation_type},
    {"note_text_storage_rtf__json_String", &clip_note::note_text_storage_rtf__json_String},
};

void take_value(clip_note& note, std::string_view stored_key, property_value value) {
    for (const auto& [key, field] : text_fields) {
        // An empty text, stored or not, reads the same; kept apart, the key comes back as it was.
        if (stored_key == key && value.text() && !value.text()->empty()) {
            note.*field = *value.text();
            return;
        }
    }
    for (const auto& [key, field] : value_fields) {
        if (stored_key == key) {
            note.*field = std::move(value);
            return;
        }
    }
    note.kept.set(stored_key, std::move(value));
}

std::string shown_text(const std::string& text) {
    return text == empty_text ? std::string() : text;
}

std::string text_of_items(const property_dictionary& stored) {
    std::string all;
    for (const char* key : items_keys) {
        const auto* items = stored.array(key);
        if (!items) continue;
        for (const auto& item : *items) {
            const auto text = item.dictionary() ? read_clip_note(*item.dictionary()).text() : std::string();
            if (text.empty()) continue;
            if (!all.empty()) all += '\n';
            all += text;
        }
        break;  // the older spelling counts only where the newer one is missing
    }
    return all;
}

std::int64_t characters_in(std::string_view text) {
    constexpr unsigned following_byte_mask = 0xC0;
    constexpr unsigned following_byte = 0x80;
    return std::count_if(text.begin(), text.end(), [](char byte) {
        return (static_cast<unsigned char>(byte) & following_byte_mask) != following_byte;
    });
}

}  // namespace

std::string clip_note::text() const {
    const std::string own = shown_text(note_string);
    return own.empty() ? text_of_items(kept) : own;
}

clip_note clip_note::with_text(std::string text) const {
    clip_note changed = *this;
    if (chars.integer() == characters_in(note_string)) changed.chars = characters_in(text);
    changed.note_string = std::move(text);
    changed.note_text_storage_rtf__json_String = {};
    changed.kept.remove("note_string");
    for (const char* key : rich_text_keys) changed.kept.remove(key);
    for (const char* key : items_keys) changed.kept.remove(key);
    return changed;
}

clip_note read_clip_note(const property_dictionary& stored) {
    clip_note note;
    for (const auto& entry : stored) take_value(note, entry.key, entry.value);
    return note;
}

clip_note read_clip_note(const stored_view& stored) {
    clip_note note;
    for (const auto& member : stored.members()) take_value(note, member.key, member.value.copy());
    return note;
}

property_dictionary write_clip_note(const clip_note& note) {
    property_dictionary stored;
    for (const auto& [key, field] : text_fields) {
        if (!(note.*field).empty()) stored.add(key, note.*field);
    }
    for (const auto& [key, field] : value_fields) {
        if (!(note.*field).is_null()) stored.add(key, note.*field);
    }
    for (const auto& entry : note.kept) {
        if (!stored.contains(entry.key)) stored.add(entry.key, entry.value);
    }
    return stored;
}

}  // namespace vistels
