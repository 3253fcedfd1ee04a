// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "util/file_system.h"

namespace vistels {

// What a recovery did, with the files' paths.
struct recovery {
    std::vector<std::string> recovered;  // put back whole
    std::vector<std::string> cleaned;    // copies that were deleted
    std::vector<failure> messages;       // for the user, see util/recovery_failures.h
};

// Whether a file held a content when it was saved last, or before that.
enum class held_content { yes, no, not_known, cannot_be_told_now };
// Tells it of the file `name` in the folder that is looked through, by the bytes of a whole copy of it.
using content_judge = std::function<held_content(const std::string& name, const std::string& bytes)>;

// Puts in order what broken-off safe writes left in `folder`, file by file; of property lists alone.
//
// A file that is missing, or can be read by nobody, gets its newest whole copy back (the torn file is kept as
// "X damaged N"): one that `judge` knows as its content, or, where nothing is known of its contents, one
// that is not older than a day. A lone temporary file is put back only while it is not older than a day: a
// save that moves the file aside leaves the previous copy, too, so somebody else took the file away. A whole
// copy that is not put back is kept as "X copy N" and told; so is, as "X damaged N", a torn temporary file of
// which there never was a whole one. Copies beside a whole file are deleted when they are older than a day.
// What the volume fails to read is left alone and told.
//
// Idempotent. Not while another program writes there.
recovery recover_folder(const std::string& folder, file_system& files = machine_files(),
                        const content_judge& judge = {});

// Deletes files in `folder` and the folders in it that a broken-off safe write left, when they are older than
// an hour and than `running_seconds`, the time this program has been running. Returns their paths.
std::vector<std::string> clean_up_strays(const std::string& folder, double running_seconds);

}  // namespace vistels
