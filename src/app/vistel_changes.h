// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "app/collection_changes.h"
#include "util/colour_text.h"

namespace vistels {

// The plain changes of a collection's vistels. `vistel` is a UUID, or a number as text.

// Frames as fractions of the video area. One vistel's changes soon after each other become one undo step.
collection_change plan_frame(const std::string& vistel, const rectangle& frame);
// Of several vistels at once: a ready layout.
collection_change plan_frames(std::vector<std::pair<std::string, rectangle>> frames);
// In front of all others.
collection_change plan_to_front(const std::string& vistel);
// Enlarged over the others; an empty text: none.
collection_change plan_enlarged(const std::string& vistel);

// Its data stays in the vault.
collection_change plan_removal(const std::string& vistel);
// To another place among the vistels; lowered to their number at most.
collection_change plan_place(const std::string& vistel, std::size_t index);
collection_change plan_name(const std::string& vistel, const std::string& name);
// Who is heard; an empty text: the first.
collection_change plan_sound_vistel(const std::string& vistel);
collection_change plan_numbers_shown(bool shown);

}  // namespace vistels
