// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/event/close_vistel.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "app/event/event_failures.h"
#include "app/event/vistel_changes.h"
#include "util/safe_write.h"
#include "video/vault_lock.h"
#include "video/video_coll_Files.h"
#include "video/video_coll_LOAD.h"

namespace vistels {

namespace {

// A vistel that was taken out, with the vault that holds its data.
struct taken_vistel {
    std::string folder;
    std::unique_ptr<vault_lock> lock;
};

result<taken_vistel> take_out_locked(const video_collection_ROOT& collection, const closing_order& order,
                                     const std::function<result<void>(const collection_change&)>& take_out) {
    const auto vistel = collection.find_vistel(order.vistel);
    if (!vistel) return vistel_is_gone(order.vistel);
    const auto warning = close_vistel_warning(*vistel, order.user);
    if (warning && !order.confirmed) return warning;
    if (const auto refusal = close_vistel_refusal(collection, *vistel)) return refusal;
    taken_vistel taken{vistel->data_folder(), nullptr};
    auto lock = vault_lock::take_around(taken.folder);
    if (!lock) return lock.error();
    taken.lock = std::move(lock).value();
    if (auto done = take_out(plan_removal(vistel->uuid())); !done) return done.error();
    return taken;
}

closed_vistel move_data(const std::string& folder, const std::string& home_trash, file_system& files) {
    closed_vistel closed;
    if (folder.empty()) return closed;
    auto moved = move_to_trash(folder, home_trash, files);
    if (moved) closed.data = std::move(moved).value();
    if (!moved) closed.problem = moved.error();
    return closed;
}

}  // namespace

failure close_vistel_warning(const single_Vistel_CTR& vistel, const std::string& user) {
    const std::string creator = vistel.creator();
    if (creator.empty() || creator == user) return {};
    return vistel_is_another_users(vistel.name());
}

failure close_vistel_refusal(const video_collection_ROOT& collection, const single_Vistel_CTR& vistel) {
    const auto all = collection.vistels();
    const auto items =
        std::count_if(all.begin(), all.end(), [&](const auto& one) { return one->uuid() == vistel.uuid(); });
    if (items <= 1) return {};
    return vistel_data_is_shared(vistel.name());
}

result<std::string> take_out_vistel(const video_collection_ROOT& collection, const closing_order& order,
                                    const std::function<result<void>(const collection_change&)>& take_out) {
    const auto taken = take_out_locked(collection, order, take_out);
    if (!taken) return taken.error();
    return taken.value().folder;
}

closed_vistel trash_vistel_data(const std::string& folder, const std::string& home_trash,
                                file_system& files) {
    const auto lock = vault_lock::take_around(folder);
    if (!lock) return {std::nullopt, lock.error()};
    return move_data(folder, home_trash, files);
}

result<closed_vistel> close_vistel_for_good(
    const video_collection_ROOT& collection, const closing_order& order,
    const std::function<result<void>(const collection_change&)>& take_out, file_system& files) {
    const auto taken = take_out_locked(collection, order, take_out);
    if (!taken) return taken.error();
    return move_data(taken.value().folder, order.home_trash, files);
}

result<std::vector<trashed>> trash_unused_movies(const video_collection_ROOT& collection,
                                                 const std::string& home_trash, file_system& files) {
    std::vector<trashed> moved;
    for (const auto& vistel : collection.vistels()) {
        if (vistel->data_folder().empty()) continue;
        const auto lock = vault_lock::take_around(vistel->data_folder());
        if (!lock) return lock.error();
        const auto parts = vistel->parts().parts;
        auto names = unused_movies(vistel->stored_vistel());
        // Copies that were not finished when a program died.
        for (const auto& name : names_in_folder(vistel->data_folder())) {
            const auto mark = name.find(temporary_mark);
            if (mark != std::string::npos && is_movie_name(name.substr(0, mark))) names.push_back(name);
        }
        for (const auto& name : names) {
            const std::string path = path_join(vistel->data_folder(), name);
            const bool is_used =
                std::any_of(parts.begin(), parts.end(), [&](const auto& part) { return part.path == path; });
            if (is_used || name.find('/') != std::string::npos || !file_exists(path)) continue;
            auto one = move_to_trash(path, home_trash, files);
            if (!one) return one.error();
            moved.push_back(std::move(one).value());
        }
    }
    return moved;
}

}  // namespace vistels
