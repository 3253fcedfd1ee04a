// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>
#include <utility>

namespace vistels {

// A part of a record that most records do not have: eight bytes while it is not there, and copied with the
// record.
template <class Part>
class copied_ptr {
  public:
    copied_ptr() = default;
    copied_ptr(Part part) : part_(std::make_unique<Part>(std::move(part))) {}
    copied_ptr(const copied_ptr& other) : part_(other ? std::make_unique<Part>(*other) : nullptr) {}
    copied_ptr(copied_ptr&&) noexcept = default;
    copied_ptr& operator=(copied_ptr other) noexcept {
        part_.swap(other.part_);
        return *this;
    }

    explicit operator bool() const { return part_ != nullptr; }
    const Part* get() const { return part_.get(); }
    const Part& operator*() const { return *part_; }
    const Part* operator->() const { return part_.get(); }
    // The part to write to; a default one is made when there is none.
    Part& make() {
        if (!part_) part_ = std::make_unique<Part>();
        return *part_;
    }
    void reset() { part_.reset(); }

    bool operator==(const copied_ptr& other) const {
        return part_ && other.part_ ? *part_ == *other.part_ : !part_ && !other.part_;
    }

  private:
    std::unique_ptr<Part> part_;
};

}  // namespace vistels
