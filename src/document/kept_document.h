// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "document/editable_document.h"

namespace vistels {

// An open document that has no journal of its own: its edits are on record in that of another one, the
// keeper, on the volume before the document's files are replaced. Without a keeper an edit is on record once
// it is saved. Main thread.
class kept_document : public editable_document {
  public:
    // Its edits go on record in that journal from now on; `keeper` must outlive this.
    void set_keeper(editable_document& keeper);

    result<void> make(document_edit edit) override;
    // As its keeper is; without one it can be written.
    bool is_read_only() const override { return keeper_ && keeper_->is_read_only(); }
    const failure& read_only_reason() const override;
    bool is_held_elsewhere() const override { return keeper_ && keeper_->is_held_elsewhere(); }
    std::function<result<void>()> edit_sync() override;

  protected:
    // What the keeper's journal brought back of this kind of document is taken up.
    void note_taken_up_here();
    explicit kept_document(run_loop& loop) : editable_document(loop) {}
    // For the destructors of the kinds: waits for a save that runs; what is not saved is not saved any more.
    void close();

  private:
    editable_document* keeper_ = nullptr;
    connection access_;
};

}  // namespace vistels
