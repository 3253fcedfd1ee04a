// SPDX-License-Identifier: GPL-3.0-or-later
#include "timeline/files/timeline_recovery.h"

#include "document/change_journal.h"
#include "timeline/files/chron_header.h"
#include "timeline/files/sxy_Save_Load.h"
#include "timeline/files/timeline_form.h"
#include "util/property_list.h"
#include "util/safe_write.h"

namespace vistels {

namespace {

held_content judge_copy(const std::string& folder, const std::string& bytes, file_system& files) {
    const auto mark = content_mark_of(bytes);
    const std::string path = path_join(folder, timeline_header_file_name);
    known_file ignored;
    const auto stored = read_known(path, ignored, files);
    if (!stored) return held_content::cannot_be_told_now;
    timeline_header header;
    if (stored.value()) {
        const auto list = read_property_list(*stored.value(), path);
        if (list && list.value().dictionary()) header = read_timeline_header(*list.value().dictionary());
    }
    if (mark == header.data || mark == header.data_before) return held_content::yes;
    const auto journal = read_journal(folder, timeline_form, mark, files);
    if (!journal) return held_content::cannot_be_told_now;
    if (journal.value().fits) return held_content::yes;
    return header.data.size < 0 ? held_content::not_known : held_content::no;
}

}  // namespace

recovery recover_timeline_folder(const std::string& folder, file_system& files) {
    return recover_folder(folder, files, [&](const std::string& name, const std::string& bytes) {
        return name == timeline_file_name ? judge_copy(folder, bytes, files) : held_content::not_known;
    });
}

}  // namespace vistels
