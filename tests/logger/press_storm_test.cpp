// SPDX-License-Identifier: GPL-3.0-or-later
//
// Ten thousand presses of the automatic presser against a plain model of what they make.
#include <functional>
#include <limits>
#include <map>
#include <random>
#include <set>
#include <tuple>

#include "logger/coding.h"
#include "logger/overlap_rule.h"
#include "logger/random_presses.h"
#include "support/sanitized.h"

namespace vistels {
namespace {

using testing::coding;
using testing::without_rounding;

constexpr double cycle_seconds = 0.02;

struct plain_qualifier {
    double at;
    std::string name;  // "Q[X]" with an attribute
    int stamp;         // the press it is from
};
// A clip as the model keeps it.
struct plain_clip {
    double start, end;
    double held_from, held_to;
    std::vector<plain_qualifier> qualifiers;  // by time
    char button;
    int number;      // in the order in which they went into the rows; 0: it grows
    std::string id;  // decides between clips with the same times
};
struct plain_button {
    char name;
    double in, out;
    bool overlaps, merges, blocks;
    double auto_up;  // 0: by hand
};
struct plain_link {
    char from;
    const char* code;
    char to;

    bool begins(const char* with) const { return std::string_view(code).starts_with(with); }
    bool does(const char* end) const { return std::string_view(code).ends_with(end); }
    bool acts_on_down() const { return begins("ON_DOWN") || begins("ON_ALL_DOWN"); }
};
struct plain_trigger {
    double at;
    char button;
    bool goes_down;
};

// What presses make, by the rules as they are told, over all clips each time.
class plain_model {
  public:
    // `clip_of`: the identifier of the clip that the button began last.
    plain_model(std::vector<plain_button> buttons, std::vector<plain_link> links,
                std::vector<plain_trigger> triggers, double begins, std::function<std::string(char)> clip_of)
        : buttons_(std::move(buttons)),
          links_(std::move(links)),
          triggers_(std::move(triggers)),
          passed_(begins),
          clip_of_(std::move(clip_of)) {}

    bool is_down(char name) const { return down_.contains(name); }

    void press(char name, double at) {
        tick(at);
        if (is_down(name)) return;
        begin_round();
        go_down(name, at, true);
        go_up_until(at);
    }
    void release(char name, double at) {
        tick(at);
        if (!is_down(name) || down_[name].due != never || !down_[name].is_pressed) return;
        begin_round();
        go_up(name, at);
    }
    void tick(double at) {
        for (const auto& one : triggers_) {
            if (one.at <= passed_ || one.at > at) continue;
            go_up_until(one.at);
            if (is_down(one.button) == one.goes_down) continue;
            begin_round();
            one.goes_down ? go_down(one.button, one.at, false) : go_up(one.button, one.at);
        }
        passed_ = std::max(passed_, at);
        go_up_until(at);
    }
    void jump(double from, double to) {
        tick(from);
        passed_ = to;
        for (auto& [name, state] : down_) state.due_place += to - from;
        std::map<int, char> in_order;
        for (const auto& [name, state] : down_) {
            if (grown_.contains(name)) in_order[state.number] = name;
        }
        jumps_to_ = to;
        for (const auto& [number, name] : in_order) {
            if (!is_down(name) || down_[name].number != number) continue;
            const auto state = down_[name];
            if (to >= state.since - find(name)->in && to <= from) continue;
            begin_round();
            go_up(name, state.due == never ? from : state.due);
        }
        jumps_to_.reset();
        for (auto& clip : clips_) lag_over_.insert(clip.number);
        waiting_.clear();
    }

    std::string text() const {
        std::map<char, std::multiset<std::string>> rows;
        for (const auto& clip : clips_) {
            std::string text;
            append_shortest(text, without_rounding(clip.start));
            text += '-';
            append_shortest(text, without_rounding(clip.end));
            for (const auto& [at, name, stamp] : clip.qualifiers) {
                text += ",";
                append_shortest(text, std::round(at * 1e6) / 1e6);
                text += name;
            }
            rows[clip.button].insert(text);
        }
        std::string all;
        for (const auto& [row, texts] : rows) {
            all += row;
            for (const auto& one : texts) all += "\n " + one;
            all += '\n';
        }
        return all;
    }

  private:
    static constexpr double never = std::numeric_limits<double>::infinity();
    struct down_state {
        double since, due;
        double due_place;  // the playhead's when it comes
        bool is_pressed;   // else a link or a trigger put it down
        int number;
    };

    const plain_button* find(char name) const {
        for (const auto& one : buttons_) {
            if (one.name == name) return &one;
        }
        return nullptr;
    }

    void go_up_until(double at) {
        for (;;) {
            char first = 0;
            for (const auto& [name, state] : down_) {
                if (state.due_place <= at + 1e-6 && (!first || state.due < down_[first].due)) first = name;
            }
            if (!first) return;
            begin_round();
            go_up(first, down_[first].due);
        }
    }

    void begin_round() {
        changed_.clear();
        blocked_.clear();
    }

    void go_down(char name, double told_at, bool is_pressed) {
        const double at = jumps_to_.value_or(told_at);
        const auto* button = find(name);
        const double due = button && button->auto_up > 0 ? at + button->auto_up : never;
        down_[name] = {at, due, due, is_pressed, ++presses_};
        changed_.insert(name);
        if (!blocked_.contains(name)) {
            if (button) grown_[name] = {at, at, at, at, {}, name, 0, clip_of_(name)};
            if (name == 'Q' || name == 'R') stamp(name, at);
            if (name == 'X') attribute();
            if (name == 'Y') waiting_ += "Y";
        }
        follow(name, true, told_at);
    }

    void follow(char name, bool is_down_now, double at) {
        for (const auto& link : links_) {
            if (link.from != name || link.acts_on_down() != is_down_now || !holds(link)) continue;
            if (link.does("_BLOCK")) {
                blocked_.insert(link.to);
                continue;
            }
            const bool was_down = is_down(link.to);
            if (changed_.contains(link.to) || link.does(was_down ? "SET_DOWN" : "SET_UP")) continue;
            was_down ? go_up(link.to, at) : go_down(link.to, at, false);
        }
    }
    bool holds(const plain_link& one) const {
        std::size_t sources = 0;
        std::size_t down = 0;
        for (char name = 'A'; name <= 'Z'; ++name) {
            const bool has_it = std::any_of(links_.begin(), links_.end(), [&](const plain_link& link) {
                return link.from == name && link.to == one.to && std::string_view(link.code) == one.code;
            });
            sources += has_it ? 1 : 0;
            down += has_it && is_down(name) ? 1 : 0;
        }
        if (one.begins("ON_ALL_DOWN")) return down == sources;
        if (one.begins("ON_ALL_UP")) return down == 0;
        return !one.begins("ON_ANY_UP") || down < sources;
    }

    void go_up(char name, double at) {
        const auto held = down_.extract(name).mapped();
        changed_.insert(name);
        if (grown_.contains(name)) end_clip(name, held, at);
        follow(name, false, at);
    }
    void end_clip(char name, const down_state& held, double at) {
        const auto* button = find(name);
        auto clip = grown_.extract(name).mapped();
        if (blocked_.contains(name)) return;
        clip.held_from = std::min(held.since, at);
        clip.held_to = at;
        clip.start = held.since - button->in;
        clip.end = at + button->out;
        clip.number = ++last_number_;
        lag_[clip.number] = {at, clip.end};
        if (button->merges) return merge(std::move(clip));
        if (!button->overlaps) share(clip);
        clips_.push_back(std::move(clip));
    }

    void merge(plain_clip clip) {
        std::vector<plain_clip> all{clip};
        for (bool met = true; met;) {
            met = false;
            for (std::size_t n = 0; n < clips_.size() && !met; ++n) {
                const auto& other = clips_[n];
                if (other.button != clip.button || other.start > clip.end || other.end < clip.start) continue;
                clip.start = std::min(clip.start, other.start);
                clip.end = std::max(clip.end, other.end);
                all.push_back(other);
                clips_.erase(clips_.begin() + static_cast<std::ptrdiff_t>(n));
                met = true;
            }
        }
        // Those of one clip alone stay in the order in which they were stamped when it is the one that stays.
        const auto first = std::min_element(all.begin(), all.end(), [](const auto& a, const auto& b) {
            return std::tie(a.start, a.number) < std::tie(b.start, b.number);
        });
        clip.qualifiers = first->qualifiers;
        for (auto one = all.begin(); one != all.end(); ++one) {
            if (one == first || one->qualifiers.empty()) continue;
            clip.qualifiers.insert(clip.qualifiers.end(), one->qualifiers.begin(), one->qualifiers.end());
            std::stable_sort(clip.qualifiers.begin(), clip.qualifiers.end(),
                             [](const auto& a, const auto& b) { return a.at < b.at; });
        }
        clips_.push_back(std::move(clip));
    }

    void share(plain_clip& clip) {
        std::vector<plain_clip*> row;
        for (auto& one : clips_) {
            if (one.button == clip.button) row.push_back(&one);
        }
        std::sort(row.begin(), row.end(), [](const auto* a, const auto* b) {
            return std::tie(a->start, a->end, a->id) < std::tie(b->start, b->end, b->id);
        });
        for (auto* other : row) {
            if (other->end <= clip.start || clip.end <= other->start) continue;
            const bool starts_first = other->start < clip.start && other->end < clip.end;
            const bool starts_later = clip.start < other->start && clip.end < other->end;
            if (starts_first) part(*other, clip);
            if (starts_later) part(clip, *other);
        }
    }
    static void part(plain_clip& a, plain_clip& b) {
        // To the last bit as the program does it: whether one clip lies within another may hang on that.
        const double length = a.end - a.start;
        const double factor = (b.end - a.start) / (length + (b.end - b.start));
        const double split = a.start + factor * length - 0.05;
        const double from = std::max(std::min(a.end, a.held_to), a.start + std::min(0.1, length));
        const double to = std::min(std::max(b.start, b.held_from), b.end - std::min(0.1, b.end - b.start));
        a.end = from;
        b.start = to;
        if (from >= to) return;
        const double half_gap = std::min(0.1, to - from) / 2;
        const double joint = std::clamp((split + (split + 0.1)) / 2, from + half_gap, to - half_gap);
        a.end = joint - half_gap;
        b.start = joint + half_gap;
    }

    std::vector<plain_clip*> reached(double at) {
        std::vector<plain_clip*> found;
        const auto blocks = [this](const plain_clip& clip) { return find(clip.button)->blocks; };
        for (auto& [name, clip] : grown_) {
            if (!blocks(clip)) found.push_back(&clip);
        }
        for (auto& clip : clips_) {
            if (lag_over_.contains(clip.number) || blocks(clip)) continue;
            const auto [from, until] = lag_[clip.number];
            if (from < until && from <= at && at <= until) found.push_back(&clip);
        }
        if (!found.empty()) return found;
        std::map<char, plain_clip*> last;
        for (auto& clip : clips_) {
            if (blocks(clip) || clip.start > at || clip.end <= at) continue;
            auto& of_row = last[clip.button];
            const auto order = [](const plain_clip& one) { return std::tie(one.start, one.end, one.id); };
            if (!of_row || order(*of_row) < order(clip)) of_row = &clip;
        }
        for (const auto& [row, clip] : last) found.push_back(clip);
        if (!found.empty()) return found;
        plain_clip* made = nullptr;
        for (auto& clip : clips_) {
            if (!blocks(clip) && (!made || made->number < clip.number)) made = &clip;
        }
        if (made && made->end <= at && at - made->end <= 60) found.push_back(made);
        return found;
    }

    void stamp(char name, double at) {
        const auto clips = reached(at);
        if (clips.empty()) return;
        const std::string text = std::string(1, name) + (waiting_.empty() ? "" : "[" + waiting_ + "]");
        ++last_stamp_;
        for (auto* clip : clips) clip->qualifiers.push_back({at, text, last_stamp_});
        waiting_.clear();
    }
    void attribute() {
        const auto add = [this](plain_clip& clip) {
            for (auto& [at, text, stamp] : clip.qualifiers) {
                if (stamp != last_stamp_) continue;
                const bool has_some = text.back() == ']';
                if (has_some) text.pop_back();
                text += has_some ? "X]" : "[X]";
            }
        };
        for (auto& clip : clips_) add(clip);
        for (auto& [name, clip] : grown_) add(clip);
    }

    std::vector<plain_button> buttons_;
    std::vector<plain_link> links_;
    std::vector<plain_trigger> triggers_;  // by time
    double passed_;
    std::function<std::string(char)> clip_of_;
    std::set<char> changed_;  // in this round
    std::set<char> blocked_;
    std::optional<double> jumps_to_;
    int presses_ = 0;
    std::map<char, down_state> down_;
    std::map<char, plain_clip> grown_;
    std::vector<plain_clip> clips_;
    std::map<int, std::pair<double, double>> lag_;
    std::set<int> lag_over_;
    int last_number_ = 0;
    std::string waiting_;
    int last_stamp_ = 0;
};

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
    const int cycles = testing::is_sanitized && GetParam() ? 2'000 : 10'000;
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
