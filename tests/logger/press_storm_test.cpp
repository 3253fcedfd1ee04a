// SPDX-License-Identifier: GPL-3.0-or-later
//
// Ten thousand presses of the automatic presser against a plain model of what they make.
#include <limits>
#include <map>
#include <random>
#include <set>
#include <tuple>

#include "logger/coding.h"
#include "logger/overlap_rule.h"
#include "logger/random_presses.h"

namespace vistels {
namespace {

using testing::coding;
using testing::without_rounding;

constexpr double cycle_seconds = 0.02;

// A clip as the model keeps it.
struct plain_clip {
    double start, end;
    double held_from, held_to;
    std::vector<std::pair<double, std::string>> qualifiers;  // by time; "Q[X]" with an attribute
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

// What presses make, by the rules as they are told, over all clips each time.
class plain_model {
  public:
    explicit plain_model(std::vector<plain_button> buttons) : buttons_(std::move(buttons)) {}

    bool is_down(char name) const { return down_.contains(name); }

    void press(char name, double at, const std::string& clip) {
        go_up_until(at);
        if (is_down(name)) return;
        const auto* button = find(name);
        const double due = button && button->auto_up > 0 ? at + button->auto_up : never;
        down_[name] = {at, due, due};
        if (button) grown_[name] = {at, at, at, at, {}, name, 0, clip};
        if (name == 'Q' || name == 'R') stamp(name, at);
        if (name == 'X') attribute(at);
        if (name == 'Y') waiting_ += "Y";
    }
    void release(char name, double at) {
        go_up_until(at);
        if (is_down(name) && down_[name].due == never) go_up(name, at);
    }
    void tick(double at) { go_up_until(at); }
    void jump(double from, double to) {
        go_up_until(from);
        for (const auto& [name, state] : std::map(down_)) {
            const auto* button = find(name);
            if (!button) continue;
            if (to < state.since - button->in || to > from) {
                go_up(name, state.due == never ? from : state.due);
            }
        }
        for (auto& [name, state] : down_) state.due_place += to - from;
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
            for (const auto& [at, name] : clip.qualifiers) {
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
            go_up(first, down_[first].due);
        }
    }

    void go_up(char name, double at) {
        const auto held = down_.extract(name).mapped();
        const auto* button = find(name);
        if (!button) return;
        auto clip = grown_.extract(name).mapped();
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
                             [](const auto& a, const auto& b) { return a.first < b.first; });
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
        for (auto* clip : clips) clip->qualifiers.emplace_back(at, text);
        waiting_.clear();
        last_stamped_ = at;
    }
    void attribute(double) {
        const auto add = [this](plain_clip& clip) {
            for (auto& [at, text] : clip.qualifiers) {
                if (at != last_stamped_) continue;
                const bool has_some = text.back() == ']';
                if (has_some) text.pop_back();
                text += has_some ? "X]" : "[X]";
            }
        };
        for (auto& clip : clips_) add(clip);
        for (auto& [name, clip] : grown_) add(clip);
    }

    std::vector<plain_button> buttons_;
    std::map<char, down_state> down_;
    std::map<char, plain_clip> grown_;
    std::vector<plain_clip> clips_;
    std::map<int, std::pair<double, double>> lag_;
    std::set<int> lag_over_;
    int last_number_ = 0;
    std::string waiting_;
    double last_stamped_ = -never;
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

TEST(storm, of_presses_makes_what_a_plain_model_does) {
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
    code.set_buttons();
    plain_model model(clip_buttons);
    random_presses presser(1);
    const auto below = [&](unsigned count) { return presser.below(count); };
    std::string begun;  // the clip of the last press
    const auto telling = code.engine->fired.connect([&](const button_fired& one) {
        if (one.is_down) begun = one.clip;
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
    int presses = 0;
    for (int cycle = 0; cycle < 10'000; ++cycle) {
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
            model.press(uuid.back(), at, begun);
            ++presses;
        }
        if (cycle % 1'000 == 500) code.document->save_soon();
        if (cycle % 500 == 499) {
            ASSERT_EQ(text_of(code.document->timeline()), model.text()) << "after cycle " << cycle;
        }
    }
    EXPECT_EQ(presses, 10'000) << "there is always a button to press";
    EXPECT_EQ(code.engine->unrecorded(), 0U);
    EXPECT_NEAR(code.loop.time().seconds() - begun_at, 200, 1) << "fifty a second";
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
