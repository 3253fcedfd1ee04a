// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/start_up.h"

#include <iterator>
#include <memory>
#include <utility>

#include "app/settings.h"
#include "app/vault_preferences.h"
#include "app/vaults.h"
#include "timeline/writer_lock.h"
#include "util/clock.h"
#include "util/file_system.h"
#include "util/property_list.h"
#include "util/safe_write.h"
#include "util/text_forms.h"
#include "util/uuid.h"

namespace vistels {

namespace {

constexpr const char* home_information_name = "home vault information.plist";
constexpr const char* home_id_key = "ID for this file:";
constexpr const char* home_date_key = "home vault creation date:";

void add_all(std::vector<std::string>& to, std::vector<std::string> from) {
    std::move(from.begin(), from.end(), std::back_inserter(to));
}

// Tells what goes wrong without ending the start.
void tell(start_up_report& report, const result<void>& done) {
    if (!done) report.messages.push_back(done.message());
}

result<void> make_places(const home_places& places, start_up_report& report) {
    for (const auto& folder : {places.state_folder, places.home_vault}) {
        if (auto made = make_folders(folder); !made) return made;
    }
    for (const char* folder : {"Windows", "System", "Inspector", "Vault preferences"}) {
        tell(report, make_folders(path_join(places.state_folder, folder)));
    }
    return {};
}

// A home vault whose information is damaged keeps it aside and gets a new one: it stays the home vault.
result<void> identify_home_vault(const home_places& places, start_up_report& report) {
    const std::string path = path_join(places.home_vault, home_information_name);
    if (file_exists(path)) {
        const auto stored = read_property_list_file(path);
        const auto* information = stored ? stored.value().dictionary() : nullptr;
        if (information && !information->text_or_empty(home_id_key).empty()) return {};
        const std::string kept = damaged_name(path);
        if (const int fault = machine_files().rename(path, kept)) {
            return file_failure(path, "is damaged and could not be set aside", fault);
        }
        report.messages.push_back("\"" + path + "\" was damaged and is kept as \"" + path_name(kept) +
                                  "\"; the home vault has a new identity.");
    }
    property_dictionary stored;
    stored.add(home_id_key, new_uuid());
    stored.add(home_date_key, property_date{seconds_since_1970()});
    return safe_write(path, stored);
}

void mend_folder(const std::string& folder, start_up_report& report) {
    auto mended = recover_folder(folder);
    add_all(report.recovered, std::move(mended.recovered));
    add_all(report.messages, std::move(mended.messages));
}

// Mends the torn files that were seen; where another program has the timeline open its copies are its own.
// True when a file was put back, which is to be seen too.
bool mend(const vault_tree& tree, start_up_report& report) {
    const std::size_t before = report.recovered.size();
    for (const auto& [folder, has_writer] : tree.folders_with_copies()) {
        std::unique_ptr<writer_lock> lock;
        if (has_writer) {
            auto taken = writer_lock::take(folder);
            if (!taken) continue;
            lock = std::move(taken).value();
        }
        mend_folder(folder, report);
    }
    return report.recovered.size() > before;
}

void mend_state_folder(const home_places& places, start_up_report& report) {
    vault_tree tree(places.state_folder);
    if (const auto looked = tree.look(); !looked) return tell(report, looked.error());
    mend(tree, report);
    std::vector<settings_file> files = vault_preference_files();
    const auto& others = application_settings_files();
    files.insert(files.end(), others.begin(), others.end());
    for (const auto& file :
         {windows_open_file, correctly_terminated_file, last_build_file, build_number_file}) {
        files.push_back(file);
    }
    add_all(report.messages, set_damaged_settings_aside(places, files));
}

void tell_problems(const vault_tree& tree, start_up_report& report) {
    constexpr std::size_t most_told = 3;
    auto problems = tree.content().problems;
    const std::size_t untold = problems.size() > most_told ? problems.size() - most_told : 0;
    problems.resize(problems.size() - untold);
    add_all(report.messages, std::move(problems));
    if (untold == 0) return;
    report.messages.push_back("\"" + tree.vault() + "\" holds " + std::to_string(untold) +
                              " more folders that cannot be looked into.");
}

void mend_vaults(const home_places& places, start_up_report& report) {
    for (const auto& vault : known_vaults(places)) {
        vault_tree tree(vault);
        if (!tree.look()) continue;  // its volume is away
        if (mend(tree, report)) (void)tree.look();
        tell_problems(tree, report);
        report.trees.push_back(std::move(tree));
    }
}

std::string told_of_unclean_end(const run_record::last_run& last, const std::vector<std::string>& recovered) {
    std::string text = "Vistels was not quit properly the last time";
    if (last.loaded_at) text += " (it was started " + date_text(*last.loaded_at) + ")";
    text += ".\r\r";
    if (recovered.empty()) {
        return text +
               "No file was damaged. Changes of a timeline that were not saved are brought back when it "
               "is opened.";
    }
    text += "These files were put back whole:";
    for (const auto& path : recovered) text += "\r" + path;
    return text;
}

void note_build(const home_places& places, double build, start_up_report& report) {
    const auto checked = check_build(places, build);
    const std::string& message = checked ? checked.value() : checked.message();
    if (!message.empty()) report.messages.push_back(message);
    tell(report, note_build_in_use(places, build));
}

}  // namespace

result<start_up_report> start_up(const home_places& places, double build, double running_seconds) {
    start_up_report report;
    if (auto made = make_places(places, report); !made) return made.error();
    report.run = std::make_shared<run_record>(places);
    report.cleaned = clean_up_strays(path_join(places.state_folder, "Inspector"), running_seconds);
    if (report.run->is_alone()) mend_state_folder(places, report);
    mend_folder(places.home_vault, report);  // its identity may be in a copy
    tell(report, identify_home_vault(places, report));
    mend_vaults(places, report);
    result<void> noted;
    const auto last = report.run->begin(noted);
    tell(report, noted);
    report.ended_well_before = last.ended_well;
    report.uuid_last_focus = last.uuid_last_focus;
    if (!last.ended_well) {
        report.messages.insert(report.messages.begin(), told_of_unclean_end(last, report.recovered));
    }
    note_build(places, build, report);
    if (auto focus = focus_vault_of(places); !focus.message.empty()) {
        report.messages.push_back(std::move(focus.message));
    }
    report.windows = load_open_windows(places);
    return report;
}

result<void> note_clean_quit(const start_up_report& report, const std::string& uuid_last_focus) {
    return report.run ? report.run->end(uuid_last_focus) : result<void>();
}

}  // namespace vistels
