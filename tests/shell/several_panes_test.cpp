// SPDX-License-Identifier: GPL-3.0-or-later
// None, one and several panes of a kind that show one event.
#include <QAction>
#include <algorithm>
#include <utility>

#include "shell/event/read_only_guard.h"
#include "shell/event/timeline_binder.h"
#include "shell/event/window_binder.h"
#include "shell/filter/filter_entry.h"
#include "shell/filter/filter_field.h"
#include "shell/panes/code_window/code_window_canvas.h"
#include "shell/panes/code_window/code_window_view.h"
#include "shell/panes/collection/collection_pane.h"
#include "shell/panes/collection/collection_view.h"
#include "shell/panes/inspector/clip_title_block.h"
#include "shell/panes/inspector/inspector_view.h"
#include "shell/panes/timeline/timeline_state.h"
#include "shell/panes/timeline/timeline_view.h"
#include "shell/window/pane_host.h"
#include "shell/window/window_actions.h"
#include "support/patience.h"
#include "support/shown_event.h"
#include "support/timeline_builder.h"
#include "video/synchronised_playback.h"

namespace vistels {
namespace {

using testing::comes_true;
using names = std::vector<std::string>;

class several_panes : public testing::shown_event {
  protected:
    void SetUp() override {
        shown_event::SetUp();
        if (!IsSkipped()) open();
    }
    pane_host& host() { return window->panes(); }
    // In the window, over the panes that it lays out.
    template <class view>
    view& add(pane_kind kind, QSize size = {700, 400}) {
        view& made = host().add<view>(kind);
        made.setParent(window.get());
        made.setGeometry(QRect({0, 100}, size));
        made.show();
        return made;
    }
    void insert_clip(const char* row, const char* clip) {
        const auto made = event().timeline().apply(
            {"made",
             "",
             {operation::insert_row{0, testing::row_of(row, row)},
              operation::insert_clip{shared_text(row), testing::clip_of(clip, 1, 2)}}});
        ASSERT_TRUE(made) << made.message();
    }
    bool is_down(code_window_view& view, const char* name) {
        for (const code_window_button* one : view.canvas().buttons()) {
            if (one->button().name == QLatin1String(name)) return one->state().is_down;
        }
        return false;
    }
};

TEST_F(several_panes, two_of_a_kind_show_one_event_and_one_goes_while_it_plays) {
    timeline_view& first = window->timeline();
    auto* first_buttons = window->findChild<code_window_view*>();
    insert_clip("Shot", "one");
    auto& second = add<timeline_view>(pane_kind::timeline);
    auto& buttons = add<code_window_view>(pane_kind::code_window);
    EXPECT_EQ(second.state().rows().size(), 1U) << "it was open already";
    insert_clip("Pass", "two");
    EXPECT_EQ(first.state().rows().size(), 2U);
    EXPECT_EQ(second.state().rows().size(), 2U);

    QTest::keyPress(window.get(), Qt::Key_A);
    EXPECT_TRUE(is_down(*first_buttons, "Attack") && is_down(buttons, "Attack"));
    window->session().player().set_muted(true);
    window->session().player().play_or_pause();
    const auto follows = [&](timeline_view& view, double from) {
        return comes_true([&] { return view.state().playhead() > from; });
    };
    EXPECT_TRUE(follows(second, 0.1));
    EXPECT_EQ(first.state().playhead(), second.state().playhead()) << "one tick shows both";

    host().remove(second);
    host().remove(buttons);
    EXPECT_EQ(window->session().binders().all_of<timeline_binder>().size(), 1U);
    EXPECT_EQ(down(), names{"Attack"}) << "the window's key holds it";
    EXPECT_TRUE(follows(first, first.state().playhead() + 0.2));
    QTest::keyRelease(window.get(), Qt::Key_A);
    EXPECT_TRUE(comes_true([&] { return down().empty(); }));
    EXPECT_FALSE(is_down(*first_buttons, "Attack"));
    insert_clip("Goal", "three");
    EXPECT_EQ(first.state().rows().size(), 4U);
}

TEST_F(several_panes, a_pane_that_is_made_while_playback_health_is_shown_shows_it) {
    collection_pane& first = *window->findChild<collection_pane*>();
    auto& second = add<collection_pane>(pane_kind::collection);
    const auto vistels = event().collection().vistels();
    const auto told_in = [&](collection_pane& one) {
        return std::count_if(vistels.begin(), vistels.end(), [&](const auto& vistel) {
            return one.view().chip_words(vistel->uuid()).contains(QStringLiteral("dropped"));
        });
    };
    QAction* const health = window->actions()[command::playback_health];
    health->trigger();
    auto& third = add<collection_pane>(pane_kind::collection);
    const std::pair<collection_pane*, const char*> panes[] = {
        {&first, "first"}, {&second, "second"}, {&third, "made meanwhile"}};
    for (const auto& [one, what] : panes) {
        EXPECT_TRUE(comes_true([&] { return told_in(*one) == std::ssize(vistels); })) << what;
    }
    EXPECT_TRUE(window->memory().playback_health_shown);
    health->trigger();
    for (const auto& [one, what] : panes) EXPECT_EQ(told_in(*one), 0) << what;
}

// None of the window's keys takes those of the timeline that has the focus.
TEST_F(several_panes, arrows_walk_along_clips_in_a_window) {
    insert_clip("Shot", "one");
    ASSERT_TRUE(event().timeline().apply(
        {"made", "", {operation::insert_clip{shared_text("Shot"), testing::clip_of("two", 3, 4)}}}));
    timeline_view& timeline = window->timeline();
    auto* canvas = timeline.findChild<QWidget*>(QStringLiteral("timeline_canvas"));
    timeline.select({"one"});
    canvas->setFocus();
    QTest::keyClick(canvas, Qt::Key_Right, Qt::AltModifier);
    EXPECT_EQ(timeline.state().selected(), names{"two"});
    QTest::keyClick(canvas, Qt::Key_Left, Qt::AltModifier);
    EXPECT_EQ(timeline.state().selected(), names{"one"});
}

// A view that lives on shows no event and asks nothing of it.
TEST_F(several_panes, a_pane_that_was_let_go_keeps_nothing_of_the_event) {
    timeline_view view;
    view.resize(700, 400);
    window->session().attach(std::make_unique<timeline_binder>(view, window->session(), places));
    EXPECT_TRUE(view.state().has_timeline() && view.filter().entry());
    int told = 0;
    QObject::connect(&window->session().notices(), &event_notices::told, &view, [&told] { ++told; });
    Q_EMIT view.failed("refused");
    EXPECT_EQ(told, 1);
    window->session().player().seek(1);
    ASSERT_EQ(view.state().playhead(), 1);

    window->session().detach(view);
    EXPECT_FALSE(view.state().has_timeline() || view.filter().entry());
    EXPECT_FALSE(view.findChild<read_only_mark*>());
    insert_clip("Shot", "one");
    window->session().player().seek(2);
    Q_EMIT view.failed("refused");
    Q_EMIT view.selection_changed();
    Q_EMIT view.clear_filter_asked();
    EXPECT_EQ(view.state().rows().size(), 0U);
    EXPECT_EQ(view.state().playhead(), 0);
    EXPECT_EQ(told, 1);
}

TEST_F(several_panes, commands_act_on_the_timeline_that_was_used_last) {
    timeline_view& first = window->timeline();
    auto& second = add<timeline_view>(pane_kind::timeline);
    const auto scales = [&] {
        return std::pair(first.state().scale().seconds_per_pixel, second.state().scale().seconds_per_pixel);
    };
    const auto zoom = [&] { window->actions()[command::zoom_in]->trigger(); };
    const auto before = scales();
    zoom();
    EXPECT_TRUE(scales().first < before.first && scales().second == before.second) << "the first one";
    second.filter().focus();
    ASSERT_EQ(&window->timeline(), &second);
    const auto one = scales();
    zoom();
    EXPECT_TRUE(scales().first == one.first && scales().second < one.second);
    // The inspector's field shows the text of its filter.
    auto& inspector = window->findChild<inspector_view*>()->filter();
    EXPECT_EQ(inspector.entry(), second.filter().entry());
    host().remove(second);
    EXPECT_EQ(&window->timeline(), &first);
    EXPECT_EQ(inspector.entry(), first.filter().entry());
}

TEST_F(several_panes, two_timelines_have_two_filters_and_two_selections) {
    timeline_view& first = window->timeline();
    insert_clip("Shot", "one");
    insert_clip("Pass", "two");
    auto& second = add<timeline_view>(pane_kind::timeline);
    const auto filter = [&](timeline_view& view, const char* text) {
        view.filter().focus();
        ASSERT_TRUE(view.filter().entry()->apply(QString::fromLatin1(text)));
        for (auto* one : window->session().binders().all_of<timeline_binder>()) {
            ASSERT_TRUE(comes_true([&] { return !one->shown()->filtering().standing().is_judging; }));
        }
    };
    const auto passing = [](timeline_view& view) {
        std::string rows;
        for (const timeline_row& row : view.state().rows()) {
            if (row.passing > 0) rows += row.name.toStdString() + " ";
        }
        return rows;
    };
    filter(first, "[RN]\"Shot\"");
    EXPECT_EQ(passing(first) + "| " + passing(second), "Shot | Pass Shot ");
    filter(second, "[RN]\"Pass\"");
    EXPECT_EQ(passing(first) + "| " + passing(second), "Shot | Pass ");
    insert_clip("Shot again", "three");
    EXPECT_EQ(passing(first) + "| " + passing(second), "Shot | Pass ");
    first.select({"one"});
    second.select_passing();
    EXPECT_EQ(first.state().selected(), names{"one"});
    EXPECT_EQ(second.state().selected(), names{"two"});
    // The inspector and the player go by the one that was used last; the clips' marks by the main one.
    const auto title = [&] {
        return window->findChild<clip_title_block*>(QStringLiteral("inspector.title"))->accessibleName();
    };
    EXPECT_TRUE(title().startsWith(QStringLiteral("Pass 1"))) << title().toStdString();
    const sxy_DATA_root& timeline = event().timeline().timeline();
    EXPECT_TRUE(timeline.find_clip("one")->clip->selected() &&
                timeline.find_clip("one")->clip->filtered_in());
    EXPECT_FALSE(timeline.find_clip("two")->clip->selected() ||
                 timeline.find_clip("two")->clip->filtered_in());
    window->actions()[command::delete_clips]->trigger();
    EXPECT_FALSE(timeline.find_clip("two")) << "deleted where it was selected";
    EXPECT_TRUE(timeline.find_clip("one"));
    ASSERT_TRUE(event().undo().undo());
    EXPECT_EQ(second.state().selected(), names{"two"}) << "it comes back selected where it was";
    host().remove(second);
    EXPECT_TRUE(title().startsWith(QStringLiteral("Shot 1"))) << title().toStdString();
    EXPECT_EQ(passing(first), "Shot ");
}

TEST_F(several_panes, a_picture_is_as_large_as_the_largest_pane_wants_it) {
    auto& view = window->findChild<collection_pane*>()->view();
    const std::string vistel = event().collection().vistels().back()->uuid();  // not the one stepped by
    const auto shows_width_of = [&](collection_view& of) {
        return comes_true([&] {
            const auto picture = event().playback().picture(vistel);
            return picture && picture->width == of.picture_size(vistel).width() && of.has_picture(vistel);
        });
    };
    ASSERT_TRUE(shows_width_of(view));
    auto& large = add<collection_pane>(pane_kind::collection, {1500, 900});
    EXPECT_TRUE(shows_width_of(large.view()));
    EXPECT_GT(large.view().picture_size(vistel).width(), view.picture_size(vistel).width());
    EXPECT_TRUE(window->session().has_all_pictures());
    host().remove(large);
    EXPECT_TRUE(shows_width_of(view));
    host().remove(*window->findChild<collection_pane*>());
    EXPECT_TRUE(comes_true([&] { return !event().playback().picture(vistel); })) << "nobody sees it";
    window->session().player().step(1);
    auto& again = add<collection_pane>(pane_kind::collection);
    EXPECT_TRUE(shows_width_of(again.view()));
}

// A window of its own without any pane: keys code, and nothing is missed.
TEST_F(several_panes, an_event_without_panes_codes_by_keys) {
    window->close();
    QWidget plain;
    event_session session(loop);
    session.attach(std::make_unique<window_binder>(plain, session));
    plain.show();
    plain.activateWindow();
    ASSERT_TRUE(testing::becomes_active(&plain));
    auto read = open_event::read(folder, places, loop);
    ASSERT_TRUE(read) << read.message();
    session.show(std::move(read).value());
    EXPECT_TRUE(session.has_all_pictures());
    session.player().set_muted(true);
    QTest::keyPress(&plain, Qt::Key_A);
    EXPECT_EQ(session.shown_event()->logger().down_buttons().size(), 1U);
    session.player().play_or_pause();
    EXPECT_TRUE(comes_true([&] { return session.shown_event()->playback().collection_time() > 0.1; }));
    QTest::keyRelease(&plain, Qt::Key_A);
    EXPECT_TRUE(comes_true([&] { return session.shown_event()->logger().down_buttons().empty(); }));
    EXPECT_EQ(session.shown_event()->timeline().timeline().clip_count(), 1U);
    session.close();
    QTest::keyClick(&plain, Qt::Key_A);
}

}  // namespace
}  // namespace vistels
