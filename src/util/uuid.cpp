// SPDX-License-Identifier: GPL-3.0-or-later
#include "util/uuid.h"

#include <uuid/uuid.h>

namespace vistels {

std::string new_uuid() {
    uuid_t bytes;
    uuid_generate_random(bytes);
    char text[UUID_STR_LEN];
    uuid_unparse_upper(bytes, text);
    return text;
}

}  // namespace vistels
