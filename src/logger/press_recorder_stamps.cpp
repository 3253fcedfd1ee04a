// SPDX-License-Identifier: GPL-3.0-or-later
//
// What presses put on clips: qualifiers, attributes, triggers.
#include <algorithm>
#include <utility>

#include "logger/press_recorder.h"
#include "util/uuid.h"

namespace vistels {

namespace {

clip_attribute_ITEM attribute_of(const press_action& action) {
    clip_attribute_ITEM attribute;
    attribute.name = shared_text(action.button->name());
    attribute.attribute_category = shared_text(action.button->category());
    attribute.attribute_time = action.at;
    if (const auto colour = action.button->made_colour()) attribute.attribute_colour.make() = *colour;
    if (action.place) {
        attribute._at_pos_x = action.place->x;
        attribute._at_pos_y = action.place->y;
    }
    return attribute;
}

qual_ITEM qualifier_of(const press_action& action, double time) {
    qual_ITEM item;
    item.set_name(shared_text(action.button->name()));
    item.set_category(shared_text(action.button->category()));
    item.set_time(time);
    item.set_real_local_time(action.time_of_day);
    item.set_created_on_event(static_cast<std::int64_t>(action.round));
    item.set_col(action.button->made_colour());
    if (action.place) item.set_pos(action.place);
    return item;
}

trigger_event_ITEM trigger_of(const press_action& action, double time) {
    const std::string type = action.button->trigger_type();
    return {time, shared_text(type.empty() ? default_trigger_type : type), action.button->made_colour()};
}

// Each clip and qualifier has its own.
void name_anew(std::vector<clip_attribute_ITEM>& attributes) {
    for (auto& attribute : attributes) attribute.uuid = compact_text(new_uuid());
}

}  // namespace

// The rows of the buttons that take no qualifiers; a row that another button feeds as well is not among them.
press_recorder::qualifier_rows press_recorder::rows_without_qualifiers() const {
    const auto& all = buttons_.all();
    const auto blocks = [](const button_record& one) {
        return one->block_qualifiers() && one->makes_clips();
    };
    qualifier_rows blocked;
    if (std::none_of(all.begin(), all.end(), blocks)) return blocked;
    const auto rows = buttons_.rows_of_all(document_.timeline());
    for (std::size_t n = 0; n < all.size(); ++n) {
        if (rows[n] && blocks(all[n])) blocked.insert(rows[n]->uuid());
    }
    for (std::size_t n = 0; n < all.size(); ++n) {
        if (rows[n] && !blocks(all[n]) && all[n]->makes_clips()) blocked.erase(rows[n]->uuid());
    }
    return blocked;
}

// By its button where a press of this run made it, else by its row; the rows are looked up when the first is
// asked for.
bool press_recorder::takes_no_qualifiers(const clip_place& place, std::optional<qualifier_rows>& rows) const {
    if (const auto* made_by = buttons_.find(coded_.button_of(place.clip->id())))
        return (*made_by)->block_qualifiers();
    if (!rows) rows = rows_without_qualifiers();
    return rows->contains(place.row);
}

stamped_clips press_recorder::reach(double at) const {
    std::vector<std::string> running;
    for (const auto& one : *running_) {
        if (one.from <= at && at <= one.until && document_.timeline().find_clip(one.clip))
            running.push_back(one.clip);
    }
    for (const auto& [clip, growing] : growing_) {
        if (!growing.unsaved) continue;
        const auto* made_by = buttons_.find(coded_.button_of(clip));
        if (!made_by || !(*made_by)->block_qualifiers()) running.push_back(clip);
    }
    std::optional<qualifier_rows> rows;
    return find_stamped_clips(
        {document_.timeline(), settings_, std::move(running), coded_.made(),
         [this, &rows](const clip_place& place) { return takes_no_qualifiers(place, rows); }},
        at);
}

// Done to a clip that grows in memory alone, when the edit is on record.
void press_recorder::change_unsaved(const std::string& clip, std::function<void(sxy_CLIP&)> change) {
    with_edit_.emplace_back([this, clip, change = std::move(change)] {
        const auto found = growing_.find(clip);
        if (found != growing_.end() && found->second.unsaved) change(*found->second.unsaved);
    });
}

void press_recorder::put_qualifier(timeline_edit& edit, const std::string& clip, const qual_ITEM& item) {
    const auto place = document_.timeline().find_clip(clip);
    if (place) {
        edit.operations.emplace_back(
            operation::insert_qualifier{clip, place->clip->qualifiers()->size(), item});
        return;
    }
    change_unsaved(clip, [item](sxy_CLIP& growing) {
        qual_ROOT all = *growing.qualifiers();
        all.push_back(item);
        growing.set_qualifiers(std::move(all));
    });
}

result<press_outcome> press_recorder::stamp(const press_action& action) {
    const auto target = reach(action.at);
    if (target.clips.empty()) return press_outcome{made_kind::nothing, {}, true, false};
    auto edit = edit_of(action);
    qual_ITEM item = qualifier_of(action, target.time);
    std::vector<stamped_qualifier> stamped;
    for (const auto& clip : target.clips) {
        item.set_uuid(new_uuid());
        name_anew(waiting_attributes_);
        item.set_attributes(waiting_attributes_);
        put_qualifier(edit, clip, item);
        stamped.push_back({clip, item.uuid()});
    }
    if (auto applied = apply(std::move(edit)); !applied) return applied.error();
    last_stamped_.set(std::move(stamped));
    waiting_attributes_.clear();
    return press_outcome{made_kind::qualifier, target.clips.back(), false, false};
}

void press_recorder::put_attribute(timeline_edit& edit, const stamped_qualifier& on,
                                   const clip_attribute_ITEM& attribute) {
    const auto place = document_.timeline().find_clip(on.clip);
    const auto* clip = place ? place->clip.get() : unsaved(on.clip);
    if (!clip) return;
    const auto all = clip->qualifiers();
    const auto found = std::find_if(all->begin(), all->end(),
                                    [&](const qual_ITEM& item) { return item.uuid() == on.qualifier; });
    if (found == all->end()) return;
    qual_ITEM changed = *found;
    auto attributes = changed.attributes();
    attributes.push_back(attribute);
    changed.set_attributes(std::move(attributes));
    const auto index = static_cast<std::size_t>(found - all->begin());
    if (place) {
        edit.operations.emplace_back(operation::remove_qualifier{on.clip, on.qualifier});
        edit.operations.emplace_back(operation::insert_qualifier{on.clip, index, std::move(changed)});
        return;
    }
    change_unsaved(on.clip, [index, changed](sxy_CLIP& growing) {
        qual_ROOT now = *growing.qualifiers();
        if (index < now.size()) now[index] = changed;
        growing.set_qualifiers(std::move(now));
    });
}

// The last qualifier is that of the last press, on all clips on which it still is.
result<press_outcome> press_recorder::add_attribute(const press_action& action) {
    const auto stage = action.button->stage();
    const auto attribute = attribute_of(action);
    press_outcome outcome;
    if (stage != attribute_stage::next) {
        auto edit = edit_of(action);
        for (const auto& on : *last_stamped_) {
            std::vector<clip_attribute_ITEM> one{attribute};
            name_anew(one);
            put_attribute(edit, on, one.front());
        }
        if (!edit.operations.empty() || !with_edit_.empty()) {
            outcome.made = made_kind::attribute;
            outcome.clip = last_stamped_->back().clip;
        }
        if (auto applied = apply(std::move(edit)); !applied) return applied.error();
    }
    if (stage != attribute_stage::last) {
        waiting_attributes_.push_back(attribute);
        outcome.waits = true;
    }
    outcome.nothing_to_stamp = outcome.made == made_kind::nothing && !outcome.waits;
    return outcome;
}

result<press_outcome> press_recorder::add_trigger(const press_action& action) {
    if (const auto* target = buttons_.find(action.button->action_link_to())) {
        auto edit = edit_of(action);
        plans_triggers_ = true;
        auto part = observer_.plan_trigger((*target)->uuid(), trigger_of(action, action.at));
        if (part) edit.others.push_back(std::move(*part));
        if (auto applied = apply(std::move(edit)); !applied) return applied.error();
        return press_outcome{made_kind::trigger, {}, false, false};
    }
    const auto target = reach(action.at);
    const auto trigger = trigger_of(action, target.time);
    auto edit = edit_of(action);
    for (const auto& clip : target.clips) put_trigger(edit, clip, trigger);
    if (auto applied = apply(std::move(edit)); !applied) return applied.error();
    if (target.clips.empty()) return press_outcome{made_kind::nothing, {}, true, false};
    return press_outcome{made_kind::trigger, target.clips.back(), false, false};
}

void press_recorder::put_trigger(timeline_edit& edit, const std::string& clip,
                                 const trigger_event_ITEM& trigger) {
    const auto place = document_.timeline().find_clip(clip);
    if (!place) {
        change_unsaved(clip, [trigger](sxy_CLIP& growing) {
            auto all = growing.triggers();
            all.push_back(trigger);
            growing.set_triggers(std::move(all));
        });
        return;
    }
    const auto stored = write_clip_values(*place->clip);
    const auto* had = stored.array("triggers");
    property_array all = had ? *had : property_array();
    all.emplace_back(write_trigger(trigger));
    operation::change_clip change{clip, {}, {}};
    change.set.set("triggers", std::move(all));
    edit.operations.emplace_back(std::move(change));
}

}  // namespace vistels
