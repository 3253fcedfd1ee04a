// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>
#include <string>
#include <utility>

#include "util/colour_text.h"
#include "util/property_value.h"
#include "util/record.h"
#include "video/movie_Part_DRONE_Offset_Item.h"

namespace vistels {

// One vistel of a collection: what the collection's item record and the vistel's own record hold about it.
// Every accessor takes `lk` for that one read or write, so any thread may read while the main thread changes.
class single_Vistel_CTR : record {
  public:
    // Names the vistel's data folder ("UUID single video - g").
    std::string uuid() const { return read(uuid_); }
    void set_uuid(std::string uuid) { write(uuid_, std::move(uuid)); }
    // By which clips and composers refer to the vistel; positive, or 0 when it has none.
    double number() const { return read(number_); }
    void set_number(double number) { write(number_, number); }
    std::string name() const { return read(name_); }
    void set_name(std::string name) { write(name_, std::move(name)); }
    // Seconds, may be negative; nothing when none is stored, which counts as 0 for playing.
    std::optional<double> manual_start_offset() const { return read(manual_start_offset_); }
    void set_manual_start_offset(std::optional<double> seconds) { write(manual_start_offset_, seconds); }
    // The view's frame as fractions of the collection's video area, from its upper left corner.
    std::optional<rectangle> proportion_rect() const { return read(proportion_rect_); }
    void set_proportion_rect(std::optional<rectangle> frame) { write(proportion_rect_, frame); }
    int vistel_number_displayed() const { return read(vistel_number_displayed_); }
    void set_vistel_number_displayed(int number) { write(vistel_number_displayed_, number); }
    int saved_view_order() const { return read(saved_view_order_); }
    void set_saved_view_order(int order) { write(saved_view_order_, order); }
    bool flicked_in() const { return read(flicked_in_); }  // enlarged over the others
    void set_flicked_in(bool enlarged) { write(flicked_in_, enlarged); }
    bool saves_data_locally() const { return read(saves_data_locally_); }
    void set_saves_data_locally(bool locally) { write(saves_data_locally_, locally); }
    bool locks_clips() const { return read(locks_clips_); }  // clips move with the movie parts
    void set_locks_clips(bool locks) { write(locks_clips_, locks); }
    std::string creator() const { return read(creator_); }
    void set_creator(std::string user) { write(creator_, std::move(user)); }

    movie_Part_DRONE_Offsets_Root parts() const { return read(parts_); }
    void set_parts(movie_Part_DRONE_Offsets_Root parts) { write(parts_, std::move(parts)); }

    // Where its data lies; empty when it was not found. Not stored.
    std::string data_folder() const { return read(data_folder_); }
    void set_data_folder(std::string folder) { write(data_folder_, std::move(folder)); }
    // Why the vistel, or a part of it, cannot be shown, for the user; empty when all is well. Not stored.
    std::string problem() const { return read(problem_); }
    void set_problem(std::string text) { write(problem_, std::move(text)); }

    // All values as read; what has a field above is replaced when written, and unknown keys stay.
    property_dictionary stored_item() const { return read(stored_item_); }
    void set_stored_item(property_dictionary stored) { write(stored_item_, std::move(stored)); }
    property_dictionary stored_vistel() const { return read(stored_vistel_); }
    void set_stored_vistel(property_dictionary stored) { write(stored_vistel_, std::move(stored)); }

  private:
    std::string uuid_;
    double number_ = 0;
    std::string name_;
    std::optional<double> manual_start_offset_;
    std::optional<rectangle> proportion_rect_;
    int vistel_number_displayed_ = 0;
    int saved_view_order_ = 0;
    bool flicked_in_ = false;
    bool saves_data_locally_ = false;
    bool locks_clips_ = false;
    std::string creator_;
    movie_Part_DRONE_Offsets_Root parts_;
    std::string data_folder_;
    std::string problem_;
    property_dictionary stored_item_;
    property_dictionary stored_vistel_;
};

// Reads an element of "array video group items". Lenient: a missing or wrongly typed value keeps its default.
single_Vistel_CTR read_vistel_item(const property_dictionary& stored);
property_dictionary write_vistel_item(const single_Vistel_CTR& vistel);

// Takes what "single video.plist" holds: its movie parts, and the values that the item record left open.
void read_vistel_record(single_Vistel_CTR& vistel, const property_dictionary& stored);
property_dictionary write_vistel_record(const single_Vistel_CTR& vistel);

}  // namespace vistels
