// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "logger/logger_item_display_info.h"
#include "util/colour_text.h"
#include "util/property_value.h"
#include "util/record.h"

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

// One button of a code window. Every accessor takes `lk` for that one read or write. All times in seconds.
class markup_Button_Item : record {
  public:
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

    double secs_in() const { return read(secs_in_); }  // added before the press
    void set_secs_in(double seconds) { write(secs_in_, seconds); }
    double secs_out() const { return read(secs_out_); }  // added after the release
    void set_secs_out(double seconds) { write(secs_out_, seconds); }
    bool auto_up() const { return read(auto_up_); }
    void set_auto_up(bool on) { write(auto_up_, on); }
    bool delayed_up() const { return read(delayed_up_); }
    void set_delayed_up(bool on) { write(delayed_up_, on); }
    double auto_up_duration() const { return read(auto_up_duration_); }
    void set_auto_up_duration(double seconds) { write(auto_up_duration_, seconds); }
    bool allow_overlapping_clips() const { return read(allow_overlapping_clips_); }
    void set_allow_overlapping_clips(bool on) { write(allow_overlapping_clips_, on); }
    bool merge_clips() const { return read(merge_clips_); }
    void set_merge_clips(bool on) { write(merge_clips_, on); }
    bool block_qualifiers() const { return read(block_qualifiers_); }
    void set_block_qualifiers(bool on) { write(block_qualifiers_, on); }
    bool pause_movies() const { return read(pause_movies_); }
    void set_pause_movies(bool on) { write(pause_movies_, on); }
    bool ignore_tab() const { return read(ignore_tab_); }
    void set_ignore_tab(bool on) { write(ignore_tab_, on); }
    bool button_lock() const { return read(button_lock_); }  // it cannot be moved or resized
    void set_button_lock(bool on) { write(button_lock_, on); }

    logger_item_display_info display() const { return read(display_); }
    void set_display(logger_item_display_info display) { write(display_, std::move(display)); }
    // The colour of what the button makes.
    std::optional<colour> made_colour() const;

    // The dictionary as it was read, with everything that has no field here.
    property_dictionary stored() const { return read(stored_); }
    // Replaces a stored value that has no field here; a null takes it away.
    void set_stored(std::string_view key, property_value value);

  private:
    struct stored_fields;  // which key holds which field
    friend markup_Button_Item read_button(const property_dictionary& stored);
    friend property_dictionary write_button(const markup_Button_Item& button);

    std::string _uuid;
    std::string _name;
    std::string _cat;
    std::int64_t button_Type = 0;
    double secs_in_ = 0;
    double secs_out_ = 0;
    bool auto_up_ = false;
    bool delayed_up_ = false;
    double auto_up_duration_ = 0;
    bool allow_overlapping_clips_ = false;
    bool merge_clips_ = false;
    bool block_qualifiers_ = false;
    bool pause_movies_ = false;
    bool ignore_tab_ = false;
    bool button_lock_ = false;
    logger_item_display_info display_;
    property_dictionary stored_;
    std::string made_up_uuid_;  // the UUID, when it is one for this run only
};

// Reads a button as stored: every key is optional, a value of the wrong type keeps the default. "delayed up"
// sets "auto up". A button stored without a "uuid" gets one for this run.
markup_Button_Item read_button(const property_dictionary& stored);

// The stored form: what was read, with the fields that have changed since set in it; of a new button the
// values that are not the default, in the stored order.
property_dictionary write_button(const markup_Button_Item& button);

}  // namespace vistels
