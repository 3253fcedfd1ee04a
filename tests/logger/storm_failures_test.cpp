// SPDX-License-Identifier: GPL-3.0-or-later
//
// Presses of many buttons at random, fifty a second, on a volume that fills and empties all the time, and
// killed meanwhile.
#include <random>
#include <set>

#include "logger/coding.h"
#include "support/failure_runs.h"

namespace vistels {
namespace {

using testing::button_of;
using testing::failure_run;
using testing::temporary_folder;
using testing::unsynced_files;
using testing::without_rounding;

constexpr int presses = 400;
constexpr double press_seconds = 0.02;

// With links and triggers in every second storm.
void link_some(std::vector<markup_Button_Item>& buttons) {
    const auto button = [&](char name) -> markup_Button_Item& {
        return *std::find_if(buttons.begin(), buttons.end(),
                             [&](const auto& one) { return one.name() == std::string(1, name); });
    };
    const struct {
        char from;
        const char* code;
        const char* to;
    } links[] = {
        {'A', "ON_DOWN_SET_DOWN", "Q"},     {'A', "ON_UP_SET_UP", "Q"},         {'B', "ON_DOWN_SET_UP", "A"},
        {'C', "ON_DOWN_BLOCK", "E"},        {'C', "ON_DOWN_TOGGLE", "E"},       {'D', "ON_UP_SET_DOWN", "F"},
        {'E', "ON_ALL_DOWN_SET_DOWN", "R"}, {'F', "ON_ALL_DOWN_SET_DOWN", "R"}, {'F', "ON_UP_BLOCK", "B"},
        {'F', "ON_UP_TOGGLE", "B"},         {'R', "ON_UP_SET_DOWN", "X"},       {'X', "ON_DOWN_TOGGLE", "Y"}};
    for (const auto& one : links) testing::add_link(button(one.from), one.code, one.to);
    for (int n = 0; n < 40; ++n)
        testing::add_trigger(button("BFAQC"[n % 5]), 18 + 0.3 * n, n % 3 != 0 ? "going down" : "going up");
}

std::vector<button_record> storm_buttons(bool is_linked) {
    struct row {
        const char* name;
        testing::clip_rules rules;
    };
    const row clips[] = {{"A", {5, 3, true, false, false, 0}},   {"B", {0.5, 0.1, false, false, false, 0}},
                         {"C", {2, 2, true, false, true, 0}},    {"D", {0.3, 0.3, false, true, false, 0}},
                         {"E", {1, 0, false, false, true, 0.7}}, {"F", {0, 0.2, false, false, false, 0.25}}};
    std::vector<markup_Button_Item> all;
    for (const row& one : clips) all.push_back(testing::clip_button_of(one.name, one.rules));
    for (const char* name : {"Q", "R"}) all.push_back(button_of(name, button_type::qualifier));
    for (const char* name : {"X", "Y"}) {
        auto& attribute = all.emplace_back(button_of(name, button_type::attribute));
        attribute.set_stage(*name == 'X' ? attribute_stage::last : attribute_stage::next);
    }
    if (is_linked) link_some(all);
    return {all.begin(), all.end()};
}

// Row, start and qualifiers with their times.
std::string start_text(const std::string& row, const sxy_CLIP& clip) {
    std::string text = row + ' ';
    append_shortest(text, without_rounding(clip.secs_start()));
    for (const auto& item : *clip.qualifiers()) {
        text += ' ' + item.name().str() + '@';
        append_shortest(text, without_rounding(item.time()));
        for (const auto& one : item.attributes()) text += '+' + one.name.str();
    }
    return text;
}

struct coded {
    std::multiset<std::pair<std::string, double>> clips;  // with their ends
    std::multiset<std::string> growing;

    explicit coded(const sxy_DATA_root& timeline) {
        for (const auto& row : timeline.rows()) {
            for (const auto& clip : row->clips())
                clips.emplace(start_text(row->name(), *clip), without_rounding(clip->secs_end()));
        }
        for (const auto& live : timeline.live_clips())
            growing.insert(start_text(timeline.row(live.row)->name(), *live.clip));
    }
    // Whether somebody finds this who opens a timeline left so: what grew has an end somewhere.
    bool leaves(const coded& found) const {
        std::multiset<std::string> rest;
        auto own = clips;
        for (const auto& clip : found.clips) {
            if (const auto same = own.find(clip); same != own.end()) {
                own.erase(same);
            } else {
                rest.insert(clip.first);
            }
        }
        return own.empty() && rest == growing;
    }
};

// The same presses each time with one seed, whatever the volume does.
class storm {
  public:
    storm(const std::string& folder, file_system& files, unsigned seed) : random_(seed) {
        auto opened = timeline_document::open(folder, loop_, files);
        if (!opened) std::abort();
        document_ = std::move(opened).value();
        engine_ = std::make_unique<press_engine>(*document_, loop_.time());
        engine_->set_buttons(storm_buttons(seed % 2 == 1), 0);
        engine_->follow_playing(at_, true);
    }

    timeline_document& document() { return *document_; }
    press_engine& engine() { return *engine_; }

    void rage() {
        for (int n = 0; n < presses; ++n) {
            loop_.advance(press_seconds);
            at_ += press_seconds + 1e-5 * (n % 7);
            engine_->tick(at_);
            if (below(60) == 0) {
                const double to = at_ - 0.37 - 0.101137 * below(40);
                engine_->playhead_jumped(at_, to);
                at_ = to;
            }
            const std::string button = engine_->buttons()[below(10)]->uuid();
            if (!engine_->press(button, at_)) engine_->release(button, at_);
            if (below(40) == 0) document_->save_soon();
            if (below(80) == 0) (void)document_->save_now();
        }
        engine_->follow_playing(at_, false);
        engine_->release_all(at_);
    }
    // There is room now, and time for what waits to be tried again.
    void calm_down() {
        loop_.advance(2);
        engine_->tick(at_ + 2);
    }

  private:
    unsigned below(unsigned count) { return static_cast<unsigned>(random_() % count); }

    std::mt19937 random_;
    simulated_run_loop loop_;
    std::unique_ptr<timeline_document> document_;
    std::unique_ptr<press_engine> engine_;
    double at_ = 20;
};

// What stands on the timeline before the first press, and after each change of a button without trouble.
std::vector<coded> states_of(unsigned seed) {
    const temporary_folder folder;
    unsynced_files files;
    storm quiet(folder / "t", files, seed);
    std::vector<coded> states{coded(quiet.document().timeline())};
    const auto telling = quiet.engine().fired.connect(
        [&](const button_fired&) { states.emplace_back(quiet.document().timeline()); });
    quiet.rage();
    EXPECT_EQ(quiet.engine().unrecorded(), 0U);
    return states;
}

// Full for some calls and empty for some, by the number of the call.
std::function<int(int)> fills_and_empties(unsigned seed) {
    return [seed](int call) {
        const auto burst = static_cast<unsigned>(call) / (1 + seed % 23);
        return ((burst + seed) * 2654435761U >> 16U) % 3 == 0 ? ENOSPC : 0;
    };
}

TEST(failures, a_storm_of_presses_on_a_volume_that_fills_and_empties_leaves_what_it_leaves_on_another) {
    failure_run run("a storm on a volume that fills and empties", 8, 1'000);
    std::size_t kept_waiting = 0;
    while (run.next()) {
        const auto seed = static_cast<unsigned>(run.random()());
        const coded whole = states_of(seed).back();
        const temporary_folder folder;
        unsynced_files files;
        storm raging(folder / "t", files, seed);
        const auto telling = raging.engine().fired.connect([&](const button_fired& one) {
            if (!one.recorded) ++kept_waiting;
        });
        files.set_fault(fills_and_empties(seed));
        raging.rage();
        files.set_fault({});
        raging.calm_down();
        ASSERT_EQ(raging.engine().unrecorded(), 0U) << "seed of the storm " << seed;
        ASSERT_TRUE(whole.leaves(coded(raging.document().timeline()))) << "seed of the storm " << seed;
        ASSERT_TRUE(raging.document().save_now());
        simulated_run_loop loop;
        temporary_folder grave;
        std::filesystem::copy(folder / "t", grave / "t", std::filesystem::copy_options::recursive);
        const auto found = testing::opened(grave / "t", loop, files);
        ASSERT_TRUE(found && whole.leaves(coded(found->timeline()))) << "seed of the storm " << seed;
    }
    EXPECT_GT(kept_waiting, 0U);
}

// Also what Escape and jumps act on waits then: they do the same as where all is on record.
TEST(failures, escape_and_jumps_on_a_full_volume_take_what_they_take_on_another) {
    const char* const scripts[] = {
        "1+A 2+Y 2-Y 3esc 4-A 5+Q 5-Q",     // the attribute, not the clip
        "1+A 2+Y 2-Y 3esc 3.5esc 5+Q 5-Q",  // and the clip after it
        "1+A 2+Y 2-Y 3+Q 3-Q 4esc 5-A",     // the clip, since the qualifier has the attribute
        "1+A 2+Y 2-Y 3j1.5 4-A 5+Q 5-Q",    // the attribute
        "1+L 2-L 2.5j2.7 3+A 3+Q 3-Q 4-A",  // the clip that went on after its end
        "1+L 2-L 2.5+Q 2.5-Q 2.7j40 41+A 41+Q 41-Q 42-A",
    };
    for (const char* script : scripts) {
        std::string left[2];
        for (const bool is_full : {false, true}) {
            testing::coding code;
            auto next = button_of("Y", button_type::attribute);
            next.set_stage(attribute_stage::next);
            auto going_on = button_of("L", button_type::clip);
            going_on.set_secs_out(8);
            code.buttons.push_back(next);
            code.buttons.push_back(going_on);
            if (is_full) code.files.set_fault([](int) { return ENOSPC; });
            code.run(script);
            code.files.set_fault({});
            code.run("50 52");
            EXPECT_EQ(code.engine->unrecorded(), 0U);
            left[is_full] = code.clips();
        }
        EXPECT_EQ(left[1], left[0]) << script;
    }
}

// Tells by its number each change of a button with which all changes so far are on record.
[[noreturn]] void rage_until_killed(const std::string& folder, unsigned seed, int acknowledge) {
    unsynced_files files;
    storm raging(folder, files, seed);
    std::uint32_t changes = 0;
    const auto tell = [&] {
        if (raging.engine().unrecorded() != 0) return;
        if (::write(acknowledge, &changes, sizeof changes) != sizeof changes) ::_exit(3);
    };
    const auto telling = raging.engine().fired.connect([&](const button_fired&) {
        ++changes;
        tell();
    });
    files.set_fault(fills_and_empties(seed));
    raging.rage();
    files.set_fault({});
    raging.calm_down();
    tell();
    for (;;) ::pause();
}

// Kills it somewhere after that change; the last change that was acknowledged.
std::uint32_t rage_and_kill(const std::string& folder, unsigned seed, std::size_t after, std::size_t calls) {
    int ends[2];
    EXPECT_EQ(::pipe(ends), 0);
    const pid_t child = ::fork();
    if (child == 0) {
        ::close(ends[0]);
        rage_until_killed(folder, seed, ends[1]);
    }
    ::close(ends[1]);
    std::uint32_t acknowledged = 0;
    const auto take = [&] {
        return ::read(ends[0], &acknowledged, sizeof acknowledged) == sizeof acknowledged;
    };
    while (acknowledged < after && take()) {
    }
    for (std::size_t n = 0; n < calls; ++n) (void)::getppid();
    ::kill(child, SIGKILL);
    int status = 0;
    ::waitpid(child, &status, 0);
    EXPECT_TRUE(WIFSIGNALED(status)) << "ended by itself with " << WEXITSTATUS(status);
    while (take()) {
    }
    ::close(ends[0]);
    return acknowledged;
}

TEST(failures, a_storm_of_presses_killed_on_a_volume_that_fills_and_empties_loses_nothing_acknowledged) {
    failure_run run("a storm killed on a volume that fills and empties", 10, 1'000);
    std::size_t clips = 0;
    while (run.next()) {
        const auto seed = static_cast<unsigned>(run.random()());
        const auto states = states_of(seed);
        const std::size_t after = run.below(states.size());
        const temporary_folder folder;
        const std::size_t acknowledged = rage_and_kill(folder / "t", seed, after, run.below(20'000));
        ASSERT_GE(acknowledged, after);
        simulated_run_loop loop;
        unsynced_files files;
        const auto document = testing::opened(folder / "t", loop, files);
        ASSERT_TRUE(document);
        const coded found(document->timeline());
        // What came after that may be on record, too.
        const bool is_known =
            std::any_of(states.begin() + static_cast<std::ptrdiff_t>(acknowledged), states.end(),
                        [&](const coded& state) { return state.leaves(found); });
        ASSERT_TRUE(is_known) << "seed of the storm " << seed << ", killed after " << acknowledged
                              << " changes of " << states.size() - 1;
        clips += found.clips.size();
    }
    std::printf("failures: %zu clips found\n", clips);
}

}  // namespace
}  // namespace vistels
