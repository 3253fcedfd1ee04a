// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "logger/press_engine.h"
#include "support/failing_files.h"
#include "support/temporary_folder.h"
#include "support/timeline_builder.h"
#include "util/simulated_run_loop.h"
#include "util/text_forms.h"

namespace vistels::testing {

inline markup_Button_Item button_of(const std::string& name, button_type type) {
    markup_Button_Item button;
    button.set_uuid("id " + name);
    button.set_name(name);
    button.set_category("cat");
    button.set_type(type);
    return button;
}

// What a clip button does, with its times in seconds; auto_up 0: it goes up by hand.
struct clip_rules {
    double in, out;
    bool overlaps, merges, blocks;
    double auto_up;
};
inline markup_Button_Item clip_button_of(const std::string& name, const clip_rules& rules) {
    markup_Button_Item button = button_of(name, button_type::clip);
    button.set_secs_in(rules.in);
    button.set_secs_out(rules.out);
    button.set_allow_overlapping_clips(rules.overlaps);
    button.set_merge_clips(rules.merges);
    button.set_block_qualifiers(rules.blocks);
    button.set_auto_up(rules.auto_up > 0);
    button.set_auto_up_duration(rules.auto_up);
    return button;
}

inline void add_link(markup_Button_Item& from, const char* code, const std::string& to) {
    auto all = from.action_links();
    all.emplace_back();
    all.back().action_TYPE = code;
    all.back().linked_button_UUID = "id " + to;
    from.set_action_links(std::move(all));
}
inline void add_trigger(markup_Button_Item& button, double at, const char* type) {
    auto all = button.triggers();
    all.push_back({at, shared_text(type), {}});
    button.set_triggers(std::move(all));
}

// "Q,R[X]": the qualifiers of a clip with their attributes.
inline std::string qualifiers_text(const sxy_CLIP& clip) {
    std::string names;
    for (const auto& item : *clip.qualifiers()) {
        names += (names.empty() ? "" : ",") + item.name().str();
        std::string attributes;
        for (const auto& one : item.attributes())
            attributes += (attributes.empty() ? "" : ",") + one.name.str();
        if (!attributes.empty()) names += "[" + attributes + "]";
    }
    return names;
}

// A time to the nanosecond: sums of times are not exact.
inline double without_rounding(double seconds) {
    return std::round(seconds * 1e9) / 1e9;
}

// "A 1-2(Q) 5-6; B 3-4": the clips of each row with their qualifiers, growing ones last as "live B 3".
inline std::string clips_text(const sxy_DATA_root& timeline) {
    std::string text;
    for (const auto& row : timeline.rows()) {
        text += (text.empty() ? "" : "; ") + row->name();
        for (const auto& clip : row->clips()) {
            text += ' ';
            append_shortest(text, without_rounding(clip->secs_start()));
            text += '-';
            append_shortest(text, without_rounding(clip->secs_end()));
            if (!clip->qualifiers()->empty()) text += "(" + qualifiers_text(*clip) + ")";
        }
    }
    for (const auto& live : timeline.live_clips()) {
        text += "; live " + timeline.row(live.row)->name() + " ";
        append_shortest(text, live.clip->secs_start());
    }
    return text;
}

// A timeline in a folder of its own with the clip buttons A and B, the qualifiers Q and R, the button N that
// makes nothing, the attribute X, the timer clip T and the trigger G. The collection's clock is the loop's.
struct coding {
    temporary_folder folder;
    unsynced_files files;
    simulated_run_loop loop;
    std::unique_ptr<timeline_document> document;
    std::unique_ptr<press_engine> engine;
    std::vector<markup_Button_Item> buttons{
        button_of("A", button_type::clip),       button_of("B", button_type::clip),
        button_of("Q", button_type::qualifier),  button_of("R", button_type::qualifier),
        button_of("N", button_type::none),       button_of("X", button_type::attribute),
        button_of("T", button_type::timer_clip), button_of("G", button_type::trigger)};
    // "A+1 Q+2~ A-3!": down and up; ~ nothing to stamp; ? its attribute waits; x dropped; ! not recorded;
    // (tab), (auto up), (link); # blocked
    std::string fired;
    connection reporting;

    coding() {
        auto opened = timeline_document::open(folder.path(), loop, files);
        EXPECT_TRUE(opened) << opened.message();
        document = std::move(opened).value();
        engine = std::make_unique<press_engine>(*document, loop.time());
        reporting = engine->fired.connect([this](const button_fired& one) {
            fired += (fired.empty() ? "" : " ") + one.name + (one.is_down ? "+" : "-");
            append_shortest(fired, one.at);
            if (one.nothing_to_stamp) fired += '~';
            if (one.waits) fired += '?';
            if (one.dropped) fired += 'x';
            if (!one.recorded) fired += '!';
            if (one.cause != press_cause::press)
                fired += "(" + std::string(press_cause_text(one.cause)) + ")";
            if (one.blocked) fired += '#';
        });
        set_buttons();
    }
    void set_buttons() { engine->set_buttons({buttons.begin(), buttons.end()}, 0); }

    markup_Button_Item& button(char name) {
        return *std::find_if(buttons.begin(), buttons.end(),
                             [&](const auto& one) { return one.name() == std::string(1, name); });
    }

    // "1+A 2-A 3tab 4": at each time a press, a release, a tab or only a tick; "1*A" latches, "1esc", "5j2"
    // the playhead jumps to 2, "5l2" a loop turns, "5p" it plays, "5s" it stops.
    void run(const std::string& script) {
        set_buttons();
        std::istringstream steps(script);
        for (std::string step; steps >> step;) {
            const auto sign = step.find_first_not_of("0123456789.");
            const double at = *number_from_text(step.substr(0, sign));
            if (at > loop.time().seconds()) loop.advance_to(at);
            engine->tick(at);
            if (sign != std::string::npos) act(step[sign], step.substr(sign), at);
        }
    }
    void act(char sign, const std::string& word, double at) {
        const std::string rest = word.substr(1);
        if (sign == '+') engine->press("id " + rest, at);
        if (sign == '*') engine->press("id " + rest, at, {press_cause::press, true, {}});
        if (sign == '-') engine->release("id " + rest, at);
        if (sign == 'j' || sign == 'l') engine->playhead_jumped(at, *number_from_text(rest), sign == 'l');
        if (word == "p" || word == "s") engine->follow_playing(at, sign == 'p');
        if (word == "tab") engine->tab(at);
        if (word == "esc") engine->escape(at);
    }
    std::string clips() const { return clips_text(document->timeline()); }
};

}  // namespace vistels::testing
