// SPDX-License-Identifier: GPL-3.0-or-later
#include "timeline/records/sxy_DATA_root.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "timeline/records/shift_times.h"
#include "util/uuid.h"

namespace vistels {

namespace {

bool has_finite_times(const sxy_CLIP& clip) {
    return std::isfinite(clip.secs_start()) && std::isfinite(clip.secs_end());
}

// The clip with its times in order.
clip_pointer ordered(const shared_record<sxy_CLIP>& clip) {
    if (clip->secs_start() <= clip->secs_end()) return clip.pointer();
    auto copy = std::make_shared<sxy_CLIP>(*clip);
    copy->order_times();
    return copy;
}

template <class Item>
void move_item(std::vector<Item>& all, std::size_t from, std::size_t to) {
    const auto at = [&all](std::size_t index) { return all.begin() + static_cast<std::ptrdiff_t>(index); };
    if (from < to) {
        std::rotate(at(from), at(from + 1), at(to + 1));
    } else {
        std::rotate(at(to), at(from), at(from + 1));
    }
}

}  // namespace

sxy_DATA_root::sxy_DATA_root() : uuid_(new_uuid()) {}

sxy_DATA_root::sxy_DATA_root(timeline_snapshot loaded)
    : uuid_(loaded.uuid.empty() ? new_uuid() : std::move(loaded.uuid)),
      description_(std::move(loaded.description)),
      kept_(std::move(loaded.kept)),
      tags_(std::move(loaded.tags)) {
    std::size_t clips = 0;
    for (const auto& from : loaded.rows) clips += from->clips().size();
    clips_.reserve(clips);
    for (auto& from : loaded.rows) {
        auto row = std::make_shared<sxy_ROW>(*from);
        if (row->uuid().empty() || row_index(row->uuid())) row->set_uuid(shared_text(new_uuid()));
        put_row(rows_.size(), row);
        take_in(*row, owned_.back().number);
    }
}

// Two clips or rows with one UUID, or with none, would be told apart by nobody: the later one gets a new one.
// A clip read with its end before its start is put in order here, where it is first used.
void sxy_DATA_root::take_in(sxy_ROW& row, std::uint32_t number) {
    std::vector<std::size_t> wrong;
    std::size_t index = 0;
    for (const auto& clip : row.clips()) {
        const bool is_new = clips_.insert(*clip, number);
        clip->number();
        if (!is_new || clip->secs_end() < clip->secs_start()) wrong.push_back(index);
        ++index;
    }
    const auto* nameless = clips_.find("");
    if (wrong.empty() && !nameless) return;
    std::vector<clip_pointer> all(row.clips().begin(), row.clips().end());
    for (index = 0; nameless && index < all.size(); ++index) {
        if (all[index].get() == nameless->clip) wrong.push_back(index);
    }
    for (const std::size_t at : wrong) {
        auto copy = std::make_shared<sxy_CLIP>(*all[at]);
        copy->order_times();
        auto* known = clips_.find(copy->id());
        if (known && known->clip == all[at].get() && !copy->id().empty()) {
            known->clip = copy.get();
        } else {
            if (known && known->clip == all[at].get()) clips_.remove(known);
            copy->set_id(new_uuid());
            clips_.insert(*copy, number);
            copy->number();
        }
        all[at] = std::move(copy);
    }
    row.clips().assign(std::move(all));
}

std::optional<std::size_t> sxy_DATA_root::row_index(const shared_text& uuid) const {
    const auto found = row_numbers_.find(uuid);
    if (found == row_numbers_.end()) return std::nullopt;
    return row_at_[found->second];
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

std::optional<clip_place> sxy_DATA_root::find_clip(std::string_view uuid) const {
    if (const auto* found = clips_.find(uuid)) {
        const auto& row = *rows_[index_of(*found)];
        return clip_place{*row.clips().find(*found->clip), row.uuid()};
    }
    const std::size_t live = live_index(uuid);
    if (live < live_.size()) return live_[live];
    return std::nullopt;
}

bool sxy_DATA_root::has_clip(std::string_view uuid) const {
    return clips_.find(uuid) || live_index(uuid) < live_.size();
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
    return {uuid_, description_, kept_, rows_, live_, tags_, stores_only_selected()};
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

std::size_t sxy_DATA_root::live_index(std::string_view uuid) const {
    if (live_.empty()) return 0;
    const auto found = std::find(live_ids_.begin(), live_ids_.end(), compact_text(uuid));
    return static_cast<std::size_t>(found - live_ids_.begin());
}

// Rows that stand at `first` or behind it have come to where they are.
void sxy_DATA_root::note_places(std::size_t first) {
    for (std::size_t index = first; index < owned_.size(); ++index) row_at_[owned_[index].number] = index;
}

void sxy_DATA_root::put_row(std::size_t index, std::shared_ptr<sxy_ROW> row) {
    auto number = static_cast<std::uint32_t>(row_at_.size());
    if (free_numbers_.empty()) {
        row_at_.push_back(index);
    } else {
        number = free_numbers_.back();
        free_numbers_.pop_back();
    }
    row_numbers_.emplace(row->uuid(), number);
    rows_.insert(rows_.begin() + static_cast<std::ptrdiff_t>(index), row);
    owned_.insert(owned_.begin() + static_cast<std::ptrdiff_t>(index), {std::move(row), false, number});
    note_places(index);
}

bool sxy_DATA_root::insert_row(std::size_t index, sxy_ROW row) {
    if (row.uuid().empty() || row_index(row.uuid())) return false;
    for (const auto& clip : row.clips()) {
        if (has_clip(clip->id())) return false;
    }
    index = std::min(index, rows_.size());
    auto kept = std::make_shared<sxy_ROW>(std::move(row));
    put_row(index, kept);
    take_in(*kept, owned_[index].number);
    return true;
}

bool sxy_DATA_root::remove_row(const shared_text& uuid) {
    const auto index = row_index(uuid);
    const bool grows =
        std::any_of(live_.begin(), live_.end(), [&](const auto& live) { return live.row == uuid; });
    if (!index || !rows_[*index]->clips().empty() || grows) return false;
    const auto named = row_numbers_.find(uuid);
    free_numbers_.push_back(named->second);
    row_numbers_.erase(named);
    rows_.erase(rows_.begin() + static_cast<std::ptrdiff_t>(*index));
    owned_.erase(owned_.begin() + static_cast<std::ptrdiff_t>(*index));
    note_places(*index);
    return true;
}

bool sxy_DATA_root::move_row(const shared_text& uuid, std::size_t index) {
    const auto from = row_index(uuid);
    if (!from || index >= rows_.size()) return false;
    move_item(rows_, *from, index);
    move_item(owned_, *from, index);
    note_places(std::min(*from, index));
    return true;
}

bool sxy_DATA_root::change_row(const shared_text& uuid, const property_dictionary& set,
                               const property_array& unset) {
    const auto index = row_index(uuid);
    if (!index) return false;
    auto& owned = owned_[*index];
    owned = {std::make_shared<sxy_ROW>(row_with(*owned.row, set, unset)), false, owned.number};
    rows_[*index] = owned.row;
    return true;
}

bool sxy_DATA_root::set_tombstones(const shared_text& row, std::vector<sxy_Deleted_Clip_Item_k11> all) {
    const auto index = row_index(row);
    if (!index) return false;
    editable(*index).set_deleted_clips(std::move(all));
    return true;
}

bool sxy_DATA_root::insert_clip(const shared_text& row, shared_record<sxy_CLIP> clip) {
    const auto number = row_numbers_.find(row);
    if (number == row_numbers_.end() || !has_finite_times(*clip)) return false;
    auto kept = ordered(clip);
    const auto uuid = kept->id();
    if (uuid.empty() || live_index(uuid) < live_.size()) return false;
    if (!clips_.insert(*kept, number->second)) return false;
    kept->number();
    editable(row_at_[number->second]).clips().insert(std::move(kept));
    return true;
}

std::optional<clip_place> sxy_DATA_root::remove_clip(std::string_view uuid) {
    if (const std::size_t live = live_index(uuid); live < live_.size()) {
        auto removed = std::move(live_[live]);
        live_.erase(live_.begin() + static_cast<std::ptrdiff_t>(live));
        live_ids_.erase(live_ids_.begin() + static_cast<std::ptrdiff_t>(live));
        return removed;
    }
    auto* found = clips_.find(uuid);
    if (!found) return std::nullopt;
    auto& row = editable(index_of(*found));
    auto& clips = row.clips();
    const std::size_t index = clips.position(*found->clip);
    clip_place removed{clips[index], row.uuid()};
    clips_.remove(found);
    clips.remove(index);
    return removed;
}

std::optional<shared_text> sxy_DATA_root::move_clip(std::string_view uuid, const shared_text& row,
                                                    clip_pointer changed) {
    auto* found = clips_.find(uuid);
    const auto to = row_numbers_.find(row);
    if (!found || to == row_numbers_.end()) return std::nullopt;
    auto& from = editable(index_of(*found));
    const std::size_t index = from.clips().position(*found->clip);
    clip_pointer clip = changed ? std::move(changed) : from.clips()[index];
    from.clips().remove(index);
    found->row = to->second;
    found->clip = clip.get();
    editable(index_of(*found)).clips().insert(std::move(clip));
    return from.uuid();
}

bool sxy_DATA_root::replace_clip(shared_record<sxy_CLIP> clip) {
    if (!has_finite_times(*clip)) return false;
    const auto uuid = clip->id();
    if (const std::size_t live = live_index(uuid); live < live_.size()) {
        live_[live].clip = clip.pointer();
        return true;
    }
    auto* found = clips_.find(uuid);
    if (!found) return false;
    auto kept = ordered(clip);
    auto& clips = editable(index_of(*found)).clips();
    const std::size_t index = clips.position(*found->clip);
    found->clip = kept.get();
    clips.replace(index, std::move(kept));
    return true;
}

bool sxy_DATA_root::shift_times(double seconds) {
    if (!std::isfinite(seconds)) return false;
    if (seconds == 0) return true;
    for (std::size_t index = 0; index < rows_.size(); ++index) {
        auto& row = editable(index);
        std::vector<clip_pointer> all;
        all.reserve(row.clips().size());
        for (const auto& clip : std::as_const(row).clips()) {
            all.push_back(clip_shifted(*clip, seconds));
            clips_.find(clip->id())->clip = all.back().get();
        }
        row.clips().assign(std::move(all));
    }
    for (auto& live : live_) live.clip = clip_shifted(*live.clip, seconds);
    set_tags(tags_shifted(tags(), seconds));
    return true;
}

void sxy_DATA_root::set_live_clips(std::vector<clip_place> live) {
    live_ = std::move(live);
    live_ids_.clear();
    for (const auto& one : live_) live_ids_.push_back(one.clip->short_id());
}

bool sxy_DATA_root::insert_live_clip(const shared_text& row, shared_record<sxy_CLIP> clip) {
    const auto index = row_index(row);
    const auto uuid = clip->id();
    if (!index || !has_finite_times(*clip) || uuid.empty() || has_clip(uuid)) return false;
    clip->number();
    live_ids_.push_back(clip->short_id());
    live_.push_back({clip.pointer(), rows_[*index]->uuid(), true});
    return true;
}

}  // namespace vistels
