// SPDX-License-Identifier: GPL-3.0-or-later
#include "logger/renaming.h"

#include <map>
#include <utility>

#include "timeline/edits/clip_edits.h"
#include "util/uuid.h"

namespace vistels {

namespace {

// What the button changes; none of the three says: all of them.
struct renamed_values {
    bool name;
    bool category;
    bool colour;
};

renamed_values values_of(const markup_Button_Item& button) {
    const renamed_values said{button.changes_name(), button.changes_category(), button.changes_colour()};
    if (said.name || said.category || said.colour) return said;
    return {true, true, true};
}

// Rows by name and category: those that are there, and those that the plan makes.
class row_finder {
  public:
    row_finder(const sxy_DATA_root& timeline, std::vector<operation::any>& operations)
        : operations_(operations), count_(timeline.rows().size()) {
        for (const auto& row : timeline.rows()) {
            known_.try_emplace({row->name(), row->category()}, row->uuid());
        }
    }
    // A new row is like `model` but for name, category and, where it has one, colour.
    shared_text find(const std::string& name, const std::string& category, const sxy_ROW& model,
                     const std::optional<colour>& of_new) {
        const auto [known, is_new] = known_.try_emplace({name, category});
        if (!is_new) return known->second;
        sxy_ROW row;
        row.set_uuid(shared_text(new_uuid()));
        row.set_name(name);
        row.set_category(category);
        row.set_col(of_new ? of_new : model.col());
        row.set_is_timer_row(model.is_timer_row());
        operations_.emplace_back(operation::insert_row{count_++, row});
        return known->second = row.uuid();
    }

  private:
    std::vector<operation::any>& operations_;
    std::size_t count_;
    std::map<std::pair<std::string, std::string>, shared_text> known_;
};

}  // namespace

std::vector<operation::any> plan_renaming(const sxy_DATA_root& timeline, const markup_Button_Item& button,
                                          const std::vector<std::string>& clips) {
    const auto changes = values_of(button);
    const auto chosen = changes.colour ? button.made_colour() : std::nullopt;
    std::vector<operation::any> operations;
    row_finder rows(timeline, operations);
    std::vector<std::string> recoloured;
    for (const auto& clip : clips) {
        const auto place = timeline.find_clip(clip);
        const auto row = place && !place->is_live ? timeline.row(place->row) : nullptr;
        if (!row) continue;
        const auto target = rows.find(changes.name ? button.name() : row->name(),
                                      changes.category ? button.category() : row->category(), *row, chosen);
        if (target != place->row) operations.emplace_back(operation::move_clip{clip, target});
        recoloured.push_back(clip);
    }
    if (!chosen) return operations;
    auto colours = plan_clip_colour(timeline, recoloured, chosen);
    operations.insert(operations.end(), std::make_move_iterator(colours.operations.begin()),
                      std::make_move_iterator(colours.operations.end()));
    return operations;
}

}  // namespace vistels
