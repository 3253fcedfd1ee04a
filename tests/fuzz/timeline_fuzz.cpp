// SPDX-License-Identifier: GPL-3.0-or-later
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "timeline/sxy_Save_Load.h"
#include "util/json.h"

// Whatever a document holds, what is written of it reads back and is then written the same.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace vistels;
    const auto document = read_json(std::string_view(reinterpret_cast<const char*>(data), size), "fuzz");
    if (!document || !document.value().dictionary()) return 0;
    const auto loaded = read_timeline(*document.value().dictionary());
    const auto written = write_json(write_timeline(loaded.content));
    const auto again = read_json(written, "written");
    if (!again) std::abort();
    if (write_json(write_timeline(read_timeline(*again.value().dictionary()).content)) != written)
        std::abort();
    const sxy_DATA_root opened(loaded.content);
    for (const auto& row : opened.rows()) {
        for (const auto& clip : row->clips()) {
            if (clip->secs_end() < clip->secs_start() || !opened.find_clip(clip->id())) std::abort();
        }
    }
    return 0;
}
