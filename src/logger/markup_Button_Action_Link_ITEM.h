// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "util/colour_text.h"
#include "util/property_value.h"

namespace vistels {

// When a link acts: as its source goes down or up, or as one of its sources does so that all of them, or any,
// are in that state.
enum class link_moment { down, up, all_down, all_up, any_up };

// What a link does to the button that it leads to.
enum class link_effect {
    set_up,
    set_down,
    toggle,
    block,
    center_on,
    bring_to_front,
    send_to_back,
    set_button_colour,
    set_mark_colour,
    clear_traces,
};

// A kind of link that acts.
struct link_kind {
    std::string_view code;   // as stored
    std::string_view shown;  // "Down > Up"
    link_moment moment;
    link_effect effect;

    // The state of a source by which it acts.
    bool acts_on_down() const { return moment == link_moment::down || moment == link_moment::all_down; }
    // Whether it depends on all its sources.
    bool has_condition() const { return moment != link_moment::down && moment != link_moment::up; }
    bool sets_state() const { return effect <= link_effect::toggle; }
    bool sets_colour() const {
        return effect == link_effect::set_button_colour || effect == link_effect::set_mark_colour;
    }
};
// In the order of the menu.
const std::vector<link_kind>& link_kinds();
// Null for a code of none that acts: a private link, or one that is not known.
const link_kind* link_kind_of(std::string_view code);
// "Down > Up", "Private Link"; "unknown action type" for any other code.
std::string_view link_text(std::string_view code);
inline constexpr std::string_view private_link_code = "PRIVATE_LINK_TO";
// The code that a new link gets when no other was chosen.
inline constexpr std::string_view usual_link_code = "ON_DOWN_SET_DOWN";

// A link of a button to another one. An unknown code is kept and does nothing.
struct markup_Button_Action_Link_ITEM {
    std::string action_TYPE;
    std::optional<colour> action_Colour_to_set;  // of the kinds that set one
    std::string linked_button_UUID;              // by which it is found
    std::string linked_button_name;              // as they were when it was made
    std::string linked_button_category_name;
    property_dictionary stored;  // as read

    bool operator==(const markup_Button_Action_Link_ITEM&) const = default;
};

// Nothing for what is no dictionary. "ON_DOWN_CENTRE_ON" is read as "ON_DOWN_CENTER_ON".
std::optional<markup_Button_Action_Link_ITEM> read_action_link(const property_value& stored);
// What was read, with what has changed since.
property_dictionary write_action_link(const markup_Button_Action_Link_ITEM& link);

}  // namespace vistels
