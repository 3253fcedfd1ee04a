// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace vistels {

// Keeps one observer connected for as long as it lives. Movable, not copyable.
class connection {
  public:
    connection() = default;
    explicit connection(std::shared_ptr<void> held) : held_(std::move(held)) {}
    void disconnect() { held_.reset(); }

  private:
    std::shared_ptr<void> held_;
};

// A list of observers called in the order in which they connected. One thread (the owner's) connects, emits
// and disconnects. An observer may connect and disconnect while a signal is being emitted: one that
// connects then is first called by the next emission.
template <class... Arguments>
class signal {
  public:
    using observer = std::function<void(Arguments...)>;

    [[nodiscard]] connection connect(observer call) {
        auto held = std::make_shared<observer>(std::move(call));
        observers_.push_back(held);
        return connection(std::move(held));
    }

    void emit(Arguments... arguments) {
        const std::vector<std::weak_ptr<observer>> now = observers_;
        bool any_gone = false;
        for (const auto& weak : now) {
            if (const auto call = weak.lock()) {
                (*call)(arguments...);
            } else {
                any_gone = true;
            }
        }
        if (any_gone) std::erase_if(observers_, [](const auto& weak) { return weak.expired(); });
    }

  private:
    std::vector<std::weak_ptr<observer>> observers_;
};

}  // namespace vistels
