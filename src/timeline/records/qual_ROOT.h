// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <initializer_list>
#include <utility>
#include <vector>

#include "timeline/records/qual_ITEM.h"

namespace vistels {

// A clip's qualifiers in stamping order. The list is put together by one thread and does not change once it
// is on a clip; its other fields are read and written under `lk`.
class qual_ROOT : record {
  public:
    using list = std::vector<qual_ITEM>;
    using value_type = qual_ITEM;
    using iterator = list::iterator;
    using const_iterator = list::const_iterator;

    qual_ROOT() = default;
    qual_ROOT(std::initializer_list<qual_ITEM> all) : items_(all) {}
    explicit qual_ROOT(list all) : items_(std::move(all)) {}

    bool empty() const { return items_.empty(); }
    std::size_t size() const { return items_.size(); }
    const qual_ITEM& operator[](std::size_t index) const { return items_[index]; }
    qual_ITEM& operator[](std::size_t index) { return items_[index]; }
    const qual_ITEM& front() const { return items_.front(); }
    const qual_ITEM& back() const { return items_.back(); }
    qual_ITEM& back() { return items_.back(); }
    const_iterator begin() const { return items_.begin(); }
    const_iterator end() const { return items_.end(); }
    iterator begin() { return items_.begin(); }
    // Of what a walk over all clips looks at, see sxy_CLIP.
    const void* first_looked_at() const { return &items_; }
    const void* last_looked_at() const { return reinterpret_cast<const char*>(&items_ + 1) - 1; }
    iterator end() { return items_.end(); }
    void reserve(std::size_t count) { items_.reserve(count); }
    void push_back(qual_ITEM item) { items_.push_back(std::move(item)); }
    iterator insert(const_iterator before, qual_ITEM item) { return items_.insert(before, std::move(item)); }
    iterator erase(const_iterator item) { return items_.erase(item); }

    bool operator==(const qual_ROOT& other) const { return items_ == other.items_; }

  private:
    list items_;
};

}  // namespace vistels
