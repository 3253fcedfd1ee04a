// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "util/folder_notifications.h"
#include "util/run_loop.h"

namespace vistels {

// Says when vaults are to be looked at again: soon after the file system told of a change in one, and on a
// timer those of which it cannot tell. Main thread, but for watch().
class files_Root_watcher_ROOT {
  public:
    struct observers {
        std::function<void(const std::set<std::string>& vaults)> look;  // something may have changed in these
        std::function<void()> look_at_all;                              // a volume was mounted or unmounted
        std::function<void()> look_at_spaces;                           // free space, now and then
    };

    // `loop` must outlive it. The timer runs every `look_seconds`.
    files_Root_watcher_ROOT(run_loop& loop, double look_seconds, observers observe,
                            std::size_t most_folders = folder_notifications::no_limit);
    ~files_Root_watcher_ROOT();
    files_Root_watcher_ROOT(const files_Root_watcher_ROOT&) = delete;
    files_Root_watcher_ROOT& operator=(const files_Root_watcher_ROOT&) = delete;

    // Watches the folders of a vault; what happened in them before may have gone untold when `has_new` is
    // answered. No folders: the vault is away, or its volume tells nothing. Any thread.
    folder_notifications::outcome watch(const std::string& vault, const std::vector<std::string>& folders);

    // The vaults that are looked at on the timer from now on.
    void set_untold_vaults(std::set<std::string> vaults) { untold_ = std::move(vaults); }
    const std::set<std::string>& untold_vaults() const { return untold_; }

  private:
    void note_changes(const std::set<std::string>& vaults);
    void tick();

    // A burst of changes, such as a vault that is being copied, is one look each quarter of a second.
    static constexpr double settle_seconds = 0.25;
    static constexpr int looks_between_spaces = 6;

    run_loop& loop_;
    const observers observe_;
    std::set<std::string> untold_;
    std::set<std::string> changed_;
    std::optional<run_loop::timer_id> settling_;
    run_loop::timer_id timer_watcher_;
    int ticks_ = 0;
    folder_notifications notifications_;
};

}  // namespace vistels
