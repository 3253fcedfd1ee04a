// SPDX-License-Identifier: GPL-3.0-or-later
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "timeline/sxy_Save_Load.h"
#include "timeline/timeline_edit.h"
#include "util/json.h"

// A recorded edit of any content is refused or applied; a refused one changes nothing.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace vistels;
    const auto document = read_json(std::string_view(reinterpret_cast<const char*>(data), size), "fuzz");
    if (!document || !document.value().dictionary()) return 0;
    const auto edit = read_edit(*document.value().dictionary());
    if (!edit) return 0;
    sxy_DATA_root timeline;
    change_set touched;
    sxy_ROW row;
    row.set_uuid(shared_text("R"));
    sxy_CLIP clip;
    clip.set_id("1");
    (void)apply_edit(
        timeline, {"", "", {operation::insert_row{0, row}, operation::insert_clip{shared_text("R"), clip}}},
        touched);
    const auto before = write_timeline(timeline.snapshot());
    const auto applied = apply_edit(timeline, edit.value(), touched);
    if (!applied && !(write_timeline(timeline.snapshot()) == before)) std::abort();
    return 0;
}
