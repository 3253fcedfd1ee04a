// SPDX-License-Identifier: GPL-3.0-or-later
#include "timeline/files/timeline_document.h"

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <utility>

#include "document/document_failures.h"
#include "timeline/edits/edit_failures.h"
#include "timeline/edits/edit_names.h"
#include "timeline/files/timeline_file_failures.h"
#include "timeline/files/timeline_form.h"
#include "timeline/files/timeline_recovery.h"
#include "util/clock.h"
#include "util/file_failures.h"
#include "util/property_list.h"
#include "util/stored_sink.h"
#include "util/uuid.h"
#include "util/wait_watch.h"

namespace vistels {

namespace {

change_pointer growing_clips(const timeline_snapshot& timeline) {
    timeline_edit edit;
    for (const auto& place : timeline.live_clips) {
        edit.operations.emplace_back(operation::begin_clip{place.row, *place.clip});
    }
    return std::make_shared<const recorded_timeline_edit>(std::move(edit));
}

file_content_mark mark_of(const known_file& known) {
    if (known.identity.inode == 0) return {};
    return {known.identity.size, known.hash};
}

// Who saved last; nothing when it cannot be told.
std::optional<std::string> last_saver(const std::string& folder, file_system& files) {
    const std::string path = path_join(folder, timeline_save_time_file_name);
    known_file ignored;
    const auto bytes = read_known(path, ignored, files);
    if (!bytes) return std::nullopt;
    if (!bytes.value()) return std::string();
    const auto stored = read_property_list(*bytes.value(), path);
    const auto* values = stored ? stored.value().dictionary() : nullptr;
    return values ? values->text_or_empty("uuid last saved") : std::string();
}

file_conflict stranger_met(const std::string& path, const std::string& kept) {
    return {file_of_another_was_kept(path, path_name(kept)), path, kept};
}

}  // namespace

struct timeline_document::revision_to_save {
    timeline_snapshot snapshot;
    timeline_header header;
    std::uint64_t through = 0;  // the number of the last edit in it
    save_companion companion;
};

// What is in the timeline's folder.
struct timeline_document::files_read {
    timeline_snapshot content;
    bool is_there = false;  // "chron data.plist"
    known_file data;
    known_file header_file;
    timeline_header header;
    std::string saver;
    journal_content journal;
    std::vector<failure> messages;
};

timeline_document::timeline_document(std::string folder, run_loop& loop, file_system& files)
    : editable_document(loop),
      folder_(std::move(folder)),
      files_(files),
      instance_(new_uuid()),
      notes_(folder_, files) {}

result<std::unique_ptr<timeline_document>> timeline_document::open(const std::string& folder, run_loop& loop,
                                                                   file_system& files) {
    if (auto made = make_folders(folder, files); !made) return made.error();
    std::unique_ptr<timeline_document> document(new timeline_document(folder, loop, files));
    if (auto loaded = document->load(); !loaded) return loaded.error();
    return document;
}

timeline_document::~timeline_document() {
    if (journal_ && still_holds_lock()) {
        finish_growing(edit_name::closed);
        finish_writing();
        (void)look_for_strangers();
        (void)save_now();  // what cannot be saved stays in the journal
    }
    end_saving();
    if (renewal_timer_ != 0) loop_.stop_timer(renewal_timer_);
    if (journal_ && !has_unsaved_edits()) journal_->remove_if_covered(saved_through_);
}

result<void> timeline_document::load() {
    if (auto lock = writer_lock::take(folder_, timeline_form, files_, &is_held_elsewhere_)) {
        lock_ = std::move(lock).value();
        auto mended = recover_timeline_folder(folder_, files_);
        messages_ = std::move(mended.messages);
    } else {
        read_only_reason_ = lock.error();
        messages_.push_back(timeline_is_only_read_here(read_only_reason_));
    }
    auto read = read_files(lock_ != nullptr);
    if (!read) return read.error();
    take_up(read.value());
    if (lock_) start_writing(read.value().journal);
    return {};
}

result<void> timeline_document::try_to_write(bool take_over) {
    if (journal_) return {};
    std::unique_ptr<writer_lock> taken;
    if (!lock_) {
        auto lock = take_over ? writer_lock::take_over(folder_, timeline_form, files_, &is_held_elsewhere_)
                              : writer_lock::take(folder_, timeline_form, files_, &is_held_elsewhere_);
        if (!lock) return read_only_reason_ = lock.error();
        taken = std::move(lock).value();
        auto mended = recover_timeline_folder(folder_, files_);
        std::move(mended.messages.begin(), mended.messages.end(), std::back_inserter(messages_));
    }
    auto read = read_files(true);
    if (!read) return read_only_reason_ = read.error();
    if (taken) lock_ = std::move(taken);
    note_revision();
    take_up(read.value());
    change_set all;
    all.kinds = change_set::everything;
    all.revision = revision();
    changed.emit(all);
    start_writing(read.value().journal);
    if (!journal_) return read_only_reason_;
    access_changed.emit();
    return {};
}

// Without the lock the writer may save while this reads: then file and journal are read again, together.
result<timeline_document::files_read> timeline_document::read_files(bool may_change) {
    constexpr int attempts = 10;
    const std::string path = path_join(folder_, timeline_file_name);
    for (int attempt = 1;; ++attempt) {
        files_read read;
        if (auto done = read_data(read, may_change); !done) return done.error();
        if (auto done = read_header(read); !done) return done.error();
        read.saver = last_saver(folder_, files_).value_or("");
        auto journal = read_journal(folder_, timeline_form, mark_of(read.data), files_);
        if (!journal) return journal.error();
        read.journal = std::move(journal).value();
        file_identity now;
        const int looking = files_.identity(path, now);
        const bool is_same = looking == ENOENT ? !read.is_there : looking != 0 || now == read.data.identity;
        if (is_same || attempt == attempts) return read;
    }
}

result<void> timeline_document::read_data(files_read& read, bool may_change) {
    const std::string path = path_join(folder_, timeline_file_name);
    const auto bytes = read_known(path, read.data, files_);
    if (!bytes) return bytes.error();
    if (!bytes.value()) {
        // A torn temporary file alone is what a first save leaves that never ended: there was no timeline
        // before it.
        std::vector<std::string> names;
        if (const int fault = files_.list(folder_, names))
            return file_cannot_be_looked_through(folder_, system_failure(fault));
        const std::string copy = timeline_file_name + std::string(previous_mark);
        if (std::any_of(names.begin(), names.end(), [&](const auto& name) { return name.starts_with(copy); }))
            return read_only_reason_ ? timeline_was_not_put_back(path, read_only_reason_)
                                     : timeline_copies_are_damaged(path);
        return {};
    }
    read.is_there = true;
    auto found = read_timeline_bytes(*bytes.value(), path);
    if (!found) return found.error();
    auto& loaded = found.value();
    if (loaded.skipped_clips > 0) {
        read.messages.push_back(skipped_clips(path, loaded.skipped_clips));
    }
    auto notes = notes_.open(may_change, read.messages);
    if (!notes) return notes.error();
    read.content = put_notes_on(std::move(loaded.content), std::move(notes).value());
    return {};
}

// A damaged header costs the display settings; it is told and, before it is replaced, kept.
result<void> timeline_document::read_header(files_read& read) {
    const std::string path = path_join(folder_, timeline_header_file_name);
    const auto bytes = read_known(path, read.header_file, files_);
    if (!bytes) return bytes.error();
    if (!bytes.value()) return {};
    auto stored = read_property_list(*bytes.value(), path);
    if (stored && stored.value().dictionary()) {
        read.header = read_timeline_header(*stored.value().dictionary());
        return {};
    }
    read.messages.push_back(display_settings_were_lost(path));
    read.header_file = {};  // not known: the first save keeps it as a stranger's
    return {};
}

void timeline_document::take_up(files_read& read) {
    known_data_ = read.data;
    known_header_ = read.header_file;
    known_saver_ = std::move(read.saver);
    header_ = std::move(read.header);
    note_saved_state();
    recovered_.clear();
    recovered_others_.clear();
    timeline_ = read.is_there ? sxy_DATA_root(std::move(read.content)) : sxy_DATA_root();
    if (lock_ && !read.is_there && !read.journal.fits) {
        // On the volume from its first moment, so that its identity is the same whatever happens.
        const std::string bytes = timeline_bytes(timeline_.snapshot());
        const auto kept =
            safe_write_known(path_join(folder_, timeline_file_name), bytes, known_data_, false, files_);
        if (kept && !kept.value().empty())
            tell(stranger_met(path_join(folder_, timeline_file_name), kept.value()));
    }
    std::move(read.messages.begin(), read.messages.end(), std::back_inserter(messages_));
    messages_.insert(messages_.end(), read.journal.messages.begin(), read.journal.messages.end());
    opened_file_ = mark_of(known_data_);
    replay(read.journal);
}

void timeline_document::start_writing(const journal_content& journal) {
    read_only_reason_ = {};
    keep_conflicts(journal);
    if (renewal_timer_ == 0) {
        renewal_timer_ = loop_.start_timer(writer_lock::renewal_seconds, true, [this] { renew_lock(); });
    }
    journal_base base = journal.base;
    // The journal of a timeline that had no file continues the empty one that was made for it.
    if (!journal.fits) base.content = mark_of(known_data_);
    base.taken = journal.last_number;
    base.writer = instance_;
    base.covers = journal.parts;
    auto started = change_journal::start(folder_, timeline_form, journal.last_segment + 1, base,
                                         journal.last_number, files_);
    if (!started) {
        read_only_reason_ = started.error();
        messages_.push_back(timeline_is_only_read(read_only_reason_));
        return;
    }
    journal_ = std::move(started).value();
    saved_through_ = journal.base.through;
    last_noted_seconds_ = journal.last_time;
    finished_clips_.clear();
    for (const auto& place : timeline_.live_clips()) finished_clips_.push_back(place.clip->id());
    recovered_edits_ += finished_clips_.size();
    finish_growing(edit_name::recovered);
    if (!journal.left_out.empty()) note_revision();  // a save clears away what was kept under another name
    if (has_unsaved_edits()) schedule_save();
}

// Changes that cannot be replayed are not deleted with the journal either: they get a name that says so.
void timeline_document::keep_conflicts(const journal_content& journal) {
    for (const auto& path : journal.left_out) {
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
            messages_.push_back(file_could_not_be_kept(path, system_failure(fault)));
            continue;
        }
        const std::string path_of_data = path_join(folder_, timeline_file_name);
        tell({changes_of_another_were_kept(path_of_data, path_name(kept)), path_of_data, kept});
    }
}

void timeline_document::renew_lock() {
    if (!lock_ || !journal_) return;
    const expected_waits renewal("the writer's lock is renewed: the time of one file");
    if (!lock_->renew()) {
        (void)still_holds_lock();
    } else if (!is_saving() && look_for_strangers()) {
        save_soon();
    }
}

// Another program took the timeline over: from now on it is only looked at here.
bool timeline_document::still_holds_lock() {
    if (lock_->is_held()) return true;
    const expected_waits taken_over("another program took the timeline over");
    read_only_reason_ = lock_->lost();
    is_held_elsewhere_ = true;
    messages_.push_back(timeline_is_only_read_here(read_only_reason_));
    abandon_saving();
    journal_.reset();
    lock_.reset();
    access_changed.emit();
    return false;
}

// While no save runs. What a stranger put in place is met by a save, also when there is nothing else to save.
bool timeline_document::look_for_strangers() {
    file_identity now;
    const int looking = files_.identity(path_join(folder_, timeline_file_name), now);
    const bool found = looking == ENOENT || (looking == 0 && now != known_data_.identity);
    if (found) note_revision();
    return found;
}

void timeline_document::replay(const journal_content& journal) {
    std::vector<const timeline_edit*> all{&edit_in(journal.base.growing)};
    for (const auto& edit : journal.edits) all.push_back(&edit_in(edit));
    for (const auto* edit : all) {
        if (edit->operations.empty() && edit->others.empty()) continue;
        change_set touched;
        const auto applied = apply_edit(timeline_, *edit, touched);
        if (!applied) {
            messages_.push_back(applied.error());
            continue;
        }
        recovered_others_.insert(recovered_others_.end(), edit->others.begin(), edit->others.end());
        recovered_.emplace_back(*edit, applied.value());
        note_revision();
    }
    recovered_edits_ = journal.edits.size();
    if (!recovered_others_.empty()) hold_back();
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
    if (auto applied = apply(std::move(edit)); !applied) messages_.push_back(applied.error());
}

result<void> timeline_document::apply(timeline_edit edit) {
    complete_edit(edit, {author_, seconds_since_1970(), collection_number_});
    if (!journal_ || !still_holds_lock()) return read_only_reason_;
    change_set touched;
    const auto growing_before = timeline_.live_clips();
    if (auto done = change_others(edit.others); !done) return edit_could_not_be_done(edit.name, done.error());
    auto inverse = apply_edit(timeline_, edit, touched);
    if (!inverse) {
        withdraw_others(edit.others);
        return inverse.error();
    }
    if (auto recorded = journal_->append(write_edit(edit)); !recorded) {
        withdraw_edit(timeline_, inverse.value(), growing_before);
        withdraw_others(edit.others);
        return recorded;
    }
    follow_shift(edit);
    note_edit();
    touched.revision = revision();
    follow_others(edit.others);
    edited.emit(edit, inverse.value());
    const std::string own = timeline_.uuid();
    made.emit(document_edit_of(std::move(edit), own), document_edit_of(std::move(inverse).value(), own));
    changed.emit(touched);
    return {};
}

change_pointer timeline_document::still_possible(const change_pointer& change) const {
    auto possible = vistels::still_possible(timeline_, operations_in(*change));
    return possible.empty() ? nullptr : timeline_change_of(std::move(possible));
}

bool timeline_document::only_sets_values(const document_change& change) const {
    return vistels::only_sets_values(operations_in(change));
}

std::optional<document_part> timeline_document::joined(const document_part& earlier,
                                                       const document_part& later) const {
    auto both = vistels::joined(operations_in(*earlier.change), operations_in(*later.change));
    return document_part{later.document, timeline_change_of(std::move(both)), nullptr};
}

timeline_document::growing_things timeline_document::growing(const document_change& done,
                                                             const document_change& back) const {
    growing_things found;
    for (const auto& any : operations_in(done)) {
        if (const auto* begin = std::get_if<operation::begin_clip>(&any))
            found.begun.push_back(begin->clip->id());
        if (const auto* finish = std::get_if<operation::finish_clip>(&any))
            found.ended.push_back(finish->clip);
    }
    if (found.begun.empty()) return found;
    // The clips themselves are left out: their finish takes them back.
    std::vector<operation::any> rest;
    for (const auto& any : operations_in(back)) {
        const auto* remove = std::get_if<operation::remove_clip>(&any);
        const bool is_begun =
            remove && std::find(found.begun.begin(), found.begun.end(), remove->clip) != found.begun.end();
        if (!is_begun) rest.push_back(any);
    }
    if (!rest.empty()) found.rest = timeline_change_of(std::move(rest));
    return found;
}

// The time noted for clips that grow is one on the collection's clock, too.
void timeline_document::follow_shift(const timeline_edit& edit) {
    const double seconds = seconds_shifted(edit);
    if (seconds != 0 && last_noted_seconds_) (void)note_time(*last_noted_seconds_ + seconds);
}

std::function<result<void>()> timeline_document::edit_sync() {
    if (journal_) return [journal = journal_] { return journal->sync(); };
    return [reason = read_only_reason_]() -> result<void> { return reason; };
}

result<void> timeline_document::note_time(double collection_seconds) {
    if (!journal_ || timeline_.live_clips().empty()) return {};
    last_noted_seconds_ = collection_seconds;
    return journal_->append_time(collection_seconds);
}

void timeline_document::set_save_companion(std::function<save_companion()> begin) {
    begin_companion_ = std::move(begin);
    if (!begin_companion_) finish_writing();
}

bool timeline_document::may_save() {
    return journal_ && still_holds_lock();
}

result<editable_document::save_work> timeline_document::take_save() {
    const std::uint64_t through = journal_->last_number();
    revision_to_save revision{timeline_.snapshot(), header_, through,
                              begin_companion_ ? begin_companion_() : save_companion()};
    return save_work{
        [this, revision = std::move(revision)](conflicts_met& met) { return write_files(revision, met); },
        [this, through](const result<void>& outcome) {
            if (outcome) saved_through_ = through;
        }};
}

// On the save queue.
result<void> timeline_document::write_files(const revision_to_save& revision, conflicts_met& met) {
    const auto separate = take_notes_off(revision.snapshot);
    const bool in_doubt = last_saver(folder_, files_) != known_saver_;
    // Notes that outlive a power loss must not find older clips: the edits that they came with are there
    // first.
    if (auto synced = journal_->sync(); !synced) return synced;
    // Before the save is noted: a save that changes nothing but notes leaves the same "chron data.plist", for
    // which the journal would count as covered from the note on.
    const auto strangers_notes = notes_.save(separate, in_doubt);
    if (!strangers_notes) return strangers_notes.error();
    if (!strangers_notes.value().empty()) {
        met.push_back(stranger_met(path_join(folder_, timeline_notes_file_name), strangers_notes.value()));
    }
    journal_base coming{{}, revision.through, growing_clips(revision.snapshot), {}, {}};
    const auto note = [&](const coming_content& content) -> result<void> {
        coming.content = {content.size, content.hash};
        if (auto noted = journal_->note_save(coming); !noted) return noted;
        if (revision.companion) revision.companion(coming.content, mark_of(known_data_));
        return {};
    };
    timeline_header beside = revision.header;
    beside.data_before = mark_of(known_data_);
    auto written = write_data(separate.timeline, note, in_doubt, met);
    if (written) {
        notes_.timeline_is_saved();
        beside.data = coming.content;
        written = write_file(timeline_header_file_name, write_property_list(write_timeline_header(beside)),
                             known_header_, in_doubt, met);
    }
    if (written) written = save_save_time(folder_, instance_, files_);
    if (!written) return written;
    known_saver_ = instance_;
    return journal_->save_done(coming);
}

// On the save queue.
result<void> timeline_document::write_data(const timeline_snapshot& timeline,
                                           const std::function<result<void>(const coming_content&)>& note,
                                           bool in_doubt, conflicts_met& met) {
    const std::string path = path_join(folder_, timeline_file_name);
    std::optional<property_list_sink> sink;
    const auto put_all = [&](const block_writer& put) {
        sink.emplace(put);
        write_whole_timeline(timeline, *sink);
        return sink->last_block();
    };
    const auto kept = safe_write_known_blocks(path, put_all, note, known_data_, in_doubt, files_);
    if (!kept) return kept.error();
    if (!kept.value().empty()) met.push_back(stranger_met(path, kept.value()));
    return {};
}

// On the save queue.
result<void> timeline_document::write_file(const char* name, const std::string& bytes, known_file& known,
                                           bool in_doubt, conflicts_met& met) {
    const std::string path = path_join(folder_, name);
    const auto kept = safe_write_known(path, bytes, known, in_doubt, files_);
    if (!kept) return kept.error();
    if (!kept.value().empty()) met.push_back(stranger_met(path, kept.value()));
    return {};
}

}  // namespace vistels
