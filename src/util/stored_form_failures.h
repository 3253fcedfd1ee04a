// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "util/failure.h"

namespace vistels {

// Why bytes are not what they should be; causes of file_cannot_be_read.
inline constexpr failure_of<> property_list_is_binary{"property list is binary",
                                                      "it is a binary property list, not an XML one"};
inline constexpr failure_of<> text_is_not_utf_8{"text is not utf 8", "it is not UTF-8"};
inline constexpr failure_of<> memory_is_short{"memory is short", "there is not enough memory"};
inline constexpr failure_of<> property_list_is_empty{"property list is empty", "it holds no value"};
inline constexpr failure_of<> file_holds_no_dictionary{"file holds no dictionary", "it holds no dictionary"};
inline constexpr failure_of<a_text> nested_too_deep{"nested too deep", "it is nested more than %1 deep"};
inline constexpr failure_of<> text_is_not_json{"text is not json", "it is not valid JSON"};

inline constexpr failure_of<a_cause, a_text> fault_at_line{"fault at line", "%1, at line %2"};
// In the XML parser's own words.
inline constexpr failure_of<a_text> xml_is_wrong{"xml is wrong", "%1"};
inline constexpr failure_of<> markup_is_too_long{"markup is too long", "a tag or comment is too long"};
inline constexpr failure_of<> file_declares_entities{
    "file declares entities", "it declares entities or elements of its own, which is not allowed"};
inline constexpr failure_of<a_text> entity_is_unknown{"entity is unknown", "the entity \"%1\" is not known"};
inline constexpr failure_of<a_text> element_is_unknown{"element is unknown",
                                                       "\"%1\" is no property list element"};
inline constexpr failure_of<> plist_inside_another{"plist inside another",
                                                   "a \"plist\" element stands inside another"};
inline constexpr failure_of<> file_is_no_property_list{"file is no property list",
                                                       "it is not a property list"};
inline constexpr failure_of<> value_has_attributes{"value has attributes", "a value has attributes"};
inline constexpr failure_of<> element_inside_a_value{"element inside a value",
                                                     "an element stands inside a value"};
inline constexpr failure_of<> keys_and_values_not_by_turns{"keys and values not by turns",
                                                           "a dictionary must hold keys and values by turns"};
inline constexpr failure_of<> text_outside_a_value{"text outside a value", "text stands outside a value"};
inline constexpr failure_of<> key_has_no_value{"key has no value", "a key has no value"};

}  // namespace vistels
