// SPDX-License-Identifier: GPL-3.0-or-later
//
// Measures presses of the buttons of a code window on a long timeline, on a row with one clip as long as all
// others together, where a press merges a row of clips that touch, and where all buttons are linked to all.
//   bench_code_window [--short] [--clips N] [--buttons N]
// Each press and release is timed from the call to the edit being on record in the journal, by the wall
// clock. Exits with 1 when a target is missed.

#include <time.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "logger/press_engine.h"
#include "support/button_rows.h"
#include "support/measure.h"
#include "support/temporary_folder.h"
#include "timeline/files/timeline_document.h"
#include "util/simulated_run_loop.h"
#include "util/uuid.h"

namespace {

using namespace vistels;
using bench::median;
using bench::stop_with;

constexpr double most_seconds = 0.002;  // of the 95th percentile
constexpr double most_round_seconds = 0.005;
constexpr double event_seconds = 6'000;

double now() {
    timespec at{};
    clock_gettime(CLOCK_MONOTONIC, &at);
    return static_cast<double>(at.tv_sec) + static_cast<double>(at.tv_nsec) * 1e-9;
}

double percentile(std::vector<double> values, double share) {
    std::sort(values.begin(), values.end());
    return values[static_cast<std::size_t>(share * static_cast<double>(values.size() - 1))];
}

// Three of four make clips, one of eight of these takes no qualifiers; the rest are qualifiers.
std::vector<button_record> buttons_of(std::size_t count) {
    std::vector<button_record> all;
    for (std::size_t n = 0; n < count; ++n) {
        markup_Button_Item button;
        button.set_uuid(new_uuid());
        button.set_name("Button " + std::to_string(n));
        button.set_category("Category " + std::to_string(n % 7));
        button.set_type(n % 4 == 3 ? button_type::qualifier : button_type::clip);
        button.set_secs_in(5);
        button.set_secs_out(3);
        button.set_block_qualifiers(n % 8 == 1);
        all.emplace_back(std::move(button));
    }
    return all;
}

void fill(timeline_document& document, const std::vector<button_record>& buttons, std::size_t clips) {
    timeline_edit edit{"fill", "", {}};
    std::mt19937_64 random(3);
    const std::vector<shared_text> rows = bench::add_rows(buttons, edit);
    std::vector<bool> takes_none;
    for (const auto& button : buttons) {
        if (button->is(button_type::clip)) takes_none.push_back(button->block_qualifiers());
    }
    for (std::size_t n = 0; n < clips; ++n) {
        sxy_CLIP clip;
        clip.set_id(new_uuid());
        const double start = static_cast<double>(random() % 6'000'000) / 1e3;
        clip.set_secs_start(start);
        // Where no qualifiers are taken one is as long as half the event: searches have to reach back for it.
        const bool is_long = n < rows.size() && takes_none[n];
        clip.set_secs_end(start + (is_long ? event_seconds / 2 : 8));
        edit.operations.emplace_back(operation::insert_clip{rows[n % rows.size()], clip});
    }
    if (auto applied = document.apply(std::move(edit)); !applied) stop_with(applied.message());
    if (auto saved = document.save_now(); !saved) stop_with(saved.message());
}

bool tell(const char* what, const std::vector<double>& seconds, bool is_judged = true,
          double most = most_seconds) {
    const double found = percentile(seconds, 0.95);
    const bool is_met = !is_judged || found <= most;
    std::printf("%-40s median %7.1f us, 95th percentile %7.1f us, longest %7.1f us%s\n", what,
                median(seconds) * 1e6, found * 1e6, percentile(seconds, 1) * 1e6, is_met ? "" : "  MISSED");
    return is_met;
}

void fill_row(timeline_document& document, const markup_Button_Item& button,
              const std::vector<std::pair<double, double>>& spans) {
    timeline_edit edit{"fill", "", {}};
    sxy_ROW row;
    row.set_uuid(shared_text(new_uuid()));
    row.set_name(button.name());
    row.set_category(button.category());
    edit.operations.emplace_back(operation::insert_row{0, row});
    for (const auto& [start, end] : spans) {
        sxy_CLIP clip;
        clip.set_id(new_uuid());
        clip.set_secs_start(start);
        clip.set_secs_end(end);
        edit.operations.emplace_back(operation::insert_clip{row.uuid(), clip});
    }
    if (auto applied = document.apply(std::move(edit)); !applied) stop_with(applied.message());
    if (auto saved = document.save_now(); !saved) stop_with(saved.message());
}

// Runs `work` with an engine on a timeline with the one row.
template <class Work>
void with_row(bool merges, const std::vector<std::pair<double, double>>& spans, Work work) {
    const testing::temporary_folder folder;
    simulated_run_loop loop;
    auto opened = timeline_document::open(folder.path(), loop);
    if (!opened) stop_with(opened.message());
    auto all = buttons_of(4);
    all[0] = changed_button(all[0], [&](markup_Button_Item& button) { button.set_merge_clips(merges); });
    fill_row(*opened.value(), *all[0], spans);
    press_engine engine(*opened.value(), loop.time());
    engine.set_buttons(all, 0);
    work(engine, all[0]->uuid(), all[3]->uuid(), loop);
    if (engine.unrecorded() != 0) stop_with("presses were not recorded");
}

bool tell_of_a_long_clip(bool is_short) {
    const std::size_t clips = is_short ? 5'000 : 100'000;
    std::vector<std::pair<double, double>> spans{{0, 0.3 * static_cast<double>(clips)}};
    for (std::size_t n = 0; n < clips; ++n) {
        const double start = 10 + 0.25 * static_cast<double>(n);
        spans.emplace_back(start, start + 0.2);
    }
    std::vector<double> up, stamp;
    with_row(false, spans, [&](auto& engine, const auto& button, const auto& label, auto& loop) {
        for (std::size_t n = 0; n < 200; ++n) {
            const double at = 0.26 * static_cast<double>(clips) + 10 * static_cast<double>(n % 50);
            engine.press(button, at);
            double from = now();
            engine.release(button, at + 1);
            up.push_back(now() - from);
            from = now();
            engine.press(label, at + 5);
            stamp.push_back(now() - from);
            engine.release(label, at + 5);
            loop.advance(0.02);
        }
    });
    std::printf("a row of %zu clips and one of %.0f seconds\n", clips, spans.front().second);
    const bool is_met = tell("release of a clip button", up);
    return tell("press of a qualifier while nothing grows", stamp) && is_met;
}

void tell_of_merging(std::size_t clips) {
    std::vector<std::pair<double, double>> spans;
    for (std::size_t n = 0; n < clips; ++n) {
        const auto start = static_cast<double>(n);
        spans.emplace_back(start, start + 1);
    }
    with_row(true, spans, [&](auto& engine, const auto& button, const auto&, auto&) {
        const auto at = static_cast<double>(clips);
        engine.press(button, at);
        const double from = now();
        engine.release(button, at + 2);
        const double seconds = now() - from;
        std::printf("release that merges %zu clips in a row: %.1f ms, %.1f us a clip\n", clips, seconds * 1e3,
                    seconds * 1e6 / at);
    });
}

// Each press puts all down and each release all up.
bool tell_of_links(bool is_short, button_type type) {
    const testing::temporary_folder folder;
    simulated_run_loop loop;
    auto opened = timeline_document::open(folder.path(), loop);
    if (!opened) stop_with(opened.message());
    std::vector<button_record> all = buttons_of(200);
    std::vector<markup_Button_Action_Link_ITEM> links;
    for (const char* code : {"ON_DOWN_SET_DOWN", "ON_UP_SET_UP"}) {
        for (const auto& to : all) links.push_back({code, std::nullopt, to->uuid(), to->name(), "", {}});
    }
    for (auto& button : all) {
        button = changed_button(button, [&](markup_Button_Item& one) {
            one.set_type(type);
            one.set_action_links(links);
        });
    }
    press_engine engine(*opened.value(), loop.time());
    engine.set_buttons(all, 0);
    std::vector<double> rounds;
    for (int n = 0; n < (is_short ? 5 : 200); ++n) {
        const std::string button = all[static_cast<std::size_t>(n) % all.size()]->uuid();
        double from = now();
        engine.press(button, 20.0 * n);
        rounds.push_back(now() - from);
        if (engine.down_buttons().size() != all.size()) stop_with("links were not followed");
        from = now();
        engine.release(button, 20.0 * n + 5);
        rounds.push_back(now() - from);
        loop.advance(0.02);
    }
    std::printf("200 buttons, all linked to all\n");
    return tell(type == button_type::none ? "round, of states alone" : "round, of 200 clips", rounds, true,
                most_round_seconds);
}

}  // namespace

int main(int count, char** arguments) {
    const bool is_short = bench::take_short(count, arguments);
    std::size_t clips = is_short ? 5'000 : 100'000;
    std::size_t buttons = 200;
    for (int n = 1; n + 1 < count; n += 2) {
        (std::string(arguments[n]) == "--buttons" ? buttons : clips) = std::stoul(arguments[n + 1]);
    }
    const testing::temporary_folder folder;
    simulated_run_loop loop;
    auto opened = timeline_document::open(folder.path(), loop);
    if (!opened) stop_with(opened.message());
    const auto all = buttons_of(buttons);
    fill(*opened.value(), all, clips);
    press_engine engine(*opened.value(), loop.time());
    engine.set_buttons(all, 0);

    std::vector<double> down, up, stamp, stamp_growing;
    std::size_t qualifiers = 0;
    const auto telling = opened.value()->changed.connect([&](const change_set& change) {
        if ((change.kinds & change_set::qualifiers_changed) != 0) qualifiers += change.clips.size();
    });
    std::vector<double> stamped;
    std::mt19937_64 random(5);
    const auto timed = [](std::vector<double>& into, auto&& work) {
        const double from = now();
        work();
        into.push_back(now() - from);
    };
    const std::size_t presses = is_short ? 200 : 4'000;
    for (std::size_t n = 0; n < presses; ++n) {
        const double at = static_cast<double>(random() % 6'000'000) / 1e3;
        const auto& button = *all[random() % all.size()];
        const std::string uuid = button.uuid();
        if (button.is(button_type::clip)) {
            timed(down, [&] { engine.press(uuid, at); });
            const std::string label = all[3]->uuid();
            if (!button.block_qualifiers()) timed(stamp_growing, [&] { engine.press(label, at + 1); });
            engine.release(label, at + 1);
            timed(up, [&] { engine.release(uuid, at + 2); });
        } else {
            const std::size_t before = qualifiers;
            timed(stamp, [&] { engine.press(uuid, at); });
            engine.release(uuid, at);
            stamped.push_back(static_cast<double>(qualifiers - before));
        }
        loop.advance(0.02);
    }
    std::printf("%zu clips, %zu buttons, %zu presses; a qualifier while nothing grows goes on %.0f clips\n",
                clips, buttons, presses, median(stamped));
    bool all_met = tell("press of a clip button", down);
    all_met = tell("release of a clip button", up) && all_met;
    all_met = tell("press of a qualifier while a clip grows", stamp_growing) && all_met;
    all_met = tell("the same while nothing grows", stamp, false) && all_met;
    if (engine.unrecorded() != 0) stop_with("presses were not recorded");
    all_met = tell_of_a_long_clip(is_short) && all_met;
    for (const std::size_t merged : {1'000, 10'000}) tell_of_merging(is_short ? merged / 10 : merged);
    all_met = tell_of_links(is_short, button_type::none) && all_met;
    all_met = tell_of_links(is_short, button_type::clip) && all_met;
    return all_met || is_short ? 0 : 1;
}
