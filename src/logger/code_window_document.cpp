// SPDX-License-Identifier: GPL-3.0-or-later
#include "logger/code_window_document.h"

#include <utility>

#include "logger/code_window_change.h"

namespace vistels {

code_window_document::code_window_document(std::string logger_folder, run_loop& loop, file_system& files)
    : kept_document(loop), folder_(std::move(logger_folder)), files_(files) {}

code_window_document::~code_window_document() {
    close();
}

void code_window_document::take_up(code_window read, bool is_kept) {
    window_ = std::move(read);
    saved_ = std::make_shared<const code_window>(window_);
    is_kept_ = is_kept;
    note_saved_state();
}

void code_window_document::take_up_recovered(const std::vector<document_part>& parts) {
    if (!is_kept_ && has_button_dict(folder_)) return;
    for (const auto& part : parts) {
        if (part.document.kind != document_kind::code_window) continue;
        apply_button_changes(window_, button_changes_in(*part.change));
        if (is_kept_) note_edit_on_record();
    }
    note_taken_up_here();
}

void code_window_document::set_settings(logger_settings settings) {
    if (settings == window_.settings) return;
    window_.settings = std::move(settings);
    if (is_kept_) note_edit();
}

result<void> code_window_document::change(const document_change& change) {
    apply_button_changes(window_, button_changes_in(change));
    return {};
}

void code_window_document::follow(const document_change&) {
    if (is_kept_) note_edit_on_record();
    changed.emit();
}

code_window code_window_document::with_outputs() const {
    code_window shown = window_;
    for (button_record& button : shown.buttons.buttons) {
        button_formula formula = button->formula();
        const auto now = formula.filter.empty() || !shown_ ? std::nullopt : shown_(button->uuid());
        if (!now || *now == formula.output_string) continue;
        formula.output_string = *now;
        button = changed_button(button, [&](markup_Button_Item& one) { one.set_formula(formula); });
    }
    return shown;
}

result<editable_document::save_work> code_window_document::take_save() {
    const auto copy = std::make_shared<const code_window>(with_outputs());
    const auto write = [copy, saved = saved_, sync = edit_sync(), folder = folder_,
                        &files = files_](std::vector<file_conflict>& met) -> result<void> {
        // What is on record is there before the files that replace it.
        if (auto synced = sync(); !synced) return synced;
        return save_code_window(*copy, folder, saved.get(), files, &met);
    };
    const auto over = [this, copy](const result<void>& outcome) {
        if (outcome) saved_ = copy;
    };
    return save_work{write, over};
}

}  // namespace vistels
