// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cmath>
#include <span>

#include "util/property_value.h"

namespace vistels {

// What a stored value must be to count; anything else leaves the default.
enum class stored_kind { flag, integer, number, text, array, dictionary, any };

// A stored key, with the spelling of older files (null when there is none).
struct stored_key {
    const char* name;
    const char* older;
    stored_kind kind;
};

inline bool is_of_kind(const property_value& value, stored_kind kind) {
    switch (kind) {
        case stored_kind::flag:
            return value.boolean().has_value();
        case stored_kind::integer:
            return value.integer().has_value();
        case stored_kind::number:
            return value.number() && std::isfinite(*value.number());
        case stored_kind::text:
            return value.text() != nullptr;
        case stored_kind::array:
            return value.array() != nullptr;
        case stored_kind::dictionary:
            return value.dictionary() != nullptr;
        case stored_kind::any:
            return !value.is_null();
    }
    return false;
}

// The value under the new spelling, else under the old one, when it is of the key's kind; else null.
inline const property_value* stored_value(const property_dictionary& stored, const stored_key& key) {
    for (const char* name : {key.name, key.older}) {
        const property_value* value = name ? stored.find(name) : nullptr;
        if (value && is_of_kind(*value, key.kind)) return value;
    }
    return nullptr;
}

// Copies the values of `keys` that count; flags that are false and empty texts are left out, as in the files.
inline void keep_stored(const property_dictionary& stored, std::span<const stored_key> keys,
                        property_dictionary& kept) {
    for (const auto& key : keys) {
        const property_value* value = stored_value(stored, key);
        if (!value) continue;
        if (key.kind == stored_kind::flag && !*value->boolean()) continue;
        if (key.kind == stored_kind::text && value->text()->empty()) continue;
        kept.add(key.name, *value);
    }
}

// Adds the kept values of `keys`, in the order of `keys`.
inline void put_kept(const property_dictionary& kept, std::span<const stored_key> keys,
                     property_dictionary& stored) {
    for (const auto& key : keys) {
        if (const auto* value = kept.find(key.name)) stored.add(key.name, *value);
    }
}

}  // namespace vistels
