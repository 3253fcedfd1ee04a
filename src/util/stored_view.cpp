// SPDX-License-Identifier: GPL-3.0-or-later
#include "util/stored_view.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <new>
#include <type_traits>
#include <utility>
#include <variant>

namespace vistels {

namespace {

// The largest magnitude below which every whole number is a double.
constexpr double largest_exact_integer = 9007199254740992.0;
constexpr std::size_t first_block_bytes = std::size_t{1} << 14;
constexpr std::size_t largest_block_bytes = std::size_t{1} << 18;

// What lies in an arena is never destroyed one by one.
static_assert(std::is_trivially_copyable_v<stored_view> && std::is_trivially_destructible_v<stored_view>);
static_assert(std::is_trivially_copyable_v<stored_member> && std::is_trivially_destructible_v<stored_member>);
static_assert(sizeof(stored_view) == 16 && sizeof(stored_member) == 32);
static_assert(alignof(stored_view) <= alignof(double) && alignof(stored_member) <= alignof(double));

}  // namespace

stored_view stored_view::of_data(std::string_view bytes) {
    return {form::data, bytes.data(), bytes.size()};
}

stored_view stored_view::of_date(double seconds_since_1970) {
    stored_view view(seconds_since_1970);
    view.form_and_size_ = word(form::date, 0);
    return view;
}

std::optional<bool> stored_view::boolean() const {
    if (kind() != form::boolean) return std::nullopt;
    return boolean_;
}

std::optional<std::int64_t> stored_view::integer() const {
    if (kind() == form::integer) return integer_;
    if (kind() == form::real && std::abs(real_) <= largest_exact_integer && std::trunc(real_) == real_) {
        return static_cast<std::int64_t>(real_);
    }
    return std::nullopt;
}

std::optional<double> stored_view::number() const {
    if (kind() == form::real) return real_;
    if (kind() == form::integer) return static_cast<double>(integer_);
    return std::nullopt;
}

std::optional<std::string_view> stored_view::text() const {
    if (kind() != form::text) return std::nullopt;
    return std::string_view(static_cast<const char*>(data_), size());
}

std::span<const stored_view> stored_view::items() const {
    if (kind() != form::array) return {};
    return {static_cast<const stored_view*>(data_), size()};
}

std::span<const stored_member> stored_view::members() const {
    if (kind() != form::dictionary) return {};
    return {static_cast<const stored_member*>(data_), size()};
}

property_value stored_view::copy() const {
    switch (kind()) {
        case form::boolean:
            return property_value(boolean_);
        case form::integer:
            return property_value(integer_);
        case form::real:
            return property_value(real_);
        case form::text:
            return property_value(*text());
        case form::data:
            return property_value(property_data{std::string(static_cast<const char*>(data_), size())});
        case form::date:
            return property_value(property_date{real_});
        case form::array: {
            property_array array;
            array.reserve(size());
            for (const auto& item : items()) array.push_back(item.copy());
            return property_value(std::move(array));
        }
        case form::dictionary: {
            property_dictionary dictionary;
            dictionary.reserve(size());
            for (const auto& member : members()) dictionary.add(member.key, member.value.copy());
            return property_value(std::move(dictionary));
        }
        case form::null:
            break;
    }
    return {};
}

void* stored_arena::take(std::size_t bytes) {
    constexpr std::size_t unit = alignof(double);
    bytes = (bytes + unit - 1) / unit * unit;
    while (block_ < blocks_.size() && blocks_[block_].size - used_ < bytes) {
        // A large piece gets a block of its own, and what is left of this one is not lost for the small ones.
        if (bytes >= largest_block_bytes / 8) return take_apart(bytes);
        ++block_;
        used_ = 0;
    }
    if (block_ == blocks_.size()) {
        const std::size_t next =
            blocks_.empty() ? first_block_bytes : std::min(blocks_.back().size * 2, largest_block_bytes);
        add_block(block_, std::max(next, bytes));
    }
    void* taken = blocks_[block_].bytes.get() + used_;
    used_ += bytes;
    return taken;
}

void* stored_arena::take_apart(std::size_t bytes) {
    for (std::size_t later = block_ + 1; later < blocks_.size(); ++later) {
        if (blocks_[later].size < bytes) continue;
        std::swap(blocks_[block_], blocks_[later]);
        std::swap(blocks_[block_ + 1], blocks_[later]);
        return blocks_[block_++].bytes.get();
    }
    add_block(block_, bytes);
    return blocks_[block_++].bytes.get();
}

void stored_arena::add_block(std::size_t place, std::size_t bytes) {
    // Not value-initialised: what is taken is written before it is read.
    blocks_.insert(blocks_.begin() + static_cast<std::ptrdiff_t>(place),
                   {std::unique_ptr<std::byte[]>(new std::byte[bytes]), bytes});
}

std::span<stored_view> stored_arena::room_for_items(std::size_t count) {
    if (count == 0) return {};
    return {static_cast<stored_view*>(take(count * sizeof(stored_view))), count};
}

std::span<stored_member> stored_arena::room_for_members(std::size_t count) {
    if (count == 0) return {};
    return {static_cast<stored_member*>(take(count * sizeof(stored_member))), count};
}

std::span<char> stored_arena::room_for_text(std::size_t bytes) {
    if (bytes == 0) return {};
    return {static_cast<char*>(take(bytes)), bytes};
}

std::span<const stored_view> stored_arena::keep(std::span<const stored_view> items) {
    const auto room = room_for_items(items.size());
    std::uninitialized_copy(items.begin(), items.end(), room.data());
    return room;
}

std::span<const stored_member> stored_arena::keep(std::span<const stored_member> members) {
    const auto room = room_for_members(members.size());
    std::uninitialized_copy(members.begin(), members.end(), room.data());
    return room;
}

std::string_view stored_arena::keep(std::string_view text) {
    const auto room = room_for_text(text.size());
    if (!text.empty()) std::memcpy(room.data(), text.data(), text.size());
    return {room.data(), room.size()};
}

void stored_arena::clear() {
    block_ = 0;
    used_ = 0;
}

stored_view view_of(const property_value& value, stored_arena& arena) {
    struct maker {
        stored_arena& arena;
        stored_view operator()(std::monostate) const { return {}; }
        stored_view operator()(bool held) const { return stored_view(held); }
        stored_view operator()(std::int64_t held) const { return stored_view(held); }
        stored_view operator()(double held) const { return stored_view(held); }
        stored_view operator()(const std::string& held) const { return stored_view(std::string_view(held)); }
        stored_view operator()(const property_data& held) const { return stored_view::of_data(held.bytes); }
        stored_view operator()(const property_date& held) const { return stored_view::of_date(held.seconds); }
        stored_view operator()(const property_array& held) const {
            const auto room = arena.room_for_items(held.size());
            for (std::size_t at = 0; at < held.size(); ++at) {
                std::construct_at(&room[at], view_of(held[at], arena));
            }
            return stored_view(std::span<const stored_view>(room));
        }
        stored_view operator()(const property_dictionary& held) const { return view_of(held, arena); }
    };
    return std::visit(maker{arena}, value.get());
}

stored_view view_of(const property_dictionary& value, stored_arena& arena) {
    const auto room = arena.room_for_members(value.size());
    std::size_t at = 0;
    for (const auto& entry : value) {
        std::construct_at(&room[at++], stored_member{entry.key, view_of(entry.value, arena)});
    }
    return stored_view(std::span<const stored_member>(room));
}

}  // namespace vistels
