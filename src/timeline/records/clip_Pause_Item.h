// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace vistels {

// A point at which playback of a clip halts. Part of its sxy_CLIP, whose lock guards it.
struct clip_Pause_Item {
    double seconds = 0;                      // on the collection's clock
    bool already_passed_PAUSE_item = false;  // of this playback, not stored

    bool operator==(const clip_Pause_Item&) const = default;
};

}  // namespace vistels
