// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <functional>
#include <string_view>
#include <vector>

#include "util/memory_allowance.h"
#include "util/shared_text.h"

namespace vistels {

// What std::make_shared needs beside the object, and what a list that grows item by item needs of the size of
// its items: the old block, and the new one with twice the room.
inline constexpr std::size_t shared_block_bytes = 16;
inline constexpr std::size_t growing_list_times = 3;

// What readers of records are handed: the shared texts met lately, so that reading a file asks the pool of
// all texts, and its lock, seldom; and what the file may take in memory. One thread.
class text_cache {
  public:
    // Room for `size` texts; with 0, for a single record, every text is asked for.
    explicit text_cache(std::size_t size = 0, memory_allowance allowance = {})
        : texts_(size), allowance_(allowance) {}
    static constexpr std::size_t size_for_files = 1024;

    shared_text get(std::string_view text) {
        if (texts_.empty()) return new_text(text);
        shared_text& place = texts_[std::hash<std::string_view>()(text) % texts_.size()];
        if (!(place == text)) place = new_text(text);
        return place;
    }

    memory_allowance& allowance() { return allowance_; }
    // Before something of the file is put into memory. False when the file takes too much: what is left of it
    // need not be read.
    bool take_memory(std::size_t bytes) { return allowance_.take(bytes); }

  private:
    // With its place in the pool.
    static constexpr std::size_t pooled_bytes = heap_bytes(48) + heap_bytes(56) + heap_bytes(8);

    shared_text new_text(std::string_view text) {
        take_memory(pooled_bytes + text_heap_bytes(text.size()));
        return shared_text(text);
    }

    std::vector<shared_text> texts_;
    memory_allowance allowance_;
};

}  // namespace vistels
