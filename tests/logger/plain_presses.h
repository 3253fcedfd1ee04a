// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "logger/coding.h"

namespace vistels::testing {

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

}  // namespace vistels::testing
