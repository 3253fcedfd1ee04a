// SPDX-License-Identifier: GPL-3.0-or-later
//
// Ten thousand presses of the automatic presser against a plain model of what they make.
#include <map>
#include <random>
#include <set>

#include "logger/coding.h"
#include "logger/overlap_rule.h"
#include "logger/plain_presses.h"
#include "logger/random_presses.h"
#include "support/sanitized.h"

namespace vistels {
namespace {

using testing::coding;
using testing::plain_button;
using testing::plain_link;
using testing::plain_model;
using testing::plain_trigger;
using testing::without_rounding;

constexpr double cycle_seconds = 0.02;

std::string text_of(const sxy_DATA_root& timeline) {
    std::map<std::string, std::multiset<std::string>> rows;
    for (const auto& row : timeline.rows()) {
        for (const auto& clip : row->clips()) {
            std::string text;
            append_shortest(text, without_rounding(clip->secs_start()));
            text += '-';
            append_shortest(text, without_rounding(clip->secs_end()));
            for (const auto& item : *clip->qualifiers()) {
                text += ",";
                append_shortest(text, std::round(item.time() * 1e6) / 1e6);
                text += item.name().str();
                std::string attributes;
                for (const auto& one : item.attributes()) attributes += one.name.str();
                if (!attributes.empty()) text += "[" + attributes + "]";
            }
            rows[row->name()].insert(text);
        }
    }
    std::string all;
    for (const auto& [row, texts] : rows) {
        all += row;
        for (const auto& one : texts) all += "\n " + one;
        all += '\n';
    }
    return all;
}

const std::vector<plain_link> some_links = {
    {'A', "ON_DOWN_SET_DOWN", 'Q'},     {'A', "ON_UP_SET_UP", 'Q'},         {'B', "ON_DOWN_SET_UP", 'A'},
    {'C', "ON_DOWN_BLOCK", 'E'},        {'C', "ON_DOWN_TOGGLE", 'E'},       {'D', "ON_UP_SET_DOWN", 'F'},
    {'E', "ON_ALL_DOWN_SET_DOWN", 'R'}, {'F', "ON_ALL_DOWN_SET_DOWN", 'R'}, {'E', "ON_ALL_UP_SET_UP", 'R'},
    {'F', "ON_ALL_UP_SET_UP", 'R'},     {'B', "ON_ANY_UP_SET_UP", 'C'},     {'D', "ON_ANY_UP_SET_UP", 'C'},
    {'Q', "ON_UP_TOGGLE", 'D'},         {'X', "ON_DOWN_TOGGLE", 'Y'},       {'R', "ON_UP_SET_DOWN", 'X'},
    {'D', "ON_DOWN_SET_UP", 'X'},       {'F', "ON_UP_BLOCK", 'B'},          {'F', "ON_UP_TOGGLE", 'B'}};

std::vector<plain_trigger> some_triggers() {
    std::vector<plain_trigger> triggers;
    for (int n = 0; n < 800; ++n) triggers.push_back({100.005 + 0.7 * n, "BFAQC"[n % 5], n % 3 != 0});
    return triggers;
}

void add(const std::vector<plain_link>& links, const std::vector<plain_trigger>& triggers, coding& code) {
    for (const auto& one : links) testing::add_link(code.button(one.from), one.code, std::string(1, one.to));
    for (const auto& one : triggers)
        testing::add_trigger(code.button(one.button), one.at, one.goes_down ? "going down" : "going up");
}

class storm : public ::testing::TestWithParam<bool> {};
INSTANTIATE_TEST_SUITE_P(storm, storm, ::testing::Bool(), [](const auto& with) {
    return with.param ? "with_links_and_triggers" : "of_presses_alone";
});

TEST_P(storm, makes_what_a_plain_model_does) {
    const std::vector<plain_button> clip_buttons = {
        {'A', 5, 3, false, false, false, 0},  {'B', 0.5, 0.1, false, false, false, 0},
        {'C', 2, 2, true, false, true, 0},    {'D', 0.3, 0.3, false, true, false, 0},
        {'E', 1, 0, false, false, true, 0.7}, {'F', 0, 1.5, true, false, false, 0.25},
    };
    coding code;
    code.buttons.clear();
    for (const auto& one : clip_buttons) {
        code.buttons.push_back(testing::clip_button_of(
            std::string(1, one.name), {one.in, one.out, one.overlaps, one.merges, one.blocks, one.auto_up}));
    }
    for (const char* name : {"Q", "R"})
        code.buttons.push_back(testing::button_of(name, button_type::qualifier));
    for (const char* name : {"X", "Y"}) {
        auto& button = code.buttons.emplace_back(testing::button_of(name, button_type::attribute));
        button.set_stage(*name == 'X' ? attribute_stage::last : attribute_stage::next);
    }
    const std::string names = "ABCDEFQRXY";
    const auto links = GetParam() ? some_links : std::vector<plain_link>();
    const auto triggers = GetParam() ? some_triggers() : std::vector<plain_trigger>();
    add(links, triggers, code);
    code.set_buttons();
    code.engine->follow_playing(100, true);
    std::map<char, std::string> begun;
    plain_model model(clip_buttons, links, triggers, 100, [&](char name) { return begun[name]; });
    random_presses presser(1);
    const auto below = [&](unsigned count) { return presser.below(count); };
    const auto telling = code.engine->fired.connect([&](const button_fired& one) {
        if (one.is_down) begun[one.name[0]] = one.clip;
    });
    const double begun_at = code.loop.time().seconds();
    double at = 100;
    const auto come_to = [&](double moment) {
        at += moment - code.loop.time().seconds();
        code.loop.advance_to(moment);
        code.engine->tick(at);
        model.tick(at);
    };
    const auto release = [&](const std::vector<std::string>& buttons) {
        for (const auto& uuid : buttons) {
            code.engine->release(uuid, at, press_cause::presser);
            model.release(uuid.back(), at);
        }
    };
    const int cycles = testing::is_sanitized ? (GetParam() ? 1'000 : 2'000) : 10'000;
    int presses = 0;
    for (int cycle = 0; cycle < cycles; ++cycle) {
        const double cycle_at = code.loop.time().seconds() + cycle_seconds;
        for (auto end = presser.next_end(); end && *end <= cycle_at; end = presser.next_end()) {
            come_to(*end);
            release(presser.take_ended(*end));
        }
        come_to(cycle_at);
        // The collection's times are all apart, so that none is the end of one and the start of another.
        at += 1e-5 * (cycle % 7);
        if (below(150) == 0) {
            const double to = below(3) == 0 ? at - 1.5 - 1e-3 * cycle / 7
                                            : 100 + 0.14 * static_cast<double>(below(4'000)) + 1e-4 * cycle;
            code.engine->playhead_jumped(at, to);
            model.jump(at, to);
            at = to;
        }
        // Often it is turned off and on, so that all come up and every rule for qualifiers has its turn.
        if (below(40) == 0) release(presser.take_all());
        std::vector<std::string> up;
        for (const char name : names) {
            const std::string uuid = "id " + std::string(1, name);
            ASSERT_EQ(code.engine->is_down(uuid), model.is_down(name)) << name << " in cycle " << cycle;
            if (!model.is_down(name)) up.push_back(uuid);
        }
        for (const auto& uuid : presser.begin_cycle(up, 1, cycle_at, cycle_seconds)) {
            ASSERT_TRUE(code.engine->press(uuid, at, {press_cause::presser, false, {}}));
            model.press(uuid.back(), at);
            ++presses;
        }
        if (cycle % 1'000 == 500) code.document->save_soon();
        if (cycle % 500 == 499) {
            ASSERT_EQ(text_of(code.document->timeline()), model.text()) << "after cycle " << cycle;
        }
    }
    // Some are held down by links until others come up.
    EXPECT_GE(presses, GetParam() ? cycles * 99 / 100 : cycles);
    EXPECT_EQ(code.engine->unrecorded(), 0U);
    EXPECT_NEAR(code.loop.time().seconds() - begun_at, cycles * cycle_seconds, 1) << "fifty a second";
    code.engine->release_all(at);
    ASSERT_TRUE(code.document->save_now());
    const std::string left = text_of(code.document->timeline());
    code.reporting.disconnect();
    code.engine.reset();
    code.document.reset();
    simulated_run_loop loop;
    const auto again = timeline_document::open(code.folder.path(), loop, code.files);
    ASSERT_TRUE(again) << again.message();
    EXPECT_EQ(text_of(again.value()->timeline()), left);
}

// Two thousand presses of one button, five seconds in and three out, held and let go at random times.
std::vector<coded_span> random_presses(double usual_gap) {
    std::mt19937 random(11);
    const auto upto = [&](double most) { return most * static_cast<double>(random()) / 4294967296.0; };
    std::vector<coded_span> presses;
    double at = 10;
    for (int press = 0; press < 2'000; ++press) {
        const double from = at + 0.2 + upto(2 * usual_gap);
        at = from + upto(4);
        presses.push_back({{from - 5, at + 3}, clip_span{from, at}});
    }
    return presses;
}

double share_without_held_time(const std::vector<coded_span>& clips) {
    const auto lost = std::count_if(clips.begin(), clips.end(), [](const coded_span& one) {
        return one.span.start > one.held->start + 1e-9 || one.span.end < one.held->end - 1e-9;
    });
    return static_cast<double>(lost) / static_cast<double>(clips.size());
}

TEST(overlap_rule, takes_no_time_that_was_held) {
    for (const double gap : {1.0, 2.0, 4.0}) {
        auto presses = random_presses(gap);
        // That the plain split does shows that the presses are such that it matters.
        auto split = presses;
        for (std::size_t n = 1; n < split.size(); ++n) {
            const auto two = split_overlapping(split[n - 1].span, split[n].span);
            split[n - 1].span = two.a;
            split[n].span = two.b;
        }
        EXPECT_GT(share_without_held_time(split), 0.1) << "usual gap " << gap;

        sxy_ROW row;
        const auto index_of = [](const sxy_CLIP& clip) { return std::stoul(clip.id()); };
        for (std::size_t n = 0; n < presses.size(); ++n) {
            auto& press = presses[n];
            const auto placed = place_on_row(row, press.span, *press.held, [&](const sxy_CLIP& clip) {
                return presses[index_of(clip)].held;
            });
            for (const auto& moved : placed.moved) {
                presses[index_of(*moved.clip)].span = moved.span;
                auto changed = std::make_shared<sxy_CLIP>(*moved.clip);
                changed->set_secs_start(moved.span.start);
                changed->set_secs_end(moved.span.end);
                row.clips().replace(row.clips().position(*moved.clip), changed);
            }
            press.span = placed.span;
            row.clips().insert(std::make_shared<const sxy_CLIP>(
                testing::clip_of(std::to_string(n), press.span.start, press.span.end)));
        }
        EXPECT_EQ(row.clips().size(), presses.size());
        EXPECT_EQ(share_without_held_time(presses), 0) << "usual gap " << gap;
        EXPECT_TRUE(std::all_of(presses.begin(), presses.end(), [](const coded_span& one) {
            return one.span.end - one.span.start >= shortest_clip_seconds - 1e-9;
        }));
    }
}

}  // namespace
}  // namespace vistels
