// SPDX-License-Identifier: GPL-3.0-or-later
//
// The stored form of clips: for each record one table, in the stored order, which reads, writes and changes
// it.
#include <cmath>

#include "timeline/form/stored_values.h"
#include "timeline/records/clip_note.h"
#include "timeline/records/sxy_CLIP.h"
#include "util/text_forms.h"

namespace vistels {

namespace {

constexpr int clip_colour_decimals = 4;
constexpr int timer_colour_decimals = 5;
constexpr int trigger_colour_decimals = 8;

// A number that is written even when it is 0.
template <class Part, auto Member>
constexpr auto number_always(std::string_view key) {
    auto field = stored_member_field<in_record<Part>, Member>(key);
    field.write = [](const Part& part, std::string_view name, stored_sink& to) {
        to.put(name, part.*Member);
    };
    return field;
}

}  // namespace

template <>
struct stored_form<sxy_clip_inserted_object_ITEM_25__eg_pic> {
    using item = sxy_clip_inserted_object_ITEM_25__eg_pic;
    static constexpr std::array fields{
        number_always<item, &item::inserted_obj_start_secs>("start_secs"),
        number_always<item, &item::inserted_obj_duration_secs>("duration_secs"),
        stored_member_field<in_record<item>, &item::inserted_obj_Type>("object_type"),
        stored_member_field<in_record<item>, &item::inserted_object_UUID>("pic_UUID"),
    };
};

template <>
struct stored_form<inserted_Objects_Root_25> {
    using root = inserted_Objects_Root_25;
    static constexpr std::array fields{[] {
        auto field = stored_member_field<in_record<root>, &root::items>("items");
        field.write = [](const root& all, std::string_view key, stored_sink& to) {
            to.begin_array(key);
            for (const auto& item : all.items) put_part(item, {}, to);
            to.end();
        };
        return field;
    }()};
};

template <>
struct stored_form<clip_Pause_Item> {
    static constexpr std::array fields{
        number_always<clip_Pause_Item, &clip_Pause_Item::seconds>("seconds"),
    };
};

template <>
struct stored_form<sxy_CLIP_telestration_data_24> {
    using data = sxy_CLIP_telestration_data_24;
    using here = in_record<data>;
    static constexpr std::array fields{
        stored_member_field<here, &data::secs_start_original>("secs_start_original"),
        stored_member_field<here, &data::secs_end_original>("secs_end_original"),
        stored_member_field<here, &data::secs_start_aux_coll>("secs_start_aux_coll"),
        stored_member_field<here, &data::secs_end_aux_coll>("secs_end_aux_coll"),
        stored_member_field<here, &data::secs_start_trimmed_261027>("telestration_secs_start_trimmed"),
        stored_member_field<here, &data::secs_end_trimmed_261027>("telestration_secs_end_trimmed"),
        stored_member_field<here, &data::quick_uuid_linked_COLLECTION_original>(
            "quick_uuid_linked_COLLECTION_original"),
        stored_member_field<here, &data::quick_uuid_linked_COLLECTION_auxiliary>(
            "quick_uuid_linked_COLLECTION_auxiliary", "quick_uuid_linked_COLLECTION_auxilary"),
        stored_member_field<here, &data::using_telestrated_data>("using_telestrated_data"),
    };
};

template <>
struct stored_form<trigger_event_ITEM> {
    using item = trigger_event_ITEM;
    static constexpr std::array fields{
        number_always<item, &item::trigger_Time>("trigger_time"),
        stored_member_field<in_record<item>, &item::trigger_Type>("trigger_type"),
        stored_colour_field<in_record<item>, &item::trigger_colour_24, trigger_colour_decimals>(
            "trigger_colour"),
    };
};

template <>
struct stored_form<sxy_clip_ZOOM_item> {
    using item = sxy_clip_ZOOM_item;
    static constexpr std::array fields{
        number_always<item, &item::key_frame_secs>("secs"),
        stored_member_field<in_record<item>, &item::rect>("rect"),
    };
};

namespace {

// The key frames, in a dictionary of their own.
constexpr stored_field<clip_vistel_ITEM> zoom_data_field{
    "zoom_data",
    {},
    [](stored_reading<clip_vistel_ITEM>& reading, const stored_view& from) {
        if (!from.is_dictionary()) return false;
        std::vector<sxy_clip_ZOOM_item> items;
        for (const auto& member : from.members()) {
            if (member.key == "keyframes_array") take_value(items, member.value, reading.texts);
        }
        reading.to.set_zoom_items(std::move(items));
        return true;
    },
    [](const clip_vistel_ITEM& item, std::string_view key, stored_sink& to) {
        if (item.zoom_items().empty()) return;
        to.begin_dictionary(key);
        put_value(item.zoom_items(), "keyframes_array", to);
        to.end();
    },
    [](stored_reading<clip_vistel_ITEM>& reading) { reading.to.set_zoom_items({}); }};

}  // namespace

template <>
struct stored_form<clip_vistel_ITEM> {
    using here = in_record<clip_vistel_ITEM>;
    static constexpr std::array fields{
        stored_member_field<here, &clip_vistel_ITEM::vistel_name>("vistel_name"),
        stored_member_field<here, &clip_vistel_ITEM::vistel_ID>("vistel_id"),
        stored_member_field<here, &clip_vistel_ITEM::vistel_rect>("vistel_rect"),
        stored_member_field<here, &clip_vistel_ITEM::level>("level"),
        zoom_data_field,
    };
};

template <>
struct stored_form<sxy_data_clip_VISTEL> {
    using data = sxy_data_clip_VISTEL;
    using here = in_record<data>;
    static constexpr std::array fields{
        stored_member_field<here, &data::outside_bounds_video_ratio>("bounds_ratio"),
        stored_member_field<here, &data::use_Vistel_Positions_data>("use_Vistel_Positions_data"),
        stored_member_field<here, &data::use_VISTEL_ZOOM_data__l930>("use_Zoom_data"),
        stored_member_field<here, &data::vistels>("vistels_array"),
    };
};

namespace {

// A time as it is being read: the number forms of both keys come before their text forms.
struct time_reading {
    enum form : unsigned { number, short_number, text, short_text, none };
    unsigned best = none;
    double seconds = 0;

    bool take(const stored_view& from, bool is_short) {
        auto value = finite_number(from);
        unsigned found = is_short ? short_number : number;
        if (const auto digits = from.text()) {
            value = number_from_text(*digits);
            found = is_short ? short_text : text;
        }
        if (!value || !std::isfinite(*value)) return false;
        if (found > best) return true;
        best = found;
        seconds = *value;
        return true;
    }
};

// A clip that is being read or changed.
struct clip_reading {
    clip_fields& to;
    text_cache& texts;
    std::shared_ptr<clip_rare_fields> changed_rare;  // made when the first rare value is met
    time_reading start;
    time_reading end;
    std::optional<double> red, green, blue;  // the colour of older files

    clip_rare_fields& rare() {
        if (!changed_rare) {
            changed_rare =
                to.rare ? std::make_shared<clip_rare_fields>(*to.rare) : std::make_shared<clip_rare_fields>();
        }
        return *changed_rare;
    }

    void finish() {
        if (start.best != time_reading::none) to.secs_start = start.seconds;
        if (end.best != time_reading::none) to.secs_end = end.seconds;
        if (!to.col && red && green && blue) to.col = colour{*red, *green, *blue, 1.0};
        if (changed_rare) to.rare = std::move(changed_rare);
    }
};

using clip_field = stored_field<clip_fields, clip_reading>;

struct in_clip {
    using record_type = clip_fields;
    using reading_type = clip_reading;
    static clip_fields& of(clip_reading& reading) { return reading.to; }
    static const clip_fields* of(const clip_fields& fields) { return &fields; }
};

struct in_rare {
    using record_type = clip_fields;
    using reading_type = clip_reading;
    static clip_rare_fields& of(clip_reading& reading) { return reading.rare(); }
    static const clip_rare_fields* of(const clip_fields& fields) { return fields.rare.get(); }
};

struct in_edit_info {
    using record_type = clip_fields;
    using reading_type = clip_reading;
    static sxy_clip_EDIT_info_k11& of(clip_reading& reading) { return reading.to.sxy_clip_Edit_info; }
    static const sxy_clip_EDIT_info_k11* of(const clip_fields& fields) { return &fields.sxy_clip_Edit_info; }
};

template <auto Member>
constexpr auto plain(std::string_view key, std::string_view older = {}) {
    return stored_member_field<in_clip, Member>(key, older);
}

template <auto Member>
constexpr auto rarely(std::string_view key, std::string_view older = {}, std::string_view oldest = {}) {
    return stored_member_field<in_rare, Member>(key, older, oldest);
}

template <time_reading clip_reading::*Time, bool is_short>
bool read_time(clip_reading& reading, const stored_view& from) {
    return (reading.*Time).take(from, is_short);
}

template <double clip_fields::*Time>
void write_time(const clip_fields& fields, std::string_view key, stored_sink& to) {
    to.put(key, fields.*Time);
}

void stays(clip_reading&) {}

// A component of the colour of older files; read, never written.
template <auto Component>
constexpr clip_field old_colour(std::string_view key) {
    return {key,
            {},
            [](clip_reading& reading, const stored_view& from) {
                reading.*Component = finite_number(from);
                return (reading.*Component).has_value();
            },
            nullptr,
            stays};
}

bool read_style(clip_reading& reading, const stored_view& from) {
    const auto text = from.text();
    if (!text) return false;
    const bool none = text->empty() || *text == "CLIP_STYLE__NONE";
    reading.rare().frame_Style_k11 = none ? shared_text() : reading.texts.get(*text);
    return true;
}

bool read_type(clip_reading& reading, const stored_view& from) {
    const auto text = from.text();
    if (text) reading.to.clip_TYPE = clip_type_from_text(*text);
    return text.has_value();
}

void write_type(const clip_fields& fields, std::string_view key, stored_sink& to) {
    if (fields.clip_TYPE != clip_type::normal) to.put(key, *clip_type_text(fields.clip_TYPE));
}

bool read_qualifiers(clip_reading& reading, const stored_view& from) {
    if (!from.is_dictionary()) return false;
    const stored_view* array = nullptr;
    for (const auto& member : from.members()) {
        if (!member.value.is_array()) continue;
        if (member.key == "qualifiers_array" || (!array && member.key == "qualifiers array")) {
            array = &member.value;
        }
    }
    qual_ROOT all;
    if (array) {
        const auto items = array->items();
        const auto count = static_cast<std::size_t>(std::count_if(items.begin(), items.end(), is_qual_item));
        all.reserve(count);
        for (const auto& item : items) {
            if (is_qual_item(item)) all.push_back(read_qual_item(item, reading.texts));
        }
    }
    reading.to.qual_Root = all.empty() ? nullptr : std::make_shared<const qual_ROOT>(std::move(all));
    return true;
}

void write_qualifiers(const clip_fields& fields, std::string_view key, stored_sink& to) {
    if (!fields.qual_Root) return;
    to.begin_dictionary(key);
    to.begin_array("qualifiers_array");
    for (const auto& item : *fields.qual_Root) {
        to.begin_dictionary({});
        item.put_values(to);
        to.end();
    }
    to.end();
    to.end();
}

bool read_note(clip_reading& reading, const stored_view& from) {
    if (!from.is_dictionary()) return false;
    reading.rare().note = std::make_shared<const clip_note>(read_clip_note(from));
    return true;
}

void write_note(const clip_fields& fields, std::string_view key, stored_sink& to) {
    if (fields.rare && fields.rare->note) to.put(key, property_value(write_clip_note(*fields.rare->note)));
}

using edit = sxy_clip_EDIT_info_k11;
using more = clip_rare_fields;

constexpr std::array clip_table{
    plain<&clip_fields::_id>("uuid", "UUID"),
    clip_field{"time_start",
               {},
               read_time<&clip_reading::start, false>,
               write_time<&clip_fields::secs_start>,
               stays},
    clip_field{
        "time_end", {}, read_time<&clip_reading::end, false>, write_time<&clip_fields::secs_end>, stays},
    plain<&clip_fields::row_category_sxy__in_clip>("row_category"),
    plain<&clip_fields::row_UUID_sxy__in_clip>("row_uuid_in_clip"),
    [] {
        auto field = rarely<&more::frame_Style_k11>("clip_style");
        field.read = read_style;
        return field;
    }(),
    stored_colour_field<in_clip, &clip_fields::col, clip_colour_decimals>("color"),
    stored_member_field<in_edit_info, &edit::edit_seconds>("edit_seconds"),
    stored_member_field<in_edit_info, &edit::author>("author", "edit clip author"),
    stored_member_field<in_edit_info, &edit::edit_info>("edit_info"),
    plain<&clip_fields::stars>("stars"),
    plain<&clip_fields::clip_count_position_in_timeline>("timeline_clip_position", "timeline clip position"),
    rarely<&more::_mins>("timer_clip_alt_offset_minutes", "Timer Clip ALT Offset Minutes",
                         "alt timer Offset"),
    rarely<&more::in_TIMER_CLIP__ALT_Timer_CUMULATIVE__i12>("timer_clip_cumulative", "Timer Clip Cumulative"),
    rarely<&more::in_TIMER_CLIP__is_COUNT_DOWN>("timer_clip_count_down", "Timer Clip Count Down"),
    rarely<&more::in_NORMAL_clip_timer__is_COUNT_DOWN_i12>("alt_count_down", "alt count down"),
    rarely<&more::alt_Timer_seconds>("alt_seconds", "alt seconds"),
    stored_colour_field<in_rare, &more::alt_Timer_Colour_m01, timer_colour_decimals>("alt_color"),
    clip_field{"type",
               {},
               read_type,
               write_type,
               [](clip_reading& reading) { reading.to.clip_TYPE = clip_type::normal; }},
    rarely<&more::comp_clip_format_psi>("type_id", "type ID", "type pic ID"),
    rarely<&more::clip_C_Group_25>("clip_group"),
    rarely<&more::inserted_Objects_Root>("inserted_Objects"),
    plain<&clip_fields::coll_id>("coll_id", "coll ID"),
    rarely<&more::pause_items>("pause_items", "pause items"),
    rarely<&more::telestration>("telestration"),
    rarely<&more::trigger_Events_Root>("triggers"),
    clip_field{"qualifiers", {}, read_qualifiers, write_qualifiers, stays},
    rarely<&more::data_clip_VISTEL>("vistels_data", "vistels data"),
    clip_field{"notes_dict",
               {"Notes dict", {}},
               read_note,
               write_note,
               [](clip_reading& reading) { reading.rare().note = {}; }},
    clip_field{"str", {}, read_time<&clip_reading::start, true>, nullptr, stays},
    clip_field{"end", {}, read_time<&clip_reading::end, true>, nullptr, stays},
    old_colour<&clip_reading::red>("cl_red"),
    old_colour<&clip_reading::green>("cl_grn"),
    old_colour<&clip_reading::blue>("cl_blu"),
};

bool is_changeable(std::string_view key) {
    return key != "uuid" && key != "qualifiers";
}

}  // namespace

std::optional<sxy_CLIP> read_clip(const stored_view& stored, text_cache& texts) {
    clip_fields fields;
    clip_reading reading{fields, texts, {}, {}, {}, {}, {}, {}};
    read_members(clip_table, stored.members(), reading);
    if (reading.start.best == time_reading::none || reading.end.best == time_reading::none) {
        return std::nullopt;
    }
    reading.finish();
    return sxy_CLIP(std::move(fields));
}

std::optional<sxy_CLIP> read_clip(const property_dictionary& stored) {
    stored_arena arena;
    text_cache texts;
    return read_clip(view_of(stored, arena), texts);
}

void write_clip(const sxy_CLIP& clip, stored_sink& to) {
    const record_guard guard(clip.lk);
    write_members(clip_table, static_cast<const clip_fields&>(clip), to);
}

property_dictionary write_clip(const sxy_CLIP& clip) {
    dictionary_sink sink;
    write_clip(clip, sink);
    return sink.take();
}

property_dictionary write_clip_values(const sxy_CLIP& clip) {
    const clip_fields fields = clip.fields();
    dictionary_sink sink;
    for (const auto& field : clip_table) {
        if (field.write && field.key != "qualifiers") field.write(fields, field.key, sink);
    }
    return sink.take();
}

changed_clip change_clip_values(const sxy_CLIP& clip, const property_dictionary& set,
                                const property_array& unset) {
    const clip_fields before = clip.fields();
    clip_fields after = before;
    text_cache texts;
    clip_reading reading{after, texts, {}, {}, {}, {}, {}, {}};
    auto touched = change_members(clip_table, set, unset, reading, is_changeable);
    reading.finish();
    // A start moved behind the end moves the end too.
    if (after.secs_end < after.secs_start) std::swap(after.secs_start, after.secs_end);
    touched[find_stored_key(clip_table, "time_start", 0).index] = before.secs_start != after.secs_start;
    touched[find_stored_key(clip_table, "time_end", 0).index] = before.secs_end != after.secs_end;
    value_change back;
    for (std::size_t index = 0; index < clip_table.size(); ++index) {
        if (touched[index]) add_inverse_value(clip_table[index], before, after, back);
    }
    return {sxy_CLIP(std::move(after)), std::move(back)};
}

sxy_CLIP clip_with(const sxy_CLIP& clip, const property_dictionary& set, const property_array& unset) {
    return change_clip_values(clip, set, unset).clip;
}

}  // namespace vistels
