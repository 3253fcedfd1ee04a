// SPDX-License-Identifier: GPL-3.0-or-later
#include "logger/logger_Dict_funcs.h"

#include <algorithm>
#include <set>
#include <utility>

#include "logger/logger_failures.h"
#include "util/file_failures.h"
#include "util/property_list.h"
#include "util/safe_write.h"
#include "util/uuid.h"

namespace vistels {

namespace {

constexpr const char* version_key = "version markup";
constexpr const char* buttons_key = "array objects";
constexpr const char* count_key = "number of markups";

std::int64_t version_of(const property_dictionary& document) {
    return document.integer(version_key).value_or(button_dict().version_markup);
}

}  // namespace

std::string logger_folder_of(const std::string& folder) {
    return has_button_dict(folder) ? folder : path_join(folder, logger_folder_name);
}

bool has_button_dict(const std::string& logger_folder) {
    return file_exists(path_join(logger_folder, button_file_name));
}

button_dict read_button_dict(const property_dictionary& document) {
    button_dict all;
    all.version_markup = version_of(document);
    all.kept = document;
    std::set<std::string> uuids;
    if (const auto* array = document.array(buttons_key)) {
        for (std::size_t index = 0; index < array->size(); ++index) {
            const property_value& value = (*array)[index];
            if (!value.dictionary()) {
                all.others.push_back({index, value});
                continue;
            }
            auto button = read_button(*value.dictionary());
            if (!uuids.insert(button.uuid()).second) button.set_made_up_uuid(new_uuid());
            all.buttons.emplace_back(std::move(button));
        }
        all.kept.remove(buttons_key);
    }
    return all;
}

property_dictionary write_button_dict(const button_dict& all) {
    property_dictionary document = all.kept;
    const bool has_version = document.contains(version_key) && version_of(document) == all.version_markup;
    if (!has_version) document.set(version_key, all.version_markup);
    property_array buttons;
    for (const auto& button : all.buttons) buttons.emplace_back(write_button(*button));
    for (const auto& other : all.others) {
        const auto index = std::min(other.index, buttons.size());
        buttons.insert(buttons.begin() + static_cast<std::ptrdiff_t>(index), other.value);
    }
    if (!buttons.empty() || !document.contains(buttons_key)) document.set(buttons_key, std::move(buttons));
    return document;
}

result<button_dict> load_button_dict(const std::string& logger_folder) {
    const std::string path = path_join(logger_folder, button_file_name);
    const auto read = read_property_list_file(path);
    if (!read) return read.error();
    const auto* document = read.value().dictionary();
    if (!document) return file_cannot_be_read(path, file_holds_no_code_window());
    return read_button_dict(*document);
}

result<void> save_button_dict(const button_dict& all, const std::string& logger_folder, file_system& files,
                              std::vector<file_conflict>* met) {
    if (auto made = make_folders(logger_folder, files); !made) return made;
    auto saved = safe_write(path_join(logger_folder, button_file_name), write_button_dict(all), files);
    if (!saved) return saved;
    const std::string path = path_join(logger_folder, logger_file_name);
    auto marker = read_code_window_file(path, nullptr);
    marker.set(count_key, static_cast<std::int64_t>(all.buttons.size()));
    return save_code_window_file(path, marker, files, met);
}

std::string button_picture_path(const markup_Button_Item& button, const std::string& logger_folder) {
    const std::string id = button.picture_id();
    const bool is_name =
        !id.empty() && id.find('/') == std::string::npos && id.find('\0') == std::string::npos;
    return is_name ? path_join(logger_folder, "pic " + id + ".png") : std::string();
}

}  // namespace vistels
