// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/filter/filter_completer.h"

#include <QKeyEvent>
#include <algorithm>

#include "shell/filter/filter_display.h"
#include "shell/filter/filter_editor.h"
#include "shell/filter/filter_entry.h"
#include "shell/filter/filter_field.h"

namespace vistels {

namespace {

constexpr std::size_t most_offered = 50;

completion_line line_of(const formula_text& text, typed_part part) {
    completion_line line;
    line.words = QString::fromStdString(text.text);
    line.code = text.code;
    line.uses = text.uses;
    line.what = code_meaning(part == typed_part::codes ? text.text : text.code);
    if (part == typed_part::codes) line.code = text.text;
    return line;
}

}  // namespace

filter_completer::filter_completer(filter_field& field) : QObject(&field), field_(field) {
    field_.editor().installEventFilter(this);
    connect(&field_.editor(), &filter_editor::typed, this, &filter_completer::offer);
    // A cursor that goes elsewhere leaves what was offered behind; typing offers anew.
    connect(&field_.editor(), &QPlainTextEdit::cursorPositionChanged, this, [this] {
        if (field_.editor().text() == offered_for_ && field_.editor().caret() != offered_at_) hide();
    });
    connect(&field_.editor(), &filter_editor::focus_changed, this, [this](bool has_focus) {
        if (!has_focus) hide();
        if (has_focus && field_.entry()) field_.entry()->refresh_texts();
    });
}

filter_completer::~filter_completer() {
    delete list_;
}

bool filter_completer::is_shown() const {
    return list_ && list_->isVisible();
}

void filter_completer::hide() {
    if (list_) list_->hide();
}

void filter_completer::take_up_texts() {
    if (is_shown() || field_.editor().text() == offered_for_) offer();
}

void filter_completer::offer() {
    const filter_editor& editor = field_.editor();
    filter_entry* entry = field_.entry();
    if (!entry || !editor.hasFocus() || editor.text().isEmpty()) return hide();
    entry->refresh_texts();
    offered_for_ = editor.text();
    offered_at_ = editor.caret();
    const std::string typed = offered_for_.toStdString();
    at_ = completion_at(typed, offered_at_);
    offered_.clear();
    const bool is_begun = at_.part == typed_part::codes || !at_.typed.empty();
    if (at_.part == typed_part::quoted_word || (at_.part != typed_part::nothing && is_begun)) {
        offered_ = completions(at_, entry->texts(), most_offered);
    }
    // What stands there already need not be offered.
    std::erase_if(offered_, [&](const formula_text& one) {
        const auto after = with_completion(typed, at_, one);
        return !after || after.value().text == typed;
    });
    if (offered_.empty()) return hide();
    if (!list_) {
        list_ = new completion_list(field_.objectName() + QStringLiteral(".completions"), &field_);
        connect(list_, &completion_list::picked, this, &filter_completer::accept);
    }
    std::vector<completion_line> lines;
    for (const formula_text& one : offered_) lines.push_back(line_of(one, at_.part));
    list_->set_colours(entry->colours());
    // Return after a plain search means the search.
    list_->offer(lines, field_.taken_room(), at_.part != typed_part::plain_word && is_begun);
}

void filter_completer::follow_field() {
    if (is_shown()) list_->place(field_.taken_room());
}

void filter_completer::accept(int line) {
    if (line < 0 || line >= static_cast<int>(offered_.size())) return;
    filter_editor& editor = field_.editor();
    const auto after =
        with_completion(offered_for_.toStdString(), at_, offered_[static_cast<std::size_t>(line)]);
    hide();
    if (!after) return;
    const QString text = QString::fromStdString(after.value().text);
    offered_for_.clear();
    editor.setFocus();  // a click on the list has taken it
    editor.replace(0, static_cast<int>(editor.text().size()), text, utf16_place(text, after.value().caret));
}

bool filter_completer::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() != QEvent::KeyPress || !is_shown()) return QObject::eventFilter(watched, event);
    const auto* key = static_cast<QKeyEvent*>(event);
    return !(key->modifiers() & ~Qt::KeypadModifier) && takes_key(key->key());
}

bool filter_completer::takes_key(int key) {
    switch (key) {
        case Qt::Key_Down:
            list_->choose_beside(1);
            return true;
        case Qt::Key_Up:
            list_->choose_beside(-1);
            return true;
        case Qt::Key_Tab:
            accept(std::max(0, list_->chosen()));
            return true;
        case Qt::Key_Return:
        case Qt::Key_Enter:
            if (list_->chosen() < 0) {
                hide();
                return false;
            }
            accept(list_->chosen());
            return true;
        case Qt::Key_Escape:
            offered_for_.clear();  // what comes of counting names does not bring it back
            hide();
            return true;
        default:
            return false;
    }
}

}  // namespace vistels
