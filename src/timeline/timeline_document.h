// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "timeline/sxy_DATA_root.h"
#include "timeline/sxy_Save_Load.h"
#include "timeline/timeline_edit.h"
#include "timeline/timeline_journal.h"
#include "timeline/writer_lock.h"
#include "util/file_system.h"
#include "util/result.h"
#include "util/run_loop.h"
#include "util/serial_queue.h"
#include "util/signal.h"

namespace vistels {

// An open timeline: the only way to change one. Applies and journals edits, tells observers, saves in the
// background. All members are called, and all signals come, on the main thread; saving runs on a queue.
class timeline_document {
  public:
    // Opens the timeline in `folder` (made when missing) and puts back what its journal holds beyond the
    // saved file; a clip that was growing is finished at the last noted time. A damaged file is an error that
    // names it; nothing is overwritten then.
    static result<std::unique_ptr<timeline_document>> open(const std::string& folder, run_loop& loop,
                                                           file_system& files = machine_files());
    // Saves what is unsaved and waits for it. Clips that still grow are finished at the last noted time.
    ~timeline_document();
    timeline_document(const timeline_document&) = delete;
    timeline_document& operator=(const timeline_document&) = delete;

    const std::string& folder() const { return folder_; }
    const sxy_DATA_root& timeline() const { return timeline_; }
    timeline_header& header() { return header_; }
    // What opening had to tell the user: recovered edits, conflicts.
    const std::vector<std::string>& messages() const { return messages_; }
    std::size_t recovered_edits() const { return recovered_edits_; }
    std::uint64_t revision() const { return revision_; }
    // Another program writes this timeline, or its journal cannot be written: every edit is refused.
    bool is_read_only() const { return !journal_; }

    // Applies the edit and puts it on record. When this returns ok the edit survives the death of the
    // process. A refused edit, or one that cannot be recorded, leaves the timeline as it was.
    result<void> apply(timeline_edit edit);

    // Notes the collection time while clips grow: the end that they get should the process die.
    result<void> note_time(double collection_seconds);

    // After each outermost edit, in this order: the edit and its inverse (for undo), then what changed.
    signal<const timeline_edit&, const timeline_edit&> edited;
    signal<const change_set&> changed;
    // A save ended: an empty text, or why it could not be done (it is tried again).
    signal<const std::string&> saved;

    bool has_unsaved_edits() const { return revision_ != saved_revision_; }
    // Begins a save now when there is something unsaved; `saved` tells the outcome.
    void save_soon();
    // Saves and waits until it is done.
    result<void> save_now();

  private:
    struct running_save;

    timeline_document(std::string folder, run_loop& loop, file_system& files);
    result<void> load();
    void keep_conflicts(const journal_content& journal);
    void replay(const journal_content& journal);
    void finish_growing(const char* name);
    void schedule_save();
    void begin_save();
    result<void> end_save();
    result<void> write_files(const timeline_snapshot& snapshot, const timeline_header& header,
                             std::uint64_t through);

    const std::string folder_;
    run_loop& loop_;
    file_system& files_;
    const std::string instance_;         // stored as "uuid last saved"
    std::unique_ptr<writer_lock> lock_;  // none: the timeline can only be read
    run_loop::timer_id renewal_timer_ = 0;
    sxy_DATA_root timeline_;
    timeline_header header_;
    std::unique_ptr<timeline_journal> journal_;  // none: the timeline can only be read
    std::string read_only_reason_;
    std::vector<std::string> messages_;
    std::size_t recovered_edits_ = 0;
    std::optional<double> last_noted_seconds_;
    std::uint64_t revision_ = 0;
    std::uint64_t saved_revision_ = 0;
    std::uint64_t saved_through_ = 0;  // the number of the last edit in the saved file
    double first_unsaved_seconds_ = 0;
    run_loop::timer_id save_timer_ = 0;  // 0 = none
    std::shared_ptr<running_save> running_save_;
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);  // for work that is posted to the loop
    std::unique_ptr<serial_queue> save_queue_;
};

}  // namespace vistels
