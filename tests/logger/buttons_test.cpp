// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <set>

#include "logger/logger_Dict_funcs.h"
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
                                 stored_button + R"(,{"name":"no uuid"},{"name":"twin","uuid":"U1"}]})";
    put_file(folder / button_file_name, write_property_list(from_json(document)));
    put_file(folder / logger_file_name, "<plist><dict><key>mine</key><true/></dict></plist>");
    const auto loaded = load_button_dict(folder.path());
    ASSERT_TRUE(loaded) << loaded.message();
    std::set<std::string> uuids;
    for (const auto& button : loaded.value().buttons) uuids.insert(button.uuid());
    EXPECT_EQ(uuids.size(), 3U) << "each can be told from the others";
    ASSERT_TRUE(save_button_dict(loaded.value(), folder / "deep/new"));
    EXPECT_EQ(*read_property_list_file(folder / "deep/new/button dict.plist").value().dictionary(),
              from_json(document));
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
    EXPECT_TRUE(read_button_dict(from_json(R"({"array objects":[1,"x"]})")).buttons.empty());
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
    settings.background_colour.reset();
    ASSERT_TRUE(save_logger_settings(settings, folder.path()));
    settings = load_logger_settings(folder.path());
    EXPECT_EQ(settings.scroller_offset_y, 12);
    EXPECT_FALSE(settings.background_colour);
}

TEST(code_window, the_general_one_has_distinct_keys_and_places) {
    const auto general = general_code_window();
    std::set<std::string> keys{"j", "k", "l", "i", "o"};  // of the transport
    const std::size_t taken = keys.size();
    for (const auto& button : general.buttons) {
        keys.insert(button.display().binding->chars_no_mod);
        const auto place = button.display().logger_rect;
        EXPECT_TRUE(place.width >= 40 && place.height >= 32);
        for (const auto& other : general.buttons) {
            const auto beside = other.display().logger_rect;
            const bool apart = place.x + place.width < beside.x || beside.x + beside.width < place.x ||
                               place.y + place.height < beside.y || beside.y + beside.height < place.y;
            EXPECT_TRUE(apart || other.uuid() == button.uuid()) << button.name() << " on " << other.name();
        }
        EXPECT_EQ(write_button(read_button(write_button(button))), write_button(button));
    }
    EXPECT_EQ(keys.size(), taken + general.buttons.size());
}

}  // namespace
}  // namespace vistels
