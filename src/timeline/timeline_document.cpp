// SPDX-License-Identifier: GPL-3.0-or-later
#include "timeline/timeline_document.h"

#include <algorithm>

#include "util/clock.h"
#include "util/property_list.h"
#include "util/safe_write.h"
#include "util/uuid.h"

namespace vistels {

namespace {

constexpr double save_delay_seconds = 1;
constexpr double longest_unsaved_seconds = 10;

timeline_edit growing_clips(const timeline_snapshot& timeline) {
    timeline_edit edit;
    for (const auto& place : timeline.live_clips) {
        edit.operations.emplace_back(operation::begin_clip{place.row, *place.clip});
    }
    return edit;
}

// A torn temporary file alone is what a first save leaves that never ended: there was no timeline before it.
bool previous_copies_are_left(const std::string& folder) {
    const auto names = names_in_folder(folder);
    return std::any_of(names.begin(), names.end(), [](const std::string& name) {
        return name.starts_with(std::string(timeline_file_name) + std::string(previous_mark));
    });
}

}  // namespace

// A save on its way; `saved` is set on the save queue, before the main thread is told.
struct timeline_document::running_save {
    std::uint64_t revision = 0;
    std::uint64_t through = 0;  // the number of the last edit in it
    result<void> saved;
};

timeline_document::timeline_document(std::string folder, run_loop& loop, file_system& files)
    : folder_(std::move(folder)), loop_(loop), files_(files), instance_(new_uuid()) {}

result<std::unique_ptr<timeline_document>> timeline_document::open(const std::string& folder, run_loop& loop,
                                                                   file_system& files) {
    if (auto made = make_folders(folder, files); !made) return made.error();
    std::unique_ptr<timeline_document> document(new timeline_document(folder, loop, files));
    if (auto loaded = document->load(); !loaded) return loaded.error();
    return document;
}

timeline_document::~timeline_document() {
    if (journal_) finish_growing("Closed");
    if (save_queue_) (void)save_now();  // what cannot be saved stays in the journal
    save_queue_.reset();
    *alive_ = false;
    if (save_timer_ != 0) loop_.stop_timer(save_timer_);
    if (renewal_timer_ != 0) loop_.stop_timer(renewal_timer_);
    if (journal_ && !has_unsaved_edits()) journal_->remove_if_covered(saved_through_);
}

result<void> timeline_document::load() {
    if (auto lock = writer_lock::take(folder_)) {
        lock_ = std::move(lock).value();
        renewal_timer_ = loop_.start_timer(writer_lock::renewal_seconds, true, [this] { lock_->renew(); });
        messages_ = recover_folder(folder_, files_).messages;
    } else {
        read_only_reason_ = lock.message();
        messages_.push_back(read_only_reason_ + " It can be looked at here but not changed.");
    }
    const std::string path = path_join(folder_, timeline_file_name);
    file_content_mark mark;
    if (file_exists(path)) {
        const auto bytes = read_file(path);
        if (!bytes) return bytes.error();
        mark = content_mark_of(bytes.value());
        const auto document = read_property_list(bytes.value(), path);
        if (!document) return document.error();
        const auto* dictionary = document.value().dictionary();
        if (!dictionary) return failure{"\"" + path + "\" cannot be read: it does not hold a timeline."};
        auto loaded = read_timeline(*dictionary);
        if (loaded.skipped_clips > 0) {
            messages_.push_back("\"" + path + "\" holds " + std::to_string(loaded.skipped_clips) +
                                " clips without a readable time; they were left out.");
        }
        timeline_ = sxy_DATA_root(std::move(loaded.content));
    } else if (previous_copies_are_left(folder_)) {
        return failure{"\"" + path + "\" is missing and its copies are damaged. Nothing was changed."};
    } else if (lock_) {
        // On the volume from its first moment, so that its identity is the same whatever happens.
        const std::string bytes = write_property_list(write_timeline(timeline_.snapshot()));
        if (auto made = safe_write_bytes(path, bytes, files_)) mark = content_mark_of(bytes);
    }
    opened_file_ = written_file_ = mark;
    header_ = load_timeline_header(folder_);
    auto journal = read_journal(folder_, mark);
    messages_.insert(messages_.end(), journal.messages.begin(), journal.messages.end());
    if (lock_) keep_conflicts(journal);
    replay(journal);
    if (!lock_) return {};
    auto started =
        timeline_journal::start(folder_, journal.last_segment + 1, journal.base, journal.last_number, files_);
    if (!started) {
        read_only_reason_ = started.message();
        messages_.push_back(read_only_reason_ + " The timeline can be looked at but not changed.");
        return {};
    }
    journal_ = std::move(started).value();
    saved_through_ = journal.base.through;
    save_queue_ = std::make_unique<serial_queue>("save queue");
    last_noted_seconds_ = journal.last_time;
    recovered_edits_ += timeline_.live_clips().size();
    finish_growing("Recovered");
    if (!journal.left_out.empty()) {
        // The numbers of the changes left out are given out again: no journal may hold both.
        ++revision_;
        if (auto saved_at_once = save_now(); !saved_at_once) return saved_at_once;
    }
    if (has_unsaved_edits()) schedule_save();
    return {};
}

// Changes that cannot be replayed are not deleted with the journal either: they get a name that says so.
void timeline_document::keep_conflicts(const journal_content& journal) {
    for (const auto& path : journal.left_out) {
        std::string kept = path + " conflict";
        for (int number = 2; file_exists(kept); ++number) kept = path + " conflict " + std::to_string(number);
        int fault = files_.hard_link(path, kept);
        if (fault != 0 && !journal.fits) fault = files_.rename(path, kept);
        if (fault == 0 && !journal.fits) files_.remove(path);
        messages_.push_back(fault == 0 ? "They were kept as \"" + kept + "\"."
                                       : file_failure(path, "could not be kept", fault).message);
    }
}

void timeline_document::replay(const journal_content& journal) {
    std::vector<const timeline_edit*> all{&journal.base.growing};
    for (const auto& edit : journal.edits) all.push_back(&edit);
    for (const auto* edit : all) {
        if (edit->operations.empty()) continue;
        change_set touched;
        const auto applied = apply_edit(timeline_, *edit, touched);
        if (!applied) {
            messages_.push_back(applied.message());
            continue;
        }
        recovered_.emplace_back(*edit, applied.value());
        ++revision_;
    }
    recovered_edits_ = journal.edits.size();
}

// A button that was down when the program died, or closed, has made its clip, up to the last time on record.
void timeline_document::finish_growing(const char* name) {
    timeline_edit edit{name, "", {}};
    for (const auto& place : timeline_.live_clips()) {
        const double start = place.clip->secs_start();
        const double end = std::max({start, place.clip->secs_end(), last_noted_seconds_.value_or(start)});
        edit.operations.emplace_back(operation::finish_clip{place.clip->id(), start, end});
    }
    if (edit.operations.empty()) return;
    const connection recording =
        edited.connect([this](const timeline_edit& done, const timeline_edit& inverse) {
            recovered_.emplace_back(done, inverse);
        });
    if (auto applied = apply(std::move(edit)); !applied) messages_.push_back(applied.message());
}

result<void> timeline_document::apply(timeline_edit edit) {
    if (!journal_) return failure{read_only_reason_};
    change_set touched;
    const auto inverse = apply_edit(timeline_, edit, touched);
    if (!inverse) return inverse.error();
    if (auto recorded = journal_->append(edit); !recorded) {
        change_set undone;
        (void)apply_edit(timeline_, inverse.value(), undone);
        return recorded;
    }
    touched.revision = ++revision_;
    schedule_save();
    edited.emit(edit, inverse.value());
    changed.emit(touched);
    return {};
}

result<void> timeline_document::note_time(double collection_seconds) {
    if (!journal_ || timeline_.live_clips().empty()) return {};
    last_noted_seconds_ = collection_seconds;
    return journal_->append_time(collection_seconds);
}

void timeline_document::schedule_save() {
    const double now = loop_.time().seconds();
    if (save_timer_ == 0) {
        first_unsaved_seconds_ = now;
    } else {
        loop_.stop_timer(save_timer_);
    }
    const double due = std::min(now + save_delay_seconds, first_unsaved_seconds_ + longest_unsaved_seconds);
    save_timer_ = loop_.start_timer(std::max(due - now, 0.0), false, [this] {
        save_timer_ = 0;
        begin_save();
    });
}

void timeline_document::save_soon() {
    if (has_unsaved_edits()) begin_save();
}

void timeline_document::set_save_companion(std::function<save_companion()> begin) {
    begin_companion_ = std::move(begin);
    if (!begin_companion_ && save_queue_) save_queue_->drain();
}

void timeline_document::begin_save() {
    if (running_save_ || !journal_) return;  // the end of the save that runs begins the next
    auto save = std::make_shared<running_save>();
    save->revision = revision_;
    save->through = journal_->last_number();
    running_save_ = save;
    save_queue_->post([this, save, header = header_, snapshot = timeline_.snapshot(), alive = alive_,
                       companion = begin_companion_ ? begin_companion_() : save_companion()] {
        save->saved = write_files(snapshot, header, save->through, companion);
        loop_.post([this, save, alive] {
            if (*alive && running_save_ == save) (void)end_save();  // `saved` tells
        });
    });
}

// On the save queue.
result<void> timeline_document::write_files(const timeline_snapshot& snapshot, const timeline_header& header,
                                            std::uint64_t through, const save_companion& companion) {
    const std::string bytes = write_property_list(write_timeline(snapshot));
    const journal_base coming{content_mark_of(bytes), through, growing_clips(snapshot)};
    if (auto noted = journal_->note_save(coming); !noted) return noted;
    if (companion) companion(coming.content, written_file_);
    auto written = safe_write_bytes(path_join(folder_, timeline_file_name), bytes, files_);
    if (written) written_file_ = coming.content;
    if (written) written = save_timeline_header(header, folder_, files_);
    if (written) written = save_save_time(folder_, instance_, files_);
    if (!written) return written;
    return journal_->save_done(coming);
}

result<void> timeline_document::end_save() {
    const auto save = std::exchange(running_save_, nullptr);
    if (save->saved) {
        saved_revision_ = save->revision;
        saved_through_ = save->through;
    }
    if (has_unsaved_edits() && save_timer_ == 0) schedule_save();
    saved.emit(save->saved.message());
    return save->saved;
}

result<void> timeline_document::save_now() {
    if (!journal_) return failure{read_only_reason_};
    result<void> saved_all;
    // The save that runs may be of an older revision than the one that is wanted.
    for (int attempt = 0; attempt < 2 && (running_save_ || has_unsaved_edits()); ++attempt) {
        if (!running_save_) begin_save();
        save_queue_->drain();
        saved_all = end_save();
    }
    if (save_timer_ != 0 && !has_unsaved_edits()) loop_.stop_timer(std::exchange(save_timer_, 0));
    return saved_all;
}

}  // namespace vistels
