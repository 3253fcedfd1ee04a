// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "app/event/collection_changes.h"
#include "app/vaults/trash.h"
#include "util/file_system.h"
#include "util/result.h"
#include "video/video_collection_ROOT.h"

namespace vistels {

// What to ask before `user` closes a vistel for good that somebody else made; none when they made it, or when
// nobody is named as its creator.
failure close_vistel_warning(const single_Vistel_CTR& vistel, const std::string& user);

// Why a vistel of the collection is not to be closed for good: another one shows its data, too. None when it
// may be.
failure close_vistel_refusal(const video_collection_ROOT& collection, const single_Vistel_CTR& vistel);

// What is asked for when a vistel is closed for good.
struct closing_order {
    std::string vistel;      // UUID or number
    std::string user;        // who closes it
    bool confirmed = false;  // the user has answered the warning above, where it applies
    std::string home_trash;
};

// A vistel that was closed for good.
struct closed_vistel {
    std::optional<trashed> data;  // where its data is; nothing when there was none
    failure problem;              // why its data stayed in its place; none: it did not
};

// The two steps of closing a vistel for good, for who waits for no disk between them: `take_out` makes the
// change that removes it, main thread; its data goes to the trash, any thread. The first returns the folder
// of that data, empty when there is none; what is refused, or not confirmed, is a failure, and so is what
// `take_out` fails with; collection and data are then as they were.
result<std::string> take_out_vistel(const video_collection_ROOT& collection, const closing_order& order,
                                    const std::function<result<void>(const collection_change&)>& take_out);
closed_vistel trash_vistel_data(const std::string& folder, const std::string& home_trash,
                                file_system& files = machine_files());

// Closes a vistel for good: `take_out` makes the change that removes it, and when that is on record its data
// goes to the trash, so that what cannot be written loses no movie. What is refused, or not confirmed, is a
// failure, and so is what `take_out` fails with; collection and data are then as they were. Main thread.
result<closed_vistel> close_vistel_for_good(
    const video_collection_ROOT& collection, const closing_order& order,
    const std::function<result<void>(const collection_change&)>& take_out,
    file_system& files = machine_files());

// Moves the movies that vistels of the collection no longer use (see unused_movies), and unfinished copies of
// movies, to the trash; returns where they are. Changes of movie parts that used them can then no longer be
// taken back. Not while movies are being brought to the collection.
result<std::vector<trashed>> trash_unused_movies(const video_collection_ROOT& collection,
                                                 const std::string& home_trash,
                                                 file_system& files = machine_files());

}  // namespace vistels
