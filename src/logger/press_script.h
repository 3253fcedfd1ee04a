// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <vector>

#include "logger/markup_Button_Item.h"
#include "logger/press_engine.h"
#include "util/property_value.h"
#include "util/result.h"
#include "util/simulated_run_loop.h"

namespace vistels {

// One step of a script of presses: {"at": seconds, "button": UUID or name, "do": "down", "up", "tab" or
// "end"}.
struct press_step {
    enum class kind { down, up, tab, end };
    double at = 0;  // on the collection's clock
    kind what = kind::end;
    std::string button;  // UUID
};

// Reads {"events": [steps]}, whose times ascend; a failure names `path` and the step. A button is the first
// with that UUID, else the first with that name.
result<std::vector<press_step>> read_press_script(const property_value& document,
                                                  const std::vector<button_record>& buttons,
                                                  const std::string& path);

// The same from lines as a person writes them: "12.5 Goal down", "14 Goal up", "15 tab", "20 end", the time
// in seconds; empty lines are passed over. A failure names the line.
result<std::vector<press_step>> read_press_lines(const std::string& text,
                                                 const std::vector<button_record>& buttons);
// A script that presses each of the buttons for two seconds, one after the other from `first` on.
std::string press_lines(const std::vector<button_record>& buttons, double first);

// Runs the steps, up to the end or the first that says so, on the loop's clock, which stands at the first
// step's time when it begins; the engine goes by that clock. Buttons go up by themselves when their time has
// come. Returns when it ended, on the collection's clock.
double run_press_script(press_engine& engine, const std::vector<press_step>& steps, simulated_run_loop& loop);

}  // namespace vistels
