// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>
#include <string>

#include "util/result.h"

namespace vistels {

// The right to change what folders a vault holds (to replace it, to bring movies into it, to move something
// to the trash), held by one change at a time, in this program or another. The kernel keeps it on a hidden
// file in the vault, so it ends with the process, however that dies. A change may be made of several that
// take the lock each, on one thread. Any thread; it is given back on the thread that took it.
class vault_lock {
  public:
    // "Vault 'Cup' is currently being modified." while another change holds it. On a volume that knows no
    // locks it is given to everybody.
    static result<std::unique_ptr<vault_lock>> take(const std::string& vault);
    // That of the vault in which `path` lies, or is to be made. Where no vault is there is nothing to lock,
    // and that is given.
    static result<std::unique_ptr<vault_lock>> take_around(const std::string& path);
    // Gives it back and removes its file, wherever the vault is by then.
    ~vault_lock();
    vault_lock(const vault_lock&) = delete;
    vault_lock& operator=(const vault_lock&) = delete;

  private:
    vault_lock() = default;

    int folder_ = -1;  // none: there is nothing to hold
    int file_ = -1;    // none: the folder itself is locked
};

// What changes below `path` have in common that take the same lock: the path of the vault, or of `path`
// itself where no vault is. Reads no disk.
std::string vault_lock_key(const std::string& path);

// "Vault 'Cup' is currently being modified."
failure modified_now(const std::string& vault);

}  // namespace vistels
