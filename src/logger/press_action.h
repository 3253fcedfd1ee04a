// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "logger/button_fired.h"
#include "logger/clip_making.h"
#include "logger/markup_Button_Item.h"
#include "timeline/form/point.h"

namespace vistels {

// What a press or release has to put on record: all that it needs, so that it can be done later as well.
// Times are seconds on the collection's clock.
struct press_action {
    enum class kind {
        begin,              // a clip begins to grow
        finish,             // and goes into its row
        drop,               // or is given up
        stamp,              // a qualifier
        attribute,          // of a qualifier
        forget_attributes,  // those that wait for one
        jump,               // of the playhead: nothing waits or goes on after a clip's end any more
        trigger,
        rename,
    };
    kind what = kind::begin;
    button_record button;  // as it was then
    double at = 0;         // of the press, or of the release
    std::string clip;      // that grows
    held_press held;       // of a clip that ends or is given up
    std::string time_of_day;
    std::optional<point> place;         // on the field of a Cartesian button, by its scales
    std::vector<std::string> selected;  // to be renamed
    std::uint64_t round = 0;            // that it belongs to

    void shift(double seconds) {
        at += seconds;
        held.pressed += seconds;
        held.released += seconds;
    }
};

// What one press or release sets off, with what it does to other buttons: on record as one edit.
struct press_round {
    std::uint64_t number = 0;  // of this run, from 1
    std::string name;          // of the button that it began with
    std::string button;        // its UUID
    std::vector<press_action> actions;
};

struct press_outcome {
    made_kind made = made_kind::nothing;
    std::string clip;  // see button_fired
    bool nothing_to_stamp = false;
    bool waits = false;
};

}  // namespace vistels
