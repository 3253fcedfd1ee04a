// SPDX-License-Identifier: GPL-3.0-or-later
#include <cstdint>
#include <cstdlib>
#include <set>
#include <string>
#include <string_view>

#include "logger/logger_Dict_funcs.h"
#include "util/json.h"

// Whatever a document holds, its buttons are written as they were read, what is none between them, each has a
// UUID of its own, and from its fields alone it is written so that it reads the same.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace vistels;
    const auto read = read_json(std::string_view(reinterpret_cast<const char*>(data), size), "fuzz");
    const auto* document = read ? read.value().dictionary() : nullptr;
    if (!document) return 0;
    const auto all = read_button_dict(*document);
    const auto written = write_button_dict(all);
    if (write_button_dict(read_button_dict(written)) != written) std::abort();
    const auto* elements = document->array("array objects");
    if (elements && *written.array("array objects") != *elements) std::abort();
    std::set<std::string> uuids;
    for (const auto& button : all.buttons) {
        if (button->uuid().empty() || !uuids.insert(button->uuid()).second) std::abort();
        markup_Button_Item bare = *button;
        for (const auto& entry : button->stored()) bare.set_stored(entry.key, {});
        const auto once = write_button(bare);
        if (write_button(read_button(once)) != once) std::abort();
    }
    return 0;
}
