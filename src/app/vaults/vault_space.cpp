// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/vaults/vault_space.h"

#include <sys/statvfs.h>

#include <cerrno>
#include <utility>

#include "app/vaults/vault_failures.h"
#include "util/file_failures.h"
#include "util/file_system.h"

namespace vistels {

result<volume_space> space_of(const std::string& path) {
    struct statvfs volume {};
    if (::statvfs(path.c_str(), &volume) != 0) {
        return volume_cannot_be_asked(path, system_failure(errno));
    }
    const auto block = static_cast<double>(volume.f_frsize);
    return volume_space{static_cast<double>(volume.f_bavail) * block,
                        static_cast<double>(volume.f_blocks) * block};
}

file_item_Update_Vault_Free_Space_in_background_25::file_item_Update_Vault_Free_Space_in_background_25(
    run_loop& loop, observer found)
    : loop_(loop), found_(std::move(found)) {}

file_item_Update_Vault_Free_Space_in_background_25::~file_item_Update_Vault_Free_Space_in_background_25() {
    queue_.forget_waiting();
}

void file_item_Update_Vault_Free_Space_in_background_25::update(std::vector<std::string> vaults) {
    queue_.forget_waiting();
    queue_.post([this, vaults = std::move(vaults)] {
        std::vector<vault_space> all;
        for (const auto& vault : vaults) {
            if (const auto space = space_of(vault)) all.push_back({vault, space.value()});
        }
        loop_.post(guard_.guarded([this, all = std::move(all)] { found_(all); }));
    });
}

}  // namespace vistels
