// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

#include "util/property_value.h"

namespace vistels {

class stored_view;

// The note of a clip. A value: a note that is on a clip does not change, an edit puts another in its place.
// What is kept for other programs (`display_on` and so on, in whatever type it came) is written back as it
// was read.
struct clip_note {
    std::string clip_notes_uuid;
    std::string note_string;  // the plain text; the empty text is stored as "<empty>" when it was read so
    property_value display_on;
    property_value link_id;
    property_value id_type;
    property_value chars;  // a count of the text's characters follows the text
    property_value presentation_type;
    property_value note_text_storage_rtf__json_String;  // rich text, until the plain text is edited
    property_dictionary kept;                           // every other key as it was read

    // The text to be shown and searched: `note_string`, or that of the note's items when it has none itself.
    std::string text() const;
    // The note after a person wrote `text`: the rich texts, which say something else now, and the items are
    // gone, and all else is as before.
    clip_note with_text(std::string text) const;

    bool operator==(const clip_note&) const = default;
};

// The stored form is a dictionary ("notes_dict" of a clip). Reading is lenient and loses nothing: a value of
// another type than expected is kept under its key.
clip_note read_clip_note(const property_dictionary& stored);
clip_note read_clip_note(const stored_view& stored);
property_dictionary write_clip_note(const clip_note& note);

}  // namespace vistels
