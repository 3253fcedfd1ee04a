// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/settings/settings_file.h"

#include "app/settings/settings_failures.h"
#include "app/settings/settings_store.h"
#include "util/file_failures.h"
#include "util/file_system.h"
#include "util/property_list.h"
#include "util/safe_write.h"
#include "util/stored_form_failures.h"
#include "util/text_forms.h"

namespace vistels {

namespace {

// Why a file that is there cannot be read as settings; nothing when it can, or is missing.
failure damage_of(const std::string& path) {
    if (!file_exists(path)) return {};
    const auto stored = read_property_list_file(path);
    if (!stored) return stored.error();
    if (stored.value().dictionary()) return {};
    return file_cannot_be_read(path, file_holds_no_dictionary());
}

// The name under which the file was kept.
result<std::string> set_aside(const std::string& path) {
    const std::string kept = damaged_name(path);
    if (const int fault = machine_files().rename(path, kept)) {
        return file_could_not_be_set_aside(path, system_failure(fault));
    }
    return kept;
}

}  // namespace

std::string path_of(const home_places& places, const settings_file& file) {
    const std::string folder =
        *file.folder ? path_join(places.state_folder, file.folder) : places.state_folder;
    return path_join(folder, file.name);
}

property_dictionary read_settings(const home_places& places, const settings_file& file) {
    if (places.settings) return places.settings->read(file);
    return read_dictionary_or_empty(path_of(places, file));
}

result<void> write_settings(const home_places& places, const settings_file& file,
                            const property_dictionary& values) {
    if (places.settings) {
        places.settings->write(file, values);
        return {};
    }
    const std::string path = path_of(places, file);
    if (auto made = make_folders(path_folder(path)); !made) return made;
    if (auto checked = check_replaceable(path); !checked) return checked;
    if (damage_of(path)) {
        if (const auto kept = set_aside(path); !kept) return kept.error();
    }
    property_dictionary stored = read_dictionary_or_empty(path);
    merge_settings(stored, values);
    return safe_write(path, stored);
}

void merge_settings(property_dictionary& stored, const property_dictionary& values) {
    for (const auto& entry : values) {
        if (entry.value.is_null()) {
            stored.remove(entry.key);
        } else {
            stored.set(entry.key, entry.value);
        }
    }
}

std::vector<failure> set_damaged_settings_aside(const home_places& places,
                                                const std::vector<settings_file>& files) {
    std::vector<failure> messages;
    for (const auto& file : files) {
        const std::string path = path_of(places, file);
        const auto damage = damage_of(path);
        if (!damage) continue;
        // What cannot be read now, by its rights or its volume, may be whole.
        if (!read_file(path)) {
            messages.push_back(defaults_are_used(damage));
            continue;
        }
        const auto kept = set_aside(path);
        messages.push_back(kept ? settings_were_kept(damage, path_name(kept.value()))
                                : settings_could_not_be_kept(damage, kept.error()));
    }
    return messages;
}

property_value stored_path(const std::string& path) {
    if (is_valid_text(path)) return path;
    return property_data{path};
}

std::string path_from(const property_value& value) {
    if (value.text()) return *value.text();
    return value.data() ? value.data()->bytes : std::string();
}

}  // namespace vistels
