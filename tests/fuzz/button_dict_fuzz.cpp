// SPDX-License-Identifier: GPL-3.0-or-later
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "logger/logger_Dict_funcs.h"
#include "util/json.h"

// Whatever a document holds, its buttons are written as they were read, and each has a UUID of its own.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace vistels;
    const auto read = read_json(std::string_view(reinterpret_cast<const char*>(data), size), "fuzz");
    const auto* document = read ? read.value().dictionary() : nullptr;
    if (!document) return 0;
    const auto all = read_button_dict(*document);
    const auto written = write_button_dict(all);
    if (write_button_dict(read_button_dict(written)) != written) std::abort();
    std::size_t at = 0;
    for (const auto& value : *written.array("array objects")) {
        const auto& button = all.buttons[at++];
        if (*value.dictionary() != button.stored() || button.uuid().empty()) std::abort();
    }
    return at == all.buttons.size() ? 0 : (std::abort(), 1);
}
