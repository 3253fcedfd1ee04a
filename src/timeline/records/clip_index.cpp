// SPDX-License-Identifier: GPL-3.0-or-later
#include "timeline/records/clip_index.h"

#include <utility>

#include "util/checksum.h"

namespace vistels {

namespace {

constexpr std::size_t least_places = 16;

bool too_full(std::size_t clips, std::size_t places) {
    return clips * 5 > places * 4;
}

std::uint32_t hash_of(std::string_view uuid) {
    return static_cast<std::uint32_t>(checksum(uuid));
}

}  // namespace

clip_index::entry& clip_index::place_of(std::string_view uuid, std::uint32_t hash) {
    std::size_t place = hash & (places_.size() - 1);
    while (true) {
        auto& here = places_[place];
        if (!here.clip || (here.hash == hash && here.clip->has_id(uuid))) return here;
        place = place_after(place);
    }
}

clip_index::entry* clip_index::find(std::string_view uuid) {
    if (size_ == 0) return nullptr;
    auto& place = place_of(uuid, hash_of(uuid));
    return place.clip ? &place : nullptr;
}

bool clip_index::insert(const sxy_CLIP& clip, std::uint32_t row) {
    reserve(size_ + 1);
    const auto uuid = clip.id();
    const std::uint32_t hash = hash_of(uuid);
    auto& place = place_of(uuid, hash);
    if (place.clip) return false;
    place = {&clip, hash, row};
    ++size_;
    return true;
}

// What stands behind the gap moves up into it, unless that is before where its hash says.
void clip_index::remove(entry* found) {
    auto gap = static_cast<std::size_t>(found - places_.data());
    const std::size_t mask = places_.size() - 1;
    for (std::size_t next = place_after(gap); places_[next].clip; next = place_after(next)) {
        const std::size_t wanted = places_[next].hash & mask;
        if (((next - wanted) & mask) < ((next - gap) & mask)) continue;
        places_[gap] = places_[next];
        gap = next;
    }
    places_[gap] = {};
    --size_;
}

void clip_index::reserve(std::size_t clips) {
    std::size_t places = places_.empty() ? least_places : places_.size();
    while (too_full(clips, places)) places *= 2;
    if (places != places_.size()) grow(places);
}

void clip_index::grow(std::size_t places) {
    const auto earlier = std::exchange(places_, std::vector<entry>(places));
    for (const auto& one : earlier) {
        if (!one.clip) continue;
        std::size_t place = one.hash & (places - 1);
        while (places_[place].clip) place = place_after(place);
        places_[place] = one;
    }
}

}  // namespace vistels
