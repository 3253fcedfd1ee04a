// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/vaults/files_Root_watcher_ROOT.h"

#include <algorithm>
#include <utility>

#include "app/vaults/vault_scan.h"

namespace vistels {

namespace {

bool is_marker(std::string_view name) {
    return std::any_of(item_kinds().begin(), item_kinds().end(),
                       [name](const item_kind_names& kind) { return name == kind.marker_file; });
}

}  // namespace

files_Root_watcher_ROOT::files_Root_watcher_ROOT(run_loop& loop, double look_seconds, observers observe,
                                                 std::size_t most_folders)
    : loop_(loop),
      observe_(std::move(observe)),
      timer_watcher_(loop.start_timer(look_seconds, true, [this] { tick(); })),
      notifications_(loop,
                     {is_marker, [this](const auto& vaults) { note_changes(vaults); },
                      [this] { observe_.look_at_all(); }},
                     most_folders) {}

files_Root_watcher_ROOT::~files_Root_watcher_ROOT() {
    loop_.stop_timer(timer_watcher_);
    if (settling_) loop_.stop_timer(*settling_);
}

folder_notifications::outcome files_Root_watcher_ROOT::watch(const std::string& vault,
                                                             const std::vector<std::string>& folders) {
    return notifications_.watch(vault, folders);
}

void files_Root_watcher_ROOT::note_changes(const std::set<std::string>& vaults) {
    changed_.insert(vaults.begin(), vaults.end());
    if (settling_) return;
    settling_ = loop_.start_timer(settle_seconds, false, [this] {
        settling_.reset();
        observe_.look(std::exchange(changed_, {}));
    });
}

void files_Root_watcher_ROOT::tick() {
    if (!untold_.empty()) observe_.look(untold_);
    if (++ticks_ % looks_between_spaces == 0) observe_.look_at_spaces();
}

}  // namespace vistels
