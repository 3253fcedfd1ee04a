// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "document/change_journal.h"
#include "document/editable_document.h"
#include "document/file_content_mark.h"
#include "document/recorded_form.h"
#include "document/writer_lock.h"
#include "util/file_system.h"
#include "util/recovery.h"
#include "util/result.h"
#include "util/run_loop.h"
#include "util/safe_write.h"

namespace vistels {

// An open document in a folder of its own, with the lock of the one program that writes there and the journal
// that keeps each edit on record: what all kinds of them share. A kind knows its files and its edits.
//
// It is read on any one thread and used on the main thread from begin() on.
class recorded_document : public editable_document {
  public:
    ~recorded_document() override;

    const std::string& folder() const { return folder_; }
    // Another program writes this document, or its journal cannot be written.
    bool is_read_only() const override { return !journal_; }
    const failure& read_only_reason() const override { return read_only_reason_; }
    // By the lock's file: try_to_write(true) takes the document over.
    bool is_held_elsewhere() const override { return !journal_ && is_held_elsewhere_; }

    // Tries again to become the writer of a document that is read-only: what changed meanwhile is read first,
    // and all of it told. With `take_over` it is taken from a program that has it, which may cost that
    // program's unsaved changes: only when a person says so. On failure all is as it was. The same in two
    // steps: prepare_to_write() reads, on any thread, while the main thread may look at the document as it
    // is; write_prepared() takes up what was read, or says why it could not be.
    result<void> try_to_write(bool take_over = false);
    bool prepare_to_write(bool take_over);  // false: it could not be
    result<void> write_prepared();
    // What was read is not wanted; the lock is given back.
    void forget_prepared();
    // The file that prepare_to_write() read.
    const file_content_mark& prepared_file() const;

    std::function<result<void>()> edit_sync() override;

    // Of what the journal held beyond the files when this was opened.
    std::size_t recovered_edits() const { return recovered_edits_; }
    // What of it concerns other documents, in order: opening has not made it.
    const std::vector<document_part>& recovered_others() const { return recovered_others_; }
    // The file that was read. With what the journal brought back it makes the state after opening.
    const file_content_mark& opened_file() const { return opened_file_; }

    void begin() override;

  protected:
    recorded_document(std::string folder, const recorded_form& form, run_loop& loop, file_system& files);

    // Opens: takes the lock, puts the folder in order, reads the files and brings back what the journal holds
    // beyond them. Without the lock the document can only be read. A damaged file is an error that names it;
    // nothing is overwritten then.
    result<void> open_files();
    // For the destructors of the kinds: saves what is unsaved, waits for it, and gives the folder back. What
    // cannot be saved stays in the journal.
    void close_files();

    // What a kind of document does.

    // Puts in order what broken-off writes left in the folder.
    virtual recovery put_in_order() = 0;
    // Reads the files and keeps what it read aside for take_up_content(). Returns how the file of the form
    // is; of inode 0 when there is none. `not_locked` says why only reading is allowed; without it damaged
    // files may be kept under other names.
    virtual result<known_file> read_content(const failure& not_locked, std::vector<failure>& messages) = 0;
    // The bytes of the file of the form for what was read last, where there was none.
    virtual std::string first_bytes() = 0;
    // What was read last is the content from now on.
    virtual void take_up_content() = 0;
    // Makes what the journal holds as an edit; a failure where it does not fit. Parts of other documents go
    // to `others`. False: it holds nothing.
    virtual result<bool> replay(const change_pointer& recorded, std::vector<document_part>& others) = 0;
    // All that was on record is there again, and can be edited; the last time that the journal noted. Returns
    // how many things that were growing it finished, which count as recovered.
    virtual std::size_t finish_replay(std::optional<double> last_time) = 0;
    // The document is about to close, as one that can be written.
    virtual void finish_before_closing() {}
    // Everything may have changed.
    virtual void tell_all() = 0;

    // Whether an edit can be made now.
    bool can_edit() { return journal_ && still_holds_lock(); }
    // Makes an edit that concerns this document and others: `make` does its own part, or fails and changes
    // nothing, `withdraw` takes that back when the edit, which `stored` gives, cannot be put on record. What
    // is told of the edit is told by the caller.
    struct edit_steps {
        const std::string& name;
        const std::vector<document_part>& others;
        std::function<result<void>()> make;
        std::function<void()> withdraw;
        std::function<property_dictionary()> stored;
    };
    result<void> record(const edit_steps& steps);

    change_journal& journal() { return *journal_; }
    // The saved files hold the edits through that number.
    void note_saved_through(std::uint64_t number) { saved_through_ = number; }
    bool may_save() override { return can_edit(); }
    // Writes another file of the document, on the save queue; what a stranger put there is kept and told.
    using conflicts_met = std::vector<file_conflict>;
    result<void> write_file(const char* name, const std::string& bytes, known_file& known, bool in_doubt,
                            conflicts_met& met);
    std::string path_of(const char* name) const { return path_join(folder_, name); }

    const std::string folder_;
    const recorded_form& form_;
    file_system& files_;
    const std::string instance_;  // this opening of the document, in the journal and in the files
    // The file of the form as this document read or wrote it last. Used by reading and, from then on, by the
    // save queue alone.
    known_file known_content_;

  private:
    struct opening;

    result<void> prepare(opening& now, bool take_over);
    result<void> read_files(opening& now);
    void make_first_file(opening& now);
    void start_journal(opening& now);
    void keep_conflicts(opening& now);
    void take_up(opening& now);
    void take_up_journal(opening& now);
    void start_renewal();
    void renew_lock();
    bool still_holds_lock();
    bool is_strangers_there();

    std::unique_ptr<writer_lock> lock_;        // none: the document can only be read
    std::shared_ptr<change_journal> journal_;  // the same
    failure read_only_reason_;
    bool is_held_elsewhere_ = false;
    run_loop::timer_id renewal_timer_ = 0;
    std::uint64_t saved_through_ = 0;  // the number of the last edit in the saved files
    std::size_t recovered_edits_ = 0;
    std::vector<document_part> recovered_others_;
    file_content_mark opened_file_;
    std::unique_ptr<opening> opening_;  // read, not taken up yet
};

}  // namespace vistels
