// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

namespace vistels {

// An unchanging text that is kept once however often it is used (names and categories repeat a thousandfold).
// Two are equal exactly when they hold the same pointer, so comparing costs a number. Eight bytes. Any
// thread.
class shared_text {
  public:
    shared_text() = default;  // the empty text
    explicit shared_text(std::string_view text);
    shared_text(const shared_text& other) noexcept : kept_(other.kept_) {
        if (kept_) kept_->uses.fetch_add(1, std::memory_order_relaxed);
    }
    shared_text(shared_text&& other) noexcept : kept_(std::exchange(other.kept_, nullptr)) {}
    shared_text& operator=(shared_text other) noexcept {
        std::swap(kept_, other.kept_);
        return *this;
    }
    ~shared_text() {
        if (kept_ && kept_->uses.fetch_sub(1, std::memory_order_acq_rel) == 1) forget(kept_);
    }

    const std::string& str() const { return kept_ ? kept_->text : empty_text(); }
    bool empty() const { return !kept_; }
    // The same for equal texts, as long as one of them lives.
    const void* identity() const { return kept_; }

    bool operator==(const shared_text& other) const { return kept_ == other.kept_; }
    bool operator==(std::string_view text) const { return str() == text; }

  private:
    struct pooled {
        pooled(std::string_view what, std::uint64_t sum) : hash(sum), text(what) {}
        std::atomic<std::uint32_t> uses = 1;  // 0: about to be deleted
        const std::uint64_t hash;
        const std::string text;
    };
    class pool;

    static const std::string& empty_text();
    static void forget(pooled* unused);

    pooled* kept_ = nullptr;
};

}  // namespace vistels

template <>
struct std::hash<vistels::shared_text> {
    std::size_t operator()(const vistels::shared_text& text) const noexcept {
        return std::hash<const void*>()(text.identity());
    }
};
