// SPDX-License-Identifier: GPL-3.0-or-later
// The field in which a filter is typed: what it draws of a text, and how it behaves under real events in a
// window with an event.
#include <QAction>
#include <QClipboard>
#include <QGuiApplication>
#include <QInputDialog>
#include <QInputMethodEvent>
#include <QLabel>
#include <QMenu>
#include <QMimeData>
#include <QTextBlock>
#include <QTextLayout>

#include "app/settings/formula_colours.h"
#include "app/settings/search_patterns.h"
#include "app/settings/settings.h"
#include "shell/filter/completion_list.h"
#include "shell/filter/filter_count.h"
#include "shell/filter/filter_editor.h"
#include "shell/filter/filter_entry.h"
#include "shell/filter/filter_field.h"
#include "shell/kit/theme.h"
#include "shell/panes/inspector/inspector_view.h"
#include "shell/panes/timeline/timeline_view.h"
#include "support/patience.h"
#include "support/shown_event.h"
#include "support/timeline_builder.h"

namespace vistels {
namespace {

using testing::comes_true;
using span = filter_display::span;

// The words as "code:piece", what is underlined as pieces, in the order of the text.
struct shown {
    std::vector<std::string> words;
    std::vector<std::string> wrong;
};

shown shown_of(const QString& text) {
    shown made;
    const filter_display display = display_filter(text);
    const auto piece = [&](const span& place) { return text.mid(place.start, place.length).toStdString(); };
    for (const auto& word : display.words) made.words.push_back(word.code + ":" + piece(word.place));
    for (const auto& place : display.wrong) made.wrong.push_back(piece(place));
    return made;
}

TEST(filter_display, words_stand_with_their_code_and_what_is_wrong_is_marked_at_its_place) {
    struct row {
        const char* text;
        std::vector<std::string> words;
        std::vector<std::string> wrong;
        const char* problems;
    };
    const row rows[] = {
        {"", {}, {}, ""},
        {"Goal or [so]", {}, {}, ""},
        {"   ", {}, {}, ""},
        {"✭✭", {}, {}, ""},
        {R"([RN]"Shot" & "Marek*")", {R"(RN:[RN]"Shot")", R"(QN:"Marek*")"}, {}, ""},
        // An operator in front moves what the parser counts; the last of several codes decides.
        {R"(!"a" | [RN, AC]  "b")", {R"(QN:"a")", R"(AC:[RN, AC]  "b")"}, {}, ""},
        {R"("✭✭*" | [NT]"late")", {R"(STAR:"✭✭*")", R"(NT:[NT]"late")"}, {}, ""},
        // Characters of two UTF-16 units, and typographic quotes.
        {R"("😀😀" & [QC]“𝒢oal” & [AN]"é")", {R"(QN:"😀😀")", "QC:[QC]“𝒢oal”", R"(AN:[AN]"é")"}, {}, ""},
        {R"([RO]"old")", {R"(RN:[RO]"old")"}, {}, ""},
        {R"([XX]"Shot" & "b")", {R"(:[XX]"Shot")", R"(QN:"b")"}, {"?"}, "Invalid identifier"},
        {R"("😀" & (Sato))", {R"(QN:"😀")"}, {"?"}, "Unrecognised character"},
        {R"(("a")", {R"(QN:"a")"}, {"("}, "Unbalanced brackets"},
    };
    for (const row& each : rows) {
        const QString text = QString::fromUtf8(each.text);
        const shown made = shown_of(text);
        EXPECT_EQ(made.words, each.words) << each.text;
        if (each.wrong != std::vector<std::string>{"?"}) {
            EXPECT_EQ(made.wrong, each.wrong) << each.text;
        }
        EXPECT_EQ(made.wrong.empty(), each.wrong.empty()) << each.text;
        EXPECT_EQ(display_filter(text).problems.toStdString(), each.problems) << each.text;
    }
    EXPECT_EQ(shown_of(QString::fromUtf8(R"("😀" & (Sato))")).wrong.front().front(), 'S');
    // Half a pair of UTF-16 is one character, too.
    const QString torn = QStringLiteral("\"a\" ") + QChar(0xD83D) + QStringLiteral(" \"b\"");
    EXPECT_EQ(display_filter(torn).words.back().place, (span{6, 3}));
}

TEST(filter_colours, own_colours_are_shown_so_that_they_can_be_read) {
    formula_identifier_colours stored = default_formula_colours();
    const filter_colours usual(stored);
    stored.colours[0] = {0.2, 0.2, 0.2};
    stored.colours[2] = {0.9, 0.9, 0.9};
    const filter_colours own(stored);
    for (const theme* look : {&theme::dark(), &theme::light()}) {
        for (const formula_code& one : formula_codes()) {
            for (const filter_colours* colours : {&usual, &own}) {
                EXPECT_GE(contrast(colours->ink(*look, one.code), colours->ground(*look, one.code)), 4.45)
                    << one.code;
            }
        }
        EXPECT_EQ(usual.ink(*look, "XX"), look->text);
        EXPECT_FALSE(usual.ground(*look, "XX").isValid());
    }
    EXPECT_EQ(own.ink(theme::light(), "RN"), to_qt(stored.colours[0])) << "one that can be read stays";
    EXPECT_NE(own.ink(theme::dark(), "RN"), usual.ink(theme::dark(), "RN"));
}

class filter_editing : public ::testing::Test {
  protected:
    void SetUp() override {
        use_theme(*qApp, theme_choice::dark);
        editor.resize(600, editor.sizeHint().height());
        editor.show();
        editor.activateWindow();
        ASSERT_TRUE(testing::becomes_active(&editor));
        editor.setFocus();
        QObject::connect(&editor, &filter_editor::typed, &editor, [this] { ++typed; });
    }
    QTextCharFormat format_at(int place) {
        for (const auto& range : editor.document()->firstBlock().layout()->formats()) {
            if (range.start <= place && place < range.start + range.length) return range.format;
        }
        return {};
    }

    filter_editor editor;
    int typed = 0;
};

TEST_F(filter_editing, letters_take_the_colour_of_their_word_and_a_wavy_line_where_they_are_wrong) {
    QTest::keyClicks(&editor, R"([RN]"Shot" & [XX]"a")");
    const theme& look = theme::current();
    EXPECT_EQ(format_at(5).foreground().color(), filter_colours().ink(look, "RN"));
    EXPECT_EQ(format_at(5).underlineStyle(), QTextCharFormat::NoUnderline);
    EXPECT_EQ(format_at(18).underlineStyle(), QTextCharFormat::WaveUnderline);
    EXPECT_EQ(format_at(18).underlineColor(), look.live);
    const QColor dark = format_at(5).foreground().color();
    use_theme(*qApp, theme_choice::light);
    EXPECT_NE(format_at(5).foreground().color(), dark);
    use_theme(*qApp, theme_choice::dark);
    // A click finds its word, a double click chooses what is between the quotes.
    editor.viewport()->repaint();
    ASSERT_EQ(editor.display().words.size(), 2U);
    const QPoint in_first = editor.display().words[0].stored_draw_coloured_formula_rect.center().toPoint();
    ASSERT_TRUE(editor.word_under(in_first));
    EXPECT_EQ(editor.word_under(in_first)->code, "RN");
    EXPECT_FALSE(editor.word_under(QPoint(editor.width() - 2, in_first.y())));
    QTest::mouseDClick(editor.viewport(), Qt::LeftButton, {}, in_first);
    EXPECT_EQ(editor.textCursor().selectedText(), "Shot");
    // Of a long text only what is seen is placed: here its end.
    editor.set_text(QStringLiteral("[RN]\"Shot\" | ").repeated(1000) + QStringLiteral("\"b\""));
    editor.viewport()->repaint();
    const auto& words = editor.display().words;
    const auto is_drawn = [](const auto& one) { return !one.stored_draw_coloured_formula_rect.isEmpty(); };
    ASSERT_EQ(words.size(), 1001U);
    EXPECT_FALSE(is_drawn(words.front()));
    EXPECT_TRUE(
        editor.viewport()->rect().intersects(words.back().stored_draw_coloured_formula_rect.toRect()));
    EXPECT_LT(std::count_if(words.begin(), words.end(), is_drawn), 50);
}

TEST_F(filter_editing, one_line_comes_of_pasting_input_methods_and_setting) {
    auto* mime = new QMimeData;
    mime->setText(QString::fromUtf8("a\r\nb\nc\u2028d\u2029e\u00a0f"));
    QGuiApplication::clipboard()->setMimeData(mime);
    QTest::keyClick(&editor, Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(editor.text(), QString::fromUtf8("a b c d e\u00a0f")) << "a blank of its own kind stays";
    QTest::keyClick(&editor, Qt::Key_Return, Qt::ShiftModifier);
    EXPECT_EQ(editor.document()->blockCount(), 1);
    EXPECT_EQ(typed, 1);
    QTest::keyClick(&editor, Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(editor.text(), "");
    QTest::keyClick(&editor, Qt::Key_Y, Qt::ControlModifier);
    EXPECT_EQ(editor.text().size(), 11);
    editor.set_text(QString::fromUtf8("\"x\"\n& "));
    EXPECT_EQ(editor.text(), "\"x\" & ");
    // Being composed: the words before it stay where they are, nothing is typed yet.
    typed = 0;
    QInputMethodEvent composing(QString::fromUtf8("にほん"), {});
    QApplication::sendEvent(&editor, &composing);
    editor.viewport()->repaint();
    EXPECT_EQ(typed, 0);
    ASSERT_EQ(editor.display().words.size(), 1U);
    EXPECT_FALSE(editor.display().words[0].stored_draw_coloured_formula_rect.isEmpty());
    QInputMethodEvent done;
    done.setCommitString(QString::fromUtf8("日本\n"));
    QApplication::sendEvent(&editor, &done);
    EXPECT_EQ(editor.text(), QString::fromUtf8("\"x\" & 日本 "));
    EXPECT_EQ(editor.document()->blockCount(), 1);
    QTest::keyClick(&editor, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClick(&editor, Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QGuiApplication::clipboard()->text(), editor.text());
}

// An event with two rows: "Shot" (category "Finish") with clips a to c, "Foul" with d. a and b have the
// qualifier Marek (Player), c Marwan, d none.
class filter_fields : public testing::shown_event {
  protected:
    void SetUp() override {
        shown_event::SetUp();
        if (IsSkipped()) return;
        open();
        using testing::clip_of, testing::qualifier_of, testing::row_of;
        const shared_text shots("shots"), fouls("fouls");
        auto shot = row_of("shots", "Shot");
        shot.set_category("Finish");
        auto marek = [](const char* uuid, const char* name) {
            auto made = qualifier_of(uuid, name);
            made.set_category(shared_text("Player"));
            return made;
        };
        const auto made = event().timeline().apply(
            {"made",
             "",
             {operation::insert_row{0, shot}, operation::insert_row{1, row_of("fouls", "Foul")},
              operation::insert_clip{shots, clip_of("a", 0, 1)},
              operation::insert_clip{shots, clip_of("b", 1, 2)},
              operation::insert_clip{shots, clip_of("c", 2, 3)},
              operation::insert_clip{fouls, clip_of("d", 3, 3.5)},
              operation::insert_qualifier{"a", 0, marek("q1", "Marek")},
              operation::insert_qualifier{"b", 0, marek("q2", "Marek")},
              operation::insert_qualifier{"c", 0, marek("q3", "Marwan \"7\"")}}});
        ASSERT_TRUE(made) << made.message();
        field = &window->timeline().filter();
        other = &window->findChild<inspector_view*>()->filter();
        entry = &window->filter();
        QTest::mouseClick(field->editor().viewport(), Qt::LeftButton);
        ASSERT_TRUE(field->editor().hasFocus());
    }
    void type(const char* text) { QTest::keyClicks(&field->editor(), QString::fromUtf8(text)); }
    void press(Qt::Key key, Qt::KeyboardModifiers with = {}) {
        QTest::keyClick(QApplication::focusWidget() ? QApplication::focusWidget() : window.get(), key, with);
    }
    bool passing_become(std::size_t count) {
        return comes_true(
            [&] { return !entry->standing().is_judging && entry->standing().passing == count; });
    }
    std::string count_words() { return find<filter_count>("timeline_filter.count")->words().toStdString(); }
    std::vector<std::string> patterns() {
        std::vector<std::string> all;
        for (const auto& one : load_search_patterns(places)) all.push_back(one.title());
        return all;
    }
    completion_list* completions() {
        return window->findChild<completion_list*>(QStringLiteral("timeline_filter.completions"));
    }
    std::vector<std::string> offered() {
        std::vector<std::string> words;
        if (!completions() || !completions()->isVisible()) return words;
        for (int row = 0; row < completions()->count(); ++row) {
            words.push_back(completions()->model()->index(row, 0).data().toString().toStdString());
        }
        return words;
    }
    // The line of an open menu whose words begin so.
    static QAction* line_of(const QMenu& menu, const QString& words) {
        for (QAction* one : menu.actions()) {
            if (one->text().startsWith(words)) return one;
        }
        return nullptr;
    }
    std::string text() { return field->editor().text().toStdString(); }

    filter_field* field = nullptr;
    filter_field* other = nullptr;
    filter_entry* entry = nullptr;
};

TEST_F(filter_fields, typing_filters_in_both_fields_and_no_key_codes_or_plays) {
    const auto clips = timeline().clip_count();
    type("Marek");
    press(Qt::Key_Space);
    press(Qt::Key_Backspace);
    press(Qt::Key_Home);
    press(Qt::Key_Right);
    press(Qt::Key_End);
    EXPECT_EQ(other->editor().text(), "Marek");
    EXPECT_TRUE(passing_become(2));
    EXPECT_EQ(count_words(), "2 of 4");
    EXPECT_FALSE(event().playback().is_playing());
    EXPECT_EQ(down(), std::vector<std::string>{});
    EXPECT_EQ(timeline().clip_count(), clips);
    EXPECT_EQ(patterns(), std::vector<std::string>{}) << "what is typed is not applied yet";
    // The other field is the same filter.
    other->editor().setFocus();
    QTest::keyClick(&other->editor(), Qt::Key_Backspace);
    EXPECT_EQ(text(), "Mare");
    QTest::keyClick(&other->editor(), Qt::Key_Backspace);
    EXPECT_TRUE(passing_become(3));
    QTest::mouseClick(field->findChild<QWidget*>(QStringLiteral("timeline_filter.clear")), Qt::LeftButton);
    EXPECT_EQ(text() + other->editor().text().toStdString(), "");
    EXPECT_TRUE(passing_become(4));
    EXPECT_EQ(count_words(), "4 clips");
}

TEST_F(filter_fields, return_remembers_and_escape_clears_and_both_give_the_focus_back) {
    window->timeline().setFocusPolicy(Qt::StrongFocus);
    window->timeline().setFocus();
    window->timeline().filter().focus();
    type("Mar");
    ASSERT_TRUE(comes_true([&] { return !offered().empty(); }));
    press(Qt::Key_Escape);  // sends the list away
    EXPECT_TRUE(offered().empty());
    EXPECT_EQ(text(), "Mar");
    press(Qt::Key_Return);
    EXPECT_FALSE(field->editor().hasFocus());
    EXPECT_TRUE(window->timeline().hasFocus());
    EXPECT_TRUE(passing_become(3));
    EXPECT_EQ(patterns(), std::vector<std::string>{"Mar"});
    field->focus();
    EXPECT_EQ(field->editor().textCursor().selectedText(), "Mar");
    press(Qt::Key_Escape);
    EXPECT_EQ(text(), "");
    EXPECT_TRUE(window->timeline().hasFocus());
    EXPECT_TRUE(passing_become(4));
    EXPECT_EQ(patterns().size(), 1U);
    // What was cleared can be taken back like any typing.
    field->focus();
    press(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(text(), "Mar");
    EXPECT_EQ(entry->text(), "Mar");
}

TEST_F(filter_fields, a_wrong_text_is_told_under_the_field_and_changes_nothing) {
    entry->apply(QStringLiteral("[RN]\"Shot\""));
    ASSERT_TRUE(passing_become(3));
    entry->apply(QString());
    entry->apply(QStringLiteral("[RN]\"Foul\""));
    ASSERT_TRUE(passing_become(1));
    auto* message = find<QLabel>("timeline_filter.message");
    field->focus();
    type("[XX]\"Shot\"");
    EXPECT_FALSE(message->isVisible()) << "not while it is being typed";
    press(Qt::Key_Return);
    EXPECT_TRUE(field->editor().hasFocus());
    EXPECT_TRUE(message->isVisible());
    EXPECT_EQ(entry->message(), "Invalid identifier. Filter unchanged: still 1 of 4.");
    EXPECT_EQ(find<QLabel>("inspector_filter.message")->text(), entry->message());
    EXPECT_EQ(field->editor().accessibleDescription(), entry->message());
    EXPECT_TRUE(find<QLabel>("timeline_filter.warning")->isVisible());
    QApplication::processEvents();
    const auto* beside = find<QLabel>("inspector_filter.message");
    EXPECT_GE(beside->y(), other->geometry().bottom()) << "under the field, however many lines it has";
    EXPECT_GE(beside->height(), beside->heightForWidth(beside->width()));
    EXPECT_EQ(patterns().front(), "[RN]\"Foul\"") << "a wrong one is not kept";
    EXPECT_TRUE(window->timeline().rect().contains(message->geometry()));
    field->editor().set_text({});
    type("[RN]\"Shot\"");
    EXPECT_FALSE(message->isVisible()) << "gone as soon as all is well";
    EXPECT_TRUE(passing_become(3));
    type(" )");
    EXPECT_TRUE(comes_true([&] { return message->isVisible(); })) << "after a pause";
}

TEST_F(filter_fields, names_in_use_are_offered_and_taken_by_tab_and_return) {
    using words = std::vector<std::string>;
    type("[RN]\"s");
    ASSERT_TRUE(comes_true([&] { return !offered().empty(); }));
    EXPECT_EQ(offered(), words{"Shot"}) << "whatever the case";
    press(Qt::Key_Return);
    EXPECT_EQ(text(), "[RN]\"Shot\"");
    EXPECT_EQ(offered(), words{});
    EXPECT_TRUE(field->editor().hasFocus());
    type(" & [");
    EXPECT_EQ(offered().size(), 7U) << "the codes";
    window->resize(window->width() - 50, window->height());
    EXPECT_TRUE(comes_true([&] { return offered().empty(); })) << "the field may be elsewhere now";
    press(Qt::Key_Backspace);
    type("[");
    EXPECT_EQ(offered().size(), 7U);
    press(Qt::Key_Escape);
    EXPECT_EQ(offered(), words{});
    EXPECT_EQ(text(), "[RN]\"Shot\" & [") << "Escape closes the list first";
    type("Q");
    press(Qt::Key_Down);
    const int second = completions()->chosen();
    press(Qt::Key_Up);
    EXPECT_EQ(second - completions()->chosen(), 1);
    press(Qt::Key_Tab);
    type("\"ma");
    EXPECT_EQ(offered().front(), "Marek") << "used more often";
    press(Qt::Key_Tab);
    EXPECT_EQ(text(), "[RN]\"Shot\" & [QN]\"Marek\"");
    EXPECT_TRUE(passing_become(2));
    type(" | [RN]\"");
    EXPECT_GT(offered().size(), 1U) << "nothing typed: all of them";
    const auto foul = completions()->model()->match(completions()->model()->index(0, 0), Qt::DisplayRole,
                                                    QStringLiteral("Foul"));
    ASSERT_EQ(foul.size(), 1);
    completions()->scrollTo(foul.front());
    QTest::mouseClick(completions()->viewport(), Qt::LeftButton, {},
                      completions()->visualRect(foul.front()).center());
    EXPECT_TRUE(text().ends_with(" | [RN]\"Foul\"")) << text();
    EXPECT_TRUE(field->editor().hasFocus());
    EXPECT_EQ(offered(), words{});
    // A plain search stays one unless a line was chosen.
    field->editor().set_text({});
    type("mar");
    EXPECT_GE(offered().size(), 1U);
    EXPECT_EQ(completions()->chosen(), -1);
    press(Qt::Key_Return);
    EXPECT_EQ(text(), "mar");
    EXPECT_FALSE(field->editor().hasFocus());
    EXPECT_EQ(offered(), words{});
}

TEST_F(filter_fields, patterns_are_listed_newest_first_put_back_named_and_removed) {
    for (const char* one : {"Shot & co", "Marek", "[RN]\"Foul\""}) entry->apply(QString::fromUtf8(one));
    entry->clear();
    const auto menu_of = [&] {
        field->open_patterns();
        return field->findChildren<QMenu*>(QStringLiteral("timeline_filter.patterns_menu")).back();
    };
    QMenu* menu = menu_of();
    ASSERT_TRUE(menu);
    EXPECT_TRUE(menu->actions()[0]->text().startsWith("[RN]\"Foul\"\t"));
    EXPECT_TRUE(menu->actions()[2]->text().startsWith("Shot && co\t"));
    const QVariantMap held = menu->actions()[1]->data().toMap();
    EXPECT_EQ(held["the pattern"].toString(), "Marek");
    EXPECT_TRUE(held.contains("ITEM ID"));
    menu->setActiveAction(menu->actions()[1]);
    QTest::keyClick(menu, Qt::Key_Return);
    EXPECT_EQ(text(), "Marek");
    EXPECT_TRUE(passing_become(2));
    EXPECT_EQ(patterns(), (std::vector<std::string>{"Marek", "[RN]\"Foul\"", "Shot & co"}));
    menu = menu_of();
    menu->setActiveAction(menu->actions()[1]);
    QTest::keyClick(menu, Qt::Key_Delete);
    EXPECT_EQ(patterns(), (std::vector<std::string>{"Marek", "Shot & co"}));
    EXPECT_EQ(menu->actions()[1]->data().toMap()["the pattern"].toString(), "Shot & co");
    menu->setActiveAction(menu->actions()[0]);
    QTest::keyClick(menu, Qt::Key_F2);
    auto* dialog = window->findChild<QInputDialog*>();
    ASSERT_TRUE(dialog);
    dialog->setTextValue(QString::fromUtf8("Marek, all"));
    dialog->accept();
    EXPECT_EQ(patterns().front(), "Marek, all");
}

TEST_F(filter_fields, the_builder_joins_terms_by_the_default_operator_and_replaces_operators) {
    const auto menu_of = [&] {
        field->open_formula_menu();
        return field->findChildren<QMenu*>(QStringLiteral("timeline_filter.formula_menu")).back();
    };
    const auto part = [](QMenu* menu, const char* name) {
        return menu->findChild<QMenu*>(menu->objectName() + QLatin1Char('.') + QLatin1String(name));
    };
    QMenu* menu = menu_of();
    ASSERT_TRUE(comes_true([&] { return line_of(*part(menu, "RN"), "Shot") != nullptr; }));
    line_of(*part(menu, "RN"), "Shot")->trigger();
    EXPECT_EQ(text(), "[RN]\"Shot\"");
    EXPECT_TRUE(field->editor().hasFocus());
    menu->findChild<QAction*>(menu->objectName() + QStringLiteral(".join|"))->trigger();
    EXPECT_EQ(load_default_formula_operator(places), '|');
    line_of(*part(menu, "STAR"), QString::fromUtf8("✭✭ or"))->trigger();
    EXPECT_EQ(text(), "[RN]\"Shot\" | \"✭✭*\"");
    line_of(*part(menu, "QC"), "Player")->trigger();
    EXPECT_EQ(text(), "[RN]\"Shot\" | \"✭✭*\" | [QC]\"Player\"");
    menu->close();
    menu = menu_of();
    QAction* replace = line_of(*menu, "Replace | with &&");
    ASSERT_TRUE(replace);
    EXPECT_FALSE(line_of(*menu, "Replace &&")) << "the formula has none";
    EXPECT_EQ(replace->data().toString(), "Replace | with &");
    replace->trigger();
    EXPECT_EQ(text(), "[RN]\"Shot\" & \"✭✭*\" & [QC]\"Player\"");
    menu->findChild<QAction*>(menu->objectName() + QStringLiteral(".NT"))->trigger();
    auto* dialog = window->findChild<QInputDialog*>();
    ASSERT_TRUE(dialog);
    dialog->setTextValue("late");
    dialog->accept();
    EXPECT_TRUE(text().ends_with(" | [NT]\"*late*\"")) << text();
    menu->close();
}

TEST_F(filter_fields, the_header_fits_into_a_small_window_and_without_an_event_nothing_is_typed) {
    window->resize(1024, 640);
    QApplication::processEvents();
    const auto in_window = [&](const QWidget* one) {
        return QRect(one->mapTo(window.get(), QPoint()), one->size());
    };
    const QRect typed = in_window(field);
    const QRect count = in_window(find<filter_count>("timeline_filter.count"));
    EXPECT_GE(field->editor().width(), 80);
    EXPECT_LT(typed.right(), count.left());
    EXPECT_LT(count.right(), in_window(find<QWidget>("timeline_snap")).left());
    EXPECT_LE(in_window(find<QWidget>("timeline_fit")).right(), window->width());
    type("\"(\" (");
    EXPECT_TRUE(comes_true([&] { return find<QLabel>("timeline_filter.message")->isVisible(); }));
    const auto* message = find<QLabel>("timeline_filter.message");
    EXPECT_LE(in_window(message).right(), window->width());
    EXPECT_EQ(message->toolTip(), entry->message());
    window->session().close();
    EXPECT_FALSE(field->isEnabled());
    EXPECT_EQ(text(), "");
    EXPECT_FALSE(message->isVisible());
}

}  // namespace
}  // namespace vistels
