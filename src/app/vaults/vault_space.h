// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "util/posted_work_guard.h"
#include "util/result.h"
#include "util/run_loop.h"
#include "util/serial_queue.h"

namespace vistels {

// Free space of the volume that holds a path.
struct volume_space {
    double free_bytes = 0;  // that the user may use
    double total_bytes = 0;
    double free_percent() const { return total_bytes > 0 ? free_bytes / total_bytes * 100 : 0; }
    // Less free than this percentage. A volume that tells of no space at all has no limit.
    bool is_limited(int minimum_percent) const { return total_bytes > 0 && free_percent() < minimum_percent; }
    bool operator==(const volume_space&) const = default;
};
result<volume_space> space_of(const std::string& path);

// Asks for the free space of vaults away from the main thread: a volume that answers late keeps nobody
// waiting. Made, asked and destroyed on the main thread, where `found` is called too.
class file_item_Update_Vault_Free_Space_in_background_25 {
  public:
    struct vault_space {
        std::string vault;
        volume_space space;
    };
    using observer = std::function<void(const std::vector<vault_space>&)>;

    file_item_Update_Vault_Free_Space_in_background_25(run_loop& loop, observer found);
    ~file_item_Update_Vault_Free_Space_in_background_25();

    // Asks for these vaults; those that cannot be asked are left out of what is found. A question that has
    // not begun yet is replaced.
    void update(std::vector<std::string> vaults);

  private:
    run_loop& loop_;
    const observer found_;
    posted_work_guard guard_;
    serial_queue queue_{"free space"};
};

}  // namespace vistels
