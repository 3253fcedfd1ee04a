// SPDX-License-Identifier: GPL-3.0-or-later
#include "video/collection_document.h"

#include <mutex>
#include <utility>
#include <vector>

#include "video/collection_edit.h"
#include "video/padding_movies.h"
#include "video/video_coll_LOAD.h"

namespace vistels {

namespace {

// What would be saved, but for the time of saving.
property_dictionary record_of(const video_collection_ROOT& collection) {
    return write_collection(collection, 0);
}

// The vistels take over what a save of their copies found out about the files.
void take_over_files(const std::vector<std::shared_ptr<single_Vistel_CTR>>& vistels,
                     const std::vector<std::shared_ptr<single_Vistel_CTR>>& saved) {
    for (std::size_t at = 0; at < vistels.size(); ++at) {
        vistels[at]->set_stored_vistel(saved[at]->stored_vistel());
        vistels[at]->set_parts_on_record(saved[at]->parts_on_record());
    }
}

}  // namespace

// Padding movies are deleted on the save queue, one at a time, only while no edit that may need them has
// come.
struct collection_document::padding_use {
    std::mutex mutex;
    std::uint64_t generation = 0;  // guarded by mutex
};

collection_document::collection_document(std::string folder, run_loop& loop, file_system& files)
    : kept_document(loop),
      folder_(std::move(folder)),
      files_(files),
      padding_use_(std::make_shared<padding_use>()) {}

collection_document::~collection_document() {
    close();
}

void collection_document::take_up(loaded_collection read) {
    record_ = std::move(read.collection);
    record_file_ = read.record_file;
    saved_record_ = record_of(record_);
    is_taken_up_ = true;
    parts_changed_ = false;
    note_saved_state();
}

result<void> collection_document::change(const document_change& change) {
    const auto edit = collection_edit_in(change);
    if (changes_movie_parts(edit)) {
        expect_parts();
        if (auto ready = make_padding_again(edit); !ready) return ready;
    }
    return apply_collection_edit(record_, edit);
}

void collection_document::follow(const document_change& change) {
    note_change_on_record(changes_movie_parts(collection_edit_in(change)));
}

// Padding movies that no part named were deleted; doing a change again needs them again.
result<void> collection_document::make_padding_again(const collection_edit& edit) const {
    if (!blank_) return {};
    auto changed = detached_copy(record_);
    if (auto applied = apply_collection_edit(changed, edit, edit_manner::lenient); !applied) return applied;
    job work;
    return make_padding_files(padding_files_of(changed), *blank_, work);
}

void collection_document::take_up_recovered(const std::vector<document_part>& parts) {
    const auto own = is_taken_up_ ? parts_of_collection(parts, record_) : std::vector<document_part>();
    for (const auto& part : own) {
        const auto edit = collection_edit_in(*part.change);
        if (changes_movie_parts(edit)) (void)make_padding_again(edit);
        (void)apply_collection_edit(record_, edit, edit_manner::lenient);
        note_change_on_record(changes_movie_parts(edit));
    }
    note_taken_up_here();
}

bool collection_document::only_sets_values(const document_change& change) const {
    return !collection_edit_in(change).order;
}

std::optional<document_part> collection_document::joined(const document_part& earlier,
                                                         const document_part& later) const {
    if (!sets_the_same(collection_edit_in(*earlier.change), collection_edit_in(*later.change)))
        return std::nullopt;
    return document_part{later.document, earlier.change, later.back};
}

void collection_document::expect_parts() {
    parts_are_expected_ = true;
    const std::lock_guard lock(padding_use_->mutex);
    ++padding_use_->generation;
}

void collection_document::note_change(bool parts) {
    if (!is_taken_up_) return;
    note_parts(parts);
    note_edit();
}

void collection_document::note_change_on_record(bool parts) {
    if (!is_taken_up_) return;
    note_parts(parts);
    note_edit_on_record();
}

void collection_document::note_parts(bool change) {
    parts_changed_ = parts_changed_ || change;
    if (change) parts_are_expected_ = false;
}

void collection_document::note_values() {
    // Also while a save runs, which has taken older ones.
    if (is_taken_up_ && record_of(record_) != saved_record_) note_revision();
}

bool collection_document::may_save() {
    return is_taken_up_ && !is_read_only();
}

result<editable_document::save_work> collection_document::take_save() {
    // Refused before anything is written.
    if (record_.saving_is_blocked()) return save_collection(record_, folder_, files_).error();
    const auto copy = std::make_shared<video_collection_ROOT>(detached_copy(record_));
    const bool tidies = !parts_are_expected_ && std::exchange(parts_changed_, false);
    std::uint64_t generation = 0;
    {
        const std::lock_guard lock(padding_use_->mutex);
        generation = padding_use_->generation;
    }
    const auto write = [this, copy, tidies, generation, use = padding_use_, sync = edit_sync(),
                        folder = folder_, &files = files_](std::vector<file_conflict>& met) -> result<void> {
        // The timeline's part first: what stands in the journal is made good when the program dies in
        // between.
        auto written = sync();
        std::string kept;
        if (written) written = save_collection(*copy, folder, record_file_, kept, files);
        if (!kept.empty()) met.push_back(stranger_met(path_join(folder, collection_file_name), kept));
        if (!written || !tidies) return written;
        remove_unused_padding_files(*copy, [&](const std::string& path) {
            const std::lock_guard lock(use->mutex);
            if (use->generation != generation) return false;
            files.remove(path);
            return true;
        });
        return written;
    };
    const auto over = [this, copy, tidies, vistels = record_.vistels()](const result<void>& outcome) {
        take_over_files(vistels, copy->vistels());
        if (outcome) saved_record_ = record_of(*copy);
        if (!outcome) parts_changed_ = parts_changed_ || tidies;
    };
    return save_work{write, over};
}

}  // namespace vistels
