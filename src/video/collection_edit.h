// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "document/document_edit.h"
#include "timeline/form/value_change.h"
#include "util/property_value.h"
#include "util/result.h"
#include "video/video_collection_ROOT.h"

namespace vistels {

// What an edit does to one vistel: stored values of its item record and of its own record, and its movie
// parts as a whole. Of a vistel that comes it holds all of them.
struct vistel_change {
    std::string vistel;  // UUID; "UUID\n2" for the second with that UUID, and so on
    value_change item;
    value_change own;                     // without "drone_array"
    std::optional<property_array> parts;  // the part records in play order, each with its "file"
    std::string data_folder;              // of a vistel that comes; empty: its data was not found
};

// One change of a collection, as a value: what differs afterwards. Not in it, and left alone by it: the movie
// time, the volume, the state, times of saving, the largest number that a vistel had, files.
struct collection_edit {
    value_change values;  // of the collection record
    std::vector<vistel_change> vistels;
    // The vistels that there are afterwards, in their order; nothing: those that there were.
    std::optional<std::vector<std::string>> order;

    bool empty() const;
};

// A copy whose vistels are copies, too, so that it can be changed at will.
video_collection_ROOT detached_copy(const video_collection_ROOT& collection);

// What makes `after` of `before`.
collection_edit difference(const video_collection_ROOT& before, const video_collection_ROOT& after);

// Makes the edit. Vistels that stay keep their identity: whoever holds one sees it change. Strict: an edit
// that changes a vistel which is not there is refused with the collection unchanged. Lenient: passes over
// what cannot be done, for edits that may have been made already.
enum class edit_manner { strict, lenient };
result<void> apply_collection_edit(video_collection_ROOT& collection, const collection_edit& edit,
                                   edit_manner manner = edit_manner::strict);

// The stored form, for the journal and the undo history.
property_dictionary write_collection_edit(const collection_edit& edit);
collection_edit read_collection_edit(const property_dictionary& stored);

// The edit as the part of an edit of any documents, with what takes it back.
document_part collection_part(const video_collection_ROOT& collection, collection_edit edit,
                              collection_edit back);
// The edit in such a part's change, also in one that was read.
collection_edit collection_edit_in(const document_change& change);
// The parts of an edit that concern the collection.
std::vector<document_part> parts_of_collection(const std::vector<document_part>& parts,
                                               const video_collection_ROOT& collection);
bool changes_movie_parts(const collection_edit& edit);

// True when both set the same values of the same vistels and bring or take none, so that of two after each
// other the earlier state and the later one make one edit.
bool sets_the_same(const collection_edit& a, const collection_edit& b);

}  // namespace vistels
