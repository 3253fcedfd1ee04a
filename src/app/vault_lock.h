// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>
#include <string>

#include "util/result.h"

namespace vistels {

// The right to change a vault as a whole (to replace it, to write an archive into it), held by one change at
// a time, in this program or another. The kernel keeps it on a hidden file in the vault, so it ends with the
// process, however that dies. Any thread.
class vault_lock {
  public:
    // "Vault 'Cup' is currently being modified." while another change holds it.
    static result<std::unique_ptr<vault_lock>> take(const std::string& vault);
    // Gives it back and removes its file, wherever the vault is by then.
    ~vault_lock();
    vault_lock(const vault_lock&) = delete;
    vault_lock& operator=(const vault_lock&) = delete;

  private:
    vault_lock(int folder, int file) : folder_(folder), file_(file) {}

    int folder_;
    int file_;
};

}  // namespace vistels
