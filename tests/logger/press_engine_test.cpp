// SPDX-License-Identifier: GPL-3.0-or-later
#include "logger/press_engine.h"

#include <filesystem>
#include <functional>

#include "logger/coding.h"
#include "support/failure_runs.h"

namespace vistels {
namespace {

using testing::button_of;
using testing::clips_text;
using testing::coding;

using setting = std::function<void(coding&)>;

setting of_a(std::function<void(markup_Button_Item&)> set) {
    return [set](coding& code) { set(code.buttons[0]); };
}
setting lead_and_lag(double in, double out) {
    return of_a([=](markup_Button_Item& a) {
        a.set_secs_in(in);
        a.set_secs_out(out);
    });
}

struct press_case {
    const char* what;
    setting set;
    const char* script;
    const char* clips;
};

void expect_all(const std::vector<press_case>& cases) {
    for (const auto& one : cases) {
        coding code;
        if (one.set) one.set(code);
        code.run(one.script);
        EXPECT_EQ(code.clips(), one.clips) << one.what;
    }
}

TEST(press, makes_the_clip_that_was_held_widened_by_lead_and_lag) {
    expect_all({
        {"down only", nullptr, "5+A 7", "A; live A 5"},
        {"down and up", nullptr, "5+A 7-A", "A 5-7"},
        {"a second down counts for nothing", nullptr, "5+A 6+A 7-A 8-A", "A 5-7"},
        {"lead and lag", lead_and_lag(3, 2), "5+A 7-A", "A 2-9"},
        {"a start below the earliest time", lead_and_lag(9, 0), "5+A 7-A", "A 0-7"},
        {"an earliest time below zero",
         [](coding& code) {
             lead_and_lag(9, 0)(code);
             code.engine->set_earliest_time(-3);
         },
         "5+A 7-A", "A -3-7"},
        {"an earliest time behind the press", [](coding& code) { code.engine->set_earliest_time(6); },
         "5+A 7-A", "A 5-7"},
        {"a lead and a lag below zero make it shorter", lead_and_lag(-1, -0.5), "5+A 7-A", "A 6-6.5"},
        {"but take nothing where they would take all", lead_and_lag(-5, 0), "10+A 12-A", "A 10-12"},
        {"of a lag", lead_and_lag(3, -9), "5+A 7-A", "A 2-7"},
        {"of both", lead_and_lag(-1.5, -0.5), "5+A 7-A", "A 5-7"},
        {"of one that is beside a lag", lead_and_lag(-9, 1), "5+A 7-A", "A 5-8"},
        {"of one that was only tapped", lead_and_lag(-9, -9), "5+A 5-A", "A 5-5"},
        {"playback went back meanwhile", nullptr, "20+A 12-A", "A 12-20"},
        {"a lead and lag beyond all measure", lead_and_lag(1e308, 1e308), "5+A 7-A", "A 0-1000007"},
        {"no length", nullptr, "5+A 5-A", "A 5-5"},
        {"two at once", nullptr, "5+A 6+B 7-A 8-B", "A 5-7; B 6-8"},
        {"no such button", nullptr, "5+X 6-X", ""},
        {"none makes nothing", nullptr, "5+N 6-N", ""},
    });
}

TEST(press, clips_of_one_row_share_its_time) {
    const auto allow = of_a([](auto& a) { a.set_allow_overlapping_clips(true); });
    const auto merge = of_a([](auto& a) { a.set_merge_clips(true); });
    // Row A has the clips 8-23 (held 10-20, with Q) and 28-43 (held 30-40) before.
    const auto after = [](setting set, double in = 2, double out = 3) -> setting {
        return [=](coding& code) {
            lead_and_lag(2, 3)(code);
            code.run("10+A 15+Q 20-A 30+A 40-A");
            lead_and_lag(in, out)(code);
            if (set) set(code);
        };
    };
    // The same, but the first clip was changed by hand since.
    const auto moved_by_hand = [after](double in, double out) -> setting {
        return [=](coding& code) {
            after(nullptr, in, out)(code);
            operation::change_clip change{code.document->timeline().row_named("A")->clips()[0]->id(), {}, {}};
            change.set.set("time_end", 24.0);
            ASSERT_TRUE(code.document->apply({"Trim", "", {change}}));
        };
    };
    expect_all({
        {"the plain split", after(nullptr, 10, 10), "60+A 60-A 75+A 75-A",
         "A 8-23(Q) 28-43 50-67.45 67.55-85"},
        {"the joint moved so that the new clip keeps its time", after(nullptr, 0.5, 1), "21.5+A 27-A",
         "A 8-21.4(Q) 21.5-28 28-43"},
        {"so that the clip before keeps its time", after(nullptr, 14, 0), "26+A 27-A",
         "A 8-20(Q) 20.1-27 28-43"},
        {"with both neighbours", after(nullptr, 14, 9), "24+A 25-A", "A 8-20(Q) 20.1-29.9 30-43"},
        {"held times less than a gap apart", after(nullptr, 2, 0), "20.05+A 25-A",
         "A 8-20(Q) 20.05-25 28-43"},
        {"held times that overlap do so alone", after(nullptr, 2, 9), "18+A 19-A", "A 8-20(Q) 18-28 28-43"},
        {"one within the other", after(nullptr, 0, 0), "12+A 15-A", "A 8-23(Q) 12-15 28-43"},
        {"the same the other way round", after(nullptr, 20, 20), "25+A 27-A", "A 5-47 8-23(Q) 28-43"},
        {"touching is no overlap", after(nullptr, 0, 0), "23+A 28-A", "A 8-23(Q) 23-28 28-43"},
        {"a clip changed by hand stays", moved_by_hand(6, 0), "25+A 26-A", "A 8-24(Q) 24-26 28-43"},
        {"up to the new clip's own time", moved_by_hand(6, 0), "23+A 26-A", "A 8-24(Q) 23-26 28-43"},
        {"allowed", after(allow, 0, 0), "18+A 35-A", "A 8-23(Q) 18-35 28-43"},
        {"merged into the one before", after(merge, 0, 0), "18+A 19+R 25-A", "A 8-25(Q,R) 28-43"},
        {"merged with one after", after(merge, 0, 0), "25+A 26+R 28-A", "A 8-23(Q) 25-43(R)"},
        {"merged with both", after(merge, 0, 0), "23+A 35-A", "A 8-43(Q)"},
        {"nothing met", after(merge, 0, 0), "24+A 27-A", "A 8-23(Q) 24-27 28-43"},
    });
}

// The joint would leave nothing of a clip that was only tapped just before the next was held.
TEST(press, is_never_cut_to_nothing) {
    coding code;
    lead_and_lag(0, 2)(code);
    code.run("10+A 10-A");
    lead_and_lag(0.03, 5)(code);
    code.run("10.05+A 12-A");
    EXPECT_EQ(code.clips(), "A 10-10.1 10.05-17");
}

TEST(press, goes_to_its_row_and_makes_a_missing_one) {
    const auto row = [](const char* uuid, const char* name, const char* category) {
        auto made = testing::row_of(uuid, name);
        made.set_category(category);
        return operation::insert_row{9, made};
    };
    struct row_case {
        const char* what;
        std::vector<operation::any> rows;
        const char* link;
        const char* category;  // of A
        const char* goes_to;   // "new": none of them
    };
    const std::vector<row_case> cases = {
        {"name and category", {row("1", "A", "else"), row("2", "A", "cat")}, "", "cat", "2"},
        {"the name alone is another's", {row("1", "A", "else")}, "", "cat", "new"},
        {"a row without a category", {row("1", "A", "")}, "", "cat", "1"},
        {"a button without one", {row("1", "A", "else")}, "", "", "1"},
        {"several have the name", {row("1", "A", ""), row("2", "A", "else")}, "", "cat", "new"},
        {"the row that it names", {row("1", "A", "cat"), row("2", "Z", "")}, "2", "cat", "2"},
        {"the row of the button that it names",
         {row("1", "A", "cat"), row("2", "B", "cat")},
         "id B",
         "cat",
         "2"},
        {"that button's row is to be made", {row("1", "A", "cat")}, "id B", "cat", "new"},
        {"it names itself", {row("1", "A", "cat")}, "id A", "cat", "1"},
        {"it names what is gone", {row("1", "A", "cat")}, "gone", "cat", "1"},
    };
    for (const auto& one : cases) {
        coding code;
        ASSERT_TRUE(code.document->apply({"Rows", "", one.rows}));
        code.buttons[0].set_action_link_to(one.link);
        code.buttons[0].set_category(one.category);
        code.run("1+A 2-A");
        std::string found;
        for (const auto& each : code.document->timeline().rows()) {
            if (each->clips().empty()) continue;
            found = each->uuid().str().size() == 1 ? each->uuid().str() : "new";
            EXPECT_EQ(each->clips()[0]->row_uuid_in_clip(), each->uuid());
        }
        EXPECT_EQ(found, one.goes_to) << one.what;
    }
    coding code;
    auto display = code.buttons[1].display();
    display.button_colour = colour{1, 0, 0, 1};
    code.buttons[1].set_display(display);
    code.buttons[0].set_action_link_to("id B");
    code.run("3+A 4-A 5+B 6-B");
    EXPECT_EQ(code.clips(), "B 3-4 5-6");
    const auto made = code.document->timeline().row_named("B");
    EXPECT_EQ(made->category(), "cat");
    EXPECT_EQ(made->col(), display.button_colour);
}

TEST(press, stamps_a_qualifier_where_it_belongs) {
    const auto blocks = of_a([](auto& a) { a.set_block_qualifiers(true); });
    const auto overlaps = of_a([](auto& a) { a.set_allow_overlapping_clips(true); });
    const setting inside = [](coding& code) { code.engine->set_settings({true, 2, false}); };
    const setting up_later = [](coding& code) {
        of_a([](auto& a) {
            a.set_secs_in(6);
            a.set_auto_up(true);
            a.set_auto_up_duration(1);
        })(code);
        code.button('B').set_secs_out(2);
    };
    const setting inside_blocked = [=](coding& code) { inside(code), blocks(code); };
    expect_all({
        {"growing clips", nullptr, "1+A 2+B 3+Q 4-A 5-B", "A 1-4(Q); B 2-5(Q)"},
        {"growing ones before those that hold the time", nullptr, "1+A 9-A 3+B 4+Q 5-B", "A 1-9; B 3-5(Q)"},
        {"a growing one that blocks", blocks, "1+A 2+B 3+Q 4-A 5-B", "A 1-4; B 2-5(Q)"},
        {"one whose lag still runs", lead_and_lag(0, 3), "1+A 2-A 3+Q 4+B 5+R 6-B", "A 1-5(Q,R); B 4-6(R)"},
        {"also when another went up at a later time", up_later, "10+A 10.5j5 5+B 5.1-B 6 6.2+Q",
         "A 4-11; B 5-7.1(Q)"},
        {"not any more after a jump", lead_and_lag(0, 3), "1+A 2-A 3j4 4+B 4.5+Q 6-B", "A 1-5; B 4-6(Q)"},
        {"nor when it is over", lead_and_lag(0, 3), "1+A 2-A 6+B 7+Q 8-B", "A 1-5; B 6-8(Q)"},
        {"the last started of each row", overlaps, "1+A 9-A 3+A 9-A 2+B 8-B 5+Q", "A 1-9 3-9(Q); B 2-8(Q)"},
        {"a clip's end is behind it", nullptr, "1+A 5-A 1+B 6-B 5+Q", "A 1-5; B 1-6(Q)"},
        {"a row that blocks", blocks, "1+A 9-A 2+B 8-B 5+Q", "A 1-9; B 2-8(Q)"},
        {"else the last made", nullptr, "20+A 21-A 5+B 6-B 30+Q", "A 20-21; B 5-6(Q)"},
        {"else the last made that does not block", blocks, "5+B 6-B 20+A 21-A 30+Q", "B 5-6(Q); A 20-21"},
        {"not one that ended long ago", nullptr, "1+A 2-A 62+Q 62.1+R", "A 1-2(Q)"},
        {"nor one that is still to come", nullptr, "20+A 21-A 19+Q", "A 20-21"},
        {"brought inside the clip before", inside, "1+A 5-A 9+B 10-B 6.5+Q", "A 1-5(Q); B 9-10"},
        {"brought inside the clip after", inside, "1+A 5-A 9+B 10-B 8+Q", "A 1-5; B 9-10(Q)"},
        {"as near to both: the one before", inside, "1+A 5-A 9+B 10-B 7+Q", "A 1-5(Q); B 9-10"},
        {"too far from any", inside, "9+B 10-B 1+A 5-A 12.1+Q", "B 9-10; A 1-5(Q)"},
        {"the nearest one blocks", inside_blocked, "1+A 5-A 4+B 4.5-B 6+Q", "A 1-5; B 4-4.5(Q)"},
        {"twice", nullptr, "1+A 2+Q 3-Q 4+Q 5+R 9-A", "A 1-9(Q,Q,R)"},
        {"no clip", nullptr, "1+Q", ""},
    });
    coding code;
    code.run("1+Q 2-Q");
    EXPECT_EQ(code.fired, "Q+1~ Q-2");
    inside(code);
    code.run("2+A 4-A 5+Q 6-Q 1+Q");
    const auto& all = *code.document->timeline().row_named("A")->clips()[0]->qualifiers();
    ASSERT_EQ(all.size(), 2U);
    EXPECT_LT(all[0].time(), 4) << "within the clip";
    EXPECT_GT(all[0].time(), 3.9);
    EXPECT_EQ(all[1].time(), 2);
    EXPECT_EQ(all[1].category(), "cat");
    EXPECT_EQ(all[1].real_local_time().size(), 8U);
}

// What was coded before opening is not guessed at.
TEST(press, stamps_no_clip_of_an_earlier_run_that_does_not_hold_the_time) {
    coding code;
    ASSERT_TRUE(
        code.document->apply({"Rows",
                              "",
                              {operation::insert_row{0, testing::row_of("r", "A")},
                               operation::insert_clip{shared_text("r"), testing::clip_of("c", 1, 4)},
                               operation::insert_clip{shared_text("r"), testing::clip_of("e", 2, 9)}}}));
    code.run("3+Q 9+R");
    EXPECT_EQ(code.clips(), "A 1-4 2-9(Q)");
    EXPECT_EQ(code.fired, "Q+3 R+9~");
}

TEST(press, goes_up_by_itself_by_tab_and_when_all_must) {
    const auto auto_up = [](double seconds, bool delayed) {
        return of_a([=](auto& a) {
            a.set_auto_up(true);
            a.set_delayed_up(delayed);
            a.set_auto_up_duration(seconds);
        });
    };
    const auto no_tab = of_a([](auto& a) { a.set_ignore_tab(true); });
    struct fired_case {
        setting set;
        const char* script;
        const char* fired;
    };
    const fired_case cases[] = {
        {auto_up(2, false), "1+A 1.2-A 9", "A+1 A-3(auto up)"},
        {auto_up(2, false), "1+A 3+B 4-A 5-B", "A+1 A-3(auto up) B+3 B-5"},
        {auto_up(2, false), "1+A 5+A", "A+1 A-3(auto up) A+5"},
        {auto_up(5, false), "1+A 1.2-A 3+A 9-A", "A+1 A-9"},
        {auto_up(5, true), "1+A 2-A 3+A 8-A 20", "A+1 A-13(auto up)"},
        {auto_up(0, false), "1+A 2-A", "A+1 A-1(auto up)"},
        {auto_up(-1, false), "1+A", "A+1 A-1(auto up)"},
        {auto_up(2, true), "1+A 9-A 10-A 10.5 12", "A+1 A-11(auto up)"},
        {auto_up(2, false), "1+A 2tab 9", "A+1 A-2(tab)"},
        {no_tab, "1+A 2+N 3tab 4-A", "A+1 N+2 N-3(tab) A-4"},
    };
    for (const auto& one : cases) {
        coding code;
        one.set(code);
        code.run(one.script);
        EXPECT_EQ(code.fired, one.fired) << one.script;
    }
    coding code;
    auto_up(60, false)(code);
    no_tab(code);
    code.run("1+A 2+N");
    ASSERT_EQ(code.engine->down_buttons().size(), 2U);
    EXPECT_EQ(code.engine->next_due(), 61);
    code.engine->set_buttons({button_of("A", button_type::clip)}, 3);
    code.engine->release_all(4);
    EXPECT_EQ(code.fired, "A+1 N+2 N-3 A-4");
}

TEST(press, that_cannot_be_recorded_is_told_and_made_up_for_in_order) {
    coding code;
    std::vector<std::string> told;
    const auto listening =
        code.engine->trouble.connect([&](const failure& why) { told.push_back(why.message()); });
    code.run("1+A 2-A 3+B");
    code.files.set_fault([](int) { return ENOSPC; });
    code.run("4+A 5+Q 6-B 7-A");
    EXPECT_EQ(code.fired, "A+1 A-2 B+3 A+4! Q+5! B-6! A-7!");
    EXPECT_EQ(code.engine->unrecorded(), 4U);
    EXPECT_EQ(code.clips(), "A 1-2; B; live B 3");
    code.files.set_fault([](int) { return 0; });
    code.run("7.5 8.5");
    EXPECT_EQ(code.engine->unrecorded(), 0U);
    EXPECT_EQ(code.clips(), "A 1-2 4-7(Q); B 3-6(Q)");
    ASSERT_EQ(told.size(), 2U);
    EXPECT_NE(told[0].find("chron data journal"), std::string::npos);
    EXPECT_EQ(told[1], "");
}

TEST(press, whose_release_alone_cannot_be_recorded_keeps_its_clip) {
    coding code;
    code.run("1+A 2+B 3+Q");
    code.files.set_fault([](int) { return ENOSPC; });
    code.run("4-A");
    EXPECT_EQ(code.clips(), "A; B; live A 1; live B 2") << "growing as before";
    code.files.set_fault({});
    code.run("5-B 6.5");
    EXPECT_EQ(code.clips(), "A 1-4(Q); B 2-5(Q)");
}

TEST(press, whose_clip_got_lost_makes_it_again_and_tells) {
    coding code;
    std::string told;
    const auto listening = code.engine->made_again.connect([&](const std::string& name) { told += name; });
    code.buttons[1].set_merge_clips(true);
    code.run("1+B 4-B 2+A 3+B");
    for (const auto& growing : std::vector(code.document->timeline().live_clips()))
        const_cast<sxy_DATA_root&>(code.document->timeline()).remove_clip(growing.clip->id());
    code.run("5-A 6-B");
    EXPECT_EQ(code.clips(), "B 1-6; A 2-5");
    EXPECT_EQ(told, "AB");
    ASSERT_TRUE(code.document->save_now());
    EXPECT_EQ(testing::rows_found_in(code.folder.path()), testing::rows_text(code.document->timeline()));
}

TEST(press, makes_a_clip_that_says_by_whom_where_and_in_which_colour_it_was_made) {
    coding code;
    code.document->set_author("me");
    auto display = code.buttons[0].display();
    display.button_colour = colour{1, 0, 0, 1};
    code.buttons[0].set_display(display);
    code.run("1+A 2-A");
    code.document->set_collection_number(7);
    code.run("3+A");
    const auto growing = code.document->timeline().live_clips().front().clip;
    EXPECT_EQ(growing->coll_id(), 7) << "so that after a kill it says so, too";
    EXPECT_EQ(growing->edit_info().author.str(), "me");
    code.run("4-A");
    const auto& clips = code.document->timeline().row_named("A")->clips();
    ASSERT_EQ(clips.size(), 2U);
    for (const auto& clip : clips) {
        EXPECT_EQ(clip->col(), display.button_colour) << "its own, though the row has one";
        EXPECT_EQ(clip->edit_info().author.str(), "me");
        EXPECT_GT(clip->edit_info().edit_seconds.value_or(0), 1.7e9);
    }
    EXPECT_EQ(clips[0]->coll_id(), 0);
    EXPECT_EQ(clips[1]->coll_id(), 7);
    // A clip from before gets the number with its next change, and gives it back with that.
    code.run("1.5+Q");
    EXPECT_EQ(code.document->timeline().row_named("A")->clips()[0]->coll_id(), 7);
}

// The clip that is met starts later and has all that can be coded on one.
TEST(press, merging_keeps_what_was_coded_on_the_clips_that_it_meets) {
    coding code;
    sxy_CLIP met = testing::clip_of("met", 10, 20);
    met.set_stars(4);
    met.set_note(std::make_shared<const clip_note>(clip_note().with_text("left foot")));
    met.set_triggers({{12, shared_text("pause"), {}}});
    met.set_pause_items({{13}});
    met.set_group("G");
    code.run("30+A 31-A");
    const auto row = code.document->timeline().row_named("A")->uuid();
    ASSERT_TRUE(code.document->apply({"Clip", "", {operation::insert_clip{row, met}}}));
    code.buttons[0].set_merge_clips(true);
    code.run("5+A 12-A");
    EXPECT_EQ(code.clips(), "A 5-20 30-31");
    const auto kept = code.document->timeline().row_named("A")->clips()[0];
    EXPECT_NE(kept->id(), "met");
    EXPECT_EQ(kept->stars(), 4);
    EXPECT_EQ(kept->note_text(), "left foot");
    EXPECT_EQ(kept->triggers().size(), 1U);
    EXPECT_EQ(kept->pause_items().size(), 1U);
    EXPECT_EQ(kept->group(), "G");
}

// Clips that begin before the press, one within another, and what they lead to on both sides.
TEST(press, merging_joins_all_that_its_clip_leads_to) {
    struct merge_case {
        std::vector<clip_span> there;
        const char* clips;
    };
    const merge_case cases[] = {
        {{{0, 2}, {2, 4}, {4, 10}, {14, 15}, {15, 20}, {20.5, 21}}, "A 0-20 20.5-21 30-31"},
        {{{0, 11}, {1, 2}, {3, 4}, {5, 5}}, "A 0-14 30-31"},
        {{{0, 6}, {1, 5}, {5.5, 10}}, "A 0-14 30-31"},
        {{{0, 1}, {9, 25}, {24, 26}}, "A 0-1 9-26 30-31"},
        {{{9, 9}, {15, 15}}, "A 9-9 10-14 15-15 30-31"},
    };
    for (const auto& one : cases) {
        coding code;
        code.buttons[0].set_merge_clips(true);
        code.run("30+A 31-A");
        const auto row = code.document->timeline().row_named("A")->uuid();
        timeline_edit edit{"Clips", "", {}};
        for (const auto& span : one.there) {
            const auto id = "there " + std::to_string(edit.operations.size());
            edit.operations.emplace_back(
                operation::insert_clip{row, testing::clip_of(id, span.start, span.end)});
        }
        ASSERT_TRUE(code.document->apply(std::move(edit)));
        code.run("10+A 14-A");
        EXPECT_EQ(code.clips(), one.clips);
    }
}

TEST(press, that_a_kill_broke_off_made_its_clip_up_to_the_last_noted_time) {
    coding code;
    code.run("50+A 60 61-A");
    ASSERT_TRUE(code.document->save_now());  // so that no save changes the folder while it is copied
    const auto after_death = [&] {
        const testing::temporary_folder grave;
        std::filesystem::copy(code.folder.path(), grave / "copy", std::filesystem::copy_options::recursive);
        simulated_run_loop loop;
        auto opened = timeline_document::open(grave / "copy", loop, code.files);
        return opened ? clips_text(opened.value()->timeline()) : opened.message();
    };
    // Playback went back: what was noted there before does not count.
    code.engine->press("id B", 10);
    EXPECT_EQ(after_death(), "A 50-61; B 10-10");
    code.loop.advance(0.2);
    code.engine->tick(10.2);
    EXPECT_EQ(after_death(), "A 50-61; B 10-10") << "too soon to be noted";
    code.loop.advance(0.1);
    code.engine->tick(10.3);
    EXPECT_EQ(after_death(), "A 50-61; B 10-10.3");
}

TEST(press, a_clip_taken_away_while_it_grows_is_not_made_again) {
    coding code;
    code.run("1+A");
    const auto growing = code.document->timeline().live_clips().front().clip->id();
    ASSERT_TRUE(code.document->apply({"Take away", "", {operation::remove_clip{growing}}}));
    code.run("2-A 3+A 4-A");
    EXPECT_EQ(code.clips(), "A 3-4");
}

}  // namespace
}  // namespace vistels
