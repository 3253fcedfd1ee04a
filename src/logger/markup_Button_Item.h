// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "logger/logger_item_display_info.h"
#include "logger/markup_Button_Action_Link_ITEM.h"
#include "timeline/records/trigger_event_ITEM.h"
#include "util/colour_text.h"
#include "util/property_value.h"
#include "util/record.h"
#include "util/shared_record.h"

namespace vistels {

// What a press of a button makes; the numbers are the stored codes.
enum class button_type : std::int64_t {
    clip = 10,
    qualifier = 20,
    none = 30,
    attribute = 40,
    timer_clip = 50,
    trigger = 60,
};

// "Timer Clip" for 50; "missing markup type" for an unknown code.
std::string_view button_type_name(std::int64_t code);
// 0 for a name that is none of the six.
std::int64_t button_type_code(std::string_view name);

// Which qualifier an attribute goes to, as stored: "B", "A", "Last and Next".
enum class attribute_stage { next, last, last_and_next };
// Nothing for a text that is none of the three.
std::optional<attribute_stage> attribute_stage_from_text(std::string_view stored);
std::string_view attribute_stage_text(attribute_stage stage);
// "Next Qualifier"; "unknown stage type" for a text that is none of the three.
std::string_view attribute_stage_name(std::string_view stored);

// The types of triggers that do something.
inline constexpr const char* going_down_trigger = "going down";
inline constexpr const char* going_up_trigger = "going up";
// That of one which a button adds when it names none.
inline constexpr const char* default_trigger_type = going_down_trigger;

// The field drawn on a button: where on it a press was is noted with what it makes.
struct button_field {
    bool Cartesian = false;
    std::int64_t Cartesian_Traces = 0;  // how many are shown
    std::string trace_type;
    // What the left and the upper edge stand for, the right and the lower edge, and how finely a place is
    // told (0: exactly). Without the first of them a place is a proportion from 0 to 1.
    std::optional<double> scale_start_X;
    double scale_start_Y = 0;
    double scale_end_X = 0;
    double scale_end_Y = 0;
    double scale_step_X = 0;
    double scale_step_Y = 0;

    bool operator==(const button_field&) const = default;
};

// A formula and how the button shows its result.
struct button_formula {
    std::string filter;
    std::string output_string;  // what it showed last
    std::string output_type;
    std::string output_time_format;
    bool remove_prefix_0s = false;
    property_dictionary multi_formula;

    bool operator==(const button_formula&) const = default;
};

// The fields of a button; see markup_Button_Item.
struct button_fields {
    std::string _uuid;
    std::string _name;
    std::string _cat;
    std::int64_t button_Type = 0;
    std::string UUID_pic;
    std::string action_link_to_UUID;
    std::int64_t sort_order = 0;
    double secs_in = 0;
    double secs_out = 0;
    bool auto_up = false;
    bool delayed_up = false;
    double auto_up_duration = 0;
    bool allow_overlapping_clips = false;
    bool merge_clips = false;
    bool block_qualifiers = false;
    bool center_fire = false;
    bool pause_movies = false;
    bool note_up = false;
    bool note_down = false;
    bool last_up = false;
    bool last_down = false;
    bool next_up = false;
    bool next_down = false;
    bool ignore_tab = false;
    bool Timer_Clip_Cumulative = false;
    bool Timer_Clip_Count_Down = false;
    double Timer_Clip_Offset = 0;
    bool renamer = false;
    bool change_colour = false;
    bool change_name = false;
    bool change_category = false;
    bool lister = false;
    std::string lister_button_text;
    bool button_lock = false;
    std::string attribute_stage;
    std::string trigger_type;
    button_formula formula;
    button_field field;
    std::vector<trigger_event_ITEM> trig_array;
    std::vector<markup_Button_Action_Link_ITEM> action_links;
    logger_item_display_info display;
    property_dictionary stored;
    std::string made_up_uuid;  // the UUID, when it is one for this run only

    bool operator==(const button_fields&) const = default;
};

// One button of a code window. Every accessor takes `lk` for that one read or write. All times in seconds.
class markup_Button_Item : record, button_fields {
  public:
    markup_Button_Item() = default;
    markup_Button_Item(const markup_Button_Item& other) : record(other), button_fields(other.fields()) {}
    markup_Button_Item(markup_Button_Item&& other) noexcept
        : button_fields(std::move(static_cast<button_fields&>(other))) {}
    markup_Button_Item& operator=(const markup_Button_Item& other) {
        return *this = markup_Button_Item(other);
    }
    markup_Button_Item& operator=(markup_Button_Item&& other) noexcept;

    // Names the button: its states and links go by it.
    std::string uuid() const { return read(_uuid); }
    void set_uuid(std::string uuid) { write(_uuid, std::move(uuid)); }
    // A UUID for this run only: what is stored under "uuid" stays as it was read.
    void set_made_up_uuid(std::string uuid);
    // Also the name of the row, clips or qualifiers that it makes, with the category of that name.
    std::string name() const { return read(_name); }
    void set_name(std::string name) { write(_name, std::move(name)); }
    std::string category() const { return read(_cat); }
    void set_category(std::string category) { write(_cat, std::move(category)); }
    std::int64_t type_code() const { return read(button_Type); }  // unknown codes are kept
    void set_type(button_type type) { write(button_Type, static_cast<std::int64_t>(type)); }
    bool is(button_type type) const { return type_code() == static_cast<std::int64_t>(type); }
    // Whether its press makes a clip: types Clip and Timer Clip, but no renamer.
    bool makes_clips() const;
    std::string picture_id() const { return read(UUID_pic); }  // see button_picture_path
    void set_picture_id(std::string id) { write(UUID_pic, std::move(id)); }
    // The UUID of a row, or of another button; empty: of none.
    std::string action_link_to() const { return read(action_link_to_UUID); }
    void set_action_link_to(std::string uuid) { write(action_link_to_UUID, std::move(uuid)); }
    std::int64_t sort_order() const { return read(button_fields::sort_order); }  // its place in lists
    void set_sort_order(std::int64_t place) { write(button_fields::sort_order, place); }

    double secs_in() const { return read(button_fields::secs_in); }  // added before the press
    void set_secs_in(double seconds) { write(button_fields::secs_in, seconds); }
    double secs_out() const { return read(button_fields::secs_out); }  // added after the release
    void set_secs_out(double seconds) { write(button_fields::secs_out, seconds); }
    bool auto_up() const { return read(button_fields::auto_up); }
    void set_auto_up(bool on) { write(button_fields::auto_up, on); }
    bool delayed_up() const { return read(button_fields::delayed_up); }
    void set_delayed_up(bool on) { write(button_fields::delayed_up, on); }
    double auto_up_duration() const { return read(button_fields::auto_up_duration); }
    void set_auto_up_duration(double seconds) { write(button_fields::auto_up_duration, seconds); }
    bool allow_overlapping_clips() const { return read(button_fields::allow_overlapping_clips); }
    void set_allow_overlapping_clips(bool on) { write(button_fields::allow_overlapping_clips, on); }
    bool merge_clips() const { return read(button_fields::merge_clips); }
    void set_merge_clips(bool on) { write(button_fields::merge_clips, on); }
    bool block_qualifiers() const { return read(button_fields::block_qualifiers); }
    void set_block_qualifiers(bool on) { write(button_fields::block_qualifiers, on); }
    bool center_fire() const { return read(button_fields::center_fire); }  // a press counts as in the middle
    void set_center_fire(bool on) { write(button_fields::center_fire, on); }
    bool pause_movies() const { return read(button_fields::pause_movies); }
    void set_pause_movies(bool on) { write(button_fields::pause_movies, on); }
    // A note is taken on release, on press.
    bool note_up() const { return read(button_fields::note_up); }
    void set_note_up(bool on) { write(button_fields::note_up, on); }
    bool note_down() const { return read(button_fields::note_down); }
    void set_note_down(bool on) { write(button_fields::note_down, on); }
    // The button before it, or after it, of its category is pressed with it.
    bool last_up() const { return read(button_fields::last_up); }
    void set_last_up(bool on) { write(button_fields::last_up, on); }
    bool last_down() const { return read(button_fields::last_down); }
    void set_last_down(bool on) { write(button_fields::last_down, on); }
    bool next_up() const { return read(button_fields::next_up); }
    void set_next_up(bool on) { write(button_fields::next_up, on); }
    bool next_down() const { return read(button_fields::next_down); }
    void set_next_down(bool on) { write(button_fields::next_down, on); }
    bool ignore_tab() const { return read(button_fields::ignore_tab); }
    void set_ignore_tab(bool on) { write(button_fields::ignore_tab, on); }
    // Of a timer clip's clock: it adds up over the clips of the row, counts down, and where it begins.
    bool timer_is_cumulative() const { return read(Timer_Clip_Cumulative); }
    void set_timer_is_cumulative(bool on) { write(Timer_Clip_Cumulative, on); }
    bool timer_counts_down() const { return read(Timer_Clip_Count_Down); }
    void set_timer_counts_down(bool on) { write(Timer_Clip_Count_Down, on); }
    double timer_offset() const { return read(Timer_Clip_Offset); }
    void set_timer_offset(double seconds) { write(Timer_Clip_Offset, seconds); }
    // A press moves the selected clips to the row of its name and category and gives them its colour; with
    // any of the three "changes" set only those.
    bool renamer() const { return read(button_fields::renamer); }
    void set_renamer(bool on) { write(button_fields::renamer, on); }
    bool changes_colour() const { return read(change_colour); }
    void set_changes_colour(bool on) { write(change_colour, on); }
    bool changes_name() const { return read(change_name); }
    void set_changes_name(bool on) { write(change_name, on); }
    bool changes_category() const { return read(change_category); }
    void set_changes_category(bool on) { write(change_category, on); }
    bool lister() const { return read(button_fields::lister); }  // shows the clips of its row as a list
    void set_lister(bool on) { write(button_fields::lister, on); }
    std::string lister_text() const { return read(lister_button_text); }
    void set_lister_text(std::string text) { write(lister_button_text, std::move(text)); }
    bool button_lock() const { return read(button_fields::button_lock); }  // it cannot be moved or resized
    void set_button_lock(bool on) { write(button_fields::button_lock, on); }
    // As stored; a text that is none of the stages is kept and counts as "last".
    std::string stage_text() const { return read(button_fields::attribute_stage); }
    vistels::attribute_stage stage() const;
    void set_stage(vistels::attribute_stage stage);
    // Of a trigger that its press adds; empty: default_trigger_type.
    std::string trigger_type() const { return read(button_fields::trigger_type); }
    void set_trigger_type(std::string type) { write(button_fields::trigger_type, std::move(type)); }

    button_formula formula() const { return read(button_fields::formula); }
    void set_formula(button_formula formula) { write(button_fields::formula, std::move(formula)); }
    button_field field() const { return read(button_fields::field); }
    void set_field(button_field field) { write(button_fields::field, std::move(field)); }
    // When playback puts the button down or up, in the order in which they were added.
    std::vector<trigger_event_ITEM> triggers() const { return read(trig_array); }
    bool has_triggers() const {
        const record_guard guard(lk);
        return !trig_array.empty();
    }
    void set_triggers(std::vector<trigger_event_ITEM> all) { write(trig_array, std::move(all)); }
    // What its going down or up does to other buttons, in this order.
    std::vector<markup_Button_Action_Link_ITEM> action_links() const {
        return read(button_fields::action_links);
    }
    bool has_action_links() const {
        const record_guard guard(lk);
        return !button_fields::action_links.empty();
    }
    void set_action_links(std::vector<markup_Button_Action_Link_ITEM> links) {
        write(button_fields::action_links, std::move(links));
    }
    logger_item_display_info display() const { return read(button_fields::display); }
    void set_display(logger_item_display_info display) { write(button_fields::display, std::move(display)); }
    // Whether a key presses it.
    bool is_pressed_by(const key_stroke& key) const;
    // The colour of what the button makes.
    std::optional<colour> made_colour() const;

    // The dictionary as it was read, with everything that has no field here.
    property_dictionary stored() const { return read(button_fields::stored); }
    // Replaces a stored value that has no field here; a null takes it away.
    void set_stored(std::string_view key, property_value value);

    // All fields, copied under the lock.
    button_fields fields() const;
    bool operator==(const markup_Button_Item& other) const { return fields() == other.fields(); }

  private:
    friend markup_Button_Item read_button(const property_dictionary& stored);
};

// A button as a value that costs a pointer to copy; the record behind it does not change.
using button_record = shared_record<markup_Button_Item>;
inline bool operator==(const button_record& a, const button_record& b) {
    return a.pointer() == b.pointer() || *a == *b;
}
// The same button with something changed.
template <class Change>
button_record changed_button(const button_record& button, Change change) {
    markup_Button_Item copy = *button;
    change(copy);
    return copy;
}

// Reads a button as stored: every key is optional, a value of the wrong type keeps the default. "delayed up"
// sets "auto up". A button stored without a "uuid" gets one for this run.
markup_Button_Item read_button(const property_dictionary& stored);

// The stored form: what was read, with the fields that have changed since set in it, or taken out of it where
// they are at their default now; of a new button the values that are not the default, in the stored order.
property_dictionary write_button(const markup_Button_Item& button);

// A trigger as buttons and clips store it.
property_dictionary write_trigger(const trigger_event_ITEM& trigger);
std::optional<trigger_event_ITEM> read_trigger(const property_value& stored);  // one without a time is none

}  // namespace vistels
