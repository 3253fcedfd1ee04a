// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/trash.h"
#include "util/file_system.h"
#include "util/result.h"
#include "video/video_collection_ROOT.h"

namespace vistels {

// What to ask before `user` closes a vistel for good that somebody else made; nothing when they made it, or
// when nobody is named as its creator.
std::optional<std::string> close_vistel_warning(const single_Vistel_CTR& vistel, const std::string& user);

// Why a vistel of the collection is not to be closed for good: another one shows its data, too. An empty text
// when it may be.
std::string close_vistel_refusal(const video_collection_ROOT& collection, const single_Vistel_CTR& vistel);

// A vistel that was closed for good, and what it takes to bring it back.
struct closed_vistel {
    std::shared_ptr<single_Vistel_CTR> vistel;
    std::size_t index = 0;        // its place in the collection
    std::string data_folder;      // where its data was
    std::optional<trashed> data;  // where it is; nothing when there was none
};

// Closes a vistel for good: its item is taken out of the collection in `folder`, which is saved, and its data
// goes to the trash. Where the warning above applies, `confirmed` says that the user has answered it; without
// that it is the failure. What is refused above is a failure. On failure
// collection and data are as they were. Main thread.
result<closed_vistel> close_vistel_for_good(video_collection_ROOT& collection, const std::string& folder,
                                            const std::string& uuid, const std::string& user, bool confirmed,
                                            const std::string& home_trash,
                                            file_system& files = machine_files());
// Brings a closed vistel back: its data from the trash, its item to its place.
result<void> reopen_closed_vistel(video_collection_ROOT& collection, const std::string& folder,
                                  const closed_vistel& closed, file_system& files = machine_files());

// Moves the movies that vistels of the collection no longer use (see unused_movies), and unfinished copies of
// movies, to the trash; returns where they are. Changes of movie parts that used them can then no longer be
// taken back. Not while movies are being brought to the collection.
result<std::vector<trashed>> trash_unused_movies(const video_collection_ROOT& collection,
                                                 const std::string& home_trash,
                                                 file_system& files = machine_files());

}  // namespace vistels
