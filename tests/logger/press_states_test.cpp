// SPDX-License-Identifier: GPL-3.0-or-later
//
// How buttons go down and up: by hands, by themselves, and with the playhead.
#include <functional>

#include "logger/coding.h"

namespace vistels {
namespace {

using testing::coding;

using setting = std::function<void(coding&)>;

setting of(char name, std::function<void(markup_Button_Item&)> set) {
    return [=](coding& code) { set(code.button(name)); };
}
setting auto_up(char name, double seconds) {
    return of(name, [=](auto& button) {
        button.set_auto_up(true);
        button.set_auto_up_duration(seconds);
    });
}
setting widened(double in, double out) {
    return of('A', [=](auto& a) {
        a.set_secs_in(in);
        a.set_secs_out(out);
    });
}

struct state_case {
    const char* what;
    setting set;
    const char* script;
    const char* clips;
    const char* fired;
};

void expect_all(const std::vector<state_case>& cases) {
    for (const auto& one : cases) {
        coding code;
        if (one.set) one.set(code);
        code.run(one.script);
        EXPECT_EQ(code.clips(), one.clips) << one.what;
        EXPECT_EQ(code.fired, one.fired) << one.what;
    }
}

TEST(playhead, that_jumps_out_of_a_growing_clip_ends_it_there) {
    expect_all({
        {"forwards", nullptr, "5+A 8j20 21-A", "A 5-8", "A+5 A-8"},
        {"before its start", nullptr, "5+A 8j4.9 6-A", "A 5-8", "A+5 A-8"},
        {"with its lag", widened(0, 2), "5+A 8j20 21-A", "A 5-10", "A+5 A-8"},
        {"back within it", nullptr, "5+A 8j6 7-A", "A 5-7", "A+5 A-7"},
        {"and on from there", nullptr, "5+A 8j6 9-A", "A 5-9", "A+5 A-9"},
        {"back into its lead", widened(3, 1), "5+A 8j3 4-A", "A 2-5", "A+5 A-4"},
        {"then out of it", widened(3, 1), "5+A 8j3 4j1 2-A", "A 2-5", "A+5 A-4"},
        {"before its lead", widened(3, 1), "5+A 8j1.9 4-A", "A 2-9", "A+5 A-8"},
        {"a loop turns back into it", widened(3, 0), "5+A 8l4 5-A", "A 2-8", "A+5 A-8"},
        {"what is no clip stays down", nullptr, "5+N 6+Q 8j20 21-N 22-Q", "", "N+5 Q+6~ N-21 Q-22"},
        {"one that goes up by itself counts to its time", auto_up('A', 5), "5+A 7j20 21 30", "A 5-10",
         "A+5 A-10(auto up)"},
        {"a clip begun after it grows on", nullptr, "5+A 8j20 20+B 21-A 22-B", "A 5-8; B 20-22",
         "A+5 A-8 B+20 B-22"},
    });
}

TEST(playhead, decides_about_an_auto_up_only_while_it_runs_towards_it) {
    struct moment {
        double clock_seconds;
        double at;
        bool is_down;
    };
    const struct {
        const char* what;
        std::vector<moment> moments;
    } cases[] = {
        {"it stands", {{1.9, 10, true}, {2, 10, false}}},
        {"it plays slowly", {{2, 10.5, true}, {7.9, 11.9, true}, {8, 12, false}}},
        {"it plays slowly, then stands", {{2, 10.5, true}, {3.4, 10.5, true}, {3.5, 10.5, false}}},
        {"it plays fast", {{0.4, 11.9, true}, {0.5, 12, false}}},
        {"it plays backwards", {{1, 9, true}, {1.9, 8.1, true}, {2, 8, false}}},
        {"backwards, then forwards", {{1, 9, true}, {1.9, 9.9, true}, {2, 10, false}}},
    };
    for (const auto& one : cases) {
        coding code;
        auto_up('N', 2)(code);
        code.set_buttons();
        code.engine->press("id N", 10);
        for (const auto& now : one.moments) {
            code.loop.advance_to(now.clock_seconds);
            code.engine->tick(now.at);
            EXPECT_EQ(code.engine->is_down("id N"), now.is_down) << one.what << " at " << now.clock_seconds;
        }
        EXPECT_EQ(code.fired, "N+10 N-12(auto up)") << one.what;
    }
    // A jump moves the moment along: what was left is left.
    coding code;
    auto_up('N', 2)(code);
    code.run("10+N 11");
    code.engine->playhead_jumped(11, 50);
    code.run("50.9");
    EXPECT_TRUE(code.engine->is_down("id N"));
    code.run("51");
    EXPECT_EQ(code.fired, "N+10 N-12(auto up)");
}

TEST(hand, latches_takes_over_and_gives_up) {
    expect_all({
        {"latched until the next press", nullptr, "1*A 2-A 5+A 6-A", "A 1-5", "A+1 A-5"},
        {"latched while it is held", nullptr, "1+A 2*A 3-A 4+A", "A 1-4", "A+1 A-4"},
        {"tab lets go of what is latched", nullptr, "1*A 2tab", "A 1-2", "A+1 A-2(tab)"},
        {"Escape gives up the clip begun last", nullptr, "1+A 2+B 3+N 4esc 5-A 6-B", "A 1-5",
         "A+1 B+2 N+3 B-4x A-5"},
        {"and the row with it only when it is empty", nullptr, "1+A 2-A 3+A 4esc", "A 1-2",
         "A+1 A-2 A+3 A-4x"},
        {"each time another", nullptr, "1+A 2+B 3esc 4esc 5esc", "", "A+1 B+2 B-3x A-4x"},
        {"waiting attributes first", of('X', [](auto& x) { x.set_stage(attribute_stage::next); }),
         "1+A 2+X 3esc 4+Q 5-A", "A 1-5(Q)", "A+1 X+2? Q+4 A-5"},
    });
    coding code;
    code.set_buttons();
    EXPECT_FALSE(code.engine->escape(1));
    code.engine->press("id A", 1, {press_cause::link, false, {}});
    EXPECT_FALSE(code.engine->release("id A", 2)) << "no hand holds it";
    EXPECT_FALSE(code.engine->press("id A", 3));
    EXPECT_TRUE(code.engine->release("id A", 4)) << "the hand took it over";
    code.engine->press("id A", 5, {press_cause::link, false, {}});
    EXPECT_TRUE(code.engine->release("id A", 6, press_cause::link));
    EXPECT_EQ(code.fired, "A+1(link) A-4 A+5(link) A-6(link)");
}

TEST(button_beside, is_pressed_and_released_at_once) {
    const auto ordered = [](std::function<void(coding&)> set) -> setting {
        return [=](coding& code) {
            // In their category: B, A, then Q and R as they lie, the others behind.
            for (auto& button : code.buttons) button.set_sort_order(3);
            code.button('B').set_sort_order(1);
            code.button('A').set_sort_order(2);
            code.button('N').set_category("other");
            set(code);
        };
    };
    const auto all = [](auto& button) {
        button.set_last_down(true);
        button.set_next_down(true);
        button.set_last_up(true);
        button.set_next_up(true);
    };
    expect_all({
        {"the next on press", ordered(of('A', [](auto& a) { a.set_next_down(true); })), "1+A 2-A", "A 1-2(Q)",
         "A+1 Q+1(link) Q-1(link) A-2"},
        {"the last on release", ordered(of('A', [](auto& a) { a.set_last_up(true); })), "1+A 2-A",
         "A 1-2; B 2-2", "A+1 A-2 B+2(link) B-2(link)"},
        {"none before the first", ordered(of('B', [](auto& b) { b.set_last_down(true); })), "1+B",
         "B; live B 1", "B+1"},
        {"none beside the only one", ordered(of('N', all)), "1+N 2-N", "", "N+1 N-2"},
        {"one that is down stays", ordered(of('A', [](auto& a) { a.set_next_down(true); })), "1+Q 2+A 3-A",
         "A 2-3", "Q+1~ A+2 A-3"},
        {"each once in what a press sets off", ordered([=](coding& code) {
             of('A', all)(code), of('B', all)(code), of('Q', [](auto& q) { q.set_last_down(true); })(code);
         }),
         "1+A 2", "A; B 1-1; live A 1", "A+1 B+1(link) B-1(link) Q+1(link) Q-1(link)"},
    });
}

}  // namespace
}  // namespace vistels
