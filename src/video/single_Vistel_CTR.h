// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "util/colour_text.h"
#include "util/failure.h"
#include "util/property_value.h"
#include "util/record.h"
#include "video/movie_Part_DRONE_Offset_Item.h"

namespace vistels {

// A picture drawn over a vistel's own.
struct vistel_overlay {
    std::string picture;          // name of a file in the vistel's data folder
    rectangle frame{0, 0, 1, 1};  // as fractions of the vistel's picture, from its upper left corner
    double opacity = 1;           // 0 to 1
    bool operator==(const vistel_overlay&) const = default;
};

// What stands in a vistel's own record beside the values that it shares with its collection's.
struct vistel_own_values {
    std::string name;            // "Vistel video name"
    double number = 0;           // "Vistel name UUID"; 0: none
    int shown_number = 0;        // "vistel number"
    std::string http_file;       // "http file"
    std::string capture_preset;  // "capture preset"
};

// One vistel of a collection: what the collection's item record and the vistel's own record hold about it.
// Every accessor takes `lk` for that one read or write, so any thread may read while the main thread changes.
class single_Vistel_CTR : record {
  public:
    // Names the vistel's data folder ("UUID single video - g").
    std::string uuid() const { return read(uuid_); }
    void set_uuid(std::string uuid) { write(uuid_, std::move(uuid)); }
    // By which clips and composers refer to the vistel; positive, or 0 when it has none.
    double number() const { return read(number_); }
    void set_number(double number);
    std::string name() const { return read(name_); }
    void set_name(std::string name);
    // Seconds, may be negative; nothing when none is stored, which counts as 0 for playing.
    std::optional<double> manual_start_offset() const { return read(manual_start_offset_); }
    void set_manual_start_offset(std::optional<double> seconds) { write(manual_start_offset_, seconds); }
    // The view's frame as fractions of the collection's video area, from its upper left corner.
    std::optional<rectangle> proportion_rect() const { return read(proportion_rect_); }
    void set_proportion_rect(std::optional<rectangle> frame) { write(proportion_rect_, frame); }
    // The frame to return to after an enlargement; nothing: it stays where it is.
    std::optional<rectangle> remembered_proportion_rect() const { return read(remembered_proportion_rect_); }
    void set_remembered_proportion_rect(std::optional<rectangle> frame) {
        write(remembered_proportion_rect_, frame);
    }
    // The frame of a view that no collection places.
    std::optional<rectangle> default_proportion_rect() const { return read(default_proportion_rect_); }
    void set_default_proportion_rect(std::optional<rectangle> frame) {
        write(default_proportion_rect_, frame);
    }
    // The number shown on the view, and its place among those that are shown.
    int vistel_number_displayed() const { return read(vistel_number_displayed_); }
    void set_vistel_number_displayed(int number);
    int vistel_number_displayed_ordinal() const { return read(vistel_number_displayed_ordinal_); }
    void set_vistel_number_displayed_ordinal(int place) { write(vistel_number_displayed_ordinal_, place); }
    int saved_view_order() const { return read(saved_view_order_); }  // the largest stands in front
    void set_saved_view_order(int order) { write(saved_view_order_, order); }
    bool flicked_in() const { return read(flicked_in_); }  // enlarged over the others
    void set_flicked_in(bool enlarged) { write(flicked_in_, enlarged); }
    // Degrees clockwise by which the view is turned while enlarged.
    double flicked_in_rotation() const { return read(flicked_in_rotation_); }
    void set_flicked_in_rotation(double degrees) { write(flicked_in_rotation_, degrees); }
    bool saves_data_locally() const { return read(saves_data_locally_); }
    void set_saves_data_locally(bool locally) { write(saves_data_locally_, locally); }
    bool locks_clips() const { return read(locks_clips_); }  // clips move with the movie parts
    void set_locks_clips(bool locks) { write(locks_clips_, locks); }
    // A still picture that is shown at all times; it has no movie parts.
    bool is_inserted_picture() const { return read(is_inserted_picture_); }
    void set_is_inserted_picture(bool is_picture) { write(is_inserted_picture_, is_picture); }
    std::optional<vistel_overlay> overlay() const { return read(overlay_); }
    void set_overlay(std::optional<vistel_overlay> overlay) { write(overlay_, std::move(overlay)); }
    // Address of a streamed movie, of which the movie parts are a local copy; empty: it is not streamed.
    std::string http_file() const { return read(http_file_); }
    void set_http_file(std::string address);
    std::string capture_device() const { return read(capture_device_); }  // the camera's name
    void set_capture_device(std::string name) { write(capture_device_, std::move(name)); }
    std::string capture_sound_device() const { return read(capture_sound_device_); }
    void set_capture_sound_device(std::string name) { write(capture_sound_device_, std::move(name)); }
    std::string capture_preset() const { return read(capture_preset_); }
    void set_capture_preset(std::string preset);
    // The composer from which the vistel was made; empty: none.
    std::string linked_composer() const { return read(linked_composer_); }
    void set_linked_composer(std::string uuid) { write(linked_composer_, std::move(uuid)); }
    // Who made it; who did not is asked before closing it for good.
    std::string creator() const { return read(creator_); }
    void set_creator(std::string user) { write(creator_, std::move(user)); }

    // What the vistel's own record says of itself, which may be something else than what its collection
    // says: it changes with the fields above, and only then.
    vistel_own_values own_values() const { return read(own_values_); }
    void set_own_values(vistel_own_values values) { write(own_values_, std::move(values)); }

    movie_Part_DRONE_Offsets_Root parts() const { return read(parts_); }
    void set_parts(movie_Part_DRONE_Offsets_Root parts) { write(parts_, std::move(parts)); }

    // The parts as they were found when loading or as saved last: only parts that differ are written, so that
    // a file that is missing or one too many changes no record. Nothing: parts that differ from the record
    // read are written. Not stored.
    std::optional<movie_Part_DRONE_Offsets_Root> parts_on_record() const { return read(parts_on_record_); }
    void set_parts_on_record(std::optional<movie_Part_DRONE_Offsets_Root> parts) {
        write(parts_on_record_, std::move(parts));
    }

    // Where its data lies; empty when it was not found. Not stored.
    std::string data_folder() const { return read(data_folder_); }
    void set_data_folder(std::string folder) { write(data_folder_, std::move(folder)); }
    // Why the vistel, or a part of it, cannot be shown; none when all is well. Not stored.
    failure problem() const { return read(problem_); }
    void set_problem(failure reason) { write(problem_, std::move(reason)); }

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
    std::optional<rectangle> remembered_proportion_rect_;
    std::optional<rectangle> default_proportion_rect_;
    int vistel_number_displayed_ = 0;
    int vistel_number_displayed_ordinal_ = 0;
    int saved_view_order_ = 0;
    bool flicked_in_ = false;
    bool saves_data_locally_ = false;
    bool locks_clips_ = false;
    double flicked_in_rotation_ = 0;
    bool is_inserted_picture_ = false;
    std::optional<vistel_overlay> overlay_;
    std::string http_file_;
    std::string capture_device_;
    std::string capture_sound_device_;
    std::string capture_preset_;
    std::string linked_composer_;
    std::string creator_;
    vistel_own_values own_values_;
    movie_Part_DRONE_Offsets_Root parts_;
    std::optional<movie_Part_DRONE_Offsets_Root> parts_on_record_;
    std::string data_folder_;
    failure problem_;
    property_dictionary stored_item_;
    property_dictionary stored_vistel_;
};

// Reads an element of "array video group items". Lenient: a missing or wrongly typed value keeps its default.
single_Vistel_CTR read_vistel_item(const property_dictionary& stored);
property_dictionary write_vistel_item(const single_Vistel_CTR& vistel);

// Takes what "single video.plist" holds: its movie parts and what it alone knows. Of what both records hold
// the item's counts, since that is the collection's own; the vistel's stands in for what the item lacks, but
// never for the number and the offset: a vistel without them in its item has none in the collection.
void read_vistel_record(single_Vistel_CTR& vistel, const property_dictionary& stored);
property_dictionary write_vistel_record(const single_Vistel_CTR& vistel);

// The movie files in a vistel's folder that are no parts any more, by name, as its record lists them. They
// are kept, so that a change of the parts can be taken back, and are not taken for parts.
std::vector<std::string> unused_movies(const property_dictionary& vistel_record);
// Lists them; of none the key is taken away.
void set_unused_movies(property_dictionary& vistel_record, const std::vector<std::string>& names);

}  // namespace vistels
