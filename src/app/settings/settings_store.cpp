// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/settings/settings_store.h"

#include <memory>
#include <utility>

#include "app/settings/settings.h"
#include "app/settings/vault_preferences.h"

namespace vistels {

namespace {

home_places without_store(home_places places) {
    places.settings = nullptr;
    return places;
}

}  // namespace

settings_store::settings_store(const home_places& places, std::function<void(const failure&)> trouble)
    : places_(without_store(places)), trouble_(std::move(trouble)) {
    for (const auto* files : {&application_settings_files(), &vault_preference_files()}) {
        for (const auto& file : *files) (void)read(file);
    }
}

settings_store::~settings_store() = default;

property_dictionary settings_store::read(const settings_file& file) {
    const std::string path = path_of(places_, file);
    {
        const std::lock_guard lock(mutex_);
        if (const auto known = known_.find(path); known != known_.end()) return known->second;
    }
    auto found = read_settings(places_, file);
    const std::lock_guard lock(mutex_);
    // What was written meanwhile is newer.
    return known_.try_emplace(path, std::move(found)).first->second;
}

void settings_store::write(const settings_file& file, const property_dictionary& values) {
    (void)read(file);
    const std::string path = path_of(places_, file);
    {
        const std::lock_guard lock(mutex_);
        merge_settings(known_[path], values);
        const auto [waiting, is_first] = waiting_.try_emplace(path);
        for (const auto& entry : values) waiting->second.set(entry.key, entry.value);
        if (!is_first) return;
    }
    queue_.post([this, file] { write_waiting(file); });
}

void settings_store::write_waiting(const settings_file& file) {
    property_dictionary values;
    {
        const std::lock_guard lock(mutex_);
        auto waiting = waiting_.extract(path_of(places_, file));
        values = std::move(waiting.mapped());
    }
    if (const auto written = write_settings(places_, file, values); !written && trouble_) {
        trouble_(written.error());
    }
}

home_places with_store(home_places places, std::function<void(const failure&)> trouble) {
    places.settings = std::make_shared<settings_store>(places, std::move(trouble));
    return places;
}

}  // namespace vistels
