// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>
#include <type_traits>
#include <unordered_set>
#include <vector>

#include "util/shared_text.h"

namespace vistels {

// Adds texts to a list, each once. A few are looked for in the list itself; only a long list pays for a set.
template <class Text>
class unique_appender {
  public:
    // At most `most` texts are going to be added.
    unique_appender(std::vector<Text>& list, std::size_t most)
        : list_(list), many_(list.size() + most > few) {
        if (!many_) return;
        // The views in the set stay good as long as the texts in the list are not moved.
        if constexpr (std::is_same_v<Text, std::string>) {
            list.reserve(list.size() + most);
            known_.reserve(list.size() + most);
        }
        for (const auto& text : list) known_.insert(view(text));
    }
    void add(const Text& text) {
        if (!list_.empty() && list_.back() == text) return;
        if (!many_ && std::find(list_.begin(), list_.end(), text) != list_.end()) return;
        list_.push_back(text);
        if (many_ && !known_.insert(view(list_.back())).second) list_.pop_back();
    }

  private:
    static constexpr std::size_t few = 16;
    static std::string_view view(const std::string& text) { return text; }
    static std::string_view view(const shared_text& text) { return text.str(); }

    std::vector<Text>& list_;
    const bool many_;
    std::unordered_set<std::string_view> known_;
};

}  // namespace vistels
