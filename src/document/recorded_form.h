// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "document/document_edit.h"
#include "util/failure.h"
#include "util/property_value.h"

namespace vistels {

// How a kind of document is kept on record in its folder: the names of its files, how an edit of it reads,
// and what is told.
struct recorded_form {
    const char* file_name;     // the content
    const char* segment_name;  // of the journal; a number follows
    const char* lock_name;     // names who writes

    // An edit as the journal holds it; null when it cannot be read.
    change_pointer (*read_edit)(const property_dictionary& stored);

    // Of the folder: the journal lacks a change; it continues another file; another program writes.
    const failure_of<a_path>& change_is_damaged;
    const failure_of<a_path>& changes_do_not_fit;
    const failure_of<a_path, a_cause>& is_open_elsewhere;
    // Who has the lock is the cause: taken from here; silent for so many minutes.
    const failure_of<a_cause>& was_taken_over;
    const failure_of<a_cause, a_text>& writer_is_silent;
    // Why it can only be read: somebody else has the lock; there is no journal.
    const failure_of<a_cause>& is_only_read_here;
    const failure_of<a_cause>& is_only_read;
};

}  // namespace vistels
