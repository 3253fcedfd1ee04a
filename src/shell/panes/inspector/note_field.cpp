// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/panes/inspector/note_field.h"

#include <QKeyEvent>
#include <QTextDocument>

#include "shell/kit/theme.h"

namespace vistels {

namespace {

constexpr int shown_lines = 4;

}  // namespace

note_field::note_field(QWidget* parent) : QPlainTextEdit(parent) {
    setTabChangesFocus(true);
    setAccessibleName(tr("Note"));
    setPlaceholderText(tr("Write a note"));
    setToolTip(tr("The clip's note (Ctrl+Return: done, Escape: as it was)"));
    const theme_metrics& metrics = theme::current().metrics;
    setFixedHeight(shown_lines * fontMetrics().lineSpacing() + 2 * metrics.padding);
}

void note_field::set_note(const std::string& clip, const std::string& text) {
    if (is_committing_) return;  // what comes of it is shown when it is done
    if (clip != clip_) commit();
    const bool is_typed = clip == clip_ && document()->isModified();
    clip_ = clip;
    text_ = text;
    if (!is_typed) show_text();
}

void note_field::show_text() {
    const QString text = QString::fromStdString(text_);
    if (toPlainText() != text) setPlainText(text);
    document()->setModified(false);
}

void note_field::commit() {
    if (!document()->isModified() || clip_.empty() || is_committing_) return;
    const std::string typed = toPlainText().toStdString();
    is_committing_ = true;
    const bool accepted = typed == text_ || !accept_ || accept_(clip_, typed);
    is_committing_ = false;
    if (!accepted) return;
    text_ = typed;
    document()->setModified(false);
}

void note_field::keyPressEvent(QKeyEvent* event) {
    const bool is_return = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (event->key() == Qt::Key_Escape) {
        show_text();
        clearFocus();
    } else if (is_return && (event->modifiers() & Qt::ControlModifier) != 0) {
        commit();
        clearFocus();
    } else {
        QPlainTextEdit::keyPressEvent(event);
    }
}

void note_field::focusOutEvent(QFocusEvent* event) {
    QPlainTextEdit::focusOutEvent(event);
    // A menu over the field is part of the typing.
    if (event->reason() != Qt::PopupFocusReason) commit();
}

}  // namespace vistels
