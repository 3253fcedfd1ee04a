// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/timeline_source.h"

#include <algorithm>
#include <iostream>

#include "document/change_journal.h"
#include "timeline/edits/timeline_edit.h"
#include "timeline/files/timeline_form.h"
#include "util/file_system.h"

namespace vistels {

namespace {

// An edit that does not fit is passed over, as when the application opens the timeline.
void replay(sxy_DATA_root& timeline, const journal_content& journal) {
    change_set touched;
    (void)apply_edit(timeline, edit_in(journal.base.growing), touched);
    for (const auto& edit : journal.edits) (void)apply_edit(timeline, edit_in(edit), touched);
    timeline_edit finish;
    for (const auto& place : timeline.live_clips()) {
        const double start = place.clip->secs_start();
        const double end = std::max({start, place.clip->secs_end(), journal.last_time.value_or(start)});
        finish.operations.emplace_back(operation::finish_clip{place.clip->id(), start, end});
    }
    (void)apply_edit(timeline, finish, touched);
}

// What was wrong with its notes does not stop the work.
result<loaded_timeline> load_and_tell(const std::string& source) {
    auto loaded = load_timeline(source);
    if (loaded) {
        for (const auto& message : loaded.value().messages) std::cerr << message.message() << '\n';
    }
    return loaded;
}

}  // namespace

result<loaded_timeline> read_source(const std::string& source) {
    if (!is_folder(source)) return load_and_tell(source);
    const std::string path = path_join(source, timeline_file_name);
    loaded_timeline loaded;
    file_content_mark mark;
    if (file_exists(path)) {
        const auto bytes = read_file(path);
        if (!bytes) return bytes.error();
        mark = content_mark_of(bytes.value());
    }
    const auto read = read_journal(source, timeline_form, mark);
    if (!read) return read.error();
    const auto& journal = read.value();
    const bool has_edits = !journal.edits.empty() || !edit_in(journal.base.growing).operations.empty();
    if (file_exists(path) || !has_edits) {
        auto from_file = load_and_tell(source);
        if (!from_file) return from_file;
        loaded = std::move(from_file).value();
    }
    if (!has_edits) return loaded;
    sxy_DATA_root timeline(std::move(loaded.content));
    replay(timeline, journal);
    loaded.content = timeline.snapshot();
    return loaded;
}

}  // namespace vistels
