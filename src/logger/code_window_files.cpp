// SPDX-License-Identifier: GPL-3.0-or-later
#include "logger/code_window_files.h"

#include <utility>

#include "logger/logger_failures.h"
#include "timeline/files/timeline_file_failures.h"
#include "util/file_failures.h"
#include "util/property_list.h"
#include "util/safe_write.h"
#include "util/stored_form_failures.h"

namespace vistels {

namespace {

result<property_dictionary> dictionary_in(const std::string& bytes, const std::string& path) {
    auto read = read_property_list(bytes, path);
    if (!read) return read.error();
    if (!read.value().dictionary()) return file_cannot_be_read(path, file_holds_no_dictionary());
    return std::move(*read.value().dictionary());
}

}  // namespace

property_dictionary read_code_window_file(const std::string& path, std::vector<failure>* messages) {
    known_file known;
    const auto bytes = read_known(path, known);
    if (bytes && !bytes.value()) return {};
    auto read = bytes ? dictionary_in(*bytes.value(), path) : result<property_dictionary>(bytes.error());
    if (read) return std::move(read).value();
    if (messages) messages->push_back(code_window_file_is_not_used(read.error()));
    return {};
}

result<void> save_code_window_file(const std::string& path, const property_dictionary& stored,
                                   file_system& files, std::vector<file_conflict>* met) {
    if (auto made = make_folders(path_folder(path), files); !made) return made;
    known_file known;
    const auto bytes = read_known(path, known, files);
    // What this program would not write is kept as a stranger's.
    if (!bytes || (bytes.value() && !dictionary_in(*bytes.value(), path))) known = {};
    const auto kept = safe_write_known(path, write_property_list(stored), known, false, files);
    if (!kept) return kept.error();
    if (met && !kept.value().empty()) {
        met->push_back({damaged_file_was_kept(kept.value()), path, kept.value()});
    }
    return {};
}

}  // namespace vistels
