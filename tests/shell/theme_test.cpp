// SPDX-License-Identifier: GPL-3.0-or-later
// Colours that can be read, times that are cut rightly, icons that are there, and no look outside the theme.
#include <gtest/gtest.h>

#include <QApplication>
#include <QFile>
#include <QImage>
#include <QPainter>
#include <QRegularExpression>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <limits>

#include "shell/kit/icons.h"
#include "shell/kit/theme.h"
#include "shell/kit/theme_time_text.h"

namespace vistels {
namespace {

constexpr double text_contrast = 4.5;
constexpr double shape_contrast = 3;

TEST(theme, text_can_be_read_on_every_ground) {
    for (const theme* look : {&theme::dark(), &theme::light()}) {
        SCOPED_TRACE(look->is_dark ? "dark" : "light");
        const std::pair<const char*, QColor> grounds[] = {
            {"window", look->window}, {"pane", look->pane},   {"raised", look->raised},
            {"field", look->field},   {"hover", look->hover}, {"accent ground", look->accent_ground}};
        for (const auto& [name, ground] : grounds) {
            SCOPED_TRACE(name);
            EXPECT_GE(contrast(look->text, ground), text_contrast);
            EXPECT_GE(contrast(look->muted, ground), text_contrast);
            // By the rules of the palette not used as text on the selected line.
            if (ground == look->accent_ground) continue;
            EXPECT_GE(contrast(look->accent, ground), text_contrast);
            EXPECT_GE(contrast(look->live, ground), text_contrast);
            EXPECT_GE(contrast(look->warning, ground), text_contrast);
            EXPECT_GE(contrast(look->good, ground), text_contrast);
        }
        EXPECT_GE(contrast(look->edge, look->pane), shape_contrast);
        EXPECT_GE(contrast(look->edge, look->field), shape_contrast);
        EXPECT_GE(contrast(look->on_accent, look->accent), text_contrast);
        EXPECT_GE(contrast(look->selection_gap, look->selection), text_contrast);
        EXPECT_GE(contrast(look->pane, look->text), text_contrast);  // a chosen segment
        for (const QColor& heat :
             {look->heat_low, mix(look->heat_high, look->heat_low, 0.5), look->heat_high}) {
            EXPECT_GE(contrast(ink_on(*look, heat), heat), text_contrast);
        }
        for (const QColor& token : look->token_colours) {
            const QColor ground = mix(token, look->field, look->token_ground_share);
            EXPECT_GE(contrast(legible_on(token, ground), ground), text_contrast);
        }
    }
}

TEST(theme, names_can_be_read_on_buttons_and_clips) {
    for (const theme* look : {&theme::dark(), &theme::light()}) {
        for (const QColor& colour : look->item_colours) {
            SCOPED_TRACE(colour.name().toStdString());
            EXPECT_GE(contrast(ink_on(*look, colour), colour), text_contrast);
            EXPECT_GE(contrast(look->text, mix(colour, look->button_ground, look->button_up_share)),
                      text_contrast);
            EXPECT_GE(contrast(look->text, mix(colour, look->button_ground, look->button_hover_share)),
                      text_contrast);
        }
    }
}

TEST(theme, mix_goes_from_one_colour_to_the_other) {
    EXPECT_EQ(mix(Qt::white, Qt::black, 0), QColor(Qt::black));
    EXPECT_EQ(mix(Qt::white, Qt::black, 1), QColor(Qt::white));
    EXPECT_EQ(mix(QColor(200, 100, 0), QColor(0, 100, 200), 0.25), QColor(50, 100, 150));
    EXPECT_EQ(mix(Qt::white, Qt::black, 7), QColor(Qt::white));
}

TEST(theme, contrast_is_as_the_guidelines_count_it) {
    EXPECT_NEAR(contrast(Qt::white, Qt::black), 21, 0.001);
    EXPECT_NEAR(contrast(Qt::red, Qt::red), 1, 0.001);
    EXPECT_NEAR(contrast(QColor(0x77, 0x77, 0x77), Qt::white), 4.478, 0.001);
}

TEST(theme, a_colour_is_moved_only_as_far_as_it_must) {
    for (const theme* look : {&theme::dark(), &theme::light()}) {
        for (int hue = 0; hue < 360; hue += 15) {
            for (const int lightness : {0, 60, 128, 200, 255}) {
                const QColor asked = QColor::fromHsl(hue, 200, lightness);
                const QColor given = legible_on(asked, look->field);
                EXPECT_GE(contrast(given, look->field), text_contrast) << asked.name().toStdString();
                const bool was_legible = contrast(asked, look->field) >= text_contrast;
                EXPECT_EQ(given == asked, was_legible);
                EXPECT_TRUE(was_legible || contrast(given, look->field) <= 4.8);
            }
        }
    }
}

TEST(theme, records_colours_survive) {
    for (const QColor& colour : theme::dark().item_colours) EXPECT_EQ(to_qt(from_qt(colour)), colour);
    EXPECT_EQ(to_qt(colour{-1, 2, 0.5, 1}), QColor(0, 255, 128));
}

TEST(theme, follows_the_variable_and_the_choice_and_tells) {
    int told = 0;
    const connection listening = theme::changed().connect([&told] { ++told; });
    use_theme(*qApp, theme_choice::dark);
    told = 0;
    use_theme(*qApp, theme_choice::light);
    EXPECT_EQ(told, 1);
    EXPECT_FALSE(theme::current().is_dark);
    EXPECT_EQ(QApplication::palette().color(QPalette::Window), theme::light().window);
    use_theme(*qApp, theme_choice::light);
    EXPECT_EQ(told, 1);
    qputenv("VISTELS_THEME", "dark");
    use_theme(*qApp, theme_choice::light);
    EXPECT_TRUE(theme::current().is_dark);
    EXPECT_EQ(told, 2);
    qunsetenv("VISTELS_THEME");
}

TEST(theme, style_sheet_is_short_and_filled_in) {
    for (const theme* look : {&theme::dark(), &theme::light()}) {
        const QString sheet = theme_style_sheet(*look);
        EXPECT_LT(sheet.count(QLatin1Char('\n')), 100);
        EXPECT_FALSE(sheet.contains(QLatin1Char('@')));
    }
}

TEST(theme, no_type_is_below_11_pixels) {
    const QFont before = QApplication::font();
    QFont small = before;
    small.setPixelSize(8);
    QApplication::setFont(small);
    EXPECT_EQ(theme::font(type_step::smallest).pixelSize(), 11);
    small.setPixelSize(26);
    QApplication::setFont(small);
    EXPECT_EQ(theme::font(type_step::clock).pixelSize(), 52);
    QApplication::setFont(before);
}

TEST(theme_time_text, times_are_cut_to_what_is_shown) {
    struct row {
        double seconds;
        time_form form;
        const char* text;
    };
    const row rows[] = {
        {0, time_form::ruler, "0:00:00"},           {3599.999, time_form::ruler, "0:59:59"},
        {823.48, time_form::clock, "0:13:43.48"},   {12.30, time_form::clock, "0:00:12.30"},
        {0.999, time_form::clock, "0:00:00.99"},    {36000, time_form::clock, "10:00:00.00"},
        {59.9996, time_form::field, "0:00:59.999"}, {-1.5, time_form::field, "-0:00:01.500"},
        {-0.001, time_form::clock, "0:00:00.00"},   {11.68, time_form::run_time, "0:11.6"},
        {3725.2, time_form::run_time, "1:02:05.2"},
    };
    for (const row& each : rows) EXPECT_EQ(time_text(each.seconds, each.form), QLatin1String(each.text));
    EXPECT_EQ(time_text(std::numeric_limits<double>::infinity(), time_form::clock), QStringLiteral("–"));
}

TEST(theme_time_text, typed_times_are_understood_or_refused) {
    const std::pair<const char*, double> good[] = {{"0:12:56.400", 776.4}, {"90", 90},    {"1:30", 90},
                                                   {" 2.5 ", 2.5},         {"-0:01", -1}, {"1:00:00", 3600}};
    for (const auto& [text, seconds] : good)
        EXPECT_DOUBLE_EQ(time_from_text(QLatin1String(text)), seconds) << text;
    for (const char* text : {"", ":", "1:2:3:4", "abc", "1.5:00", "1e3", "--1", "12:"}) {
        EXPECT_TRUE(std::isnan(time_from_text(QLatin1String(text)))) << text;
    }
}

TEST(theme_time_text, a_running_time_does_not_change_its_width) {
    const QFont font = theme::font(type_step::clock);
    const double width = time_text_width(QStringLiteral("0:11:11.11"), font);
    for (const char* text : {"0:00:00.00", "0:48:57.36", "9:59:59.99"}) {
        EXPECT_DOUBLE_EQ(time_text_width(QLatin1String(text), font), width);
    }
}

TEST(icons, all_are_there_and_take_their_tint_at_every_ratio) {
    const char* const wanted =
        "play pause step-back step-forward jump loop volume mute record mark-in mark-out eye eye-off filter "
        "search "
        "star star-on tag note clock lock link snap grid zoom-in zoom-out fit split merge trash duplicate "
        "undo redo "
        "plus close check more chevron-down chevron-right pen keyboard warning info vault collection "
        "composer "
        "code-window timeline matrix table camera microphone missing-movie side-bar-left side-bar-right "
        "align-left "
        "align-top distribute";
    const QStringList there = icon_names();
    for (const QString& name : QString::fromLatin1(wanted).split(QLatin1Char(' '))) {
        SCOPED_TRACE(name.toStdString());
        EXPECT_TRUE(there.contains(name));
        const QPixmap picture = icon_pixmap(name, QColor(10, 200, 30), 16, 2);
        EXPECT_EQ(picture.size(), QSize(32, 32));
        const QImage pixels = picture.toImage();
        int covered = 0;
        for (int y = 0; y < 32; ++y) {
            for (int x = 0; x < 32; ++x) {
                const QColor pixel = pixels.pixelColor(x, y);
                if (pixel.alpha() < 250) continue;
                ++covered;
                EXPECT_NEAR(pixel.green(), 200, 2);
            }
        }
        EXPECT_GT(covered, 8);
    }
    EXPECT_TRUE(icon_pixmap(QStringLiteral("no such icon"), Qt::white, 16, 1).isNull());
}

// Views are handed their look: what a view writes down itself does not follow the theme.
TEST(theme, views_hold_no_colour_font_or_size_of_their_own) {
    const QRegularExpression literal(QStringLiteral(
        R"(QColor\(\s*["\d]|#[0-9A-Fa-f]{6}|Qt::(white|red|green|blue|black|gray|darkGray|lightGray|yellow)\b|)"
        R"(\bq?[rR]gb\(\s*\d|setPixelSize\(|setPointSize|QFont\(\s*"|setStyleSheet\(|)"
        R"(setFixed(Width|Height|Size)\(\s*\d{2}|setM(in|ax)imum(Width|Height|Size)\(\s*\d{2}|setSpacing\(\s*[1-9]|)"
        R"(setContentsMargins\([^)]*\b\d{2}\b)"));
    const std::filesystem::path folder = std::filesystem::path(VISTELS_SOURCE_FOLDER) / "src" / "shell";
    int views = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
        const QString name = QString::fromStdString(entry.path().filename().string());
        if (!entry.is_regular_file() || name.startsWith(QLatin1String("theme"))) continue;
        ++views;
        std::ifstream file(entry.path());
        int number = 0;
        for (std::string line; std::getline(file, line);) {
            ++number;
            EXPECT_FALSE(literal.match(QString::fromStdString(line)).hasMatch())
                << entry.path().filename().string() << ":" << number << ": " << line;
        }
    }
    EXPECT_GT(views, 100);
    EXPECT_TRUE(literal.match(QStringLiteral("painter.setPen(QColor(\"#fff\"));")).hasMatch());
    EXPECT_TRUE(literal.match(QStringLiteral("button->setFixedHeight(28);")).hasMatch());
}

}  // namespace
}  // namespace vistels
