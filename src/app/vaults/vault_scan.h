// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "util/clock.h"
#include "util/result.h"

namespace vistels {

inline constexpr const char* vault_ending = ".VVault";

// What a folder in a vault may be; a folder with several marker files is several items.
enum class item_kind { collection, timeline, composer, markup, table, matrix };

// One table for everything by which kinds are known and shown.
struct item_kind_names {
    item_kind kind;
    const char* marker_file;
    const char* count_key;  // "number of collections"
    const char* type;       // "collection"
};
const std::array<item_kind_names, 6>& item_kinds();

// An entry of the list of everything in the known vaults.
struct files_Items_Master_list_ITEM_DATA {
    std::string file_name_;      // of the folder
    std::string full_file_path;  // of the folder
    item_kind kind = item_kind::collection;
    std::uint64_t device = 0;  // by which the same folder is known under another path
    std::uint64_t inode = 0;
    bool operator==(const files_Items_Master_list_ITEM_DATA&) const = default;
};

struct vault_content {
    std::array<std::size_t, 6> counts{};  // in the order of item_kinds()
    std::vector<files_Items_Master_list_ITEM_DATA> items;
    std::vector<failure> problems;  // folders that could not be looked into, with the reason
    bool operator==(const vault_content&) const = default;
};

// Looks through the vault by marker files, once; as vault_tree does.
result<vault_content> scan_vault(const std::string& vault);

// What is known of the folders of one vault, so that looking again costs one question a folder and only those
// that changed are listed again. Hidden folders, vaults inside and symbolic links to folders are passed over;
// no file is opened. One thread at a time, any thread.
class vault_tree {
  public:
    // Nothing is looked at yet. A symbolic link to a folder counts as that folder.
    explicit vault_tree(std::string vault);
    ~vault_tree();
    vault_tree(vault_tree&&) noexcept;
    vault_tree& operator=(vault_tree&&) noexcept;

    // Looks; true when content() is another than before. A vault that is no folder, cannot be listed, or goes
    // away meanwhile, is an error, and then nothing is known of it. A folder in it that cannot be looked into
    // counts as empty and stands in the content's problems. `now` is in seconds since 1970, by the machine's
    // clock: folders that changed just before it are listed again next time.
    result<bool> look(double now = seconds_since_1970());

    const std::string& vault() const { return vault_; }
    const vault_content& content() const { return content_; }
    // It was looked at, and was there.
    bool is_listed() const { return root_ != nullptr; }
    // The folders that were listed, the vault's own first.
    std::vector<std::string> folders() const;
    // How many folders the last look had to list.
    std::size_t folders_listed() const { return folders_listed_; }

    // Folders that hold copies of a broken-off safe write.
    std::vector<std::string> folders_with_copies() const;
    // Folders in which a timeline's writer left or keeps its mark.
    std::vector<std::string> folders_with_writer() const;

  private:
    struct node;
    struct walk;

    std::string vault_;
    std::unique_ptr<node> root_;
    vault_content content_;
    std::size_t folders_listed_ = 0;
};

}  // namespace vistels
