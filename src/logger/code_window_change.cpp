// SPDX-License-Identifier: GPL-3.0-or-later
#include "logger/code_window_change.h"

#include <algorithm>
#include <iterator>

namespace vistels {

namespace {

using buttons = std::vector<button_record>;

buttons::iterator find_button(buttons& all, const std::string& uuid) {
    return std::find_if(all.begin(), all.end(), [&](const auto& one) { return one->uuid() == uuid; });
}

std::optional<button_change> read_change(const property_value& value) {
    const auto* stored = value.dictionary();
    const auto index = stored ? stored->integer("index") : std::nullopt;
    if (!index || *index < 0) return std::nullopt;
    button_change change{stored->text_or_empty("uuid"), static_cast<std::size_t>(*index), std::nullopt};
    if (const auto* button = stored->dictionary("button")) {
        markup_Button_Item read = read_button(*button);
        if (!button->contains("uuid")) read.set_made_up_uuid(change.uuid);
        change.now = button_record(std::move(read));
    }
    return change;
}

}  // namespace

property_dictionary code_window_change::stored() const {
    property_array all;
    for (const auto& change : buttons_) {
        property_dictionary one;
        one.add("uuid", change.uuid);
        one.add("index", static_cast<std::int64_t>(change.index));
        if (change.now) one.add("button", write_button(**change.now));
        all.emplace_back(std::move(one));
    }
    property_dictionary stored;
    stored.add("buttons", std::move(all));
    return stored;
}

std::vector<button_change> button_changes_in(const document_change& change) {
    if (const auto* own = dynamic_cast<const code_window_change*>(&change)) return own->buttons();
    const auto* read = dynamic_cast<const stored_change*>(&change);
    const auto* all = read ? read->values().array("buttons") : nullptr;
    std::vector<button_change> changes;
    for (const auto& value : all ? *all : property_array()) {
        if (auto one = read_change(value)) changes.push_back(std::move(*one));
    }
    return changes;
}

std::optional<document_part> plan_button(const code_window& window, const button_record& changed) {
    const auto& all = window.buttons.buttons;
    const std::string uuid = changed->uuid();
    const auto found =
        std::find_if(all.begin(), all.end(), [&](const auto& one) { return one->uuid() == uuid; });
    if (found == all.end()) return std::nullopt;
    const auto index = static_cast<std::size_t>(std::distance(all.begin(), found));
    const auto change_to = [&](const button_record& button) -> change_pointer {
        return std::make_shared<const code_window_change>(std::vector<button_change>{{uuid, index, button}});
    };
    document_part part;
    part.document.kind = document_kind::code_window;
    part.change = change_to(changed);
    part.back = change_to(*found);
    return part;
}

std::optional<document_part> plan_trigger_shift(const code_window& window, double seconds) {
    std::vector<button_change> now;
    std::vector<button_change> before;
    const auto& all = window.buttons.buttons;
    for (std::size_t index = 0; index < all.size(); ++index) {
        auto triggers = all[index]->triggers();
        if (triggers.empty()) continue;
        for (auto& one : triggers) one.trigger_Time += seconds;
        before.push_back({all[index]->uuid(), index, all[index]});
        now.push_back({all[index]->uuid(), index,
                       changed_button(all[index], [&](auto& button) { button.set_triggers(triggers); })});
    }
    if (now.empty()) return std::nullopt;
    document_part part;
    part.document.kind = document_kind::code_window;
    part.change = std::make_shared<const code_window_change>(std::move(now));
    part.back = std::make_shared<const code_window_change>(std::move(before));
    return part;
}

void apply_button_changes(code_window& window, const std::vector<button_change>& changes) {
    buttons& all = window.buttons.buttons;
    for (const auto& change : changes) {
        auto found = find_button(all, change.uuid);
        if (found == all.end() && change.index < all.size()) {
            const auto at = all.begin() + static_cast<std::ptrdiff_t>(change.index);
            if ((*at)->fields().stored.text_or_empty("uuid").empty()) found = at;
        }
        if (found == all.end()) continue;
        if (change.now) {
            *found = *change.now;
        } else {
            all.erase(found);
        }
    }
}

}  // namespace vistels
