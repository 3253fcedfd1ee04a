// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>

#include "util/shared_text.h"

namespace vistels {

// The last edit of a clip. Part of its sxy_CLIP, whose lock guards it.
struct sxy_clip_EDIT_info_k11 {
    std::optional<double> edit_seconds;  // seconds since 1970
    shared_text author;
    shared_text edit_info;

    bool empty() const { return !edit_seconds && author.empty() && edit_info.empty(); }
    bool operator==(const sxy_clip_EDIT_info_k11&) const = default;
};

}  // namespace vistels
