// SPDX-License-Identifier: GPL-3.0-or-later
#include "demo/game_coding.h"

#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "demo/code_plan.h"
#include "demo/squads.h"
#include "timeline/records/sxy_CLIP.h"
#include "timeline/records/sxy_ROW.h"
#include "util/uuid.h"

namespace vistels::demo {

namespace {

constexpr double least_clip_seconds = 0.4;
constexpr double header_seconds = 0.6;  // a shot so soon after a cross was headed

struct span {
    double start;
    double end;
};

class game_coder {
  public:
    game_coder(const game_record& game, double until, std::int64_t collection_number)
        : game_(game), until_(until), collection_number_(collection_number) {}

    sxy_ROW row_of(const coded_kind& kind, int number) const {
        sxy_ROW row;
        row.set_uuid(shared_text(new_uuid()));
        row.set_name(std::string(play_name(kind.kind)));
        row.set_category(kind.category);
        row.set_col(button_palette_colour(kind.palette_index));
        row.set_sort_number(number);
        std::vector<clip_pointer> clips;
        std::vector<const play*> plays;
        for (const play& one : game_.plays())
            if (one.kind == kind.kind && one.start < until_ && one.end > 0) plays.push_back(&one);
        const std::vector<span> spans = spans_of(plays, kind);
        for (std::size_t index = 0; index < plays.size(); ++index)
            if (spans[index].end - spans[index].start > least_clip_seconds)
                clips.push_back(std::make_shared<sxy_CLIP>(clip_of(*plays[index], spans[index], kind, row)));
        row.clips().assign(std::move(clips));
        return row;
    }

  private:
    // Widened by lead-in and lead-out; where neighbours would meet, each gets half of what both want.
    std::vector<span> spans_of(const std::vector<const play*>& plays, const coded_kind& kind) const {
        std::vector<span> spans;
        for (const play* one : plays) {
            span wanted{std::max(0.0, one->start - kind.secs_in), std::min(until_, one->end + kind.secs_out)};
            if (!spans.empty() && wanted.start < spans.back().end) {
                const double middle = (wanted.start + std::min(spans.back().end, wanted.end)) / 2;
                spans.back().end = middle;
                wanted.start = middle;
            }
            spans.push_back(wanted);
        }
        return spans;
    }

    sxy_CLIP clip_of(const play& one, const span& place, const coded_kind& kind, const sxy_ROW& row) const {
        sxy_CLIP clip;
        clip.set_id(new_uuid());
        clip.set_secs_start(place.start);
        clip.set_secs_end(place.end);
        clip.set_row_category_in_clip(shared_text(kind.category));
        clip.set_row_uuid_in_clip(row.uuid());
        clip.set_stars(stars_of(one));
        clip.set_qualifiers(qualifiers_of(one, place));
        clip.set_coll_id(static_cast<double>(collection_number_));
        if (std::string text = note_of(one); !text.empty()) {
            clip_note note;
            note.clip_notes_uuid = new_uuid();
            note.note_string = std::move(text);
            clip.set_note(std::make_shared<const clip_note>(std::move(note)));
        }
        return clip;
    }

    static qual_ITEM qualifier(std::string_view name, const char* category, std::size_t palette_index,
                               double time) {
        qual_ITEM item;
        item.set_uuid(new_uuid());
        item.set_name(shared_text(name));
        item.set_category(shared_text(category));
        item.set_col(button_palette_colour(palette_index));
        item.set_time(time);
        return item;
    }

    qual_ROOT qualifiers_of(const play& one, const span& place) const {
        const auto inside = [&](double time) { return std::clamp(time, place.start, place.end); };
        qual_ROOT all;
        qual_ITEM who = qualifier(member(one.player).name, player_category, player_palette_index,
                                  inside(one.start + 0.2));
        if (one.other >= 0 && one.other != one.player) {
            who.set_recepient(shared_text(member(one.other).name));
        }
        if (one.kind == play_kind::shot) who.set_attributes({body_part_of(one)});
        all.push_back(std::move(who));
        all.push_back(
            qualifier(zone_name(one.zone), zone_category, zone_palette_index, inside(one.start + 0.5)));
        if (one.outcome != play_outcome::none)
            all.push_back(qualifier(outcome_name(one.outcome), outcome_category, outcome_palette_index,
                                    inside(one.end)));
        return all;
    }

    clip_attribute_ITEM body_part_of(const play& shot) const {
        const bool headed = std::any_of(game_.plays().begin(), game_.plays().end(), [&](const play& before) {
            return (before.kind == play_kind::cross || before.kind == play_kind::corner) &&
                   before.other == shot.player && before.end <= shot.start + 0.05 &&
                   before.end > shot.start - header_seconds;
        });
        clip_attribute_ITEM attribute;
        attribute.uuid = compact_text(new_uuid());
        attribute.name = shared_text(headed ? "Head" : shot.player % 3 == 0 ? "Left foot" : "Right foot");
        attribute.attribute_category = shared_text("Body");
        attribute.attribute_time = shot.start;
        return attribute;
    }

    static int stars_of(const play& one) {
        switch (one.kind) {
            case play_kind::goal:
                return 5;
            case play_kind::save:
                return one.outcome == play_outcome::blocked ? 4 : 3;
            case play_kind::counter:
                return one.outcome == play_outcome::none ? 0 : 3;
            case play_kind::shot:
                return one.outcome == play_outcome::on_target ? 2 : 0;
            case play_kind::pass_chain:
                return one.end - one.start > 4 ? 2 : 0;
            default:
                return 0;
        }
    }

    static std::string note_of(const play& one) {
        const std::string who(member(one.player).name);
        const std::string whom(one.other >= 0 ? member(one.other).name : std::string_view());
        switch (one.kind) {
            case play_kind::goal:
                return "Well taken by " + who + ". " + whom +
                       " is late on the line. Show the two passes before it with the wide camera.";
            case play_kind::counter:
                return "Won the ball and went forward at once. " + who + " finds room behind the wing.";
            case play_kind::save:
                if (one.outcome != play_outcome::blocked) return {};
                return "Strong hand by " + who + " against " + whom + ". Who is free at the far post?";
            case play_kind::foul:
                return "Late into " + whom + ". " + who + " had cover behind him, no need to go in.";
            default:
                return {};
        }
    }

    const game_record& game_;
    const double until_;
    const std::int64_t collection_number_;
};

}  // namespace

timeline_snapshot code_game(const game_record& game, double until, std::int64_t collection_number) {
    const game_coder coder(game, until, collection_number);
    timeline_snapshot timeline;
    timeline.uuid = new_uuid();
    int number = 0;
    for (const coded_kind& kind : coded_kinds())
        timeline.rows.push_back(std::make_shared<sxy_ROW>(coder.row_of(kind, ++number)));
    return timeline;
}

}  // namespace vistels::demo
