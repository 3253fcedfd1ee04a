// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "timeline/sxy_ROW.h"
#include "util/property_value.h"

namespace vistels {

// Where a clip is.
struct clip_place {
    clip_pointer clip;
    shared_text row;       // the UUID of its row
    bool is_live = false;  // still growing: its button is down and it is in no row yet
};

// One revision of a timeline, unchanging: what a save writes and a job reads. Any thread.
struct timeline_snapshot {
    std::string uuid;
    std::string description;
    property_dictionary kept;  // stored values of the timeline that have no field of their own
    std::vector<row_pointer> rows;
    std::vector<clip_place> live_clips;  // clips still growing; the stored form does not hold them
};

// One timeline: its rows in display order and their clips, and the live clips, which grow while their buttons
// are down. Owned and changed by one thread (through timeline_document); other threads read snapshots.
class sxy_DATA_root {
  public:
    sxy_DATA_root();
    explicit sxy_DATA_root(timeline_snapshot loaded);

    const std::string& uuid() const { return uuid_; }
    const std::string& description() const { return description_; }
    void set_description(std::string text) { description_ = std::move(text); }
    const property_dictionary& kept() const { return kept_; }

    const std::vector<row_pointer>& rows() const { return rows_; }
    // Nothing when there is no such row.
    std::optional<std::size_t> row_index(const shared_text& uuid) const;
    row_pointer row(const shared_text& uuid) const;
    row_pointer row_named(std::string_view name) const;
    // Nothing when there is no such clip, in a row or live.
    std::optional<clip_place> find_clip(const std::string& uuid) const;
    std::size_t clip_count() const { return places_.size(); }
    // Clips still growing, in the order in which they began.
    const std::vector<clip_place>& live_clips() const { return live_; }
    // The end of the last clip in seconds, or 0.
    double last_end() const;

    // The rows become shared: the next edit of each copies it first.
    timeline_snapshot snapshot();

    // The changes from which edits are made; each returns false, with nothing changed, when it cannot be done
    // (no such row or clip, or one with that UUID is there already).
    bool insert_row(std::size_t index, sxy_ROW row);  // its clips come with it
    bool remove_row(const shared_text& uuid);         // an empty row only
    bool move_row(const shared_text& uuid, std::size_t index);
    bool change_row(const shared_text& uuid, const property_dictionary& set, const property_array& unset);
    bool insert_clip(const shared_text& row, sxy_CLIP clip);
    bool remove_clip(const std::string& uuid);  // in a row or live
    bool move_clip(const std::string& uuid, const shared_text& row);
    // The clip with that UUID becomes `clip`, which has the same UUID.
    bool replace_clip(sxy_CLIP clip);
    bool insert_live_clip(const shared_text& row, sxy_CLIP clip);
    // Puts back an earlier state of live_clips().
    void set_live_clips(std::vector<clip_place> live) { live_ = std::move(live); }

  private:
    struct owned_row {
        std::shared_ptr<sxy_ROW> row;
        bool is_shared = false;  // a snapshot may hold it
    };

    sxy_ROW& editable(std::size_t index);
    std::size_t live_index(const std::string& uuid) const;
    void add_places(const sxy_ROW& row);
    void give_unique_uuids(sxy_ROW& row);

    std::string uuid_;
    std::string description_;
    property_dictionary kept_;
    std::vector<row_pointer> rows_;
    std::vector<owned_row> owned_;                        // the same rows, in the same order
    std::unordered_map<std::string, clip_place> places_;  // the clips in rows, by UUID
    std::vector<clip_place> live_;
};

}  // namespace vistels
