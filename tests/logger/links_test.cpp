// SPDX-License-Identifier: GPL-3.0-or-later
//
// What presses set off in other buttons by links and triggers.
#include <cerrno>

#include "logger/coding.h"

namespace vistels {
namespace {

using testing::button_of;
using testing::coding;

struct one_link {
    char from;
    const char* code;
    char to;
};

void add_links(coding& code, const std::vector<one_link>& links) {
    for (const auto& one : links) testing::add_link(code.button(one.from), one.code, std::string(1, one.to));
}

TEST(links, fire_in_their_order_and_each_button_once_in_a_round) {
    const struct {
        const char* what;
        std::vector<one_link> links;
        const char* script;
        const char* fired;
        const char* clips;
    } cases[] = {
        {"down and up",
         {{'A', "ON_DOWN_SET_DOWN", 'B'}, {'A', "ON_UP_SET_UP", 'B'}},
         "1+A 3-A",
         "A+1 B+1(link) A-3 B-3(link)",
         "A 1-3; B 1-3"},
        {"crosswise",
         {{'A', "ON_DOWN_SET_UP", 'B'}, {'A', "ON_UP_SET_DOWN", 'B'}},
         "1+B 2+A 3-A 4-B 5+A",
         "B+1 A+2 B-2(link) A-3 B+3(link) A+5 B-5(link)",
         "B 1-2 3-5; A 2-3; live A 5"},
        {"toggle",
         {{'N', "ON_DOWN_TOGGLE", 'A'}, {'N', "ON_UP_TOGGLE", 'A'}},
         "1+N 2-N",
         "N+1 A+1(link) N-2 A-2(link)",
         "A 1-2"},
        {"links of a linked button go before the next of the array",
         {{'N', "ON_DOWN_SET_DOWN", 'A'}, {'N', "ON_DOWN_SET_DOWN", 'Q'}, {'A', "ON_DOWN_SET_DOWN", 'B'}},
         "1+N",
         "N+1 A+1(link) B+1(link) Q+1(link)",
         "A; B; live A 1; live B 1"},
        {"a state that is there fires nothing",
         {{'N', "ON_DOWN_SET_DOWN", 'A'}, {'A', "ON_DOWN_SET_DOWN", 'B'}, {'N', "ON_DOWN_SET_UP", 'T'}},
         "1+A 2+N",
         "A+1 B+1(link) N+2",
         "A; B; live A 1; live B 1"},
        {"a loop ends",
         {{'A', "ON_DOWN_SET_DOWN", 'B'}, {'B', "ON_DOWN_TOGGLE", 'A'}, {'B', "ON_DOWN_SET_UP", 'B'}},
         "1+A",
         "A+1 B+1(link)",
         "A; B; live A 1; live B 1"},
        {"all down, over those that have the link",
         {{'A', "ON_ALL_DOWN_SET_DOWN", 'N'},
          {'B', "ON_ALL_DOWN_SET_DOWN", 'N'},
          {'T', "ON_ALL_DOWN_SET_UP", 'N'}},
         "1+A 2+B",
         "A+1 B+2 N+2(link)",
         "A; B; live A 1; live B 2"},
        {"all up",
         {{'A', "ON_ALL_UP_SET_UP", 'N'}, {'B', "ON_ALL_UP_SET_UP", 'N'}},
         "1+N 1+A 1+B 2-A 3-B",
         "N+1 A+1 B+1 A-2 B-3 N-3(link)",
         "A 1-2; B 1-3"},
        {"any up",
         {{'A', "ON_ANY_UP_SET_UP", 'N'}, {'B', "ON_ANY_UP_SET_UP", 'N'}},
         "1+N 1+A 1+B 2-A",
         "N+1 A+1 B+1 A-2 N-2(link)",
         "A 1-2; B; live B 1"},
        {"the last source counts by its own press in a round",
         {{'N', "ON_DOWN_SET_DOWN", 'A'},
          {'N', "ON_DOWN_SET_DOWN", 'B'},
          {'A', "ON_ALL_DOWN_SET_DOWN", 'Q'},
          {'B', "ON_ALL_DOWN_SET_DOWN", 'Q'}},
         "1+N",
         "N+1 A+1(link) B+1(link) Q+1(link)",
         "A; B; live A 1; live B 1"},
        {"a block makes nothing and lasts for its round",
         {{'N', "ON_DOWN_BLOCK", 'B'}, {'N', "ON_DOWN_SET_DOWN", 'B'}, {'N', "ON_UP_SET_UP", 'B'}},
         "1+N 2-N 3+B 4-B",
         "N+1 B+1(link)# N-2 B-2(link) B+3 B-4",
         "B 3-4"},
        {"a block as it goes up gives its clip up",
         {{'N', "ON_DOWN_BLOCK", 'A'}, {'N', "ON_DOWN_SET_UP", 'A'}},
         "1+A 2+N",
         "A+1 N+2 A-2(link)#",
         ""},
        {"a block that comes after does nothing",
         {{'N', "ON_DOWN_SET_DOWN", 'A'}, {'N', "ON_DOWN_BLOCK", 'A'}},
         "1+N",
         "N+1 A+1(link)",
         "A; live A 1"},
        {"private, known without a text, unknown, and to nobody",
         {{'A', "PRIVATE_LINK_TO", 'B'},
          {'A', "ON_ANY_DOWN_SET_DOWN", 'B'},
          {'A', "ON_BLUE_MOON", 'B'},
          {'A', "ON_DOWN_SET_DOWN", '?'}},
         "1+A",
         "A+1",
         "A; live A 1"},
    };
    for (const auto& one : cases) {
        coding code;
        add_links(code, one.links);
        code.run(one.script);
        EXPECT_EQ(code.fired, one.fired) << one.what;
        EXPECT_EQ(code.clips(), one.clips) << one.what;
    }
}

TEST(links, of_an_auto_up_and_of_buttons_beside) {
    coding code;
    add_links(code, {{'N', "ON_DOWN_SET_DOWN", 'A'}, {'A', "ON_UP_SET_UP", 'N'}});
    code.button('A').set_auto_up(true);
    code.button('A').set_auto_up_duration(2);
    code.run("1+N 4");
    EXPECT_EQ(code.fired, "N+1 A+1(link) A-3(auto up) N-3(link)");
    // Nobody releases it.
    coding delayed;
    add_links(delayed, {{'N', "ON_DOWN_SET_DOWN", 'A'}});
    delayed.button('A').set_auto_up(true);
    delayed.button('A').set_delayed_up(true);
    delayed.button('A').set_auto_up_duration(2);
    delayed.run("1+N 2-N 60");
    EXPECT_EQ(delayed.fired, "N+1 A+1(link) N-2 A-3(auto up)");
    coding beside;
    add_links(beside, {{'A', "ON_DOWN_SET_DOWN", 'B'}});
    beside.button('A').set_next_down(true);
    beside.run("1+A");
    EXPECT_EQ(beside.fired, "A+1 B+1(link)") << "once a round";
}

std::vector<button_record> but_for(const coding& code, const std::string& names) {
    std::vector<button_record> kept;
    for (const auto& one : code.buttons) {
        if (names.find(one.name()) == std::string::npos) kept.emplace_back(one);
    }
    return kept;
}

TEST(links, begin_behind_a_jump_and_put_nothing_down_at_the_end) {
    coding jump;
    add_links(jump, {{'A', "ON_UP_SET_DOWN", 'B'}});
    jump.run("10+A 20j5 7+B 8-B 9");
    EXPECT_EQ(jump.fired, "A+10 A-20 B+5(link) B-8");
    EXPECT_EQ(jump.clips(), "A 10-20; B 5-8");
    coding loop;
    add_links(loop, {{'A', "ON_UP_SET_DOWN", 'B'}, {'B', "ON_UP_SET_DOWN", 'A'}});
    loop.run("10+A 20l5 30l5");
    EXPECT_EQ(loop.fired, "A+10 A-20 B+5(link) B-30 A+5(link)");
    EXPECT_EQ(loop.clips(), "A 10-20; B 5-30; live A 5");
    loop.engine->release_all(32);
    EXPECT_TRUE(loop.engine->down_buttons().empty());
    EXPECT_EQ(loop.clips(), "A 5-32 10-20; B 5-30");
    coding timed;
    add_links(timed, {{'A', "ON_UP_SET_DOWN", 'B'}});
    timed.button('B').set_auto_up(true);
    timed.button('B').set_auto_up_duration(3);
    timed.run("10+A 20j5 9");
    EXPECT_EQ(timed.fired, "A+10 A-20 B+5(link) B-8(auto up)");
    coding gone;
    add_links(gone, {{'A', "ON_UP_SET_DOWN", 'B'}, {'A', "ON_UP_SET_DOWN", 'N'}});
    gone.run("1+A 2");
    gone.engine->set_buttons(but_for(gone, "AB"), 3);
    EXPECT_EQ(gone.fired, "A+1 A-3");
    EXPECT_TRUE(gone.engine->down_buttons().empty());
}

TEST(links, set_looks_of_this_run) {
    coding code;
    add_links(code, {{'N', "ON_DOWN_SET_MARK_COLOUR", 'A'},
                     {'N', "ON_DOWN__BRING_TO_FRONT", 'A'},
                     {'N', "ON_UP__SEND_TO_BACK", 'A'},
                     {'N', "ON_UP_CENTER_ON", 'B'},
                     {'N', "ON_DOWN_CLEAR_TRACES", 'X'}});
    auto links = code.button('N').action_links();
    links[0].action_Colour_to_set = colour{1, 0, 0, 1};
    code.button('N').set_action_links(links);
    button_field field;
    field.Cartesian = true;
    field.Cartesian_Traces = 2;
    code.button('X').set_field(field);
    code.set_buttons();
    const auto before = code.engine->buttons();
    std::string centred;
    const auto wanted = code.engine->center_wanted.connect([&](const std::string& one) { centred += one; });
    for (const double at : {0.1, 0.2, 0.3}) {
        code.engine->press("id X", at, {press_cause::press, false, point{at, 0.5}});
        code.engine->release("id X", at);
    }
    ASSERT_EQ(code.engine->looks().of("id X")->traces.size(), 2U);
    EXPECT_EQ(code.engine->looks().of("id X")->traces.front().x, 0.2);
    code.engine->press("id N", 1);
    EXPECT_GT(code.engine->looks().of("id A")->depth, 0);
    EXPECT_TRUE(code.engine->looks().of("id X")->traces.empty());
    code.engine->release("id N", 2);
    EXPECT_LT(code.engine->looks().of("id A")->depth, 0);
    EXPECT_EQ(centred, "id B");
    code.engine->press("id A", 3);
    code.engine->release("id A", 4);
    EXPECT_EQ(code.document->timeline().row_named("A")->clips()[0]->col(), (colour{1, 0, 0, 1}));
    EXPECT_EQ(code.engine->buttons(), before) << "nothing of it is saved";
}

TEST(links, of_a_round_are_on_record_together_or_wait_together) {
    coding code;
    add_links(code, {{'N', "ON_DOWN_SET_DOWN", 'A'},
                     {'N', "ON_DOWN_SET_DOWN", 'B'},
                     {'N', "ON_UP_SET_UP", 'A'},
                     {'N', "ON_UP_SET_UP", 'B'},
                     {'B', "ON_UP_SET_DOWN", 'Q'}});
    code.run("1+A 2-A 3+N");
    code.files.set_fault([](int) { return ENOSPC; });
    code.run("4-N 5-Q 6+R");
    EXPECT_EQ(code.clips(), "A 1-2; B; live A 3; live B 3");
    code.files.set_fault({});
    code.run("8");
    EXPECT_EQ(code.clips(), "A 1-2 3-4; B 3-4(Q,R)");
}

trigger_event_ITEM trigger(double at, const char* type) {
    return {at, shared_text(type), {}};
}

struct playhead_at final : transport {
    double seconds = 0;
    double collection_time() const override { return seconds; }
    double collection_time_at(double) const override { return seconds; }
    bool is_playing() const override { return true; }
    double rate() const override { return 1; }
    void play() override {}
    void pause() override {}
    void set_rate(double) override {}
    void seek(double) override {}
};

TEST(triggers, come_in_order_with_presses_between_two_ticks) {
    const struct {
        const char* what;
        char button;
        trigger_event_ITEM trigger;
        char pressed;
        double at;
        const char* fired;
    } cases[] = {
        {"before the press", 'B', trigger(10.001, "going up"), 'B', 10.005, "B+10.005"},
        {"and what the press does to it is later", 'B', trigger(10.001, "going down"), 'A', 10.005,
         "B+10.001(trigger) A+10.005 B-10.005(link)"},
        {"behind the press", 'B', trigger(10.006, "going down"), 'A', 10.005, "A+10.005 B+10.006(trigger)"},
        {"one that a press adds is passed", 'N', trigger(30, "going down"), 'G', 10.005, "G+10.005"},
        {"also where the press is from before the tick", 'N', trigger(30, "going down"), 'G', 9.995,
         "G+9.995"},
    };
    for (const auto& one : cases) {
        coding code;
        add_links(code, {{'A', "ON_DOWN_SET_UP", 'B'}});
        code.button('G').set_action_link_to("id B");
        code.button(one.button).set_triggers({one.trigger});
        code.set_buttons();
        code.loop.advance_to(10);
        code.engine->follow_playing(9, true);
        code.engine->tick(10);
        code.engine->press(std::string("id ") + one.pressed, one.at);
        code.engine->tick(10.016);
        EXPECT_EQ(code.fired, one.fired) << one.what;
    }
    coding late;
    late.set_buttons();
    late.engine->follow_playing(0, true);
    late.loop.advance_to(60);
    late.button('B').set_triggers({trigger(10, "going down")});
    late.engine->set_buttons(but_for(late, ""), 60);
    late.engine->press("id N", 61);
    EXPECT_EQ(late.fired, "N+61") << "nothing from before there was one";
    // Pressed before a loop turned, told after it.
    coding turned;
    turned.button('B').set_triggers({trigger(7, "going down")});
    turned.button('A').set_auto_up(true);
    turned.button('A').set_auto_up_duration(3);
    turned.set_buttons();
    playhead_at playing;
    turned.engine->set_transport(&playing);
    turned.engine->follow_playing(playing.seconds = 9, true);
    turned.engine->tick(playing.seconds = 10);
    playing.seconds = 5;
    turned.engine->playhead_jumped(10.01, 5, true);
    turned.engine->press("id A", 10.005);
    turned.engine->tick(playing.seconds = 6);
    EXPECT_EQ(turned.fired, "A+10.005");
    turned.engine->tick(playing.seconds = 9);
    EXPECT_EQ(turned.fired, "A+10.005 B+7(trigger) A-13.005(auto up)");
}

TEST(triggers, put_buttons_down_and_up_as_the_playhead_passes) {
    const struct {
        const char* what;
        std::vector<std::pair<char, trigger_event_ITEM>> triggers;
        const char* script;  // "3p" begins to play, "4s" stops
        const char* fired;
    } cases[] = {
        {"at their own times, in order",
         {{'B', trigger(2.5, "going up")},
          {'A', trigger(2.25, "going down")},
          {'B', trigger(2, "going down")}},
         "1p 3",
         "B+2(trigger) A+2.25(trigger) B-2.5(trigger)"},
        {"also that on which it begins, once",
         {{'A', trigger(1, "going down")}},
         "1p 2-A 3s 3p 4",
         "A+1(trigger)"},
        {"and not again when it goes on from there",
         {{'N', trigger(2, "going down")}, {'N', trigger(2, "going up")}},
         "1p 2 2s 2p 3s",
         "N+2(trigger) N-2(trigger)"},
        {"but when it came back to there",
         {{'N', trigger(2, "going down")}, {'N', trigger(2, "going up")}},
         "1p 2s 2j1 1j2 2p 3s",
         "N+2(trigger) N-2(trigger) N+2(trigger) N-2(trigger)"},
        {"not while it stands", {{'A', trigger(2, "going down")}}, "1 3", ""},
        {"nor by a jump over it", {{'A', trigger(4, "going down")}}, "1p 3j8 9", ""},
        {"but behind a jump", {{'A', trigger(9, "going down")}}, "1p 3j8 10", "A+9(trigger)"},
        {"again after a jump back", {{'N', trigger(2, "going down")}}, "1p 3j1 3", "N+2(trigger)"},
        {"nothing of another type", {{'A', trigger(2, "unassigned")}}, "1p 3", ""},
    };
    for (const auto& one : cases) {
        coding code;
        for (const auto& [name, added] : one.triggers)
            testing::add_trigger(code.button(name), added.trigger_Time, added.trigger_Type.str().c_str());
        code.run(one.script);
        EXPECT_EQ(code.fired, one.fired) << one.what;
    }
    coding code;
    code.button('A').set_triggers({trigger(2, "going down")});
    add_links(code, {{'A', "ON_DOWN_SET_DOWN", 'B'}});
    code.run("1p 3");
    EXPECT_EQ(code.fired, "A+2(trigger) B+2(link)");
    press_settings none;
    none.disable_triggers = true;
    code.engine->release_all(4);
    code.engine->set_settings(none);
    code.fired.clear();
    code.run("4j1 5");
    EXPECT_EQ(code.fired, "");
}

TEST(link_kinds, have_their_texts_and_are_kept_as_stored) {
    EXPECT_EQ(link_text("ON_ALL_DOWN_SET_DOWN"), "Down < All Down");
    EXPECT_EQ(link_text("PRIVATE_LINK_TO"), "Private Link");
    EXPECT_EQ(link_text("ON_ANY_DOWN_SET_UP"), "unknown action type");
    EXPECT_EQ(link_kinds().size(), 25U);
    property_dictionary stored;
    property_array links;
    property_dictionary older;
    older.add("action", "ON_DOWN_CENTRE_ON");
    older.add("linked button UUID", "id B");
    older.add("later key", 7);
    links.emplace_back(older);
    links.emplace_back("no dictionary");
    stored.add("button actions array", links);
    markup_Button_Item button = read_button(stored);
    ASSERT_EQ(button.action_links().size(), 1U);
    EXPECT_EQ(button.action_links()[0].action_TYPE, "ON_DOWN_CENTER_ON");
    EXPECT_EQ(write_button(button), stored);
    auto changed = button.action_links();
    changed[0].action_Colour_to_set = colour{0.5, 0.25, 0, 1};
    button.set_action_links(changed);
    const auto written = write_button(button);
    const auto& first = *(*written.array("button actions array"))[0].dictionary();
    EXPECT_EQ(first.text_or_empty("action color"), "0.5,0.25,0.0");
    EXPECT_EQ(first.integer("later key"), 7);
    EXPECT_EQ(written.array("button actions array")->size(), 2U);
}

}  // namespace
}  // namespace vistels
