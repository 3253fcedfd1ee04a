// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <vector>

#include "logger/markup_Button_Item.h"
#include "timeline/edits/timeline_edit.h"
#include "util/uuid.h"

namespace vistels::bench {

// Adds a row for each button that makes clips; returns their UUIDs.
inline std::vector<shared_text> add_rows(const std::vector<button_record>& buttons, timeline_edit& edit) {
    std::vector<shared_text> rows;
    for (const auto& button : buttons) {
        if (!button->is(button_type::clip)) continue;
        sxy_ROW row;
        row.set_uuid(shared_text(new_uuid()));
        row.set_name(button->name());
        row.set_category(button->category());
        edit.operations.emplace_back(operation::insert_row{rows.size(), row});
        rows.push_back(row.uuid());
    }
    return rows;
}

}  // namespace vistels::bench
