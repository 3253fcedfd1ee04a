// SPDX-License-Identifier: GPL-3.0-or-later
#include "timeline/edits/clip_moving.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <map>

#include "timeline/edits/clip_operations.h"
#include "timeline/edits/edit_failures.h"
#include "timeline/edits/edit_names.h"
#include "timeline/records/shift_times.h"
#include "util/uuid.h"

namespace vistels {

namespace {

using operation_list = std::vector<operation::any>;

const char* name_for(std::size_t clips, const char* one, const char* several) {
    return clips == 1 ? one : several;
}

std::string scope_of(const std::vector<std::string>& clips) {
    return clips.size() == 1 ? clips.front() : std::string();
}

std::ptrdiff_t place_in(const std::vector<shared_text>& order, const shared_text& row) {
    const auto found = std::find(order.begin(), order.end(), row);
    return found == order.end() ? -1 : found - order.begin();
}

// What makes `after` of `before`, qualifiers left out.
void add_changed_values(const sxy_CLIP& before, const sxy_CLIP& after, operation_list& to) {
    auto change = inverse_values(write_clip_values(after), write_clip_values(before));
    if (change.set.empty() && change.unset.empty()) return;
    to.emplace_back(operation::change_clip{before.id(), std::move(change.set), std::move(change.unset)});
}

// As single values, so that taking it back gives every time to the last bit.
void add_shift(const sxy_CLIP& clip, double seconds, operation_list& to) {
    const auto before = clip.qualifiers();
    const bool has_nameless =
        std::any_of(before->begin(), before->end(), [](const auto& one) { return one.uuid().empty(); });
    if (has_nameless) return void(to.emplace_back(operation::shift_clips{{clip.id()}, seconds}));
    const auto shifted = clip_shifted(clip, seconds);
    add_changed_values(clip, *shifted, to);
    const auto after = shifted->qualifiers();
    for (std::size_t i = 0; i < before->size(); ++i) {
        to.emplace_back(operation::remove_qualifier{clip.id(), (*before)[i].uuid()});
        to.emplace_back(operation::insert_qualifier{clip.id(), i, (*after)[i]});
    }
}

clip_span trimmed(const sxy_CLIP& clip, double starts_by, double ends_by) {
    const double start = clip.secs_start();
    const double end = clip.secs_end();
    const double least = std::min(least_seconds_left, end - start);
    clip_span span{start + starts_by, end + ends_by};
    // The edge that is moved gives way; of two the end.
    if (span.end - span.start >= least) return span;
    if (starts_by != 0 && ends_by == 0) return {end - least, end};
    return {span.start, span.start + least};
}

void put_in_halves(const sxy_CLIP& clip, double seconds, sxy_CLIP& first, sxy_CLIP& second) {
    const auto part = [seconds](auto all, auto time_of, auto set_first, auto set_second) {
        auto later = all;
        std::erase_if(all, [&](const auto& one) { return time_of(one) >= seconds; });
        std::erase_if(later, [&](const auto& one) { return time_of(one) < seconds; });
        set_first(std::move(all));
        set_second(std::move(later));
    };
    part(
        clip.pause_items(), [](const clip_Pause_Item& one) { return one.seconds; },
        [&](auto all) { first.set_pause_items(std::move(all)); },
        [&](auto all) { second.set_pause_items(std::move(all)); });
    part(
        clip.triggers(), [](const trigger_event_ITEM& one) { return one.trigger_Time; },
        [&](auto all) { first.set_triggers(std::move(all)); },
        [&](auto all) { second.set_triggers(std::move(all)); });
    if (const auto objects = clip.inserted_objects()) {
        const auto with = [&](sxy_CLIP& half, auto items) {
            auto changed = *objects;
            changed.items = std::move(items);
            half.set_inserted_objects(copied_ptr<inserted_Objects_Root_25>(std::move(changed)));
        };
        part(
            objects->items, [](const auto& one) { return one.inserted_obj_start_secs; },
            [&](auto all) { with(first, std::move(all)); }, [&](auto all) { with(second, std::move(all)); });
    }
}

sxy_CLIP with_span(const sxy_CLIP& clip, clip_span span) {
    const auto change = plan_new_times(clip, span);
    return clip_with(clip, change.set, change.unset);
}

void add_split(const clip_place& place, double seconds, const edit_stamp& stamp, operation_list& to) {
    const sxy_CLIP& clip = *place.clip;
    sxy_CLIP first = with_span(clip, {clip.secs_start(), seconds});
    sxy_CLIP second = with_span(copy_moved(clip, 0, stamp), {seconds, clip.secs_end()});
    put_in_halves(clip, seconds, first, second);
    qual_ROOT later;
    const auto all = clip.qualifiers();
    const auto copies = second.qualifiers();
    for (std::size_t i = 0; i < all->size(); ++i) {
        if ((*all)[i].time() < seconds || (*all)[i].uuid().empty()) continue;
        to.emplace_back(operation::remove_qualifier{clip.id(), (*all)[i].uuid()});
        later.push_back((*copies)[i]);
    }
    second.set_qualifiers(std::move(later));
    add_changed_values(clip, first, to);
    to.emplace_back(operation::insert_clip{place.row, std::move(second)});
}

// The row of that name and category; empty: none.
shared_text row_like(const sxy_DATA_root& timeline, const sxy_ROW& wanted) {
    for (const auto& row : timeline.rows()) {
        if (row->has_name(wanted.name()) && row->category() == wanted.category()) return row->uuid();
    }
    return {};
}

}  // namespace

result<timeline_edit> plan_move_clips(const sxy_DATA_root& timeline, const std::vector<std::string>& clips,
                                      double seconds, const std::vector<shared_text>& order, int rows) {
    if (!std::isfinite(seconds)) return clip_moved_to_no_time();
    auto found = find_whole_clips(timeline, clips);
    if (!found) return found.error();
    timeline_edit edit{
        name_for(clips.size(), edit_name::move_clip, edit_name::move_clips), scope_of(clips), {}};
    for (const auto& place : found.value()) {
        if (seconds != 0) add_shift(*place.clip, seconds, edit.operations);
        const auto at = rows == 0 ? -1 : place_in(order, place.row);
        const auto to = at + rows;
        if (at < 0 || to < 0 || to >= static_cast<std::ptrdiff_t>(order.size())) continue;
        edit.operations.emplace_back(
            operation::move_clip{place.clip->id(), order[static_cast<std::size_t>(to)]});
    }
    return edit;
}

result<timeline_edit> plan_to_row(const sxy_DATA_root& timeline, const std::vector<std::string>& clips,
                                  const shared_text& row) {
    if (!timeline.row_index(row)) return row_is_gone();
    auto found = find_whole_clips(timeline, clips);
    if (!found) return found.error();
    timeline_edit edit{
        name_for(clips.size(), edit_name::move_clip, edit_name::move_clips), scope_of(clips), {}};
    for (const auto& place : found.value()) {
        if (place.row != row) edit.operations.emplace_back(operation::move_clip{place.clip->id(), row});
    }
    return edit;
}

result<timeline_edit> plan_trim_edges(const sxy_DATA_root& timeline, const std::vector<std::string>& clips,
                                      double starts_by, double ends_by) {
    if (!std::isfinite(starts_by) || !std::isfinite(ends_by)) return clip_trimmed_to_no_time();
    auto found = find_whole_clips(timeline, clips);
    if (!found) return found.error();
    timeline_edit edit{
        name_for(clips.size(), edit_name::trim_clip, edit_name::trim_clips), scope_of(clips), {}};
    for (const auto& place : found.value()) {
        const clip_span span = trimmed(*place.clip, starts_by, ends_by);
        if (span.start == place.clip->secs_start() && span.end == place.clip->secs_end()) continue;
        edit.operations.emplace_back(plan_new_times(*place.clip, span));
    }
    return edit;
}

result<timeline_edit> plan_roll_joint(const sxy_DATA_root& timeline, const std::string& before,
                                      const std::string& after, double seconds) {
    if (!std::isfinite(seconds)) return clip_trimmed_to_no_time();
    for (const auto& uuid : {before, after}) {
        if (auto found = find_whole_clips(timeline, {uuid}); !found) return found.error();
    }
    const clip_pointer first = timeline.find_clip(before)->clip;
    const clip_pointer second = timeline.find_clip(after)->clip;
    timeline_edit edit{edit_name::roll_joint, before, {}};
    const double from = first->secs_start() + least_seconds_left;
    const double to = second->secs_end() - least_seconds_left;
    if (from > to) return edit;
    const double at = std::clamp(seconds, from, to);
    if (at == first->secs_end() && at == second->secs_start()) return edit;
    edit.operations.emplace_back(plan_new_times(*first, {first->secs_start(), at}));
    edit.operations.emplace_back(plan_new_times(*second, {at, second->secs_end()}));
    return edit;
}

result<timeline_edit> plan_split_at(const sxy_DATA_root& timeline, const std::vector<std::string>& clips,
                                    double seconds, const edit_stamp& stamp) {
    auto found = find_whole_clips(timeline, clips);
    if (!found) return found.error();
    timeline_edit edit{"", scope_of(clips), {}};
    std::size_t count = 0;
    for (const auto& place : found.value()) {
        if (!(place.clip->secs_start() < seconds && seconds < place.clip->secs_end())) continue;
        add_split(place, seconds, stamp, edit.operations);
        ++count;
    }
    if (count == 0) return no_clip_lies_here();
    edit.name = name_for(count, edit_name::split_clip, edit_name::split_clips);
    return edit;
}

result<timeline_edit> plan_draw_clip(const sxy_DATA_root& timeline, const shared_text& row, double start,
                                     double end) {
    const auto record = timeline.row(row);
    if (!record) return row_is_gone();
    if (!std::isfinite(start) || !std::isfinite(end)) return clip_trimmed_to_no_time();
    sxy_CLIP clip;
    clip.set_id(new_uuid());
    clip.set_secs_start(std::min(start, end));
    clip.set_secs_end(std::max(start, end));
    clip.set_row_uuid_in_clip(row);
    clip.set_row_category_in_clip(shared_text(record->category()));
    clip.set_col(record->col());
    timeline_edit edit{edit_name::draw_clip, clip.id(), {}};
    edit.operations.emplace_back(operation::insert_clip{row, std::move(clip)});
    return edit;
}

result<property_dictionary> copied_clips(const sxy_DATA_root& timeline,
                                         const std::vector<std::string>& clips) {
    auto found = find_whole_clips(timeline, clips);
    if (!found) return found.error();
    timeline_edit all;
    std::vector<shared_text> rows;
    for (const auto& place : found.value()) {
        if (std::find(rows.begin(), rows.end(), place.row) == rows.end()) {
            rows.push_back(place.row);
            sxy_ROW row = *timeline.row(place.row);
            row.clips().assign({});
            row.set_deleted_clips({});
            all.operations.emplace_back(operation::insert_row{timeline.rows().size(), std::move(row)});
        }
        all.operations.emplace_back(operation::insert_clip{place.row, place.clip});
    }
    return write_edit(all);
}

result<timeline_edit> plan_paste(const sxy_DATA_root& timeline, const property_dictionary& copied,
                                 double seconds, const edit_stamp& stamp) {
    auto read = read_edit(copied);
    if (!read) return read.error();
    if (!std::isfinite(seconds)) return clip_copied_to_no_time();
    timeline_edit edit;
    std::map<std::string, shared_text> row_for;
    std::vector<operation::insert_clip> made;
    double earliest = HUGE_VAL;
    std::size_t last = timeline.rows().size();
    for (const auto& any : read.value().operations) {
        if (const auto* insert = std::get_if<operation::insert_row>(&any)) {
            const shared_text was = insert->row->uuid();
            shared_text to = timeline.row_index(was) ? was : row_like(timeline, *insert->row);
            if (to.empty()) {
                sxy_ROW row = duplicate_copy_sxy_data(*insert->row);
                to = row.uuid();
                edit.operations.emplace_back(operation::insert_row{last++, std::move(row)});
            }
            row_for.insert_or_assign(was.str(), to);
        } else if (const auto* clip = std::get_if<operation::insert_clip>(&any)) {
            const auto to = row_for.find(clip->row.str());
            if (to == row_for.end()) return what_it_changes_is_gone();
            made.push_back({to->second, clip->clip});
            earliest = std::min(earliest, clip->clip->secs_start());
        }
    }
    edit.name = name_for(made.size(), edit_name::paste_clip, edit_name::paste_clips);
    for (const auto& one : made) {
        sxy_CLIP clip = copy_moved(*one.clip, seconds - earliest, stamp);
        clip.set_coll_id(0);  // that of the collection it goes to
        edit.operations.emplace_back(operation::insert_clip{one.row, std::move(clip)});
    }
    return edit;
}

}  // namespace vistels
