// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "util/failure.h"

namespace vistels {

// A cause of file_cannot_be_read.
inline constexpr failure_of<> file_holds_no_code_window{"file holds no code window",
                                                        "it does not hold a code window"};

// Of a file beside the buttons; the cause names it.
inline constexpr failure_of<a_cause> code_window_file_is_not_used{
    "code window file is not used", "%1 The code window is shown without what it holds."};

// What is wrong with a script of presses.
inline constexpr failure_of<a_path> script_has_no_events{"script has no events",
                                                         "\"%1\" holds no \"events\"."};
inline constexpr failure_of<a_path, a_text, a_cause> script_event_is_wrong{"script event is wrong",
                                                                           "\"%1\": event %2 %3"};
inline constexpr failure_of<> script_event_has_no_time{"script event has no time",
                                                       "has no time under \"at\"."};
inline constexpr failure_of<> script_event_is_too_late{"script event is too late",
                                                       "is at a time beyond 30 years."};
inline constexpr failure_of<> script_event_does_nothing{
    "script event does nothing", "has no \"down\", \"up\", \"tab\" or \"end\" under \"do\"."};
inline constexpr failure_of<a_text> script_event_has_no_button{"script event has no button",
                                                               "names a button that is not there: \"%1\"."};
inline constexpr failure_of<a_text, a_cause> script_line_is_wrong{"script line is wrong", "Line %1 %2"};
inline constexpr failure_of<> script_line_has_no_time{"script line has no time",
                                                      "does not begin with a time in seconds."};
inline constexpr failure_of<> script_line_does_nothing{
    "script line does nothing", "does not end with \"down\", \"up\", \"tab\" or \"end\"."};
inline constexpr failure_of<> script_events_do_not_ascend{
    "script events do not ascend", "comes before the one before it; the times must ascend."};

}  // namespace vistels
