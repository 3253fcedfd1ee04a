// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "document/change_journal.h"
#include "document/editable_document.h"
#include "document/writer_lock.h"
#include "timeline/edits/timeline_change.h"
#include "timeline/edits/timeline_edit.h"
#include "timeline/files/chron_notes.h"
#include "timeline/files/sxy_Save_Load.h"
#include "timeline/records/sxy_DATA_root.h"
#include "util/file_system.h"
#include "util/result.h"
#include "util/run_loop.h"
#include "util/safe_write.h"
#include "util/signal.h"

namespace vistels {

// An open timeline: the only way to change one. Applies and journals edits, tells observers, saves in the
// background. All members are called, and all signals come, on the main thread; saving runs on a queue.
class timeline_document : public editable_document {
  public:
    // Opens the timeline in `folder` (made when missing) and puts back what its journal holds beyond the
    // saved file; a clip that was growing is finished at the last noted time. A damaged file is an error that
    // names it; nothing is overwritten then. So is one that the volume fails to read.
    static result<std::unique_ptr<timeline_document>> open(const std::string& folder, run_loop& loop,
                                                           file_system& files = machine_files());
    // Saves what is unsaved and waits for it. Clips that still grow are finished at the last noted time.
    ~timeline_document() override;

    document_id id() const override { return {document_kind::timeline, timeline_.uuid()}; }
    const std::string& folder() const { return folder_; }
    const sxy_DATA_root& timeline() const { return timeline_; }
    // This revision, for work on another thread.
    timeline_snapshot snapshot() { return timeline_.snapshot(); }
    timeline_header& header() { return header_; }
    std::size_t recovered_edits() const { return recovered_edits_; }
    // The clips, by UUID, that were growing when a program died and were finished by opening.
    const std::vector<std::string>& finished_clips() const { return finished_clips_; }
    // Another program writes this timeline, or its journal cannot be written.
    bool is_read_only() const override { return !journal_; }
    const failure& read_only_reason() const override { return read_only_reason_; }
    // By the lock's file: try_to_write(true) takes the timeline over.
    bool is_held_elsewhere() const override { return !journal_ && is_held_elsewhere_; }

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

    // Completes the edit (see complete_edit), applies it, with what it changes of the documents that are on
    // record here, and puts it on record as one line. When this returns ok the edit survives the death of the
    // process. A refused edit, or one that cannot be recorded, leaves all as it was. What of it concerns
    // other documents opening does not bring back: see recovered().
    result<void> apply(timeline_edit edit);

    result<void> make(document_edit edit) override { return apply(timeline_edit_of(std::move(edit))); }
    std::function<result<void>()> edit_sync() override;

    // Notes the collection time while clips grow: the end that they get should the process die.
    result<void> note_time(double collection_seconds);

    change_pointer still_possible(const change_pointer& change) const override;
    bool only_sets_values(const document_change& change) const override;
    std::optional<document_part> joined(const document_part& earlier,
                                        const document_part& later) const override;
    growing_things growing(const document_change& done, const document_change& back) const override;

    // After each outermost edit, in this order: the edit and its inverse, the same for all kinds of documents
    // (`made`), then what changed.
    signal<const timeline_edit&, const timeline_edit&> edited;
    signal<const change_set&> changed;

    // Called on the main thread when a save begins; what it returns is called on the save queue, with the
    // mark of the file that is coming and that of the one it replaces, before the file is put in place.
    // Before what these use is gone the companion must be taken away, which waits for a save that runs.
    using save_companion =
        std::function<void(const file_content_mark& coming, const file_content_mark& earlier)>;
    void set_save_companion(std::function<save_companion()> begin);
    // The file that was read. Together with the edits that the journal brought back, which are given away
    // here, each with its inverse, it makes the state after opening.
    const file_content_mark& opened_file() const { return opened_file_; }
    std::vector<std::pair<timeline_edit, timeline_edit>> take_recovered() { return std::move(recovered_); }
    const std::vector<std::pair<timeline_edit, timeline_edit>>& recovered() const { return recovered_; }
    // What of them concerns other documents, in order, also when they are given away: opening has not made
    // it.
    const std::vector<document_part>& recovered_others() const { return recovered_others_; }

  private:
    struct files_read;
    struct revision_to_save;

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
    void follow_shift(const timeline_edit& edit);
    result<save_work> take_save() override;
    bool may_save() override;
    using conflicts_met = std::vector<file_conflict>;
    result<void> write_files(const revision_to_save& revision, conflicts_met& met);
    result<void> write_data(const timeline_snapshot& timeline,
                            const std::function<result<void>(const coming_content&)>& note, bool in_doubt,
                            conflicts_met& met);
    result<void> write_file(const char* name, const std::string& bytes, known_file& known, bool in_doubt,
                            conflicts_met& met);

    const std::string folder_;
    file_system& files_;
    const std::string instance_;         // stored as "uuid last saved"
    std::unique_ptr<writer_lock> lock_;  // none: the timeline can only be read
    run_loop::timer_id renewal_timer_ = 0;
    sxy_DATA_root timeline_;
    notes_keeper notes_;  // on the save queue, once there is one
    timeline_header header_;
    std::string author_;
    double collection_number_ = 0;
    std::shared_ptr<change_journal> journal_;  // none: the timeline can only be read
    failure read_only_reason_;
    bool is_held_elsewhere_ = false;
    // The files as this document read or wrote them last, and "uuid last saved" then. Used by loading and,
    // from then on, by the save queue alone.
    known_file known_data_;
    known_file known_header_;
    std::string known_saver_;
    std::size_t recovered_edits_ = 0;
    std::vector<std::string> finished_clips_;
    std::optional<double> last_noted_seconds_;
    std::uint64_t saved_through_ = 0;  // the number of the last edit in the saved file
    std::function<save_companion()> begin_companion_;
    file_content_mark opened_file_;
    std::vector<std::pair<timeline_edit, timeline_edit>> recovered_;
    std::vector<document_part> recovered_others_;
};

}  // namespace vistels
