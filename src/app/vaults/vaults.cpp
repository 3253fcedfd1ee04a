// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/vaults/vaults.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <string_view>

#include "app/settings/vault_preferences.h"
#include "app/vaults/trash.h"
#include "app/vaults/vault_failures.h"
#include "document/writer_lock.h"
#include "timeline/files/timeline_form.h"
#include "util/file_failures.h"
#include "util/text_forms.h"
#include "util/uuid.h"
#include "video/vault_lock.h"

namespace vistels {

namespace {

failure no_folder(const std::string& path, int fault) {
    return vault_folder_not_made(file_could_not_be_made(path, system_failure(fault)));
}

failure in_the_way(const std::string& vault) {
    return vault_exists(vault_name(vault), vault);
}

std::string trimmed(std::string_view name) {
    constexpr std::string_view white_space = " \t\n\r\f\v";
    const auto first = name.find_first_not_of(white_space);
    if (first == name.npos) return {};
    return std::string(name.substr(first, name.find_last_not_of(white_space) + 1 - first));
}

bool is_there(const std::string& path) {
    struct stat state {};
    return ::lstat(path.c_str(), &state) == 0;
}

// The longest name in bytes on the volume of a folder that may not be made yet.
std::size_t longest_name_in(std::string folder) {
    constexpr std::size_t usual = 255;
    while (!is_there(folder) && folder != "/" && folder != ".") folder = path_folder(folder);
    const long longest = ::pathconf(folder.c_str(), _PC_NAME_MAX);
    return longest > 0 ? static_cast<std::size_t>(longest) : usual;
}

// A timeline in it that is open in another program or in this one; empty when there is none.
result<std::string> timeline_in_use(const std::string& vault) {
    vault_tree tree(vault);
    const auto looked = tree.look();
    if (!looked) return looked.error();
    for (const auto& folder : tree.folders_with_writer()) {
        if (!writer_lock::take(folder, timeline_form)) return folder;
    }
    return std::string();
}

result<void> check_replaceable(const home_places& places, const std::string& vault) {
    struct stat state {};
    if (::lstat(vault.c_str(), &state) == 0 && S_ISLNK(state.st_mode)) {
        return link_cannot_be_replaced(vault);
    }
    if (is_home_vault(vault) || is_same_folder(vault, places.home_vault)) {
        return home_vault_cannot_be_replaced(vault);
    }
    if (is_same_folder(vault, places.state_folder)) {
        return state_folder_cannot_be_replaced(vault);
    }
    if (!is_folder(vault)) return {};
    const auto used = timeline_in_use(vault);
    if (!used) return used.error();
    if (used.value().empty()) return {};
    return timeline_of_vault_is_open(modified_now(vault), used.value());
}

// Puts the folder `made` in the place of the vault.
result<void> put_in_place(const std::string& made, const std::string& vault, const std::string& home_trash,
                          file_system& files) {
    std::unique_ptr<vault_lock> lock;
    if (is_folder(vault)) {
        auto taken = vault_lock::take(vault);
        if (!taken) return taken.error();
        lock = std::move(taken).value();
    }
    const auto old = move_to_trash(vault, home_trash, files);
    if (!old) return old.error();
    const int fault = files.rename(made, vault);
    if (fault == 0) {
        files.sync_folder(path_folder(vault));
        return {};
    }
    const auto restored = restore_from_trash(old.value(), vault, files);
    const failure reason = file_could_not_be_made(vault, system_failure(fault));
    return vault_folder_not_made(restored ? reason : vault_not_restored(reason, restored.error()));
}

}  // namespace

result<std::string> new_vault_path(const std::string& parent, const std::string& name) {
    std::string bare = trimmed(name);
    if (bare.ends_with(vault_ending)) {
        bare = trimmed(std::string_view(bare).substr(0, bare.size() - std::string_view(vault_ending).size()));
    }
    if (bare.empty()) return vault_folder_not_made(vault_needs_a_name());
    if (bare.find('/') != bare.npos) {
        return vault_folder_not_made(vault_name_holds_a_slash(bare));
    }
    bool is_text = is_valid_text(bare);
    for (const char one : bare) is_text = is_text && (static_cast<unsigned char>(one) >= ' ' && one != 127);
    if (!is_text) {
        return vault_folder_not_made(vault_name_is_no_text(bare));
    }
    const std::string folder = absolute_path(parent);
    const std::string file_name = bare + vault_ending;
    if (const auto longest = longest_name_in(folder); file_name.size() > longest) {
        return vault_folder_not_made(vault_name_is_too_long(file_name, file_name.size(), folder, longest));
    }
    return path_join(folder, file_name);
}

result<std::string> create_vault(const std::string& parent, const std::string& name, file_system& files) {
    auto vault = new_vault_path(parent, name);
    if (!vault) return vault;
    const std::string& path = vault.value();
    if (is_there(path)) return in_the_way(path);
    if (auto made = make_folders(path_folder(path), files); !made) return vault_folder_not_made(made.error());
    const int fault = files.make_folder(path);
    if (fault == EEXIST) return in_the_way(path);
    if (fault != 0) return no_folder(path, fault);
    return vault;
}

result<std::string> replace_vault(const home_places& places, const std::string& parent,
                                  const std::string& name, file_system& files) {
    auto vault = new_vault_path(parent, name);
    if (!vault) return vault;
    const std::string& path = vault.value();
    if (!is_there(path)) return create_vault(parent, name, files);
    if (auto checked = check_replaceable(places, path); !checked) return checked.error();
    // Made first, so that a full volume is found out before the old vault is moved.
    const std::string made = path_join(path_folder(path), ".making " + new_uuid());
    if (const int fault = files.make_folder(made)) return no_folder(path, fault);
    auto placed = put_in_place(made, path, places.trash, files);
    if (placed) return vault;
    ::rmdir(made.c_str());
    return placed.error();
}

result<new_vault> create_new_vault(const home_places& places, const new_vault_request& request) {
    const auto made = request.replace ? replace_vault(places, request.parent, request.name)
                                      : create_vault(request.parent, request.name);
    if (!made) return made.error();
    new_vault done{made.value(), false, {}};
    const auto listed = add_known_vault(places, done.path);
    if (!listed) {
        done.problem = listed.error();
    } else if (load_set_focus_to_new_vault(places).set) {
        const auto chosen = choose_focus_vault(places, done.path);
        done.problem = chosen.error();
        done.is_focus = chosen.ok();
    }
    // Forgetting where it was made is no reason to complain of a vault that is there.
    (void)save_create_new_vault_settings(places, {path_folder(done.path), vault_name(done.path)});
    return done;
}

}  // namespace vistels
