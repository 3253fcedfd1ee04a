// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "timeline/form/copied_ptr.h"
#include "timeline/form/value_change.h"
#include "timeline/records/clip_Pause_Item.h"
#include "timeline/records/clip_note.h"
#include "timeline/records/qual_ROOT.h"
#include "timeline/records/sxy_CLIP_telestration_data_24.h"
#include "timeline/records/sxy_clip_EDIT_info_k11.h"
#include "timeline/records/sxy_clip_inserted_object_ITEM_25__eg_pic.h"
#include "timeline/records/sxy_data_clip_VISTEL.h"
#include "timeline/records/trigger_event_ITEM.h"
#include "util/colour_text.h"
#include "util/property_value.h"
#include "util/record.h"
#include "util/shared_text.h"

namespace vistels {

// What a clip stands for; the numbers are those in memory, the stored form is a text.
enum class clip_type : int { normal = 0, picture = 20, movie = 30, unknown = -1 };

// What few clips have; shared by copies of one clip, so never changed.
struct clip_rare_fields {
    shared_text frame_Style_k11;
    std::optional<double> _mins;
    bool in_TIMER_CLIP__ALT_Timer_CUMULATIVE__i12 = false;
    bool in_TIMER_CLIP__is_COUNT_DOWN = false;
    bool in_NORMAL_clip_timer__is_COUNT_DOWN_i12 = false;
    std::optional<double> alt_Timer_seconds;
    std::optional<colour> alt_Timer_Colour_m01;
    shared_text comp_clip_format_psi;  // its type identifier
    compact_text clip_C_Group_25;      // c_group_ID
    copied_ptr<inserted_Objects_Root_25> inserted_Objects_Root;
    std::vector<clip_Pause_Item> pause_items;
    copied_ptr<sxy_CLIP_telestration_data_24> telestration;
    std::vector<trigger_event_ITEM> trigger_Events_Root;
    copied_ptr<sxy_data_clip_VISTEL> data_clip_VISTEL;
    std::shared_ptr<const clip_note> note;
};

// The fields of a clip. A timeline has a million of them: what is rare lies in blocks of its own.
// What a filter looks at comes first, so that it stands in few lines of the processor's cache.
struct clip_fields {
    int stars = 0;
    mutable bool selected = false;
    mutable bool filtered_in = true;
    mutable std::uint32_t temp_quick_uuid = 0;     // 0: none yet
    std::shared_ptr<const qual_ROOT> qual_Root;    // null when there are none
    std::shared_ptr<const clip_rare_fields> rare;  // null when all of it is at its default
    double secs_start = 0;
    double secs_end = 0;
    double coll_id = 0;
    shared_text row_category_sxy__in_clip;
    shared_text row_UUID_sxy__in_clip;
    std::optional<colour> col;
    sxy_clip_EDIT_info_k11 sxy_clip_Edit_info;
    clip_type clip_TYPE = clip_type::normal;
    int clip_count_position_in_timeline = 0;
    compact_text _id;
};

// One clip: a span of seconds on the collection's clock, with what was coded about it.
//
// A clip that is on a timeline is shared between threads and its stored values do not change: an edit puts a
// changed copy in its place. Only the state of this run (selected, filtered in, ...) is set on it, by any
// thread. Every accessor takes `lk` for that one read or write.
class sxy_CLIP : record, clip_fields {
  public:
    sxy_CLIP() = default;
    explicit sxy_CLIP(clip_fields fields) : clip_fields(std::move(fields)) {}
    sxy_CLIP(const sxy_CLIP& other) : record(other), clip_fields(other.fields()) {}
    sxy_CLIP(sxy_CLIP&& other) noexcept : clip_fields(std::move(static_cast<clip_fields&>(other))) {}
    sxy_CLIP& operator=(const sxy_CLIP& other) { return *this = sxy_CLIP(other); }
    sxy_CLIP& operator=(sxy_CLIP&& other) noexcept;

    std::string id() const { return short_id().str(); }
    compact_text short_id() const { return read(_id); }  // the same, quicker to compare and to hash
    bool has_id(std::string_view uuid) const;
    void set_id(std::string_view uuid) {
        write(_id, compact_text(uuid));
        write_mark(temp_quick_uuid, std::uint32_t{0});
    }
    double secs_start() const { return read(clip_fields::secs_start); }  // seconds on the collection's clock
    void set_secs_start(double seconds) { write(clip_fields::secs_start, seconds); }
    double secs_end() const { return read(clip_fields::secs_end); }
    void set_secs_end(double seconds) { write(clip_fields::secs_end, seconds); }
    // The row that the clip was made on; both survive a move to another row.
    shared_text row_category_in_clip() const { return read(row_category_sxy__in_clip); }
    void set_row_category_in_clip(shared_text text) { write(row_category_sxy__in_clip, std::move(text)); }
    shared_text row_uuid_in_clip() const { return read(row_UUID_sxy__in_clip); }
    void set_row_uuid_in_clip(shared_text text) { write(row_UUID_sxy__in_clip, std::move(text)); }
    std::optional<colour> col() const { return read(clip_fields::col); }  // nothing: the row's colour shows
    void set_col(std::optional<colour> colour) { write(clip_fields::col, colour); }
    int stars() const { return read(clip_fields::stars); }  // 0 = none
    void set_stars(int stars) { write(clip_fields::stars, stars); }
    clip_type type() const { return read(clip_TYPE); }
    void set_type(clip_type type) { write(clip_TYPE, type); }
    // The number of the collection that the clip was made in; 0 = none.
    double coll_id() const { return read(clip_fields::coll_id); }
    void set_coll_id(double number) { write(clip_fields::coll_id, number); }
    // From 1, among all clips of the timeline in start order; 0 = not known.
    int count_position() const { return read(clip_count_position_in_timeline); }
    void set_count_position(int position) { write(clip_count_position_in_timeline, position); }

    // The qualifiers in stamping order; never null.
    std::shared_ptr<const qual_ROOT> qualifiers() const;
    void set_qualifiers(qual_ROOT all);

    shared_text frame_style() const { return part(&clip_rare_fields::frame_Style_k11); }  // empty: none
    void set_frame_style(const shared_text& style);
    // The last edit; empty: none.
    sxy_clip_EDIT_info_k11 edit_info() const { return read(sxy_clip_Edit_info); }
    void set_edit_info(sxy_clip_EDIT_info_k11 info) { write(sxy_clip_Edit_info, std::move(info)); }
    // Of a clip that shows a clock: its offset in minutes, whether it adds up over the clips of the row, and
    // whether it counts down.
    std::optional<double> mins() const { return part(&clip_rare_fields::_mins); }
    void set_mins(std::optional<double> minutes) { set_part(&clip_rare_fields::_mins, minutes); }
    bool timer_is_cumulative() const {
        return part(&clip_rare_fields::in_TIMER_CLIP__ALT_Timer_CUMULATIVE__i12);
    }
    void set_timer_is_cumulative(bool adds_up) {
        set_part(&clip_rare_fields::in_TIMER_CLIP__ALT_Timer_CUMULATIVE__i12, adds_up);
    }
    bool timer_counts_down() const { return part(&clip_rare_fields::in_TIMER_CLIP__is_COUNT_DOWN); }
    void set_timer_counts_down(bool down) { set_part(&clip_rare_fields::in_TIMER_CLIP__is_COUNT_DOWN, down); }
    // Of a normal clip: its other time in seconds, whether that clock counts down, and its colour.
    std::optional<double> alt_seconds() const { return part(&clip_rare_fields::alt_Timer_seconds); }
    void set_alt_seconds(std::optional<double> seconds) {
        set_part(&clip_rare_fields::alt_Timer_seconds, seconds);
    }
    bool alt_counts_down() const { return part(&clip_rare_fields::in_NORMAL_clip_timer__is_COUNT_DOWN_i12); }
    void set_alt_counts_down(bool down) {
        set_part(&clip_rare_fields::in_NORMAL_clip_timer__is_COUNT_DOWN_i12, down);
    }
    std::optional<colour> alt_colour() const { return part(&clip_rare_fields::alt_Timer_Colour_m01); }
    void set_alt_colour(std::optional<colour> colour) {
        set_part(&clip_rare_fields::alt_Timer_Colour_m01, colour);
    }
    // The identifier of the clip format that the clip came from.
    shared_text type_id() const { return part(&clip_rare_fields::comp_clip_format_psi); }
    void set_type_id(shared_text id) { set_part(&clip_rare_fields::comp_clip_format_psi, std::move(id)); }
    // Clips with the same group belong together; empty: none.
    std::string group() const { return part(&clip_rare_fields::clip_C_Group_25).str(); }
    void set_group(std::string_view id) { set_part(&clip_rare_fields::clip_C_Group_25, compact_text(id)); }
    copied_ptr<inserted_Objects_Root_25> inserted_objects() const {
        return part(&clip_rare_fields::inserted_Objects_Root);
    }
    void set_inserted_objects(copied_ptr<inserted_Objects_Root_25> all) {
        set_part(&clip_rare_fields::inserted_Objects_Root, std::move(all));
    }
    std::vector<clip_Pause_Item> pause_items() const { return part(&clip_rare_fields::pause_items); }
    void set_pause_items(std::vector<clip_Pause_Item> all) {
        set_part(&clip_rare_fields::pause_items, std::move(all));
    }
    copied_ptr<sxy_CLIP_telestration_data_24> telestration() const {
        return part(&clip_rare_fields::telestration);
    }
    void set_telestration(copied_ptr<sxy_CLIP_telestration_data_24> data) {
        set_part(&clip_rare_fields::telestration, std::move(data));
    }
    std::vector<trigger_event_ITEM> triggers() const { return part(&clip_rare_fields::trigger_Events_Root); }
    void set_triggers(std::vector<trigger_event_ITEM> all) {
        set_part(&clip_rare_fields::trigger_Events_Root, std::move(all));
    }
    copied_ptr<sxy_data_clip_VISTEL> vistel_data() const { return part(&clip_rare_fields::data_clip_VISTEL); }
    void set_vistel_data(copied_ptr<sxy_data_clip_VISTEL> data) {
        set_part(&clip_rare_fields::data_clip_VISTEL, std::move(data));
    }
    // The clip's note, or null. Setting null takes it away.
    std::shared_ptr<const clip_note> note() const { return part(&clip_rare_fields::note); }
    void set_note(std::shared_ptr<const clip_note> note) {
        set_part(&clip_rare_fields::note, std::move(note));
    }
    // The text of the clip's note, or the empty text.
    std::string note_text() const;

    // From 1: no other clip of this run has it, copies share it until they get a UUID of their own. Given
    // when the clip comes onto a timeline, or is asked for it.
    std::uint32_t number() const {
        const std::uint32_t known = number_now();
        return known != 0 ? known : new_number();
    }
    std::uint32_t number_now() const { return peek(temp_quick_uuid); }  // 0: it has none yet

    // Those of the timeline's main view; other views keep their own.
    bool selected() const { return read(clip_fields::selected); }
    void set_selected(bool selected) const { write(clip_fields::selected, selected); }
    bool filtered_in() const { return read(clip_fields::filtered_in); }
    void set_filtered_in(bool passes) const { write_mark(clip_fields::filtered_in, passes); }
    // For a walk over all clips of a timeline, without the lock: a clip on a timeline keeps its values, and
    // marks are read as they stand. What these return lives as long as the clip; null when there is none.
    const qual_ROOT* qualifiers_in_place() const { return qual_Root.get(); }
    const clip_note* note_in_place() const { return rare ? rare->note.get() : nullptr; }
    int stars_in_place() const { return clip_fields::stars; }
    bool filtered_in_now() const { return peek(clip_fields::filtered_in); }
    const void* first_looked_at() const { return &(clip_fields::stars); }
    const void* last_looked_at() const { return &qual_Root; }
    // A start after the end is put in order.
    void order_times();

    // All fields, copied under the lock.
    clip_fields fields() const;

    friend void write_clip(const sxy_CLIP& clip, stored_sink& to);

  private:
    std::uint32_t new_number() const;
    template <class Field>
    Field part(Field clip_rare_fields::*field) const {
        const record_guard guard(lk);
        return rare ? (*rare).*field : Field();
    }
    template <class Field>
    void set_part(Field clip_rare_fields::*field, Field value) {
        const record_guard guard(lk);
        const auto changed = std::make_shared<clip_rare_fields>();
        if (rare) *changed = *rare;
        (*changed).*field = std::move(value);
        rare = changed;
    }
};

using clip_pointer = std::shared_ptr<const sxy_CLIP>;

// The order of the clips of a row: ascending start, then end, then UUID.
bool clip_before(const sxy_CLIP& a, const sxy_CLIP& b);

// The text stored for a type: nothing at all for a normal clip.
std::optional<std::string> clip_type_text(clip_type type);
clip_type clip_type_from_text(std::string_view text);

// Reads a clip as stored. Nothing when either of its times cannot be read; everything else is lenient.
std::optional<sxy_CLIP> read_clip(const stored_view& stored, text_cache& texts);
std::optional<sxy_CLIP> read_clip(const property_dictionary& stored);
// Puts the stored values, keys in their order, values that are not set left out.
void write_clip(const sxy_CLIP& clip, stored_sink& to);
property_dictionary write_clip(const sxy_CLIP& clip);
// The same without the qualifiers.
property_dictionary write_clip_values(const sxy_CLIP& clip);

// A copy of a clip with other values, and what takes these back.
struct changed_clip {
    sxy_CLIP clip;
    value_change back;
};
// The stored keys in `set` get those values and the keys in `unset` are taken away; a value of the wrong type
// counts as taken away, and a time cannot be. The clip's identity and its qualifiers are not changed this
// way.
changed_clip change_clip_values(const sxy_CLIP& clip, const property_dictionary& set,
                                const property_array& unset);
sxy_CLIP clip_with(const sxy_CLIP& clip, const property_dictionary& set, const property_array& unset);

}  // namespace vistels
