// SPDX-License-Identifier: GPL-3.0-or-later
#include "video/vault_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "util/file_failures.h"
#include "util/file_system.h"
#include "video/collection_failures.h"
#include "video/video_coll_LOAD.h"

namespace vistels {

namespace {

constexpr const char* lock_name = ".vault change.lock";

// The file may have been removed by its last holder between opening and locking it.
bool is_still_there(int folder, int file) {
    struct stat opened {};
    struct stat named {};
    return ::fstat(file, &opened) == 0 && ::fstatat(folder, lock_name, &named, AT_SYMLINK_NOFOLLOW) == 0 &&
           opened.st_ino == named.st_ino && opened.st_dev == named.st_dev;
}

int lock_now(int descriptor) {
    while (::flock(descriptor, LOCK_EX | LOCK_NB) != 0) {
        if (errno != EINTR) return errno;
    }
    return 0;
}

bool knows_no_locks(int fault) {
    return fault == ENOLCK || fault == ENOSYS || fault == ENOTSUP || fault == EOPNOTSUPP || fault == EINVAL;
}

// 0 or the error number; `file` stays negative where the folder itself is locked.
int lock_file(int folder, int& file) {
    constexpr mode_t readable_by_all = 0644;
    for (;;) {
        file = ::openat(folder, lock_name, O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, readable_by_all);
        // Only what is in the vault may be changed here, not the vault's own folder.
        if (file < 0) return errno == EACCES || errno == EPERM || errno == EROFS ? lock_now(folder) : errno;
        const int fault = lock_now(file);
        if (fault == 0 && is_still_there(folder, file)) return 0;
        if (fault != 0) return fault;
        ::close(std::exchange(file, -1));
    }
}

}  // namespace

failure modified_now(const std::string& vault) {
    std::string name = path_name(vault);
    if (const auto end = name.rfind(".VVault"); end != name.npos) name.resize(end);
    return vault_is_being_modified(name);
}

std::string vault_lock_key(const std::string& path) {
    const std::string vault = vault_of(path);
    return vault.empty() ? path : vault;
}

result<std::unique_ptr<vault_lock>> vault_lock::take(const std::string& vault) {
    std::unique_ptr<vault_lock> lock(new vault_lock);
    const int folder = ::open(vault.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folder < 0) return vault_cannot_be_changed(vault, system_failure(errno));
    int fault = lock_file(folder, lock->file_);
    if (fault != 0 && lock->file_ >= 0) ::close(std::exchange(lock->file_, -1));
    if (knows_no_locks(fault)) fault = 0;
    if (fault != 0) {
        ::close(folder);
        if (fault == EWOULDBLOCK) return modified_now(vault);
        return vault_cannot_be_changed(vault, system_failure(fault));
    }
    lock->folder_ = folder;
    return lock;
}

result<std::unique_ptr<vault_lock>> vault_lock::take_around(const std::string& path) {
    const std::string vault = path.empty() ? std::string() : vault_of(path);
    // Nobody changes one that is still to be made.
    if (vault.empty() || !is_folder(vault)) return std::unique_ptr<vault_lock>(new vault_lock);
    return take(vault);
}

vault_lock::~vault_lock() {
    if (folder_ < 0) return;
    if (file_ >= 0) {
        ::unlinkat(folder_, lock_name, 0);
        ::close(file_);
    }
    ::close(folder_);
}

}  // namespace vistels
