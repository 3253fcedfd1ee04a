// SPDX-License-Identifier: GPL-3.0-or-later
#include <algorithm>

#include "logger/coding.h"
#include "support/failure_runs.h"

namespace vistels {
namespace {

using testing::button_of;
using testing::coding;
using testing::failure_run;

// Many buttons down at once, of every kind that makes something: clips that overlap, are merged and are cut,
// ends by themselves, by hand and by the tab key, and qualifiers between.
constexpr const char* busy_script =
    "1+A 1.16+B 1.32+C 1.48+D 1.64+Q 1.8+M 1.96+R 2.12-A 2.28+E 2.44-M 2.6+Q 2.76-B 2.92+M 3.08+R 3.24-C "
    "3.4+A 3.56-M 3.72+F 3.88-A 4.04tab 4.2+C 4.36+M 4.52-C 4.68-M 4.84+Q";
constexpr const char* afterwards = "6 7.5 9";  // time for what waits to be tried again

struct busy : coding {
    busy() {
        auto merging = button_of("M", button_type::clip);
        merging.set_merge_clips(true);
        merging.set_secs_in(0.5);
        auto overlapping = button_of("C", button_type::clip);
        overlapping.set_allow_overlapping_clips(true);
        auto by_itself = button_of("E", button_type::clip);
        by_itself.set_auto_up(true);
        by_itself.set_auto_up_duration(1);
        for (auto& one : {merging, overlapping, by_itself, button_of("D", button_type::clip),
                          button_of("F", button_type::clip)})
            buttons.push_back(one);
    }
};

struct coded {
    std::string clips;
    int calls = 0;
};

coded without_a_fault() {
    busy code;
    const int before = code.files.calls();
    code.run(busy_script);
    const int calls = code.files.calls() - before;
    code.run(afterwards);
    EXPECT_EQ(code.engine->unrecorded(), 0U);
    return {code.clips(), calls};
}

// The volume is full from one call on, for so many calls, and then has room again.
void fill_and_empty(int first, int count, const std::string& expected) {
    busy code;
    failure trouble;
    const auto telling = code.engine->trouble.connect([&](const failure& why) { trouble = why; });
    const auto again = code.engine->made_again.connect(
        [&](const std::string& button) { FAIL() << "the clip of " << button << " got lost"; });
    const int begin = code.files.calls() + first;
    code.files.set_fault([=](int call) { return call >= begin && call < begin + count ? ENOSPC : 0; });
    code.run(busy_script);
    code.files.set_fault({});
    code.run(afterwards);
    ASSERT_EQ(code.clips(), expected);
    ASSERT_EQ(code.engine->unrecorded(), 0U);
    ASSERT_FALSE(trouble) << "it is told that all is on record again";
    // On record means found by whoever opens the folder.
    ASSERT_TRUE(code.document->save_now());  // so that no save changes the folder while it is copied
    ASSERT_EQ(testing::rows_found_in(code.folder.path()), testing::rows_text(code.document->timeline()));
}

TEST(failures, a_volume_that_fills_and_empties_at_any_call_while_many_buttons_are_down_loses_no_press) {
    const auto whole = without_a_fault();
    ASSERT_GT(whole.calls, 40);
    constexpr int counts[] = {1, 2, 3, 5, 8, 20, 100000};
    constexpr std::size_t kinds = std::size(counts);
    failure_run run("the volume fills and empties while many buttons are down", 500);
    for (const std::size_t number : run.order(static_cast<std::size_t>(whole.calls) * kinds)) {
        if (!run.next()) return;
        const int first = 1 + static_cast<int>(number / kinds);
        const int count = counts[number % kinds];
        SCOPED_TRACE("full from call " + std::to_string(first) + " for " + std::to_string(count) + " calls");
        fill_and_empty(first, count, whole.clips);
        if (::testing::Test::HasFatalFailure()) return;
    }
}

}  // namespace
}  // namespace vistels
