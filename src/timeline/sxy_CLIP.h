// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "timeline/qual_ITEM.h"
#include "util/colour_text.h"
#include "util/property_value.h"
#include "util/record.h"
#include "util/result.h"
#include "util/shared_text.h"

namespace vistels {

// What a clip stands for; the numbers are those in memory, the stored form is a text.
enum class clip_type : int { normal = 0, picture = 20, movie = 30, unknown = -1 };

// One clip: a span of seconds on the collection's clock, with what was coded about it.
//
// A clip that is on a timeline is shared between threads and its stored values do not change: an edit puts a
// changed copy in its place. Only the display state (selected, filtered in) is set on it, by any thread.
// Every accessor takes `lk` for that one read or write.
class sxy_CLIP : record {
  public:
    std::string id() const { return read(_id); }
    void set_id(std::string uuid) { write(_id, std::move(uuid)); }
    double secs_start() const { return read(secs_start_); }  // seconds on the collection's clock
    void set_secs_start(double seconds) { write(secs_start_, seconds); }
    double secs_end() const { return read(secs_end_); }
    void set_secs_end(double seconds) { write(secs_end_, seconds); }
    // The row that the clip was made on; both survive a move to another row.
    shared_text row_category_in_clip() const { return read(row_category_sxy__in_clip); }
    void set_row_category_in_clip(shared_text text) { write(row_category_sxy__in_clip, std::move(text)); }
    shared_text row_uuid_in_clip() const { return read(row_UUID_sxy__in_clip); }
    void set_row_uuid_in_clip(shared_text text) { write(row_UUID_sxy__in_clip, std::move(text)); }
    std::optional<colour> col() const { return read(col_); }  // nothing: the row's colour shows
    void set_col(std::optional<colour> colour) { write(col_, colour); }
    int stars() const { return read(stars_); }  // 0 = none
    void set_stars(int stars) { write(stars_, stars); }
    clip_type type() const { return read(clip_TYPE); }
    void set_type(clip_type type) { write(clip_TYPE, type); }

    // The qualifiers in stamping order; never null.
    std::shared_ptr<const qual_ROOT> qualifiers() const { return read(qual_Root); }
    void set_qualifiers(qual_ROOT all) {
        write(qual_Root, std::make_shared<const qual_ROOT>(std::move(all)));
    }

    // Stored values that have no field of their own, by their stored key (the newer spelling).
    property_dictionary kept() const { return read(kept_); }
    void set_kept(property_dictionary kept) { write(kept_, std::move(kept)); }
    // The text of the clip's note ("note_string"), or the empty text.
    std::string note_text() const;

    bool selected() const { return read(selected_); }
    void set_selected(bool selected) const { write(selected_, selected); }
    bool filtered_in() const { return read(filtered_in_); }
    void set_filtered_in(bool passes) const { write(filtered_in_, passes); }

    // A start after the end is put in order.
    void order_times();

  private:
    std::string _id;
    double secs_start_ = 0;
    double secs_end_ = 0;
    shared_text row_category_sxy__in_clip;
    shared_text row_UUID_sxy__in_clip;
    std::optional<colour> col_;
    int stars_ = 0;
    clip_type clip_TYPE = clip_type::normal;
    std::shared_ptr<const qual_ROOT> qual_Root = no_qualifiers();
    property_dictionary kept_;
    mutable bool selected_ = false;
    mutable bool filtered_in_ = true;

    static std::shared_ptr<const qual_ROOT> no_qualifiers();
};

using clip_pointer = std::shared_ptr<const sxy_CLIP>;

// The order of the clips of a row: ascending start, then end, then UUID.
bool clip_before(const sxy_CLIP& a, const sxy_CLIP& b);

// The text stored for a type: nothing at all for a normal clip.
std::optional<std::string> clip_type_text(clip_type type);
clip_type clip_type_from_text(const std::string& text);

// Reads a clip as stored. Nothing when either of its times cannot be read; everything else is lenient.
std::optional<sxy_CLIP> read_clip(const property_dictionary& stored);
// The stored form, keys in their order, values that are not set left out.
property_dictionary write_clip(const sxy_CLIP& clip);
// The same without the qualifiers.
property_dictionary write_clip_values(const sxy_CLIP& clip);

// A copy of `clip` with the stored keys in `set` given those values and the keys in `unset` taken away. The
// clip's identity and its qualifiers are not changed this way.
sxy_CLIP clip_with(const sxy_CLIP& clip, const property_dictionary& set, const property_array& unset);

}  // namespace vistels
