// SPDX-License-Identifier: GPL-3.0-or-later
#include "document/editable_document.h"

#include <algorithm>

#include "document/document_failures.h"
#include "util/file_system.h"

namespace vistels {

namespace {

constexpr double save_delay_seconds = 1;
constexpr double longest_unsaved_seconds = 10;

}  // namespace

file_conflict stranger_met(const std::string& path, const std::string& kept) {
    return {file_of_another_was_kept(path, path_name(kept)), path, kept};
}

// `outcome` and `met` are set on the save queue, before the main thread is told.
struct editable_document::running_save {
    std::uint64_t revision = 0;
    save_work work;
    bool is_writing = false;  // else it waits for the documents on record here
    result<void> outcome;
    std::vector<file_conflict> met;
};

editable_document::editable_document(run_loop& loop) : loop_(loop) {}

editable_document::~editable_document() {
    end_saving();
}

editable_document* editable_document::find(const document_id& wanted) {
    const auto is_named = [&](const editable_document& document) {
        const auto own = document.id();
        return own.kind == wanted.kind &&
               (own.uuid.empty() || wanted.uuid.empty() || own.uuid == wanted.uuid);
    };
    if (is_named(*this)) return this;
    for (const auto& kept : kept_) {
        if (is_named(*kept->document)) return kept->document;
    }
    return nullptr;
}

bool editable_document::only_sets_values(const document_change&) const {
    return false;
}

std::optional<document_part> editable_document::joined(const document_part&, const document_part&) const {
    return std::nullopt;
}

editable_document::growing_things editable_document::growing(const document_change&,
                                                             const document_change&) const {
    return {};
}

result<void> editable_document::change(const document_change&) {
    return other_not_open();
}

void editable_document::follow(const document_change&) {}

result<void> editable_document::change_others(const std::vector<document_part>& parts) {
    for (std::size_t at = 0; at < parts.size(); ++at) {
        auto* other = find(parts[at].document);
        auto done = other ? other->change(*parts[at].change) : other_not_open();
        if (done) continue;
        withdraw_others({parts.begin(), parts.begin() + static_cast<std::ptrdiff_t>(at)});
        return done;
    }
    return {};
}

void editable_document::withdraw_others(const std::vector<document_part>& parts) {
    for (const auto& part : reversed(parts)) (void)find(part.document)->change(*part.change);
}

void editable_document::follow_others(const std::vector<document_part>& parts) {
    for (const auto& part : parts) find(part.document)->follow(*part.change);
}

void editable_document::keep_on_record(editable_document& other) {
    auto kept = std::make_unique<kept_document>(kept_document{&other, 0, {}});
    kept->saved =
        other.saved.connect([this, one = kept.get()](const failure& problem) { follow_kept(*one, problem); });
    kept_.push_back(std::move(kept));
}

void editable_document::let_go(editable_document& other) {
    const bool leaves_any = other.saved_revision() < other.revision_on_record();
    leaves_edits_ = leaves_edits_ || (leaves_any && !other.is_read_only());
    std::erase_if(kept_, [&](const auto& kept) { return kept->document == &other; });
    if (running_ && !running_->is_writing) write_when_ready();
}

void editable_document::note_edit() {
    ++revision_;
    schedule_save();
}

void editable_document::note_edit_on_record() {
    note_edit();
    revision_on_record_ = revision_;
}

void editable_document::begin() {
    is_begun_ = true;
    if (has_unsaved_edits() && save_timer_ == 0) schedule_save();
}

void editable_document::schedule_save() {
    if (!is_begun_) return;
    const double now = loop_.time().seconds();
    if (save_timer_ == 0) {
        first_unsaved_seconds_ = now;
    } else {
        loop_.stop_timer(save_timer_);
    }
    const double due = std::min(now + save_delay_seconds, first_unsaved_seconds_ + longest_unsaved_seconds);
    save_timer_ = loop_.start_timer(std::max(due - now, 0.0), false, [this] {
        save_timer_ = 0;
        save_soon();
    });
}

void editable_document::tell(file_conflict found) {
    messages_.push_back(found.told);
    conflicts_.push_back(found);
    conflict.emit(found);
}

void editable_document::save_soon() {
    if (has_unsaved_edits()) begin_save();
}

void editable_document::begin_save() {
    if (running_ || is_held_back() || !may_save()) return;  // the end of the save that runs begins the next
    save_begins.emit();
    auto save = std::make_shared<running_save>();
    save->revision = revision_;
    auto work = take_save();
    if (work) save->work = std::move(work).value();
    running_ = save;
    for (auto& kept : kept_) kept->needed = kept->document->revision_on_record();
    if (work) return write_when_ready();
    save->is_writing = true;
    save->outcome = work.error();
    loop_.post(guard_.guarded([this, save] {
        if (running_ == save) (void)end_save();
    }));
}

void editable_document::write_when_ready() {
    for (const auto& kept : kept_) {
        if (!kept->is_waited_for()) continue;
        kept->document->save_soon();
        return;
    }
    auto save = running_;
    save->is_writing = true;
    if (is_held_back()) {
        save->work.write = [](std::vector<file_conflict>&) -> result<void> { return held_back(); };
    }
    save_queue().post([this, save] {
        save->outcome = save->work.write(save->met);
        loop_.post(guard_.guarded([this, save] {
            if (running_ == save) (void)end_save();  // `saved` tells
        }));
    });
}

// A save of a document on record here ended.
void editable_document::follow_kept(const kept_document& one, const failure& problem) {
    if (!running_ || running_->is_writing) return;
    if (!problem) return write_when_ready();
    if (!one.is_waited_for()) return;
    running_->outcome = problem;
    (void)end_save();
}

result<void> editable_document::end_save() {
    const auto save = std::exchange(running_, nullptr);
    if (!save->is_writing && save->outcome) save->outcome = held_back();
    if (save->work.over) save->work.over(save->outcome);
    save->work = {};  // what is still posted must not keep what it refers to
    if (save->outcome) saved_revision_ = save->revision;
    if (has_unsaved_edits() && save_timer_ == 0) schedule_save();
    for (const auto& one : save->met) tell(one);
    last_outcome_ = save->outcome;
    saved.emit(save->outcome.error());
    return save->outcome;
}

result<void> editable_document::save_now() {
    if (is_read_only()) return read_only_reason();
    if (is_held_back() && has_unsaved_edits()) return held_back();
    last_outcome_ = {};
    // The save that runs may be of an older revision than the one that is wanted.
    for (int attempt = 0; attempt < 2 && (running_ || has_unsaved_edits()); ++attempt) {
        if (!running_) begin_save();
        if (is_read_only()) return read_only_reason();
        if (!running_) break;
        for (const auto& kept : kept_) {
            if (!running_ || running_->is_writing) break;
            if (kept->is_waited_for()) (void)kept->document->save_now();
        }
        if (!running_) continue;
        finish_writing();
        (void)end_save();
    }
    if (save_timer_ != 0 && !has_unsaved_edits()) loop_.stop_timer(std::exchange(save_timer_, 0));
    return last_outcome_;
}

serial_queue& editable_document::save_queue() {
    if (!queue_) queue_ = std::make_unique<serial_queue>("save queue");
    return *queue_;
}

void editable_document::look_on_queue(std::function<bool()> work, std::function<void(bool)> then) {
    save_queue().post([this, work = std::move(work), then = std::move(then)]() mutable {
        const bool found = work();
        loop_.post(guard_.guarded([found, then = std::move(then)] { then(found); }));
    });
}

void editable_document::finish_writing() {
    if (queue_) queue_->drain();
}

void editable_document::abandon_saving() {
    for (const auto& kept : kept_) kept->document->abandon_saving();
    finish_writing();
    if (const auto save = std::exchange(running_, nullptr)) {
        if (save->is_writing && save->work.over) save->work.over(save->outcome);
        save->work = {};
        for (const auto& one : save->met) tell(one);
    }
    if (save_timer_ != 0) loop_.stop_timer(std::exchange(save_timer_, 0));
}

void editable_document::end_saving() {
    queue_.reset();
    if (running_) std::exchange(running_, nullptr)->work = {};
    if (save_timer_ != 0) loop_.stop_timer(std::exchange(save_timer_, 0));
}

}  // namespace vistels
