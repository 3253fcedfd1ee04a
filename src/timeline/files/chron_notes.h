// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <map>
#include <string>
#include <vector>

#include "timeline/records/clip_note.h"
#include "timeline/records/sxy_DATA_root.h"
#include "util/file_system.h"
#include "util/result.h"
#include "util/safe_write.h"

namespace vistels {

inline constexpr const char* timeline_notes_file_name = "chron notes.plist";

// The notes of a timeline by the UUID of their clip.
using notes_by_clip = std::map<std::string, clip_note>;

// A timeline as its two files hold it: the clips without their notes, and the notes.
struct separate_notes {
    timeline_snapshot timeline;
    notes_by_clip notes;
};

// Takes the notes off the clips; of a snapshot with
// `only_selected` those of clips that are selected and filtered in alone.
// A note that could not be told by its clip (one without a UUID, or with that of another) stays on it. Any
// thread.
separate_notes take_notes_off(const timeline_snapshot& timeline);

// Puts the notes on their clips. A note that a clip has already stays: whoever wrote it into the timeline's
// file did so after the notes were written.
timeline_snapshot put_notes_on(timeline_snapshot timeline, notes_by_clip notes);

// Keeps the notes file of one timeline up to date. Not for two threads at once.
//
// The notes are written before the timeline's own file and before its journal counts as covered, so that a
// process that dies in between leaves newer notes than clips, which replaying the journal makes good: its
// edits hold whole values. For the same reason the note of a clip that is gone stays in the file for one save
// longer than the clip: until the timeline is saved without it, an older one that has it may be what is read.
class notes_keeper {
  public:
    explicit notes_keeper(std::string folder, file_system& files = machine_files());

    // Reads the notes on disk, anew when it is called again. A damaged file is told in `messages`; with
    // `may_change` it is kept as "chron notes damaged N.plist". A failure is one of the volume's: what stands
    // there is not known then.
    result<notes_by_clip> open(bool may_change, std::vector<failure>& messages);

    // Writes the notes, unless just these are on disk already; what was never opened is looked at first. A
    // damaged file that could not be kept aside is not overwritten: that is a failure. What another program
    // put there meanwhile is kept as safe_write_known does, and the name returned (empty: there was none).
    result<std::string> save(const separate_notes& coming, bool in_doubt = false);
    // The timeline's own file with the clips of the last save is in place.
    void timeline_is_saved() { saved_ = coming_; }

  private:
    result<void> keep_damaged(std::vector<failure>& messages);

    const std::string folder_;
    const std::string path_;
    file_system& files_;
    known_file known_;
    notes_by_clip on_disk_;
    notes_by_clip saved_;   // those of the timeline's own file on disk
    notes_by_clip coming_;  // those of the timeline's own file that is being saved
    bool is_open_ = false;
    bool is_damaged_ = false;  // what stands there cannot be read
};

}  // namespace vistels
