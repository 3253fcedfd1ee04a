// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/event/undo_history.h"

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <system_error>

#include "app/event/event_failures.h"
#include "timeline/edits/timeline_change.h"
#include "util/checksum.h"
#include "util/file_system.h"
#include "util/property_list.h"
#include "util/safe_write.h"

namespace vistels {

namespace {

// One step may delete a whole event's clips. Older steps than fit are not kept over closing.
constexpr std::size_t most_stored_operations = 20000;
constexpr std::size_t most_timelines = 200;

std::string undo_folder(const home_places& places) {
    return path_join(places.state_folder, "Undo");
}

// The UUID comes from a file and need not be one.
std::string folder_of(const home_places& places, const std::string& timeline) {
    const bool is_plain =
        !timeline.empty() && std::all_of(timeline.begin(), timeline.end(), [](unsigned char letter) {
            return (letter >= '0' && letter <= '9') || (letter >= 'A' && letter <= 'Z') ||
                   (letter >= 'a' && letter <= 'z') || letter == '-';
        });
    return path_join(undo_folder(places), is_plain ? timeline : checksum_text(checksum(timeline)));
}

std::string file_name_of(const file_content_mark& mark) {
    return std::to_string(mark.size) + " " + checksum_text(mark.hash) + ".plist";
}

// A timeline's parts stand as those of its edits in the journal do.
property_dictionary write_parts(const std::string& name, const std::string& scope,
                                const std::vector<document_part>& parts) {
    return write_edit(timeline_edit_of({name, scope, parts}));
}

std::vector<document_part> parts_in(const timeline_edit& edit) {
    return document_edit_of(edit, "").parts;
}

std::size_t size_of(const undo_step& step) {
    std::size_t size = 0;
    for (const auto& part : *step.parts) size += std::max<std::size_t>(operations_in(*part.change).size(), 1);
    return size;
}

property_array write_steps(const std::vector<undo_step>& steps, std::size_t& room) {
    std::size_t first = steps.size();
    while (first > 0 && size_of(steps[first - 1]) <= room) {
        --first;
        room -= size_of(steps[first]);
    }
    property_array stored;
    for (; first < steps.size(); ++first) {
        stored.emplace_back(write_parts(steps[first].name, steps[first].scope, *steps[first].parts));
    }
    return stored;
}

std::vector<undo_step> read_steps(const property_dictionary& stored, const char* key) {
    std::vector<undo_step> steps;
    const auto* array = stored.array(key);
    if (!array) return steps;
    for (auto at = array->rbegin(); at != array->rend(); ++at) {
        const auto edit = at->dictionary() ? read_edit(*at->dictionary()) : step_cannot_be_read();
        if (!edit) break;
        const auto& read = edit.value();
        undo_step step{read.name, read.scope, {}};
        step.parts = std::make_shared<const std::vector<document_part>>(parts_in(read));
        steps.push_back(std::move(step));
    }
    std::reverse(steps.begin(), steps.end());
    return steps;
}

void forget_old_timelines(const home_places& places) {
    const auto names = names_in_folder(undo_folder(places));
    if (names.size() <= most_timelines) return;
    std::vector<std::pair<std::filesystem::file_time_type, std::string>> by_age;
    for (const auto& name : names) {
        std::error_code fault;
        std::string path = path_join(undo_folder(places), name);
        const auto time = std::filesystem::last_write_time(path, fault);
        if (!fault) by_age.emplace_back(time, std::move(path));
    }
    std::sort(by_age.begin(), by_age.end());
    for (std::size_t index = 0; index + most_timelines < by_age.size(); ++index) {
        std::error_code fault;
        std::filesystem::remove_all(by_age[index].second, fault);
    }
}

}  // namespace

property_dictionary write_undo_history(const undo_history& history) {
    std::size_t room = most_stored_operations;
    property_array undo = write_steps(history.undo, room);
    property_array redo = write_steps(history.redo, room);
    property_dictionary stored;
    if (history.lacks_older || undo.size() < history.undo.size()) stored.add("older steps gone", true);
    stored.add("undo", std::move(undo));
    stored.add("redo", std::move(redo));
    property_array prepared;
    for (const auto& [place, parts] : history.prepared) {
        property_dictionary one;
        one.add("place", place);
        one.add("operations", *write_parts("", "", parts).array("operations"));
        prepared.emplace_back(std::move(one));
    }
    if (!prepared.empty()) stored.add("prepared", std::move(prepared));
    return stored;
}

undo_history read_undo_history(const property_dictionary& stored) {
    undo_history history{read_steps(stored, "undo"), read_steps(stored, "redo"), {}};
    const auto* undo = stored.array("undo");
    history.lacks_older =
        stored.boolean("older steps gone").value_or(false) || (undo && history.undo.size() < undo->size());
    if (const auto* prepared = stored.array("prepared")) {
        for (const auto& value : *prepared) {
            const auto* one = value.dictionary();
            const auto edit = one ? read_edit(*one) : step_cannot_be_read();
            if (edit) history.prepared[one->text_or_empty("place")] = parts_in(edit.value());
        }
    }
    return history;
}

result<void> save_undo_history(const home_places& places, const std::string& timeline,
                               const file_content_mark& mark, const file_content_mark& earlier,
                               const undo_history& history) {
    const std::string folder = folder_of(places, timeline);
    if (auto made = make_folders(folder); !made) return made;
    const std::string name = file_name_of(mark);
    if (auto saved = safe_write(path_join(folder, name), write_undo_history(history)); !saved) return saved;
    const std::string earlier_name = file_name_of(earlier);
    for (const auto& other : names_in_folder(folder)) {
        if (other != name && other != earlier_name) machine_files().remove(path_join(folder, other));
    }
    forget_old_timelines(places);
    return {};
}

undo_history load_undo_history(const home_places& places, const std::string& timeline,
                               const file_content_mark& mark) {
    return read_undo_history(
        read_dictionary_or_empty(path_join(folder_of(places, timeline), file_name_of(mark))));
}

}  // namespace vistels
