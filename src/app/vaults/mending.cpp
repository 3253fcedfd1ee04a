// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/vaults/mending.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <vector>

#include "document/writer_lock.h"
#include "logger/logger_Dict_funcs.h"
#include "timeline/files/timeline_form.h"
#include "timeline/files/timeline_recovery.h"
#include "util/file_system.h"
#include "util/property_list.h"
#include "util/safe_write.h"
#include "video/video_coll_LOAD.h"

namespace vistels {

namespace {

template <class Value>
void add_all(std::vector<Value>& to, std::vector<Value> from) {
    std::move(from.begin(), from.end(), std::back_inserter(to));
}

void mend_folder(const std::string& folder, recovery& done) {
    auto mended = recover_timeline_folder(folder);
    add_all(done.recovered, std::move(mended.recovered));
    add_all(done.cleaned, std::move(mended.cleaned));
    add_all(done.messages, std::move(mended.messages));
}

bool has_copies(const std::string& folder) {
    const auto names = names_in_folder(folder);
    return std::any_of(names.begin(), names.end(), [](const std::string& name) {
        return name.find(temporary_mark) != name.npos || name.find(previous_mark) != name.npos;
    });
}

bool lies_in(const std::string& folder, const std::string& above) {
    return folder == above || folder.starts_with(above + "/");
}

// Every folder that may hold data of the collection's vistels, whether it is there or not.
std::vector<std::string> vistel_folders(const std::string& folder, const std::string& local_vistels) {
    const auto record = read_dictionary_or_empty(path_join(folder, collection_file_name));
    std::vector<std::string> folders;
    const auto* items = record.array(collection_items_key);
    for (const auto& value : items ? *items : property_array()) {
        const auto* item = value.dictionary();
        const std::string uuid = item ? item->text_or_empty("UUID single video - g") : std::string();
        if (uuid.empty() || uuid == "." || uuid == ".." || uuid.find('/') != uuid.npos) continue;
        for (const auto& place :
             {vistels_folder_of(folder), path_join(folder, vistels_folder_name), local_vistels}) {
            if (!place.empty()) folders.push_back(path_join(place, uuid));
        }
    }
    std::sort(folders.begin(), folders.end());
    folders.erase(std::unique(folders.begin(), folders.end()), folders.end());
    return folders;
}

}  // namespace

recovery mend_tree(const vault_tree& tree, const std::string& but) {
    recovery done;
    const std::string passed_over = but.empty() ? std::string() : path_join(tree.vault(), but);
    const auto writers = tree.folders_with_writer();
    for (const auto& folder : tree.folders_with_copies()) {
        if (!but.empty() && lies_in(folder, passed_over)) continue;
        std::vector<std::unique_ptr<writer_lock>> locks;
        const bool is_free = std::all_of(writers.begin(), writers.end(), [&](const std::string& writer) {
            if (!lies_in(folder, writer)) return true;
            auto taken = writer_lock::take(writer, timeline_form);
            if (taken) locks.push_back(std::move(taken).value());
            return taken.ok();
        });
        if (is_free) mend_folder(folder, done);
    }
    return done;
}

recovery mend_event(const std::string& folder, const std::string& local_vistels) {
    recovery done;
    std::unique_ptr<writer_lock> lock;
    const auto mend = [&](const std::string& one) {
        if (!has_copies(one)) return true;
        if (!lock) {
            auto taken = writer_lock::take(folder, timeline_form);
            if (!taken) return false;
            lock = std::move(taken).value();
        }
        mend_folder(one, done);
        return true;
    };
    if (!mend(folder) || !mend(logger_folder_of(folder))) return done;
    // The record that names them may just have been put back.
    for (const auto& one : vistel_folders(folder, local_vistels)) {
        if (!mend(one)) break;
    }
    return done;
}

}  // namespace vistels
