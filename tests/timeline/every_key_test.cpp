// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <algorithm>

#include "support/json_values.h"
#include "support/temporary_folder.h"
#include "timeline/files/stored_clip_count.h"
#include "timeline/files/sxy_Save_Load.h"
#include "util/json.h"
#include "util/property_list.h"

namespace vistels {
namespace {

using testing::json;
using testing::one_line;

const std::string golden_folder = VISTELS_GOLDEN_FOLDER "/timeline/";

std::string golden(const std::string& name) {
    const auto bytes = read_file(golden_folder + name);
    EXPECT_TRUE(bytes) << bytes.message();
    return bytes ? bytes.value() : std::string();
}

timeline_snapshot read(const std::string& bytes) {
    auto loaded = read_timeline_bytes(bytes, "case");
    EXPECT_TRUE(loaded) << loaded.message();
    return loaded ? std::move(loaded.value().content) : timeline_snapshot();
}

clip_pointer every_key_clip() {
    return read(golden("every key.plist")).rows.front()->clips()[0];
}

TEST(every_key, comes_back_byte_for_byte_however_it_was_read) {
    const std::string bytes = golden("every key.plist");
    const auto quickly = read(bytes);
    EXPECT_EQ(timeline_bytes(quickly), bytes);
    EXPECT_EQ(write_property_list(write_timeline(quickly)), bytes);
    // A comment is nothing that this program writes: the strict reader takes the file.
    std::string commented = bytes;
    commented.insert(commented.find("<dict>"), "<!-- by another program -->");
    EXPECT_EQ(timeline_bytes(read(commented)), bytes);
    EXPECT_EQ(timeline_bytes(read_timeline(json(write_json(write_timeline(quickly)))).content), bytes);
}

TEST(every_key, of_older_files_is_read_as_its_newer_spelling) {
    EXPECT_EQ(timeline_bytes(read(golden("older spellings.plist"))), golden("older spellings, saved.plist"));
}

TEST(every_key, counts_before_its_older_spelling_and_only_with_its_own_type) {
    struct {
        const char* key;
        const char* older;
        const char* value;  // another one of the same type
        const char* older_value;
        const char* written;
    } const cases[] = {
        {"uuid", "UUID", R"("N")", R"("O")", R"("N")"},
        {"author", "edit clip author", R"("N")", R"("O")", R"("N")"},
        {"timeline_clip_position", "timeline clip position", "3", "2", "3"},
        {"timer_clip_alt_offset_minutes", "Timer Clip ALT Offset Minutes", "3.5", "2", "3.5"},
        {"timer_clip_alt_offset_minutes", "alt timer Offset", "3.5", "2", "3.5"},
        {"timer_clip_cumulative", "Timer Clip Cumulative", "true", "false", "true"},
        {"timer_clip_count_down", "Timer Clip Count Down", "true", "false", "true"},
        {"alt_count_down", "alt count down", "true", "false", "true"},
        {"alt_seconds", "alt seconds", "0.5", "2", "0.5"},
        {"type_id", "type ID", R"("N")", R"("O")", R"("N")"},
        {"type_id", "type pic ID", R"("N")", R"("O")", R"("N")"},
        {"coll_id", "coll ID", "3", "2", "3.0"},
        {"pause_items", "pause items", R"([{"seconds":3}])", R"([{"seconds":2}])", R"([{"seconds":3.0}])"},
        {"vistels_data", "vistels data", R"({"bounds_ratio":3})", R"({"bounds_ratio":2})",
         R"({"bounds_ratio":3.0})"},
        {"notes_dict", "Notes dict", R"({"note_string":"N"})", R"({"note_string":"O"})",
         R"({"note_string":"N"})"},
        {"telestration", nullptr,
         R"({"quick_uuid_linked_COLLECTION_auxilary":5,"quick_uuid_linked_COLLECTION_auxiliary":4})", nullptr,
         R"({"quick_uuid_linked_COLLECTION_auxiliary":4.0})"},
        {"color", nullptr, R"("1,0,0")", nullptr, R"("1.0,0.0,0.0")"},
        {"stars", nullptr, "2", nullptr, "2"},
        {"type", nullptr, R"("movie")", nullptr, R"("movie")"},
        {"clip_style", nullptr, R"("S")", nullptr, R"("S")"},
        {"triggers", nullptr, R"([{"trigger_time":1,"trigger_colour":"0.123456789,0,0"},"no trigger"])",
         nullptr, R"([{"trigger_time":1.0,"trigger_colour":"0.12345679,0.0,0.0"}])"},
    };
    const auto written = [](const std::string& members) {
        const auto clip = read_clip(json("{\"time_start\":1,\"time_end\":2," + members + "}"));
        return clip ? one_line(write_clip(*clip)) : std::string();
    };
    const auto member = [](const char* key, const std::string& value) {
        return "\"" + std::string(key) + "\":" + value;
    };
    const std::string bare = R"({"time_start":1.0,"time_end":2.0})";
    for (const auto& one : cases) {
        const auto found = json(written(member(one.key, one.value)));
        const auto expected = json("{" + member(one.key, one.written) + "}");
        EXPECT_EQ(*found.find(one.key), *expected.find(one.key)) << one.key;
        for (const char* wrong : {R"([3.25])", R"({"x":3.25})", "7.25", R"("no")", "false"}) {
            const auto type = json("{\"v\":" + std::string(wrong) + "}").find("v")->get().index();
            if (type == json("{\"v\":" + std::string(one.value) + "}").find("v")->get().index()) continue;
            const bool number =
                std::string(one.written).find_first_not_of("0123456789.") == std::string::npos;
            if (number && std::string(wrong) == "7.25" && std::string(one.key) != "stars") continue;
            EXPECT_EQ(written(member(one.key, wrong)), bare) << one.key << " " << wrong;
            if (!one.older) continue;
            EXPECT_EQ(written(member(one.key, wrong) + "," + member(one.older, one.value)),
                      written(member(one.key, one.value)))
                << one.older;
        }
        if (!one.older) continue;
        const auto only_new = written(member(one.key, one.value));
        EXPECT_EQ(written(member(one.older, one.value)), only_new) << one.older;
        EXPECT_EQ(written(member(one.key, one.value) + "," + member(one.older, one.older_value)), only_new)
            << one.older;
        EXPECT_EQ(written(member(one.older, one.older_value) + "," + member(one.key, one.value)), only_new)
            << one.older;
    }
}

TEST(every_key, of_a_clip_can_be_taken_away_and_put_back) {
    const auto clip = every_key_clip();
    const auto before = write_clip(*clip);
    ASSERT_GT(before.size(), 25U);
    for (const auto& entry : before) {
        const bool fixed = entry.key == "uuid" || entry.key == "qualifiers" || entry.key.starts_with("time_");
        property_array unset;
        unset.emplace_back(entry.key);
        const auto without = change_clip_values(*clip, {}, unset);
        EXPECT_EQ(write_clip(without.clip).contains(entry.key), fixed) << entry.key;
        const auto again = change_clip_values(without.clip, without.back.set, without.back.unset);
        EXPECT_EQ(write_clip(again.clip), before) << entry.key;
        EXPECT_EQ(again.back.unset.empty(), fixed) << entry.key;
    }
    // A start behind the end moves both, and back.
    property_dictionary set;
    set.add("time_start", 1000.0);
    set.add("author", "other");
    set.add("stars", "no number");
    const auto moved = change_clip_values(*clip, set, {});
    EXPECT_EQ(moved.clip.secs_start(), clip->secs_end());
    EXPECT_EQ(moved.clip.secs_end(), 1000.0);
    EXPECT_EQ(moved.clip.stars(), 0);
    const auto back = change_clip_values(moved.clip, moved.back.set, moved.back.unset);
    EXPECT_EQ(write_clip(back.clip), before);
}

TEST(every_key, is_behind_an_accessor_of_its_record) {
    const auto clip = every_key_clip();
    EXPECT_EQ(clip->edit_info().author, "Analyst");
    EXPECT_EQ(clip->mins(), 1.5);
    EXPECT_TRUE(clip->timer_is_cumulative() && clip->timer_counts_down() && clip->alt_counts_down());
    EXPECT_EQ(clip->alt_seconds(), 12.5);
    EXPECT_EQ(clip->group(), "group 1");
    EXPECT_EQ(clip->inserted_objects()->items.front().inserted_obj_Type, "pic");
    EXPECT_EQ(clip->pause_items().size(), 2U);
    EXPECT_EQ(clip->telestration()->secs_end_trimmed_261027, 9.75);
    EXPECT_EQ(clip->triggers().front().trigger_Type, "going down");
    const auto vistels = clip->vistel_data()->vistels;
    ASSERT_EQ(vistels.size(), 2U);
    EXPECT_EQ(vistels[0].vistel_rect->width, 0.5);
    const auto& zoom = vistels[0].zoom_items();
    ASSERT_EQ(zoom.size(), 2U);
    EXPECT_LT(zoom[0].key_frame_secs, zoom[1].key_frame_secs);
    const auto& item = clip->qualifiers()->front();
    EXPECT_EQ(item.alt_time(), 61.5);
    EXPECT_TRUE(item.alt_time_counts_down());
    EXPECT_EQ(item.recepient(), "Marek");
    EXPECT_EQ(item.actor(), "Jonas");
    EXPECT_EQ(item.pos(), (point{0.25, 0.75}));
    EXPECT_EQ(item.zoom_rect(), (rectangle{0, 0, 0.5, 0.5}));
    EXPECT_EQ(item.attributes().front().attribute_category, "Foot");
}

TEST(chron_header, every_key_of_the_small_files_comes_back_in_order) {
    const testing::temporary_folder folder;
    for (const char* name :
         {"chron data header.plist", "chron data summary.plist", "chron save time.plist"}) {
        testing::put_file(folder / name, golden(name));
    }
    const auto header = load_timeline_header(folder.path());
    ASSERT_TRUE(save_timeline_header(header, folder.path()));
    EXPECT_GT(load_timeline_header(folder.path()).last_saved, header.last_saved);
    // All but the time, and what is beside it.
    const auto kept_of = [](const std::string& bytes) {
        auto stored = *read_property_list(bytes, "case").value().dictionary();
        for (const char* key :
             {"last saved", "data size", "data hash", "data size before", "data hash before"}) {
            if (stored.contains(key)) stored.set(key, "");
        }
        return stored;
    };
    const auto bytes_of = [&](const char* name) { return read_file(folder / name).value(); };
    EXPECT_EQ(kept_of(bytes_of("chron data header.plist")), kept_of(golden("chron data header.plist")));
    EXPECT_EQ(header.block_auto_relinking, true);
    EXPECT_EQ(header.unlinked_message_created_by, "I");

    const auto summary = load_timeline_summary(folder.path());
    EXPECT_EQ(summary.secondary_uuid, "S");
    ASSERT_TRUE(save_timeline_summary(summary, folder.path()));
    EXPECT_EQ(bytes_of("chron data summary.plist"), golden("chron data summary.plist"));

    ASSERT_TRUE(save_save_time(folder.path(), "U"));
    EXPECT_EQ(kept_of(bytes_of("chron save time.plist")), kept_of(golden("chron save time.plist")));
    EXPECT_EQ(load_timeline_header(folder / "nowhere").name, "");
}

TEST(row_names, and_counts_are_read_without_the_clips_in_either_shape_of_file) {
    struct {
        const char* file;
        std::vector<std::string> names;
    } const cases[] = {
        {"every key.plist", {"Shots <all>", ""}},
        {"older spellings.plist", {"Old"}},
        {"chron data header.plist", {}},
    };
    for (const auto& [file, names] : cases) {
        const testing::temporary_folder folder;
        EXPECT_FALSE(read_row_names(folder.path())) << "there is no file";
        std::string bytes = golden(file);
        for (const bool usual : {true, false}) {
            testing::put_file(folder / timeline_file_name, bytes);
            EXPECT_EQ(read_row_names(folder.path()).value_or(std::vector<std::string>()), names)
                << file << usual;
            const auto loaded = load_timeline(folder.path());
            const auto count = count_stored_clips(folder.path());
            ASSERT_EQ(count.ok(), loaded.ok()) << file << usual;
            std::size_t clips = 0;
            for (const auto& row : loaded.value().content.rows) clips += row->clips().size();
            EXPECT_EQ(count.value(), clips) << file << usual;
            bytes.insert(bytes.find("<dict>"), "<!-- by another program -->");
        }
    }
}

TEST(compact_text, holds_any_text_letter_for_letter_and_orders_as_texts_do) {
    const std::vector<std::string> texts = {
        "",
        "14:05:09",
        "0123456789ABCDEF",
        "a text of more than sixteen letters",
        "01234567-89AB-CDEF-0123-456789ABCDEF",
        "01234567-89ab-cdef-0123-456789abcdef",
        "01234567-89aB-cdef-0123-456789abcdef",
        "01234567-89AB-CDEF-0123-456789ABCDEG",
        "01234567-1111-1111-1111-111111111111",
        "01234567189AB-CDEF-0123-456789ABCDEF",
    };
    for (const auto& a : texts) {
        compact_text copy = compact_text(a);
        EXPECT_EQ(copy.str(), a);
        for (const auto& b : texts) {
            EXPECT_EQ(compact_text(a) < compact_text(b), a < b) << a << " " << b;
            EXPECT_EQ(compact_text(a) == compact_text(b), a == b) << a << " " << b;
            copy = compact_text(b);
            EXPECT_TRUE(copy == b);
        }
    }
}

}  // namespace
}  // namespace vistels
