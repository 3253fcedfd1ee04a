// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "timeline/timeline_edit.h"
#include "util/file_system.h"
#include "util/result.h"
#include "util/serial_queue.h"

namespace vistels {

// Names one content of "chron data.plist". A missing file has size -1.
struct file_content_mark {
    std::int64_t size = -1;
    std::uint64_t hash = 0;
    bool operator==(const file_content_mark&) const = default;
};

file_content_mark content_mark_of(std::string_view file_content);

// A state of the saved file that a journal continues: its content, the number of the last edit that it holds,
// and the clips that were growing then, which no file holds.
struct journal_base {
    file_content_mark content;
    std::uint64_t through = 0;
    timeline_edit growing;  // begin_clip operations
};

// What the journal of a timeline holds beyond the saved file.
struct journal_content {
    journal_base base;                 // the newest that fits the file; a fresh one when none does
    std::vector<timeline_edit> edits;  // in order, without those in base.growing
    std::uint64_t last_number = 0;     // of the last edit; base.through when there is none
    std::optional<double> last_time;   // seconds: the last collection time that was noted
    int last_segment = 0;              // the highest segment number in use
    bool fits = false;                 // a segment continues the file that is there
    // Segments with edits that are not among `edits`: they continue another file, or an edit before them is
    // missing. `messages` tells which.
    std::vector<std::string> left_out;
    std::vector<std::string> messages;
};

// Reads the segments "chron data journal N" in `folder` against the file that is there. What was torn is
// passed over; edits behind a missing one are not replayed, and that is told. Nothing is changed on disk.
journal_content read_journal(const std::string& folder, const file_content_mark& file);

// Appends the edits of one timeline to its journal. Every member may be called from any thread.
class timeline_journal {
  public:
    // Starts segment `segment`, which continues `base`; the next edit gets the number after `last_number`.
    static result<std::unique_ptr<timeline_journal>> start(const std::string& folder, int segment,
                                                           const journal_base& base,
                                                           std::uint64_t last_number,
                                                           file_system& files = machine_files());
    ~timeline_journal();
    timeline_journal(const timeline_journal&) = delete;
    timeline_journal& operator=(const timeline_journal&) = delete;

    // The edit is on record (it survives the death of the process) when this returns ok; it is synced to the
    // volume at once on a queue of its own.
    result<void> append(const timeline_edit& edit);

    // Notes the collection time, from which a clip that was growing when the process died gets its end.
    result<void> append_time(double collection_seconds);

    std::uint64_t last_number() const;

    // A file that is `coming` is about to replace the saved one. On record, and synced, when this returns.
    result<void> note_save(const journal_base& coming);

    // The file noted last is in place: a new segment with the edits after `base.through` takes the place of
    // all older segments, which are deleted.
    result<void> save_done(const journal_base& base);

    // Deletes the journal when the saved file holds all its edits.
    void remove_if_covered(std::uint64_t saved_through);

  private:
    class segment_file;
    struct recent_line {
        std::uint64_t number;
        std::string line;
    };

    timeline_journal(std::string folder, int segment, std::uint64_t last_number, file_system& files);
    result<void> append_line(const std::string& line);
    void sync_soon();
    std::string segment_path(int segment) const;

    const std::string folder_;
    file_system& files_;
    mutable std::mutex mutex_;  // guards what follows
    int segment_;
    std::uint64_t last_number_;
    std::shared_ptr<segment_file> file_;
    std::vector<recent_line> recent_;  // edits that no finished save holds
    std::string last_time_line_;       // empty: no time was noted
    bool sync_is_waiting_ = false;
    serial_queue sync_queue_{"journal sync"};
};

}  // namespace vistels
