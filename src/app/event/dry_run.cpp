// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/event/dry_run.h"

#include <filesystem>
#include <system_error>

#include "timeline/files/sxy_Save_Load.h"
#include "timeline/files/timeline_document.h"
#include "util/file_system.h"
#include "util/simulated_run_loop.h"
#include "util/uuid.h"

namespace vistels {

namespace {

class folder_for_a_while {
  public:
    explicit folder_for_a_while(std::string path) : path_(std::move(path)) {}
    ~folder_for_a_while() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    folder_for_a_while(const folder_for_a_while&) = delete;
    folder_for_a_while& operator=(const folder_for_a_while&) = delete;
    const std::string& path() const { return path_; }

  private:
    const std::string path_;
};

std::vector<button_fired> press_all(const dry_run& wanted, timeline_document& document,
                                    simulated_run_loop& loop) {
    press_engine engine(document, loop.time());
    engine.set_settings(wanted.settings);
    engine.set_earliest_time(wanted.earliest_seconds);
    engine.set_buttons(wanted.buttons, 0);
    std::vector<button_fired> fired;
    const connection telling =
        engine.fired.connect([&fired](const button_fired& one) { fired.push_back(one); });
    engine.release_all(run_press_script(engine, wanted.steps, loop));
    return fired;
}

}  // namespace

dry_run_outcome run_dry(const dry_run& wanted, const std::string& folder) {
    const folder_for_a_while copy(path_join(folder, "dry run " + new_uuid()));
    if (auto made = make_folders(copy.path()); !made) return made.error();
    if (auto saved = save_timeline(wanted.timeline, copy.path()); !saved) return saved.error();
    // The timeline's own timers stand still: it is not saved again.
    simulated_run_loop standing;
    auto opened = timeline_document::open(copy.path(), standing);
    if (!opened) return opened.error();
    simulated_run_loop loop;
    return press_all(wanted, *opened.value(), loop);
}

}  // namespace vistels
