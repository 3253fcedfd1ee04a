// SPDX-License-Identifier: GPL-3.0-or-later
#include "util/uuid.h"

#include <unistd.h>
#include <uuid/uuid.h>

#include <array>
#include <cstring>

namespace vistels {

namespace {

// Random bytes of one thread, for some UUIDs at a time: the system is asked once for all of them, which is
// many times faster than once for each.
class random_store {
  public:
    bool take(uuid_t& bytes) {
        // What was forked off does not go on with the same ones.
        if (used_ == bytes_.size() || process_ != ::getpid()) {
            if (::getentropy(bytes_.data(), bytes_.size()) != 0) return false;
            used_ = 0;
            process_ = ::getpid();
        }
        std::memcpy(bytes, bytes_.data() + used_, sizeof(uuid_t));
        used_ += sizeof(uuid_t);
        return true;
    }

  private:
    std::array<unsigned char, 256> bytes_{};  // as many as one call gives
    std::size_t used_ = bytes_.size();
    ::pid_t process_ = 0;
};

}  // namespace

std::string new_uuid() {
    thread_local random_store store;
    uuid_t bytes;
    if (store.take(bytes)) {
        // Version 4, random, of the usual variant: RFC 9562, 4.1 and 5.4.
        bytes[6] = static_cast<unsigned char>((bytes[6] & 0x0FU) | 0x40U);
        bytes[8] = static_cast<unsigned char>((bytes[8] & 0x3FU) | 0x80U);
    } else {
        uuid_generate_random(bytes);
    }
    char text[UUID_STR_LEN];
    uuid_unparse_upper(bytes, text);
    return text;
}

}  // namespace vistels
