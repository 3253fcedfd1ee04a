// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "logger/markup_Button_Item.h"
#include "timeline/records/sxy_DATA_root.h"

namespace vistels {

// The buttons of a code window, found by their UUIDs. One thread.
class button_set {
  public:
    button_set() = default;
    explicit button_set(std::vector<button_record> buttons);

    const std::vector<button_record>& all() const { return buttons_; }
    // Null when there is none.
    const button_record* find(std::string_view uuid) const;
    // Where it lies among all().
    std::optional<std::size_t> place_of(std::string_view uuid) const;
    // Puts it in the place of the one with its UUID, if there is one.
    void replace(button_record button);
    // The one before (-1) or after (1) it among those of its category, by "sort_order" and then as they lie
    // on the canvas; null at the ends.
    const button_record* beside(const markup_Button_Item& button, int direction) const;

    // The button on whose row this one codes: itself, or the one that "action link to UUID" names, and so on.
    // A chain that comes back to a button ends there.
    const markup_Button_Item& row_owner(const markup_Button_Item& button) const;
    // The row that the button's clips go to: the one that "action link to UUID" names; else, for the owner,
    // the one with its name and category; else, when one row alone has the name and one of the two categories
    // is empty, that one. Null when it is still to be made.
    row_pointer row_of(const sxy_DATA_root& timeline, const markup_Button_Item& button) const;
    // The same for all buttons at once, in their order.
    std::vector<row_pointer> rows_of_all(const sxy_DATA_root& timeline) const;

  private:
    struct text_hash {
        using is_transparent = void;
        std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>()(text); }
    };

    template <class Rows_named>
    row_pointer row_among(const sxy_DATA_root& timeline, const markup_Button_Item& button,
                          const Rows_named& rows_named) const;

    std::vector<button_record> buttons_;
    std::unordered_map<std::string, std::size_t, text_hash, std::equal_to<>> places_;
};

}  // namespace vistels
