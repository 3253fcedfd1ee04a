// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "document/recorded_document.h"
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
class timeline_document : public recorded_document {
  public:
    // Opens the timeline in `folder` (made when missing) and puts back what its journal holds beyond the
    // saved file; a clip that was growing is finished at the last noted time. A damaged file is an error that
    // names it; nothing is overwritten then. So is one that the volume fails to read.
    static result<std::unique_ptr<timeline_document>> open(const std::string& folder, run_loop& loop,
                                                           file_system& files = machine_files());
    // The same but for what needs the main thread, which begin() does there later. Any thread.
    static result<std::unique_ptr<timeline_document>> read(const std::string& folder, run_loop& loop,
                                                           file_system& files = machine_files());
    // Saves what is unsaved and waits for it. Clips that still grow are finished at the last noted time.
    ~timeline_document() override;

    document_id id() const override { return {document_kind::timeline, timeline_.uuid()}; }
    const sxy_DATA_root& timeline() const { return timeline_; }
    // This revision, for work on another thread.
    timeline_snapshot snapshot() { return timeline_.snapshot(); }
    timeline_header& header() { return header_; }
    // The clips, by UUID, that were growing when a program died and were finished by opening.
    const std::vector<std::string>& finished_clips() const { return finished_clips_; }

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

    // The edits that `edits` applies are one: each changes the timeline at once, so that the next is planned
    // on it, and all go on record as one line and are told together when it returns. When it fails, or the
    // whole cannot be put on record, all of them are taken back. What they change of other documents comes
    // last.
    result<void> apply_jointly(std::string name, std::string scope,
                               const std::function<result<void>()>& edits);

    result<void> make(document_edit edit) override { return apply(timeline_edit_of(std::move(edit))); }

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
    // The edits that the journal brought back, each with its inverse; the first gives them away.
    std::vector<std::pair<timeline_edit, timeline_edit>> take_recovered() { return std::move(recovered_); }
    const std::vector<std::pair<timeline_edit, timeline_edit>>& recovered() const { return recovered_; }

  private:
    struct files_read;
    struct revision_to_save;

    timeline_document(std::string folder, run_loop& loop, file_system& files);
    recovery put_in_order() override;
    result<known_file> read_content(const failure& not_locked, std::vector<failure>& messages) override;
    std::string first_bytes() override;
    void take_up_content() override;
    result<bool> replay(const change_pointer& recorded, std::vector<document_part>& others) override;
    std::size_t finish_replay(std::optional<double> last_time) override;
    void finish_before_closing() override;
    void tell_all() override;
    result<known_file> read_data(files_read& read, const failure& not_locked, std::vector<failure>& messages);
    result<void> read_header(files_read& read, std::vector<failure>& messages);
    void finish_growing(const char* name);
    std::string row_of_ended(const std::string& clip, const std::vector<operation::any>& back) const;
    struct joint_edit;
    result<void> make_jointly(timeline_edit edit);
    void tell_of(timeline_edit edit, timeline_edit inverse, change_set touched);
    void follow_shift(const timeline_edit& edit);
    result<save_work> take_save() override;
    result<void> write_files(const revision_to_save& revision, conflicts_met& met);
    result<void> write_data(const timeline_snapshot& timeline,
                            const std::function<result<void>(const coming_content&)>& note, bool in_doubt,
                            conflicts_met& met);

    std::unique_ptr<files_read> read_;  // not taken up yet
    sxy_DATA_root timeline_;
    notes_keeper notes_;  // on the save queue, once there is one
    timeline_header header_;
    std::string author_;
    double collection_number_ = 0;
    // The header's file as this document read or wrote it last, and "uuid last saved" then. Used by reading
    // and, from then on, by the save queue alone.
    known_file known_header_;
    std::string known_saver_;
    std::vector<std::string> finished_clips_;
    std::optional<double> last_noted_seconds_;
    std::function<save_companion()> begin_companion_;
    joint_edit* joint_ = nullptr;  // while apply_jointly() runs
    std::vector<std::pair<timeline_edit, timeline_edit>> recovered_;
};

}  // namespace vistels
