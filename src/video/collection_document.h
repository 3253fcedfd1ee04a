// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>
#include <string>

#include "document/kept_document.h"
#include "util/file_system.h"
#include "util/result.h"
#include "util/run_loop.h"
#include "video/collection_edit.h"
#include "video/video_coll_LOAD.h"
#include "video/video_collection_ROOT.h"

namespace vistels {

class blank_vistel_movie;

// An open collection: its record, and what of it the files hold. Its keeper is its timeline. What lasts only
// as long as the event is looked at (movie time, volume, the enlarged vistel) is saved along, or by
// note_values(). Main thread.
class collection_document : public kept_document {
  public:
    // Empty, and not saved, until take_up().
    collection_document(std::string folder, run_loop& loop, file_system& files = machine_files());
    // Waits for a save that runs; what is not saved is not saved any more.
    ~collection_document() override;

    document_id id() const override { return {document_kind::collection, record_.uuid()}; }
    bool only_sets_values(const document_change& change) const override;
    std::optional<document_part> joined(const document_part& earlier,
                                        const document_part& later) const override;

    const std::string& folder() const { return folder_; }
    const video_collection_ROOT& record() const { return record_; }
    // For what is no edit.
    video_collection_ROOT& record() { return record_; }
    // As it was read from its files just now.
    void take_up(loaded_collection read);
    // Makes what the keeper's journal brought back, as far as it concerns this collection and the record
    // lacks it; it is to be saved then.
    void take_up_recovered(const std::vector<document_part>& parts);

    // Of which padding movies are made that an edit needs and that are not there; `blank` must outlive this.
    void set_blank_movie(blank_vistel_movie& blank) { blank_ = &blank; }
    // Movie parts are about to change: padding movies that are in no use now may come into use. They are kept
    // until the parts have changed.
    void expect_parts();
    // The record was changed in another way than by make(), which is on record nowhere. Padding movies that
    // are in no use are deleted once a change of movie parts is saved.
    void note_change(bool parts);
    // Where values differ from those that were saved, the next save writes them.
    void note_values();

  private:
    struct padding_use;

    result<save_work> take_save() override;
    bool may_save() override;
    result<void> change(const document_change& change) override;
    void follow(const document_change& change) override;
    void note_change_on_record(bool parts);
    void note_parts(bool change);
    result<void> make_padding_again(const collection_edit& edit) const;

    const std::string folder_;
    file_system& files_;
    blank_vistel_movie* blank_ = nullptr;
    video_collection_ROOT record_;
    property_dictionary saved_record_;
    known_file record_file_;  // as it was read or written last; with the save queue, once there is one
    bool is_taken_up_ = false;
    bool parts_changed_ = false;  // since the last save
    bool parts_are_expected_ = false;
    const std::shared_ptr<padding_use> padding_use_;
};

}  // namespace vistels
