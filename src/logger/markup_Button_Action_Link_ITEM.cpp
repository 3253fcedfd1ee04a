// SPDX-License-Identifier: GPL-3.0-or-later
#include "logger/markup_Button_Action_Link_ITEM.h"

#include <algorithm>

namespace vistels {

namespace {

constexpr int colour_decimals = 4;
constexpr const char* code_key = "action";
constexpr const char* colour_key = "action color";
constexpr const char* uuid_key = "linked button UUID";
constexpr const char* name_key = "linked button name";
constexpr const char* category_key = "linked button category name";

constexpr std::string_view older_center_code = "ON_DOWN_CENTRE_ON";
constexpr std::string_view center_code = "ON_DOWN_CENTER_ON";

// Sets the key, or takes it away when there is nothing to say.
void put(property_dictionary& stored, const char* key, const std::string& before, const std::string& now) {
    if (before == now) return;
    if (now.empty()) {
        stored.remove(key);
    } else {
        stored.set(key, now);
    }
}

}  // namespace

const std::vector<link_kind>& link_kinds() {
    using moment = link_moment;
    using effect = link_effect;
    static const std::vector<link_kind> all = {
        {"ON_DOWN_SET_UP", "Down > Up", moment::down, effect::set_up},
        {"ON_DOWN_SET_DOWN", "Down > Down", moment::down, effect::set_down},
        {"ON_DOWN_TOGGLE", "Down > Toggle", moment::down, effect::toggle},
        {"ON_UP_SET_UP", "Up > Up", moment::up, effect::set_up},
        {"ON_UP_SET_DOWN", "Up > Down", moment::up, effect::set_down},
        {"ON_UP_TOGGLE", "Up > Toggle", moment::up, effect::toggle},
        {"ON_DOWN_BLOCK", "Down > Block Action", moment::down, effect::block},
        {"ON_UP_BLOCK", "Up > Block Action", moment::up, effect::block},
        {center_code, "Down > Center", moment::down, effect::center_on},
        {"ON_UP_CENTER_ON", "Up > Center", moment::up, effect::center_on},
        {"ON_DOWN__BRING_TO_FRONT", "Down > To Front", moment::down, effect::bring_to_front},
        {"ON_UP__BRING_TO_FRONT", "Up > To Front", moment::up, effect::bring_to_front},
        {"ON_DOWN__SEND_TO_BACK", "Down > To Back", moment::down, effect::send_to_back},
        {"ON_UP__SEND_TO_BACK", "Up > To Back", moment::up, effect::send_to_back},
        {"ON_DOWN_SET_BUTTON_COLOUR", "Down > Button Color", moment::down, effect::set_button_colour},
        {"ON_UP_SET_BUTTON_COLOUR", "Up > Button Color", moment::up, effect::set_button_colour},
        {"ON_DOWN_SET_MARK_COLOUR", "Down > Mark Color", moment::down, effect::set_mark_colour},
        {"ON_UP_SET_MARK_COLOUR", "Up > Mark Color", moment::up, effect::set_mark_colour},
        {"ON_DOWN_CLEAR_TRACES", "Clear Traces > Down", moment::down, effect::clear_traces},
        {"ON_UP_CLEAR_TRACES", "Clear Traces > Up", moment::up, effect::clear_traces},
        {"ON_ALL_UP_SET_DOWN", "Down < All Up", moment::all_up, effect::set_down},
        {"ON_ALL_DOWN_SET_DOWN", "Down < All Down", moment::all_down, effect::set_down},
        {"ON_ALL_UP_SET_UP", "Up < All Up", moment::all_up, effect::set_up},
        {"ON_ALL_DOWN_SET_UP", "Up < All Down", moment::all_down, effect::set_up},
        {"ON_ANY_UP_SET_UP", "Up < Any Up", moment::any_up, effect::set_up},
    };
    return all;
}

const link_kind* link_kind_of(std::string_view code) {
    const auto& all = link_kinds();
    const auto found =
        std::find_if(all.begin(), all.end(), [&](const auto& one) { return one.code == code; });
    return found == all.end() ? nullptr : &*found;
}

std::string_view link_text(std::string_view code) {
    if (const auto* kind = link_kind_of(code)) return kind->shown;
    return code == private_link_code ? "Private Link" : "unknown action type";
}

std::optional<markup_Button_Action_Link_ITEM> read_action_link(const property_value& stored) {
    const auto* values = stored.dictionary();
    if (!values) return std::nullopt;
    markup_Button_Action_Link_ITEM link;
    link.action_TYPE = values->text_or_empty(code_key);
    if (link.action_TYPE == older_center_code) link.action_TYPE = center_code;
    if (const auto* text = values->text(colour_key)) link.action_Colour_to_set = colour_from_text(*text);
    link.linked_button_UUID = values->text_or_empty(uuid_key);
    link.linked_button_name = values->text_or_empty(name_key);
    link.linked_button_category_name = values->text_or_empty(category_key);
    link.stored = *values;
    return link;
}

property_dictionary write_action_link(const markup_Button_Action_Link_ITEM& link) {
    property_dictionary stored = link.stored;
    const auto before = read_action_link(stored).value_or(markup_Button_Action_Link_ITEM());
    put(stored, code_key, before.action_TYPE, link.action_TYPE);
    const auto text = [](const std::optional<colour>& one) {
        return one ? colour_text(*one, colour_decimals) : std::string();
    };
    put(stored, colour_key, text(before.action_Colour_to_set), text(link.action_Colour_to_set));
    put(stored, uuid_key, before.linked_button_UUID, link.linked_button_UUID);
    put(stored, name_key, before.linked_button_name, link.linked_button_name);
    put(stored, category_key, before.linked_button_category_name, link.linked_button_category_name);
    return stored;
}

}  // namespace vistels
