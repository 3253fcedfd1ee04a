// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <simdjson.h>

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string_view>
#include <utility>

#include "util/property_value.h"

namespace vistels {

inline property_value tree_of(const simdjson::dom::element& element) {
    using kind = simdjson::dom::element_type;
    switch (element.type()) {
        case kind::ARRAY: {
            property_array array;
            for (const auto item : simdjson::dom::array(element)) array.push_back(tree_of(item));
            return array;
        }
        case kind::OBJECT: {
            property_dictionary dictionary;
            for (const auto field : simdjson::dom::object(element)) {
                dictionary.add(field.key, tree_of(field.value));
            }
            return dictionary;
        }
        case kind::INT64:
            return std::int64_t(element);
        case kind::UINT64:
            return static_cast<double>(std::uint64_t(element));
        case kind::DOUBLE:
            return double(element);
        case kind::STRING:
            return std::string_view(element);
        case kind::BOOL:
            return bool(element);
        case kind::NULL_VALUE:
            break;
    }
    return {};
}

// What another reader makes of a JSON document; nothing when it refuses it. To compare ours with.
inline std::optional<property_value> tree_by_simdjson(std::string_view bytes, std::size_t deepest) {
    if (bytes.starts_with("\xEF\xBB\xBF")) bytes.remove_prefix(3);
    simdjson::dom::parser parser;
    simdjson::dom::element root;
    // It counts the level of what lies in the innermost array too.
    if (parser.allocate(std::max<std::size_t>(bytes.size(), 64), deepest + 1)) return std::nullopt;
    if (parser.parse(bytes.data(), bytes.size()).get(root)) return std::nullopt;
    return tree_of(root);
}

}  // namespace vistels
