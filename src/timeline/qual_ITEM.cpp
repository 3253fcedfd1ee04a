// SPDX-License-Identifier: GPL-3.0-or-later
#include "timeline/qual_ITEM.h"

#include <cmath>

#include "timeline/stored_keys.h"

namespace vistels {

namespace {

constexpr int qualifier_colour_decimals = 4;
constexpr int attribute_colour_decimals = 3;
constexpr double time_scale = 1e8;  // a qualifier's time is stored with 8 decimals

constexpr stored_key attribute_place[] = {
    {"x", nullptr, stored_kind::number},
    {"y", nullptr, stored_kind::number},
};
constexpr stored_key alternative_time[] = {{"alt_time", "alt time", stored_kind::number}};
constexpr stored_key count_down[] = {{"count down", nullptr, stored_kind::flag}};
constexpr stored_key recipient[] = {{"recepient", nullptr, stored_kind::text}};
constexpr stored_key after_attributes[] = {
    {"action", nullptr, stored_kind::any},        {"value", nullptr, stored_kind::number},
    {"actor", nullptr, stored_kind::text},        {"alias", nullptr, stored_kind::text},
    {"focus_vistel", nullptr, stored_kind::text}, {"zoom_rect", nullptr, stored_kind::any},
    {"x", nullptr, stored_kind::number},          {"y", nullptr, stored_kind::number},
};

std::optional<double> finite_number(const property_dictionary& stored, const char* key) {
    const auto number = stored.number(key);
    return number && std::isfinite(*number) ? number : std::nullopt;
}

void add_text(property_dictionary& stored, const char* key, const std::string& text) {
    if (!text.empty()) stored.add(key, text);
}

std::optional<colour> read_colour(const property_dictionary& stored) {
    if (const auto* text = stored.text("color")) {
        if (const auto value = colour_from_text(*text)) return value;
    }
    const auto red = finite_number(stored, "colR");
    const auto green = finite_number(stored, "colG");
    const auto blue = finite_number(stored, "colB");
    if (!red || !green || !blue) return std::nullopt;
    return colour{*red, *green, *blue, finite_number(stored, "colA").value_or(1.0)};
}

}  // namespace

clip_attribute_ITEM read_clip_attribute(const property_dictionary& stored) {
    clip_attribute_ITEM attribute;
    attribute.name = shared_text(stored.text_or_empty("name"));
    attribute.attribute_category = shared_text(stored.text_or_empty("category"));
    attribute.attribute_time = finite_number(stored, "time");
    if (const auto* text = stored.text("color")) attribute.attribute_colour = colour_from_text(*text);
    attribute.uuid = stored.text_or_empty("attr_uuid");
    keep_stored(stored, attribute_place, attribute.kept);
    return attribute;
}

property_dictionary write_clip_attribute(const clip_attribute_ITEM& attribute) {
    property_dictionary stored;
    add_text(stored, "name", attribute.name.str());
    add_text(stored, "category", attribute.attribute_category.str());
    if (attribute.attribute_time) stored.add("time", *attribute.attribute_time);
    if (attribute.attribute_colour) {
        stored.add("color", colour_text(*attribute.attribute_colour, attribute_colour_decimals));
    }
    add_text(stored, "attr_uuid", attribute.uuid);
    put_kept(attribute.kept, attribute_place, stored);
    return stored;
}

bool qual_ITEM::operator==(const qual_ITEM& other) const {
    return write_qual_item(*this) == write_qual_item(other);
}

qual_ITEM read_qual_item(const property_dictionary& stored) {
    qual_ITEM item;
    item.set_time(finite_number(stored, "time").value_or(0.0));
    item.set_real_local_time(stored.text_or_empty("clock_time"));
    item.set_name(shared_text(stored.text_or_empty("name")));
    item.set_category(shared_text(stored.text_or_empty("category")));
    if (const auto* uuid = stored_value(stored, {"uuid", "UUID", stored_kind::text})) {
        item.set_uuid(*uuid->text());
    }
    item.set_col(read_colour(stored));
    if (const auto* all = stored.array("qualifier_attributes")) {
        std::vector<clip_attribute_ITEM> attributes;
        for (const auto& one : *all) {
            if (const auto* dictionary = one.dictionary())
                attributes.push_back(read_clip_attribute(*dictionary));
        }
        item.set_attributes(std::move(attributes));
    }
    property_dictionary kept;
    keep_stored(stored, alternative_time, kept);
    keep_stored(stored, count_down, kept);
    keep_stored(stored, recipient, kept);
    keep_stored(stored, after_attributes, kept);
    item.set_kept(std::move(kept));
    return item;
}

property_dictionary write_qual_item(const qual_ITEM& item) {
    property_dictionary stored;
    const auto kept = item.kept();
    stored.add("time", std::round(item.time() * time_scale) / time_scale);
    put_kept(kept, alternative_time, stored);
    add_text(stored, "clock_time", item.real_local_time());
    put_kept(kept, count_down, stored);
    add_text(stored, "name", item.name().str());
    add_text(stored, "category", item.category().str());
    put_kept(kept, recipient, stored);
    add_text(stored, "uuid", item.uuid());
    if (const auto colour = item.col()) stored.add("color", colour_text(*colour, qualifier_colour_decimals));
    const auto attributes = item.attributes();
    if (!attributes.empty()) {
        property_array all;
        for (const auto& attribute : attributes) all.emplace_back(write_clip_attribute(attribute));
        stored.add("qualifier_attributes", std::move(all));
    }
    put_kept(kept, after_attributes, stored);
    return stored;
}

}  // namespace vistels
