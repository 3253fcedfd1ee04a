// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <atomic>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "app/settings/places.h"
#include "app/vaults/content_list.h"
#include "app/vaults/files_MASTER_LIST.h"
#include "util/file_system.h"
#include "util/posted_work_guard.h"
#include "util/run_loop.h"
#include "util/serial_queue.h"
#include "util/signal.h"

namespace vistels {

// What the side bars of all windows show, kept up to date: the application's list of vaults and items, with
// the numbers of clips, which are counted away from the main thread and come in several steps where there is
// much to count. One for the whole application. Main thread.
class content_keeper {
  public:
    // Nothing is looked at before refresh(). `loop` must outlive the keeper.
    content_keeper(home_places places, run_loop& loop,
                   files_MASTER_LIST::options how = files_MASTER_LIST::options());
    ~content_keeper();

    // Looks at every vault again, soon; several calls are one look.
    void refresh();

    // As found last; empty before the first look.
    const std::vector<content_vault>& vaults() const { return vaults_; }
    // vaults() is another.
    signal<> changed;
    // Something to tell the user about vaults.
    signal<const failure&>& told() { return list_.told; }

  private:
    struct counted {
        file_identity file;
        long long clips = -1;
    };
    using counts = std::vector<std::pair<std::string, long long>>;  // by folder

    void show();
    void count_in_background();
    void count(const std::vector<std::string>& folders, unsigned wanted);
    long long count_of(const std::string& folder);
    void take(const counts& news);

    run_loop& loop_;
    files_MASTER_LIST list_;
    connection list_changed_;
    std::vector<content_vault> vaults_;
    bool started_ = false;
    std::map<std::string, long long> clips_;  // by folder
    posted_work_guard guard_;
    std::atomic<unsigned> wanted_{0};         // a counting that is not the newest ends
    std::map<std::string, counted> counted_;  // on the queue only
    serial_queue queue_{"content"};
};

}  // namespace vistels
