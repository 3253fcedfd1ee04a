// SPDX-License-Identifier: GPL-3.0-or-later
#include "document/kept_document.h"

#include <utility>

#include "document/document_failures.h"

namespace vistels {

void kept_document::set_keeper(editable_document& keeper) {
    keeper_ = &keeper;
    keeper.keep_on_record(*this);
    access_ = keeper.access_changed.connect([this] { access_changed.emit(); });
}

void kept_document::note_taken_up_here() {
    if (keeper_) keeper_->note_taken_up(id().kind);
}

void kept_document::close() {
    end_saving();
    if (keeper_) keeper_->let_go(*this);
}

const failure& kept_document::read_only_reason() const {
    static const failure none;
    return keeper_ ? keeper_->read_only_reason() : none;
}

std::function<result<void>()> kept_document::edit_sync() {
    if (keeper_) return keeper_->edit_sync();
    return [] { return result<void>(); };
}

result<void> kept_document::make(document_edit edit) {
    if (keeper_) return keeper_->make(std::move(edit));
    for (const auto& part : edit.parts) {
        if (find(part.document) != this) return other_not_open();
    }
    if (auto done = change_others(edit.parts); !done) return done;
    follow_others(edit.parts);
    const document_edit back{edit.name, edit.scope, reversed(edit.parts), true};
    made.emit(edit, back);
    return {};
}

}  // namespace vistels
