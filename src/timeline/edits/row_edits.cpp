// SPDX-License-Identifier: GPL-3.0-or-later
#include "timeline/edits/row_edits.h"

#include <algorithm>
#include <cctype>
#include <cmath>

#include "timeline/edits/edit_failures.h"
#include "timeline/edits/edit_names.h"
#include "util/uuid.h"

namespace vistels {

namespace {

constexpr int clip_colour_decimals = 4;
constexpr double hidden_height = 0;

std::string trimmed(const std::string& text) {
    constexpr const char* blanks = " \t\r\n";
    const auto from = text.find_first_not_of(blanks);
    if (from == std::string::npos) return {};
    return text.substr(from, text.find_last_not_of(blanks) - from + 1);
}

std::string scope_of(const std::vector<shared_text>& rows) {
    return rows.size() == 1 ? rows.front().str() : std::string();
}

// Every row as `change` leaves its copy.
template <class Change>
result<timeline_edit> plan_change(const sxy_DATA_root& timeline, const char* name,
                                  const std::vector<shared_text>& rows, Change change) {
    timeline_edit edit{name, scope_of(rows), {}};
    for (const auto& uuid : rows) {
        const auto row = timeline.row(uuid);
        if (!row) return row_is_gone();
        sxy_ROW changed = *row;
        change(changed);
        auto values = inverse_values(write_row_values(changed, 0), write_row_values(*row, 0));
        if (values.set.empty() && values.unset.empty()) continue;
        edit.operations.emplace_back(
            operation::change_row{uuid, std::move(values.set), std::move(values.unset)});
    }
    return edit;
}

// What takes rows from their order to `wanted`.
timeline_edit plan_order(const sxy_DATA_root& timeline, const char* name,
                         const std::vector<shared_text>& wanted) {
    timeline_edit edit{name, "", {}};
    std::vector<shared_text> now;
    for (const auto& row : timeline.rows()) now.push_back(row->uuid());
    for (std::size_t index = 0; index < wanted.size(); ++index) {
        if (now[index] == wanted[index]) continue;
        edit.operations.emplace_back(operation::move_row{wanted[index], index});
        now.erase(std::find(now.begin(), now.end(), wanted[index]));
        now.insert(now.begin() + static_cast<std::ptrdiff_t>(index), wanted[index]);
    }
    edit.is_complete = true;
    return edit;
}

// Numbers count as such, capitals as small letters.
bool reads_before(const std::string& a, const std::string& b) {
    std::size_t i = 0;
    std::size_t j = 0;
    const auto is_figure = [](char letter) { return letter >= '0' && letter <= '9'; };
    while (i < a.size() && j < b.size()) {
        if (is_figure(a[i]) && is_figure(b[j])) {
            const auto from_i = std::min(a.find_first_not_of('0', i), a.size());
            const auto from_j = std::min(b.find_first_not_of('0', j), b.size());
            auto end_i = from_i;
            auto end_j = from_j;
            while (end_i < a.size() && is_figure(a[end_i])) ++end_i;
            while (end_j < b.size() && is_figure(b[end_j])) ++end_j;
            if (end_i - from_i != end_j - from_j) return end_i - from_i < end_j - from_j;
            const int order = a.compare(from_i, end_i - from_i, b, from_j, end_j - from_j);
            if (order != 0) return order < 0;
            i = end_i;
            j = end_j;
            continue;
        }
        const int x = std::tolower(static_cast<unsigned char>(a[i++]));
        const int y = std::tolower(static_cast<unsigned char>(b[j++]));
        if (x != y) return x < y;
    }
    return a.size() - i < b.size() - j;
}

double first_start(const sxy_ROW& row) {
    return row.clips().empty() ? HUGE_VAL : row.clips()[0]->secs_start();
}

bool stands_before(const sxy_ROW& a, const sxy_ROW& b, row_order order) {
    switch (order) {
        case row_order::by_name:
            return reads_before(a.name(), b.name());
        case row_order::by_category:
            if (a.category().empty() != b.category().empty()) return b.category().empty();
            if (a.category() != b.category()) return reads_before(a.category(), b.category());
            return reads_before(a.name(), b.name());
        case row_order::by_count:
            return a.clips().size() > b.clips().size();
        case row_order::by_time:
            return first_start(a) < first_start(b);
    }
    return false;
}

}  // namespace

timeline_edit plan_new_row(const sxy_DATA_root& timeline, const shared_text& below, const colour& shade) {
    const auto is_taken = [&](const std::string& name) {
        return std::any_of(timeline.rows().begin(), timeline.rows().end(),
                           [&](const row_pointer& row) { return row->has_name(name); });
    };
    std::string name = "Row";
    for (int number = 2; is_taken(name); ++number) name = "Row " + std::to_string(number);
    sxy_ROW row;
    row.set_uuid(shared_text(new_uuid()));
    row.set_name(name);
    row.set_col(shade);
    const auto at = timeline.row_index(below);
    timeline_edit edit{edit_name::new_row, row.uuid().str(), {}};
    edit.operations.emplace_back(
        operation::insert_row{at ? *at + 1 : timeline.rows().size(), std::move(row)});
    return edit;
}

result<timeline_edit> plan_rename_row(const sxy_DATA_root& timeline, const shared_text& row,
                                      const std::string& name) {
    const std::string wanted = trimmed(name);
    if (wanted.empty()) return row_needs_a_name();
    return plan_change(timeline, edit_name::rename_row, {row},
                       [&](sxy_ROW& changed) { changed.set_name(wanted); });
}

result<timeline_edit> plan_row_colour(const sxy_DATA_root& timeline, const std::vector<shared_text>& rows,
                                      const colour& shade) {
    auto edit =
        plan_change(timeline, edit_name::row_colour, rows, [&](sxy_ROW& changed) { changed.set_col(shade); });
    if (!edit) return edit;
    for (const auto& uuid : rows) {
        const auto row = timeline.row(uuid);
        const auto old = row->col();
        if (!old || *old == shade) continue;
        for (const auto& clip : row->clips()) {
            if (clip->col() != old) continue;
            operation::change_clip change{clip->id(), {}, {}};
            change.set.set("color", colour_text(shade, clip_colour_decimals));
            edit.value().operations.emplace_back(std::move(change));
        }
    }
    return edit;
}

result<timeline_edit> plan_row_category(const sxy_DATA_root& timeline, const std::vector<shared_text>& rows,
                                        const std::string& category) {
    return plan_change(timeline, edit_name::row_category, rows,
                       [&](sxy_ROW& changed) { changed.set_category(trimmed(category)); });
}

result<timeline_edit> plan_row_height(const sxy_DATA_root& timeline, const std::vector<shared_text>& rows,
                                      double height) {
    return plan_change(timeline, edit_name::row_height, rows,
                       [&](sxy_ROW& changed) { changed.set_height(height); });
}

result<timeline_edit> plan_move_rows(const sxy_DATA_root& timeline, const std::vector<shared_text>& rows,
                                     std::size_t index) {
    std::vector<shared_text> before;
    std::vector<shared_text> moved;
    std::vector<shared_text> after;
    for (std::size_t at = 0; at < timeline.rows().size(); ++at) {
        const shared_text uuid = timeline.rows()[at]->uuid();
        const bool moves = std::find(rows.begin(), rows.end(), uuid) != rows.end();
        (moves ? moved : at < index ? before : after).push_back(uuid);
    }
    if (moved.size() < rows.size()) return row_is_gone();
    before.insert(before.end(), moved.begin(), moved.end());
    before.insert(before.end(), after.begin(), after.end());
    return plan_order(timeline, rows.size() == 1 ? edit_name::move_row : edit_name::move_rows, before);
}

bool is_hidden(const sxy_ROW& row) {
    return row.real_height() && row.height() <= hidden_height;
}

result<timeline_edit> plan_hide_rows(const sxy_DATA_root& timeline, const std::vector<shared_text>& rows) {
    return plan_change(timeline, rows.size() == 1 ? edit_name::hide_row : edit_name::hide_rows, rows,
                       [](sxy_ROW& changed) {
                           if (is_hidden(changed)) return;
                           changed.set_real_height(changed.height());
                           changed.set_height(hidden_height);
                       });
}

timeline_edit plan_show_hidden_rows(const sxy_DATA_root& timeline) {
    std::vector<shared_text> hidden;
    for (const auto& row : timeline.rows()) {
        if (is_hidden(*row)) hidden.push_back(row->uuid());
    }
    auto edit = plan_change(timeline, edit_name::show_rows, hidden, [](sxy_ROW& changed) {
        changed.set_height(*changed.real_height());
        changed.set_real_height(std::nullopt);
    });
    return std::move(edit).value();
}

timeline_edit plan_sort_rows(const sxy_DATA_root& timeline, row_order order) {
    std::vector<row_pointer> sorted(timeline.rows().begin(), timeline.rows().end());
    std::stable_sort(sorted.begin(), sorted.end(), [order](const row_pointer& a, const row_pointer& b) {
        return stands_before(*a, *b, order);
    });
    std::vector<shared_text> wanted;
    for (const auto& row : sorted) wanted.push_back(row->uuid());
    return plan_order(timeline, edit_name::sort_rows, wanted);
}

}  // namespace vistels
