// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "logger/markup_Button_Action_Link_ITEM.h"
#include "logger/markup_Button_Item.h"

namespace vistels {

// The links of a code window that act, by the places of its buttons, with the states by which those of
// several sources are judged. One thread.
class link_graph {
  public:
    struct link {
        const link_kind* kind = nullptr;
        std::size_t target = 0;
        std::optional<colour> colour_to_set;
        std::size_t condition = 0;  // of a kind that has one
    };
    link_graph() = default;
    // All are up. Links to buttons that are not there, and of kinds that do nothing, are left out.
    explicit link_graph(const std::vector<button_record>& buttons);

    // In the order of the button's array.
    const std::vector<link>& links_of(std::size_t button) const { return links_[button]; }
    bool has_links() const { return has_links_; }

    void note_state(std::size_t button, bool is_down);
    bool is_down(std::size_t button) const { return down_[button]; }
    // Whether the link's condition holds now, over the sources that have a link of this kind to its target.
    bool holds(const link& one) const;

  private:
    struct condition {
        std::size_t sources = 0;
        std::size_t down = 0;  // of them
    };
    std::vector<std::vector<link>> links_;
    std::vector<condition> conditions_;
    std::vector<std::vector<std::size_t>> conditions_of_;  // by button, those of which it is a source
    std::vector<bool> down_;
    bool has_links_ = false;
};

}  // namespace vistels
