// SPDX-License-Identifier: GPL-3.0-or-later
#include "logger/markup_Button_Item.h"

namespace vistels {

namespace {

struct type_row {
    button_type type;
    std::string_view name;
};

constexpr type_row types[] = {
    {button_type::clip, "Clip"},           {button_type::timer_clip, "Timer Clip"},
    {button_type::qualifier, "Qualifier"}, {button_type::attribute, "Attribute"},
    {button_type::none, "None"},           {button_type::trigger, "Trigger"},
};

struct stage_row {
    attribute_stage stage;
    std::string_view stored;
    std::string_view name;
};

constexpr stage_row stages[] = {
    {attribute_stage::next, "B", "Next Qualifier"},
    {attribute_stage::last, "A", "Last Qualifier"},
    {attribute_stage::last_and_next, "Last and Next", "Last and Next Qualifier"},
};

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

std::optional<attribute_stage> attribute_stage_from_text(std::string_view stored) {
    for (const auto& row : stages) {
        if (row.stored == stored) return row.stage;
    }
    return std::nullopt;
}

std::string_view attribute_stage_text(attribute_stage stage) {
    for (const auto& row : stages) {
        if (row.stage == stage) return row.stored;
    }
    return "";
}

std::string_view attribute_stage_name(std::string_view stored) {
    for (const auto& row : stages) {
        if (row.stored == stored) return row.name;
    }
    return "unknown stage type";
}

markup_Button_Item& markup_Button_Item::operator=(markup_Button_Item&& other) noexcept {
    if (this == &other) return *this;
    const record_guard guard(lk);
    static_cast<button_fields&>(*this) = std::move(static_cast<button_fields&>(other));
    return *this;
}

button_fields markup_Button_Item::fields() const {
    const record_guard guard(lk);
    return *this;
}

bool markup_Button_Item::makes_clips() const {
    const record_guard guard(lk);
    const bool is_clip = button_Type == static_cast<std::int64_t>(button_type::clip) ||
                         button_Type == static_cast<std::int64_t>(button_type::timer_clip);
    return is_clip && !button_fields::renamer;
}

attribute_stage markup_Button_Item::stage() const {
    return attribute_stage_from_text(stage_text()).value_or(attribute_stage::last);
}

void markup_Button_Item::set_stage(vistels::attribute_stage stage) {
    write(button_fields::attribute_stage, std::string(attribute_stage_text(stage)));
}

bool markup_Button_Item::is_pressed_by(const key_stroke& key) const {
    const record_guard guard(lk);
    return button_fields::display.binding && binding_matches(*button_fields::display.binding, key);
}

std::optional<colour> markup_Button_Item::made_colour() const {
    const record_guard guard(lk);
    const auto& shown = button_fields::display;
    return shown.mask_colour ? shown.mask_colour : shown.button_colour;
}

void markup_Button_Item::set_made_up_uuid(std::string uuid) {
    const record_guard guard(lk);
    _uuid = made_up_uuid = std::move(uuid);
}

void markup_Button_Item::set_stored(std::string_view key, property_value value) {
    const record_guard guard(lk);
    if (value.is_null()) {
        button_fields::stored.remove(key);
    } else {
        button_fields::stored.set(key, std::move(value));
    }
}

}  // namespace vistels
