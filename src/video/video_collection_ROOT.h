// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "util/property_value.h"
#include "util/record.h"
#include "video/single_Vistel_CTR.h"

namespace vistels {

enum class video_type_state { capture_preview, capturing_in_progress, playback, none };

// The stored text; an unknown text reads as none.
std::string_view video_type_state_text(video_type_state state);
video_type_state video_type_state_from_text(std::string_view text);

// The key of a collection record under which its vistels stand.
inline constexpr const char* collection_items_key = "array video group items";

// A vistel that was pushed aside, and the frame that it returns to.
struct pushed_vistel {
    std::string uuid;
    rectangle frame;
    bool operator==(const pushed_vistel&) const = default;
};

// A collection: the movies of one event, one vistel for each camera. Owned and changed by the main thread;
// every accessor takes `lk`, so other threads may read a field. A copy shares its vistels.
class video_collection_ROOT : record {
  public:
    std::string uuid() const { return read(uuid_); }
    void set_uuid(std::string uuid) { write(uuid_, std::move(uuid)); }
    // The collection's number, the "coll_id" of its clips: positive and below 2^53; 0 when it has none.
    std::int64_t quick_number() const { return read(quick_number_); }
    void set_quick_number(std::int64_t number) { write(quick_number_, number); }
    // The number of the collection that this one was made from, as stored; empty: none.
    std::string original_quick_number() const { return read(original_quick_number_); }
    void set_original_quick_number(std::string number) { write(original_quick_number_, std::move(number)); }
    // Given when the collection is derived from another one, by copying or capture.
    std::string secondary_uuid() const { return read(secondary_uuid_); }
    void set_secondary_uuid(std::string uuid) { write(secondary_uuid_, std::move(uuid)); }
    // The UUID before it was copied between folders, and when that was (seconds since 1970; 0: never).
    std::string previous_uuid() const { return read(previous_uuid_); }
    void set_previous_uuid(std::string uuid) { write(previous_uuid_, std::move(uuid)); }
    double last_copied() const { return read(last_copied_); }
    void set_last_copied(double seconds) { write(last_copied_, seconds); }
    std::string created_by() const { return read(created_by_); }
    void set_created_by(std::string user) { write(created_by_, std::move(user)); }
    std::string name() const { return read(name_); }
    void set_name(std::string name) { write(name_, std::move(name)); }
    video_type_state state() const { return read(state_); }
    void set_state(video_type_state state) { write(state_, state); }
    double volume() const { return read(volume_); }  // 0 to 1
    void set_volume(double volume) { write(volume_, volume); }
    double movie_time() const { return read(movie_time_); }  // collection time in seconds
    void set_movie_time(double seconds) { write(movie_time_, seconds); }
    bool displays_vistel_number() const { return read(displays_vistel_number_); }
    void set_displays_vistel_number(bool displays) { write(displays_vistel_number_, displays); }
    // Whether a marker stands where a vistel's movie has not begun yet.
    bool shows_missing_starts() const { return read(shows_missing_starts_); }
    void set_shows_missing_starts(bool shows) { write(shows_missing_starts_, shows); }
    // Width to height of the area outside the views, and the one to return to when no vistel is enlarged any
    // more; nothing: not set.
    std::optional<double> outside_bounds_ratio() const { return read(outside_bounds_ratio_); }
    void set_outside_bounds_ratio(std::optional<double> ratio) { write(outside_bounds_ratio_, ratio); }
    std::optional<double> remembered_outside_bounds_ratio() const {
        return read(remembered_outside_bounds_ratio_);
    }
    void set_remembered_outside_bounds_ratio(std::optional<double> ratio) {
        write(remembered_outside_bounds_ratio_, ratio);
    }
    // Whether the video area is as wide as its pane and scrolls where it is higher, instead of lying in it
    // whole.
    bool area_scrolls() const { return read(area_scrolls_); }
    void set_area_scrolls(bool scrolls) { write(area_scrolls_, scrolls); }
    // The frames, by UUID, to which vistels that an enlarged one pushed aside return.
    std::vector<pushed_vistel> pushed_vistels() const { return read(pushed_vistels_); }
    void set_pushed_vistels(std::vector<pushed_vistel> pushed) { write(pushed_vistels_, std::move(pushed)); }
    // The vistel that is heard; empty: the first.
    std::string vistel_for_sound() const { return read(vistel_for_sound_); }
    void set_vistel_for_sound(std::string uuid) { write(vistel_for_sound_, std::move(uuid)); }
    std::string linked_timeline() const { return read(linked_timeline_); }
    void set_linked_timeline(std::string uuid) { write(linked_timeline_, std::move(uuid)); }

    std::string linked_composer() const { return read(linked_composer_); }
    void set_linked_composer(std::string uuid) { write(linked_composer_, std::move(uuid)); }

    // The vistels in their order, never null.
    std::vector<std::shared_ptr<single_Vistel_CTR>> vistels() const { return read(vistels_); }
    void set_vistels(std::vector<std::shared_ptr<single_Vistel_CTR>> all);
    // By its UUID, or by its number written as text; null when there is none.
    std::shared_ptr<single_Vistel_CTR> find_vistel(std::string_view uuid_or_number) const;
    // A number for a new vistel, from 1 to 100,000 as a camera's is: above all that the collection has had
    // and those in use elsewhere, so that none is given twice. Only when there is no room left above, the
    // lowest that is in use nowhere.
    double take_vistel_number();
    // Numbers by which something outside the collection refers to vistels: not to be given to new ones.
    void set_vistel_numbers_in_use(std::set<double> numbers) { write(numbers_in_use_, std::move(numbers)); }
    // The largest number from 1 to 100,000 that a vistel of the collection has had; 0: none had one.
    double largest_vistel_number() const { return read(largest_number_); }
    void set_largest_vistel_number(double number) { write(largest_number_, number); }
    // Puts a vistel at a place in the order (at the end beyond it).
    void insert_vistel(std::size_t index, std::shared_ptr<single_Vistel_CTR> vistel);
    // Takes a vistel out of the collection; its data stays. Its place, or nothing when it is not there.
    std::optional<std::size_t> remove_vistel(const single_Vistel_CTR& vistel);
    // Moves a vistel to a place among the others; false when it is not there.
    bool move_vistel(const single_Vistel_CTR& vistel, std::size_t index);

    // While it is being loaded, or for another reason not whole, saving is refused; see saving_block.
    bool saving_is_blocked() const { return read(saving_blocks_.number) > 0; }

    // All values as read; what has a field above is replaced when written, and unknown keys stay. Elements of
    // "array video group items" that are no records stay in their place, too.
    property_dictionary stored() const { return read(stored_); }
    void set_stored(property_dictionary stored) { write(stored_, std::move(stored)); }

  private:
    friend class saving_block;

    // Counts the blocks of this very object: a copy is not blocked, and being assigned to changes nothing.
    struct block_count {
        int number = 0;
        block_count() = default;
        block_count(const block_count&) {}
        block_count& operator=(const block_count&) { return *this; }
    };

    std::string uuid_;
    std::int64_t quick_number_ = 0;
    std::string original_quick_number_;
    std::string secondary_uuid_;
    std::string previous_uuid_;
    double last_copied_ = 0;
    std::string created_by_;
    std::string name_;
    video_type_state state_ = video_type_state::none;
    double volume_ = 1;
    double movie_time_ = 0;
    bool displays_vistel_number_ = false;
    bool shows_missing_starts_ = false;
    std::optional<double> outside_bounds_ratio_;
    std::optional<double> remembered_outside_bounds_ratio_;
    bool area_scrolls_ = false;
    std::vector<pushed_vistel> pushed_vistels_;
    std::string vistel_for_sound_;
    std::string linked_timeline_;
    std::string linked_composer_;
    block_count saving_blocks_;
    double largest_number_ = 0;
    std::set<double> numbers_in_use_;
    std::vector<std::shared_ptr<single_Vistel_CTR>> vistels_;
    property_dictionary stored_;
};

// Refuses saving a collection as long as it lives, which is no longer than the collection. Blocks add up.
class saving_block {
  public:
    explicit saving_block(video_collection_ROOT& collection);
    ~saving_block();
    saving_block(const saving_block&) = delete;
    saving_block& operator=(const saving_block&) = delete;

  private:
    video_collection_ROOT& collection_;
};

// Reads the collection record with its item records. Lenient: a missing or wrongly typed value keeps its
// default.
video_collection_ROOT read_collection(const property_dictionary& stored);
// The record with the keys in their stored order, "date updated" being `now` (seconds since 1970). With
// `archive_uuid` the record of a collection that is being archived, which alone carries it.
property_dictionary write_collection(const video_collection_ROOT& collection, double now,
                                     const std::string& archive_uuid = {});

// Whether the record as read names something among its vistels that is no record.
bool has_foreign_items(const video_collection_ROOT& collection);

// Whether the vistel has a number by which it can be found.
bool has_number(const single_Vistel_CTR& vistel);

// What is wrong with the numbers and identifiers of the vistels, each by itself: several vistels with one
// number (the first is found by it), several with one identifier. Nothing is changed.
std::vector<failure> numbering_problems(const video_collection_ROOT& collection);

// Frames for `count` vistels in a grid, as fractions of the video area from its upper left corner; the last
// line is centred.
std::vector<rectangle> grid_layout(std::size_t count);

}  // namespace vistels
