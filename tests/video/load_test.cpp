// SPDX-License-Identifier: GPL-3.0-or-later
#include "video/video_coll_LOAD.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <functional>
#include <set>

#include "support/stored_collection.h"
#include "support/temporary_folder.h"
#include "util/property_list.h"
#include "util/safe_write.h"
#include "video/collection_edit.h"
#include "video/video_coll_Offsets.h"

namespace vistels {
namespace {

using testing::dictionary;
using testing::file_bytes;
using testing::put_file;
using testing::stored_collection;
using testing::temporary_folder;

TEST(load_collection, finds_parts_by_number_and_others_in_natural_order) {
    const stored_collection stored;
    const struct {
        std::vector<const char*> files;
        std::vector<const char*> wanted;
    } cases[] = {
        {{"part 002.mp4", "part 001.mp4", "part 003.mp4"}, {"part 001.mp4", "part 002.mp4", "part 003.mp4"}},
        {{"part 003.mp4", "part 001.mp4"}, {"part 001.mp4", "", "part 003.mp4"}},
        {{"take 10.mov", "take 9.mov", "take 2.mov"}, {"take 2.mov", "take 9.mov", "take 10.mov"}},
        {{"part 002.mp4", "extra.mp4", "notes.txt", ".hidden.mp4"}, {"extra.mp4", "part 002.mp4", ""}},
    };
    stored.write_vistel("A", {{0, 1}, {0, 1}, {0, 1}});
    for (const auto& one : cases) {
        std::filesystem::remove(stored.vistel_folder("A") + "part 001.mp4");
        std::filesystem::remove(stored.vistel_folder("A") + "part 002.mp4");
        for (const char* name : one.files) put_file(stored.vistel_folder("A") + name, "movie");
        const auto loaded = stored.load();
        const auto parts = loaded.collection.find_vistel("A")->parts().parts;
        ASSERT_EQ(parts.size(), 3U);
        for (std::size_t index = 0; index < 3; ++index) {
            EXPECT_EQ(path_name(parts[index].path), one.wanted[index]);
            if (!*one.wanted[index]) {
                EXPECT_TRUE(loaded.collection.find_vistel("A")->problem());
            }
        }
        for (const char* name : one.files) std::filesystem::remove(stored.vistel_folder("A") + name);
    }
}

TEST(load_collection, what_is_wrong_with_one_vistel_leaves_the_other) {
    const std::pair<const char*, std::function<void(const stored_collection&)>> faults[] = {
        {"part 1", [](const auto& s) { std::filesystem::remove(s.vistel_folder("A") + "part 001.mp4"); }},
        {"single video.plist",
         [](const auto& s) { std::filesystem::remove(s.vistel_folder("A") + "single video.plist"); }},
        {"single video.plist",
         [](const auto& s) { put_file(s.vistel_folder("A") + "single video.plist", "<pl"); }},
        {"Single Videos/A", [](const auto& s) { std::filesystem::remove_all(s.vistel_folder("A")); }},
    };
    for (const auto& [named, make_fault] : faults) {
        const stored_collection stored;
        make_fault(stored);
        auto loaded = stored.load();
        ASSERT_EQ(loaded.messages.size(), 1U) << named;
        EXPECT_NE(loaded.messages[0].message().find("error found when loading vistel in collection"),
                  std::string::npos);
        EXPECT_NE(loaded.messages[0].message().find(named), std::string::npos)
            << loaded.messages[0].message();
        EXPECT_FALSE(loaded.collection.find_vistel("2")->problem());
        EXPECT_EQ(loaded.collection.find_vistel("2")->parts().duration(), 4);
        // Saving does not put a default record in the place of a damaged one.
        const auto damaged = file_bytes(stored.vistel_folder("A") + "single video.plist");
        loaded.collection.find_vistel("A")->set_manual_start_offset(2);
        EXPECT_TRUE(save_collection(loaded.collection, stored.folder()));
        const auto now = file_bytes(stored.vistel_folder("A") + "single video.plist");
        EXPECT_TRUE(damaged != "<pl" || now == damaged);
        EXPECT_EQ(stored.load().collection.find_vistel("A")->manual_start_offset(), 2);
    }
}

// As a program leaves it that dies between the collection's record and those of its vistels.
TEST(load_collection, movies_whose_record_is_missing_are_shown_and_get_one) {
    const stored_collection stored;
    const std::string record = stored.vistel_folder("A") + "single video.plist";
    // A copy of it that was being saved is not to be written over.
    std::filesystem::rename(record, record + std::string(previous_mark) + "1");
    auto loaded = stored.load();
    EXPECT_EQ(loaded.collection.find_vistel("A")->data_folder(), "");
    std::filesystem::remove(record + std::string(previous_mark) + "1");

    loaded = stored.load();
    const auto vistel = loaded.collection.find_vistel("A");
    ASSERT_EQ(vistel->parts().parts.size(), 2U);
    EXPECT_NE(vistel->problem().message().find("single video.plist"), std::string::npos)
        << vistel->problem().message();
    EXPECT_FALSE(file_exists(record));
    ASSERT_TRUE(save_collection(loaded.collection, stored.folder()));
    EXPECT_EQ(read_dictionary_or_empty(record).array("drone_array")->size(), 2U);
}

TEST(load_collection, a_folder_without_a_readable_record_is_an_error_that_names_it) {
    const temporary_folder folder;
    for (const char* bytes : {"", "<plist><dict><key>a"}) {
        if (*bytes) put_file(folder / "video group.plist", bytes);
        const auto loaded = load_collection(folder.path());
        ASSERT_FALSE(loaded);
        EXPECT_NE(loaded.message().find(folder / "video group.plist"), std::string::npos);
    }
    EXPECT_FALSE(load_collection(folder / "none"));
    // A list that is no dictionary is an empty collection, and is kept when that is saved.
    const auto foreign = write_property_list(property_array{property_value("what is this")});
    put_file(folder / "video group.plist", foreign);
    auto loaded = load_collection(folder.path());
    ASSERT_TRUE(loaded);
    EXPECT_EQ(loaded.value().messages.size(), 1U);
    for (int times = 0; times < 2; ++times) {
        ASSERT_TRUE(save_collection(loaded.value().collection, folder.path()));
    }
    EXPECT_EQ(file_bytes(folder / "video group damaged 1.plist"), foreign);
    EXPECT_EQ(names_in_folder(folder.path()).size(), 2U);
}

TEST(load_collection, a_vistel_cannot_lead_out_of_its_folder) {
    const stored_collection stored;
    const auto item =
        dictionary({{"UUID single video - g", "../Single Videos/A"}, {"Vistel name UUID - coll", 1}});
    ASSERT_TRUE(safe_write(stored.folder() + "/video group.plist",
                           dictionary({{"array video group items", property_array{item}}})));
    EXPECT_EQ(stored.load().messages.size(), 1U);
}

TEST(collection_record, typed_values_that_change_replace_what_was_read) {
    const auto item = dictionary({{"UUID single video - g", "V"},
                                  {"overlay", dictionary({{"picture", "a.png"}, {"later", 1}})},
                                  {"proportion rect - coll", "text"},
                                  {"Vistel video name - coll", 3}});
    auto collection = read_collection(
        dictionary({{"flicked_in_state", "1"},
                    {"pushed vistel data", dictionary({{"V", property_array{0, 0, 1, 1}}, {"x", true}})},
                    {"array video group items", property_array{item, "no record"}}}));
    const auto vistel = collection.vistels().front();
    EXPECT_EQ(vistel->overlay(), (vistel_overlay{"a.png", {0, 0, 1, 1}, 1}));
    EXPECT_EQ(collection.pushed_vistels(), (std::vector<pushed_vistel>{{"V", {0, 0, 1, 1}}}));
    vistel->set_overlay(vistel_overlay{"b.png", {0, 0, 0.5, 0.5}, 0.25});
    vistel->set_flicked_in_rotation(-30);
    collection.set_pushed_vistels({{"W", {0, 0, 0.5, 1}}});
    const auto written = write_collection(collection, 0, "ARCHIVE");
    // Nothing is enlarged, whatever the record said.
    EXPECT_EQ(written.boolean("flicked_in_state"), false);
    EXPECT_EQ(*written.find("pushed vistel data"),
              property_value(dictionary({{"x", true}, {"W", "0,0,0.5,1"}})));
    EXPECT_EQ(written.text_or_empty("temp_completion_UUID_created_during_archive"), "ARCHIVE");
    const auto& items = *written.array("array video group items");
    ASSERT_EQ(items.size(), 2U);
    EXPECT_EQ(items[1], property_value("no record"));
    // Values of another type stay as long as nothing takes their place.
    EXPECT_EQ(items[0], property_value(dictionary({{"UUID single video - g", "V"},
                                                   {"proportion rect - coll", "text"},
                                                   {"flicked_IN_Vistel_Rotation", -30.0},
                                                   {"Vistel video name - coll", 3},
                                                   {"overlay", dictionary({{"picture", "b.png"},
                                                                           {"rect", "0,0,0.5,0.5"},
                                                                           {"opacity", 0.25},
                                                                           {"later", 1}})}})));
    vistel->set_overlay(std::nullopt);
    EXPECT_FALSE(write_vistel_item(*vistel).contains("overlay"));
}

TEST(collection_record, of_both_records_the_item_counts_but_lends_no_number_and_no_offset) {
    auto vistel =
        read_vistel_item(dictionary({{"Vistel video name - coll", "wide"}, {"drone_lock_clips", false}}));
    read_vistel_record(vistel, dictionary({{"Vistel video name - coll", "other"},
                                           {"Vistel name UUID - coll", 5.0},
                                           {"manual start offset", 2.0},
                                           {"drone_lock_clips", true},
                                           {"http file", "https://example.org/a"},
                                           {"proportion rect", "0,0,0.5,1"}}));
    EXPECT_EQ(vistel.name(), "wide");
    EXPECT_FALSE(vistel.locks_clips());
    EXPECT_EQ(vistel.http_file(), "https://example.org/a");
    EXPECT_EQ(vistel.proportion_rect(), (rectangle{0, 0, 0.5, 1}));
    EXPECT_EQ(vistel.number(), 0);
    EXPECT_FALSE(vistel.manual_start_offset());
    const auto own = write_vistel_record(vistel);
    EXPECT_EQ(own.number("Vistel name UUID - coll"), 5);
    EXPECT_EQ(own.number("manual start offset"), 2);
    EXPECT_FALSE(own.contains("Vistel video name"));
}

std::shared_ptr<single_Vistel_CTR> numbered(double number) {
    auto made = std::make_shared<single_Vistel_CTR>();
    made->set_uuid("N" + std::to_string(number));
    made->set_number(number);
    return made;
}

TEST(collection_record, new_numbers_are_above_all_before_and_at_most_100000) {
    const struct {
        std::vector<double> used;
        std::set<double> named;
        double first, second;
    } cases[] = {
        {{}, {}, 1, 2},
        {{3, 1}, {}, 4, 5},
        {{0, -7, 2.5}, {}, 3, 4},
        {{2, 100001}, {}, 3, 4},
        {{99999, 2}, {3, 4}, 100000, 1},
        {{100000, 2}, {1, 4, 100007}, 3, 5},
        {{2}, {7, -3, 1e300}, 8, 9},
        {{9007199254740991, 1e300}, {}, 1, 2},
    };
    for (const auto& one : cases) {
        video_collection_ROOT collection;
        for (const double number : one.used) collection.insert_vistel(99, numbered(number));
        collection.set_vistel_numbers_in_use(one.named);
        EXPECT_EQ(collection.take_vistel_number(), one.first);
        EXPECT_EQ(collection.take_vistel_number(), one.second);
    }
}

// Clips that name a vistel which is gone would come to show another one.
TEST(collection_record, a_number_is_not_given_again_when_its_vistel_has_gone) {
    const stored_collection stored;
    auto collection = stored.load().collection;
    const auto untouched = write_collection(collection, 0);
    EXPECT_FALSE(untouched.contains("largest vistel number"));
    // It was added and taken back, or removed, and the collection saved and loaded in between.
    const auto before = detached_copy(collection);
    auto changed = detached_copy(collection);
    changed.insert_vistel(2, numbered(3));
    ASSERT_TRUE(apply_collection_edit(collection, difference(before, changed)));
    ASSERT_TRUE(apply_collection_edit(collection, difference(changed, before)));
    EXPECT_EQ(collection.vistels().size(), 2U);
    ASSERT_TRUE(save_collection(collection, stored.folder()));
    auto loaded = stored.load().collection;
    EXPECT_EQ(loaded.take_vistel_number(), 4);
    loaded = stored.load().collection;
    const auto last = loaded.find_vistel("2");
    loaded.remove_vistel(*last);
    ASSERT_TRUE(save_collection(loaded, stored.folder()));
    EXPECT_EQ(stored.load().collection.take_vistel_number(), 4);
}

TEST(load_collection, a_vistel_without_a_usable_number_gets_one_that_no_clip_names) {
    const property_value unusable[] = {property_value(), 0.0, -3.0, "7", true};
    for (const auto& number : unusable) {
        const stored_collection stored;
        property_array items;
        items.emplace_back(dictionary({{"UUID single video - g", "A"}, {"Vistel name UUID - coll", 4.0}}));
        items.emplace_back(dictionary({{"UUID single video - g", "B"}, {"manual start offset", 2.0}}));
        if (!number.is_null()) items[1].dictionary()->set("Vistel name UUID - coll", number);
        ASSERT_TRUE(safe_write(stored.folder() + "/video group.plist",
                               dictionary({{"array video group items", items}})));
        ASSERT_TRUE(safe_write(
            stored.folder() + "/chron data.plist",
            dictionary({{"rows",
                         property_array{dictionary(
                             {{"row_name", "Shot"},
                              {"clips",
                               property_array{dictionary(
                                   {{"uuid", "C"},
                                    {"time_start", 1.0},
                                    {"time_end", 2.0},
                                    {"vistels_data",
                                     dictionary({{"vistels_array", property_array{dictionary(
                                                                       {{"vistel_id", 8.0}})}}})}})}}})}}})));
        auto loaded = stored.load();
        EXPECT_TRUE(loaded.has_new_numbers);
        ASSERT_EQ(loaded.messages.size(), 1U);
        EXPECT_NE(loaded.messages.front().message().find("\"B\" had no number, and has got 9"),
                  std::string::npos)
            << loaded.messages.front().message();
        EXPECT_EQ(loaded.collection.find_vistel("9")->uuid(), "B");
        EXPECT_EQ(offset_of_number(offsets_of(loaded.collection), 9), 2);
        ASSERT_TRUE(save_collection(loaded.collection, stored.folder()));
        loaded = stored.load();
        EXPECT_TRUE(loaded.messages.empty() && !loaded.has_new_numbers);
        EXPECT_EQ(loaded.collection.find_vistel("9")->uuid(), "B");
    }
}

TEST(load_collection, double_numbers_and_vistels_are_told_and_left) {
    const stored_collection stored;
    property_array items;
    for (const char* uuid : {"A", "B", "A"}) {
        items.emplace_back(dictionary({{"UUID single video - g", uuid}, {"Vistel name UUID - coll", 4.0}}));
    }
    ASSERT_TRUE(
        safe_write(stored.folder() + "/video group.plist", dictionary({{"array video group items", items}})));
    auto loaded = stored.load();
    EXPECT_EQ(loaded.messages.size(), 3U);  // the number twice, one vistel twice
    EXPECT_EQ(loaded.collection.find_vistel("4")->uuid(), "A");
    ASSERT_TRUE(save_collection(loaded.collection, stored.folder()));
    for (const auto& vistel : stored.load().collection.vistels()) EXPECT_EQ(vistel->number(), 4);
}

// The vistel's own record says other things of it than its collection does.
TEST(load_collection, a_save_keeps_what_the_own_record_says_as_read_until_somebody_changes_it) {
    const std::pair<const char*, property_value> own_values[] = {{"Vistel video name", "Camera 7"},
                                                                 {"Vistel name UUID", 77},
                                                                 {"vistel number", "x"},
                                                                 {"http file", "a"},
                                                                 {"capture preset", "b"}};
    const stored_collection stored;
    const std::string path = stored.vistel_folder("A") + "single video.plist";
    auto record = *read_property_list_file(path).value().dictionary();
    for (const auto& [key, value] : own_values) record.set(key, value);
    ASSERT_TRUE(safe_write(path, record));
    const auto item = dictionary({{"UUID single video - g", "A"},
                                  {"vistel_number_displayed", 3},
                                  {"Vistel name UUID - coll", 1.0},
                                  {"Vistel video name - coll", "Wide"},
                                  {"http file - coll", "c"},
                                  {"capture preset - collection", "d"}});
    ASSERT_TRUE(safe_write(stored.folder() + "/video group.plist",
                           dictionary({{"array video group items", property_array{item}}})));
    auto collection = stored.load().collection;
    const auto save = [&](const std::function<void(single_Vistel_CTR&)>& change) {
        auto changed = detached_copy(collection);
        change(*changed.find_vistel("A"));
        EXPECT_TRUE(apply_collection_edit(collection, difference(collection, changed)));
        EXPECT_TRUE(save_collection(collection, stored.folder()));
        return *read_property_list_file(path).value().dictionary();
    };
    const auto moved = save([](auto& vistel) { vistel.set_manual_start_offset(3); });
    EXPECT_EQ(moved.number("manual start offset"), 3);
    for (const auto& [key, value] : own_values) EXPECT_EQ(*moved.find(key), value) << key;
    const auto renamed = save([](auto& vistel) {
        vistel.set_name("Main");
        vistel.set_vistel_number_displayed(5);
        vistel.set_number(6);
    });
    EXPECT_EQ(renamed.text_or_empty("Vistel video name"), "Main");
    EXPECT_EQ(renamed.integer("vistel number"), 5);
    EXPECT_EQ(renamed.number("Vistel name UUID"), 6);
    EXPECT_EQ(renamed.text_or_empty("http file"), "a");
    // The name that it had before in the collection is a change of the record, too.
    EXPECT_FALSE(save([](auto& vistel) { vistel.set_name(""); }).contains("Vistel video name"));
}

TEST(load_collection, parts_that_disagree_with_the_files_change_no_record_by_themselves) {
    const stored_collection stored;
    std::filesystem::remove(stored.vistel_folder("A") + "part 001.mp4");
    put_file(stored.vistel_folder("B") + "camera 8.mov", "movie");
    const auto parts_on_disk = [&](const char* uuid) {
        const auto record =
            read_property_list_file(stored.vistel_folder(uuid) + "single video.plist").value();
        return property_value(*record.dictionary()->array("drone_array"));
    };
    const auto before_A = parts_on_disk("A");
    const auto before_B = parts_on_disk("B");
    auto loaded = stored.load();
    ASSERT_EQ(loaded.messages.size(), 2U);
    EXPECT_NE(loaded.messages[0].message().find("movie part 1 is missing"), std::string::npos);
    EXPECT_EQ(loaded.collection.find_vistel("A")->parts().parts.size(), 2U);
    EXPECT_EQ(loaded.collection.find_vistel("B")->parts().parts.size(), 2U);
    for (const char* uuid : {"A", "B"}) loaded.collection.find_vistel(uuid)->set_name("renamed");
    ASSERT_TRUE(save_collection(loaded.collection, stored.folder()));
    EXPECT_EQ(parts_on_disk("A"), before_A);
    EXPECT_EQ(parts_on_disk("B"), before_B);
    EXPECT_EQ(stored.load().collection.find_vistel("B")->name(), "renamed");
}

TEST(load_collection, parts_keep_their_files_when_they_are_moved_and_taken_out) {
    const stored_collection stored;
    auto loaded = stored.load();
    const auto vistel = loaded.collection.find_vistel("A");
    const auto both = vistel->parts();
    auto changed = both;
    std::swap(changed.parts[0], changed.parts[1]);
    vistel->set_parts(changed);
    ASSERT_TRUE(save_collection(loaded.collection, stored.folder()));
    const auto names = [&] {
        std::vector<std::string> found;
        for (const auto& part : stored.load().collection.find_vistel("A")->parts().parts) {
            found.push_back(path_name(part.path));
        }
        return found;
    };
    EXPECT_EQ(names(), (std::vector<std::string>{"part 002.mp4", "part 001.mp4"}));
    changed.parts.pop_back();
    vistel->set_parts(changed);
    ASSERT_TRUE(save_collection(loaded.collection, stored.folder()));
    EXPECT_EQ(names(), std::vector<std::string>{"part 002.mp4"});
    EXPECT_TRUE(file_exists(stored.vistel_folder("A") + "part 001.mp4"));
    // Taken back, as undoing does.
    vistel->set_parts(both);
    ASSERT_TRUE(save_collection(loaded.collection, stored.folder()));
    EXPECT_EQ(names(), (std::vector<std::string>{"part 001.mp4", "part 002.mp4"}));
    EXPECT_TRUE(stored.load().messages.empty());
    // The same for a vistel that does not know how its parts were found, with both put off the record.
    loaded = stored.load();
    const auto other = loaded.collection.find_vistel("A");
    other->set_parts_on_record(std::nullopt);
    other->set_parts({{both.parts[1]}});
    ASSERT_TRUE(save_collection(loaded.collection, stored.folder()));
    EXPECT_EQ(names(), std::vector<std::string>{"part 002.mp4"});
    EXPECT_TRUE(stored.load().messages.empty());
}

TEST(load_collection, a_vistel_that_cannot_be_saved_keeps_no_other_from_it) {
    const stored_collection stored;
    auto loaded = stored.load();
    for (const auto& vistel : loaded.collection.vistels()) vistel->set_manual_start_offset(7);
    std::filesystem::remove_all(stored.vistel_folder("A"));
    const auto saved = save_collection(loaded.collection, stored.folder());
    EXPECT_NE(saved.message().find("/A/"), std::string::npos) << saved.message();
    const auto record = read_property_list_file(stored.vistel_folder("B") + "single video.plist");
    EXPECT_EQ(record.value().dictionary()->number("manual start offset"), 7);
}

class files_without_links : public file_system {
  public:
    int hard_link(const std::string&, const std::string&) override { return EPERM; }
};

TEST(load_collection, a_record_whose_vistels_are_no_array_is_kept) {
    files_without_links without_links;
    for (file_system* files : {&machine_files(), static_cast<file_system*>(&without_links)}) {
        const temporary_folder folder;
        const auto foreign = write_property_list(dictionary({{"array video group items", "lost?"}}));
        put_file(folder / "video group.plist", foreign);
        auto loaded = load_collection(folder.path());
        ASSERT_TRUE(loaded);
        EXPECT_EQ(loaded.value().messages.size(), 1U);
        const auto saved = save_collection(loaded.value().collection, folder.path(), *files);
        ASSERT_TRUE(saved) << saved.message();
        EXPECT_EQ(file_bytes(folder / "video group damaged 1.plist"), foreign);
        EXPECT_EQ(names_in_folder(folder.path()).size(), 2U);
    }
}

TEST(load_collection, local_vistels_lie_in_the_local_folder) {
    const stored_collection stored;
    const temporary_folder local;
    std::filesystem::rename(stored.vistel_folder("B"), local / "B");
    EXPECT_EQ(stored.load().messages.size(), 1U);
    const auto loaded = load_collection(stored.folder(), local.path());
    ASSERT_TRUE(loaded);
    EXPECT_TRUE(loaded.value().messages.empty());
    EXPECT_EQ(loaded.value().collection.find_vistel("B")->data_folder(), local / "B");
}

TEST(load_collection, shortage_of_a_streamed_vistel) {
    const std::pair<double, const char*> cases[] = {{3.5, "3.5"}, {4, "4.0"}, {0.04, "0.0"}, {9.94, "9.9"},
                                                    {9.96, "10"}, {10, "10"}, {61.7, "62"}};
    for (const auto& [seconds, text] : cases) {
        EXPECT_EQ(
            shorter_than_expected("Wide", seconds).message(),
            std::string("Vistel 'Wide' is ") + text +
                " seconds shorter than expected.  \r\rRestarting HLS localizing for this vistel may fix "
                "this.");
    }
}

TEST(load_collection, vault_is_the_nearest_folder_with_its_ending) {
    EXPECT_EQ(vault_of("/a/b.VVault/Video Groups/c"), "/a/b.VVault");
    EXPECT_EQ(vault_of("/a.VVault/b.VVault/"), "/a.VVault/b.VVault");
    EXPECT_EQ(vault_of("/a/b.VVault2/c"), "");
    EXPECT_EQ(vistels_folder_of("/a/c"), "/a/c/Single Videos");
}

}  // namespace
}  // namespace vistels
