// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <algorithm>
#include <cstddef>
#include <limits>
#include <string>
#include <string_view>

#include "util/result.h"

namespace vistels {

// What a block of that many bytes takes of the heap.
constexpr std::size_t heap_bytes(std::size_t bytes) {
    constexpr std::size_t smallest = 32;
    constexpr std::size_t step = 16;
    return std::max(smallest, (bytes + sizeof(std::size_t) + step - 1) / step * step);
}

// What a text takes beyond its object.
inline std::size_t text_heap_bytes(std::size_t length) {
    static const std::size_t inside = std::string().capacity();
    return length > inside ? heap_bytes(length + 1) : 0;
}

// What reading a file may take in memory: twenty times its size, and something beside it for small ones. Who
// makes records of a file takes from it what they need, before they are made; a file that holds nothing but
// small things in great number is refused, and not read until the memory is gone. Real records, which carry
// names and UUIDs, take less than their size in a file three times over.
//
// The views that the rest of a file may still take (sixteen times its size, see stored_view.h) are set aside.
// One thread.
class memory_allowance {
  public:
    // Without bounds: for what is in memory already.
    memory_allowance() = default;
    explicit memory_allowance(std::size_t file_bytes)
        : records_beside_(records_times * file_bytes + fixed_bytes) {}

    // Just so many bytes.
    static memory_allowance of(std::size_t bytes) {
        memory_allowance allowance;
        allowance.records_beside_ = bytes;
        return allowance;
    }

    // So many bytes of the file have been read, and views take so much now.
    void has_read(std::size_t bytes, std::size_t view_bytes) {
        read_ = bytes;
        views_ = view_bytes;
    }
    // False when there is not so much left, from then on too.
    bool take(std::size_t bytes) {
        taken_ += bytes;
        return !is_spent();
    }
    bool is_spent() const {
        return records_beside_ != boundless && taken_ + views_ > records_beside_ + views_times * read_;
    }
    // For what was made in between and is gone again.
    std::size_t taken() const { return taken_; }
    void return_to(std::size_t taken) { taken_ = taken; }

    static constexpr std::string_view spent_reason =
        "it holds so many small values that it would take more than 20 times its size in memory";
    static failure spent(const std::string& name) {
        return {"\"" + name + "\" cannot be read: " + std::string(spent_reason) + "."};
    }

  private:
    static constexpr std::size_t boundless = std::numeric_limits<std::size_t>::max();
    static constexpr std::size_t fixed_bytes = std::size_t{256} * 1024;
    static constexpr std::size_t views_times = 16;
    static constexpr std::size_t records_times = 2;  // 19 with the views and the file itself

    std::size_t records_beside_ = boundless;
    std::size_t read_ = 0;
    std::size_t views_ = 0;
    std::size_t taken_ = 0;
};

}  // namespace vistels
