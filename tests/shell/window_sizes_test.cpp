// SPDX-License-Identifier: GPL-3.0-or-later
// The whole window at the sizes it is made for: what stands where, and what can be reached.
#include <QAbstractScrollArea>
#include <QAccessible>
#include <QAction>
#include <QApplication>
#include <QSplitterHandle>
#include <set>
#include <utility>

#include "logger/logger_Dict_funcs.h"
#include "shell/kit/message_bar.h"
#include "shell/kit/pane_splitter.h"
#include "shell/kit/theme.h"
#include "shell/panes/code_window/code_window_button.h"
#include "shell/panes/code_window/code_window_canvas.h"
#include "shell/panes/timeline/timeline_canvas.h"
#include "shell/window/window_actions.h"
#include "support/shown_event.h"
#include "util/file_system.h"
#if VISTELS_HAVE_MEDIA
#include "demo/code_plan.h"
#include "shell/panes/timeline/timeline_metrics.h"
#include "shell/window/window_metrics.h"
#endif

namespace vistels {
namespace {

constexpr QSize sizes[] = {{1024, 640}, {1366, 768}, {1600, 1000}, {3840, 2160}};

std::string text_of(QSize size) {
    return std::to_string(size.width()) + "x" + std::to_string(size.height());
}

std::string text_of(const QWidget& widget) {
    return std::string(widget.metaObject()->className()) + " " + widget.objectName().toStdString();
}

QRect place_in(const QWidget& window, const QWidget& widget) {
    return {widget.mapTo(&window, QPoint()), widget.size()};
}

// The part of a widget that its ancestors leave to be seen.
QRect seen_of(const QWidget& widget) {
    QRect seen = widget.rect();
    for (const QWidget* above = widget.parentWidget(); above; above = above->parentWidget()) {
        seen &= QRect(widget.mapFrom(above, QPoint()), above->size());
    }
    return widget.isVisible() ? seen : QRect();
}

// Neighbours may lie over each other: a splitter's handle reaches over both sides, a button's hit area half
// way to the next one, an overlay over the middle.
bool may_overlap(const QWidget& widget) {
    return qobject_cast<const QSplitterHandle*>(&widget) || widget.isWindow() ||
           qobject_cast<const code_window_button*>(&widget) || widget.objectName() == "inspector" ||
           widget.objectName() == "content";
}

std::vector<QWidget*> shown_children(const QWidget& parent) {
    std::vector<QWidget*> shown;
    for (QObject* child : parent.children()) {
        auto* widget = qobject_cast<QWidget*>(child);
        if (widget && widget->isVisible() && !may_overlap(*widget)) shown.push_back(widget);
    }
    return shown;
}

class window_sizes : public testing::shown_event {
  protected:
    void resize_to(QSize size) {
        window->resize(size);
        QCoreApplication::processEvents();
        ASSERT_EQ(window->size(), size) << "the panes do not fit";
    }
};

// How often a widget of the program is laid out.
class layout_count : public QObject {
  public:
    layout_count() { qApp->installEventFilter(this); }
    int taken() { return std::exchange(count_, 0); }

  protected:
    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() == QEvent::LayoutRequest) ++count_;
        return false;
    }

  private:
    int count_ = 0;
};

// A layout that asks for the next one keeps the processor busy and the pictures waiting.
TEST_F(window_sizes, the_layout_comes_to_rest) {
    open();
    layout_count layouts;
    for (const QSize size : sizes) {
        SCOPED_TRACE(text_of(size));
        resize_to(size);
        for (int round = 0; round < 20; ++round) QCoreApplication::processEvents();
        layouts.taken();
        for (int round = 0; round < 20; ++round) QCoreApplication::processEvents();
        EXPECT_EQ(layouts.taken(), 0);
    }
}

TEST_F(window_sizes, nothing_lies_over_its_neighbour_or_is_cut_off) {
    open();
    for (const QSize size : sizes) {
        SCOPED_TRACE(text_of(size));
        resize_to(size);
        for (const auto* parent : window->findChildren<QWidget*>()) {
            if (!parent->isVisible() || parent->isWindow()) continue;
            const auto children = shown_children(*parent);
            for (std::size_t i = 0; i < children.size(); ++i) {
                const bool scrolls = parent->parentWidget() &&
                                     qobject_cast<const QAbstractScrollArea*>(parent->parentWidget());
                EXPECT_TRUE(scrolls || parent->rect().contains(children[i]->geometry()))
                    << text_of(*children[i]) << " in " << text_of(*parent);
                for (std::size_t j = i + 1; j < children.size(); ++j) {
                    EXPECT_FALSE(children[i]->geometry().intersects(children[j]->geometry()))
                        << text_of(*children[i]) << " and " << text_of(*children[j]);
                }
            }
        }
    }
}

TEST_F(window_sizes, outer_columns_lie_over_the_edge_of_narrow_windows_only) {
    open();
    struct row {
        QSize size;
        bool side_bar_shown;
        bool inspector_shown;
    };
    for (const row& each :
         {row{sizes[0], false, false}, row{sizes[1], true, false}, row{sizes[2], true, true},
          row{sizes[3], true, true}, row{sizes[0], false, false}}) {
        SCOPED_TRACE(text_of(each.size));
        resize_to(each.size);
        auto* side_bar = find<QWidget>("content");
        auto* inspector = find<QWidget>("inspector");
        auto* work = find<QWidget>("work.rows");
        EXPECT_EQ(side_bar->isVisible(), each.side_bar_shown);
        EXPECT_EQ(inspector->isVisible(), each.inspector_shown);
        EXPECT_EQ(window->actions()[command::inspector]->isChecked(), each.inspector_shown);
        // Asked for, what lies over leaves the middle as it is, and goes away by the same key.
        const QRect before = place_in(*window, *work);
        if (!each.inspector_shown) {
            QTest::keyClick(window.get(), Qt::Key_I, Qt::ControlModifier);
            ASSERT_TRUE(inspector->isVisible());
            EXPECT_EQ(place_in(*window, *work), before);
            EXPECT_TRUE(window->rect().contains(place_in(*window, *inspector)));
            EXPECT_TRUE(place_in(*window, *inspector).intersects(before));
            QTest::keyClick(window.get(), Qt::Key_I, Qt::ControlModifier);
            EXPECT_FALSE(inspector->isVisible());
        } else {
            EXPECT_FALSE(place_in(*window, *inspector).intersects(before));
            EXPECT_LE(inspector->width(), vistels::window_sizes.inspector_greatest_width);
            EXPECT_LE(side_bar->width(), vistels::window_sizes.side_bar_greatest_width);
        }
    }
}

// What is pressed just then must not be somewhere else.
TEST_F(window_sizes, a_message_moves_nothing_above_the_timeline) {
    open();
    auto* rows = find<pane_splitter>("work.rows");
    auto* bar = window->findChild<message_bar*>();
    for (const bool by_user : {false, true}) {
        SCOPED_TRACE(by_user);
        resize_to(sizes[2]);
        if (by_user) rows->move_by(1, -40);
        const auto stand = [&] {
            std::vector<QRect> all;
            for (const char* name : {"collection", "transport", "code_window", "timeline.filter"})
                if (auto* one = window->findChild<QWidget*>(name)) all.push_back(place_in(*window, *one));
            return all;
        };
        const auto before = stand();
        const QList<int> sizes_before = rows->sizes();
        ASSERT_GE(before.size(), 2U);
        for (int n = 0; n < 2; ++n)
            window->tell({user_message::tone::error, "Not saved", "“x.plist”", {}, {}});
        QCoreApplication::processEvents();
        EXPECT_TRUE(bar->isVisible());
        EXPECT_LT(rows->height(), sizes_before[0] + sizes_before[1]);
        EXPECT_EQ(stand(), before);
        for (int n = 0; n < 2; ++n) {
            QTest::mouseClick(find<QWidget>("message.choice.0"), Qt::LeftButton);
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
            QCoreApplication::processEvents();
        }
        EXPECT_FALSE(bar->isVisible());
        EXPECT_EQ(rows->sizes(), sizes_before);
    }
}

TEST_F(window_sizes, what_is_pressed_while_the_event_runs_keeps_its_size) {
    open();
    for (const QSize size : sizes) {
        SCOPED_TRACE(text_of(size));
        resize_to(size);
        const std::pair<const char*, QSize> parts[] = {
            {"transport.back", {40, 40}}, {"transport.play", {56, 44}}, {"transport.forward", {40, 40}}};
        for (const auto& [name, least] : parts) {
            auto* part = find<QWidget>(name);
            ASSERT_TRUE(part->isVisible()) << name;
            EXPECT_EQ(part->size(), least) << name;
            EXPECT_EQ(seen_of(*part), part->rect()) << name;
        }
        auto* canvas = window->findChild<code_window_canvas*>();
        const auto buttons = canvas->findChildren<code_window_button*>();
        ASSERT_EQ(buttons.size(), 20);
        for (const auto* button : buttons) {
            const int margin = code_window_button::margin();
            const QRect face = button->geometry().adjusted(margin, margin, -margin, -margin);
            const std::string name = button->button().name.toStdString();
            EXPECT_GE(face.width(), 40) << name;
            EXPECT_GE(face.height(), 32) << name;
            EXPECT_TRUE(canvas->rect().contains(face)) << name;
            for (const auto* other : buttons) {
                const QRect there = other->geometry().adjusted(margin, margin, -margin, -margin);
                EXPECT_TRUE(other == button || !face.intersects(there)) << name;
            }
        }
        // The clock's figures are all there, and the time line has rows to work with.
        EXPECT_GE(find<QWidget>("transport.clock")->width(),
                  find<QWidget>("transport.clock")->sizeHint().width());
        const int row = size.height() < timeline_sizes.compact_below_height ? timeline_sizes.row_small_height
                                                                            : timeline_sizes.row_height;
        const auto* clips = window->findChild<timeline_canvas*>();
        EXPECT_GE((clips->height() - timeline_sizes.ruler_height) / row, 4);
        EXPECT_GE(find<QWidget>("collection.view")->height(), size.height() / 5);
    }
}

#if VISTELS_HAVE_MEDIA
// The least type is 11; letters stand clear of the key and inside the face.
TEST_F(window_sizes, names_of_the_demos_code_window_are_not_cut) {
    ASSERT_TRUE(save_button_dict(demo::demo_code_window(), path_join(folder, "Logger")).ok());
    open();
    for (const QSize size : sizes) {
        SCOPED_TRACE(text_of(size));
        resize_to(size);
        const auto buttons = window->findChildren<code_window_button*>();
        ASSERT_EQ(buttons.size(), 31);
        for (const auto* button : buttons) {
            const int margin = code_window_button::margin();
            const QRectF face = QRectF(button->rect()).adjusted(margin, margin, -margin, -margin);
            const std::string name = button->button().name.toStdString();
            const code_button_layout words = code_button_layout_of(button->button(), face);
            EXPECT_EQ(words.text.toStdString(), name);
            EXPECT_GE(words.font.pixelSize(), 11) << name;
            const QFontMetricsF sizes_of(words.font);
            QRectF ink = sizes_of.boundingRect(words.name, Qt::AlignLeft | Qt::AlignBottom | Qt::TextWordWrap,
                                               words.text);
            ink.adjust(0, sizes_of.ascent() - sizes_of.capHeight(), 0, -sizes_of.descent());
            EXPECT_FALSE(ink.intersects(words.cap)) << name;
            EXPECT_TRUE(face.contains(ink) && face.contains(words.cap)) << name;
        }
    }
}
#endif

TEST_F(window_sizes, the_tab_key_goes_round_and_all_it_reaches_has_a_name) {
    open();
    for (const QSize size : {sizes[0], sizes[2]}) {
        SCOPED_TRACE(text_of(size));
        resize_to(size);
        find<QWidget>("transport.play")->setFocus();
        std::set<QWidget*> reached;
        std::set<std::string> names;
        for (int presses = 0; presses < 200; ++presses) {
            QWidget* focus = QApplication::focusWidget();
            ASSERT_TRUE(focus);
            if (!reached.insert(focus).second) break;
            names.insert(focus->objectName().toStdString());
            EXPECT_TRUE(seen_of(*focus).contains(focus->rect())) << text_of(*focus);
            auto* spoken = QAccessible::queryAccessibleInterface(focus);
            ASSERT_TRUE(spoken) << text_of(*focus);
            EXPECT_FALSE(spoken->text(QAccessible::Name).isEmpty()) << text_of(*focus);
            QTest::keyClick(focus, Qt::Key_Tab);
        }
        EXPECT_EQ(QApplication::focusWidget(), find<QWidget>("transport.play")) << "the round has no end";
        for (const char* name : {"transport.position", "transport.forward", "timeline_canvas"}) {
            EXPECT_EQ(names.count(name), 1U) << name;
        }
        for (const auto& each : event().logger().buttons()) {
            EXPECT_EQ(names.count("code_button." + each->uuid()), 1U) << each->name();
        }
    }
}

// Also the keys that belong to a pane, and actions made anywhere else than in the menus' table.
TEST_F(window_sizes, actions_of_the_whole_window_have_names_and_keys_of_their_own) {
    open();
    std::map<QString, const QAction*> by_key;
    for (const auto* action : window->findChildren<QAction*>()) {
        if (action->isSeparator()) continue;
        for (const auto& key : action->shortcuts()) {
            const auto [at, is_new] = by_key.emplace(key.toString(), action);
            EXPECT_TRUE(is_new) << key.toString().toStdString() << " "
                                << at->second->objectName().toStdString() << " "
                                << action->objectName().toStdString();
            EXPECT_FALSE(action->text().isEmpty()) << key.toString().toStdString();
        }
    }
    EXPECT_GT(by_key.size(), 30U);
}

}  // namespace
}  // namespace vistels
