// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "timeline/records/sxy_CLIP.h"

namespace vistels {

// Finds the clips of a timeline by their UUID: a table of 16 bytes a place, a third of the places free on
// average. The clips belong to others and outlive their entries; a clip's UUID must not change meanwhile. One
// thread.
class clip_index {
  public:
    struct entry {
        const sxy_CLIP* clip = nullptr;
        std::uint32_t hash = 0;  // of its UUID
        std::uint32_t row = 0;   // what the owner calls the row that it is in
    };

    std::size_t size() const { return size_; }
    void reserve(std::size_t clips);

    // Null when there is none. Until the next call that changes the index.
    entry* find(std::string_view uuid);
    const entry* find(std::string_view uuid) const { return const_cast<clip_index*>(this)->find(uuid); }
    // False, with nothing changed, when a clip with that UUID is there.
    bool insert(const sxy_CLIP& clip, std::uint32_t row);
    void remove(entry* found);

  private:
    std::size_t place_after(std::size_t place) const { return (place + 1) & (places_.size() - 1); }
    // The entry of that UUID, or the free one where it would be put.
    entry& place_of(std::string_view uuid, std::uint32_t hash);
    void grow(std::size_t places);

    std::vector<entry> places_;  // a power of two of them; an entry stands at its hash or soon behind it
    std::size_t size_ = 0;
};

}  // namespace vistels
