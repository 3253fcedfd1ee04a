// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include "logger/coding.h"
#include "support/failure_runs.h"
#include "util/plain_run_loop.h"

namespace vistels {
namespace {

using testing::button_of;
using testing::clips_text;
using testing::temporary_folder;

constexpr int presses = 200;

// Press n is a clip from n to n + 0.5 with one qualifier, which stays stamped on it alone. What is done is
// told by a byte each: press, stamp, release.
[[noreturn]] void code_until_killed(const std::string& folder, int acknowledge) {
    plain_run_loop loop;
    testing::unsynced_files files;
    auto opened = timeline_document::open(folder, loop, files);
    if (!opened) ::_exit(1);
    auto& document = *opened.value();
    press_engine engine(document, loop.time());
    engine.set_buttons({button_of("A", button_type::clip), button_of("Q", button_type::qualifier)}, 0);
    const auto told = engine.fired.connect([&](const button_fired& one) {
        if (!one.recorded) ::_exit(2);
        if (one.name == "Q" && !one.is_down) return;
        if (::write(acknowledge, "x", 1) != 1) ::_exit(3);
    });
    for (int n = 0; n < presses; ++n) {
        engine.press("id A", n);
        engine.press("id Q", n + 0.25);
        engine.release("id Q", n + 0.25);
        engine.release("id A", n + 0.5);
        if (n % 20 == 7) document.save_soon();
        if (n % 20 == 17 && !document.save_now()) ::_exit(4);
    }
    for (;;) ::pause();
}

// What the acknowledged steps, and `more` after them, must have left.
std::string expected_clips(std::size_t steps) {
    std::string text = steps > 0 ? "A" : "";
    for (std::size_t n = 0; n * 3 < steps; ++n) {
        const std::size_t done = std::min<std::size_t>(steps - n * 3, 3);
        const auto start = std::to_string(n);
        text += " " + start + "-" + start + (done == 3 ? ".5" : "");
        if (done >= 2) text += "(Q)";
    }
    return text;
}

struct killed_run {
    std::size_t acknowledged = 0;
    std::string clips;
};

killed_run run_and_kill(std::size_t after_steps, std::size_t system_calls) {
    const temporary_folder folder;
    int ends[2];
    EXPECT_EQ(::pipe(ends), 0);
    const pid_t child = ::fork();
    if (child == 0) {
        ::close(ends[0]);
        code_until_killed(folder / "t", ends[1]);
    }
    ::close(ends[1]);
    killed_run run;
    char byte = 0;
    while (run.acknowledged < after_steps && ::read(ends[0], &byte, 1) == 1) ++run.acknowledged;
    // Somewhere within what comes after that step.
    for (std::size_t n = 0; n < system_calls; ++n) (void)::getppid();
    ::kill(child, SIGKILL);
    int status = 0;
    ::waitpid(child, &status, 0);
    EXPECT_TRUE(WIFSIGNALED(status)) << "ended by itself with " << WEXITSTATUS(status);
    while (::read(ends[0], &byte, 1) == 1) ++run.acknowledged;
    ::close(ends[0]);
    plain_run_loop loop;
    testing::unsynced_files files;
    auto opened = timeline_document::open(folder / "t", loop, files);
    EXPECT_TRUE(opened) << opened.message();
    if (opened) run.clips = clips_text(opened.value()->timeline());
    return run;
}

TEST(failures, killed_while_coding_keeps_every_acknowledged_press_and_the_one_held_makes_its_clip) {
    testing::failure_run run("killed while coding", 50, 2'000);
    while (run.next()) {
        const std::size_t after = run.below(presses * 3 + 1);
        const auto killed = run_and_kill(after, run.below(5000));
        ASSERT_GE(killed.acknowledged, after);
        // The step under way may be on record without having been acknowledged.
        const bool is_whole = killed.clips == expected_clips(killed.acknowledged) ||
                              killed.clips == expected_clips(killed.acknowledged + 1);
        ASSERT_TRUE(is_whole) << "killed after " << killed.acknowledged << " steps, found:\n" << killed.clips;
    }
}

}  // namespace
}  // namespace vistels
