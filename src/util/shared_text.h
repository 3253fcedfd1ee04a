// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace vistels {

// An unchanging text that is kept once however often it is used (names and categories repeat a thousandfold).
// Two are equal exactly when they hold the same pointer, so comparing costs a number. Any thread.
class shared_text {
  public:
    shared_text() = default;  // the empty text
    explicit shared_text(std::string_view text);

    const std::string& str() const;
    bool empty() const { return !text_; }
    // The same for equal texts, as long as one of them lives.
    const void* identity() const { return text_.get(); }

    bool operator==(const shared_text& other) const { return text_ == other.text_; }
    bool operator==(std::string_view text) const { return str() == text; }

  private:
    std::shared_ptr<const std::string> text_;
};

}  // namespace vistels

template <>
struct std::hash<vistels::shared_text> {
    std::size_t operator()(const vistels::shared_text& text) const noexcept {
        return std::hash<const void*>()(text.identity());
    }
};
