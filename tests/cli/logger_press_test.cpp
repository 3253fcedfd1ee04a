// SPDX-License-Identifier: GPL-3.0-or-later
// Presses by script in the folder of a collection that a window had open.
#include <gtest/gtest.h>

#include <filesystem>

#include "cli/command_line.h"
#include "cli/logger_commands.h"
#include "logger/code_window.h"
#include "support/opened_event.h"
#include "support/stored_event.h"
#include "support/temporary_folder.h"
#include "util/simulated_run_loop.h"

namespace vistels {
namespace {

namespace fs = std::filesystem;
using testing::clip_button;
using testing::put_file;

class logger_press : public ::testing::Test {
  protected:
    logger_press() { testing::put_stored_event(vault, folder, 0); }

    std::unique_ptr<open_event> open() {
        auto opened = open_event::open(folder, find_home_places(home.path()), loop);
        EXPECT_TRUE(opened) << opened.message();
        return opened ? std::move(opened).value() : nullptr;
    }
    void press(const std::string& events) {
        put_file(home / "script.json", "{\"events\": [" + events + "]}");
        CLI::App program;
        command_line line({});
        line.home() = home.path();
        register_logger_commands(program, line);
        program.parse(std::vector<std::string>{home / "script.json", folder, folder, "press", "logger"});
        const auto done = line.chosen()();
        EXPECT_TRUE(done) << done.message();
    }

    const testing::temporary_folder home;
    const std::string vault = home / "Cup.VVault";
    const std::string folder = vault + "/Video Groups/Final";
    simulated_run_loop loop;
};

TEST_F(logger_press, keeps_the_trigger_that_a_kill_left_in_the_journal) {
    std::string target;
    {
        const auto opened = open();
        target = clip_button(*opened).uuid();
        code_window window = opened->code_window_file().window();
        markup_Button_Item whistle;
        whistle.set_uuid("T");
        whistle.set_name("Whistle");
        whistle.set_type(button_type::trigger);
        whistle.set_action_link_to(target);
        window.buttons.buttons.emplace_back(std::move(whistle));
        ASSERT_TRUE(save_button_dict(window.buttons, logger_folder_of(folder)));
    }
    {
        const auto opened = open();
        EXPECT_TRUE(opened->logger().press("T", 6.25));
        EXPECT_TRUE(opened->logger().release("T", 6.25));
        fs::copy(vault, home / "killed", fs::copy_options::recursive);
    }
    fs::remove_all(vault);
    fs::rename(home / "killed", vault);
    press(R"({"at": 9, "button": "Whistle", "do": "down"}, {"at": 10, "do": "end"})");
    const auto opened = open();
    const auto triggers = opened->logger().button(target)->triggers();
    ASSERT_EQ(triggers.size(), 2U);
    EXPECT_EQ(triggers[0].trigger_Time, 6.25);
    EXPECT_EQ(triggers[1].trigger_Time, 9);
}

TEST_F(logger_press, reaches_back_to_the_start_of_the_earliest_camera) {
    std::string button;
    {
        const auto opened = open();
        ASSERT_TRUE(opened->set_offset("A", 8));
        EXPECT_EQ(opened->start_seconds(), -8);
        auto changed = clip_button(*opened);
        button = changed.uuid();
        changed.set_secs_in(3);
        code_window window = opened->code_window_file().window();
        auto& buttons = window.buttons.buttons;
        *std::find_if(buttons.begin(), buttons.end(),
                      [&](const auto& one) { return one->uuid() == button; }) = changed;
        ASSERT_TRUE(save_button_dict(window.buttons, logger_folder_of(folder)));
    }
    press(R"({"at": -7, "button": ")" + button + R"(", "do": "down"}, {"at": -2, "button": ")" + button +
          R"(", "do": "up"}, {"at": -1, "button": ")" + button +
          R"(", "do": "down"}, {"at": 1, "do": "end"})");
    const auto opened = open();
    const auto clips = opened->timeline().timeline().rows()[0]->clips();
    ASSERT_EQ(clips.size(), 2U);
    EXPECT_EQ(clips[0]->secs_start(), -8);
    EXPECT_EQ(clips[1]->secs_start(), -4);
}

}  // namespace
}  // namespace vistels
