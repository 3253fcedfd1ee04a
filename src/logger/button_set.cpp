// SPDX-License-Identifier: GPL-3.0-or-later
#include "logger/button_set.h"

#include <algorithm>
#include <utility>

namespace vistels {

button_set::button_set(std::vector<button_record> buttons) : buttons_(std::move(buttons)) {
    places_.reserve(buttons_.size());
    for (std::size_t index = 0; index < buttons_.size(); ++index) {
        places_.emplace(buttons_[index]->uuid(), index);
    }
}

const button_record* button_set::find(std::string_view uuid) const {
    const auto found = places_.find(uuid);
    return found == places_.end() ? nullptr : &buttons_[found->second];
}

std::optional<std::size_t> button_set::place_of(std::string_view uuid) const {
    const auto found = places_.find(uuid);
    return found == places_.end() ? std::nullopt : std::optional(found->second);
}

void button_set::replace(button_record button) {
    const auto found = places_.find(button->uuid());
    if (found != places_.end()) buttons_[found->second] = std::move(button);
}

const button_record* button_set::beside(const markup_Button_Item& button, int direction) const {
    const std::string uuid = button.uuid();
    const std::string category = button.category();
    std::vector<const button_record*> group;
    for (const auto& one : buttons_) {
        if (one->category() == category) group.push_back(&one);
    }
    std::stable_sort(group.begin(), group.end(),
                     [](const auto* a, const auto* b) { return (*a)->sort_order() < (*b)->sort_order(); });
    const auto here =
        std::find_if(group.begin(), group.end(), [&](const auto* one) { return (*one)->uuid() == uuid; });
    if (here == group.end()) return nullptr;
    if (direction < 0) return here == group.begin() ? nullptr : *(here - 1);
    return here + 1 == group.end() ? nullptr : *(here + 1);
}

const markup_Button_Item& button_set::row_owner(const markup_Button_Item& button) const {
    const markup_Button_Item* owner = &button;
    for (std::size_t steps = 0; steps < buttons_.size(); ++steps) {
        const auto* next = find(owner->action_link_to());
        if (!next || &**next == owner) break;
        owner = &**next;
        if (owner->uuid() == button.uuid()) break;
    }
    return *owner;
}

// `rows_named` hands each row of a name, in their order, to a function until that returns true.
template <class Rows_named>
row_pointer button_set::row_among(const sxy_DATA_root& timeline, const markup_Button_Item& button,
                                  const Rows_named& rows_named) const {
    const markup_Button_Item& owner = row_owner(button);
    if (const std::string linked = owner.action_link_to(); !linked.empty()) {
        if (auto row = timeline.row(shared_text(linked))) return row;
    }
    const std::string category = owner.category();
    row_pointer same, named;
    std::size_t same_names = 0;
    rows_named(owner.name(), [&](const row_pointer& row) {
        const std::string of_row = row->category();
        if (of_row == category) same = row;
        if (of_row.empty() || category.empty()) named = row;
        ++same_names;
        return same != nullptr;
    });
    if (same) return same;
    return same_names == 1 ? named : nullptr;
}

row_pointer button_set::row_of(const sxy_DATA_root& timeline, const markup_Button_Item& button) const {
    return row_among(timeline, button, [&](const std::string& name, const auto& take) {
        for (const auto& row : timeline.rows()) {
            if (row->has_name(name) && take(row)) return;
        }
    });
}

std::vector<row_pointer> button_set::rows_of_all(const sxy_DATA_root& timeline) const {
    std::unordered_map<std::string, std::vector<row_pointer>> by_name;
    for (const auto& row : timeline.rows()) by_name[row->name()].push_back(row);
    std::vector<row_pointer> rows;
    rows.reserve(buttons_.size());
    for (const auto& button : buttons_) {
        rows.push_back(row_among(timeline, *button, [&](const std::string& name, const auto& take) {
            const auto found = by_name.find(name);
            if (found == by_name.end()) return;
            for (const auto& row : found->second) {
                if (take(row)) return;
            }
        }));
    }
    return rows;
}

}  // namespace vistels
