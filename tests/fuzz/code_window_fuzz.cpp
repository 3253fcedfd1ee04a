// SPDX-License-Identifier: GPL-3.0-or-later
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <set>
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

// They are written as they were read, what is none between them, each has a UUID of its own, and from its
// fields alone it is written so that it reads the same.
void check(const button_dict& all, const property_dictionary& document) {
    const auto written = write_button_dict(all);
    expect(write_button_dict(read_button_dict(written)) == written);
    const auto* elements = document.array("array objects");
    expect(!elements || *written.array("array objects") == *elements);
    std::set<std::string> uuids;
    for (const auto& button : all.buttons) {
        expect(!button->uuid().empty() && uuids.insert(button->uuid()).second);
        markup_Button_Item bare = *button;
        for (const auto& entry : button->stored()) bare.set_stored(entry.key, {});
        const auto once = write_button(bare);
        expect(write_button(read_button(once)) == once);
    }
}

}  // namespace

// {"array objects": [buttons], "events": [steps]}: whatever the buttons say, every press goes on record, each
// clip that one made is there or was merged into one that is, and none of them is cut below what was held.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto read = read_json(std::string_view(reinterpret_cast<const char*>(data), size), "fuzz");
    const auto* document = read ? read.value().dictionary() : nullptr;
    if (!document) return 0;
    const auto all = read_button_dict(*document);
    check(all, *document);
    const auto& buttons = all.buttons;
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
