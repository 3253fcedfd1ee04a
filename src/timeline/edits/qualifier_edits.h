// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "timeline/edits/timeline_edit.h"
#include "util/result.h"

namespace vistels {

// What a person does to qualifiers by hand, planned as edits and not yet applied. An edit that would change
// nothing has no operations. Any thread that owns the timeline.

// What can be written of one qualifier; empty texts say nothing.
struct qualifier_words {
    std::string name;
    std::string category;
    std::string actor;      // who did it
    std::string recepient;  // to whom
    std::string alias;      // shown in place of the name
    std::optional<double> value;

    bool operator==(const qualifier_words&) const = default;
};
qualifier_words words_in(const qual_ITEM& qualifier);

// The qualifier says that; all else of it stays. Refused without a name, and when it is gone.
result<timeline_edit> plan_change_qualifier(const sxy_DATA_root& timeline, const std::string& clip,
                                            const std::string& qualifier, const qualifier_words& words);

// A new one on each of the clips that do not have one of that name and category, stamped at `seconds` or, in
// a clip that does not lie there, at the nearest of its ends. Refused without a name, and when a clip is gone
// or still grows.
result<timeline_edit> plan_add_qualifier(const sxy_DATA_root& timeline, const std::vector<std::string>& clips,
                                         const std::string& name, const std::string& category,
                                         double seconds);

// The names of all qualifiers with their categories, each pair once, by name.
std::vector<std::pair<std::string, std::string>> known_qualifiers(const sxy_DATA_root& timeline);

}  // namespace vistels
