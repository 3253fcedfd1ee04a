// SPDX-License-Identifier: GPL-3.0-or-later
#include "timeline/files/timeline_document.h"

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <map>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "document/document_failures.h"
#include "timeline/edits/edit_failures.h"
#include "timeline/edits/edit_names.h"
#include "timeline/files/timeline_file_failures.h"
#include "timeline/files/timeline_form.h"
#include "timeline/files/timeline_recovery.h"
#include "timeline/form/unique_appender.h"
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

using clips_in_rows = std::map<std::string, shared_text>;

// Whether it takes back the beginning of one of the first or the giving up of one of the others.
bool is_of_clips(const operation::any& any, const clips_in_rows& begun, const clips_in_rows& given_up) {
    if (const auto* remove = std::get_if<operation::remove_clip>(&any)) return begun.contains(remove->clip);
    const auto* begin = std::get_if<operation::begin_clip>(&any);
    return begin && given_up.contains(begin->clip->id());
}

// The row that it makes, takes away or changes; empty for all else.
shared_text row_of(const operation::any& any) {
    if (const auto* insert = std::get_if<operation::insert_row>(&any)) return insert->row->uuid();
    if (const auto* remove = std::get_if<operation::remove_row>(&any)) return remove->row;
    if (const auto* change = std::get_if<operation::change_row>(&any)) return change->row;
    return {};
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

}  // namespace

struct timeline_document::revision_to_save {
    timeline_snapshot snapshot;
    timeline_header header;
    std::uint64_t through = 0;  // the number of the last edit in it
    save_companion companion;
};

// What is in the timeline's folder.
struct timeline_document::files_read {
    sxy_DATA_root timeline;
    known_file header_file;
    timeline_header header;
    std::string saver;
};

timeline_document::timeline_document(std::string folder, run_loop& loop, file_system& files)
    : recorded_document(std::move(folder), timeline_form, loop, files), notes_(folder_, files) {}

result<std::unique_ptr<timeline_document>> timeline_document::read(const std::string& folder, run_loop& loop,
                                                                   file_system& files) {
    if (auto made = make_folders(folder, files); !made) return made.error();
    std::unique_ptr<timeline_document> document(new timeline_document(folder, loop, files));
    if (auto opened = document->open_files(); !opened) return opened.error();
    return document;
}

result<std::unique_ptr<timeline_document>> timeline_document::open(const std::string& folder, run_loop& loop,
                                                                   file_system& files) {
    auto document = read(folder, loop, files);
    if (document) document.value()->begin();
    return document;
}

timeline_document::~timeline_document() {
    close_files();
}

recovery timeline_document::put_in_order() {
    return recover_timeline_folder(folder_, files_);
}

result<known_file> timeline_document::read_content(const failure& not_locked,
                                                   std::vector<failure>& messages) {
    read_ = std::make_unique<files_read>();
    const auto data = read_data(*read_, not_locked, messages);
    if (!data) return data;
    if (auto done = read_header(*read_, messages); !done) return done.error();
    read_->saver = last_saver(folder_, files_).value_or("");
    return data;
}

result<known_file> timeline_document::read_data(files_read& read, const failure& not_locked,
                                                std::vector<failure>& messages) {
    const std::string path = path_of(timeline_file_name);
    known_file known;
    const auto bytes = read_known(path, known, files_);
    if (!bytes) return bytes.error();
    if (!bytes.value()) {
        // A torn temporary file alone is what a first save leaves that never ended: there was no timeline
        // before it.
        std::vector<std::string> names;
        if (const int fault = files_.list(folder_, names))
            return file_cannot_be_looked_through(folder_, system_failure(fault));
        const std::string copy = timeline_file_name + std::string(previous_mark);
        if (std::any_of(names.begin(), names.end(), [&](const auto& name) { return name.starts_with(copy); }))
            return not_locked ? timeline_was_not_put_back(path, not_locked)
                              : timeline_copies_are_damaged(path);
        return known;
    }
    auto found = read_timeline_bytes(*bytes.value(), path);
    if (!found) return found.error();
    auto& loaded = found.value();
    if (loaded.skipped_clips > 0) messages.push_back(skipped_clips(path, loaded.skipped_clips));
    auto notes = notes_.open(!not_locked, messages);
    if (!notes) return notes.error();
    read.timeline = sxy_DATA_root(put_notes_on(std::move(loaded.content), std::move(notes).value()));
    return known;
}

// A damaged header costs the display settings; it is told and, before it is replaced, kept.
result<void> timeline_document::read_header(files_read& read, std::vector<failure>& messages) {
    const std::string path = path_of(timeline_header_file_name);
    const auto bytes = read_known(path, read.header_file, files_);
    if (!bytes) return bytes.error();
    if (!bytes.value()) return {};
    auto stored = read_property_list(*bytes.value(), path);
    if (stored && stored.value().dictionary()) {
        read.header = read_timeline_header(*stored.value().dictionary());
        return {};
    }
    messages.push_back(display_settings_were_lost(path));
    read.header_file = {};  // not known: the first save keeps it as a stranger's
    return {};
}

std::string timeline_document::first_bytes() {
    return timeline_bytes(read_->timeline.snapshot());
}

void timeline_document::take_up_content() {
    const auto read = std::exchange(read_, nullptr);
    known_header_ = read->header_file;
    known_saver_ = std::move(read->saver);
    header_ = std::move(read->header);
    timeline_ = std::move(read->timeline);
    recovered_.clear();
}

void timeline_document::tell_all() {
    change_set all;
    all.kinds = change_set::everything;
    all.revision = revision();
    changed.emit(all);
}

result<bool> timeline_document::replay(const change_pointer& recorded, std::vector<document_part>& others) {
    const timeline_edit& edit = edit_in(recorded);
    if (edit.operations.empty() && edit.others.empty()) return false;
    change_set touched;
    const auto applied = apply_edit(timeline_, edit, touched);
    if (!applied) return applied.error();
    others.insert(others.end(), edit.others.begin(), edit.others.end());
    recovered_.emplace_back(edit, applied.value());
    return true;
}

std::size_t timeline_document::finish_replay(std::optional<double> last_time) {
    last_noted_seconds_ = last_time;
    finished_clips_.clear();
    for (const auto& place : timeline_.live_clips()) finished_clips_.push_back(place.clip->id());
    finish_growing(edit_name::recovered);
    return finished_clips_.size();
}

void timeline_document::finish_before_closing() {
    finish_growing(edit_name::closed);
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

// What the edits of apply_jointly() have done so far.
struct timeline_document::joint_edit {
    struct made_edit {
        timeline_edit inverse;
        change_set touched;
    };
    timeline_edit whole;
    edit_stamp stamp;
    std::vector<clip_place> growing_before;
    bool can_edit = false;  // looked at with the first of them
    std::vector<made_edit> made;

    void withdraw(sxy_DATA_root& timeline) {
        withdraw_edit(timeline, take_inverse(), std::move(growing_before));
    }
    timeline_edit take_inverse() {
        timeline_edit inverse{whole.name, whole.scope, {}};
        inverse.is_complete = true;
        for (auto one = made.rbegin(); one != made.rend(); ++one) {
            auto& back = one->inverse.operations;
            std::move(back.begin(), back.end(), std::back_inserter(inverse.operations));
        }
        inverse.others = reversed(whole.others);
        return inverse;
    }
    change_set touched() const {
        change_set all;
        std::size_t rows = 0;
        std::size_t clips = 0;
        for (const auto& one : made) {
            all.kinds |= one.touched.kinds;
            rows += one.touched.rows.size();
            clips += one.touched.clips.size();
        }
        unique_appender<shared_text> add_row(all.rows, rows);
        unique_appender<std::string> add_clip(all.clips, clips);
        for (const auto& one : made) {
            for (const auto& row : one.touched.rows) add_row.add(row);
            for (const auto& clip : one.touched.clips) add_clip.add(clip);
        }
        return all;
    }
};

result<void> timeline_document::make_jointly(timeline_edit edit) {
    complete_edit(edit, joint_->stamp);
    joint_edit::made_edit coming;
    auto applied = apply_edit(timeline_, edit, coming.touched);
    if (!applied) return applied.error();
    coming.inverse = std::move(applied).value();
    joint_->made.push_back(std::move(coming));
    auto& whole = joint_->whole;
    if (edit.stamp) whole.stamp = edit.stamp;
    std::move(edit.operations.begin(), edit.operations.end(), std::back_inserter(whole.operations));
    std::move(edit.others.begin(), edit.others.end(), std::back_inserter(whole.others));
    return {};
}

result<void> timeline_document::apply_jointly(std::string name, std::string scope,
                                              const std::function<result<void>()>& edits) {
    joint_edit joint;
    joint.whole.name = std::move(name);
    joint.whole.scope = std::move(scope);
    joint.whole.is_complete = true;
    joint.stamp = {author_, seconds_since_1970(), collection_number_};
    joint.growing_before = timeline_.live_clips();
    joint_ = &joint;
    auto done = edits();
    joint_ = nullptr;
    const timeline_edit& whole = joint.whole;
    const auto nothing = []() -> result<void> { return {}; };
    const auto stored = [&] { return write_edit(whole); };
    const bool is_empty = whole.operations.empty() && whole.others.empty();
    if (done && !is_empty) done = record({whole.name, whole.others, nothing, [] {}, stored});
    if (!done) joint.withdraw(timeline_);
    if (!done || is_empty) return done;
    auto inverse = joint.take_inverse();
    tell_of(std::move(joint.whole), std::move(inverse), joint.touched());
    return {};
}

result<void> timeline_document::apply(timeline_edit edit) {
    if (!joint_) complete_edit(edit, {author_, seconds_since_1970(), collection_number_});
    if (!joint_ || !joint_->can_edit) {
        if (!can_edit()) return read_only_reason();
        if (joint_) joint_->can_edit = true;
    }
    if (joint_) return make_jointly(std::move(edit));
    change_set touched;
    timeline_edit inverse;
    const auto growing_before = timeline_.live_clips();
    const auto make = [&]() -> result<void> {
        auto applied = apply_edit(timeline_, edit, touched);
        if (!applied) return applied.error();
        inverse = std::move(applied).value();
        return {};
    };
    const auto withdraw = [&] { withdraw_edit(timeline_, inverse, growing_before); };
    const auto stored = [&] { return write_edit(edit); };
    if (auto recorded = record({edit.name, edit.others, make, withdraw, stored}); !recorded) return recorded;
    tell_of(std::move(edit), std::move(inverse), std::move(touched));
    return {};
}

void timeline_document::tell_of(timeline_edit edit, timeline_edit inverse, change_set touched) {
    follow_shift(edit);
    touched.revision = revision();
    edited.emit(edit, inverse);
    const std::string own = timeline_.uuid();
    made.emit(document_edit_of(std::move(edit), own), document_edit_of(std::move(inverse), own));
    changed.emit(touched);
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

// The row of a clip that just ended; where it was joined with another, as what takes that back says.
std::string timeline_document::row_of_ended(const std::string& clip,
                                            const std::vector<operation::any>& back) const {
    if (const auto place = timeline_.find_clip(clip)) return place->row.str();
    for (const auto& any : back) {
        const auto* insert = std::get_if<operation::insert_clip>(&any);
        if (insert && insert->clip->id() == clip) return insert->row.str();
    }
    return {};
}

// Of several edits in one a clip may begin and end together; what takes back either takes the clip away.
timeline_document::growing_things timeline_document::growing(const document_change& done,
                                                             const document_change& back) const {
    growing_things found;
    clips_in_rows begun;
    clips_in_rows given_up;
    std::unordered_set<shared_text> rows_with_others;
    for (const auto& any : operations_in(done)) {
        if (const auto* begin = std::get_if<operation::begin_clip>(&any))
            begun.emplace(begin->clip->id(), begin->row);
        if (const auto* insert = std::get_if<operation::insert_clip>(&any))
            rows_with_others.insert(insert->row);
        if (const auto* finish = std::get_if<operation::finish_clip>(&any)) {
            found.ended.push_back(row_of_ended(finish->clip, operations_in(back)));
            if (const auto row = begun.extract(finish->clip)) rows_with_others.insert(row.mapped());
        }
    }
    for (const auto& any : operations_in(back)) {
        if (const auto* begin = std::get_if<operation::begin_clip>(&any))
            given_up.emplace(begin->clip->id(), begin->row);
    }
    found.begins = !begun.empty();
    found.gives_up = !given_up.empty();
    if (found.is_plain()) return found;
    clips_in_rows came_and_went;
    for (const auto& one : begun) {
        if (given_up.contains(one.first)) came_and_went.insert(one);
    }
    for (const auto& [clip, row] : came_and_went) {
        begun.erase(clip);
        given_up.erase(clip);
    }
    // The clips themselves are left out: the end of one that began takes it back.
    std::unordered_map<shared_text, std::vector<operation::any>> of_row;
    std::vector<operation::any> own;
    for (const auto& any : operations_in(back)) {
        if (is_of_clips(any, begun, given_up) || is_of_clips(any, came_and_went, came_and_went)) continue;
        const shared_text row = row_of(any);
        const auto is_there = [&](const auto& clips) {
            return !rows_with_others.contains(row) &&
                   std::any_of(clips.begin(), clips.end(),
                               [&](const auto& one) { return one.second == row; });
        };
        if (!row.empty() && is_there(given_up)) {
            if (std::holds_alternative<operation::insert_row>(any)) found.cleared.push_back(row.str());
            continue;
        }
        (!row.empty() && is_there(begun) ? of_row[row] : own).push_back(any);
    }
    for (auto& [row, back_there] : of_row)
        found.prepared.push_back({row.str(), timeline_change_of(std::move(back_there))});
    if (!own.empty()) found.own = timeline_change_of(std::move(own));
    return found;
}

// The time noted for clips that grow is one on the collection's clock, too.
void timeline_document::follow_shift(const timeline_edit& edit) {
    const double seconds = seconds_shifted(edit);
    if (seconds != 0 && last_noted_seconds_) (void)note_time(*last_noted_seconds_ + seconds);
}

result<void> timeline_document::note_time(double collection_seconds) {
    if (is_read_only() || timeline_.live_clips().empty()) return {};
    last_noted_seconds_ = collection_seconds;
    return journal().append_time(collection_seconds);
}

void timeline_document::set_save_companion(std::function<save_companion()> begin) {
    begin_companion_ = std::move(begin);
    if (!begin_companion_) finish_writing();
}

result<editable_document::save_work> timeline_document::take_save() {
    const std::uint64_t through = journal().last_number();
    revision_to_save revision{timeline_.snapshot(), header_, through,
                              begin_companion_ ? begin_companion_() : save_companion()};
    return save_work{
        [this, revision = std::move(revision)](conflicts_met& met) { return write_files(revision, met); },
        [this, through](const result<void>& outcome) {
            if (outcome) note_saved_through(through);
        }};
}

// On the save queue.
result<void> timeline_document::write_files(const revision_to_save& revision, conflicts_met& met) {
    const auto separate = take_notes_off(revision.snapshot);
    const bool in_doubt = last_saver(folder_, files_) != known_saver_;
    // Notes that outlive a power loss must not find older clips: the edits that they came with are there
    // first.
    if (auto synced = journal().sync(); !synced) return synced;
    // Before the save is noted: a save that changes nothing but notes leaves the same "chron data.plist", for
    // which the journal would count as covered from the note on.
    const auto strangers_notes = notes_.save(separate, in_doubt);
    if (!strangers_notes) return strangers_notes.error();
    if (!strangers_notes.value().empty()) {
        met.push_back(stranger_met(path_of(timeline_notes_file_name), strangers_notes.value()));
    }
    journal_base coming{{}, revision.through, growing_clips(revision.snapshot), {}, {}};
    const auto note = [&](const coming_content& content) -> result<void> {
        coming.content = {content.size, content.hash};
        if (auto noted = journal().note_save(coming); !noted) return noted;
        if (revision.companion) revision.companion(coming.content, mark_of(known_content_));
        return {};
    };
    timeline_header beside = revision.header;
    beside.data_before = mark_of(known_content_);
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
    return journal().save_done(coming);
}

// On the save queue.
result<void> timeline_document::write_data(const timeline_snapshot& timeline,
                                           const std::function<result<void>(const coming_content&)>& note,
                                           bool in_doubt, conflicts_met& met) {
    const std::string path = path_of(timeline_file_name);
    std::optional<property_list_sink> sink;
    const auto put_all = [&](const block_writer& put) {
        sink.emplace(put);
        write_whole_timeline(timeline, *sink);
        return sink->last_block();
    };
    const auto kept = safe_write_known_blocks(path, put_all, note, known_content_, in_doubt, files_);
    if (!kept) return kept.error();
    if (!kept.value().empty()) met.push_back(stranger_met(path, kept.value()));
    return {};
}

}  // namespace vistels
