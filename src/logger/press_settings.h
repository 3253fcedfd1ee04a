// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace vistels {

// What holds for the presses of every code window.
struct press_settings {
    // A qualifier that is pressed beside a clip, at most `margin_padding_seconds` away, is put on it, at a
    // time within it.
    bool bring_qualifiers_inside_clip = false;
    double margin_padding_seconds = 5;
    // Clips that grow are not put on record before they have ended: a kill loses them.
    bool dont_save_live_clips = false;
    // Triggers put no buttons down or up.
    bool disable_triggers = false;

    bool operator==(const press_settings&) const = default;
};

}  // namespace vistels
