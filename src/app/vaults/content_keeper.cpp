// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/vaults/content_keeper.h"

#include <chrono>

#include "timeline/files/sxy_Save_Load.h"

namespace vistels {

namespace {

using steady = std::chrono::steady_clock;

// How often counts are shown while there is more to count.
constexpr std::chrono::milliseconds between_counts{500};

}  // namespace

content_keeper::content_keeper(home_places places, run_loop& loop, files_MASTER_LIST::options how)
    : loop_(loop), list_(std::move(places), loop, std::move(how)) {
    list_changed_ = list_.changed.connect([this] {
        show();
        count_in_background();
    });
}

content_keeper::~content_keeper() {
    ++wanted_;
    queue_.forget_waiting();
}

void content_keeper::refresh() {
    if (std::exchange(started_, true)) return list_.refresh();
    list_.start();
}

void content_keeper::show() {
    std::vector<content_vault> vaults;
    for (const auto& listed : list_.vaults()) {
        vaults.push_back(content_of(listed, list_.items_in(listed)));
        for (auto& item : vaults.back().items) {
            if (const auto known = clips_.find(item.path); known != clips_.end()) item.count = known->second;
        }
    }
    vaults_ = std::move(vaults);
    changed.emit();
}

void content_keeper::count_in_background() {
    std::vector<std::string> folders;
    for (const auto& item : list_.files_Items_App_MASTER_FILE_LIST()) {
        if (item.kind == item_kind::timeline) folders.push_back(item.full_file_path);
    }
    const unsigned wanted = ++wanted_;
    queue_.forget_waiting();
    queue_.post([this, folders = std::move(folders), wanted] { count(folders, wanted); });
}

// On the queue.
void content_keeper::count(const std::vector<std::string>& folders, unsigned wanted) {
    auto told = steady::now();
    counts news;
    const auto hand_over = [&] {
        loop_.post(guard_.guarded([this, news = std::exchange(news, {})] { take(news); }));
        told = steady::now();
    };
    for (const auto& folder : folders) {
        if (wanted != wanted_) break;
        const auto before = counted_.find(folder);
        const long long known = before == counted_.end() ? -1 : before->second.clips;
        const long long clips = count_of(folder);
        if (clips != known) news.emplace_back(folder, clips);
        if (!news.empty() && steady::now() - told > between_counts) hand_over();
    }
    if (!news.empty()) hand_over();
}

// A timeline is read again only when its file has changed.
long long content_keeper::count_of(const std::string& folder) {
    file_identity file;
    if (machine_files().identity(path_join(folder, timeline_file_name), file) != 0) return -1;
    counted& known = counted_[folder];
    if (known.file == file) return known.clips;
    known = {file, count_clips(folder)};
    return known.clips;
}

void content_keeper::take(const counts& news) {
    for (const auto& [folder, clips] : news) clips_[folder] = clips;
    show();
}

}  // namespace vistels
