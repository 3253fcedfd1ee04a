// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>
#include <string>
#include <utility>

namespace vistels {

// Why something could not be done, in words fit for the user: they name the file or the item.
struct failure {
    std::string message;
};

// The value of a call that can fail, or the reason why there is none. Check with `ok()` before `value()`;
// reading the value of a failed result is a programming error and ends the program.
template <class T>
class [[nodiscard]] result {
  public:
    result(T value) : value_(std::move(value)) {}
    result(failure reason) : reason_(std::move(reason.message)) {}

    bool ok() const { return value_.has_value(); }
    explicit operator bool() const { return ok(); }
    T& value() & { return value_.value(); }
    const T& value() const& { return value_.value(); }
    T&& value() && { return std::move(value_).value(); }
    const std::string& message() const { return reason_; }
    failure error() const { return failure{reason_}; }

  private:
    std::optional<T> value_;
    std::string reason_;
};

template <>
class [[nodiscard]] result<void> {
  public:
    result() = default;
    result(failure reason) : reason_(std::move(reason.message)) {}

    bool ok() const { return !reason_.has_value(); }
    explicit operator bool() const { return ok(); }
    const std::string& message() const {
        static const std::string none;
        return reason_ ? *reason_ : none;
    }
    failure error() const { return failure{message()}; }

  private:
    std::optional<std::string> reason_;
};

}  // namespace vistels
