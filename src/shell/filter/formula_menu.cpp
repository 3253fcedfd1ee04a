// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/filter/formula_menu.h"

#include <QActionGroup>
#include <QInputDialog>
#include <QLocale>
#include <QPainter>
#include <algorithm>

#include "app/settings/formula_colours.h"
#include "app/settings/settings.h"
#include "formula/formula_completion.h"
#include "formula/parser_ROOT.h"
#include "shell/filter/filter_display.h"
#include "shell/filter/filter_editor.h"
#include "shell/filter/filter_entry.h"
#include "shell/filter/filter_field.h"
#include "shell/filter/filter_metrics.h"
#include "shell/filter/pattern_menu.h"
#include "shell/kit/failure_words.h"
#include "shell/kit/theme.h"

namespace vistels {

namespace {

// So many names are listed; the rest is quicker found by typing.
constexpr std::size_t most_names = 30;
constexpr int most_stars = 5;
constexpr QChar star(0x272D);

struct operator_line {
    char symbol;
    token_type type;
    const char* words;
};

constexpr operator_line operator_lines[] = {
    {'&', token_type::AND, QT_TRANSLATE_NOOP("vistels::formula_menu", "And  &&")},
    {'|', token_type::OR, QT_TRANSLATE_NOOP("vistels::formula_menu", "Or  |")},
    {'!', token_type::NOT, QT_TRANSLATE_NOOP("vistels::formula_menu", "And Not  !")},
};

bool has_operator(const QString& text, token_type type) {
    if (is_plain_search_text(text.toStdString())) return false;
    const parser_ROOT parsed = parser_ROOT::for_display(text.toStdString());
    const auto& tokens = parsed.ray_token_ITEMs();
    return std::any_of(tokens.begin(), tokens.end(), [type](const token_ITEM& token) {
        return token.type == type && token.place.length > 0;
    });
}

QString capitalised(const QString& words) {
    return words.left(1).toUpper() + words.mid(1);
}

}  // namespace

formula_menu::formula_menu(filter_field& field) : QMenu(&field), field_(field) {
    setObjectName(field.objectName() + QStringLiteral(".formula_menu"));
    setAccessibleName(tr("Insert into the filter"));
    add_names();
    add_note();
    add_stars();
    addSeparator();
    add_default_operators();
    add_replacements();
    // The names may be counted while the menu is open.
    connect(field.entry(), &filter_entry::texts_changed, this, [this] {
        for (const auto& [code, menu] : name_menus_) fill_names(*menu, code);
    });
    field.entry()->refresh_texts();
}

QIcon formula_menu::swatch(const std::string& code) const {
    const theme& look = theme::current();
    const double ratio = devicePixelRatioF();
    const int side = look.metrics.swatch;
    QPixmap drawn(QSize(side, side) * ratio);
    drawn.setDevicePixelRatio(ratio);
    drawn.fill(Qt::transparent);
    QPainter painter(&drawn);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(field_.entry()->colours().ink(look, code));
    painter.drawRoundedRect(QRectF(0, 0, side, side), look.metrics.radius_clip, look.metrics.radius_clip);
    return QIcon(drawn);
}

void formula_menu::add_names() {
    for (const formula_code& one : formula_codes()) {
        const std::string code = one.code;
        if (code == "NT" || code == "STAR") continue;
        QMenu* menu = addMenu(swatch(code), tr("%1\t[%2]").arg(capitalised(code_meaning(code)), one.code));
        menu->setObjectName(objectName() + QLatin1Char('.') + QLatin1String(one.code));
        name_menus_.emplace_back(code, menu);
        fill_names(*menu, code);
    }
}

void formula_menu::fill_names(QMenu& menu, const std::string& code) {
    menu.clear();
    const auto& texts = field_.entry()->texts().of(code);
    std::size_t shown = 0;
    for (const formula_text& one : texts) {
        if (shown == most_names) break;
        if (!written_term({code, one.text})) continue;
        ++shown;
        const QString words = menu_words(QString::fromStdString(one.text), filter_sizes.menu_greatest_width);
        const QString uses = QLocale().toString(static_cast<qulonglong>(one.uses));
        connect(menu.addAction(words + QLatin1Char('\t') + uses), &QAction::triggered, this, [this, one] {
            insert({one.code, one.text}, {}, {});
        });
    }
    if (texts.empty()) menu.addAction(tr("None in this event"))->setEnabled(false);
    if (texts.size() > shown && shown == most_names) {
        menu.addSeparator();
        menu.addAction(tr("%1 more: type to find them").arg(texts.size() - shown))->setEnabled(false);
    }
}

void formula_menu::add_note() {
    QAction* note = addAction(swatch("NT"), tr("Note with…\t[NT]"));
    note->setObjectName(objectName() + QStringLiteral(".NT"));
    connect(note, &QAction::triggered, this, [this] {
        auto* dialog = new QInputDialog(field_.window());
        dialog->setObjectName(objectName() + QStringLiteral(".ask_note"));
        dialog->setAttribute(Qt::WA_DeleteOnClose);
        dialog->setWindowTitle(tr("Clips with a note"));
        dialog->setLabelText(tr("What the note holds"));
        filter_field* field = &field_;
        connect(dialog, &QInputDialog::textValueSelected, field, [field](const QString& words) {
            if (!words.isEmpty()) insert_term(*field, {"NT", words.toStdString()}, star_wild, star_wild);
        });
        dialog->open();
    });
}

void formula_menu::add_stars() {
    QMenu* menu = addMenu(swatch("STAR"), tr("Stars"));
    menu->setObjectName(objectName() + QStringLiteral(".STAR"));
    for (int stars = 1; stars <= most_stars; ++stars) {
        const QString row(stars, star);
        const bool is_most = stars == most_stars;
        connect(menu->addAction(is_most ? row : tr("%1 or more").arg(row)), &QAction::triggered, this,
                [this, row, is_most] {
                    insert({"STAR", row.toStdString()}, {}, is_most ? std::string() : star_wild);
                });
    }
    menu->addSeparator();
    for (int stars = 1; stars < most_stars; ++stars) {
        const QString row(stars, star);
        connect(menu->addAction(tr("Exactly %1").arg(row)), &QAction::triggered, this, [this, row] {
            insert({"STAR", row.toStdString()}, {}, {});
        });
    }
}

void formula_menu::add_default_operators() {
    addAction(tr("Join What Is Inserted with"))->setEnabled(false);
    auto* group = new QActionGroup(this);
    filter_entry* entry = field_.entry();
    const char chosen = load_default_formula_operator(entry->places());
    for (const operator_line& line : operator_lines) {
        QAction* action = group->addAction(addAction(tr(line.words)));
        action->setObjectName(objectName() + QStringLiteral(".join") + QLatin1Char(line.symbol));
        action->setCheckable(true);
        action->setChecked(line.symbol == chosen);
        connect(action, &QAction::triggered, entry, [entry, symbol = line.symbol] {
            const auto done = save_default_formula_operator(entry->places(), symbol);
            if (!done) Q_EMIT entry->failed(tr("The choice was not kept"), words_of(done.error()));
        });
    }
}

void formula_menu::add_replacements() {
    const QString text = field_.editor().text();
    bool is_first = true;
    for (const operator_line& from : operator_lines) {
        if (!has_operator(text, from.type)) continue;
        for (const operator_line& to : operator_lines) {
            if (to.symbol == from.symbol) continue;
            if (is_first) addSeparator();
            is_first = false;
            const QString title = QString::fromStdString(replace_operator_title(from.symbol, to.symbol));
            QAction* action = addAction(menu_words(title, filter_sizes.menu_greatest_width));
            action->setData(title);
            connect(action, &QAction::triggered, &field_, [field = &field_, from, to] {
                filter_editor& editor = field->editor();
                const QString now = editor.text();
                const QString after =
                    QString::fromStdString(with_operator_replaced(now.toStdString(), from.symbol, to.symbol));
                editor.replace(0, static_cast<int>(now.size()), after, static_cast<int>(after.size()));
                editor.setFocus();
            });
        }
    }
}

void formula_menu::insert(const formula_term& term, const std::string& before, const std::string& after) {
    insert_term(field_, term, before, after);
}

void insert_term(filter_field& field, const formula_term& term, const std::string& before,
                 const std::string& after) {
    filter_editor& editor = field.editor();
    filter_entry& entry = *field.entry();
    const QString now = editor.text();
    const char symbol = load_default_formula_operator(entry.places());
    auto made = with_term(now.toStdString(), editor.caret(), term, symbol);
    if (!made) {
        return Q_EMIT entry.failed(QObject::tr("This could not be put into the filter"),
                                   words_of(made.error()));
    }
    QString text = QString::fromStdString(made.value().text);
    int caret = utf16_place(text, made.value().caret);
    // The caret stands behind the term, whose word ends in a quote.
    if (const auto written = written_term(term); written && caret > 0) {
        const QString word = QString::fromStdString(written.value());
        const auto quote = word.indexOf(QLatin1Char('"'));
        text.insert(caret - 1, QString::fromStdString(after));
        text.insert(caret - word.size() + quote + 1, QString::fromStdString(before));
        caret += static_cast<int>(after.size() + before.size());
    }
    editor.replace(0, static_cast<int>(now.size()), text, caret);
    editor.setFocus();
}

}  // namespace vistels
