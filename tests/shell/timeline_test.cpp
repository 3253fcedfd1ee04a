// SPDX-License-Identifier: GPL-3.0-or-later
// The timeline: its arithmetic, and the pane under real mouse, wheel and key events.
#include <gtest/gtest.h>

#include <QSignalSpy>
#include <random>

#include "shell/panes/timeline/timeline_parts.h"
#include "support/timeline_pane.h"

namespace vistels {
namespace {

using testing::clip_of;
using testing::qualifier_of;
using testing::row_of;
using testing::timeline_pane;

TEST(timeline_scale, ruler_takes_the_first_step_that_gives_room) {
    struct row {
        double seconds_per_pixel;
        double major;
        int parts;
    };
    const row rows[] = {{0.001, 0.1, 5}, {0.01, 1, 5},  {0.5, 60, 5},    {0.11, 10, 5},
                        {1, 120, 5},     {3.4, 600, 5}, {40, 3600, 5},   {100, 10800, 5},
                        {0.166, 15, 5},  {0.3, 30, 5},  {1.0 / 90, 1, 5}};
    for (const row& each : rows) {
        const ruler_steps steps = ruler_steps_for(each.seconds_per_pixel, 90, 6);
        EXPECT_DOUBLE_EQ(steps.major_seconds, each.major) << each.seconds_per_pixel;
        EXPECT_EQ(steps.minor_parts, each.parts) << each.seconds_per_pixel;
        EXPECT_GE(steps.major_seconds / each.seconds_per_pixel, 90 - 1e-9);
    }
    EXPECT_EQ(ruler_steps_for(1, 24, 7).minor_parts, 4);
    EXPECT_EQ(ruler_steps_for(1, 10, 6).minor_parts, 1);
}

TEST(timeline_scale, zoom_keeps_what_is_under_the_pointer_and_stays_within_reach) {
    const timeline_reach reach{-5, 7200, 1000};
    const timeline_scale now{3000, 0.5};
    for (const double factor : {0.5, 0.9, 1.3, 4.0, 40.0}) {
        const timeline_scale zoomed = scale_zoomed(reach, now, factor, 400);
        EXPECT_NEAR(zoomed.seconds_at(400), now.seconds_at(400), 1e-6) << factor;
    }
    const timeline_scale all = scale_zoomed(reach, now, 0.0001, 400);
    EXPECT_DOUBLE_EQ(all.first_seconds, -5);
    EXPECT_NEAR(all.seconds_at(1000), 7200, 1e-6);
    EXPECT_DOUBLE_EQ(scale_zoomed(reach, now, 1e9, 400).seconds_per_pixel, closest_seconds_per_pixel);
    EXPECT_NEAR(scale_within(reach, {99999, 0.5}).seconds_at(1000), 7200, 1e-6);
    for (const double share : {0.0, 0.3, 0.5, 1.0}) {
        EXPECT_NEAR(zoom_share(reach, scale_with_share(reach, now, share, 0)), share, 1e-9);
    }
}

TEST(timeline_scale, playing_holds_the_playhead_in_place_by_whole_pixels) {
    timeline_scale scale{100, 0.2};
    EXPECT_DOUBLE_EQ(first_seconds_following(scale, 1000, 260, 0.85), 100);
    for (double playhead = 270; playhead < 280; playhead += 1 / 60.0) {
        const double first = first_seconds_following(scale, 1000, playhead, 0.85);
        const double moved = (first - scale.first_seconds) / scale.seconds_per_pixel;
        EXPECT_NEAR(moved, std::round(moved), 1e-6);
        scale.first_seconds = first;
        EXPECT_LE(scale.x_of(playhead), 850 + 1e-6);
        EXPECT_GT(scale.x_of(playhead), 848);
    }
}

// What a pixel shows, by bars and by asking every clip.
TEST(clip_track, merging_covers_the_pixels_that_clips_cover_and_no_others) {
    std::mt19937 random(5);
    for (const double longest : {0.2, 3.0, 400.0}) {
        std::vector<track_clip> clips;
        double at = 0;
        for (std::uint32_t index = 0; index < 5000; ++index) {
            at += std::uniform_real_distribution<double>(0, longest)(random);
            const double length = std::uniform_real_distribution<double>(0, longest)(random);
            clips.push_back({at, at + length, index, static_cast<std::uint8_t>(index % 3), false});
        }
        clip_track track;
        track.assign(clips);
        for (const double share : {1.0, 0.1, 0.01}) {
            const timeline_scale scale{at * 0.3, at * share / 500};
            std::vector<timeline_bar> bars;
            track.add_bars(scale, 500, {}, bars);
            EXPECT_LE(bars.size(), 1200U);
            for (double x = 0.5; x < 500; ++x) {
                const double seconds = scale.seconds_at(x);
                const auto in_bar = std::any_of(bars.begin(), bars.end(), [x](const timeline_bar& bar) {
                    return bar.left <= x && x <= bar.right;
                });
                double nearest = 1e9;
                for (const track_clip& clip : clips) {
                    nearest = std::min(nearest, std::max({clip.start - seconds, seconds - clip.end, 0.0}));
                }
                const double pixels = nearest / scale.seconds_per_pixel;
                EXPECT_TRUE(in_bar || pixels > 0) << x;
                EXPECT_TRUE(!in_bar || pixels <= 1.01) << x;
            }
        }
    }
}

TEST(clip_track, the_most_frequent_colour_wins_and_wide_clips_stand_alone) {
    clip_track track;
    track.assign({{0, 1, 0, 7, false}, {1, 2, 1, 4, false}, {2, 3, 2, 4, false}, {10, 40, 3, 7, false}});
    std::vector<timeline_bar> bars;
    track.add_bars({0, 1}, 100, {}, bars);
    ASSERT_EQ(bars.size(), 2U);
    EXPECT_EQ(bars[0].colour, 4);
    EXPECT_EQ(bars[0].count, 3U);
    EXPECT_EQ(bars[1].index, 3U);
    EXPECT_EQ(bars[1].count, 1U);
}

TEST(clip_track, long_clips_that_began_before_are_found) {
    std::vector<track_clip> clips{{0, 10000, 0, 0, false}};
    for (std::uint32_t index = 1; index < 500; ++index)
        clips.push_back({index * 10.0, index * 10.0 + 1, index, 0, false});
    clip_track track;
    track.assign(clips);
    EXPECT_EQ(track.at(4000.5, 0), 400U);
    EXPECT_EQ(track.at(4005, 0), 0U);
    EXPECT_EQ(track.at(20000, 0), track.size());
    std::vector<timeline_bar> bars;
    track.add_bars({7000, 1}, 100, {}, bars);
    ASSERT_EQ(bars.size(), 1U);
}

using clips = std::vector<std::string>;

// Filmed by a camera that ran before the last one started.
TEST_F(timeline_pane, clips_before_0_are_in_reach) {
    timeline_edit made{"made", "", {}};
    made.operations.push_back(operation::insert_clip{shared_text("b"), clip_of("early", -8, -4)});
    ASSERT_TRUE(document_->apply(made));
    EXPECT_LE(view_state().reach().start_seconds, -8);
    view_.zoom_to_fit();
    EXPECT_GE(view_state().scale().x_of(-8), 0);
    click(-6, 1);
    EXPECT_EQ(selected(), clips{"early"});
}

TEST_F(timeline_pane, click_selects_a_clip_and_goes_to_its_start) {
    QSignalSpy told(&view_, &timeline_view::selection_changed);
    click(33, 0);
    EXPECT_EQ(selected(), clips{"a2"});
    EXPECT_DOUBLE_EQ(transport_.seconds, 30);
    EXPECT_EQ(told.count(), 1);
    EXPECT_EQ(canvas_->accessibleDescription(), QStringLiteral("Attack 2, 0:00:30.00 to 0:00:40.00"));
    click(30, 1);
    EXPECT_EQ(selected(), clips{"b1"});
    EXPECT_FALSE(find("a2")->clip->selected());
    click(70, 1);  // beside all clips
    EXPECT_TRUE(selected().empty());
    EXPECT_NEAR(transport_.seconds, 70, 0.051);
}

TEST_F(timeline_pane, control_adds_and_takes_away_and_shift_extends) {
    click(15, 0);
    click(55, 0, Qt::ControlModifier);
    click(30, 1, Qt::ControlModifier);
    EXPECT_EQ(selected(), (clips{"a1", "a3", "b1"}));
    click(55, 0, Qt::ControlModifier);
    EXPECT_EQ(selected(), (clips{"a1", "b1"}));
    click(15, 0);
    click(55, 0, Qt::ShiftModifier);
    EXPECT_EQ(selected(), (clips{"a1", "a2", "a3"}));
    EXPECT_DOUBLE_EQ(transport_.seconds, 10);
}

TEST_F(timeline_pane, delete_removes_what_is_selected_and_only_that) {
    click(15, 0);
    click(30, 1, Qt::ControlModifier);
    QTest::keyClick(canvas_, Qt::Key_Delete);
    EXPECT_FALSE(find("a1"));
    EXPECT_FALSE(find("b1"));
    EXPECT_TRUE(find("a2"));
    EXPECT_TRUE(selected().empty());
    EXPECT_EQ(view_rows()[0].clips, 2U);
}

TEST_F(timeline_pane, an_edge_drag_trims_by_one_edit_and_escape_leaves_all) {
    int edits = 0;
    const auto listening =
        document_->edited.connect([&](const timeline_edit&, const timeline_edit&) { ++edits; });
    view_state().set_snaps(false);
    drag(at(39.9, 0), at(44.9, 0));
    EXPECT_EQ(edits, 1);
    EXPECT_NEAR(find("a2")->clip->secs_end(), 45, 0.02);
    EXPECT_DOUBLE_EQ(find("a2")->clip->secs_start(), 30);
    EXPECT_EQ(selected(), clips{"a2"});
    drag(at(10.1, 0), at(90, 0));  // not past its end
    EXPECT_LT(find("a1")->clip->secs_start(), 20);
    EXPECT_EQ(edits, 2);
    QTest::mousePress(canvas_, Qt::LeftButton, {}, at(59.9, 0));
    QTest::mouseMove(canvas_, at(80, 0));
    QTest::keyClick(canvas_, Qt::Key_Escape);
    QTest::mouseRelease(canvas_, Qt::LeftButton, {}, at(80, 0));
    EXPECT_DOUBLE_EQ(find("a3")->clip->secs_end(), 60);
    EXPECT_EQ(edits, 2);
}

TEST_F(timeline_pane, a_trim_snaps_to_another_clips_edge_and_to_the_playhead) {
    drag(at(39.9, 0), at(49.7, 0));
    EXPECT_DOUBLE_EQ(find("a2")->clip->secs_end(), 50);
    transport_.seconds = 44;
    view_.tick();
    drag(at(49.9, 0) - QPoint(1, 0), at(44.1, 0));
    EXPECT_DOUBLE_EQ(find("a2")->clip->secs_end(), 44);
}

TEST_F(timeline_pane, alt_drags_a_copy) {
    view_state().set_snaps(false);
    drag(at(15, 0), at(75, 0), Qt::AltModifier);
    EXPECT_EQ(view_rows()[0].clips, 4U);
    EXPECT_DOUBLE_EQ(find("a1")->clip->secs_start(), 10);
    ASSERT_EQ(selected().size(), 1U);
    const auto copy = find(selected()[0].c_str());
    EXPECT_NEAR(copy->clip->secs_start(), 70, 0.02);
    EXPECT_NEAR(copy->clip->secs_end(), 80, 0.02);
    EXPECT_EQ(copy->clip->qualifiers()->size(), 1U);
}

TEST_F(timeline_pane, the_playhead_is_dragged_by_its_flag_and_set_on_the_ruler) {
    QTest::mouseClick(canvas_, Qt::LeftButton, {}, QPoint(600, 10));
    EXPECT_NEAR(transport_.seconds, 60, 1e-6);
    drag(QPoint(610, 10), QPoint(710, 10));  // held ten pixels beside its line
    EXPECT_NEAR(transport_.seconds, 70, 1e-6);
}

// While the hand drags, and once where it lets go.
TEST_F(timeline_pane, a_drag_of_the_playhead_scrubs_and_seeks_once_at_its_end) {
    const auto expect = [&](const char* what, double seconds, int scrubs, int seeks) {
        EXPECT_NEAR(transport_.seconds, seconds, 0.051) << what;
        EXPECT_EQ(std::exchange(transport_.scrubs, 0), scrubs) << what;
        EXPECT_EQ(std::exchange(transport_.seeks, 0), seeks) << what;
    };
    drag(QPoint(600, 10), QPoint(710, 10));
    expect("from the ruler", 71, 2, 1);
    QTest::mouseClick(canvas_, Qt::LeftButton, {}, QPoint(715, 10));
    expect("a click on the flag", 71, 0, 0);
    drag(QPoint(715, 10), QPoint(815, 10));
    expect("by the flag", 81, 1, 1);
    drag(at(65, 1), at(75, 1));
    expect("beside all clips it selects", 81, 0, 0);
    drag(at(65, 1), at(65.2, 1));
    expect("a click there", 65, 0, 1);
    QTest::mousePress(canvas_, Qt::LeftButton, {}, QPoint(600, 10));
    canvas_->setFocus();
    QTest::keyClick(canvas_, Qt::Key_Escape);
    expect("Escape lets go", 60, 1, 1);
    QTest::mouseRelease(canvas_, Qt::LeftButton, {}, QPoint(600, 10));
    expect("and then nothing is held", 60, 0, 0);
}

TEST_F(timeline_pane, the_wheel_scrolls_time_with_shift_zooms_with_control) {
    const double under_pointer = view_state().scale().seconds_at(400);
    turn_wheel({400, 60}, {0, 240}, Qt::ControlModifier);
    EXPECT_LT(view_state().scale().seconds_per_pixel, 0.1);
    EXPECT_NEAR(view_state().scale().seconds_at(400), under_pointer, 1e-6);
    const timeline_scale before = view_state().scale();
    turn_wheel({400, 60}, {0, -120}, Qt::ShiftModifier);
    EXPECT_GT(view_state().scale().first_seconds, before.first_seconds);
    turn_wheel({400, 60}, {120, 0}, {});
    EXPECT_NEAR(view_state().scale().first_seconds, before.first_seconds, 1e-6);
    EXPECT_EQ(view_state().scale().seconds_per_pixel, before.seconds_per_pixel);
}

TEST_F(timeline_pane, the_wheel_scrolls_rows_when_there_are_more_than_fit) {
    timeline_edit more{"more", "", {}};
    for (int row = 0; row < 30; ++row) {
        more.operations.push_back(operation::insert_row{2, row_of("r" + std::to_string(row), "row")});
    }
    ASSERT_TRUE(document_->apply(more));
    turn_wheel({400, 100}, {0, -120}, {});
    EXPECT_GT(view_state().first_y(), 0);
    for (int turn = 0; turn < 100; ++turn) turn_wheel({400, 100}, {0, -120}, {});
    EXPECT_EQ(view_state().first_y(), view_rows().total_height() - view_state().rows_height());
}

TEST_F(timeline_pane, playing_keeps_the_playhead_at_its_place_unless_scrolled_away) {
    transport_.playing = true;
    for (double seconds = 80; seconds < 95; seconds += 0.25) {
        transport_.seconds = seconds;
        view_.tick();
    }
    EXPECT_NEAR(view_state().scale().x_of(transport_.seconds), 850, 2);
    view_state().scroll_to(300);
    const timeline_scale away = view_state().scale();
    transport_.seconds += 0.25;
    view_.tick();
    EXPECT_EQ(view_state().scale(), away);
}

TEST_F(timeline_pane, a_growing_clip_is_shown_until_it_has_ended) {
    ASSERT_TRUE(
        document_->apply({"Shot", "", {operation::begin_clip{shared_text("b"), clip_of("l", 50, 50)}}}));
    ASSERT_EQ(view_rows()[1].live.size(), 1U);
    EXPECT_EQ(view_rows()[1].clips, 1U);
    ASSERT_TRUE(document_->apply({"Shot", "", {operation::finish_clip{"l", 50, 58}}}));
    EXPECT_TRUE(view_rows()[1].live.empty());
    EXPECT_EQ(view_rows()[1].clips, 2U);
}

// As one that is put on record when it ends; on a timer row with its clock.
TEST_F(timeline_pane, clocks_of_timer_rows_run_on_what_grows_and_on_what_has_ended) {
    operation::change_row timer{shared_text("b"), {}, {}};
    timer.set.set("timer_row", true);
    ASSERT_TRUE(document_->apply({"made", "", {timer}}));
    const timeline_state& state = view_.state();
    const struct {
        double playhead;
        std::optional<double> clock;
    } cases[] = {{20, std::nullopt}, {27.5, 2.5}, {35, 10}, {50, 10}};
    for (const auto& one : cases) {
        transport_.seconds = one.playhead;
        view_.tick();
        EXPECT_EQ(state.clock_of_row(view_rows()[1]), one.clock) << one.playhead;
        EXPECT_EQ(state.clock_of_row(view_rows()[0]), std::nullopt);
    }
    sxy_CLIP growing = clip_of("b2", 44, 44);
    growing.set_timer_counts_down(true);
    growing.set_mins(1);
    view_.set_unsaved_growing({{std::make_shared<const sxy_CLIP>(growing), shared_text("b"), true}});
    ASSERT_EQ(view_rows()[1].live.size(), 1U);
    EXPECT_EQ(state.clock_of_row(view_rows()[1]), 54);
    // It stays as long as it grows, whatever else changes.
    ASSERT_TRUE(document_->apply({"made", "", {operation::insert_row{2, row_of("c", "Save")}}}));
    EXPECT_EQ(view_rows()[1].live.size(), 1U);
    view_.set_unsaved_growing({});
    EXPECT_TRUE(view_rows()[1].live.empty());
}

TEST_F(timeline_pane, triggers_of_buttons_are_marked_in_their_rows_or_on_the_ruler) {
    const QImage before = canvas_->grab().toImage();
    const QColor red(255, 0, 0);
    view_.state().set_triggers({{shared_text("b"), "Cross", 15, trigger_effect::goes_up, red},
                                {shared_text(), "Press", 20, trigger_effect::goes_down, red},
                                {shared_text("none"), "Gone", 10, trigger_effect::goes_down, red},
                                {shared_text("b"), "Cross", 12, trigger_effect::none, {}}});
    ASSERT_EQ(view_rows()[1].triggers.size(), 2U);
    EXPECT_EQ(view_rows()[1].triggers[0].at, 12);
    EXPECT_EQ(view_rows()[1].triggers[1].at, 15);
    EXPECT_TRUE(view_rows()[0].triggers.empty());
    ASSERT_EQ(view_rows().ruler_triggers().size(), 2U);
    EXPECT_EQ(view_rows().ruler_triggers()[0].button, QStringLiteral("Gone"));
    const QImage after = canvas_->grab().toImage();
    const auto is_marked = [&](int x, int y) {
        return after.pixelColor(x, y) != before.pixelColor(x, y) &&
               after.pixelColor(x, y).red() > 2 * after.pixelColor(x, y).blue();
    };
    const int bottom = timeline_sizes.ruler_height + view_rows()[1].top + view_rows()[1].height;
    EXPECT_TRUE(is_marked(152, bottom - 4)) << "a wedge at the bottom: it goes up";
    EXPECT_FALSE(is_marked(152, bottom - view_rows()[1].height + 3));
    EXPECT_TRUE(is_marked(201, timeline_sizes.ruler_height - timeline_sizes.major_tick_length + 1));
    // They stay when rows are read anew, and come to a row that is made for them.
    ASSERT_TRUE(document_->apply({"made", "", {operation::insert_row{2, row_of("none", "Gone")}}}));
    EXPECT_EQ(view_rows()[1].triggers.size(), 2U);
    EXPECT_EQ(view_rows()[2].triggers.size(), 1U);
    EXPECT_EQ(view_rows().ruler_triggers().size(), 1U);
    view_.state().set_triggers({});
    EXPECT_TRUE(view_rows()[1].triggers.empty());
}

// What one draws by: all clips of all rows with their colours and marks.
std::vector<std::string> drawn(const timeline_rows& rows) {
    std::vector<std::string> made;
    for (const timeline_row& row : rows) {
        made.push_back(row.name.toStdString() + " " + std::to_string(row.clips) + " " +
                       std::to_string(row.passing) + " " + std::to_string(row.marks.size()));
        for (const clip_track* track : {&row.shown, &row.dimmed, &row.selected}) {
            for (std::size_t i = 0; i < track->size(); ++i) {
                const track_clip& clip = (*track)[i];
                made.push_back(std::to_string(clip.start) + "-" + std::to_string(clip.end) + " " +
                               std::to_string(clip.index) + " " + std::to_string(row.extras[clip.index]) +
                               row.palette[clip.colour].name().toStdString() +
                               (clip.dimmed ? " dimmed" : ""));
            }
            made.emplace_back("|");
        }
    }
    return made;
}

TEST_F(timeline_pane, rows_that_took_every_change_are_as_read_anew) {
    std::mt19937 random(3);
    const auto up_to = [&](int most) { return std::uniform_int_distribution<int>(0, most)(random); };
    std::vector<std::string> there{"a1", "a2", "a3", "b1"};
    for (int step = 0; step < 400; ++step) {
        timeline_edit edit{"made", "", {}};
        const int what = up_to(9);
        const std::size_t one = static_cast<std::size_t>(up_to(static_cast<int>(there.size()) - 1));
        if (what < 4 || there.size() < 3) {
            there.push_back("n" + std::to_string(step));
            const double start = up_to(500);
            sxy_CLIP clip = clip_of(there.back(), start, start + up_to(40) + 1);
            edit.operations.push_back(operation::insert_clip{shared_text(up_to(1) ? "a" : "b"), clip});
        } else if (what == 4) {
            edit.operations.push_back(operation::remove_clip{there[one]});
            there.erase(there.begin() + static_cast<std::ptrdiff_t>(one));
        } else if (what == 5) {
            operation::change_clip change{there[one], {}, {}};
            change.set.set("color", colour_text({up_to(4) / 4.0, 0.5, 0.25}, 2));
            edit.operations.push_back(change);
        } else if (what == 6) {
            const std::string name = "r" + std::to_string(step);
            edit.operations.push_back(operation::insert_row{static_cast<std::size_t>(up_to(1)),
                                                            row_of(name.c_str(), name.c_str())});
        } else if (what == 7) {
            shown_->selection().toggle(there[one]);
        } else if (what == 8) {
            edit.operations.push_back(operation::insert_qualifier{
                there[one], 0, qualifier_of(("q" + std::to_string(step)).c_str(), "Marek")});
        }
        ASSERT_TRUE(edit.operations.empty() || document_->apply(edit)) << step;
        timeline_rows fresh;
        fresh.read(*shown_, theme::current(), {});
        ASSERT_EQ(drawn(view_rows()), drawn(fresh)) << step;
    }
}

TEST_F(timeline_pane, triggers_on_clips_are_marked) {
    const QImage before = canvas_->grab().toImage();
    operation::change_clip change{"a1", {}, {}};
    property_dictionary trigger;
    trigger.add("trigger_time", 15.0);
    trigger.add("trigger_colour", "1,0,0");
    change.set.set("triggers", property_array{property_value(trigger)});
    ASSERT_TRUE(document_->apply({"made", "", {change}}));
    ASSERT_EQ(view_rows()[0].marks.size(), 1U);
    EXPECT_EQ(view_rows()[0].marks[0].colour, QColor(255, 0, 0));
    const QImage after = canvas_->grab().toImage();
    const QPoint place(150, timeline_sizes.ruler_height + timeline_sizes.clip_inset + 2);
    EXPECT_NE(after.pixelColor(place), before.pixelColor(place));
    EXPECT_GT(after.pixelColor(place).red(), 2 * after.pixelColor(place).blue());
}

TEST_F(timeline_pane, arrows_walk_from_clip_to_clip) {
    QTest::keyClick(canvas_, Qt::Key_Down);
    EXPECT_EQ(selected(), clips{"a1"});
    QTest::keyClick(canvas_, Qt::Key_Right, Qt::AltModifier);
    EXPECT_EQ(selected(), clips{"a2"});
    QTest::keyClick(canvas_, Qt::Key_Down);
    EXPECT_EQ(selected(), clips{"b1"});
    QTest::keyClick(canvas_, Qt::Key_Up);
    EXPECT_EQ(selected(), clips{"a2"});
    QTest::keyClick(canvas_, Qt::Key_Left, Qt::AltModifier);
    EXPECT_EQ(selected(), clips{"a1"});
    EXPECT_DOUBLE_EQ(transport_.seconds, 10);
}

TEST_F(timeline_pane, the_frame_on_the_whole_event_is_dragged) {
    auto* whole = view_.findChild<timeline_whole_event*>(QStringLiteral("timeline_whole_event"));
    const QRectF frame = whole->frame();
    const QPoint from = frame.center().toPoint();
    QTest::mousePress(whole, Qt::LeftButton, {}, from);
    QMouseEvent moved(QEvent::MouseMove, from + QPoint(200, 0), whole->mapToGlobal(from + QPoint(200, 0)),
                      Qt::NoButton, Qt::LeftButton, {});
    QApplication::sendEvent(whole, &moved);
    QTest::mouseRelease(whole, Qt::LeftButton, {}, from + QPoint(200, 0));
    EXPECT_NEAR(whole->frame().left() - frame.left(), 200, 1.5);
    EXPECT_DOUBLE_EQ(view_state().scale().seconds_per_pixel, 0.1);
}

TEST_F(timeline_pane, parts_can_be_found_by_name) {
    for (const char* name : {"timeline_canvas", "timeline_names", "timeline_whole_event", "timeline_zoom",
                             "timeline_zoom_in", "timeline_zoom_out", "timeline_fit", "timeline_snap"}) {
        const auto* part = view_.findChild<QWidget*>(QLatin1String(name));
        ASSERT_NE(part, nullptr) << name;
        EXPECT_FALSE(part->accessibleName().isEmpty()) << name;
    }
    QTest::mouseClick(view_.findChild<QWidget*>(QStringLiteral("timeline_fit")), Qt::LeftButton);
    EXPECT_NEAR(view_state().scale().seconds_at(1000), 600, 1e-6);
}

}  // namespace
}  // namespace vistels
