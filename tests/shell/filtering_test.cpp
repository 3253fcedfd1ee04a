// SPDX-License-Identifier: GPL-3.0-or-later
// What the window shows and does while a filter is on, by real events.
#include <QAbstractButton>
#include <QAction>
#include <QLabel>
#include <QMouseEvent>

#include "app/event/clip_filtering.h"
#include "app/event/undo_stack.h"
#include "app/settings/settings.h"
#include "shell/event/filter_control.h"
#include "shell/event/timeline_binder.h"
#include "shell/filter/filter_parts.h"
#include "shell/kit/inspector_parts.h"
#include "shell/panes/inspector/clip_title_block.h"
#include "shell/panes/timeline/timeline_canvas.h"
#include "shell/panes/timeline/timeline_metrics.h"
#include "shell/panes/timeline/timeline_state.h"
#include "shell/panes/timeline/timeline_view.h"
#include "shell/window/window_actions.h"
#include "support/patience.h"
#include "support/shown_event.h"
#include "support/timeline_builder.h"
#include "video/synchronised_playback.h"

namespace vistels {
namespace {

using testing::comes_true;
using testing::qualifier_of;
using testing::row_of;
using clips = std::vector<std::string>;

// Row "Shot": s1 (Marek), s2 (Okafor), s3 (Marek); row "Pass": p1, which starts with s1, and p2.
class filtering : public testing::shown_event {
  protected:
    void SetUp() override {
        shown_event::SetUp();
        if (IsSkipped()) return;
        open();
        const shared_text shot("shot");
        const shared_text pass("pass");
        const auto made =
            event().timeline().apply({"made",
                                      "",
                                      {operation::insert_row{0, row_of("shot", "Shot")},
                                       operation::insert_row{1, row_of("pass", "Pass")},
                                       operation::insert_clip{shot, clip("s1", 0.5, 0.8, "Marek")},
                                       operation::insert_clip{shot, clip("s2", 1, 1.3, "Okafor")},
                                       operation::insert_clip{shot, clip("s3", 2, 2.3, "Marek")},
                                       operation::insert_clip{pass, clip("p1", 0.5, 1, "")},
                                       operation::insert_clip{pass, clip("p2", 3, 3.4, "")}}});
        ASSERT_TRUE(made) << made.message();
        view = window->findChild<timeline_view*>();
        canvas = find<timeline_canvas>("timeline_canvas");
    }
    static sxy_CLIP clip(const char* uuid, double start, double end, const char* player) {
        sxy_CLIP made = testing::clip_of(uuid, start, end);
        if (*player) made.set_qualifiers({qualifier_of(std::string("q") + uuid, player)});
        return made;
    }
    void filter(const std::string& text) {
        event().filtering().apply(text);
        ASSERT_TRUE(comes_true([&] { return !event().filtering().standing().is_judging; }));
        ASSERT_EQ(event().filtering().standing().text, text);
    }
    void hide(bool hides) {
        QTest::mouseClick(find<QAbstractButton>(hides ? "filter.mode.1" : "filter.mode.0"), Qt::LeftButton);
    }
    void press(Qt::Key key, Qt::KeyboardModifiers with = {}) { QTest::keyClick(window.get(), key, with); }
    void click(double seconds, int row) {
        const timeline_row& shown = view->state().rows()[static_cast<std::size_t>(row)];
        const int y = timeline_sizes.ruler_height + shown.top - view->state().first_y() + shown.height / 2;
        const int x = static_cast<int>(std::lround(view->state().scale().x_of(seconds)));
        QTest::mouseClick(canvas, Qt::LeftButton, {}, QPoint(x, y));
    }
    // "2/3 0/2": what the heads of the first rows say.
    std::string heads() {
        std::string all;
        for (std::size_t row = 0; row < 2; ++row) {
            const timeline_row& shown = view->state().rows()[row];
            all += (row > 0 ? " " : "") + std::to_string(shown.passing) + "/" + std::to_string(shown.clips);
        }
        return all;
    }
    clips selected() { return view->state().selected(); }
    QString title() { return find<clip_title_block>("inspector.title")->accessibleName(); }
    filter_control& control() { return window->session().binders().current<timeline_binder>()->filter(); }
    QAction& action(command which) { return *window->actions()[which]; }
    double playhead() { return event().playback().collection_time(); }

    timeline_view* view = nullptr;
    timeline_canvas* canvas = nullptr;
};

TEST_F(filtering, is_told_by_counts_by_the_title_and_by_the_qualifiers_that_count) {
    view->select({"s1"});
    EXPECT_EQ(title(), "Shot 1");
    EXPECT_FALSE(find<filter_mode_control>("filter_mode")->isVisible());
    filter("Marek");
    EXPECT_TRUE(find<filter_mode_control>("filter_mode")->isVisible());
    EXPECT_EQ(heads(), "2/3 0/2");
    EXPECT_EQ(title(), "Shot 1, passes the filter");
    EXPECT_EQ(find<QWidget>("inspector.qualifiers")->accessibleDescription(), "Marek (passes the filter)");
    view->select({"s2"});
    EXPECT_EQ(title(), "Shot 2, filtered out");
    view->select({"s1", "s2", "s3"});
    EXPECT_EQ(title(), "3 clips, Shot, 2 pass the filter");
    filter("[RN]\"Pass\"");
    EXPECT_EQ(heads(), "0/3 2/2");
    EXPECT_EQ(title(), "3 clips, Shot, all filtered out");
    action(command::clear_filter).trigger();
    EXPECT_EQ(heads(), "3/3 2/2");
    EXPECT_EQ(title(), "3 clips, Shot");
    EXPECT_FALSE(action(command::clear_filter).isEnabled());
}

TEST_F(filtering, dimmed_clips_are_there_hidden_ones_are_not) {
    filter("Marek");
    click(1.1, 0);
    EXPECT_EQ(selected(), clips{"s2"}) << "a dimmed clip is clicked like any other";
    press(Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(selected().size(), 5U);
    hide(true);
    EXPECT_EQ(selected(), (clips{"s1", "s3"}));
    click(1.1, 0);
    EXPECT_EQ(selected(), clips{});
    hide(false);
    EXPECT_EQ(selected(), clips{}) << "none stayed marked unseen";
    press(Qt::Key_H, Qt::ControlModifier);
    press(Qt::Key_A, Qt::ControlModifier);
    press(Qt::Key_Delete);
    EXPECT_EQ(heads(), "0/1 0/2") << "what is not seen is not deleted";
    event().filtering().clear();
    EXPECT_EQ(view->state().rows()[0].shown.size(), 1U) << "without a filter nothing is hidden";
}

TEST_F(filtering, a_selected_clip_that_is_hidden_stays_in_the_inspector) {
    view->select({"s1", "s2"});
    filter("Okafor");
    hide(true);
    EXPECT_EQ(title(), "Shot 2, passes the filter");
    const auto taken =
        event().timeline().apply({"Remove Qualifier", "s2", {operation::remove_qualifier{"s2", "qs2"}}});
    ASSERT_TRUE(taken);
    EXPECT_EQ(title(), "2 clips, Shot, all filtered out");
    EXPECT_EQ(selected(), clips{});
    press(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(selected(), clips{"s2"});
    EXPECT_EQ(title(), "Shot 2, passes the filter");
}

TEST_F(filtering, hiding_is_remembered) {
    press(Qt::Key_H, Qt::ControlModifier);
    EXPECT_TRUE(load_filtered_out_clips(places).are_hidden);
    window->close();
    open();
    filter("Marek");
    EXPECT_TRUE(window->timeline().state().hides_filtered_out());
    EXPECT_TRUE(find<QAbstractButton>("filter.mode.1")->isChecked());
    EXPECT_TRUE((*&window->actions())[command::hide_filtered_out]->isChecked());
}

TEST_F(filtering, next_and_previous_go_over_what_passes_and_leave_none_out_that_start_together) {
    const auto walk = [&](Qt::Key key, Qt::KeyboardModifiers with, int steps) {
        std::string way;
        for (int step = 0; step < steps; ++step) {
            press(key, with);
            way += (selected().size() == 1 ? selected()[0] : std::string("-")) + " ";
        }
        return way;
    };
    EXPECT_EQ(walk(Qt::Key_F3, {}, 6), "s1 p1 s2 s3 p2 p2 ");
    EXPECT_DOUBLE_EQ(playhead(), 3);
    EXPECT_EQ(walk(Qt::Key_Left, Qt::ControlModifier, 5), "s3 s2 p1 s1 s1 ");
    filter("Marek");
    EXPECT_EQ(walk(Qt::Key_F3, {}, 2), "s3 s3 ");
    EXPECT_EQ(walk(Qt::Key_F3, Qt::ShiftModifier, 2), "s1 s1 ");
    EXPECT_DOUBLE_EQ(playhead(), 0.5);
    action(command::select_passing).trigger();
    EXPECT_EQ(selected(), (clips{"s1", "s3"}));
}

TEST_F(filtering, an_empty_result_says_so_and_is_cleared_by_its_button_or_escape) {
    auto* note = find<QWidget>("no_clip_passes");
    for (const bool by_key : {false, true}) {
        EXPECT_TRUE(note->isHidden());
        filter("nobody");
        EXPECT_EQ(heads(), "0/3 0/2");
        ASSERT_TRUE(note->isVisible());
        EXPECT_TRUE(canvas->rect().contains(note->geometry()));
        if (by_key) {
            QTest::keyClick(canvas, Qt::Key_Escape);
        } else {
            QTest::mouseClick(find<QAbstractButton>("no_clip_passes.clear"), Qt::LeftButton);
        }
        EXPECT_FALSE(event().filtering().is_on());
    }
    EXPECT_TRUE(note->isHidden());
    filter("Marek");
    QTest::keyClick(canvas, Qt::Key_Escape);
    EXPECT_TRUE(event().filtering().is_on()) << "a filter that shows something is not lost by a key";
}

TEST_F(filtering, all_that_pass_play_one_after_another) {
    filter("Marek");
    auto* playing = find<QLabel>("filter.playing");
    std::vector<clips> seen;
    const QObject here;
    QObject::connect(view, &timeline_view::selection_changed, &here, [&] {
        if (seen.empty() || seen.back() != selected()) seen.push_back(selected());
    });
    press(Qt::Key_P, Qt::ControlModifier);
    EXPECT_TRUE(event().playback().is_playing());
    EXPECT_TRUE(action(command::play_passing).isChecked());
    EXPECT_EQ(playing->text(), "1 of 2");
    ASSERT_TRUE(comes_true([&] { return !control().plays_all(); }));
    EXPECT_EQ(seen.front(), clips{"s1"});
    EXPECT_EQ(seen.back(), clips{"s3"});
    EXPECT_FALSE(event().playback().is_playing());
    EXPECT_GE(playhead(), 2.3);
    EXPECT_TRUE(playing->isHidden());
    EXPECT_FALSE(action(command::play_passing).isChecked());
}

TEST_F(filtering, playing_all_ends_by_escape_pause_seek_its_button_and_another_filter) {
    const std::vector<std::function<void()>> ends = {
        [&] { QTest::keyClick(window.get(), Qt::Key_Escape); },
        [&] { press(Qt::Key_K); },
        [&] { window->session().player().seek(3.6); },
        [&] { QTest::mouseClick(find<QAbstractButton>("filter.play_all"), Qt::LeftButton); },
        [&] { filter("Okafor"); },
        [&] { window->session().close(); },
    };
    filter("Marek");
    for (std::size_t way = 0; way < ends.size(); ++way) {
        window->session().player().to_start();
        view->select({});
        QTest::mouseClick(find<QAbstractButton>("filter.play_all"), Qt::LeftButton);
        ASSERT_TRUE(control().plays_all()) << way;
        ends[way]();
        EXPECT_TRUE(comes_true([&] { return !control().plays_all(); })) << way;
        EXPECT_TRUE(find<QLabel>("filter.playing")->isHidden()) << way;
    }
}

TEST_F(filtering, a_window_may_go_without_being_closed_while_clips_play) {
    filter("Marek");
    press(Qt::Key_P, Qt::ControlModifier);
    ASSERT_TRUE(control().plays_all());
    window.reset();
}

TEST_F(filtering, next_and_previous_move_along_the_list_that_plays) {
    window->session().player().set_rate(0.01);
    press(Qt::Key_P, Qt::ControlModifier);
    press(Qt::Key_F3);
    press(Qt::Key_F3);
    EXPECT_EQ(find<QLabel>("filter.playing")->text(), "3 of 5");
    EXPECT_EQ(selected(), clips{"s2"});
    press(Qt::Key_F3, Qt::ShiftModifier);
    EXPECT_EQ(selected(), clips{"p1"});
    EXPECT_TRUE(control().plays_all());
    press(Qt::Key_Escape);
    press(Qt::Key_P, Qt::ControlModifier);
    EXPECT_EQ(find<QLabel>("filter.playing")->text(), "2 of 5") << "it goes on where it was stopped";
}

TEST_F(filtering, clips_coded_meanwhile_are_judged_when_they_end_and_by_each_change) {
    filter("[RN]\"Goal\"");
    const auto standing = [&] {
        const auto& now = event().filtering().standing();
        return std::to_string(now.passing) + " of " + std::to_string(now.total);
    };
    EXPECT_EQ(standing(), "0 of 5");
    QTest::keyPress(window.get(), Qt::Key_G);
    EXPECT_EQ(standing(), "0 of 5") << "it still grows";
    QTest::keyRelease(window.get(), Qt::Key_G);
    EXPECT_EQ(standing(), "1 of 6");
    EXPECT_TRUE(find<QWidget>("no_clip_passes")->isHidden());
    const auto& rows = view->state().rows();
    const auto goal =
        std::find_if(rows.begin(), rows.end(), [](const auto& row) { return row.name == "Goal"; });
    ASSERT_NE(goal, rows.end());
    EXPECT_EQ(goal->passing, 1U);
    QTest::keyPress(window.get(), Qt::Key_A);
    QTest::keyRelease(window.get(), Qt::Key_A);
    EXPECT_EQ(standing(), "1 of 7");
    press(Qt::Key_Z, Qt::ControlModifier);
    press(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(standing(), "0 of 5");
    EXPECT_TRUE(find<QWidget>("no_clip_passes")->isVisible());
    // A qualifier that comes brings its clip in.
    filter("late");
    const auto named = event().timeline().apply(
        {"Qualifier", "p2", {operation::insert_qualifier{"p2", 0, qualifier_of("n", "late")}}});
    ASSERT_TRUE(named);
    EXPECT_EQ(heads(), "0/3 1/2");
}

}  // namespace
}  // namespace vistels
