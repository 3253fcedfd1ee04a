// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <memory>

#include "support/failing_files.h"
#include "support/json_values.h"
#include "support/temporary_folder.h"
#include "support/timeline_builder.h"
#include "timeline/files/chron_notes.h"
#include "timeline/files/timeline_document.h"
#include "util/safe_write.h"
#include "util/simulated_run_loop.h"

namespace vistels {
namespace {

using testing::json;

std::string json_of(const clip_note& note) {
    return testing::one_line(write_clip_note(note));
}

TEST(clip_note, comes_back_as_it_was_read_and_an_edit_drops_only_the_rich_text) {
    struct note_case {
        const char* name;
        const char* stored;
        const char* text;
        const char* edited;  // to "neu"
    };
    const note_case cases[] = {
        {"all keys",
         R"({"clip_notes_uuid":"N","note_string":"alt","display_on":true,"link_id":"L","id_type":3,)"
         R"("chars":3,"presentation_type":"below","note_text_storage_rtf__json_String":"{\\rtf1 alt}"})",
         "alt",
         R"({"clip_notes_uuid":"N","note_string":"neu","display_on":true,"link_id":"L","id_type":3,)"
         R"("chars":3,"presentation_type":"below"})"},
        {"keys of others",
         R"({"note_string":"größer","chars":6,"note_text_storage_rtfd":"x","theirs":[1,{}]})", "größer",
         R"({"note_string":"neu","chars":3,"theirs":[1,{}]})"},
        {"another count", R"({"note_string":"alt","chars":"3 of 9"})", "alt",
         R"({"note_string":"neu","chars":"3 of 9"})"},
        {"empty", R"({"note_string":"<empty>"})", "", R"({"note_string":"neu"})"},
        {"no text at all", R"({"note_string":"","link_id":7})", "", R"({"note_string":"neu","link_id":7})"},
        {"wrong type", R"({"note_string":5,"clip_notes_uuid":[]})", "",
         R"({"note_string":"neu","clip_notes_uuid":[]})"},
        {"items",
         R"({"clip_notes_uuid":"N","note_items":[{"note_string":"one","note_text_storage_rtf":"r"},)"
         R"({"note_string":"<empty>"},{"note_string":"two"}]})",
         "one\ntwo", R"({"clip_notes_uuid":"N","note_string":"neu"})"},
        {"items as older files spell them", R"({"note items":[{"note_string":"one"},5]})", "one",
         R"({"note_string":"neu"})"},
    };
    for (const auto& [name, stored, text, edited] : cases) {
        const auto note = read_clip_note(json(stored));
        EXPECT_EQ(read_clip_note(json(json_of(note))), note) << name;
        for (const auto& entry : json(stored)) {
            const auto written = write_clip_note(note);
            const auto* found = written.find(entry.key);
            EXPECT_TRUE(found && *found == entry.value) << name << ": " << entry.key;
        }
        EXPECT_EQ(note.text(), text) << name;
        EXPECT_EQ(json_of(note.with_text("neu")), edited) << name;
    }
}

TEST(clip_note, stays_on_its_clip_through_the_stored_form) {
    const auto clip = read_clip(
        json(R"({"uuid":"C","time_start":1,"time_end":2,"Notes dict":{"note_string":"seen","x":[0]}})"));
    ASSERT_TRUE(clip);
    EXPECT_EQ(clip->note_text(), "seen");
    sxy_CLIP changed = *clip;
    changed.set_note(std::make_shared<const clip_note>(clip->note()->with_text("other")));
    EXPECT_EQ(read_clip(write_clip(changed))->note_text(), "other");
    EXPECT_EQ(write_clip_note(*changed.note()), json(R"({"note_string":"other","x":[0]})"));
    changed.set_note(nullptr);
    EXPECT_FALSE(changed.note());
    EXPECT_FALSE(write_clip(changed).contains("notes_dict"));
}

// A timeline of one row whose clips are called and noted so; an empty text is no note.
timeline_snapshot noted_timeline(const std::vector<std::pair<std::string, std::string>>& clips) {
    auto row = std::make_shared<sxy_ROW>(testing::row_of("R", "Shot"));
    double start = 0;
    for (const auto& [uuid, text] : clips) {
        auto clip = testing::clip_of(uuid, start, start + 1);
        if (!text.empty()) clip.set_note(std::make_shared<const clip_note>(clip_note().with_text(text)));
        row->clips().insert(std::make_shared<const sxy_CLIP>(std::move(clip)));
        ++start;
    }
    timeline_snapshot timeline;
    timeline.uuid = "T";
    timeline.rows.push_back(std::move(row));
    return timeline;
}

// Those that stand in the folder's file.
notes_by_clip notes_in(const std::string& folder) {
    std::vector<failure> messages;
    auto notes = notes_keeper(folder).open(false, messages);
    EXPECT_TRUE(notes && messages.empty()) << notes.message();
    return notes ? std::move(notes).value() : notes_by_clip();
}

TEST(notes, are_beside_the_timeline_and_in_the_document_of_it) {
    const testing::temporary_folder folder;
    // One without an identity and the second of two with the same one keep theirs.
    const auto timeline = noted_timeline({{"a", "first"}, {"b", ""}, {"", "nobody's"}, {"a", "second"}});
    ASSERT_TRUE(save_timeline(timeline, folder.path()));
    const std::string data = testing::file_bytes(folder / "chron data.plist");
    EXPECT_EQ(data.find("first"), std::string::npos);
    EXPECT_NE(data.find("nobody's"), std::string::npos);
    EXPECT_NE(data.find("second"), std::string::npos);
    EXPECT_EQ(notes_in(folder.path()).size(), 1U);
    for (const auto& source : {folder.path(), folder / "chron data.plist"}) {
        const auto loaded = load_timeline(source);
        ASSERT_TRUE(loaded) << loaded.message();
        EXPECT_EQ(write_timeline(loaded.value().content), write_timeline(timeline)) << source;
    }
    // Written into the timeline by somebody else, after the notes.
    testing::put_file(
        folder / "chron data.plist",
        R"(<plist><dict><key>rows</key><array><dict><key>clips</key><array><dict>)"
        R"(<key>uuid</key><string>a</string><key>str</key><real>1</real><key>end</key><real>2</real>)"
        R"(<key>Notes dict</key><dict><key>note_string</key><string>theirs</string></dict>)"
        R"(</dict></array></dict></array></dict></plist>)");
    EXPECT_EQ(load_timeline(folder.path()).value().content.rows[0]->clips()[0]->note_text(), "theirs");
}

TEST(notes, are_written_when_they_changed_and_outlive_their_clip_by_one_save) {
    const testing::temporary_folder folder;
    notes_keeper keeper(folder.path());
    std::vector<failure> messages;
    EXPECT_TRUE(keeper.open(true, messages).value().empty());
    struct save_case {
        const char* name;
        std::vector<std::pair<std::string, std::string>> clips;
        std::vector<std::string> in_file;
        bool writes;
        bool timeline_follows = true;
    };
    const save_case cases[] = {
        {"no notes, no file", {{"a", ""}}, {}, false},
        {"two", {{"a", "1"}, {"b", "2"}}, {"1", "2"}, true},
        {"the same", {{"b", "2"}, {"a", "1"}}, {"1", "2"}, false},
        {"a clip is gone", {{"a", "1"}}, {"1", "2"}, false, false},
        {"gone still, and the timeline could not be saved", {{"a", "1"}}, {"1", "2"}, false},
        {"gone and saved without it", {{"a", "1"}}, {"1"}, true},
        {"a note is taken away", {{"a", ""}}, {}, true},
        {"and another comes", {{"a", ""}, {"c", "4"}}, {"4"}, true},
        {"all clips are gone", {}, {"4"}, false},
        {"one of them is back without its note", {{"c", ""}}, {}, true},
    };
    for (const auto& [name, clips, in_file, writes, timeline_follows] : cases) {
        file_identity before;
        file_identity after;
        machine_files().identity(folder / "chron notes.plist", before);
        ASSERT_TRUE(keeper.save(take_notes_off(noted_timeline(clips)))) << name;
        machine_files().identity(folder / "chron notes.plist", after);
        EXPECT_EQ(after != before, writes) << name;
        if (timeline_follows) keeper.timeline_is_saved();
        std::vector<std::string> texts;
        for (const auto& [clip, note] : notes_in(folder.path())) texts.push_back(note.text());
        EXPECT_EQ(texts, in_file) << name;
    }
}

TEST(notes, those_that_another_program_wrote_meanwhile_are_kept) {
    const testing::temporary_folder folder;
    ASSERT_TRUE(save_timeline(noted_timeline({{"a", "1"}}), folder.path()));
    notes_keeper keeper(folder.path());
    std::vector<failure> messages;
    EXPECT_EQ(keeper.open(true, messages).value().size(), 1U);
    ASSERT_TRUE(save_timeline(noted_timeline({{"a", "theirs"}}), folder.path()));
    const auto kept = keeper.save(take_notes_off(noted_timeline({{"a", "1"}})));
    ASSERT_TRUE(kept);
    EXPECT_EQ(notes_in(folder.path()).at("a").text(), "1");
    EXPECT_NE(testing::file_bytes(kept.value()).find("theirs"), std::string::npos) << kept.value();
    EXPECT_EQ(keeper.save(take_notes_off(noted_timeline({{"a", "1"}}))).value(), "");
}

TEST(notes, a_damaged_file_is_told_and_kept_and_never_overwritten) {
    for (const char* damaged : {"<plist", "<plist><array/></plist>", ""}) {
        const testing::temporary_folder folder;
        ASSERT_TRUE(save_timeline(noted_timeline({{"a", "1"}}), folder.path()));
        testing::put_file(folder / "chron notes.plist", damaged);
        const auto looked_at = load_timeline(folder.path());
        ASSERT_TRUE(looked_at);
        ASSERT_EQ(looked_at.value().messages.size(), 1U) << damaged;
        EXPECT_NE(looked_at.value().messages[0].message().find(folder / "chron notes.plist"),
                  std::string::npos);
        EXPECT_EQ(testing::file_bytes(folder / "chron notes.plist"), damaged) << "who only reads leaves it";

        testing::failing_files files;
        files.set_fault([](int) { return EIO; });
        notes_keeper keeper(folder.path(), files);
        std::vector<failure> messages;
        EXPECT_FALSE(keeper.open(true, messages));
        const auto coming = take_notes_off(noted_timeline({{"a", "2"}}));
        EXPECT_FALSE(keeper.save(coming)) << "it could not be read";
        EXPECT_EQ(testing::file_bytes(folder / "chron notes.plist"), damaged);
        files.set_fault([](int) { return 0; });
        EXPECT_TRUE(keeper.save(coming));
        EXPECT_EQ(testing::file_bytes(folder / "chron notes damaged 1.plist"), damaged);
        EXPECT_EQ(notes_in(folder.path()).at("a").text(), "2");
        // Whoever never looked does so before writing; whoever looks again takes what is there now.
        testing::put_file(folder / "chron notes.plist", damaged);
        notes_keeper blind(folder.path());
        EXPECT_TRUE(blind.save(coming));
        EXPECT_EQ(testing::file_bytes(folder / "chron notes damaged 2.plist"), damaged);
        EXPECT_EQ(keeper.open(true, messages).value().at("a").text(), "2");
    }
}

TEST(notes, of_an_older_file_move_over_with_the_first_save_of_the_open_timeline) {
    const testing::temporary_folder folder;
    ASSERT_TRUE(safe_write(folder / "chron data.plist", write_timeline(noted_timeline({{"a", "old"}}))));
    simulated_run_loop loop;
    {
        auto document = timeline_document::open(folder.path(), loop);
        ASSERT_TRUE(document) << document.message();
        EXPECT_EQ(document.value()->timeline().find_clip("a")->clip->note_text(), "old");
        property_dictionary set;
        set.add("stars", 3);
        ASSERT_TRUE(document.value()->apply({"Stars", "", {operation::change_clip{"a", set, {}}}}));
        loop.advance(20);
    }
    EXPECT_EQ(testing::file_bytes(folder / "chron data.plist").find("old"), std::string::npos);
    EXPECT_EQ(notes_in(folder.path()).at("a").text(), "old");
    auto again = timeline_document::open(folder.path(), loop);
    ASSERT_TRUE(again);
    EXPECT_EQ(again.value()->timeline().find_clip("a")->clip->note_text(), "old");
}

}  // namespace
}  // namespace vistels
