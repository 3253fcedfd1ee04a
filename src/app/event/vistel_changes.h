// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>
#include <string>

#include "app/event/collection_changes.h"
#include "video/video_coll_Files.h"

namespace vistels {

// The plain changes of a collection's vistels. `vistel` is a UUID, or a number as text.

// New vistels behind the others, as copies of those given, with numbers that no clip of the timeline names;
// null: there is no timeline. A layout is left to the caller.
collection_change plan_new_vistels(const vistel_list& brought, timeline_document* timeline);

// Its data stays in the vault.
collection_change plan_removal(const std::string& vistel);
// To another place among the vistels; lowered to their number at most.
collection_change plan_place(const std::string& vistel, std::size_t index);
collection_change plan_name(const std::string& vistel, const std::string& name);
// Who is heard; an empty text: the first.
collection_change plan_sound_vistel(const std::string& vistel);
// A picture over the vistel's own; nothing takes it away.
collection_change plan_overlay(const std::string& vistel, std::optional<vistel_overlay> overlay);

}  // namespace vistels
