// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "timeline/edits/timeline_edit.h"
#include "timeline/files/chron_notes.h"
#include "timeline/files/sxy_Save_Load.h"
#include "timeline/files/timeline_journal.h"
#include "timeline/files/writer_lock.h"
#include "timeline/records/sxy_DATA_root.h"
#include "util/file_system.h"
#include "util/posted_work_guard.h"
#include "util/result.h"
#include "util/run_loop.h"
#include "util/safe_write.h"
#include "util/serial_queue.h"
#include "util/signal.h"

namespace vistels {

// Two programs changed the same thing; both versions are kept.
struct file_conflict {
    std::string message;  // for the user: what happened and where the other version is
    std::string path;     // the file that this document writes
    std::string kept_as;  // the other version
};

// An open timeline: the only way to change one. Applies and journals edits, tells observers, saves in the
// background. All members are called, and all signals come, on the main thread; saving runs on a queue.
class timeline_document {
  public:
    // Opens the timeline in `folder` (made when missing) and puts back what its journal holds beyond the
    // saved file; a clip that was growing is finished at the last noted time. A damaged file is an error that
    // names it; nothing is overwritten then. So is one that the volume fails to read.
    static result<std::unique_ptr<timeline_document>> open(const std::string& folder, run_loop& loop,
                                                           file_system& files = machine_files());
    // Saves what is unsaved and waits for it. Clips that still grow are finished at the last noted time.
    ~timeline_document();
    timeline_document(const timeline_document&) = delete;
    timeline_document& operator=(const timeline_document&) = delete;

    const std::string& folder() const { return folder_; }
    const sxy_DATA_root& timeline() const { return timeline_; }
    // This revision, for work on another thread.
    timeline_snapshot snapshot() { return timeline_.snapshot(); }
    timeline_header& header() { return header_; }
    // What there was to tell the user: recovered edits, conflicts, in the order in which it happened.
    const std::vector<std::string>& messages() const { return messages_; }
    // Those found by opening, and each that came since.
    const std::vector<file_conflict>& conflicts() const { return conflicts_; }
    std::size_t recovered_edits() const { return recovered_edits_; }
    // The clips, by UUID, that were growing when a program died and were finished by opening.
    const std::vector<std::string>& finished_clips() const { return finished_clips_; }
    std::uint64_t revision() const { return revision_; }
    // Another program writes this timeline, or its journal cannot be written: every edit is refused.
    bool is_read_only() const { return !journal_; }
    // Why, for the user; empty when it can be written.
    const std::string& read_only_reason() const { return read_only_reason_; }
    // Whether another program, by the lock's file, is why: try_to_write(true) takes the timeline over.
    bool is_held_elsewhere() const { return !journal_ && is_held_elsewhere_; }

    // Tries again to become the writer of a timeline that is read-only: what changed meanwhile is read first
    // (`changed` tells everything). With `take_over` it is taken from a program that has it, which may cost
    // that program's unsaved changes: only when a person says so. On failure all is as it was.
    result<void> try_to_write(bool take_over = false);

    // The name that edits from now on are stamped with; empty: not known.
    void set_author(std::string name) { author_ = std::move(name); }
    const std::string& author() const { return author_; }
    // The number of the collection that the timeline belongs to: edits from now on give it to the clips that
    // they bring or change and that have none ("coll_id"). 0: it belongs to none.
    void set_collection_number(double number) { collection_number_ = number; }

    // Completes the edit (see complete_edit), applies it and puts it on record. When this returns ok the edit
    // survives the death of the process. A refused edit, or one that cannot be recorded, leaves the timeline
    // as it was.
    result<void> apply(timeline_edit edit);

    // Who makes the changes of what lies beside the timeline (operation::change_beside) from now on; without
    // one they are passed over, as they are when opening brings edits back: see recovered().
    void set_beside_changer(beside_changer change) { beside_ = std::move(change); }
    // Every edit so far is on the volume when this returns, not only on record.
    result<void> sync_edits();

    // Notes the collection time while clips grow: the end that they get should the process die.
    result<void> note_time(double collection_seconds);

    // After each outermost edit, in this order: the edit and its inverse (for undo), then what changed.
    signal<const timeline_edit&, const timeline_edit&> edited;
    signal<const change_set&> changed;
    // A save ended: an empty text, or why it could not be done (it is tried again).
    signal<const std::string&> saved;
    // Another program changed a file of this timeline; its version was kept and this one saved.
    signal<const file_conflict&> conflict;
    // is_read_only() changed: another program took the timeline over, or try_to_write() succeeded.
    signal<> access_changed;

    bool has_unsaved_edits() const { return revision_ != saved_revision_; }
    // Called on the main thread when a save begins; what it returns is called on the save queue, with the
    // mark of the file that is coming and that of the one it replaces, before the file is put in place.
    // Where `begin` fails nothing is saved and the save has failed so: the journal keeps what it holds.
    // Before what these use is gone the companion must be taken away, which waits for a save that runs.
    using save_companion =
        std::function<void(const file_content_mark& coming, const file_content_mark& earlier)>;
    void set_save_companion(std::function<result<save_companion>()> begin);
    // The file that was read. Together with the edits that the journal brought back, which are given away
    // here, each with its inverse, it makes the state after opening.
    const file_content_mark& opened_file() const { return opened_file_; }
    std::vector<std::pair<timeline_edit, timeline_edit>> take_recovered() { return std::move(recovered_); }
    const std::vector<std::pair<timeline_edit, timeline_edit>>& recovered() const { return recovered_; }

    // Begins a save now when there is something unsaved; `saved` tells the outcome.
    void save_soon();
    // Saves and waits until it is done.
    result<void> save_now();

  private:
    struct running_save;
    struct files_read;

    timeline_document(std::string folder, run_loop& loop, file_system& files);
    result<void> load();
    // With `may_change` a damaged file of notes is kept aside.
    result<files_read> read_files(bool may_change);
    result<void> read_data(files_read& read, bool may_change);
    result<void> read_header(files_read& read);
    void take_up(files_read& read);
    void start_writing(const journal_content& journal);
    void keep_conflicts(const journal_content& journal);
    void replay(const journal_content& journal);
    void finish_growing(const char* name);
    void renew_lock();
    bool still_holds_lock();
    bool look_for_strangers();
    void tell(file_conflict found);
    void follow_shift(const timeline_edit& edit);
    void schedule_save();
    void begin_save();
    result<void> end_save();
    result<void> write_files(const timeline_snapshot& snapshot, const timeline_header& header,
                             const save_companion& companion, running_save& save);
    result<void> write_data(const timeline_snapshot& timeline,
                            const std::function<result<void>(const coming_content&)>& note, bool in_doubt,
                            running_save& save);
    result<void> write_file(const char* name, const std::string& bytes, known_file& known, bool in_doubt,
                            running_save& save);

    const std::string folder_;
    run_loop& loop_;
    file_system& files_;
    const std::string instance_;         // stored as "uuid last saved"
    std::unique_ptr<writer_lock> lock_;  // none: the timeline can only be read
    run_loop::timer_id renewal_timer_ = 0;
    sxy_DATA_root timeline_;
    notes_keeper notes_;  // on the save queue, once there is one
    timeline_header header_;
    std::string author_;
    double collection_number_ = 0;
    std::unique_ptr<timeline_journal> journal_;  // none: the timeline can only be read
    std::string read_only_reason_;
    bool is_held_elsewhere_ = false;
    std::vector<std::string> messages_;
    std::vector<file_conflict> conflicts_;
    // The files as this document read or wrote them last, and "uuid last saved" then. Used by loading and,
    // from then on, by the save queue alone.
    known_file known_data_;
    known_file known_header_;
    std::string known_saver_;
    std::size_t recovered_edits_ = 0;
    std::vector<std::string> finished_clips_;
    std::optional<double> last_noted_seconds_;
    std::uint64_t revision_ = 0;
    std::uint64_t saved_revision_ = 0;
    std::uint64_t saved_through_ = 0;  // the number of the last edit in the saved file
    double first_unsaved_seconds_ = 0;
    run_loop::timer_id save_timer_ = 0;  // 0 = none
    std::shared_ptr<running_save> running_save_;
    std::function<result<save_companion>()> begin_companion_;
    beside_changer beside_;
    file_content_mark opened_file_;
    std::vector<std::pair<timeline_edit, timeline_edit>> recovered_;
    posted_work_guard guard_;
    std::unique_ptr<serial_queue> save_queue_;
};

}  // namespace vistels
