// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/timeline_edit_commands.h"

#include <functional>
#include <iostream>
#include <memory>

#include "app/event/timeline_links.h"
#include "cli/command_failures.h"
#include "cli/timeline_source.h"
#include "timeline/edits/merge_timeline.h"
#include "timeline/edits/row_compaction.h"
#include "timeline/files/timeline_document.h"
#include "util/clock.h"
#include "util/file_failures.h"
#include "util/file_system.h"
#include "util/simulated_run_loop.h"

namespace vistels {

namespace {

// Opens the timeline in the folder, makes the edit and saves. Prints what it holds then.
result<command_outcome> edit_folder(const std::string& folder, const home_places& places,
                                    const std::function<result<timeline_edit>(const sxy_DATA_root&)>& plan) {
    if (!file_exists(path_join(folder, timeline_file_name))) {
        return file_is_missing(path_join(folder, timeline_file_name));
    }
    simulated_run_loop loop;
    auto opened = open_linked_timeline(folder, places, loop);
    if (!opened) return opened.error();
    auto& document = *opened.value();
    auto edit = plan(document.timeline());
    if (!edit) return timeline_has_a_fault(folder, edit.error());
    for (const auto& message : document.messages()) std::cerr << message.message() << '\n';
    if (!edit.value().operations.empty()) {
        if (auto applied = document.apply(std::move(edit).value()); !applied) return applied.error();
    }
    if (auto saved = document.save_now(); !saved) return saved.error();
    property_array rows;
    for (const auto& row : document.timeline().rows()) rows.emplace_back(row->name());
    property_dictionary printed;
    printed.add("rows", std::move(rows));
    printed.add("clips", static_cast<std::int64_t>(document.timeline().clip_count()));
    return command_outcome{std::move(printed)};
}

// A row by its UUID, else by its name.
shared_text row_called(const sxy_DATA_root& timeline, const std::string& text) {
    const shared_text uuid(text);
    if (timeline.row(uuid)) return uuid;
    const auto named = timeline.row_named(text);
    return named ? named->uuid() : uuid;
}

struct edit_values {
    std::string folder, other, name, row;
    std::vector<std::string> rows;
};

result<command_outcome> merge(const edit_values& values, const home_places& places) {
    const auto other = read_source(values.other);
    if (!other) return other.error();
    return edit_folder(values.folder, places, [&](const sxy_DATA_root& timeline) {
        return plan_merge_timeline(timeline, other.value().content, seconds_since_1970());
    });
}

result<command_outcome> compact(const edit_values& values, const home_places& places) {
    return edit_folder(values.folder, places, [&](const sxy_DATA_root& timeline) {
        std::vector<shared_text> rows;
        for (const auto& row : values.rows) rows.push_back(row_called(timeline, row));
        return plan_compact_rows(timeline, rows, values.name);
    });
}

result<command_outcome> expand(const edit_values& values, const home_places& places) {
    return edit_folder(values.folder, places, [&](const sxy_DATA_root& timeline) {
        return plan_expand_row(timeline, row_called(timeline, values.row));
    });
}

}  // namespace

void register_timeline_edits(CLI::App& timeline, command_line& line) {
    const auto values = std::make_shared<edit_values>();
    CLI::App* command = line.command(timeline, "merge", "merge another copy of a timeline into it",
                                     [values, &line] { return merge(*values, line.places()); });
    command->add_option("FOLDER", values->folder, "the timeline's folder")->required();
    command->add_option("OTHER", values->other, "the other copy: folder, .plist or .json file")->required();

    command = line.command(timeline, "compact", "merge rows into one, which can be expanded again",
                           [values, &line] { return compact(*values, line.places()); });
    command->add_option("FOLDER", values->folder, "the timeline's folder")->required();
    command->add_option("ROW", values->rows, "UUIDs or names of the rows")->required();
    command->add_option("--name", values->name, "the name of the row that they become");

    command = line.command(timeline, "expand", "bring the rows back that were merged into one",
                           [values, &line] { return expand(*values, line.places()); });
    command->add_option("FOLDER", values->folder, "the timeline's folder")->required();
    command->add_option("ROW", values->row, "UUID or name of the row")->required();
}

}  // namespace vistels
