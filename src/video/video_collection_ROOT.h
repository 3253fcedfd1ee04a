// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
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

// A collection: the movies of one event, one vistel for each camera. Owned and changed by the main thread;
// every accessor takes `lk`, so other threads may read a field. A copy shares its vistels.
class video_collection_ROOT : record {
  public:
    std::string uuid() const { return read(uuid_); }
    void set_uuid(std::string uuid) { write(uuid_, std::move(uuid)); }
    // The collection's number, the "coll_id" of its clips: positive and below 2^53; 0 when it has none.
    std::int64_t quick_number() const { return read(quick_number_); }
    void set_quick_number(std::int64_t number) { write(quick_number_, number); }
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
    // The vistel that is heard; empty: the first.
    std::string vistel_for_sound() const { return read(vistel_for_sound_); }
    void set_vistel_for_sound(std::string uuid) { write(vistel_for_sound_, std::move(uuid)); }
    std::string linked_timeline() const { return read(linked_timeline_); }
    void set_linked_timeline(std::string uuid) { write(linked_timeline_, std::move(uuid)); }

    // The vistels in their order, never null.
    std::vector<std::shared_ptr<single_Vistel_CTR>> vistels() const { return read(vistels_); }
    void set_vistels(std::vector<std::shared_ptr<single_Vistel_CTR>> all) { write(vistels_, std::move(all)); }
    // By its UUID, or by its number written as text; null when there is none.
    std::shared_ptr<single_Vistel_CTR> find_vistel(std::string_view uuid_or_number) const;
    // A number that no vistel of the collection has.
    double unused_vistel_number() const;

    // All values as read; what has a field above is replaced when written, and unknown keys stay.
    property_dictionary stored() const { return read(stored_); }
    void set_stored(property_dictionary stored) { write(stored_, std::move(stored)); }

  private:
    std::string uuid_;
    std::int64_t quick_number_ = 0;
    std::string created_by_;
    std::string name_;
    video_type_state state_ = video_type_state::none;
    double volume_ = 1;
    double movie_time_ = 0;
    bool displays_vistel_number_ = false;
    std::string vistel_for_sound_;
    std::string linked_timeline_;
    std::vector<std::shared_ptr<single_Vistel_CTR>> vistels_;
    property_dictionary stored_;
};

// Reads the collection record with its item records. Lenient: a missing or wrongly typed value keeps its
// default.
video_collection_ROOT read_collection(const property_dictionary& stored);
// The record with the keys in their stored order, "date updated" being `now` (seconds since 1970).
property_dictionary write_collection(const video_collection_ROOT& collection, double now);

// Frames for `count` vistels in a grid, as fractions of the video area from its upper left corner; the last
// line is centred.
std::vector<rectangle> grid_layout(std::size_t count);

}  // namespace vistels
