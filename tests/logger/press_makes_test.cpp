// SPDX-License-Identifier: GPL-3.0-or-later
//
// What presses of the other types make: attributes, timer clips, triggers, renamed clips; notes and places.
#include "logger/coding.h"
#include "logger/timer_clock.h"

namespace vistels {
namespace {

using testing::coding;

TEST(attribute, goes_to_the_qualifiers_of_its_stage) {
    using enum attribute_stage;
    const struct {
        const char* what;
        attribute_stage stage;
        const char* script;
        const char* clips;
        const char* fired;  // of the attribute
    } cases[] = {
        {"the last", last, "1+A 2+Q 3+X 4-A", "A 1-4(Q[X])", "X+3"},
        {"on all its clips", last, "1+A 1+B 2+Q 3+X 4-A 5-B", "A 1-4(Q[X]); B 1-5(Q[X])", "X+3"},
        {"of two qualifiers the later", last, "1+A 2+Q 2+R 3+X 4-A", "A 1-4(Q,R[X])", "X+3"},
        {"none was pressed", last, "1+A 3+X 4-A", "A 1-4", "X+3~"},
        {"one that found no clip is none", last, "1+Q 3+X", "", "X+3~"},
        {"twice", last, "1+A 2+Q 3+X 3.5-X 3.6+X 4-A", "A 1-4(Q[X,X])", "X+3 X-3.5 X+3.6"},
        {"the next", next, "1+A 2+Q 3+X 3.5+R 4-A", "A 1-4(Q,R[X])", "X+3?"},
        {"the next that finds a clip", next, "1+X 2+Q 3+A 4+R 5-A", "A 3-5(R[X])", "X+1?"},
        {"only one", next, "1+A 3+X 3.5+Q 3.6+R 4-A", "A 1-4(Q[X],R)", "X+3?"},
        {"not after a jump", next, "1+A 3+X 3.5j2 3.6+Q 4-A", "A 1-4(Q)", "X+3?"},
        {"both", last_and_next, "1+A 2+Q 3+X 3.5+R 4-A", "A 1-4(Q[X],R[X])", "X+3?"},
        {"both without a last", last_and_next, "1+A 3+X 3.5+R 4-A", "A 1-4(R[X])", "X+3?"},
    };
    for (const auto& one : cases) {
        coding code;
        code.button('X').set_stage(one.stage);
        std::string fired;
        const auto telling = code.engine->fired.connect([&](const button_fired& event) {
            if (event.name == "X") fired += code.fired.substr(code.fired.rfind('X')) + " ";
        });
        code.run(one.script);
        EXPECT_EQ(code.clips(), one.clips) << one.what;
        EXPECT_EQ(fired, std::string(one.fired) + " ") << one.what;
    }
    coding code;
    code.button('A').set_merge_clips(true);
    code.run("1+A 3-A 4+A 4.5+Q 3-A 5+X");
    EXPECT_EQ(code.clips(), "A 1-4(Q[X])") << "also on the clip into which its own was merged";
    const auto item = code.document->timeline().row_named("A")->clips()[0]->qualifiers()->front();
    const auto attribute = item.attributes().front();
    EXPECT_EQ(attribute.attribute_category.str(), "cat");
    EXPECT_EQ(attribute.attribute_time, 5);
    EXPECT_FALSE(attribute.uuid.str().empty());
}

TEST(timer_clip, has_its_clock_and_makes_its_row_one_of_timers) {
    coding code;
    auto& timer = code.button('T');
    timer.set_secs_in(9);
    timer.set_secs_out(9);
    timer.set_timer_offset(90);
    timer.set_timer_is_cumulative(true);
    ASSERT_TRUE(code.document->apply({"Row", "", {operation::insert_row{0, testing::row_of("r", "T")}}}));
    code.run("10+T 20-T 30+T 35-T 40+T");
    EXPECT_EQ(code.clips(), "T 10-20 30-35; live T 40") << "from press to release";
    const auto& timeline = code.document->timeline();
    const auto row = timeline.row_named("T");
    EXPECT_TRUE(row->is_timer_row());
    const auto up = row->clips()[1];
    EXPECT_EQ(up->mins(), 1.5);
    const struct {
        double at;
        double shown;
    } moments[] = {{29, 100}, {30, 100}, {33, 103}, {36, 105}};
    for (const auto& one : moments) EXPECT_EQ(timer_clocks(*row).of_clip(1, one.at), one.shown) << one.at;
    EXPECT_EQ(timer_clocks(*row).of_growing(*timeline.live_clips()[0].clip, 42), 107);
    code.run("45-T");
    EXPECT_EQ(timer_clocks(*timeline.row_named("T")).of_row(9), std::nullopt);
    EXPECT_EQ(timer_clocks(*timeline.row_named("T")).of_row(12), 92);
    EXPECT_EQ(timer_clocks(*timeline.row_named("T")).of_row(25), 100) << "it stands between clips";
    timer.set_timer_is_cumulative(false);
    timer.set_timer_counts_down(true);
    code.run("50+T 60-T");
    EXPECT_EQ(timer_clocks(*timeline.row_named("T")).of_row(54), 86);
    EXPECT_EQ(timer_clocks(*timeline.row_named("T")).of_row(99), 80);
}

TEST(trigger, goes_to_the_button_that_it_names_or_marks_clips) {
    coding code;
    std::string added;
    const auto telling = code.engine->trigger_added.connect([&](const std::string& button) {
        const auto one = code.engine->button(button)->triggers().back();
        added += button + " " + one.trigger_Type.str() + " ";
        append_shortest(added, one.trigger_Time);
    });
    code.button('G').set_action_link_to("id A");
    code.run("3+G");
    EXPECT_EQ(added, "id A going down 3");
    EXPECT_EQ(code.engine->button("id A")->triggers().size(), 1U);
    EXPECT_EQ(code.clips(), "");
    code.button('G').set_action_link_to("a row");
    code.button('G').set_trigger_type("going up");
    code.run("4+A 4+B 5-G 6+G 7-G 7+G 8-A 9-B");
    for (const char* name : {"A", "B"}) {
        const auto triggers = code.document->timeline().row_named(name)->clips()[0]->triggers();
        ASSERT_EQ(triggers.size(), 2U) << name;
        EXPECT_EQ(triggers[1].trigger_Type.str(), "going up");
        EXPECT_EQ(triggers[1].trigger_Time, 7);
    }
    code.run("99-G 99+G");
    EXPECT_EQ(code.fired.substr(code.fired.rfind(' ')), " G+99~");
}

TEST(renamer, moves_the_selected_clips_to_its_row_and_recolours_them) {
    const struct {
        const char* what;
        bool name, category, colour;
        const char* rows;  // "name/category: clips"
        bool recolours;
    } cases[] = {
        {"all three", false, false, false, "Z/zz:2 A/cat:0 B/cat:0", true},
        {"the name", true, false, false, "Z/zz:0 A/cat:0 B/cat:0 Z/cat:2", false},
        {"the category", false, true, false, "Z/zz:0 A/cat:0 B/cat:0 A/zz:1 B/zz:1", false},
        {"the colour", false, false, true, "Z/zz:0 A/cat:1 B/cat:1", true},
    };
    for (const auto& one : cases) {
        coding code;
        auto row = testing::row_of("z", "Z");
        row.set_category("zz");
        ASSERT_TRUE(code.document->apply({"Row", "", {operation::insert_row{0, row}}}));
        auto& renamer = code.button('N');
        renamer.set_renamer(true);
        renamer.set_type(button_type::clip);
        renamer.set_name("Z");
        renamer.set_category("zz");
        renamer.set_changes_name(one.name);
        renamer.set_changes_category(one.category);
        renamer.set_changes_colour(one.colour);
        auto display = renamer.display();
        display.button_colour = colour{1, 0, 0, 1};
        renamer.set_display(display);
        code.run("1+A 2-A 1+B 3-B");
        std::vector<std::string> selected{"gone"};
        for (const auto& each : code.document->timeline().rows()) {
            for (const auto& clip : each->clips()) selected.push_back(clip->id());
        }
        code.engine->set_selected_clips([&] { return selected; });
        const auto before = code.document->revision();
        code.run("9+N 10-N");
        EXPECT_EQ(code.document->revision(), before + 1) << one.what << ": one edit";
        std::string rows;
        for (const auto& each : code.document->timeline().rows()) {
            rows += (rows.empty() ? "" : " ") + each->name() + "/" + each->category() + ":" +
                    std::to_string(each->clips().size());
        }
        EXPECT_EQ(rows, one.rows) << one.what;
        const auto place = code.document->timeline().find_clip(selected[1]);
        EXPECT_EQ(place->clip->col().has_value(), one.recolours) << one.what;
    }
}

TEST(press, asks_for_notes_and_tells_places) {
    coding code;
    std::vector<std::string> noted;
    const auto listening = code.engine->note_wanted.connect(
        [&](const std::string& clip, const std::string&) { noted.push_back(clip); });
    code.button('A').set_note_down(true);
    code.button('B').set_note_up(true);
    code.button('B').set_merge_clips(true);
    code.run("1+A");
    ASSERT_EQ(noted.size(), 1U);
    EXPECT_TRUE(code.document->timeline().find_clip(noted[0])->is_live) << "the press goes on";
    code.run("2-A 2+B 3-B 3+B 4-B");
    ASSERT_EQ(noted.size(), 3U);
    EXPECT_EQ(noted[1], noted[2]) << "on the clip into which it was merged";

    auto& field = code.button('Q');
    button_field drawn{true, 0, "", 100.0, 0, 200, 50, 10, 0};
    field.set_field(drawn);
    const auto stamped_at = [&](const press_manner& manner) {
        code.set_buttons();
        code.engine->press("id Q", 3.5, manner);
        code.engine->release("id Q", 3.5);
        return code.document->timeline().row_named("B")->clips()[0]->qualifiers()->back().pos();
    };
    EXPECT_EQ(stamped_at({}), std::nullopt) << "a key is nowhere";
    EXPECT_EQ(stamped_at({press_cause::press, false, point{0.27, 0.5}}), (point{130, 25}));
    field.set_center_fire(true);
    EXPECT_EQ(stamped_at({press_cause::press, false, point{0.27, 0.1}}), (point{150, 25}));
    drawn.scale_start_X.reset();
    field.set_field(drawn);
    EXPECT_EQ(stamped_at({}), (point{0.5, 0.5}));
}

// All that is put on a clip that grows in memory alone comes with it.
TEST(press, of_live_clips_that_are_not_saved_is_on_record_when_it_has_ended) {
    coding code;
    code.engine->set_settings({false, 5, true});
    code.button('A').set_secs_in(1);
    code.button('A').set_note_down(true);
    std::string noted;
    const auto listening =
        code.engine->note_wanted.connect([&](const std::string& clip, const std::string&) { noted = clip; });
    const auto before = code.document->revision();
    code.run("5+A 6+Q 7+X 7.5+G");
    EXPECT_EQ(code.document->revision(), before) << "nothing is on record";
    EXPECT_EQ(code.fired, "A+5 Q+6 X+7 G+7.5");
    ASSERT_EQ(code.engine->unsaved_growing().size(), 1U);
    EXPECT_EQ(code.clips(), "");
    code.run("8-A");
    EXPECT_EQ(code.document->revision(), before + 1);
    EXPECT_EQ(code.clips(), "A 4-8(Q[X])");
    EXPECT_EQ(code.document->timeline().row_named("A")->clips()[0]->triggers().size(), 1U);
    EXPECT_EQ(noted, code.document->timeline().row_named("A")->clips()[0]->id());
    EXPECT_TRUE(code.engine->unsaved_growing().empty());
    code.run("9+A 10esc");
    EXPECT_EQ(code.clips(), "A 4-8(Q[X])");
    EXPECT_TRUE(code.engine->unsaved_growing().empty());
}

}  // namespace
}  // namespace vistels
