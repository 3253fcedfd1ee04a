// SPDX-License-Identifier: GPL-3.0-or-later
//
// The stored form of a button: one list of its keys, in the stored order, reads, writes and compares.
#include <algorithm>
#include <cmath>
#include <functional>
#include <utility>
#include <vector>

#include "logger/markup_Button_Item.h"
#include "util/uuid.h"

namespace vistels {

namespace {

constexpr int button_colour_decimals = 4;
constexpr int trigger_colour_decimals = 8;

// How each kind of field is read and written. Reading gives nothing for a value of the wrong type.
std::optional<std::string> read_as(const property_value& value, const std::string&) {
    return value.text() ? std::optional(*value.text()) : std::nullopt;
}
std::optional<std::int64_t> read_as(const property_value& value, std::int64_t) {
    return value.integer();
}
std::optional<bool> read_as(const property_value& value, bool) {
    return value.boolean();
}
std::optional<double> read_as(const property_value& value, double) {
    const auto number = value.number();
    return number && std::isfinite(*number) ? number : std::nullopt;
}
std::optional<std::optional<double>> read_as(const property_value& value, const std::optional<double>&) {
    const auto number = read_as(value, 0.0);
    return number ? std::optional(number) : std::nullopt;
}
std::optional<colour> read_as(const property_value& value, const colour&) {
    return value.text() ? colour_from_text(*value.text()) : std::nullopt;
}
std::optional<std::optional<colour>> read_as(const property_value& value, const std::optional<colour>&) {
    const auto read = read_as(value, colour());
    return read ? std::optional(read) : std::nullopt;
}
std::optional<rectangle> read_as(const property_value& value, const rectangle&) {
    return rectangle_from(value);
}
std::optional<property_dictionary> read_as(const property_value& value, const property_dictionary&) {
    return value.dictionary() ? std::optional(*value.dictionary()) : std::nullopt;
}
std::optional<std::optional<button_key_binding>> read_as(const property_value& value,
                                                         const std::optional<button_key_binding>&) {
    if (!value.dictionary()) return std::nullopt;
    return std::optional(read_key_binding(*value.dictionary()));
}
std::optional<std::vector<trigger_event_ITEM>> read_as(const property_value& value,
                                                       const std::vector<trigger_event_ITEM>&) {
    if (!value.array()) return std::nullopt;
    std::vector<trigger_event_ITEM> all;
    for (const auto& one : *value.array()) {
        if (auto trigger = read_trigger(one)) all.push_back(std::move(*trigger));
    }
    return all;
}

std::optional<std::vector<markup_Button_Action_Link_ITEM>> read_as(
    const property_value& value, const std::vector<markup_Button_Action_Link_ITEM>&) {
    if (!value.array()) return std::nullopt;
    std::vector<markup_Button_Action_Link_ITEM> all;
    for (const auto& one : *value.array()) {
        if (auto link = read_action_link(one)) all.push_back(std::move(*link));
    }
    return all;
}

template <class Plain>
property_value written(const Plain& value) {
    return property_value(value);
}
property_value written(const colour& value) {
    return colour_text(value, button_colour_decimals);
}
property_value written(const rectangle& value) {
    return rectangle_text(value);
}
property_value written(const button_key_binding& value) {
    return write_key_binding(value);
}
property_value written(const std::vector<trigger_event_ITEM>& triggers) {
    property_array all;
    for (const auto& trigger : triggers) all.emplace_back(write_trigger(trigger));
    return all;
}
property_value written(const std::vector<markup_Button_Action_Link_ITEM>& links) {
    property_array all;
    for (const auto& link : links) all.emplace_back(write_action_link(link));
    return all;
}
// A value that is not set is a null, which takes the key away.
template <class Value>
property_value written(const std::optional<Value>& value) {
    return value ? written(*value) : property_value();
}

// Adds to what is written what stood there and is not known.
template <class Field>
void keep_unknown(const property_value&, const Field&, property_value&) {}
void keep_unknown(const property_value& before, const std::optional<button_key_binding>&,
                  property_value& now) {
    const auto* had = before.dictionary();
    auto* has = now.dictionary();
    if (!had || !has) return;
    // Known keys are left out where they say no.
    for (const auto& entry : *had) {
        if (!is_key_binding_key(entry.key)) has->set(entry.key, entry.value);
    }
}
// Elements that are none of the kind stay where they stood.
void keep_others(const property_array& had, property_array& now,
                 const std::function<bool(const property_value&)>& is_of_the_kind) {
    for (std::size_t at = 0; at < had.size(); ++at) {
        if (is_of_the_kind(had[at])) continue;
        now.insert(now.begin() + static_cast<std::ptrdiff_t>(std::min(at, now.size())), had[at]);
    }
}

// The triggers of `had` that `now` has, in the order of `now`: each the one that it says the same as, else,
// where none came or went, the one in its place; null for a new one.
std::vector<const property_dictionary*> triggers_before(const property_array& had,
                                                        const std::vector<trigger_event_ITEM>& now) {
    std::vector<std::pair<trigger_event_ITEM, const property_dictionary*>> all;
    for (const auto& one : had) {
        if (const auto read = read_trigger(one)) all.emplace_back(*read, one.dictionary());
    }
    std::vector<const property_dictionary*> found;
    std::size_t next = 0;
    for (const auto& trigger : now) {
        const auto from = all.begin() + static_cast<std::ptrdiff_t>(next);
        const auto same =
            std::find_if(from, all.end(), [&](const auto& one) { return one.first == trigger; });
        if (same != all.end()) {
            found.push_back(same->second);
            next = static_cast<std::size_t>(same - all.begin()) + 1;
        } else if (all.size() == now.size() && next == found.size()) {
            found.push_back(all[next++].second);
        } else {
            found.push_back(nullptr);
        }
    }
    return found;
}

// What the trigger says, in the dictionary that it was read from.
property_dictionary with_trigger(property_dictionary stored, const trigger_event_ITEM& trigger) {
    const auto before = read_trigger(stored);
    const auto old = before ? write_trigger(*before) : property_dictionary();
    const auto now = write_trigger(trigger);
    for (const auto& entry : old) {
        if (!now.contains(entry.key)) stored.remove(entry.key);
    }
    for (const auto& entry : now) {
        const auto* same = old.find(entry.key);
        if (!same || !(*same == entry.value)) stored.set(entry.key, entry.value);
    }
    return stored;
}

void keep_unknown(const property_value& before, const std::vector<trigger_event_ITEM>& triggers,
                  property_value& now) {
    const auto* had = before.array();
    if (!had || !now.array()) return;
    property_array all;
    const auto earlier = triggers_before(*had, triggers);
    for (std::size_t at = 0; at < triggers.size(); ++at) {
        all.emplace_back(earlier[at] ? with_trigger(*earlier[at], triggers[at])
                                     : write_trigger(triggers[at]));
    }
    keep_others(*had, all, [](const property_value& one) { return read_trigger(one).has_value(); });
    now = std::move(all);
}

void keep_unknown(const property_value& before, const std::vector<markup_Button_Action_Link_ITEM>&,
                  property_value& now) {
    const auto* had = before.array();
    if (!had || !now.array()) return;
    keep_others(*had, *now.array(), [](const property_value& one) { return one.dictionary() != nullptr; });
}

// Hands every stored key with its field to `visit`, in the stored order.
template <class Fields, class Visitor>
void visit_all(Fields& button, Visitor visit) {
    visit("uuid", button._uuid);
    visit("name", button._name);
    visit("name category", button._cat);
    visit("button Type", button.button_Type);
    visit("UUID pic", button.UUID_pic);
    visit("action link to UUID", button.action_link_to_UUID);
    visit("sort_order", button.sort_order);
    visit("secs in", button.secs_in);
    visit("secs out", button.secs_out);
    visit("auto up", button.auto_up);
    visit("delayed up", button.delayed_up);
    visit("auto up duration", button.auto_up_duration);
    visit("allow overlapping clips", button.allow_overlapping_clips);
    visit("merge clips", button.merge_clips);
    visit("block qualifiers", button.block_qualifiers);
    visit("center fire", button.center_fire);
    visit("pause_movies", button.pause_movies);
    visit("note up", button.note_up);
    visit("note down", button.note_down);
    visit("last up", button.last_up);
    visit("last down", button.last_down);
    visit("next up", button.next_up);
    visit("next down", button.next_down);
    auto& display = button.display;
    visit("clock_time", display.clock_time);
    visit("down_time", display.down_time);
    visit("ignore_tab", button.ignore_tab);
    visit("Timer Clip Cumulative", button.Timer_Clip_Cumulative);
    visit("Timer Clip Count Down", button.Timer_Clip_Count_Down);
    visit("Timer Clip Offset", button.Timer_Clip_Offset);
    visit("renamer", button.renamer);
    visit("lister", button.lister);
    visit("lister button text", button.lister_button_text);
    visit("hide name", display.hide_name);
    visit("fit_name", display.fit_name);
    visit("show keys", display.show_keys);
    visit("button lock", button.button_lock);
    visit("filter", button.formula.filter);
    visit("output_string", button.formula.output_string);
    visit("output_type", button.formula.output_type);
    visit("output_time_format", button.formula.output_time_format);
    visit("remove_prefix_0s", button.formula.remove_prefix_0s);
    visit("multi formula dictionary", button.formula.multi_formula);
    visit("attribute stage", button.attribute_stage);
    visit("trigger_type", button.trigger_type);
    visit("triggers", button.trig_array);
    auto& field = button.field;
    visit("Cartesian", field.Cartesian);
    visit("Cartesian_Traces", field.Cartesian_Traces);
    visit("trace_type", field.trace_type);
    visit("cartesian_scale_start_X", field.scale_start_X);
    visit("cartesian_scale_start_Y", field.scale_start_Y);
    visit("cartesian_scale_end_X", field.scale_end_X);
    visit("cartesian_scale_end_Y", field.scale_end_Y);
    visit("cartesian_scale_step_X", field.scale_step_X);
    visit("cartesian_scale_step_Y", field.scale_step_Y);
    visit("bindings", display.binding);
    visit("logger rect", display.logger_rect);
    visit("alpha", display.alpha);
    visit("mask color", display.mask_colour);
    visit("button color", display.button_colour);
    visit("button name color", display.name_colour);
    visit("linked mask and button colors", display.linked_mask_and_button_colours);
    visit("button name font size", display.name_font_size);
    visit("font_size_formula_output", display.formula_output_font_size);
    visit("font_name_formula_output", display.formula_output_font);
    visit("font_name_button_name", display.name_font);
    visit("font_colour_formula_output", display.formula_output_colour);
    visit("button shape", display.button_shape);
    visit("real picture", display.real_picture);
    visit("hide down state", display.hide_down_state);
    visit("show pinger", display.show_pinger);
    visit("change color", button.change_colour);
    visit("change name", button.change_name);
    visit("change category", button.change_category);
    visit("name offset x", display.name_offset.x);
    visit("name offset y", display.name_offset.y);
    visit("show keys offset x", display.keys_offset.x);
    visit("show keys offset y", display.keys_offset.y);
    visit("filter output offset x", display.filter_output_offset.x);
    visit("filter output offset y", display.filter_output_offset.y);
    visit("multi formula output offset x", display.multi_formula_output_offset.x);
    visit("multi formula output offset y", display.multi_formula_output_offset.y);
    visit("start_click_pt x", display.start_click_x);
    visit("start_click_pt y", display.start_click_y);
    visit("button actions array", button.action_links);
}

std::vector<property_value> written_values(const button_fields& button) {
    std::vector<property_value> values;
    visit_all(button, [&](const char*, const auto& field) { values.push_back(written(field)); });
    return values;
}

// Also scales that do not count, without the first of them.
button_fields read_all_keys(const property_dictionary& stored) {
    button_fields button;
    visit_all(button, [&](const char* key, auto& field) {
        const auto* value = stored.find(key);
        if (!value) return;
        if (auto read = read_as(*value, field)) field = std::move(*read);
    });
    if (button.delayed_up) button.auto_up = true;
    return button;
}

button_fields read_fields(const property_dictionary& stored) {
    auto button = read_all_keys(stored);
    if (!button.field.scale_start_X) {
        const button_field unscaled{button.field.Cartesian, button.field.Cartesian_Traces,
                                    std::move(button.field.trace_type), std::nullopt};
        button.field = unscaled;
    }
    return button;
}

const std::vector<property_value>& default_values() {
    static const std::vector<property_value> values = written_values({});
    return values;
}

}  // namespace

property_dictionary write_trigger(const trigger_event_ITEM& trigger) {
    property_dictionary stored;
    stored.add("trigger_time", trigger.trigger_Time);
    if (!trigger.trigger_Type.empty()) stored.add("trigger_type", trigger.trigger_Type.str());
    if (trigger.trigger_colour_24) {
        stored.add("trigger_colour", colour_text(*trigger.trigger_colour_24, trigger_colour_decimals));
    }
    return stored;
}

std::optional<trigger_event_ITEM> read_trigger(const property_value& stored) {
    const auto* values = stored.dictionary();
    const auto time = values ? values->number("trigger_time") : std::nullopt;
    if (!time || !std::isfinite(*time)) return std::nullopt;
    trigger_event_ITEM trigger{*time, shared_text(values->text_or_empty("trigger_type")), {}};
    if (const auto* text = values->text("trigger_colour"))
        trigger.trigger_colour_24 = colour_from_text(*text);
    return trigger;
}

markup_Button_Item read_button(const property_dictionary& stored) {
    markup_Button_Item button;
    static_cast<button_fields&>(button) = read_fields(stored);
    if (button._uuid.empty()) button.set_made_up_uuid(new_uuid());
    button.button_fields::stored = stored;
    return button;
}

property_dictionary write_button(const markup_Button_Item& button) {
    const button_fields fields = button.fields();
    property_dictionary stored = fields.stored;
    // What would be read from it again: only what differs is written, so that the rest keeps its form.
    const auto unchanged =
        written_values(fields.field.scale_start_X ? read_all_keys(stored) : read_fields(stored));
    std::size_t at = 0;
    visit_all(fields, [&](const char* key, const auto& field) {
        const property_value& before = unchanged[at];
        const property_value& usual = default_values()[at++];
        property_value value = written(field);
        const bool is_made_up = key == std::string_view("uuid") && fields._uuid == fields.made_up_uuid;
        if (is_made_up || value == before) return;
        if (const auto* had = stored.find(key)) keep_unknown(*had, field, value);
        if (value.is_null() || value == usual) {
            stored.remove(key);
        } else {
            stored.set(key, std::move(value));
        }
    });
    // It may have been read from "delayed up" alone.
    if (fields.auto_up && !fields.delayed_up) stored.set("auto up", true);
    return stored;
}

}  // namespace vistels
