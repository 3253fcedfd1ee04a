// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/settings/user_name.h"

#include <pwd.h>
#include <unistd.h>

#include <cstddef>
#include <string_view>
#include <vector>

#include "util/property_value.h"
#include "util/text_forms.h"

namespace vistels {

namespace {

constexpr const char* user_name_key = "user name";

std::string trimmed(std::string_view text) {
    constexpr std::string_view blank = " \t\r\n";
    const auto first = text.find_first_not_of(blank);
    if (first == std::string_view::npos) return {};
    return std::string(text.substr(first, text.find_last_not_of(blank) - first + 1));
}

std::string machines_name() {
    constexpr std::size_t enough = 16384;
    std::vector<char> room(enough);
    passwd entry{};
    passwd* found = nullptr;
    const int fault = ::getpwuid_r(::getuid(), &entry, room.data(), room.size(), &found);
    const std::string number = std::to_string(::getuid());
    if (fault != 0 || !found || !found->pw_name) return number;
    const std::string name = name_from_account(found->pw_name, found->pw_gecos ? found->pw_gecos : "");
    return name.empty() ? number : name;
}

}  // namespace

std::string name_from_account(const std::string& login, const std::string& full_name) {
    std::string capitalised = login;
    if (!login.empty() && login[0] >= 'a' && login[0] <= 'z') {
        capitalised[0] = static_cast<char>(login[0] - 'a' + 'A');
    }
    std::string name;
    for (const char letter : full_name.substr(0, full_name.find(','))) {
        if (letter == '&') {
            name += capitalised;
        } else {
            name += letter;
        }
    }
    name = trimmed(name);
    return name.empty() || !is_valid_text(name) ? login : name;
}

std::string load_user_name(const home_places& places) {
    const std::string saved = trimmed(read_settings(places, user_name_file).text_or_empty(user_name_key));
    return saved.empty() ? machines_name() : saved;
}

}  // namespace vistels
