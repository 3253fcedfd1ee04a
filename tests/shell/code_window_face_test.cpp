// SPDX-License-Identifier: GPL-3.0-or-later
// How the buttons of a code window, and what lies round them, are drawn.
#include <gtest/gtest.h>

#include <QImage>
#include <QPainter>
#include <QScrollArea>
#include <QScrollBar>
#include <QTest>
#include <algorithm>

#include "logger/logger_Dict_funcs.h"
#include "logger/logger_settings.h"
#include "shell/kit/theme.h"
#include "shell/panes/code_window/code_window_canvas.h"
#include "shell/panes/code_window/code_window_shapes.h"
#include "shell/panes/code_window/code_window_view.h"
#include "support/shown_event.h"
#include "util/file_system.h"

namespace vistels {
namespace {

code_button clip_button(const char* name) {
    code_button made;
    made.uuid = name;
    made.name = QLatin1String(name);
    made.marks = code_button::band::left;
    made.place = QRectF(0, 0, 100, 56);
    made.colour = theme::dark().item_colour(1);
    return made;
}

QImage painted(const code_button& button, const code_button_look& shown) {
    QImage image(120, 76, QImage::Format_ARGB32_Premultiplied);
    image.fill(theme::dark().pane);
    QPainter painter(&image);
    paint_code_button(painter, theme::dark(), button, QRectF(10, 10, 100, 56), shown);
    return image;
}

// In the corner, in the place of the count, as long as nothing else is there; where it is put and as it is
// set else.
TEST(code_window_face, outputs_of_formulas_are_seen) {
    code_button button = clip_button("Shot");
    button.key = QStringLiteral("G");
    code_button_look counted;
    counted.state.count = 3;
    code_button_look told = counted;
    told.state.output = QStringLiteral("38%");
    const QImage usual = painted(button, told);
    EXPECT_NE(usual, painted(button, counted));
    code_button_look alone = told;
    alone.state.count = 0;
    EXPECT_EQ(usual, painted(button, alone));
    code_button_look wrong = counted;
    wrong.state.output_problem = QStringLiteral("nothing follows (");
    EXPECT_NE(painted(button, wrong), painted(button, counted));
    code_button_look timed = told;
    timed.time = QStringLiteral("0:12.0");
    code_button_look time_alone = timed;
    time_alone.state.output.clear();
    EXPECT_EQ(painted(button, timed), painted(button, time_alone));
    using change_of = void (*)(code_button&);
    const change_of changes[] = {[](code_button& one) { one.output_size = 20; },
                                 [](code_button& one) { one.output_colour = QColor(0, 255, 0); },
                                 [](code_button& one) {
                                     one.output_offset = {30, 14};
                                 }};
    for (const auto& change : changes) {
        code_button changed = button;
        change(changed);
        EXPECT_NE(painted(changed, told), usual);
        EXPECT_EQ(painted(changed, counted), painted(button, counted));
    }
    // Moved away it leaves the corner to what else is there.
    button.output_offset = {30, 14};
    EXPECT_NE(painted(button, told), painted(button, alone));
    EXPECT_NE(painted(button, timed), painted(button, time_alone));
}

// Each field of how a button is drawn is seen, while it is up or while it is down.
TEST(code_window_face, every_display_field_is_seen) {
    using change_of = void (*)(code_button&);
    const std::pair<const char*, change_of> fields[] = {
        {"alpha", [](code_button& one) { one.opacity = 0.5; }},
        {"mask", [](code_button& one) { one.made_colour = theme::dark().item_colour(4); }},
        {"name colour", [](code_button& one) { one.name_colour = theme::dark().item_colour(5); }},
        {"name size", [](code_button& one) { one.name_size = 22; }},
        {"name offset",
         [](code_button& one) {
             one.name_offset = {6, -3};
         }},
        {"hide name", [](code_button& one) { one.shows_name = false; }},
        {"no key", [](code_button& one) { one.key.clear(); }},
        {"key offset",
         [](code_button& one) {
             one.key_offset = {-20, 4};
         }},
        {"shape", [](code_button& one) { one.shape = QStringLiteral("Plain Triangle Up"); }},
        {"hide down", [](code_button& one) { one.hides_down_state = true; }},
    };
    code_button button = clip_button("Shot");
    button.key = QStringLiteral("G");
    code_button_look down;
    down.state.is_down = true;
    const QImage usual[] = {painted(button, {}), painted(button, down)};
    EXPECT_NE(usual[0], usual[1]);
    for (const auto& [name, change] : fields) {
        code_button changed = button;
        change(changed);
        const bool is_seen = painted(changed, {}) != usual[0] || painted(changed, down) != usual[1];
        EXPECT_TRUE(is_seen) << name;
    }
    button.hides_down_state = true;
    EXPECT_EQ(painted(button, down), usual[0]);
    code_button_look live = down;
    live.state.is_live = true;
    code_button_look latched = down;
    latched.state.is_latched = true;
    button.hides_down_state = false;
    EXPECT_NE(painted(button, live), usual[1]);
    EXPECT_NE(painted(button, latched), usual[1]);
    button.opacity = 0;
    EXPECT_EQ(painted(button, {}).pixelColor(60, 38), theme::dark().pane);
}

TEST(code_window_face, shapes_are_known_by_their_names) {
    const QRectF face(0, 0, 100, 60);
    const QPainterPath usual = code_button_outline({}, face, 6);
    struct row {
        const char* name;
        QPointF inside, outside;  // an empty outside: none
    };
    const row rows[] = {{"rectangle", {0.5, 0.5}, {}},
                        {"Plain Rounded Rectangle", {30, 30}, {2, 8}},
                        {"ELLIPSE", {50, 2}, {8, 8}},
                        {"Plain Triangle Up", {50, 4}, {10, 10}},
                        {"plain triangle down", {50, 56}, {10, 50}},
                        {"Plain Pentagon", {50, 3}, {5, 5}},
                        {"Plain Pentagon 1", {50, 3}, {5, 5}},
                        {"Plain Pentagon 2", {50, 57}, {5, 55}},
                        {"Plain Hexagon 2", {30, 2}, {2, 3}}};
    for (const row& each : rows) {
        const QString name = QLatin1String(each.name);
        const QPainterPath outline = code_button_outline(name, face, 6);
        EXPECT_FALSE(is_usual_outline(name)) << each.name;
        EXPECT_TRUE(outline.contains(each.inside)) << each.name;
        EXPECT_TRUE(each.outside.isNull() || !outline.contains(each.outside)) << each.name;
        EXPECT_NEAR(outline.boundingRect().width(), 100, 1e-6) << each.name;
        EXPECT_NEAR(outline.boundingRect().height(), 60, 1e-6) << each.name;
    }
    for (const char* name : {"", "Plain Sofa 3", "7"}) {
        EXPECT_TRUE(is_usual_outline(QLatin1String(name)));
        EXPECT_EQ(code_button_outline(QLatin1String(name), face, 6), usual) << name;
    }
}

TEST(code_window_face, a_name_is_shrunk_to_fit_and_a_time_has_its_room_on_a_low_button) {
    code_button button = clip_button("Transition");
    button.name_size = 26;
    const QRectF face(0, 0, 100, 56);
    const int least = theme::font(type_step::clip_label).pixelSize();
    EXPECT_EQ(code_button_layout_of(button, face).font.pixelSize(), least);
    button.fits_name = true;
    const code_button_layout fitted = code_button_layout_of(button, face);
    EXPECT_GT(fitted.font.pixelSize(), least);
    EXPECT_LT(fitted.font.pixelSize(), 26);
    EXPECT_LE(QFontMetricsF(fitted.font).horizontalAdvance(fitted.text), fitted.name.width());
    EXPECT_GT(QFontMetricsF(theme::font(type_step::button, fitted.font.pixelSize() + 1.0))
                  .horizontalAdvance(button.name),
              fitted.name.width());
    const QRectF low(0, 0, 100, 32);
    button.place = low;
    EXPECT_FALSE(code_button_layout_of(button, low).has_corner);
    button.shows_clock = true;
    const code_button_layout timed = code_button_layout_of(button, low);
    EXPECT_TRUE(timed.has_corner);
    const QFontMetricsF sizes(timed.font);
    EXPECT_GE(timed.name.bottom() - sizes.descent() - sizes.capHeight(), timed.corner.bottom());
}

// What a code window's folder holds beside the buttons is read in the background.
class stored_code_window : public testing::shown_event {};

TEST_F(stored_code_window, its_ground_its_scroll_position_and_pictures_are_shown) {
    const std::string logger = path_join(folder, "Logger");
    button_dict all = general_code_window();
    for (std::size_t i = 0; i < 2; ++i) {
        all.buttons[i] = changed_button(all.buttons[i], [i](markup_Button_Item& one) {
            logger_item_display_info display = one.display();
            display.real_picture = i == 0;
            display.hide_name = true;
            display.show_keys = false;
            one.set_display(display);
            one.set_picture_id("4711");
        });
    }
    all.buttons.back() = changed_button(all.buttons.back(), [](markup_Button_Item& one) {
        logger_item_display_info display = one.display();
        display.logger_rect.y = 2000;
        one.set_display(display);
    });
    ASSERT_TRUE(save_button_dict(all, logger).ok());
    logger_settings settings;
    settings.background_colour = colour{0.2, 0.4, 0.6, 1};
    settings.scroller_offset_y = 40;
    ASSERT_TRUE(save_logger_settings(settings, logger).ok());
    QImage picture(300, 200, QImage::Format_RGB32);
    picture.fill(to_qt({0.2, 0.8, 0.4, 1}));
    ASSERT_TRUE(picture.save(QString::fromStdString(path_join(logger, "pic 4711.png"))));
    open({1100, 660});
    auto* view = window->findChild<code_window_view*>();
    const auto centre_of = [&](std::size_t number) {
        code_window_button* one = view->canvas().button(all.buttons[number]->uuid());
        return one ? one->grab().toImage().pixelColor(one->rect().center()) : QColor();
    };
    const auto is_the_picture = [&](std::size_t number) {
        const QColor seen = centre_of(number);
        return seen.green() > 195 && seen.red() < 60;
    };
    EXPECT_TRUE(QTest::qWaitFor([&] { return is_the_picture(0); }));
    EXPECT_FALSE(is_the_picture(1));  // it is said to be a drawn shape
    const QImage canvas = view->canvas().grab().toImage();
    EXPECT_EQ(canvas.pixelColor(1, 1), to_qt(*settings.background_colour));
    auto* bar = view->findChild<QScrollArea*>()->verticalScrollBar();
    const int wanted = static_cast<int>(40 * view->canvas().scale());
    EXPECT_EQ(bar->value(), wanted);
    // Where the user scrolls it to is kept, beside what else is there.
    bar->setValue(wanted + 21);
    window->session().close();
    const logger_settings kept = load_logger_settings(logger);
    EXPECT_NEAR(kept.scroller_offset_y, 40 + 21 / view->canvas().scale(), 2);
    EXPECT_EQ(kept.background_colour, settings.background_colour);
}

}  // namespace
}  // namespace vistels
