// SPDX-License-Identifier: GPL-3.0-or-later
//
// What buttons show of the clips that pass their formulas.
#include "logger/button_output.h"

#include <gtest/gtest.h>

#include <random>

#include "support/opened_timeline.h"
#include "support/temporary_folder.h"
#include "support/timeline_builder.h"
#include "util/simulated_run_loop.h"

namespace vistels {
namespace {

using testing::clip_of;

TEST(button_output, is_written_as_its_type_and_format_say) {
    const clip_tally some{3, 8, 3725.26, 62.5};
    const struct {
        const char* type;
        const char* format;
        bool no_zeros;
        const char* text;
    } cases[] = {
        {"count", "", false, "3"},
        {"", "", false, "3"},
        {"sum of squares", "", false, "3"},
        {"percentage", "", false, "38%"},
        {"duration", "", false, "01:02:05"},
        {"duration", "", true, "1:02:05"},
        {"duration", "mm:ss.ff", false, "62:05.26"},
        {"duration", "ss", false, "3725"},
        {"first time", "hh:mm:ss", true, "1:02"},
        {"first time", "hh:mm:ss.f", false, "00:01:02.5"},
    };
    for (const auto& one : cases) {
        button_formula shown;
        shown.output_type = one.type;
        shown.output_time_format = one.format;
        shown.remove_prefix_0s = one.no_zeros;
        EXPECT_EQ(output_text(shown, some), one.text) << one.type << " " << one.format;
    }
    button_formula first{"x", "", "first time", "", true, {}};
    EXPECT_EQ(output_text(first, {}), "");
    EXPECT_EQ(output_text(first, {1, 1, 1, 0.0}), "0");
    EXPECT_EQ(output_text(first, {1, 1, 1, -62.0}), "-1:02");
    first.output_type = "percentage";
    EXPECT_EQ(output_text(first, {}), "0%");
}

class tallies : public ::testing::Test {
  protected:
    tallies() {
        document = testing::opened(folder.path(), loop);
        timeline_edit edit{"rows", "", {}};
        for (const char* name : {"Shot", "Save", "Pass"})
            edit.operations.push_back(operation::insert_row{9, testing::row_of(name, name)});
        EXPECT_TRUE(document->apply(edit));
    }
    void put(const char* row, const std::string& id, double start, double end, const char* qualifier) {
        sxy_CLIP clip = clip_of(id, start, end);
        if (*qualifier) clip.set_qualifiers({testing::qualifier_of(id + "q", qualifier)});
        ASSERT_TRUE(document->apply({"put", "", {operation::insert_clip{shared_text(row), clip}}}));
    }
    std::vector<std::optional<clip_tally>> counted(formula_tallies& by) {
        job work;
        return by.count(document->snapshot().rows, work).value();
    }

    testing::temporary_folder folder;
    simulated_run_loop loop;
    std::unique_ptr<timeline_document> document;
};

TEST_F(tallies, count_what_passes_and_of_what) {
    put("Shot", "a", 20, 24, "Goal");
    put("Shot", "b", 10, 11, "");
    put("Save", "c", 5, 8, "Goal");
    put("Pass", "d", 1, 2, "");
    formula_tallies all(
        {"[RN]\"Shot\"&[QN]\"Goal\"", "[QN]\"Goal\"", "[RN]\"S*\"", "[RN]\"Shot\"&(", "[RN]\"Goal\""});
    const auto found = counted(all);
    EXPECT_EQ(found[0], (clip_tally{1, 2, 4, 20.0}));
    EXPECT_EQ(found[1], (clip_tally{2, 4, 7, 5.0})) << "it names no row";
    EXPECT_EQ(found[2], (clip_tally{3, 3, 8, 5.0}));
    EXPECT_EQ(found[3], std::nullopt);
    EXPECT_EQ(found[4], (clip_tally{0, 0, 0, std::nullopt}));
}

// Against formulas that are counted anew each time.
TEST_F(tallies, stay_right_whatever_changes) {
    const std::vector<std::string> formulas = {"[QN]\"Goal\"", "[RN]\"Sh*\"|[QN]\"Wide\"", "![QN]\"Goal\""};
    formula_tallies kept(formulas);
    std::mt19937 random(4);
    std::vector<std::string> clips;
    const char* const rows[] = {"Shot", "Save", "Pass"};
    for (int step = 0; step < 300; ++step) {
        const auto any = clips.empty() ? std::string() : clips[random() % clips.size()];
        switch (random() % (any.empty() ? 1 : 6)) {
            default:
                clips.push_back("c" + std::to_string(step));
                put(rows[random() % 3], clips.back(), static_cast<double>(random() % 50),
                    static_cast<double>(50 + random() % 50), random() % 2 ? "Goal" : "Wide");
                break;
            case 1:
                ASSERT_TRUE(document->apply({"Delete", "", {operation::remove_clip{any}}}));
                std::erase(clips, any);
                break;
            case 2:
                ASSERT_TRUE(document->apply(
                    {"Stamp",
                     "",
                     {operation::insert_qualifier{
                         any, 0, testing::qualifier_of("q" + std::to_string(step), "Goal")}}}));
                break;
            case 3: {
                operation::change_clip moved{any, {}, {}};
                moved.set.set("time_start", static_cast<double>(random() % 40));
                ASSERT_TRUE(document->apply({"Trim", "", {moved}}));
                break;
            }
            case 4: {
                operation::change_row renamed{shared_text(rows[random() % 3]), {}, {}};
                renamed.set.set("row_name", random() % 2 ? "Shot" : "Other");
                ASSERT_TRUE(document->apply({"Rename", "", {renamed}}));
                break;
            }
        }
        formula_tallies anew(formulas);
        ASSERT_EQ(counted(kept), counted(anew)) << "step " << step;
    }
    // A cancelled count loses nothing.
    job cancelled;
    cancelled.cancel();
    EXPECT_FALSE(kept.count(document->snapshot().rows, cancelled));
    formula_tallies anew(formulas);
    EXPECT_EQ(counted(kept), counted(anew));
}

}  // namespace
}  // namespace vistels
