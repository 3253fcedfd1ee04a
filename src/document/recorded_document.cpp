// SPDX-License-Identifier: GPL-3.0-or-later
#include "document/recorded_document.h"

#include <cerrno>
#include <iterator>
#include <utility>

#include "document/document_failures.h"
#include "util/file_failures.h"
#include "util/uuid.h"
#include "util/wait_watch.h"

namespace vistels {

namespace {

file_content_mark mark_of(const known_file& known) {
    if (known.identity.inode == 0) return {};
    return {known.identity.size, known.hash};
}

void add_all(std::vector<failure>& to, const std::vector<failure>& from) {
    to.insert(to.end(), from.begin(), from.end());
}

}  // namespace

// What opening found out and did, before the document takes it up.
struct recorded_document::opening {
    std::unique_ptr<writer_lock> lock;  // none: it is held already, or cannot be
    bool may_write = false;
    bool is_held_elsewhere = false;
    failure failed;              // why nothing was read
    failure not_locked;          // why it can only be read
    std::vector<failure> found;  // told of the folder, before it was read
    std::vector<failure> read;   // told of the files
    known_file content;
    file_content_mark file;  // its content
    journal_content journal;
    std::vector<file_conflict> strangers;  // met by the first file
    std::vector<file_conflict> conflicts;
    std::vector<failure> not_kept;
    result<std::unique_ptr<change_journal>> started = std::unique_ptr<change_journal>();
};

recorded_document::recorded_document(std::string folder, const recorded_form& form, run_loop& loop,
                                     file_system& files)
    : editable_document(loop), folder_(std::move(folder)), form_(form), files_(files), instance_(new_uuid()) {
    wait_to_begin();
}

recorded_document::~recorded_document() = default;

result<void> recorded_document::open_files() {
    opening now;
    if (auto read = prepare(now, false); !read) return read;
    take_up(now);
    take_up_journal(now);
    return {};
}

void recorded_document::begin() {
    editable_document::begin();
    start_renewal();
}

void recorded_document::start_renewal() {
    if (!lock_ || renewal_timer_ != 0 || !is_begun()) return;
    renewal_timer_ = loop_.start_timer(writer_lock::renewal_seconds, true, [this] { renew_lock(); });
}

result<void> recorded_document::try_to_write(bool take_over) {
    (void)prepare_to_write(take_over);
    return write_prepared();
}

bool recorded_document::prepare_to_write(bool take_over) {
    if (journal_) return true;
    auto now = std::make_unique<opening>();
    if (auto read = prepare(*now, take_over); !read) now->failed = read.error();
    opening_ = std::move(now);
    return !opening_->failed;
}

void recorded_document::forget_prepared() {
    opening_.reset();
}

const file_content_mark& recorded_document::prepared_file() const {
    static const file_content_mark none;
    return opening_ ? opening_->file : none;
}

result<void> recorded_document::write_prepared() {
    const auto now = std::exchange(opening_, nullptr);
    if (journal_ || !now) return {};
    is_held_elsewhere_ = now->is_held_elsewhere;
    if (now->failed) return read_only_reason_ = now->failed;
    note_revision();
    take_up(*now);
    tell_all();
    take_up_journal(*now);
    if (!journal_) return read_only_reason_;
    access_changed.emit();
    return {};
}

// Fails, too, where it is to become the writer and cannot.
result<void> recorded_document::prepare(opening& now, bool take_over) {
    const bool is_open = is_begun();
    if (!lock_) {
        auto lock = take_over ? writer_lock::take_over(folder_, form_, files_, &now.is_held_elsewhere)
                              : writer_lock::take(folder_, form_, files_, &now.is_held_elsewhere);
        if (lock) {
            now.lock = std::move(lock).value();
            now.found = put_in_order().messages;
        } else {
            if (is_open) return lock.error();
            now.not_locked = lock.error();
            now.found.push_back(form_.is_only_read_here(now.not_locked));
        }
    }
    now.may_write = lock_ || now.lock;
    if (auto read = read_files(now); !read) return read;
    now.file = mark_of(now.content);
    if (!now.may_write) return {};
    make_first_file(now);
    keep_conflicts(now);
    start_journal(now);
    return {};
}

// Without the lock the writer may save while this reads: then file and journal are read again, together.
result<void> recorded_document::read_files(opening& now) {
    constexpr int attempts = 10;
    const std::string path = path_of(form_.file_name);
    for (int attempt = 1;; ++attempt) {
        now.read.clear();
        auto content = read_content(now.not_locked, now.read);
        if (!content) return content.error();
        now.content = content.value();
        auto journal = read_journal(folder_, form_, mark_of(now.content), files_);
        if (!journal) return journal.error();
        now.journal = std::move(journal).value();
        file_identity found;
        const int looking = files_.identity(path, found);
        const bool is_there = now.content.identity.inode != 0;
        const bool is_same = looking == ENOENT ? !is_there : looking != 0 || found == now.content.identity;
        if (is_same || attempt == attempts) return {};
    }
}

// On the volume from its first moment, so that its identity is the same whatever happens.
void recorded_document::make_first_file(opening& now) {
    if (now.content.identity.inode != 0 || now.journal.fits) return;
    const std::string path = path_of(form_.file_name);
    const auto kept = safe_write_known(path, first_bytes(), now.content, false, files_);
    now.file = mark_of(now.content);
    if (kept && !kept.value().empty()) now.strangers.push_back(stranger_met(path, kept.value()));
}

// Changes that cannot be replayed are not deleted with the journal either: they get a name that says so.
void recorded_document::keep_conflicts(opening& now) {
    for (const auto& path : now.journal.left_out) {
        file_identity wanted;
        int fault = files_.identity(path, wanted);
        std::string kept = path + " conflict";
        for (int number = 2; fault == 0; ++number) {
            file_identity found;
            if (files_.identity(kept, found) == 0 && found == wanted) break;
            const int linking = files_.hard_link(path, kept);
            if (linking == 0) break;
            if (linking != EEXIST) fault = files_.rename(path, kept);
            if (linking != EEXIST) break;
            kept = path + " conflict " + std::to_string(number);
        }
        if (fault != 0) {
            now.not_kept.push_back(file_could_not_be_kept(path, system_failure(fault)));
            continue;
        }
        const std::string content = path_of(form_.file_name);
        now.conflicts.push_back({changes_of_another_were_kept(content, path_name(kept)), content, kept});
    }
}

void recorded_document::start_journal(opening& now) {
    const journal_content& journal = now.journal;
    journal_base base = journal.base;
    // The journal of a document that had no file continues the one that was made for it.
    if (!journal.fits) base.content = now.file;
    base.taken = journal.last_number;
    base.writer = instance_;
    base.covers = journal.parts;
    now.started =
        change_journal::start(folder_, form_, journal.last_segment + 1, base, journal.last_number, files_);
}

void recorded_document::take_up(opening& now) {
    if (now.lock) lock_ = std::move(now.lock);
    is_held_elsewhere_ = now.is_held_elsewhere;
    if (now.not_locked) read_only_reason_ = now.not_locked;
    known_content_ = now.content;
    note_saved_state();
    recovered_others_.clear();
    take_up_content();
    add_all(messages_, now.found);
    for (const auto& stranger : now.strangers) tell(stranger);
    add_all(messages_, now.read);
    add_all(messages_, now.journal.messages);
    opened_file_ = now.file;
    std::vector<change_pointer> all{now.journal.base.growing};
    all.insert(all.end(), now.journal.edits.begin(), now.journal.edits.end());
    for (const auto& recorded : all) {
        if (!recorded) continue;
        const auto replayed = replay(recorded, recovered_others_);
        if (!replayed) {
            messages_.push_back(replayed.error());
        } else if (replayed.value()) {
            note_revision();
        }
    }
    recovered_edits_ = now.journal.edits.size();
    for (const auto& part : recovered_others_) hold_back_for(part.document.kind);
}

void recorded_document::take_up_journal(opening& now) {
    if (!now.may_write) return;
    read_only_reason_ = {};
    add_all(messages_, now.not_kept);
    for (const auto& one : now.conflicts) tell(one);
    start_renewal();
    if (!now.started) {
        read_only_reason_ = now.started.error();
        messages_.push_back(form_.is_only_read(read_only_reason_));
        return;
    }
    journal_ = std::move(now.started).value();
    saved_through_ = now.journal.base.through;
    recovered_edits_ += finish_replay(now.journal.last_time);
    if (!now.journal.left_out.empty())
        note_revision();  // a save clears away what was kept under another name
    if (has_unsaved_edits()) schedule_save();
}

void recorded_document::close_files() {
    // What was never begun leaves what it holds to the journal.
    if (is_begun() && can_edit()) {
        finish_before_closing();
        finish_writing();
        if (is_strangers_there()) note_revision();
        (void)save_now();
    }
    end_saving();
    if (renewal_timer_ != 0) loop_.stop_timer(std::exchange(renewal_timer_, 0));
    if (journal_ && !has_unsaved_edits()) journal_->remove_if_covered(saved_through_);
}

void recorded_document::renew_lock() {
    if (!lock_ || !journal_) return;
    const auto is_held = std::make_shared<bool>(false);  // set on the queue, before the main thread is told
    look_on_queue(
        [this, is_held] {
            *is_held = lock_->renew();
            return *is_held && is_strangers_there();
        },
        [this, is_held](bool strangers) {
            if (!journal_) return;
            if (!*is_held) (void)still_holds_lock();
            if (!*is_held || !strangers) return;
            // A save meets it, also when there is nothing else to save.
            note_revision();
            save_soon();
        });
}

// Another program took the document over: from now on it is only looked at here.
bool recorded_document::still_holds_lock() {
    if (lock_->is_held()) return true;
    const expected_waits taken_over("another program took the document over");
    read_only_reason_ = lock_->lost();
    is_held_elsewhere_ = true;
    messages_.push_back(form_.is_only_read_here(read_only_reason_));
    abandon_saving();
    journal_.reset();
    lock_.reset();
    access_changed.emit();
    return false;
}

// On the save queue, or while nothing runs there.
bool recorded_document::is_strangers_there() {
    file_identity now;
    const int looking = files_.identity(path_of(form_.file_name), now);
    return looking == ENOENT || (looking == 0 && now != known_content_.identity);
}

result<void> recorded_document::record(const edit_steps& steps) {
    if (auto done = change_others(steps.others); !done)
        return edit_could_not_be_done(steps.name, done.error());
    if (auto done = steps.make(); !done) {
        withdraw_others(steps.others);
        return done;
    }
    if (auto recorded = journal_->append(steps.stored()); !recorded) {
        steps.withdraw();
        withdraw_others(steps.others);
        return recorded;
    }
    note_edit();
    follow_others(steps.others);
    return {};
}

std::function<result<void>()> recorded_document::edit_sync() {
    if (journal_) return [journal = journal_] { return journal->sync(); };
    return [reason = read_only_reason_]() -> result<void> { return reason; };
}

// On the save queue.
result<void> recorded_document::write_file(const char* name, const std::string& bytes, known_file& known,
                                           bool in_doubt, conflicts_met& met) {
    const std::string path = path_of(name);
    const auto kept = safe_write_known(path, bytes, known, in_doubt, files_);
    if (!kept) return kept.error();
    if (!kept.value().empty()) met.push_back(stranger_met(path, kept.value()));
    return {};
}

}  // namespace vistels
