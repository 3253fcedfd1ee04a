// SPDX-License-Identifier: GPL-3.0-or-later
#include "timeline/records/qual_ITEM.h"

#include <cmath>

#include "timeline/form/stored_values.h"

namespace vistels {

namespace {

constexpr int qualifier_colour_decimals = 4;
constexpr int attribute_colour_decimals = 3;
constexpr double time_scale = 1e8;  // a qualifier's time is stored with 8 decimals

}  // namespace

template <>
struct stored_form<clip_attribute_ITEM> {
    using here = in_record<clip_attribute_ITEM>;
    static constexpr std::array fields{
        stored_member_field<here, &clip_attribute_ITEM::name>("name"),
        stored_member_field<here, &clip_attribute_ITEM::attribute_category>("category"),
        stored_member_field<here, &clip_attribute_ITEM::attribute_time>("time"),
        stored_colour_field<here, &clip_attribute_ITEM::attribute_colour, attribute_colour_decimals>("color"),
        stored_member_field<here, &clip_attribute_ITEM::uuid>("attr_uuid"),
        stored_member_field<here, &clip_attribute_ITEM::_at_pos_x>("x"),
        stored_member_field<here, &clip_attribute_ITEM::_at_pos_y>("y"),
    };
};

namespace {

// A qualifier that is being read.
struct qual_reading {
    qual_fields& to;
    text_cache& texts;
    std::shared_ptr<qual_rare_fields> changed_rare;  // made when the first rare value is met
    std::optional<double> red, green, blue, alpha;   // the colour of older files

    qual_rare_fields& rare() {
        if (!changed_rare) {
            changed_rare =
                to.rare ? std::make_shared<qual_rare_fields>(*to.rare) : std::make_shared<qual_rare_fields>();
        }
        return *changed_rare;
    }

    void finish() {
        if (!to._col && red && green && blue) to._col = colour{*red, *green, *blue, alpha.value_or(1.0)};
        if (changed_rare) to.rare = std::move(changed_rare);
    }
};

struct in_qual {
    using record_type = qual_fields;
    using reading_type = qual_reading;
    static qual_fields& of(qual_reading& reading) { return reading.to; }
    static const qual_fields* of(const qual_fields& fields) { return &fields; }
};

struct in_rare {
    using record_type = qual_fields;
    using reading_type = qual_reading;
    static qual_rare_fields& of(qual_reading& reading) { return reading.rare(); }
    static const qual_rare_fields* of(const qual_fields& fields) { return fields.rare.get(); }
};

template <auto Member>
constexpr auto plain(std::string_view key, std::string_view older = {}) {
    return stored_member_field<in_qual, Member>(key, older);
}

template <auto Member>
constexpr auto rarely(std::string_view key) {
    return stored_member_field<in_rare, Member>(key);
}

// A component of the colour of older files; read, never written.
template <auto Component>
constexpr auto old_colour(std::string_view key) {
    return stored_field<qual_fields, qual_reading>{key,
                                                   {},
                                                   [](qual_reading& reading, const stored_view& from) {
                                                       reading.*Component = finite_number(from);
                                                       return (reading.*Component).has_value();
                                                   },
                                                   nullptr,
                                                   [](qual_reading&) {}};
}

constexpr stored_field<qual_fields, qual_reading> time_field{
    "time",
    {},
    [](qual_reading& reading, const stored_view& from) {
        const auto seconds = finite_number(from);
        if (seconds) reading.to._qual_time = *seconds;
        return seconds.has_value();
    },
    [](const qual_fields& fields, std::string_view key, stored_sink& to) {
        const double scaled = fields._qual_time * time_scale;
        // A double this large has no decimals left to round.
        to.put(key, std::abs(scaled) < 0x1p53 ? std::round(scaled) / time_scale : fields._qual_time);
    },
    [](qual_reading& reading) { reading.to._qual_time = 0; }};

// Of any type.
constexpr stored_field<qual_fields, qual_reading> action_field{
    "action",
    {},
    [](qual_reading& reading, const stored_view& from) {
        if (from.kind() == stored_view::form::null) return false;
        reading.rare().kept.set("action", from.copy());
        return true;
    },
    [](const qual_fields& fields, std::string_view key, stored_sink& to) {
        const auto* value = fields.rare ? fields.rare->kept.find(key) : nullptr;
        if (value) to.put(key, *value);
    },
    [](qual_reading& reading) { reading.rare().kept.remove("action"); }};

constexpr std::array qual_table{
    time_field,
    plain<&qual_fields::ql_ALT_time_i11>("alt_time", "alt time"),
    plain<&qual_fields::ql_REAL_LOCAL_TIME>("clock_time"),
    plain<&qual_fields::ql_ALT_time_COUNT_DOWN_i12>("count down"),
    plain<&qual_fields::_name>("name"),
    plain<&qual_fields::_cat>("category"),
    rarely<&qual_rare_fields::ql_RECEPIENT>("recepient"),
    plain<&qual_fields::_uuid>("uuid", "UUID"),
    stored_colour_field<in_qual, &qual_fields::_col, qualifier_colour_decimals>("color"),
    rarely<&qual_rare_fields::ql_ATTRIBUTES>("qualifier_attributes"),
    action_field,
    rarely<&qual_rare_fields::ql_VALUE>("value"),
    rarely<&qual_rare_fields::ql_ACTOR>("actor"),
    rarely<&qual_rare_fields::ql_ALIAS>("alias"),
    rarely<&qual_rare_fields::ql_FOCUS_Vistel>("focus_vistel"),
    rarely<&qual_rare_fields::ql_ZOOM_rect>("zoom_rect"),
    rarely<&qual_rare_fields::_pos_x>("x"),
    rarely<&qual_rare_fields::_pos_y>("y"),
    old_colour<&qual_reading::red>("colR"),
    old_colour<&qual_reading::green>("colG"),
    old_colour<&qual_reading::blue>("colB"),
    old_colour<&qual_reading::alpha>("colA"),
};

}  // namespace

bool clip_attribute_ITEM::operator==(const clip_attribute_ITEM& other) const {
    return uuid == other.uuid && name == other.name && attribute_category == other.attribute_category &&
           attribute_time == other.attribute_time && attribute_colour == other.attribute_colour &&
           _at_pos_x == other._at_pos_x && _at_pos_y == other._at_pos_y;
}

qual_ITEM& qual_ITEM::operator=(qual_ITEM&& other) noexcept {
    if (this == &other) return *this;
    const record_guard guard(lk);
    static_cast<qual_fields&>(*this) = std::move(static_cast<qual_fields&>(other));
    return *this;
}

qual_fields qual_ITEM::fields() const {
    const record_guard guard(lk);
    return *this;
}

std::optional<point> qual_ITEM::pos() const {
    const record_guard guard(lk);
    if (!rare || !rare->_pos_x || !rare->_pos_y) return std::nullopt;
    return point{*rare->_pos_x, *rare->_pos_y};
}

void qual_ITEM::set_pos(std::optional<point> place) {
    const record_guard guard(lk);
    const auto changed = std::make_shared<qual_rare_fields>();
    if (rare) *changed = *rare;
    changed->_pos_x = place ? std::optional(place->x) : std::nullopt;
    changed->_pos_y = place ? std::optional(place->y) : std::nullopt;
    rare = changed;
}

bool qual_ITEM::operator==(const qual_ITEM& other) const {
    return write_qual_item(*this) == write_qual_item(other);
}

void qual_ITEM::put_values(stored_sink& to) const {
    const record_guard guard(lk);
    write_members(qual_table, static_cast<const qual_fields&>(*this), to);
}

bool is_qual_item(const stored_view& stored) {
    return has_key_of(qual_table, stored);
}

qual_ITEM read_qual_item(const stored_view& stored, text_cache& texts) {
    qual_fields fields;
    qual_reading reading{fields, texts, {}, {}, {}, {}, {}};
    read_members(qual_table, stored.members(), reading);
    reading.finish();
    return qual_ITEM(std::move(fields));
}

qual_ITEM read_qual_item(const property_dictionary& stored) {
    stored_arena arena;
    text_cache texts;
    return read_qual_item(view_of(stored, arena), texts);
}

property_dictionary write_qual_item(const qual_ITEM& item) {
    dictionary_sink sink;
    item.put_values(sink);
    return sink.take();
}

}  // namespace vistels
