// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/start/settings_in_force.h"

#include "app/settings/settings.h"
#include "app/settings/vault_preferences.h"
#include "app/vaults/known_vaults.h"

namespace vistels {

property_dictionary settings_in_force(const home_places& places) {
    property_dictionary all;
    all.add("playback top speed", load_playback_top_speed(places).rate);
    all.add("pitch algorithm", pitch_algorithm_text(load_pitch_algorithm(places)));
    all.add("application volume", load_application_volume(places));
    all.add("default formula operator", std::string(1, load_default_formula_operator(places)));
    all.add("filtered out clips", filtered_out_clips_text(load_filtered_out_clips(places)));
    all.add("show_vistel_name_with_number", load_show_vistel_number_name(places).shown);
    all.add("store video data in collection folder", load_local_video_data(places).in_collection_folder);
    all.add("minimum vault free space percent", load_minimum_free_space(places).percent);
    all.add("show unavailable vaults", load_show_unavailable_vaults(places).shown);
    all.add("path of focus vault", focus_vault_of(places).path);
    all.add("set focus to new vault", load_set_focus_to_new_vault(places).set);
    const auto new_vault = load_create_new_vault_settings(places);
    all.add("parent folder of new vaults", new_vault.parent_folder);
    property_array vaults;
    for (auto& vault : known_vaults(places)) vaults.emplace_back(std::move(vault));
    all.add("vaults", std::move(vaults));
    return all;
}

}  // namespace vistels
