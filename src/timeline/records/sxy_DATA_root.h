// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "timeline/records/clip_index.h"
#include "timeline/records/sXY_data_TAG.h"
#include "timeline/records/sxy_ROW.h"
#include "util/property_value.h"
#include "util/record.h"
#include "util/shared_record.h"

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
    std::vector<sXY_data_TAG> tags = {};
    bool only_selected = false;  // its stored form holds only the clips that are selected and filtered in
};

// One timeline: its rows in display order and their clips, and the live clips, which grow while their buttons
// are down. Owned and changed by one thread (through timeline_document); other threads read snapshots, and
// the fields below them that are guarded by `lk`.
class sxy_DATA_root : record {
  public:
    sxy_DATA_root();
    explicit sxy_DATA_root(timeline_snapshot loaded);
    sxy_DATA_root(sxy_DATA_root&&) noexcept = default;
    sxy_DATA_root& operator=(sxy_DATA_root&&) noexcept = default;
    ~sxy_DATA_root() = default;

    const std::string& uuid() const { return uuid_; }
    const std::string& description() const { return description_; }
    const property_dictionary& kept() const { return kept_; }
    // Markers on the time ruler.
    std::vector<sXY_data_TAG> tags() const { return read(tags_); }
    void set_tags(std::vector<sXY_data_TAG> tags) { write(tags_, std::move(tags)); }

    const std::vector<row_pointer>& rows() const { return rows_; }
    // Nothing when there is no such row.
    std::optional<std::size_t> row_index(const shared_text& uuid) const;
    row_pointer row(const shared_text& uuid) const;
    row_pointer row_named(std::string_view name) const;
    // Nothing when there is no such clip, in a row or live.
    std::optional<clip_place> find_clip(std::string_view uuid) const;
    std::size_t clip_count() const { return clips_.size(); }
    // Clips still growing, in the order in which they began.
    const std::vector<clip_place>& live_clips() const { return live_; }
    // The end of the last clip in seconds, or 0.
    double last_end() const;

    // The rows become shared: the next edit of each copies it first. Clips and their order are not copied.
    timeline_snapshot snapshot();

    // The changes from which edits are made; each returns false, or nothing, with nothing changed, when it
    // cannot be done (no such row or clip, one with that UUID is there already, a time is not finite).
    bool insert_row(std::size_t index, sxy_ROW row);  // its clips come with it
    bool remove_row(const shared_text& uuid);         // an empty row only
    bool move_row(const shared_text& uuid, std::size_t index);
    bool change_row(const shared_text& uuid, const property_dictionary& set, const property_array& unset);
    bool set_tombstones(const shared_text& row, std::vector<sxy_Deleted_Clip_Item_k11> all);
    bool insert_clip(const shared_text& row, shared_record<sxy_CLIP> clip);
    // In a row or live. Returns where it was.
    std::optional<clip_place> remove_clip(std::string_view uuid);
    // Returns the row that it was in. `changed`, when not null, takes the clip's place: a copy of it with the
    // same times and UUID.
    std::optional<shared_text> move_clip(std::string_view uuid, const shared_text& row,
                                         clip_pointer changed = nullptr);
    // The clip with that UUID becomes `clip`, which has the same UUID.
    bool replace_clip(shared_record<sxy_CLIP> clip);
    bool insert_live_clip(const shared_text& row, shared_record<sxy_CLIP> clip);
    // Moves all times on the collection's clock: of clips in rows and live, and of tags.
    bool shift_times(double seconds);
    // Puts back an earlier state of live_clips().
    void set_live_clips(std::vector<clip_place> live);
    // Makes room for that many more clips at once.
    void expect_clips(std::size_t more) { clips_.reserve(clips_.size() + more); }

    // The stored form of snapshots is to hold only the clips that are selected and filtered in: of a copy
    // that is given away, since what is left out is not kept.
    bool stores_only_selected() const {
        return read(only_add_Selected_and_filtered_in_clips_to_Save_Dictionary__);
    }
    void set_stores_only_selected(bool only) {
        write(only_add_Selected_and_filtered_in_clips_to_Save_Dictionary__, only);
    }
    double padding_on_end() const { return read(padding_on_timeline_end); }  // seconds behind the last clip
    void set_padding_on_end(double seconds) { write(padding_on_timeline_end, seconds); }
    // The timeline's length in seconds when no movie gives one.
    double default_duration() const { return read(default_secs_MAX_duration); }
    void set_default_duration(double seconds) { write(default_secs_MAX_duration, seconds); }

  private:
    struct owned_row {
        std::shared_ptr<sxy_ROW> row;
        bool is_shared = false;    // a snapshot may hold it
        std::uint32_t number = 0;  // what clips_ calls it, wherever it stands
    };

    void put_row(std::size_t index, std::shared_ptr<sxy_ROW> row);
    void note_places(std::size_t first);
    sxy_ROW& editable(std::size_t index);
    std::size_t index_of(const clip_index::entry& found) const { return row_at_[found.row]; }
    std::size_t live_index(std::string_view uuid) const;
    bool has_clip(std::string_view uuid) const;
    void take_in(sxy_ROW& row, std::uint32_t number);

    std::string uuid_;
    std::string description_;
    property_dictionary kept_;
    std::vector<sXY_data_TAG> tags_;
    std::vector<row_pointer> rows_;
    std::vector<owned_row> owned_;  // the same rows, in the same order
    std::unordered_map<shared_text, std::uint32_t> row_numbers_;
    std::vector<std::size_t> row_at_;          // by number: where the row stands
    std::vector<std::uint32_t> free_numbers_;  // of rows that are gone
    clip_index clips_;                         // the clips in rows
    std::vector<clip_place> live_;
    std::vector<compact_text> live_ids_;  // theirs

    bool only_add_Selected_and_filtered_in_clips_to_Save_Dictionary__ = false;
    double padding_on_timeline_end = 0;
    double default_secs_MAX_duration = 0;
};

}  // namespace vistels
