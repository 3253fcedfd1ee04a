// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/event/clip_selection.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace vistels {

namespace {

// With fewer of all clips selected they are looked up, with more all are looked at.
constexpr std::size_t looked_up_share = 16;
// With more clips in one edit a set is made of the selected ones.
constexpr std::size_t few_changes = 8;
constexpr unsigned without_names = change_set::everything & ~change_set::others_changed;

}  // namespace

clip_selection::clip_selection(timeline_document& document, view_kind kind)
    : document_(document), is_main_(kind == view_kind::main) {
    changes_ = document_.changed.connect([this](const change_set& changes) { follow(changes); });
}

std::vector<clip_place> clip_selection::clips() const {
    const sxy_DATA_root& timeline = document_.timeline();
    std::vector<clip_place> found;
    if (chosen_.size() > timeline.clip_count() / looked_up_share + 1) {
        for (const auto& row : timeline.rows()) {
            for (const auto& clip : row->clips()) {
                if (contains(*clip)) found.push_back({clip, row->uuid(), false});
            }
        }
        return found;
    }
    using place = std::tuple<std::size_t, std::size_t, std::size_t>;  // row, clip, in `all`
    std::vector<clip_place> all;
    std::vector<place> order;
    for (const auto& uuid : chosen_) {
        auto one = timeline.find_clip(uuid.str());
        if (!one || !contains(*one->clip)) continue;
        const std::size_t row = *timeline.row_index(one->row);
        order.emplace_back(row, timeline.rows()[row]->clips().position(*one->clip), all.size());
        all.push_back(std::move(*one));
    }
    std::sort(order.begin(), order.end());
    for (const auto& one : order) found.push_back(std::move(all[std::get<2>(one)]));
    return found;
}

// Whether it was another before.
bool clip_selection::set(const clip_place& place, bool selected) {
    if (contains(*place.clip) == selected) return false;
    selected_.put(*place.clip, selected);
    if (is_main_) place.clip->set_selected(selected);
    return true;
}

void clip_selection::add(const std::string& clip, rows& touched) {
    const auto place = document_.timeline().find_clip(clip);
    if (!place || place->is_live || !set(*place, true)) return;
    chosen_.emplace_back(clip);
    touched.insert(place->row);
}

void clip_selection::clear(rows& touched) {
    for (const auto& uuid : chosen_) {
        std::string clip = uuid.str();
        if (const auto place = document_.timeline().find_clip(clip)) {
            if (set(*place, false)) touched.insert(place->row);
        } else {
            gone_.insert(std::move(clip));
        }
    }
    chosen_.clear();
}

void clip_selection::select(const std::vector<std::string>& clips) {
    rows touched;
    clear(touched);
    for (const auto& clip : clips) add(clip, touched);
    last_ = clips.empty() ? std::string() : clips.back();
    changed.emit(touched);
}

void clip_selection::toggle(const std::string& clip) {
    const auto place = document_.timeline().find_clip(clip);
    if (!place || place->is_live) return;
    rows touched{place->row};
    last_ = clip;
    if (contains(*place->clip)) {
        set(*place, false);
        std::erase(chosen_, compact_text(clip));
    } else {
        add(clip, touched);
    }
    changed.emit(touched);
}

void clip_selection::extend_to(const std::string& clip, const wanted_clips& wanted) {
    const sxy_DATA_root& timeline = document_.timeline();
    const auto here = timeline.find_clip(clip);
    const auto from = timeline.find_clip(last_);
    if (!here || !from || !(here->row == from->row)) return select({clip});
    const clip_list& clips = timeline.row(here->row)->clips();
    const auto [first, last] = std::minmax({clips.position(*here->clip), clips.position(*from->clip)});
    std::vector<std::string> chosen;
    for (std::size_t index = first; index <= last && index < clips.size(); ++index) {
        const bool is_end = clips[index] == here->clip || clips[index] == from->clip;
        if (is_end || wanted(*clips[index])) chosen.push_back(clips[index]->id());
    }
    const std::string kept = last_;
    select(chosen);
    last_ = kept;
}

void clip_selection::select_where(const wanted_clips& wanted) {
    rows touched;
    clear(touched);
    for (const auto& row : document_.timeline().rows()) {
        for (const auto& clip : row->clips()) {
            if (!wanted(*clip) || !set({clip, row->uuid(), false}, true)) continue;
            chosen_.push_back(clip->short_id());
            touched.insert(row->uuid());
        }
    }
    changed.emit(touched);
}

void clip_selection::follow(const change_set& changes) {
    // What is looked for by name in a long list is looked for in a set.
    std::unordered_set<compact_text> named;
    if (changes.clips.size() > few_changes) named.insert(chosen_.begin(), chosen_.end());
    const auto is_chosen = [&](const std::string& clip) {
        const compact_text uuid(clip);
        return changes.clips.size() > few_changes
                   ? named.contains(uuid)
                   : std::find(chosen_.begin(), chosen_.end(), uuid) != chosen_.end();
    };
    for (const auto& clip : changes.clips) take_back(clip, is_chosen);
    // Where clips are not named one by one any of them may have come back.
    if ((changes.kinds & without_names) == without_names) {
        for (const auto& clip : std::unordered_set(gone_)) take_back(clip, is_chosen);
    }
}

// What comes back, or was changed back, may be another record, and may bear the mark of another time.
void clip_selection::take_back(const std::string& clip,
                               const std::function<bool(const std::string&)>& is_chosen) {
    const auto place = document_.timeline().find_clip(clip);
    if (!place || place->is_live) return;
    if (gone_.erase(clip) > 0) {
        chosen_.emplace_back(clip);
        selected_.put(*place->clip, true);
    } else if (!contains(*place->clip) && is_chosen(clip)) {
        selected_.put(*place->clip, true);
    }
    if (is_main_) place->clip->set_selected(contains(*place->clip));
}

}  // namespace vistels
