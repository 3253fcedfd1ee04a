// SPDX-License-Identifier: GPL-3.0-or-later
// What a person does with the vistels of an open event: layouts, menus, files, bringing into step.
#include <gtest/gtest.h>

#include <QAction>
#include <QInputDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QMouseEvent>
#include <QPushButton>
#include <QTest>
#include <filesystem>

#include "shell/event/align_control.h"
#include "shell/event/collection_commands.h"
#include "shell/event/vistel_files.h"
#include "shell/kit/inspector_parts.h"
#include "shell/kit/message_bar.h"
#include "shell/panes/collection/align_bar.h"
#include "shell/panes/collection/collection_pane.h"
#include "shell/panes/collection/collection_view.h"
#include "shell/window/window_actions.h"
#include "support/patience.h"
#include "support/shown_event.h"
#include "video/synchronised_playback.h"
#include "video/vault_lock.h"

namespace vistels {
namespace {

using testing::comes_true;

struct collection_window : public testing::shown_event {
    void SetUp() override {
        shown_event::SetUp();
        places.trash = home / "Trash";
        if (!IsSkipped() && !HasFatalFailure()) open();
    }

    std::vector<std::shared_ptr<single_Vistel_CTR>> vistels() { return event().collection().vistels(); }
    std::string uuid(std::size_t place) { return vistels()[place]->uuid(); }
    std::vector<std::string> names() {
        std::vector<std::string> all;
        for (const auto& one : vistels()) all.push_back(one->name());
        return all;
    }
    rectangle frame(std::size_t place) { return vistels()[place]->proportion_rect().value_or(rectangle()); }
    double offset(std::size_t place) { return vistels()[place]->manual_start_offset().value_or(0); }
    collection_view& view() { return *find<collection_view>("collection.view"); }
    vistel_files& files() { return window->collection().files(); }
    void trigger(const char* action) { find<QAction>(action)->trigger(); }
    void undo() { window->actions()[command::undo]->trigger(); }
    void redo() { window->actions()[command::redo]->trigger(); }

    // The menu of a vistel, opened by the mouse.
    QMenu* menu_of(const std::string& vistel) {
        const QPoint at = view().place_of(vistel).center();
        QContextMenuEvent asked(QContextMenuEvent::Mouse, at, view().mapToGlobal(at));
        QApplication::sendEvent(&view(), &asked);
        QMenu* found = nullptr;
        for (auto* one : window->findChildren<QMenu*>("vistel.menu")) found = one;
        return found;
    }
    void choose(const std::string& vistel, const QString& words) {
        QMenu* menu = menu_of(vistel);
        ASSERT_TRUE(menu);
        QAction* found = nullptr;
        for (auto* one : menu->actions()) found = one->text() == words ? one : found;
        ASSERT_TRUE(found) << words.toStdString();
        EXPECT_TRUE(found->isEnabled()) << words.toStdString();
        found->trigger();
        menu->close();
        QCoreApplication::sendPostedEvents(menu, QEvent::DeferredDelete);
    }
    bool wait_for_vistels(std::size_t count) {
        return QTest::qWaitFor([&] { return vistels().size() == count; }, 60000);
    }
    // A settled picture at that time.
    void stand_at(double seconds) {
        window->session().player().seek(seconds);
        ASSERT_TRUE(QTest::qWaitFor([&] { return event().playback().is_settled(); }, 60000));
    }
    void press_button(const char* name) { QTest::mouseClick(find<QWidget>(name), Qt::LeftButton); }
};

TEST_F(collection_window, layouts_are_stored_and_taken_back) {
    const rectangle before = frame(0);
    view().set_current(uuid(1));
    trigger("collection.one_large");
    EXPECT_NEAR(frame(1).width, 2.0 / 3, 1e-9);
    EXPECT_EQ(frame(0).height, 0.5);
    EXPECT_NEAR(event().collection().outside_bounds_ratio().value_or(0), 1.5 * 16 / 9, 1e-6);
    trigger("collection.to_back");
    EXPECT_LT(vistels()[1]->saved_view_order(), vistels()[0]->saved_view_order());
    undo();
    undo();
    EXPECT_EQ(frame(0), before);
    redo();
    EXPECT_NEAR(frame(1).width, 2.0 / 3, 1e-9);
    window->close();
    window.reset();
    open();
    EXPECT_NEAR(frame(1).width, 2.0 / 3, 1e-9);
}

TEST_F(collection_window, a_vistel_is_dragged_to_its_place) {
    const QPoint from = view().chip_of(uuid(1)).center();
    const rectangle before = frame(1);
    QTest::mousePress(&view(), Qt::LeftButton, {}, from);
    for (const int step : {20, 40, 60}) {
        const QPoint at = from + QPoint(-step, -step);
        QMouseEvent move(QEvent::MouseMove, at, view().mapToGlobal(at), Qt::NoButton, Qt::LeftButton, {});
        QApplication::sendEvent(&view(), &move);
    }
    QTest::mouseRelease(&view(), Qt::LeftButton, {}, from - QPoint(60, 60));
    EXPECT_LT(frame(1).x, before.x);
    EXPECT_EQ(view().place_of(uuid(1)).size().isEmpty(), false);
    EXPECT_TRUE(window->actions()[command::undo]->text().contains("Move Vistel"));
    undo();
    EXPECT_EQ(frame(1), before);
}

TEST_F(collection_window, the_menu_of_a_vistel_removes_moves_and_clones_it) {
    QMenu* menu = menu_of(uuid(0));
    ASSERT_TRUE(menu);
    QStringList words;
    for (const auto* one : menu->actions()) words << one->text();
    for (const char* wanted : {"Remove Vistel", "Duplicate Vistel", "Deinterlace Vistel",
                               "Move collection vistel", "Copy Vistel Movie To Desktop", "Remove Overlay"}) {
        EXPECT_TRUE(words.contains(QLatin1String(wanted))) << wanted;
    }
    menu->close();
    const auto before = names();
    files().move(uuid(0), 1);
    EXPECT_EQ(names(), (std::vector<std::string>{before[1], before[0]}));
    undo();
    choose(uuid(0), "Remove Vistel");
    EXPECT_EQ(names(), std::vector<std::string>{before[1]});
    EXPECT_NEAR(frame(0).width, 1, 1e-9);  // it has the room now
    undo();
    EXPECT_EQ(names(), before);
    choose(uuid(1), "Duplicate Vistel");
    ASSERT_TRUE(wait_for_vistels(3));
    EXPECT_GT(vistels()[2]->number(), 0);
    EXPECT_NE(vistels()[2]->number(), vistels()[1]->number());
    EXPECT_TRUE(QTest::qWaitFor([&] { return view().has_picture(uuid(2)); }, 60000));
    undo();
    EXPECT_EQ(vistels().size(), 2u);
}

TEST_F(collection_window, movies_are_added_as_the_user_chooses) {
    const QStringList movies = {QString::fromStdString(home / "left end.mp4"),
                                QString::fromStdString(home / "right end.mp4")};
    files().add(movies, {});
    auto* panel = window->findChild<QDialog*>("add_movies");
    ASSERT_TRUE(panel);
    QStringList words;
    for (const auto* one : panel->findChildren<QPushButton*>()) words << one->text();
    EXPECT_TRUE(words.contains("Create A New Vistel For Each File"));
    EXPECT_TRUE(words.contains("Create A New Vistel And Append Movies"));
    press_button("add_movies.1");
    ASSERT_TRUE(wait_for_vistels(3));
    EXPECT_EQ(vistels()[2]->parts().parts.size(), 2u);
    EXPECT_NEAR(frame(2).width, 0.5, 1e-9);  // the grid took it in
    EXPECT_TRUE(QTest::qWaitFor([&] { return view().has_picture(uuid(2)); }, 60000));
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    files().add({movies.front()}, uuid(0));
    EXPECT_EQ(find<QPushButton>("add_movies.2")->text(), "Append video files to this vistel.");
    press_button("add_movies.2");
    ASSERT_TRUE(QTest::qWaitFor([&] { return vistels()[0]->parts().parts.size() == 2; }, 60000));
    EXPECT_NEAR(event().playback().last_time(), 8, 0.2);
    undo();
    EXPECT_EQ(vistels()[0]->parts().parts.size(), 1u);
    files().add({QString::fromStdString(folder + "/video group.plist")}, {});
    ASSERT_TRUE(QTest::qWaitFor([&] { return find<message_bar>("message")->waiting() > 0; }, 60000));
    EXPECT_EQ(vistels().size(), 3u);
}

// The change stands in the journal: its movies must not go.
TEST_F(collection_window, movies_stay_when_the_collection_could_not_be_saved) {
    const std::string data = vistels()[0]->data_folder();
    std::filesystem::rename(data, home / "away");
    files().add({QString::fromStdString(home / "left end.mp4")}, {});
    ASSERT_TRUE(wait_for_vistels(3));
    ASSERT_TRUE(QTest::qWaitFor([&] { return find<message_bar>("message")->waiting() > 0; }, 60000));
    EXPECT_TRUE(file_exists(vistels()[2]->parts().parts[0].path));
    std::filesystem::rename(home / "away", data);
}

TEST_F(collection_window, closing_for_good_asks_and_moves_the_data_to_the_trash) {
    vistels()[0]->set_creator("someone else");
    const std::string data = vistels()[0]->data_folder();
    choose(uuid(0), "Close Vistel…");
    auto* question = find<QMessageBox>("close_vistel");
    EXPECT_TRUE(question->text().startsWith("You did not create '"));
    EXPECT_TRUE(
        question->text().contains("If you click 'Close Vistel' this will close the vistel and move the movie "
                                  "data to the trash.  The movie data will then not be available for "
                                  "others."));
    EXPECT_TRUE(std::filesystem::exists(data));
    press_button("close_vistel.close");
    EXPECT_EQ(vistels().size(), 1u);
    const auto moves = [&](bool back) { return comes_true([&] { return is_folder(data) == back; }); };
    EXPECT_TRUE(moves(false));
    EXPECT_TRUE(std::filesystem::exists(places.trash));
    undo();
    EXPECT_EQ(vistels().size(), 2u);
    EXPECT_TRUE(moves(true));
    EXPECT_TRUE(QTest::qWaitFor([&] { return view().has_picture(uuid(0)); }, 60000));
    // The next run can undo it as well.
    redo();
    undo();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(comes_true([&] { return jobs.jobs().empty(); }));
    choose(uuid(0), "Close Vistel…");
    press_button("close_vistel.close");
    // Taken back before the data has gone.
    undo();
    EXPECT_TRUE(comes_true([&] { return jobs.jobs().empty() && is_folder(data); }));
    redo();
    undo();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    choose(uuid(0), "Close Vistel…");
    press_button("close_vistel.close");
    EXPECT_TRUE(moves(false));
    window->close();
    window.reset();
    open();
    ASSERT_EQ(vistels().size(), 1u);
    undo();
    ASSERT_EQ(vistels().size(), 2u);
    EXPECT_TRUE(moves(true));
    EXPECT_TRUE(QTest::qWaitFor([&] { return view().has_picture(uuid(0)); }, 60000));
}

TEST_F(collection_window, nothing_is_brought_moved_or_closed_beside_another_change_of_the_vault) {
    const auto uuids = std::vector{uuid(0), uuid(1)};
    const auto changes = [&](int which) {
        if (which == 0) files().add({QString::fromStdString(home / "left end.mp4")}, {});
        if (which == 1) files().duplicate(uuid(0));
        if (which == 2) files().move(uuid(0), 1);
        if (which == 3) files().remove(uuid(1));
        if (which == 4) {
            choose(uuid(1), "Close Vistel…");
            press_button("close_vistel.close");
        }
    };
    auto* bar = find<message_bar>("message");
    for (int which = 0; which < 5; ++which) {
        SCOPED_TRACE(which);
        auto lock = vault_lock::take(places.home_vault);
        ASSERT_TRUE(lock) << lock.message();
        bar->clear();
        changes(which);
        ASSERT_TRUE(comes_true([&] { return bar->waiting() > 0; }));
        EXPECT_EQ(bar->text(), "Vault 'Home Vault' is currently being modified.");
        EXPECT_EQ((std::vector{uuid(0), uuid(1)}), uuids);
        EXPECT_TRUE(is_folder(vistels()[1]->data_folder()));
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    bar->clear();
    changes(4);
    EXPECT_EQ(vistels().size(), 1u);
}

TEST_F(collection_window, a_vistel_is_renamed_and_a_long_name_takes_no_room) {
    trigger("collection.align");
    view().set_current(uuid(0));
    const int least = find<align_bar>("align")->minimumSizeHint().width();
    const std::string before = vistels()[0]->name();
    const QString name = QStringLiteral("<b>A & B</b> ") + QString(200, QLatin1Char('m'));
    choose(uuid(0), "Rename Vistel…");
    auto* dialog = find<QInputDialog>("vistel.ask_name");
    EXPECT_EQ(dialog->textValue().toStdString(), before);
    dialog->setTextValue(name);
    dialog->accept();
    EXPECT_EQ(vistels()[0]->name(), name.toStdString());
    EXPECT_EQ(find<align_bar>("align")->minimumSizeHint().width(), least);
    EXPECT_EQ(find<QLabel>("align.vistel")->toolTip(), name);
    EXPECT_EQ(find<QLabel>("align.vistel")->textFormat(), Qt::PlainText);
    undo();
    EXPECT_EQ(vistels()[0]->name(), before);
}

TEST_F(collection_window, what_is_no_time_is_said_at_the_field) {
    trigger("collection.align");
    find<align_bar>("align")->set_shows_parts(true);
    const auto type = [this](const char* name, const char* text) {
        auto* field = find<time_field>(name);
        field->setFocus();
        field->selectAll();
        QTest::keyClicks(field, text);
        QTest::keyClick(field, Qt::Key_Return);
        return field;
    };
    for (const auto& [name, text] : {std::pair{"align.offset", "abc"}, std::pair{"movie_parts.gap", "-1"}}) {
        const QString shown = find<time_field>(name)->text();
        auto* field = type(name, text);
        EXPECT_FALSE(field->complaint().isEmpty()) << name;
        EXPECT_EQ(field->text(), text);
        EXPECT_TRUE(field->hasFocus());
        EXPECT_EQ(find<message_bar>("message")->waiting(), 0u);
        QTest::keyClick(field, Qt::Key_Escape);
        EXPECT_TRUE(field->complaint().isEmpty());
        EXPECT_EQ(field->text(), shown);
    }
    type("align.offset", "0,5");
    EXPECT_NEAR(offset(0), 0.5, 1e-9);
    // The keys code again; Tab goes on from the field, and coming back to the window presses no button.
    EXPECT_FALSE(window->focusWidget());
    QTest::keyClick(window.get(), Qt::Key_Tab);
    EXPECT_EQ(window->focusWidget(), find<QWidget>("align.nudge.less"));
    window->focusWidget()->clearFocus();
    QEvent back(QEvent::WindowActivate);
    QApplication::sendEvent(window.get(), &back);
    EXPECT_EQ(window->focusWidget(), find<QWidget>("collection"));
}

TEST_F(collection_window, offsets_are_typed_nudged_and_dragged) {
    trigger("collection.align");
    auto* field = find<QLineEdit>("align.offset");
    view().set_current(uuid(1));
    ASSERT_TRUE(field->isVisible());
    field->setFocus();
    field->selectAll();
    QTest::keyClicks(field, "0.5");
    QTest::keyClick(field, Qt::Key_Return);
    EXPECT_NEAR(offset(1), 0.5, 1e-9);
    stand_at(1);
    press_button("align.nudge.more");
    EXPECT_NEAR(offset(1), 0.6, 1e-3);
    trigger("collection.frame_later");
    EXPECT_NEAR(offset(1), 0.5, 1e-3);
    const QString key = find<QAction>("collection.frame_later")->shortcut().toString();
    EXPECT_TRUE(find<QWidget>("align.nudge.less")->toolTip().contains(key));
    // A vistel with a smaller offset is ahead: there is a time before 0, and the transport goes there.
    EXPECT_NEAR(event().start_seconds(), -0.5, 1e-3);
    window->session().player().to_start();
    EXPECT_NEAR(event().playback().collection_time(), -0.5, 1e-3);
    stand_at(1);
    const QPoint from = view().place_of(uuid(0)).center();
    const auto move = [&](int by) {
        QMouseEvent moved(QEvent::MouseMove, from + QPoint(by, 0), view().mapToGlobal(from), Qt::NoButton,
                          Qt::LeftButton, {});
        QApplication::sendEvent(&view(), &moved);
    };
    QTest::mousePress(&view(), Qt::LeftButton, {}, from);
    move(12);
    EXPECT_TRUE(view().note_in(uuid(0)).startsWith("+2 frames")) << view().note_in(uuid(0)).toStdString();
    EXPECT_EQ(offset(0), 0);
    QTest::mouseRelease(&view(), Qt::LeftButton, {}, from + QPoint(12, 0));
    EXPECT_NEAR(offset(0), -0.2, 1e-3);
    EXPECT_TRUE(view().note_in(uuid(0)).isEmpty());
    undo();
    EXPECT_NEAR(offset(0), 0, 1e-9);
}

// The first vistel shows at 2 s what the second shows at 1 s.
TEST_F(collection_window, same_moment_brings_two_vistels_into_step) {
    trigger("collection.align");
    view().set_current(uuid(0));
    stand_at(2);
    press_button("align.mark");
    view().set_current(uuid(1));
    stand_at(1);
    press_button("align.same");
    EXPECT_NEAR(offset(1), 1, 1e-6);
    const double now = event().playback().collection_time();
    EXPECT_NEAR(movie_time_at(event().collection(), uuid(0), now).value_or(0), 2, 0.11);
    EXPECT_NEAR(movie_time_at(event().collection(), uuid(1), now).value_or(0), 1, 0.11);
    EXPECT_FALSE(window->collection().alignment()->has_mark());
    undo();
    EXPECT_EQ(offset(1), 0);
}

TEST_F(collection_window, gaps_are_typed_and_padding_takes_their_place) {
    files().add_as({QString::fromStdString(home / "left end.mp4")}, uuid(0), movies_as::parts_of_existing);
    ASSERT_TRUE(QTest::qWaitFor([&] { return vistels()[0]->parts().parts.size() == 2; }, 60000));
    trigger("collection.align");
    view().set_current(uuid(0));
    press_button("align.parts");
    find<align_bar>("align")->strip().choose(1);
    auto* field = find<QLineEdit>("movie_parts.gap");
    field->setFocus();
    field->selectAll();
    QTest::keyClicks(field, "1.5");
    QTest::keyClick(field, Qt::Key_Return);
    EXPECT_NEAR(vistels()[0]->parts().parts[1].gap_before, 1.5, 1e-9);
    stand_at(4.7);
    EXPECT_FALSE(view().words_in(uuid(0)).isEmpty());
    trigger("collection.pad");
    ASSERT_TRUE(QTest::qWaitFor([&] { return vistels()[0]->parts().parts.size() == 3; }, 60000));
    EXPECT_EQ(vistels()[0]->parts().parts[2].gap_before, 0);
    trigger("collection.unpad_to_offsets");
    ASSERT_TRUE(QTest::qWaitFor([&] { return vistels()[0]->parts().parts.size() == 2; }, 60000));
    EXPECT_NEAR(vistels()[0]->parts().parts[1].gap_before, 1.5, 1e-3);
}

}  // namespace
}  // namespace vistels
