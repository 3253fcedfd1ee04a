// SPDX-License-Identifier: GPL-3.0-or-later
#include "logger/button_fired.h"

namespace vistels {

std::string_view press_cause_text(press_cause cause) {
    switch (cause) {
        case press_cause::press:
            return "press";
        case press_cause::link:
            return "link";
        case press_cause::auto_up:
            return "auto up";
        case press_cause::trigger:
            return "trigger";
        case press_cause::tab:
            return "tab";
        case press_cause::presser:
            return "presser";
    }
    return "";
}

std::string_view made_kind_text(made_kind made) {
    switch (made) {
        case made_kind::clip:
            return "clip";
        case made_kind::qualifier:
            return "qualifier";
        case made_kind::attribute:
            return "attribute";
        case made_kind::nothing:
        case made_kind::trigger:
            break;
    }
    return "";
}

}  // namespace vistels
