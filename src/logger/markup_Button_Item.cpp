// SPDX-License-Identifier: GPL-3.0-or-later
#include "logger/markup_Button_Item.h"

#include <cmath>
#include <utility>
#include <vector>

#include "util/uuid.h"

namespace vistels {

namespace {

constexpr int button_colour_decimals = 4;

struct type_row {
    button_type type;
    std::string_view name;
};

constexpr type_row types[] = {
    {button_type::clip, "Clip"},           {button_type::timer_clip, "Timer Clip"},
    {button_type::qualifier, "Qualifier"}, {button_type::attribute, "Attribute"},
    {button_type::none, "None"},           {button_type::trigger, "Trigger"},
};

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
std::optional<std::optional<colour>> read_as(const property_value& value, const std::optional<colour>&) {
    const auto read = value.text() ? colour_from_text(*value.text()) : std::nullopt;
    return read ? std::optional(read) : std::nullopt;
}
std::optional<rectangle> read_as(const property_value& value, const rectangle&) {
    return rectangle_from(value);
}
std::optional<std::optional<button_key_binding>> read_as(const property_value& value,
                                                         const std::optional<button_key_binding>&) {
    if (!value.dictionary()) return std::nullopt;
    return std::optional(read_key_binding(*value.dictionary()));
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
// A value that is not set is a null, which takes the key away.
template <class Value>
property_value written(const std::optional<Value>& value) {
    return value ? written(*value) : property_value();
}

}  // namespace

std::string_view button_type_name(std::int64_t code) {
    for (const auto& row : types) {
        if (static_cast<std::int64_t>(row.type) == code) return row.name;
    }
    return "missing markup type";
}

std::int64_t button_type_code(std::string_view name) {
    for (const auto& row : types) {
        if (row.name == name) return static_cast<std::int64_t>(row.type);
    }
    return 0;
}

// Hands every stored key with its field to `visit`, in the stored order.
struct markup_Button_Item::stored_fields {
    template <class Button, class Visitor>
    static void visit_all(Button& button, Visitor visit) {
        visit("uuid", button._uuid);
        visit("name", button._name);
        visit("name category", button._cat);
        visit("button Type", button.button_Type);
        visit("secs in", button.secs_in_);
        visit("secs out", button.secs_out_);
        visit("auto up", button.auto_up_);
        visit("delayed up", button.delayed_up_);
        visit("auto up duration", button.auto_up_duration_);
        visit("allow overlapping clips", button.allow_overlapping_clips_);
        visit("merge clips", button.merge_clips_);
        visit("block qualifiers", button.block_qualifiers_);
        visit("pause_movies", button.pause_movies_);
        auto& display = button.display_;
        visit("clock_time", display.clock_time);
        visit("down_time", display.down_time);
        visit("ignore_tab", button.ignore_tab_);
        visit("hide name", display.hide_name);
        visit("fit_name", display.fit_name);
        visit("show keys", display.show_keys);
        visit("button lock", button.button_lock_);
        visit("bindings", display.binding);
        visit("logger rect", display.logger_rect);
        visit("alpha", display.alpha);
        visit("mask color", display.mask_colour);
        visit("button color", display.button_colour);
        visit("button name color", display.name_colour);
        visit("button name font size", display.name_font_size);
    }
};

std::optional<colour> markup_Button_Item::made_colour() const {
    const record_guard guard(lk);
    return display_.mask_colour ? display_.mask_colour : display_.button_colour;
}

void markup_Button_Item::set_made_up_uuid(std::string uuid) {
    const record_guard guard(lk);
    _uuid = made_up_uuid_ = std::move(uuid);
}

void markup_Button_Item::set_stored(std::string_view key, property_value value) {
    const record_guard guard(lk);
    if (value.is_null()) {
        stored_.remove(key);
    } else {
        stored_.set(key, std::move(value));
    }
}

markup_Button_Item read_button(const property_dictionary& stored) {
    markup_Button_Item button;
    markup_Button_Item::stored_fields::visit_all(button, [&](const char* key, auto& field) {
        const auto* value = stored.find(key);
        if (!value) return;
        if (auto read = read_as(*value, field)) field = std::move(*read);
    });
    if (button.delayed_up_) button.auto_up_ = true;
    if (button._uuid.empty()) button.set_made_up_uuid(new_uuid());
    button.stored_ = stored;
    return button;
}

property_dictionary write_button(const markup_Button_Item& button) {
    const record_guard guard(button.lk);
    property_dictionary stored = button.stored_;
    // What would be read from it again: only what differs is written, so that the rest keeps its form.
    const markup_Button_Item as_read = read_button(stored);
    std::vector<property_value> unchanged;
    markup_Button_Item::stored_fields::visit_all(
        as_read, [&](const char*, const auto& field) { unchanged.push_back(written(field)); });
    auto before = unchanged.begin();
    markup_Button_Item::stored_fields::visit_all(button, [&](const char* key, const auto& field) {
        property_value value = written(field);
        const bool differs = !(value == *before++);
        const bool is_made_up = key == std::string_view("uuid") && button._uuid == button.made_up_uuid_;
        if (!differs || is_made_up) return;
        if (value.is_null()) {
            stored.remove(key);
        } else {
            stored.set(key, std::move(value));
        }
    });
    // It may have been read from "delayed up" alone.
    if (button.auto_up_ && !button.delayed_up_) stored.set("auto up", true);
    return stored;
}

}  // namespace vistels
