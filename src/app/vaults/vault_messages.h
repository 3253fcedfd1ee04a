// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <string_view>

namespace vistels {

// What is told of a vault, with a placeholder for its name.
inline constexpr std::string_view vault_exists_message = "Vault '<$vault_name$>' already exists.";
inline constexpr std::string_view no_folder_message = "Could not create folder.";

// `message` with "<$vault_name$>" replaced by the name of the vault ("Cup" for "/a/Cup.VVault").
std::string about_vault(std::string_view message, const std::string& vault);

}  // namespace vistels
