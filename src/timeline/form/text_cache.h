// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <functional>
#include <string_view>
#include <vector>

#include "util/shared_text.h"

namespace vistels {

// What readers of records are handed: the shared texts met lately, so that reading a file asks the pool of
// all texts, and its lock, seldom. One thread.
class text_cache {
  public:
    // Room for `size` texts; with 0, for a single record, every text is asked for.
    explicit text_cache(std::size_t size = 0) : texts_(size) {}
    static constexpr std::size_t size_for_files = 1024;

    shared_text get(std::string_view text) {
        if (texts_.empty()) return shared_text(text);
        shared_text& place = texts_[std::hash<std::string_view>()(text) % texts_.size()];
        if (!(place == text)) place = shared_text(text);
        return place;
    }

  private:
    std::vector<shared_text> texts_;
};

}  // namespace vistels
