// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "media/picture.h"

namespace vistels {

// The memory that decoded pictures may take, shared by need among all vistels of all open events. Who keeps
// pictures holds a share: it says how much it can use, and gets that as long as it is there for everybody;
// else those that want most are levelled to what is left. Counted is every picture from the moment it is made
// until its memory is given back, whoever holds it. Any thread.
class frame_budget {
  private:
    struct holder;

  public:
    static constexpr std::size_t usual_bytes = 256'000'000;

    // One keeper of pictures. What it holds no longer counts once its pictures are gone. ask() and limit()
    // are called by one thread at a time.
    class share {
      public:
        // `on_change` is called on any thread when limit() has become less than is held, or more than it was
        // where that was not all that is wanted. It may post work, and must not call the share or let go of
        // pictures.
        share(std::shared_ptr<frame_budget> budget, std::function<void()> on_change);
        ~share();
        share(const share&) = delete;
        share& operator=(const share&) = delete;

        // `least` bytes are granted whatever others hold, so that nobody ever waits; `wanted` is all that
        // serves, `least` or more. Until the first call as much is kept for this as for anybody.
        void ask(std::size_t least, std::size_t wanted);
        // How many bytes pictures() may take at present. Never less than the least.
        std::size_t limit();
        // Where the pictures of this share are made.
        const std::shared_ptr<picture_pool>& pictures() const { return pictures_; }
        // Nothing is called any more: to be used before what `on_change` works on goes away.
        void disconnect();

      private:
        const std::shared_ptr<frame_budget> budget_;
        const std::shared_ptr<holder> holder_;
        const std::shared_ptr<picture_pool> pictures_;
    };

    explicit frame_budget(std::size_t bytes = usual_bytes) : bytes_(bytes) {}

    // The one that all events of a program share.
    static const std::shared_ptr<frame_budget>& of_program();

    // What pictures take at present.
    std::size_t held() const;

  private:
    using wake_list = std::vector<std::shared_ptr<holder>>;

    void level();
    std::size_t limit_of(const holder& asking) const;
    wake_list better_off();
    wake_list share_out();
    static void wake(const wake_list& holders);
    void count(const std::shared_ptr<holder>& by, std::ptrdiff_t bytes);

    const std::size_t bytes_;
    mutable std::mutex mutex_;
    std::vector<std::shared_ptr<holder>> holders_;  // guarded by mutex_, as is what they hold
    std::size_t held_ = 0;                          // guarded by mutex_
};

}  // namespace vistels
