// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "document/file_content_mark.h"
#include "document/recorded_form.h"
#include "util/file_system.h"
#include "util/result.h"
#include "util/serial_queue.h"

namespace vistels {

// A segment of the journal and how much of it counts. Numbers are given out again once a segment is deleted,
// so its writer tells it, too, and while the program runs its inode.
struct journal_part {
    int segment = 0;
    std::int64_t size = 0;    // bytes
    std::string writer;       // empty: none of its lines says
    std::uint64_t inode = 0;  // as it was read, not stored; 0 = not known
};

// A state of the saved file that a journal continues: its content, the number of the last edit that it holds,
// and what begins the things that were growing then, such as the clip of a button that is down, which no file
// holds.
struct journal_base {
    file_content_mark content;
    std::uint64_t through = 0;
    change_pointer growing;            // an edit as the form reads it; null: nothing grew
    std::string writer;                // the document that keeps this journal
    std::vector<journal_part> covers;  // what earlier writers left and this one took up ...
    std::uint64_t taken = 0;           // ... through this number
};

// What the journal of a document holds beyond the saved file.
struct journal_content {
    journal_base base;                  // the newest that fits the file; a fresh one when none does
    std::vector<change_pointer> edits;  // as the form reads them, in order, without base.growing
    std::uint64_t last_number = 0;      // of the last edit; base.through when there is none
    std::optional<double> last_time;    // seconds: the last time that was noted
    int last_segment = 0;               // the highest segment number in use
    bool fits = false;                  // a segment continues the file that is there
    std::vector<journal_part> parts;    // every segment that was read
    // Segments with edits that are not among `edits`: they continue another file, an edit before them is
    // missing, or two programs wrote at the same time. `messages` tells which.
    std::vector<std::string> left_out;
    std::vector<failure> messages;
};

// Reads the segments of the journal in `folder` against the file that is there. What was torn is
// passed over; edits behind a missing one are not replayed, and that is told. Nothing is changed on disk. A
// segment that the volume fails to read is a failure: its edits must not count as not made.
result<journal_content> read_journal(const std::string& folder, const recorded_form& form,
                                     const file_content_mark& file, file_system& files = machine_files());

// Appends the edits of one document to its journal. Every member may be called from any thread.
class change_journal {
  public:
    // Starts segment `segment`, or the next free one, which continues `base`; the next edit gets the number
    // after `last_number`. What `base` covers is deleted with the segments that a save has made superfluous,
    // but for parts that somebody wrote on to since.
    static result<std::unique_ptr<change_journal>> start(const std::string& folder, const recorded_form& form,
                                                         int segment, const journal_base& base,
                                                         std::uint64_t last_number,
                                                         file_system& files = machine_files());
    ~change_journal();
    change_journal(const change_journal&) = delete;
    change_journal& operator=(const change_journal&) = delete;

    // The edit, in its stored form, is on record (it survives the death of the process) when this returns ok;
    // it is synced to the volume at once on a queue of its own.
    result<void> append(property_dictionary edit);

    // Notes a time, at which what was growing when the process died ends.
    result<void> append_time(double seconds);

    std::uint64_t last_number() const;

    // Every edit so far is on the volume, and so is the name of the file that it stands in, when this
    // returns.
    result<void> sync();

    // A file that is `coming` (writer and what it took up are added) is about to replace the saved one. On
    // record, and synced, when this returns.
    result<void> note_save(const journal_base& coming);

    // The file noted last is in place: a new segment with the edits after `base.through` takes the place of
    // the older segments of this writer and of those that it covers.
    result<void> save_done(const journal_base& base);

    // Deletes the journal when the saved file holds all its edits.
    void remove_if_covered(std::uint64_t saved_through);

  private:
    class segment_file;
    struct own_segment {
        int number;
        std::uint64_t inode;  // 0 = not known
    };
    struct recent_line {
        std::uint64_t number;
        std::string line;
    };

    change_journal(std::string folder, const recorded_form& form, int segment, std::uint64_t last_number,
                   file_system& files);
    result<void> append_line(const std::string& line);
    void sync_soon();
    std::string segment_path(int segment) const;
    result<std::shared_ptr<segment_file>> next_segment(int& segment) const;
    std::string base_line(journal_base base) const;
    bool remove_older_than(int segment);  // false when one could not be removed
    bool is_own(const own_segment& segment) const;
    bool remove_covered(const journal_part& part);  // the same
    result<void> move_on();

    const std::string folder_;
    const recorded_form& form_;
    file_system& files_;
    std::string writer_;
    std::vector<journal_part> covers_;
    std::uint64_t taken_ = 0;
    mutable std::mutex mutex_;  // guards what follows
    int segment_;
    std::vector<own_segment> older_;
    std::uint64_t last_number_;
    std::shared_ptr<segment_file> file_;
    std::string head_;                 // the lines with which the present segment begins
    std::vector<recent_line> recent_;  // edits that no finished save holds
    std::string last_time_line_;       // empty: no time was noted
    bool sync_is_waiting_ = false;
    serial_queue sync_queue_{"journal sync"};
};

}  // namespace vistels
