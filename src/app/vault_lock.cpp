// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/vault_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "app/known_vaults.h"
#include "app/vault_messages.h"
#include "util/file_system.h"

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

// 0 or the error number.
int lock_file(int folder, int& file) {
    constexpr mode_t readable_by_all = 0644;
    for (;;) {
        file = ::openat(folder, lock_name, O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, readable_by_all);
        if (file < 0) return errno;
        if (::flock(file, LOCK_EX | LOCK_NB) == 0) {
            if (is_still_there(folder, file)) return 0;
        } else if (errno != EINTR) {
            const int fault = errno;
            ::close(file);
            return fault;
        }
        ::close(file);
    }
}

}  // namespace

std::string about_vault(std::string_view message, const std::string& vault) {
    constexpr std::string_view placeholder = "<$vault_name$>";
    std::string text(message);
    if (const auto at = text.find(placeholder); at != text.npos) {
        text.replace(at, placeholder.size(), vault_name(vault));
    }
    return text;
}

result<std::unique_ptr<vault_lock>> vault_lock::take(const std::string& vault) {
    const int folder = ::open(vault.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folder < 0) return file_failure(vault, "cannot be changed", errno);
    int file = -1;
    const int fault = lock_file(folder, file);
    if (fault == 0) return std::unique_ptr<vault_lock>(new vault_lock(folder, file));
    ::close(folder);
    if (fault == EWOULDBLOCK) return failure{about_vault(vault_is_being_modified_message, vault)};
    return file_failure(vault, "cannot be changed", fault);
}

vault_lock::~vault_lock() {
    ::unlinkat(folder_, lock_name, 0);
    ::close(file_);
    ::close(folder_);
}

}  // namespace vistels
