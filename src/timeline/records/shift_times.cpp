// SPDX-License-Identifier: GPL-3.0-or-later
#include "timeline/records/shift_times.h"

#include <optional>
#include <utility>

namespace vistels {

namespace {

void shift(std::optional<double>& time, double seconds) {
    if (time) *time += seconds;
}

qual_ROOT qualifiers_shifted(qual_ROOT all, double seconds) {
    for (auto& one : all) {
        one.set_time(one.time() + seconds);
        auto attributes = one.attributes();
        if (attributes.empty()) continue;
        for (auto& attribute : attributes) shift(attribute.attribute_time, seconds);
        one.set_attributes(std::move(attributes));
    }
    return all;
}

// The items of a note stand in what is kept as it was read.
std::shared_ptr<const clip_note> note_shifted(const std::shared_ptr<const clip_note>& note, double seconds) {
    const auto* items = note ? note->kept.array("note_items") : nullptr;
    if (!items) return note;
    property_array shifted = *items;
    bool changed = false;
    for (auto& item : shifted) {
        if (!item.dictionary()) continue;
        property_dictionary values = *item.dictionary();
        for (const char* key : {"time_start", "time_end"}) {
            if (const auto time = values.number(key)) {
                values.set(key, *time + seconds);
                changed = true;
            }
        }
        item = std::move(values);
    }
    if (!changed) return note;
    auto copy = std::make_shared<clip_note>(*note);
    copy->kept.set("note_items", std::move(shifted));
    return copy;
}

void shift_rare(clip_rare_fields& rare, double seconds) {
    for (auto& pause : rare.pause_items) pause.seconds += seconds;
    for (auto& trigger : rare.trigger_Events_Root) trigger.trigger_Time += seconds;
    if (rare.inserted_Objects_Root) {
        for (auto& item : rare.inserted_Objects_Root.make().items) item.inserted_obj_start_secs += seconds;
    }
    if (rare.telestration) {
        auto& drawn = rare.telestration.make();
        shift(drawn.secs_start_original, seconds);
        shift(drawn.secs_end_original, seconds);
        shift(drawn.secs_start_trimmed_261027, seconds);
        shift(drawn.secs_end_trimmed_261027, seconds);
    }
    if (rare.data_clip_VISTEL) {
        for (auto& vistel : rare.data_clip_VISTEL.make().vistels) {
            auto frames = vistel.zoom_items();
            for (auto& frame : frames) frame.key_frame_secs += seconds;
            vistel.set_zoom_items(std::move(frames));
        }
    }
    rare.note = note_shifted(rare.note, seconds);
}

}  // namespace

std::shared_ptr<sxy_CLIP> clip_shifted(const sxy_CLIP& clip, double seconds) {
    clip_fields fields = clip.fields();
    fields.secs_start += seconds;
    fields.secs_end += seconds;
    if (fields.qual_Root) {
        fields.qual_Root = std::make_shared<const qual_ROOT>(qualifiers_shifted(*fields.qual_Root, seconds));
    }
    if (fields.rare) {
        auto rare = std::make_shared<clip_rare_fields>(*fields.rare);
        shift_rare(*rare, seconds);
        fields.rare = std::move(rare);
    }
    return std::make_shared<sxy_CLIP>(std::move(fields));
}

std::vector<sXY_data_TAG> tags_shifted(std::vector<sXY_data_TAG> tags, double seconds) {
    for (auto& tag : tags) tag.secs_tag += seconds;
    return tags;
}

}  // namespace vistels
