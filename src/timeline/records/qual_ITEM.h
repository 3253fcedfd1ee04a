// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "timeline/form/compact_text.h"
#include "timeline/form/point.h"
#include "timeline/records/clip_attribute_ITEM.h"
#include "util/colour_text.h"
#include "util/property_value.h"
#include "util/record.h"
#include "util/shared_text.h"

namespace vistels {

class stored_sink;
class stored_view;
class text_cache;

// What few qualifiers have; shared by copies of one qualifier, so never changed.
struct qual_rare_fields {
    shared_text ql_RECEPIENT;
    shared_text ql_ACTOR;
    shared_text ql_ALIAS;
    shared_text ql_FOCUS_Vistel;
    std::optional<double> ql_VALUE;
    std::optional<rectangle> ql_ZOOM_rect;
    std::optional<double> _pos_x;
    std::optional<double> _pos_y;
    std::int64_t ql_created_on_EVENT_j5 = 0;
    std::vector<clip_attribute_ITEM> ql_ATTRIBUTES;
    property_dictionary kept;
};

// The fields of a qualifier. A timeline has millions of them: what is rare lies in a block of its own.
// What a filter looks at comes first, so that it stands in few lines of the processor's cache.
struct qual_fields {
    shared_text _name;
    shared_text _cat;
    mutable bool filtered_IN = false;
    mutable bool filtered_IN_previous = false;
    bool ql_ALT_time_COUNT_DOWN_i12 = false;
    compact_text _uuid;
    compact_text ql_REAL_LOCAL_TIME;
    std::shared_ptr<const qual_rare_fields> rare;  // null when all of it is at its default
    double _qual_time = 0;
    std::optional<double> ql_ALT_time_i11;
    std::optional<colour> _col;
};

// One qualifier on a clip: a label stamped at a moment. Values are set before the qualifier is put on a clip
// and do not change afterwards (an edit puts a changed copy in its place); the filter's marks and the other
// fields of this run may, by any thread. Every accessor takes `lk` for that one read or write.
class qual_ITEM : record, qual_fields {
  public:
    qual_ITEM() = default;
    explicit qual_ITEM(qual_fields fields) : qual_fields(std::move(fields)) {}
    qual_ITEM(const qual_ITEM& other) : record(other), qual_fields(other.fields()) {}
    qual_ITEM(qual_ITEM&& other) noexcept : qual_fields(std::move(static_cast<qual_fields&>(other))) {}
    qual_ITEM& operator=(const qual_ITEM& other) { return *this = qual_ITEM(other); }
    qual_ITEM& operator=(qual_ITEM&& other) noexcept;

    std::string uuid() const { return read(_uuid).str(); }
    void set_uuid(std::string_view uuid) { write(_uuid, compact_text(uuid)); }
    shared_text name() const { return read(_name); }
    void set_name(shared_text name) { write(_name, std::move(name)); }
    shared_text category() const { return read(_cat); }
    void set_category(shared_text category) { write(_cat, std::move(category)); }
    double time() const { return read(_qual_time); }  // seconds on the collection's clock
    void set_time(double seconds) { write(_qual_time, seconds); }
    // Another time, such as a game clock's, in seconds; and whether that clock counts down.
    std::optional<double> alt_time() const { return read(ql_ALT_time_i11); }
    void set_alt_time(std::optional<double> seconds) { write(ql_ALT_time_i11, seconds); }
    bool alt_time_counts_down() const { return read(ql_ALT_time_COUNT_DOWN_i12); }
    void set_alt_time_counts_down(bool down) { write(ql_ALT_time_COUNT_DOWN_i12, down); }
    std::string real_local_time() const { return read(ql_REAL_LOCAL_TIME).str(); }  // wall clock, "14:05:09"
    void set_real_local_time(std::string_view time) { write(ql_REAL_LOCAL_TIME, compact_text(time)); }
    std::optional<colour> col() const { return read(_col); }
    void set_col(std::optional<colour> colour) { write(_col, colour); }
    std::vector<clip_attribute_ITEM> attributes() const { return part(&qual_rare_fields::ql_ATTRIBUTES); }
    void set_attributes(std::vector<clip_attribute_ITEM> all) {
        set_part(&qual_rare_fields::ql_ATTRIBUTES, std::move(all));
    }
    shared_text recepient() const { return part(&qual_rare_fields::ql_RECEPIENT); }  // to whom
    void set_recepient(shared_text text) { set_part(&qual_rare_fields::ql_RECEPIENT, std::move(text)); }
    shared_text actor() const { return part(&qual_rare_fields::ql_ACTOR); }  // who did it
    void set_actor(shared_text text) { set_part(&qual_rare_fields::ql_ACTOR, std::move(text)); }
    std::optional<double> value() const { return part(&qual_rare_fields::ql_VALUE); }
    void set_value(std::optional<double> value) { set_part(&qual_rare_fields::ql_VALUE, value); }
    shared_text alias() const { return part(&qual_rare_fields::ql_ALIAS); }  // shown in place of the name
    void set_alias(shared_text text) { set_part(&qual_rare_fields::ql_ALIAS, std::move(text)); }
    // The vistel to show when the qualifier is played.
    shared_text focus_vistel() const { return part(&qual_rare_fields::ql_FOCUS_Vistel); }
    void set_focus_vistel(shared_text text) { set_part(&qual_rare_fields::ql_FOCUS_Vistel, std::move(text)); }
    // A zoom area in the video, in proportions from 0 to 1.
    std::optional<rectangle> zoom_rect() const { return part(&qual_rare_fields::ql_ZOOM_rect); }
    void set_zoom_rect(std::optional<rectangle> area) { set_part(&qual_rare_fields::ql_ZOOM_rect, area); }
    // Where it was stamped on a picture, such as a pitch.
    std::optional<point> pos() const;
    void set_pos(std::optional<point> place);
    // The number of the input event that made it; 0 = none. Not stored.
    std::int64_t created_on_event() const { return part(&qual_rare_fields::ql_created_on_EVENT_j5); }
    void set_created_on_event(std::int64_t number) {
        set_part(&qual_rare_fields::ql_created_on_EVENT_j5, number);
    }
    // Stored values whose use is not built yet, by their stored key: "action".
    property_dictionary kept() const { return part(&qual_rare_fields::kept); }

    // The filter's marks: this qualifier made its clip pass, now and by the filter before.
    bool filtered_in() const { return read(filtered_IN); }
    void set_filtered_in(bool passes) const { write_mark(filtered_IN, passes); }
    // Both at once.
    void set_filter_marks(bool passes, bool passed_before) const {
        const record_guard guard(lk);
        std::atomic_ref(filtered_IN).store(passes, std::memory_order_relaxed);
        std::atomic_ref(filtered_IN_previous).store(passed_before, std::memory_order_relaxed);
    }

    // For a walk over all clips of a timeline, without the lock: a qualifier on a clip keeps its values, and
    // marks are read as they stand.
    const shared_text& name_in_place() const { return _name; }
    const shared_text& category_in_place() const { return _cat; }
    // Null when there are none.
    const std::vector<clip_attribute_ITEM>* attributes_in_place() const {
        return rare ? &rare->ql_ATTRIBUTES : nullptr;
    }
    bool filtered_in_now() const { return peek(filtered_IN); }
    bool filtered_in_previous_now() const { return peek(filtered_IN_previous); }
    const void* first_looked_at() const { return &_name; }
    const void* last_looked_at() const { return &filtered_IN_previous; }

    // Equal in everything that is stored.
    bool operator==(const qual_ITEM& other) const;

    // All fields, copied under the lock.
    qual_fields fields() const;
    // Writes the stored values under the lock.
    void put_values(stored_sink& to) const;

  private:
    template <class Field>
    Field part(Field qual_rare_fields::*field) const {
        const record_guard guard(lk);
        return rare ? (*rare).*field : Field();
    }
    template <class Field>
    void set_part(Field qual_rare_fields::*field, Field value) {
        const record_guard guard(lk);
        const auto changed = std::make_shared<qual_rare_fields>();
        if (rare) *changed = *rare;
        (*changed).*field = std::move(value);
        rare = changed;
    }
};

// Reading is lenient: a missing or wrongly typed value keeps the default, older spellings count.
qual_ITEM read_qual_item(const stored_view& stored, text_cache& texts);
// Whether it has a key of a qualifier; what has none is none.
bool is_qual_item(const stored_view& stored);
qual_ITEM read_qual_item(const property_dictionary& stored);
// The keys in their stored order; values that are not set are left out. The time has 8 decimals.
property_dictionary write_qual_item(const qual_ITEM& qualifier);

}  // namespace vistels
