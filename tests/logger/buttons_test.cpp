// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <set>

#include "logger/code_window.h"
#include "support/temporary_folder.h"
#include "util/json.h"
#include "util/property_list.h"

namespace vistels {
namespace {

using testing::put_file;
using testing::temporary_folder;

property_dictionary from_json(const std::string& text) {
    return *read_json(text, "test").value().dictionary();
}

// Values of every kind, some of the wrong type, unknown ones, and an order of its own.
constexpr const char* stored_button = R"({
  "zz own key": {"deep": [1, 2.5, "x"]}, "button Type": 20, "name": "Héctor", "name category": "Player",
  "uuid": "U1", "secs in": 3, "secs out": "wrong", "auto up": 1, "delayed up": true, "auto up duration": 0.75,
  "merge clips": false, "bindings": {"shift": true, "key code": 5, "chars no mod": "g", "odd": 1},
  "logger rect": "{{1, 2}, {100.5, 46}}", "mask color": "0.123456,0.5,1", "button color": "no colour",
  "alpha": 0.5, "button actions array": [{"action": "ON_DOWN_SET_UP"}], "Timer Clip Offset": 1.25})";

TEST(button, is_written_as_it_was_read) {
    const auto stored = from_json(stored_button);
    EXPECT_EQ(write_button(read_button(stored)), stored);
    const auto button = read_button(stored);
    EXPECT_EQ(button.name(), "Héctor");
    EXPECT_TRUE(button.is(button_type::qualifier));
    EXPECT_EQ(button.secs_in(), 3);
    EXPECT_EQ(button.secs_out(), 0);
    EXPECT_TRUE(button.auto_up()) << "by \"delayed up\"";
    EXPECT_EQ(button.display().logger_rect, (rectangle{1, 2, 100.5, 46}));
    EXPECT_FALSE(button.display().button_colour);
    EXPECT_EQ(button.made_colour()->red, 0.123456);
}

TEST(button, a_change_touches_its_own_key_only) {
    auto stored = from_json(stored_button);
    auto button = read_button(stored);
    button.set_secs_out(2);
    auto display = button.display();
    display.mask_colour.reset();
    display.button_colour = colour{1, 0, 0, 0.5};
    button.set_display(display);
    stored.set("secs out", 2.0);
    stored.remove("mask color");
    stored.set("button color", "1.0,0.0,0.0,0.5");
    EXPECT_EQ(write_button(button), stored);
    button.set_delayed_up(false);
    EXPECT_TRUE(read_button(write_button(button)).auto_up());
}

// Every key with a value that is not its default, in the stored order.
constexpr const char* every_key =
    R"({"uuid":"U","name":"N","name category":"C","button Type":40,"UUID pic":"P",
  "action link to UUID":"R","sort_order":3,"secs in":1.5,"secs out":2.5,"auto up":true,"delayed up":true,
  "auto up duration":0.5,"allow overlapping clips":true,"merge clips":true,"block qualifiers":true,
  "center fire":true,"pause_movies":true,"note up":true,"note down":true,"last up":true,"last down":true,
  "next up":true,"next down":true,"clock_time":true,"down_time":true,"ignore_tab":true,
  "Timer Clip Cumulative":true,"Timer Clip Count Down":true,"Timer Clip Offset":90.5,"renamer":true,
  "lister":true,"lister button text":"L","hide name":true,"fit_name":true,"show keys":true,"button lock":true,
  "filter":"RN=a","output_string":"7","output_type":"count","output_time_format":"m","remove_prefix_0s":true,
  "multi formula dictionary":{"a":1},"attribute stage":"Last and Next","trigger_type":"going up",
  "triggers":[{"trigger_time":4.5,"trigger_type":"going down","trigger_colour":"0.12345678,0.0,1.0"}],
  "Cartesian":true,"Cartesian_Traces":2,"trace_type":"t","cartesian_scale_start_X":1.5,
  "cartesian_scale_start_Y":2.5,"cartesian_scale_end_X":3.5,"cartesian_scale_end_Y":4.5,
  "cartesian_scale_step_X":0.5,"cartesian_scale_step_Y":0.25,
  "bindings":{"caps":true,"cmd":true,"shift":true,"opt":true,"ctr":true,"function":true,"key code":9,
  "chars no mod":"g","chars":"G"},"logger rect":"1,2,3,4","alpha":0.5,"mask color":"1.0,0.0,0.0",
  "button color":"0.0,1.0,0.0","button name color":"0.0,0.0,1.0","linked mask and button colors":true,
  "button name font size":9.5,"font_size_formula_output":8.5,"font_name_formula_output":"F",
  "font_name_button_name":"G","font_colour_formula_output":"0.5,0.5,0.5","button shape":"Plain Pentagon 1",
  "real picture":true,"hide down state":true,"show pinger":true,"change color":true,"change name":true,
  "change category":true,"name offset x":1.5,"name offset y":2.5,"show keys offset x":3.5,
  "show keys offset y":4.5,"filter output offset x":5.5,"filter output offset y":6.5,
  "multi formula output offset x":7.5,"multi formula output offset y":8.5,"start_click_pt x":9.5,
  "start_click_pt y":10.5})";

TEST(button, every_key_is_written_from_its_field_and_only_when_it_is_not_at_its_default) {
    const auto stored = from_json(every_key);
    auto button = read_button(stored);
    for (const auto& entry : stored) button.set_stored(entry.key, {});
    const auto written = write_button(button);
    EXPECT_EQ(written, stored);
    EXPECT_EQ(write_button(read_button(written)), stored);
    // Each is read alone, too, but for the scales, which count with the first of them, and comes back alone.
    for (const auto& entry : stored) {
        property_dictionary one;
        one.add("uuid", "U");
        one.set(entry.key, entry.value);
        auto alone = read_button(one);
        const bool is_scale = entry.key.starts_with("cartesian_scale_") && !entry.key.ends_with("start_X");
        alone.set_stored(entry.key, {});
        const auto again = write_button(alone);
        EXPECT_EQ(again.contains(entry.key), !is_scale) << entry.key;
        // What goes back to its default leaves no key behind.
        auto reset = read_button(from_json(R"({"uuid":"U"})"));
        for (const auto& had : one) reset.set_stored(had.key, had.value);
        const auto left = write_button(reset);
        EXPECT_EQ(left.contains(entry.key), is_scale || entry.key == "uuid") << entry.key;
    }
}

TEST(button, what_a_changed_value_holds_beside_is_kept) {
    auto button = read_button(from_json(
        R"({"uuid":"U","bindings":{"key code":5,"shift":true,"odd":1},"triggers":[7,{"trigger_time":2,"own":"x"},
        {"trigger_time":2,"own":"y"},[],{"trigger_time":5,"trigger_type":"going up"}]})"));
    auto display = button.display();
    display.binding->key_code = 6;
    display.binding->shift = false;
    button.set_display(display);
    auto triggers = button.triggers();
    ASSERT_EQ(triggers.size(), 3U);
    triggers.push_back({3, shared_text("going up"), {}});
    button.set_triggers(triggers);
    EXPECT_EQ(write_button(button), from_json(R"({"uuid":"U","bindings":{"key code":6,"odd":1},
        "triggers":[7,{"trigger_time":2,"own":"x"},{"trigger_time":2,"own":"y"},[],
        {"trigger_time":5,"trigger_type":"going up"},{"trigger_time":3.0,"trigger_type":"going up"}]})"));
    // One that goes takes its own keys along, one that changes keeps them.
    triggers.pop_back();
    triggers.erase(triggers.begin());
    triggers[0].trigger_Type = shared_text("going up");
    button.set_triggers(triggers);
    EXPECT_EQ(*write_button(button).array("triggers"),
              *from_json(R"({"t":[7,{"trigger_time":2.0,"trigger_type":"going up"},
                  {"trigger_time":5,"trigger_type":"going up"},[]]})")
                   .array("t"));
    button = read_button(write_button(button));
    triggers[1].trigger_Time = 6;
    button.set_triggers(triggers);
    EXPECT_EQ(*write_button(button).array("triggers"),
              *from_json(R"({"t":[7,{"trigger_time":2.0,"trigger_type":"going up"},
                  {"trigger_time":6.0,"trigger_type":"going up"},[]]})")
                   .array("t"));
}

TEST(button, a_scale_that_does_not_count_does_not_come_back_with_the_first) {
    const auto stored = from_json(R"({"uuid":"U","cartesian_scale_end_X":50,"cartesian_scale_end_Y":7})");
    auto button = read_button(stored);
    auto field = button.field();
    field.Cartesian = true;
    button.set_field(field);
    EXPECT_EQ(write_button(button).number("cartesian_scale_end_X"), 50);
    field.scale_start_X = 0;
    field.scale_end_Y = 9;
    button.set_field(field);
    EXPECT_EQ(read_button(write_button(button)).field(), field);
}

TEST(button, stages_and_pictures_that_are_none_do_no_harm) {
    EXPECT_EQ(attribute_stage_name("B"), "Next Qualifier");
    EXPECT_EQ(attribute_stage_name("Last and Next"), "Last and Next Qualifier");
    EXPECT_EQ(attribute_stage_name("b"), "unknown stage type");
    auto button = read_button(from_json(R"({"uuid":"U","attribute stage":"later","UUID pic":"P"})"));
    EXPECT_EQ(button.stage(), attribute_stage::last);
    EXPECT_EQ(write_button(button).text_or_empty("attribute stage"), "later");
    EXPECT_EQ(button_picture_path(button, "/l"), "/l/pic P.png");
    button.set_picture_id("../../x");
    EXPECT_EQ(button_picture_path(button, "/l"), "");
}

TEST(button, types_that_are_not_known_are_kept) {
    EXPECT_EQ(button_type_name(button_type_code("Timer Clip")), "Timer Clip");
    EXPECT_EQ(button_type_name(11), "missing markup type");
    EXPECT_EQ(button_type_code("clip"), 0);
    const auto stored = from_json(R"({"uuid":"a","button Type":77})");
    EXPECT_EQ(write_button(read_button(stored)), stored);
}

TEST(button, bindings_match_by_character_and_modifiers) {
    struct binding_case {
        const char* binding;
        key_stroke key;
        bool matches;
    };
    const key_stroke g{false, false, false, false, 42, "g"};
    key_stroke shift_g = g;
    shift_g.shift = true;
    shift_g.chars_no_mod = "G";
    const key_stroke f5{false, false, false, false, 71, ""};
    const binding_case cases[] = {
        {R"({"chars no mod":"g","key code":5})", g, true},
        {R"({"chars no mod":"G"})", g, true},
        {R"({"chars no mod":"g","caps":true,"function":true})", g, true},
        {R"({"chars no mod":"g"})", shift_g, false},
        {R"({"chars no mod":"g","shift":true})", shift_g, true},
        {R"({"chars no mod":"g","shift":true})", g, false},
        {R"({"chars no mod":"g","cmd":true})", g, false},
        {R"({"chars no mod":"g","ctr":true})", g, false},
        {R"({"chars no mod":"h","key code":42})", g, false},
        {R"({"key code":71})", f5, true},
        {R"({"key code":70})", f5, false},
        {R"({})", {}, false},
        {R"({"chars no mod":"Ä"})", {false, false, false, false, 0, "ä"}, true},
        {R"({"chars no mod":"Ж"})", {false, false, false, false, 0, "ж"}, true},
        {R"({"chars no mod":"gg"})", g, false},
    };
    for (const auto& one : cases) {
        EXPECT_EQ(binding_matches(read_key_binding(from_json(one.binding)), one.key), one.matches)
            << one.binding;
    }
    const auto stored =
        from_json(R"({"cmd":true,"ctr":true,"key code":65535,"chars no mod":"g","chars":"G"})");
    EXPECT_EQ(write_key_binding(read_key_binding(stored)), stored);
    EXPECT_EQ(read_key_binding(from_json(R"({"key code":65536})")).key_code, 0);
}

TEST(code_window, is_saved_as_it_was_loaded_and_counted) {
    const temporary_folder folder;
    const std::string document = std::string(R"({"of its own":true,"version markup":7,"array objects":[)") +
                                 stored_button +
                                 R"(,"odd",{"name":"no uuid"},{"name":"twin","uuid":"U1"},[1]]})";
    put_file(folder / button_file_name, write_property_list(from_json(document)));
    put_file(folder / logger_file_name, "<plist><dict><key>mine</key><true/></dict></plist>");
    const auto loaded = load_button_dict(folder.path());
    ASSERT_TRUE(loaded) << loaded.message();
    std::set<std::string> uuids;
    for (const auto& button : loaded.value().buttons) uuids.insert(button->uuid());
    EXPECT_EQ(uuids.size(), 3U) << "each can be told from the others";
    ASSERT_TRUE(save_button_dict(loaded.value(), folder / "deep/new"));
    EXPECT_EQ(*read_property_list_file(folder / "deep/new/button dict.plist").value().dictionary(),
              from_json(document));
    // Where buttons went, what is none stays among those that are left.
    auto fewer = loaded.value();
    fewer.buttons.resize(1);
    const auto left = write_button_dict(fewer);
    ASSERT_EQ(left.array("array objects")->size(), 3U);
    EXPECT_EQ(*(*left.array("array objects"))[1].text(), "odd");
    ASSERT_TRUE(save_button_dict(loaded.value(), folder.path()));
    EXPECT_EQ(read_dictionary_or_empty(folder / logger_file_name),
              from_json(R"({"mine":true,"number of markups":3})"));
}

TEST(code_window, a_file_that_cannot_be_read_is_named) {
    for (const char* content : {"", "<plist", "<plist><array/></plist>"}) {
        const temporary_folder folder;
        put_file(folder / button_file_name, content);
        const auto loaded = load_button_dict(folder.path());
        ASSERT_FALSE(loaded);
        EXPECT_NE(loaded.message().find(folder / button_file_name), std::string::npos);
    }
    EXPECT_FALSE(load_button_dict("/nowhere"));
    const auto others = from_json(R"({"version markup":1,"array objects":[1,"x"]})");
    EXPECT_TRUE(read_button_dict(others).buttons.empty());
    EXPECT_EQ(write_button_dict(read_button_dict(others)), others);
    // What is of another kind than it should be stays, until there is something to put in its place.
    const auto odd = from_json(R"({"version markup":"3","array objects":{"own":1}})");
    auto all = read_button_dict(odd);
    EXPECT_EQ(write_button_dict(all), odd);
    all.version_markup = 2;
    all.buttons.emplace_back(read_button(from_json(R"({"uuid":"U"})")));
    EXPECT_EQ(write_button_dict(all), from_json(R"({"version markup":2,"array objects":[{"uuid":"U"}]})"));
    all.buttons.clear();
    EXPECT_TRUE(write_button_dict(read_button_dict(write_button_dict(all))).contains("array objects"));
}

TEST(code_window, settings_keep_what_they_do_not_know) {
    const temporary_folder folder;
    const auto stored = from_json(
        R"({"x":[1],"linked timeline uuid":"T","big scroller offset x":4,"background color":"1,0,0"})");
    put_file(folder / logger_info_file_name, write_property_list(stored));
    auto settings = load_logger_settings(folder.path());
    EXPECT_EQ(settings.linked_timeline_uuid, "T");
    ASSERT_TRUE(save_logger_settings(settings, folder.path()));
    EXPECT_EQ(read_dictionary_or_empty(folder / logger_info_file_name), stored);
    settings.scroller_offset_y = 12;
    settings.scroller_offset_x = 0;
    settings.background_colour.reset();
    ASSERT_TRUE(save_logger_settings(settings, folder.path()));
    settings = load_logger_settings(folder.path());
    EXPECT_EQ(settings.kept,
              from_json(R"({"x":[1],"linked timeline uuid":"T","big scroller offset y":12.0})"));
}

TEST(code_window, is_one_value_of_which_only_what_changed_is_written) {
    const temporary_folder folder;
    put_file(folder / button_file_name,
             write_property_list(from_json(R"({"array objects":[{"uuid":"U"}]})")));
    const auto offsets = from_json(R"({"sync data dict - markup":{"source object - markup":"S"},"x":1})");
    put_file(folder / logger_offsets_file_name, write_property_list(offsets));
    const auto loaded = load_code_window(folder.path());
    ASSERT_TRUE(loaded) << loaded.message();
    EXPECT_EQ(loaded.value().offsets.source_object(), "S");
    auto changed = loaded.value();
    EXPECT_EQ(changed, loaded.value());
    EXPECT_EQ(changed.buttons.buttons[0].pointer(), loaded.value().buttons.buttons[0].pointer());
    auto& first = changed.buttons.buttons[0];
    first = changed_button(first, [](auto& button) { button.set_secs_in(3); });
    EXPECT_FALSE(changed == loaded.value());
    first = changed_button(first, [](auto& button) { button.set_secs_in(0); });
    EXPECT_EQ(changed, loaded.value()) << "by its values";
    changed.settings.scroller_offset_x = 4;
    ASSERT_TRUE(save_code_window(changed, folder / "b", &loaded.value()));
    EXPECT_EQ(names_in_folder(folder / "b"), std::vector<std::string>{logger_info_file_name});
    ASSERT_TRUE(save_code_window(changed, folder / "c"));
    EXPECT_EQ(load_code_window(folder / "c").value().offsets, loaded.value().offsets);
}

TEST(code_window, the_general_one_has_distinct_keys_and_places) {
    const auto general = general_code_window();
    std::set<std::string> keys{"j", "k", "l", "i", "o"};  // of the transport
    const std::size_t taken = keys.size();
    for (const auto& record : general.buttons) {
        const auto& button = *record;
        EXPECT_EQ(button.allow_overlapping_clips(), button.is(button_type::clip)) << "no press is cut";
        keys.insert(button.display().binding->chars_no_mod);
        const auto place = button.display().logger_rect;
        EXPECT_TRUE(place.width >= 40 && place.height >= 32);
        for (const auto& other : general.buttons) {
            const auto beside = other->display().logger_rect;
            const bool apart = place.x + place.width < beside.x || beside.x + beside.width < place.x ||
                               place.y + place.height < beside.y || beside.y + beside.height < place.y;
            EXPECT_TRUE(apart || other->uuid() == button.uuid()) << button.name() << " on " << other->name();
        }
        EXPECT_EQ(write_button(read_button(write_button(button))), write_button(button));
    }
    EXPECT_EQ(keys.size(), taken + general.buttons.size());
}

}  // namespace
}  // namespace vistels
