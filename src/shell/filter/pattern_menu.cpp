// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/filter/pattern_menu.h"

#include <QDateTime>
#include <QFontMetrics>
#include <QInputDialog>
#include <QKeyEvent>
#include <QLocale>
#include <QVariantMap>
#include <cmath>

#include "app/settings/search_patterns.h"
#include "shell/filter/filter_editor.h"
#include "shell/filter/filter_entry.h"
#include "shell/filter/filter_field.h"
#include "shell/filter/filter_metrics.h"
#include "shell/kit/icons.h"
#include "shell/kit/theme.h"

namespace vistels {

namespace {

// What an action of the list holds.
const QString id_key = QStringLiteral("ITEM ID");
const QString pattern_key = QStringLiteral("the pattern");
constexpr const char* name_property = "pattern_name";

QString pattern_of(const QAction* action) {
    return action ? action->data().toMap().value(pattern_key).toString() : QString();
}

// Today's by their time, others by their day.
QString date_text(const std::optional<double>& seconds) {
    if (!seconds || !std::isfinite(*seconds)) return {};
    const QDateTime at = QDateTime::fromSecsSinceEpoch(static_cast<qint64>(*seconds));
    return at.date() == QDate::currentDate() ? QLocale().toString(at.time(), QLocale::ShortFormat)
                                             : QLocale().toString(at.date(), QLocale::ShortFormat);
}

}  // namespace

QString menu_words(const QString& text, int width) {
    QString words = text;
    words.replace(QLatin1Char('\t'), QLatin1Char(' '));
    words = QFontMetrics(theme::font(type_step::body)).elidedText(words, Qt::ElideRight, width);
    return words.replace(QLatin1Char('&'), QStringLiteral("&&"));
}

pattern_menu::pattern_menu(filter_field& field) : QMenu(&field), field_(field) {
    setObjectName(field.objectName() + QStringLiteral(".patterns_menu"));
    setAccessibleName(tr("Filters used before"));
    setToolTipsVisible(true);
    fill();
}

void pattern_menu::fill() {
    clear();
    add_patterns(*this, [this](const QString& pattern, const QString&) { choose(pattern); });
    if (isEmpty()) {
        addAction(tr("No filter was applied yet"))->setEnabled(false);
        addAction(tr("Return in the field applies one and keeps it here"))->setEnabled(false);
        return;
    }
    addSeparator();
    const QIcon pen = vistels::icon(QStringLiteral("pen"), theme::current());
    QMenu* names = addMenu(pen, tr("Name…\tF2"));
    names->setObjectName(objectName() + QStringLiteral(".name"));
    add_patterns(*names, [this](const QString& pattern, const QString& name) { ask_name(pattern, name); });
    QMenu* removals = addMenu(vistels::icon(QStringLiteral("trash"), theme::current()), tr("Remove\tDel"));
    removals->setObjectName(objectName() + QStringLiteral(".remove"));
    add_patterns(*removals, [this](const QString& pattern, const QString&) { remove(pattern); });
}

void pattern_menu::add_patterns(QMenu& menu, const choice& chosen) {
    int id = 0;
    for (const filter_pattern& one : load_search_patterns(field_.entry()->places())) {
        const QString pattern = QString::fromStdString(one.pattern);
        const QString name = QString::fromStdString(one.name);
        const QString words = menu_words(name.isEmpty() ? pattern : name, filter_sizes.menu_greatest_width);
        QAction* action = menu.addAction(words + QLatin1Char('\t') + date_text(one.date));
        action->setData(QVariantMap{{id_key, id++}, {pattern_key, pattern}});
        action->setProperty(name_property, name);
        action->setToolTip(pattern);
        connect(action, &QAction::triggered, &field_, [chosen, pattern, name] { chosen(pattern, name); });
    }
}

void pattern_menu::choose(const QString& pattern) {
    field_.entry()->apply(pattern);
}

void pattern_menu::remove(const QString& pattern) {
    field_.entry()->remove_pattern(pattern);
}

void pattern_menu::ask_name(const QString& pattern, const QString& name) {
    auto* dialog = new QInputDialog(field_.window());
    dialog->setObjectName(objectName() + QStringLiteral(".ask_name"));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setWindowTitle(tr("Name of the filter"));
    dialog->setLabelText(tr("The menu and the side bar show this name in place of\n%1")
                             .arg(menu_words(pattern, filter_sizes.menu_greatest_width).replace("&&", "&")));
    dialog->setTextValue(name);
    filter_entry* entry = field_.entry();
    connect(dialog, &QInputDialog::textValueSelected, entry,
            [entry, pattern](const QString& chosen) { entry->name_pattern(pattern, chosen); });
    dialog->open();
}

void pattern_menu::keyPressEvent(QKeyEvent* event) {
    const QString pattern = pattern_of(activeAction());
    if (event->key() == Qt::Key_Delete && !pattern.isEmpty()) {
        remove(pattern);
        fill();
    } else if (event->key() == Qt::Key_F2 && !pattern.isEmpty()) {
        const QString name = activeAction()->property(name_property).toString();
        close();
        ask_name(pattern, name);
    } else {
        QMenu::keyPressEvent(event);
    }
}

}  // namespace vistels
