// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/start/start_up.h"

#include <iterator>
#include <memory>
#include <utility>

#include "app/settings/settings.h"
#include "app/settings/vault_preferences.h"
#include "app/start/last_focus.h"
#include "app/start/start_failures.h"
#include "app/vaults/home_vault.h"
#include "app/vaults/mending.h"
#include "app/vaults/vault_failures.h"
#include "app/vaults/vaults.h"
#include "util/clock.h"
#include "util/file_failures.h"
#include "util/file_system.h"
#include "util/property_list.h"
#include "util/recovery.h"
#include "util/safe_write.h"
#include "util/text_forms.h"
#include "util/uuid.h"
#include "video/vault_lock.h"

namespace vistels {

namespace {

constexpr const char* home_information_name = "home vault information.plist";
constexpr const char* home_id_key = "ID for this file:";
constexpr const char* inspector_folder = "Inspector";  // its strays have an hour, and are no files to miss
constexpr const char* home_date_key = "home vault creation date:";

template <class Value>
void add_all(std::vector<Value>& to, std::vector<Value> from) {
    std::move(from.begin(), from.end(), std::back_inserter(to));
}

// Tells what goes wrong without ending the start.
void tell(start_up_report& report, const failure& found) {
    if (found) report.messages.push_back(found);
}
void tell(start_up_report& report, const result<void>& done) {
    tell(report, done.error());
}

result<void> make_places(const home_places& places, start_up_report& report) {
    for (const auto& folder : {places.state_folder, places.home_vault}) {
        if (auto made = make_folders(folder); !made) return made;
    }
    for (const char* folder : {"Windows", "System", inspector_folder, "Vault preferences"}) {
        tell(report, make_folders(path_join(places.state_folder, folder)));
    }
    return {};
}

// A home vault whose information is damaged keeps it aside and gets a new one: it stays the home vault.
result<void> identify_home_vault(const home_places& places, start_up_report& report) {
    const std::string path = path_join(places.home_vault, home_information_name);
    if (auto checked = check_replaceable(path); !checked) return checked;
    if (file_exists(path)) {
        const auto stored = read_property_list_file(path);
        const auto* information = stored ? stored.value().dictionary() : nullptr;
        if (information && !information->text_or_empty(home_id_key).empty()) return {};
        const std::string kept = damaged_name(path);
        if (const int fault = machine_files().rename(path, kept)) {
            return file_could_not_be_set_aside(path, system_failure(fault));
        }
        report.messages.push_back(home_vault_has_a_new_identity(path, path_name(kept)));
    }
    property_dictionary stored;
    stored.add(home_id_key, new_uuid());
    stored.add(home_date_key, property_date{seconds_since_1970()});
    return safe_write(path, stored);
}

// True when a file was put back, which is to be seen too.
bool take_up(recovery mended, start_up_report& report) {
    const bool is_changed = !mended.recovered.empty();
    add_all(report.recovered, std::move(mended.recovered));
    add_all(report.cleaned, std::move(mended.cleaned));
    add_all(report.messages, std::move(mended.messages));
    return is_changed;
}

void mend_state_folder(const home_places& places, start_up_report& report) {
    vault_tree tree(places.state_folder);
    if (const auto looked = tree.look(); !looked) return tell(report, looked.error());
    take_up(mend_tree(tree, inspector_folder), report);
    std::vector<settings_file> files = vault_preference_files();
    const auto& others = application_settings_files();
    files.insert(files.end(), others.begin(), others.end());
    for (const auto& file : {windows_open_file, correctly_terminated_file, last_build_file, build_number_file,
                             home_vault_file}) {
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
    report.messages.push_back(more_cannot_be_looked_into(tree.vault(), untold));
}

// Not while somebody else changes the vault: what looks like a left copy may be on its way.
bool mend_vault(const vault_tree& tree, start_up_report& report) {
    if (tree.folders_with_copies().empty()) return false;
    const auto lock = vault_lock::take(tree.vault());
    return lock && take_up(mend_tree(tree), report);
}

void mend_vaults(const home_places& places, start_up_report& report) {
    for (const auto& vault : known_vaults(places)) {
        vault_tree tree(vault);
        if (!tree.look()) continue;  // its volume is away
        if (mend_vault(tree, report)) (void)tree.look();
        tell_problems(tree, report);
        report.trees.push_back(std::move(tree));
    }
}

failure told_of_unclean_end(const run_record::last_run& last, const std::vector<std::string>& recovered) {
    const failure end =
        last.loaded_at ? not_quit_properly_since(date_text(*last.loaded_at)) : not_quit_properly();
    if (recovered.empty()) return no_file_was_damaged(end);
    std::string paths;
    for (const auto& path : recovered) paths += "\r" + path;
    return files_were_put_back(end, paths);
}

void note_build(const home_places& places, double build, start_up_report& report) {
    tell(report, check_build(places, build));
    tell(report, check_for_newer_build(places, build, running_executable()));
}

}  // namespace

result<start_up_report> start_up(const home_places& places, double build, double running_seconds) {
    start_up_report report;
    if (auto made = make_places(places, report); !made) return made.error();
    report.run = std::make_shared<run_record>(places);
    report.cleaned = clean_up_strays(path_join(places.state_folder, inspector_folder), running_seconds);
    if (report.run->is_alone()) mend_state_folder(places, report);
    take_up(recover_folder(places.home_vault), report);  // its identity may be in a copy
    tell(report, identify_home_vault(places, report));
    tell(report, note_home_vault(places));
    mend_vaults(places, report);
    result<void> noted;
    const auto last = report.run->begin(noted);
    tell(report, noted);
    report.ended_well_before = last.ended_well;
    if (!last.ended_well) report.unclean_end = told_of_unclean_end(last, report.recovered);
    note_build(places, build, report);
    tell(report, focus_vault_of(places).problem);
    report.windows = load_open_windows(places);
    report.folder_last_focus = folder_of_last_focus(last.uuid_last_focus, report.windows, report.trees);
    return report;
}

result<void> note_clean_quit(const start_up_report& report) {
    return report.run ? report.run->end() : result<void>();
}

}  // namespace vistels
