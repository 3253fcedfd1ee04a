// SPDX-License-Identifier: GPL-3.0-or-later
#include "video/collection_edit.h"

#include <gtest/gtest.h>

#include <functional>

#include "support/stored_collection.h"

namespace vistels {
namespace {

using testing::dictionary;

// "X", twice "A" and two without an identifier.
video_collection_ROOT damaged_collection() {
    property_array items;
    double number = 0;
    for (const char* uuid : {"X", "A", "A", "", ""}) {
        items.emplace_back(
            dictionary({{"UUID single video - g", uuid}, {"Vistel name UUID - coll", ++number}}));
    }
    auto collection = read_collection(dictionary({{"array video group items", items}}));
    // The data of the first was not found.
    for (const auto& vistel : collection.vistels()) {
        if (vistel->uuid() != "X") vistel->set_data_folder("/none");
    }
    return collection;
}

std::string state_of(const video_collection_ROOT& collection) {
    std::string text;
    for (const auto& vistel : collection.vistels()) {
        text += vistel->uuid() + " " + std::to_string(vistel->number()) + " " +
                std::to_string(vistel->manual_start_offset().value_or(0)) + "\n";
    }
    return text;
}

TEST(collection_edit, tells_vistels_with_one_identifier_apart_there_and_back) {
    const std::pair<const char*, std::function<void(video_collection_ROOT&)>> changes[] = {
        {"offset", [](auto& c) { c.find_vistel("2")->set_manual_start_offset(2); }},
        {"offset", [](auto& c) { c.find_vistel("3")->set_manual_start_offset(3); }},
        {"offset", [](auto& c) { c.find_vistel("5")->set_manual_start_offset(5); }},
        {"removal", [](auto& c) { c.remove_vistel(*c.find_vistel("1")); }},
        {"removal", [](auto& c) { c.remove_vistel(*c.find_vistel("2")); }},
        {"removal", [](auto& c) { c.remove_vistel(*c.find_vistel("3")); }},
        {"order", [](auto& c) { c.move_vistel(*c.find_vistel("3"), 0); }},
        {"order", [](auto& c) { c.move_vistel(*c.find_vistel("5"), 1); }},
    };
    for (const auto& [name, change] : changes) {
        auto collection = damaged_collection();
        const auto before = state_of(collection);
        auto wanted = detached_copy(collection);
        change(wanted);
        ASSERT_NE(state_of(wanted), before) << name;
        const auto there = difference(collection, wanted);
        const auto back = difference(wanted, collection);
        for (int times = 0; times < 2; ++times) {
            for (const auto& [edit, state] : {std::pair(there, state_of(wanted)), std::pair(back, before)}) {
                const auto stored = read_collection_edit(write_collection_edit(edit));
                const auto applied = apply_collection_edit(collection, stored);
                ASSERT_TRUE(applied) << name << applied.message();
                EXPECT_EQ(state_of(collection), state) << name;
            }
        }
    }
}

// As after a kill, when the collection was saved already.
TEST(collection_edit, made_once_more_takes_no_other_vistel) {
    auto collection = damaged_collection();
    auto wanted = detached_copy(collection);
    wanted.remove_vistel(*wanted.find_vistel("2"));
    const auto edit = difference(collection, wanted);
    for (int times = 0; times < 2; ++times) {
        ASSERT_TRUE(apply_collection_edit(collection, edit, edit_manner::lenient));
        EXPECT_EQ(state_of(collection), state_of(wanted));
    }
}

}  // namespace
}  // namespace vistels
