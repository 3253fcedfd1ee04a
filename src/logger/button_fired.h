// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace vistels {

// Why a button changed its state.
enum class press_cause { press, link, auto_up, trigger, tab, presser };
// "press", "link", "auto up", "trigger", "tab", "presser"
std::string_view press_cause_text(press_cause cause);

// What a change of state made.
enum class made_kind { nothing, clip, qualifier, attribute, trigger };
// "clip", "qualifier", "attribute"; empty for the others, which put nothing on a timeline of which it could
// be counted.
std::string_view made_kind_text(made_kind made);

// One change of a button's state.
struct button_fired {
    double at = 0;  // seconds on the collection's clock
    std::string button;
    std::string name;
    bool is_down = false;
    press_cause cause = press_cause::press;
    bool blocked = false;  // the state changed without the button's action
    made_kind made = made_kind::nothing;
    std::string clip;               // the clip that it began, made or, of several, stamped last; may be empty
    bool nothing_to_stamp = false;  // there was no clip or qualifier for what it makes
    bool waits = false;             // its attribute goes to the next qualifier
    bool dropped = false;           // its clip was given up
    bool recorded = true;           // false: kept in memory, see press_engine::trouble
    // The press or release with which it began, by its number in this run, and the button of that.
    std::uint64_t round = 0;
    std::string first_button;
};

}  // namespace vistels
