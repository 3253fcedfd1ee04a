// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>
#include <utility>

namespace vistels {

// A value of which copies are cheap: they share it until one of them is changed. One thread.
template <typename Value>
class copied_on_change {
  public:
    const Value& operator*() const { return *value_; }
    const Value* operator->() const { return value_.get(); }

    // The value, this one's alone. Not to be kept beyond the next copy.
    Value& change() {
        if (value_.use_count() > 1) value_ = std::make_shared<Value>(*value_);
        return *value_;
    }
    void set(Value value) { value_ = std::make_shared<Value>(std::move(value)); }

  private:
    std::shared_ptr<Value> value_ = std::make_shared<Value>();
};

}  // namespace vistels
