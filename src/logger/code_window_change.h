// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "document/document_edit.h"
#include "logger/code_window.h"

namespace vistels {

// What an edit does to one button of a code window.
struct button_change {
    std::string uuid;
    std::size_t index = 0;             // its place on the canvas, lowest first
    std::optional<button_record> now;  // none: it is taken away
};

// What an edit does to a code window, as the part of an edit of any documents.
class code_window_change final : public document_change {
  public:
    explicit code_window_change(std::vector<button_change> buttons) : buttons_(std::move(buttons)) {}
    const std::vector<button_change>& buttons() const { return buttons_; }
    property_dictionary stored() const override;

  private:
    std::vector<button_change> buttons_;
};

// The change in a part of an edit, also of one that was read; none of another kind.
std::vector<button_change> button_changes_in(const document_change& change);

// Puts the button in the place of the one with its UUID: the part and what takes it back. Nothing when there
// is none.
std::optional<document_part> plan_button(const code_window& window, const button_record& changed);

// The same for all buttons with triggers, whose times move by that many seconds. Nothing when there are none.
std::optional<document_part> plan_trigger_shift(const code_window& window, double seconds);

// Makes the changes, one after another. A button that is not there any more is passed over; one that the file
// knows without a UUID is found by its place.
void apply_button_changes(code_window& window, const std::vector<button_change>& changes);

}  // namespace vistels
