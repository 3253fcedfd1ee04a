// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

#include "app/settings/places.h"
#include "app/settings/settings_file.h"

namespace vistels {

inline constexpr settings_file user_name_file{"System", "user name.plist"};

// The name under which edits go on record: the one that was saved, else the one that the machine knows the
// user by: the full name, else the one to log in with. Never empty.
std::string load_user_name(const home_places& places);

// The user's name from the fields of the machine's list of users: of `full_name` (which may go on with a
// comma and rooms and telephone numbers, and in which "&" stands for the capitalised login) what is a name,
// else `login`.
std::string name_from_account(const std::string& login, const std::string& full_name);

}  // namespace vistels
