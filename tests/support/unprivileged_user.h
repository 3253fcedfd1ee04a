// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <sys/types.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

namespace vistels::testing {

// While it lives this program may do no more than a user may, also where tests run as root, to whom nothing
// is forbidden. `folder` and what is in it belongs to that user.
class unprivileged_user {
  public:
    explicit unprivileged_user(const std::string& folder) {
        if (::geteuid() != 0) return;
        constexpr uid_t nobody = 65534;
        if (std::system(("chown -R 65534 '" + folder + "'").c_str()) != 0) std::abort();
        if (::seteuid(nobody) != 0) std::abort();
        was_root_ = true;
    }
    ~unprivileged_user() {
        if (was_root_ && ::seteuid(0) != 0) std::abort();
    }
    unprivileged_user(const unprivileged_user&) = delete;
    unprivileged_user& operator=(const unprivileged_user&) = delete;

  private:
    bool was_root_ = false;
};

}  // namespace vistels::testing
