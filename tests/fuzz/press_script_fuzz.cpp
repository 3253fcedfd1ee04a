// SPDX-License-Identifier: GPL-3.0-or-later
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>

#include "../support/failing_files.h"
#include "../support/temporary_folder.h"
#include "logger/logger_Dict_funcs.h"
#include "logger/press_script.h"
#include "util/json.h"

namespace {

using namespace vistels;

void expect(bool holds) {
    if (!holds) std::abort();
}

void check(const sxy_DATA_root& timeline) {
    expect(timeline.live_clips().empty());
    for (const auto& row : timeline.rows()) {
        for (const auto& clip : row->clips()) {
            expect(std::isfinite(clip->secs_start()) && std::isfinite(clip->secs_end()));
            expect(clip->secs_start() <= clip->secs_end());
        }
    }
}

}  // namespace

// {"array objects": [buttons], "events": [steps]}: whatever the buttons say, every press goes on record, each
// clip that one made is there or was merged into one that is, and none of them is cut below what was held.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto read = read_json(std::string_view(reinterpret_cast<const char*>(data), size), "fuzz");
    const auto* document = read ? read.value().dictionary() : nullptr;
    if (!document) return 0;
    const auto buttons = read_button_dict(*document).buttons;
    const auto steps = read_press_script(read.value(), buttons, "fuzz");
    if (!steps) return 0;

    const testing::temporary_folder folder;
    testing::unsynced_files files;
    simulated_run_loop standing;  // so that nothing is saved between
    simulated_run_loop loop;
    auto opened = timeline_document::open(folder.path(), standing, files);
    expect(static_cast<bool>(opened));
    auto& timeline = *opened.value();
    press_engine engine(timeline, loop.time());
    engine.set_buttons(buttons, 0);
    std::size_t made = 0;
    const auto telling = engine.fired.connect([&](const button_fired& one) {
        expect(one.recorded);
        if (one.made == made_kind::clip) {
            ++made;
            const auto place = timeline.timeline().find_clip(one.clip);
            expect(place && !place->is_live);
        }
    });
    const double end = run_press_script(engine, steps.value(), loop);
    engine.release_all(end);
    expect(engine.unrecorded() == 0 && engine.down_buttons().empty());
    check(timeline.timeline());
    expect(timeline.timeline().clip_count() <= made);
    expect(made == 0 || timeline.timeline().clip_count() > 0);
    return 0;
}
