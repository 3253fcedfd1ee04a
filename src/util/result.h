// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>
#include <string>
#include <utility>

#include "util/failure.h"

namespace vistels {

// The value of a call that can fail, or the reason why there is none. Check with `ok()` before `value()`;
// reading the value of a failed result is a programming error and ends the program.
template <class T>
class [[nodiscard]] result {
  public:
    result(T value) : value_(std::move(value)) {}
    result(failure reason) : reason_(std::move(reason)) {}

    bool ok() const { return value_.has_value(); }
    explicit operator bool() const { return ok(); }
    T& value() & { return value_.value(); }
    const T& value() const& { return value_.value(); }
    T&& value() && { return std::move(value_).value(); }
    // No failure and "" of one that is ok.
    failure error() const { return reason_; }
    const std::string& message() const { return reason_.message(); }

  private:
    std::optional<T> value_;
    failure reason_;
};

// Without a value: ok as long as there is no failure.
template <>
class [[nodiscard]] result<void> {
  public:
    result() = default;
    result(failure reason) : reason_(std::move(reason)) {}

    bool ok() const { return !reason_; }
    explicit operator bool() const { return ok(); }
    failure error() const { return reason_; }
    const std::string& message() const { return reason_.message(); }

  private:
    failure reason_;
};

}  // namespace vistels
