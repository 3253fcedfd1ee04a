// SPDX-License-Identifier: GPL-3.0-or-later
#include "timeline/sxy_DATA_root.h"

#include <algorithm>
#include <utility>

#include "util/uuid.h"

namespace vistels {

sxy_DATA_root::sxy_DATA_root() : uuid_(new_uuid()) {}

sxy_DATA_root::sxy_DATA_root(timeline_snapshot loaded)
    : uuid_(loaded.uuid.empty() ? new_uuid() : std::move(loaded.uuid)),
      description_(std::move(loaded.description)),
      kept_(std::move(loaded.kept)) {
    for (auto& from : loaded.rows) {
        auto row = std::make_shared<sxy_ROW>(*from);
        give_unique_uuids(*row);
        add_places(*row);
        rows_.push_back(row);
        owned_.push_back({std::move(row), false});
    }
}

// Two clips or rows with one UUID, or with none, would be told apart by nobody: the later one gets a new one.
// A clip read with its end before its start is put in order here, where it is first used.
void sxy_DATA_root::give_unique_uuids(sxy_ROW& row) {
    if (row.uuid().empty() || row_index(row.uuid())) row.set_uuid(shared_text(new_uuid()));
    std::vector<clip_pointer> clips(row.clips().begin(), row.clips().end());
    std::unordered_map<std::string, bool> here;
    bool changed = false;
    for (auto& clip : clips) {
        const bool taken = clip->id().empty() || places_.contains(clip->id()) || here.contains(clip->id());
        if (taken || clip->secs_end() < clip->secs_start()) {
            auto copy = std::make_shared<sxy_CLIP>(*clip);
            if (taken) copy->set_id(new_uuid());
            copy->order_times();
            clip = std::move(copy);
            changed = true;
        }
        here.emplace(clip->id(), true);
    }
    if (changed) row.clips().assign(std::move(clips));
}

void sxy_DATA_root::add_places(const sxy_ROW& row) {
    places_.reserve(places_.size() + row.clips().size());
    for (const auto& clip : row.clips()) places_.emplace(clip->id(), clip_place{clip, row.uuid()});
}

std::optional<std::size_t> sxy_DATA_root::row_index(const shared_text& uuid) const {
    for (std::size_t index = 0; index < rows_.size(); ++index) {
        if (rows_[index]->uuid() == uuid) return index;
    }
    return std::nullopt;
}

row_pointer sxy_DATA_root::row(const shared_text& uuid) const {
    const auto index = row_index(uuid);
    return index ? rows_[*index] : nullptr;
}

row_pointer sxy_DATA_root::row_named(std::string_view name) const {
    for (const auto& row : rows_) {
        if (row->name() == name) return row;
    }
    return nullptr;
}

std::optional<clip_place> sxy_DATA_root::find_clip(const std::string& uuid) const {
    const auto found = places_.find(uuid);
    if (found != places_.end()) return found->second;
    const std::size_t live = live_index(uuid);
    if (live < live_.size()) return live_[live];
    return std::nullopt;
}

double sxy_DATA_root::last_end() const {
    double last = 0;
    for (const auto& row : rows_) {
        for (const auto& clip : row->clips()) last = std::max(last, clip->secs_end());
    }
    return last;
}

timeline_snapshot sxy_DATA_root::snapshot() {
    for (auto& owned : owned_) owned.is_shared = true;
    return {uuid_, description_, kept_, rows_, live_};
}

sxy_ROW& sxy_DATA_root::editable(std::size_t index) {
    auto& owned = owned_[index];
    if (owned.is_shared) {
        owned.row = std::make_shared<sxy_ROW>(*owned.row);
        owned.is_shared = false;
        rows_[index] = owned.row;
    }
    return *owned.row;
}

std::size_t sxy_DATA_root::live_index(const std::string& uuid) const {
    const auto found = std::find_if(live_.begin(), live_.end(),
                                    [&](const clip_place& place) { return place.clip->id() == uuid; });
    return static_cast<std::size_t>(found - live_.begin());
}

bool sxy_DATA_root::insert_row(std::size_t index, sxy_ROW row) {
    if (row.uuid().empty() || row_index(row.uuid())) return false;
    for (const auto& clip : row.clips()) {
        if (find_clip(clip->id())) return false;
    }
    index = std::min(index, rows_.size());
    auto kept = std::make_shared<sxy_ROW>(std::move(row));
    add_places(*kept);
    rows_.insert(rows_.begin() + static_cast<std::ptrdiff_t>(index), kept);
    owned_.insert(owned_.begin() + static_cast<std::ptrdiff_t>(index), {std::move(kept), false});
    return true;
}

bool sxy_DATA_root::remove_row(const shared_text& uuid) {
    const auto index = row_index(uuid);
    const bool grows =
        std::any_of(live_.begin(), live_.end(), [&](const auto& live) { return live.row == uuid; });
    if (!index || !rows_[*index]->clips().empty() || grows) return false;
    rows_.erase(rows_.begin() + static_cast<std::ptrdiff_t>(*index));
    owned_.erase(owned_.begin() + static_cast<std::ptrdiff_t>(*index));
    return true;
}

bool sxy_DATA_root::move_row(const shared_text& uuid, std::size_t index) {
    const auto from = row_index(uuid);
    if (!from || index >= rows_.size()) return false;
    const auto move = [&](auto& all) {
        auto moved = std::move(all[*from]);
        all.erase(all.begin() + static_cast<std::ptrdiff_t>(*from));
        all.insert(all.begin() + static_cast<std::ptrdiff_t>(index), std::move(moved));
    };
    move(rows_);
    move(owned_);
    return true;
}

bool sxy_DATA_root::change_row(const shared_text& uuid, const property_dictionary& set,
                               const property_array& unset) {
    const auto index = row_index(uuid);
    if (!index) return false;
    auto& owned = owned_[*index];
    owned = {std::make_shared<sxy_ROW>(row_with(*owned.row, set, unset)), false};
    rows_[*index] = owned.row;
    return true;
}

bool sxy_DATA_root::insert_clip(const shared_text& row, sxy_CLIP clip) {
    const auto index = row_index(row);
    if (!index || clip.id().empty() || find_clip(clip.id())) return false;
    clip.order_times();
    auto kept = std::make_shared<const sxy_CLIP>(std::move(clip));
    places_.emplace(kept->id(), clip_place{kept, rows_[*index]->uuid()});
    editable(*index).clips().insert(std::move(kept));
    return true;
}

bool sxy_DATA_root::remove_clip(const std::string& uuid) {
    if (const std::size_t live = live_index(uuid); live < live_.size()) {
        live_.erase(live_.begin() + static_cast<std::ptrdiff_t>(live));
        return true;
    }
    const auto found = places_.find(uuid);
    if (found == places_.end()) return false;
    auto& clips = editable(*row_index(found->second.row)).clips();
    clips.remove(clips.position(*found->second.clip));
    places_.erase(found);
    return true;
}

bool sxy_DATA_root::move_clip(const std::string& uuid, const shared_text& row) {
    const auto found = places_.find(uuid);
    const auto to = row_index(row);
    if (found == places_.end() || !to) return false;
    const clip_pointer clip = found->second.clip;
    auto& from = editable(*row_index(found->second.row)).clips();
    from.remove(from.position(*clip));
    editable(*to).clips().insert(clip);
    found->second.row = rows_[*to]->uuid();
    return true;
}

bool sxy_DATA_root::replace_clip(sxy_CLIP clip) {
    auto kept = std::make_shared<const sxy_CLIP>(std::move(clip));
    if (const std::size_t live = live_index(kept->id()); live < live_.size()) {
        live_[live].clip = std::move(kept);
        return true;
    }
    const auto found = places_.find(kept->id());
    if (found == places_.end()) return false;
    auto& clips = editable(*row_index(found->second.row)).clips();
    clips.remove(clips.position(*found->second.clip));
    clips.insert(kept);
    found->second.clip = std::move(kept);
    return true;
}

bool sxy_DATA_root::insert_live_clip(const shared_text& row, sxy_CLIP clip) {
    const auto index = row_index(row);
    if (!index || clip.id().empty() || find_clip(clip.id())) return false;
    live_.push_back({std::make_shared<const sxy_CLIP>(std::move(clip)), rows_[*index]->uuid(), true});
    return true;
}

}  // namespace vistels
