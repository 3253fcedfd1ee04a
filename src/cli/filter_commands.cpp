// SPDX-License-Identifier: GPL-3.0-or-later
#include <iostream>
#include <memory>
#include <utility>

#include "cli/command_failures.h"
#include "cli/commands.h"
#include "cli/timeline_source.h"
#include "formula/clip_filter.h"
#include "util/file_system.h"

namespace vistels {

namespace {

struct filter_values {
    std::string source, text, file;
    bool counts_only = false;
};

property_dictionary printed_clip(const sxy_CLIP& clip, const std::string& row, clip_filter& filter) {
    property_array marked;
    for (const auto& item : *clip.qualifiers()) {
        if (filter.meets(item)) marked.emplace_back(item.uuid());
    }
    property_dictionary printed;
    printed.add("uuid", clip.id());
    printed.add("row", row);
    printed.add("time_start", clip.secs_start());
    printed.add("time_end", clip.secs_end());
    printed.add("qualifiers", std::move(marked));
    return printed;
}

property_array printed_clips(const passing_clips& found, clip_filter& filter) {
    property_array printed;
    for (const auto& [row, passing] : found.rows) {
        if (passing == 0) continue;
        const std::string name = row->name();
        for (const auto& clip : row->clips()) {
            if (found.clips.contains(*clip)) printed.emplace_back(printed_clip(*clip, name, filter));
        }
    }
    return printed;
}

// A text with a syntax error finds none.
result<property_dictionary> applied(const std::string& text, const timeline_snapshot& timeline,
                                    const filter_values& values, job& work) {
    const auto formula = parser_ROOT::for_filter(text);
    clip_filter filter(formula);
    const auto found = filter.passing(timeline.rows, work);
    if (!found) return filtering_was_cancelled(values.source);
    property_dictionary printed;
    printed.add("error", formula.parser_Error());
    printed.add("errors", formula.parser_Errors_String());
    printed.add("any_result", found->passing > 0);
    printed.add("total", static_cast<std::int64_t>(found->total));
    printed.add("count", static_cast<std::int64_t>(found->passing));
    if (!values.counts_only) {
        printed.add("clips", printed_clips(*found, filter));
    }
    return printed;
}

result<command_outcome> filter_once(const filter_values& values, job& work) {
    const auto loaded = read_source(values.source);
    if (!loaded) return loaded.error();
    auto printed = applied(values.text, loaded.value().content, values, work);
    if (!printed) return printed.error();
    const std::string errors = printed.value().text_or_empty("errors");
    if (errors.empty()) return command_outcome{std::move(printed).value()};
    std::cerr << "vistels-cli: The filter text cannot be used: " << errors << ".\n";
    return command_outcome{std::move(printed).value(), 1};
}

result<command_outcome> filter_each(const filter_values& values, job& work) {
    const auto texts = read_file(values.file);
    if (!texts) return texts.error();
    const auto loaded = read_source(values.source);
    if (!loaded) return loaded.error();
    property_array all;
    for (const auto& text : lines_of(texts.value())) {
        auto printed = applied(std::string(text), loaded.value().content, values, work);
        if (!printed) return printed.error();
        printed.value().add("text", std::string(text));
        all.emplace_back(std::move(printed).value());
    }
    return command_outcome{std::move(all)};
}

}  // namespace

void register_filter_commands(CLI::App& program, command_line& line) {
    const auto values = std::make_shared<filter_values>();
    const auto run = [values, &line] {
        return values->file.empty() ? filter_once(*values, line.command_job())
                                    : filter_each(*values, line.command_job());
    };
    CLI::App* command = line.command(program, "filter", "apply filter texts to every clip", run);
    line.add_text(command, "SOURCE", values->source, "folder, .plist or .json file")->required();
    const auto* text = line.add_text(command, "TEXT", values->text, "a formula, or a plain search text");
    command->add_flag("--count", values->counts_only, "without the list of clips");
    auto* file = command->add_option("--each", values->file, "file with one filter text a line");
    file->type_name("FILE");
    command->parse_complete_callback([text, file] {
        if (text->empty() == file->empty()) throw CLI::RequiredError("Either TEXT or --each");
    });
}

}  // namespace vistels
