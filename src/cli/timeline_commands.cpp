// SPDX-License-Identifier: GPL-3.0-or-later
#include <algorithm>
#include <memory>
#include <set>

#include "app/event/timeline_links.h"
#include "app/settings/state_log.h"
#include "cli/command_failures.h"
#include "cli/commands.h"
#include "cli/timeline_edit_commands.h"
#include "cli/timeline_source.h"
#include "document/writer_lock.h"
#include "timeline/edits/sxy_Adjust_Clip_Overlaps.h"
#include "timeline/files/timeline_form.h"
#include "util/file_system.h"
#include "util/uuid.h"
#include "video/vault_lock.h"

namespace vistels {

namespace {

result<command_outcome> show(const std::string& source) {
    const auto loaded = read_source(source);
    if (!loaded) return loaded.error();
    return command_outcome{write_timeline(loaded.value().content)};
}

result<command_outcome> rows(const std::string& folder) {
    const auto names = read_row_names(folder);
    if (!names) return command_outcome{property_value()};
    return command_outcome{property_array(names->begin(), names->end())};
}

struct resave_values {
    std::string source, to, only;
    bool selects = false;
};

// Marks just these clips as selected and filtered in; the failure names one that is not there.
result<void> select_only(const timeline_snapshot& timeline, const std::string& list) {
    const auto texts = texts_from_list(list);
    std::set<std::string> wanted(texts.begin(), texts.end());
    const std::set<std::string> all = wanted;
    for (const auto& row : timeline.rows) {
        for (const auto& clip : row->clips()) {
            const bool chosen = all.contains(clip->id());
            clip->set_selected(chosen);
            clip->set_filtered_in(chosen);
            wanted.erase(clip->id());
        }
    }
    if (wanted.empty()) return {};
    return timeline_has_no_clip(*wanted.begin());
}

// What the file that is saved holds.
property_dictionary counts_of(const timeline_snapshot& timeline) {
    std::int64_t row_count = 0;
    std::int64_t clip_count = 0;
    for (const auto& row : timeline.rows) {
        const auto written = std::count_if(row->clips().begin(), row->clips().end(), [&](const auto& clip) {
            return !timeline.only_selected || (clip->selected() && clip->filtered_in());
        });
        clip_count += written;
        if (written > 0 || !timeline.only_selected) ++row_count;
    }
    property_dictionary counts;
    counts.add("rows", row_count);
    counts.add("clips", clip_count);
    return counts;
}

std::vector<std::string> journal_segments(const std::string& folder) {
    auto names = names_in_folder(folder);
    std::erase_if(names, [](const std::string& name) {
        return !name.starts_with("chron data journal ") || name.find(" conflict") != std::string::npos;
    });
    return names;
}

bool is_same_folder(const std::string& a, const std::string& b) {
    file_identity first;
    file_identity second;
    auto& files = machine_files();
    return files.identity(a, first) == 0 && files.identity(b, second) == 0 && first.device == second.device &&
           first.inode == second.inode;
}

result<void> save_files(const resave_values& values, const timeline_snapshot& timeline) {
    const auto change = vault_lock::take_around(values.to);
    if (!change) return change.error();
    if (auto made = make_folders(values.to); !made) return made;
    const auto lock = writer_lock::take(values.to, timeline_form);
    if (!lock) return lock.error();
    const bool in_place = is_same_folder(values.source, values.to);
    const auto segments = journal_segments(values.to);
    if (!in_place && !segments.empty()) {
        return journal_may_hold_edits(path_join(values.to, segments.front()));
    }
    if (auto saved = save_timeline(timeline, values.to); !saved) return saved;
    const std::string source_folder = is_folder(values.source) ? values.source : path_folder(values.source);
    auto header = load_timeline_header(source_folder);
    complete_header(header, timeline.uuid, links_of_folder(values.to));
    if (auto saved = save_timeline_header(header, values.to); !saved) return saved;
    const auto summary = load_timeline_summary(source_folder);
    if (!in_place && summary != timeline_summary()) {
        if (auto saved = save_timeline_summary(summary, values.to); !saved) return saved;
    }
    if (auto saved = save_save_time(values.to, new_uuid()); !saved) return saved;
    // Their edits are in the file now.
    for (const auto& name : segments) machine_files().remove(path_join(values.to, name));
    return {};
}

result<command_outcome> resave(const resave_values& values, const home_places& places) {
    auto loaded = read_source(values.source);
    if (!loaded) return loaded.error();
    for (const auto& message : loaded.value().messages) log_line(places, message.message());
    // With what an open timeline has: rows and clips without an identity get one.
    sxy_DATA_root timeline(std::move(loaded.value().content));
    timeline.set_stores_only_selected(values.selects);
    const auto snapshot = timeline.snapshot();
    if (values.selects) {
        if (auto selected = select_only(snapshot, values.only); !selected) return selected.error();
    }
    if (auto saved = save_files(values, snapshot); !saved) return saved.error();
    return command_outcome{counts_of(snapshot)};
}

result<command_outcome> overlap(const std::string& source, const std::string& uuid) {
    auto loaded = read_source(source);
    if (!loaded) return loaded.error();
    // With every clip's times in order, as an open timeline has them.
    const sxy_DATA_root timeline(std::move(loaded).value().content);
    const auto place = timeline.find_clip(uuid);
    if (!place) return source_has_no_clip(source, uuid);
    const auto found = first_overlap(*timeline.row(place->row), *place->clip);
    property_dictionary printed;
    printed.add("test", found ? property_value(clip_overlap_text(found->test)) : property_value());
    printed.add("clip", found ? property_value(found->clip->id()) : property_value());
    return command_outcome{std::move(printed)};
}

property_array span_array(const clip_span& span) {
    return {span.start, span.end};
}

result<command_outcome> split(const clip_span& a, const clip_span& b) {
    const auto done = split_overlapping(a, b);
    property_dictionary printed;
    printed.add("changed", done.changed);
    printed.add("a", span_array(done.a));
    printed.add("b", span_array(done.b));
    return command_outcome{std::move(printed)};
}

void register_resave(CLI::App& timeline, command_line& line) {
    const auto values = std::make_shared<resave_values>();
    CLI::App* command = line.command(timeline, "resave", "load a timeline and save it",
                                     [values, &line] { return resave(*values, line.places()); });
    command->add_option("SOURCE", values->source, "folder, .plist or .json file")->required();
    command->add_option("--to", values->to, "folder to save into")->required();
    command
        ->add_option_function<std::string>(
            "--only",
            [values](const std::string& list) {
                values->only = list;
                values->selects = true;
            },
            "save just these clips, their UUIDs joined by commas")
        ->type_name("UUID,...");
}

void register_overlap_and_split(CLI::App& timeline, command_line& line) {
    const auto place = std::make_shared<std::pair<std::string, std::string>>();
    CLI::App* command = line.command(timeline, "overlap", "how the row's other clips overlap a clip",
                                     [place] { return overlap(place->first, place->second); });
    command->add_option("SOURCE", place->first, "folder, .plist or .json file")->required();
    command->add_option("CLIP", place->second, "UUID of the clip")->required();

    const auto spans = std::make_shared<std::pair<clip_span, clip_span>>();
    command = line.command(timeline, "split", "split two overlapping clips",
                           [spans] { return split(spans->first, spans->second); });
    add_number(command, "A0", spans->first.start, "start of the first clip")->required();
    add_number(command, "A1", spans->first.end, "its end")->required();
    add_number(command, "B0", spans->second.start, "start of the second clip")->required();
    add_number(command, "B1", spans->second.end, "its end")->required();
}

}  // namespace

void register_timeline_commands(CLI::App& program, command_line& line) {
    CLI::App* timeline = line.group(program, "timeline", "read and write timelines");

    const auto source = std::make_shared<std::string>();
    CLI::App* command = line.command(*timeline, "show", "the timeline as its JSON document",
                                     [source] { return show(*source); });
    command->add_option("SOURCE", *source, "folder, .plist or .json file")->required();

    const auto folder = std::make_shared<std::string>();
    command = line.command(*timeline, "rows", "the names of the rows", [folder] { return rows(*folder); });
    command->add_option("FOLDER", *folder, "the timeline's folder")->required();

    register_resave(*timeline, line);
    register_overlap_and_split(*timeline, line);
    register_timeline_edits(*timeline, line);
}

}  // namespace vistels
