// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "document/document_edit.h"
#include "util/posted_work_guard.h"
#include "util/result.h"
#include "util/run_loop.h"
#include "util/serial_queue.h"
#include "util/signal.h"

namespace vistels {

// Two programs changed the same thing; both versions are kept.
struct file_conflict {
    failure told;         // what happened and where the other version is
    std::string path;     // the file that the document writes
    std::string kept_as;  // the other version
};

// A save met a file of another program at `path`, which it kept under the other name.
file_conflict stranger_met(const std::string& path, const std::string& kept);

// An open document that a person edits: what all kinds of them share. Edits count revisions; a while after an
// edit the document is saved, in the background: what it holds is taken as values on the main thread and
// written on a queue of the document's own. Edits made while a save runs go into the next one. All members
// are called, and all signals come, on the main thread.
//
// A document may keep the edits of others on record in its journal (keep_on_record). It is then saved only
// after those edits are saved, since what its files hold its journal forgets; as long as one of these
// documents cannot be saved it is not saved either, and says why. What else is to be saved of them is not
// waited for.
class editable_document {
  public:
    virtual ~editable_document();
    editable_document(const editable_document&) = delete;
    editable_document& operator=(const editable_document&) = delete;

    virtual document_id id() const = 0;

    // Makes an edit of this document, and of others that are on record with it. When this returns ok it
    // survives the death of the process. A refused edit, or one that cannot be recorded, leaves all as it
    // was.
    virtual result<void> make(document_edit edit) = 0;
    // The document of that name: this one or one that is on record here; null when there is none.
    editable_document* find(const document_id& id);

    // Every edit is refused, and nothing saved.
    virtual bool is_read_only() const = 0;
    // Why; none when it can be written.
    virtual const failure& read_only_reason() const = 0;
    // Whether another program is why.
    virtual bool is_held_elsewhere() const = 0;

    // Grows with each edit, from opening on.
    std::uint64_t revision() const { return revision_; }
    std::uint64_t saved_revision() const { return saved_revision_; }
    bool has_unsaved_edits() const { return revision_ != saved_revision_; }
    // That of the last edit that another document's journal holds.
    std::uint64_t revision_on_record() const { return revision_on_record_; }

    // What there was to tell the user: what was brought back, conflicts, in the order in which it happened.
    const std::vector<failure>& messages() const { return messages_; }
    // Those found by opening, and each that came since.
    const std::vector<file_conflict>& conflicts() const { return conflicts_; }

    // A document is begun from the first, unless it is told to wait, since it is read on another thread: then
    // nothing is saved, and the loop not used, before begin() on the main thread.
    void wait_to_begin() { is_begun_ = false; }
    virtual void begin();
    bool is_begun() const { return is_begun_; }

    // Begins a save now when there is something unsaved; `saved` tells the outcome.
    void save_soon();
    // Saves and waits until it is done.
    result<void> save_now();

    // What puts every edit made so far on the volume, not only on record, and waits for it. It may be called
    // on any thread, also when the document is gone.
    virtual std::function<result<void>()> edit_sync() = 0;
    result<void> sync_edits() { return edit_sync()(); }

    // Edits of `other` are on record in this document's journal, from now on until let_go(), which must come
    // before either is destroyed. One that is let go with such edits unsaved leaves them to the journal: then
    // this document is not saved any more.
    void keep_on_record(editable_document& other);
    void let_go(editable_document& other);
    // What the journal brought back of the documents of that kind they have taken up, to be saved before this
    // one.
    void note_taken_up(document_kind kind) { std::erase(held_back_for_, kind); }

    // What undo asks of the kinds of documents, of which parts each knows its own.
    // What of the change can be done as things are now; null when nothing can.
    virtual change_pointer still_possible(const change_pointer& change) const { return change; }
    // Whether it only sets values of what is there: the kind of change that a drag makes many of.
    virtual bool only_sets_values(const document_change& change) const;
    // One part that takes back what `later` does and then what `earlier` does; nothing when it takes both.
    virtual std::optional<document_part> joined(const document_part& earlier,
                                                const document_part& later) const;
    // Things that begin with one edit and end with another, such as a clip while its button is down, are a
    // step when they have ended.
    struct growing_things {
        bool begins = false;    // some began
        bool gives_up = false;  // some that began with an earlier edit are gone for good
        // What takes back what was made in a place for those that began there. The first that ends there has
        // it in its step, which is the last of the place to be taken back.
        struct preparation {
            std::string place;  // its identifier
            change_pointer back;
        };
        std::vector<preparation> prepared;
        std::vector<std::string> cleared;  // places that went with what was given up
        std::vector<std::string> ended;    // the places of those that ended
        // Where some began or were given up: what takes back all else of the edit; null: nothing.
        change_pointer own;
        bool is_plain() const { return !begins && !gives_up; }
    };
    virtual growing_things growing(const document_change& done, const document_change& back) const;

    // After each outermost edit: the edit and what takes it back.
    signal<const document_edit&, const document_edit&> made;
    // A save begins; what observers put into the document now is saved with it.
    signal<> save_begins;
    // A save ended: no failure, or why it could not be done (it is tried again).
    signal<const failure&> saved;
    // Another program changed a file of this document; its version was kept and this one saved.
    signal<const file_conflict&> conflict;
    // is_read_only() changed.
    signal<> access_changed;

  protected:
    explicit editable_document(run_loop& loop);
    // Of a document that is on record with another one, which calls these. Makes the change in memory; on
    // failure nothing is changed.
    virtual result<void> change(const document_change& change);
    // The change that was made is on record.
    virtual void follow(const document_change& change);
    // Makes the parts of an edit that concern documents on record here; on failure none is made.
    result<void> change_others(const std::vector<document_part>& parts);
    // Those of which the edit is not put on record after all.
    void withdraw_others(const std::vector<document_part>& parts);
    void follow_others(const std::vector<document_part>& parts);

    // One revision on its way to the files.
    struct save_work {
        // Writes it, on the save queue, and adds the conflicts that it meets.
        std::function<result<void>(std::vector<file_conflict>& met)> write;
        // Called on the main thread when that is over, before `saved` tells.
        std::function<void(const result<void>& outcome)> over;
    };
    // Takes what is to be saved now. A failure ends the save.
    virtual result<save_work> take_save() = 0;
    // Whether a save may begin at all; looked at before each.
    virtual bool may_save() = 0;

    // An edit was made, or something else that is to be saved: it will be in a while.
    void note_edit();
    // The same of one that the journal of another document holds.
    void note_edit_on_record();
    // What is there is what the files hold.
    void note_saved_state() { saved_revision_ = revision_; }
    // It is not saved for the reason of an edit, but with the next one, or when asked for.
    void note_revision() { ++revision_; }
    void schedule_save();
    // Keeps the conflict and tells it.
    void tell(file_conflict found);
    // The journal alone holds edits of a document of that kind: nothing is saved before note_taken_up().
    void hold_back_for(document_kind kind) { held_back_for_.push_back(kind); }
    // A save is on its way, or waits for another document's.
    bool is_saving() const { return running_ != nullptr; }
    // Runs `work` on the save queue, behind what waits there, and then `then` with what it returned on the
    // main thread.
    void look_on_queue(std::function<bool()> work, std::function<void(bool)> then);
    // Waits for what runs on the save queue.
    void finish_writing();
    // Gives up saving, of the documents on record here, too: somebody else writes the files now. Waits for
    // what is being written.
    void abandon_saving();
    // The same for good; derived classes do so before anything that their saves use is gone.
    void end_saving();

    run_loop& loop_;
    std::vector<failure> messages_;

  private:
    struct running_save;
    struct kept_document {
        editable_document* document;
        std::uint64_t needed;  // the revision that has to be saved before the save that waits
        connection saved;
        bool is_waited_for() const { return document->saved_revision() < needed; }
    };

    bool is_held_back() const { return leaves_edits_ || !held_back_for_.empty(); }
    serial_queue& save_queue();
    void begin_save();
    void write_when_ready();
    void follow_kept(const kept_document& one, const failure& problem);
    result<void> end_save();

    bool is_begun_ = true;
    std::uint64_t revision_ = 0;
    std::uint64_t revision_on_record_ = 0;
    std::uint64_t saved_revision_ = 0;
    std::vector<file_conflict> conflicts_;
    double first_unsaved_seconds_ = 0;
    run_loop::timer_id save_timer_ = 0;  // 0 = none
    std::shared_ptr<running_save> running_;
    result<void> last_outcome_;
    std::vector<std::unique_ptr<kept_document>> kept_;
    std::vector<document_kind> held_back_for_;
    bool leaves_edits_ = false;  // of a document that was let go with unsaved ones: to the journal
    posted_work_guard guard_;
    std::unique_ptr<serial_queue> queue_;  // when it is first needed
};

}  // namespace vistels
