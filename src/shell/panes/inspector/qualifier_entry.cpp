// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/panes/inspector/qualifier_entry.h"

#include <QAbstractItemView>
#include <QCompleter>
#include <QKeyEvent>
#include <QStringListModel>
#include <algorithm>

namespace vistels {

namespace {

QString line_of(const std::pair<std::string, std::string>& one) {
    const QString name = QString::fromStdString(one.first);
    return one.second.empty() ? name
                              : QStringLiteral("%1 – %2").arg(name, QString::fromStdString(one.second));
}

}  // namespace

qualifier_entry::qualifier_entry(QWidget* parent) : QLineEdit(parent), lines_(new QStringListModel(this)) {
    auto* completer = new QCompleter(lines_, this);
    completer->setCaseSensitivity(Qt::CaseInsensitive);
    completer->setFilterMode(Qt::MatchContains);
    completer->popup()->setProperty("kind", "popover");
    setCompleter(completer);
    connect(this, &QLineEdit::returnPressed, this, &qualifier_entry::ask);
}

void qualifier_entry::focusInEvent(QFocusEvent* event) {
    shown_ = known_ ? known_() : known_list();
    QStringList lines;
    for (const auto& one : shown_) lines << line_of(one);
    lines_->setStringList(lines);
    QLineEdit::focusInEvent(event);
}

void qualifier_entry::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape && !text().isEmpty()) return clear();
    QLineEdit::keyPressEvent(event);
}

// A name that stands among the known ones once has their category.
void qualifier_entry::ask() {
    const QString typed = text().trimmed();
    if (typed.isEmpty()) return;
    // A line that was taken from the list is put into the field after this.
    QMetaObject::invokeMethod(this, &QLineEdit::clear, Qt::QueuedConnection);
    const auto whole =
        std::find_if(shown_.begin(), shown_.end(), [&](const auto& one) { return line_of(one) == typed; });
    if (whole != shown_.end())
        return Q_EMIT qualifier_asked(QString::fromStdString(whole->first),
                                      QString::fromStdString(whole->second));
    const std::string name = typed.toStdString();
    const auto is_named = [&](const auto& one) { return one.first == name; };
    const auto first = std::find_if(shown_.begin(), shown_.end(), is_named);
    const bool is_clear = std::count_if(shown_.begin(), shown_.end(), is_named) == 1;
    Q_EMIT qualifier_asked(typed, is_clear ? QString::fromStdString(first->second) : QString());
}

}  // namespace vistels
