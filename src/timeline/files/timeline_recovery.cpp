// SPDX-License-Identifier: GPL-3.0-or-later
#include "timeline/files/timeline_recovery.h"

#include "document/document_recovery.h"
#include "timeline/files/chron_header.h"
#include "timeline/files/timeline_form.h"
#include "util/property_list.h"
#include "util/safe_write.h"

namespace vistels {

namespace {

saved_contents contents_in_header(const std::string& folder, file_system& files) {
    const std::string path = path_join(folder, timeline_header_file_name);
    known_file ignored;
    const auto stored = read_known(path, ignored, files);
    saved_contents saved;
    saved.can_be_told = stored.ok();
    if (!stored || !stored.value()) return saved;
    const auto list = read_property_list(*stored.value(), path);
    if (!list || !list.value().dictionary()) return saved;
    const auto header = read_timeline_header(*list.value().dictionary());
    saved.is_known = header.data.size >= 0;
    saved.last = header.data;
    saved.before = header.data_before;
    return saved;
}

}  // namespace

recovery recover_timeline_folder(const std::string& folder, file_system& files) {
    return recover_document_folder(
        folder, timeline_form, [&] { return contents_in_header(folder, files); }, files);
}

}  // namespace vistels
