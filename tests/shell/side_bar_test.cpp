// SPDX-License-Identifier: GPL-3.0-or-later
// The side bar by real events: what it lists, what stays when the list changes, finding, folding, menus.
#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QMenu>
#include <QMimeData>
#include <QScrollBar>
#include <QTest>
#include <QTimer>
#include <QTreeView>
#include <QUrl>

#include "shell/panes/side_bar/content_model.h"
#include "shell/panes/side_bar/content_side_bar.h"
#include "shell/panes/side_bar/disk_line.h"
#include "util/file_failures.h"

namespace vistels {
namespace {

content_item collection(const std::string& name, long long count = 3) {
    return {item_kind::collection, name, "/h/" + name, "/h/" + name, count};
}

content_vault vault(const std::string& name, std::vector<content_item> items) {
    content_vault made;
    made.name = name;
    made.path = "/" + name;
    for (const auto& item : items) ++made.counts[static_cast<std::size_t>(item.kind)];
    made.items = std::move(items);
    return made;
}

std::vector<content_item> many(int count) {
    std::vector<content_item> items;
    for (int i = 0; i < count; ++i) items.push_back(collection("Match " + std::to_string(i)));
    return items;
}

struct side_bar : public ::testing::Test {
    side_bar() {
        bar.resize(208, 600);
        bar.show();
        QObject::connect(&bar, &content_side_bar::open_asked, &bar,
                         [this](const QString& folder) { opened << folder; });
        QObject::connect(&bar, &content_side_bar::unknown_asked, &bar,
                         [this](int, const QString& name, const QString&) { unknown << name; });
    }
    QTreeView& list() { return *bar.list(); }
    QModelIndex line(const char* words) {
        auto* model = list().model();
        return model
            ->match(model->index(0, 0), Qt::DisplayRole, words, 1, Qt::MatchRecursive | Qt::MatchExactly)
            .value(0);
    }
    void click(const char* words) {
        ASSERT_TRUE(line(words).isValid()) << words;
        list().scrollTo(line(words));
        QTest::mouseClick(list().viewport(), Qt::LeftButton, {}, list().visualRect(line(words)).center());
    }
    // The names of all lines that are in the list, folded or not.
    QStringList lines() {
        QStringList all;
        auto* model = list().model();
        for (int i = 0; i < model->rowCount(); ++i) {
            const QModelIndex top = model->index(i, 0);
            all << top.data().toString();
            for (int j = 0; j < model->rowCount(top); ++j) all << model->index(j, 0, top).data().toString();
        }
        return all;
    }

    content_side_bar bar;
    QStringList opened;
    QStringList unknown;
};

TEST_F(side_bar, opens_what_can_be_opened_by_click_and_key) {
    auto items = std::vector<content_item>{collection("Harbour"), collection("Training")};
    items.push_back({item_kind::timeline, "Notes", "/h/Notes", "/h/Notes", 4});
    items.push_back({item_kind::composer, "Set pieces", "/h/Set pieces", {}, -1});
    bar.set_content({vault("Home", items)});
    click("Training");
    QTest::mouseDClick(list().viewport(), Qt::LeftButton, {}, list().visualRect(line("Training")).center());
    click("Notes");
    QTest::keyClick(&list(), Qt::Key_Return);
    click("Set pieces");
    QTest::keyClick(&list(), Qt::Key_Return);
    EXPECT_EQ(opened.join(","), "/h/Training,/h/Notes");
    EXPECT_EQ(unknown.join(","), "Set pieces");
}

TEST_F(side_bar, a_change_leaves_choice_folding_and_place_as_they_were) {
    auto items = many(200);
    bar.set_content({vault("Home", items), vault("Team", {collection("Cup")}), vault("Other", many(3))});
    click("Team");  // folds it
    ASSERT_FALSE(list().isExpanded(line("Team")));
    list().setCurrentIndex(line("Match 120"));
    list().scrollTo(line("Match 120"), QAbstractItemView::PositionAtTop);
    const int place = list().visualRect(line("Match 120")).top();

    // Some go, some come, one before all that is in sight; a vault goes and another comes in front of it.
    items.erase(items.begin() + 150, items.begin() + 160);
    items[120].count = 77;
    bar.set_content({vault("Home", items), vault("New", many(2)), vault("Team", {collection("Cup")})});
    EXPECT_EQ(list().currentIndex().data().toString(), "Match 120");
    EXPECT_EQ(list().visualRect(line("Match 120")).top(), place);
    EXPECT_FALSE(list().isExpanded(line("Team")));
    EXPECT_TRUE(list().isExpanded(line("New")));
    EXPECT_FALSE(line("Match 155").isValid());
    EXPECT_EQ(line("Match 120").data(content_model::count_role).toString(), "77");
}

TEST_F(side_bar, the_list_is_always_that_of_a_new_one) {
    const std::vector<std::vector<content_vault>> steps = {
        {vault("A", {collection("1"), collection("2"), collection("3")})},
        {vault("A", {collection("2")}), vault("B", {})},
        {vault("B", {collection("9")}), vault("A", {collection("3"), collection("2"), collection("1")})},
        {vault(
            "A",
            {collection("0"), collection("1"), collection("4"), {item_kind::matrix, "0", "/m/0", {}, -1}})},
        {},
        {vault("C", {{item_kind::timeline, "t", "/t", "/t", 1}})},
    };
    for (const auto& step : steps) {
        bar.set_content(step);
        content_side_bar fresh;
        fresh.set_content(step);
        auto* model = list().model();
        auto* other = fresh.list()->model();
        ASSERT_EQ(model->rowCount(), other->rowCount());
        for (int i = 0; i < model->rowCount(); ++i) {
            const QModelIndex one = model->index(i, 0);
            const QModelIndex same = other->index(i, 0);
            ASSERT_EQ(model->rowCount(one), other->rowCount(same)) << one.data().toString().toStdString();
            for (int j = 0; j < model->rowCount(one); ++j) {
                EXPECT_EQ(model->index(j, 0, one).data(), other->index(j, 0, same).data());
                EXPECT_EQ(model->index(j, 0, one).parent(), one);
            }
        }
    }
}

TEST_F(side_bar, says_what_is_with_a_vault) {
    auto full = vault("Disk", {collection("a"), collection("b"), {item_kind::timeline, "t", "/t", "/t", 1}});
    full.space = volume_space{4e9, 1e11};
    full.is_limited = true;
    full.is_focus = true;
    auto away = vault("USB", {});
    away.problem = file_is_missing_or_no_folder("/USB");
    bar.set_content({full, away});
    const auto said = [&](const char* name, int role) { return line(name).data(role).toString(); };
    EXPECT_EQ(said("Disk", content_model::summary_role), "2 collections, 1 timeline");
    EXPECT_EQ(said("Disk", content_model::space_role), "Nearly full: 4 % free");
    EXPECT_TRUE(said("Disk", Qt::AccessibleTextRole).contains("focus vault"));
    EXPECT_EQ(said("USB", content_model::problem_role), "Is missing or is no folder.");
    EXPECT_TRUE(said("USB", Qt::ToolTipRole).contains("\"/USB\" is missing"));
    EXPECT_EQ(bar.findChild<disk_line*>()->text(), "4.0 GB free");
    // A folded vault needs the room for what it holds.
    const auto height = [&] {
        QCoreApplication::processEvents();  // lays out what is waiting for it
        return list().visualRect(line("Disk")).height();
    };
    const int open_height = height();
    click("Disk");
    ASSERT_FALSE(list().isExpanded(line("Disk")));
    EXPECT_GT(height(), open_height);
    QTest::keyClick(&list(), Qt::Key_Return);
    EXPECT_EQ(height(), open_height);
}

TEST_F(side_bar, finds_by_name_and_comes_back_to_what_was_folded) {
    bar.set_content({vault("Home", {collection("Harbour"), collection("Training")}),
                     vault("Team", {collection("harbour cup")})});
    click("Team");
    bar.find();
    auto* field = bar.findChild<QLineEdit*>("content.filter");
    ASSERT_TRUE(field->isVisible());
    QTest::keyClicks(field, "HARB");
    EXPECT_EQ(lines().join(","), "Home,Collections,Harbour,Team,Collections,harbour cup");
    EXPECT_TRUE(list().isExpanded(line("Team")));
    QTest::keyClick(field, Qt::Key_Down);
    EXPECT_EQ(list().currentIndex().data().toString(), "Harbour");
    QTest::keyClick(field, Qt::Key_Escape);
    EXPECT_FALSE(field->isVisible());
    EXPECT_EQ(lines().size(), 7);
    EXPECT_FALSE(list().isExpanded(line("Team")));
}

TEST_F(side_bar, the_menu_of_a_line_is_about_that_line) {
    bar.set_content({vault("Home", {collection("Harbour")}), vault("Team", {collection("Cup")})});
    QAction remove("Remove");
    QAction show("Show");
    content_side_bar::menu_actions menus;
    menus.vault = {&remove};
    menus.item = {&show};
    bar.set_actions(menus);
    QString vault_name;
    QString path;
    QObject::connect(&remove, &QAction::triggered, &bar,
                     [&] { vault_name = QString::fromStdString(bar.current_vault()->name); });
    QObject::connect(&show, &QAction::triggered, &bar, [&] { path = bar.current_path(); });
    const auto choose = [&](const char* words, QAction& action) {
        QTimer::singleShot(0, &bar, [&] {
            auto* menu = bar.findChild<QMenu*>("content.menu");
            ASSERT_TRUE(menu);
            ASSERT_TRUE(menu->actions().contains(&action));
            menu->setActiveAction(&action);
            QTest::keyClick(menu, Qt::Key_Return);
        });
        const QPoint at = list().visualRect(line(words)).center();
        QContextMenuEvent asked(QContextMenuEvent::Mouse, at, list().viewport()->mapToGlobal(at));
        QApplication::sendEvent(&list(), &asked);
    };
    choose("Team", remove);
    EXPECT_EQ(vault_name, "Team");
    choose("Harbour", show);
    EXPECT_EQ(path, "/h/Harbour");
}

TEST_F(side_bar, a_new_event_that_is_open_becomes_the_chosen_line) {
    bar.set_content({vault("Home", {collection("Harbour")})});
    bar.set_open("/h/Harbour", "2 cameras");
    EXPECT_EQ(list().currentIndex(), line("Harbour"));
    bar.set_open("/h/Training", {});
    bar.set_content({vault("Home", {collection("Harbour"), collection("Training")})});
    EXPECT_EQ(list().currentIndex(), line("Training"));
    // What is chosen afterwards stays.
    click("Harbour");
    bar.set_content({vault("Home", {collection("Final"), collection("Harbour"), collection("Training")})});
    EXPECT_EQ(list().currentIndex(), line("Harbour"));
}

TEST_F(side_bar, lists_filters_with_a_name_below_the_home_vault) {
    QStringList chosen;
    QObject::connect(&bar, &content_side_bar::pattern_chosen, &bar,
                     [&](const QString& pattern) { chosen << pattern; });
    content_vault home = vault("Home", {});
    home.is_home = true;
    bar.set_content({home, vault("Away", {collection("Final")})});
    bar.set_patterns({{"Shots in the box", R"([RN]"Shot" & "Box")"}, {"All of Marek", "Marek"}});
    EXPECT_EQ(lines(), QStringList({"Home", "Patterns", "Shots in the box", "All of Marek", "Away",
                                    "Collections", "Final"}));
    click("Shots in the box");
    QTest::keyClick(&list(), Qt::Key_Return);
    EXPECT_EQ(chosen, QStringList(R"([RN]"Shot" & "Box")"));
    EXPECT_TRUE(opened.isEmpty() && unknown.isEmpty());
    // One of them gets another name, the other goes.
    bar.set_patterns({{"Shots, box", R"([RN]"Shot" & "Box")"}});
    EXPECT_EQ(lines().mid(0, 3), QStringList({"Home", "Patterns", "Shots, box"}));
    bar.set_patterns({});
    EXPECT_EQ(lines().mid(0, 2), QStringList({"Home", "Nothing in it yet"}));
}

TEST_F(side_bar, takes_dropped_vaults_only) {
    QStringList dropped;
    QObject::connect(&bar, &content_side_bar::folders_dropped, &bar,
                     [&](const QStringList& folders) { dropped = folders; });
    const auto drop = [&](const char* path) {
        QMimeData data;
        data.setUrls({QUrl::fromLocalFile(path)});
        QDragEnterEvent enter({5, 5}, Qt::CopyAction, &data, Qt::LeftButton, {});
        QApplication::sendEvent(&bar, &enter);
        if (!enter.isAccepted()) return false;
        QDropEvent event(QPointF(5, 5), Qt::CopyAction, &data, Qt::LeftButton, {});
        QApplication::sendEvent(&bar, &event);
        return true;
    };
    EXPECT_FALSE(drop("/a/match.mp4"));
    EXPECT_TRUE(drop("/a/Cup.VVault"));
    EXPECT_EQ(dropped.join(","), "/a/Cup.VVault");
}

}  // namespace
}  // namespace vistels
