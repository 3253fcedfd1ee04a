// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <vector>

#include "app/settings/places.h"
#include "app/vaults/vault_scan.h"
#include "app/vaults/vault_space.h"
#include "util/posted_work_guard.h"
#include "util/run_loop.h"
#include "util/serial_queue.h"
#include "util/signal.h"

namespace vistels {

class files_Root_watcher_ROOT;

// One vault as it is shown to the user.
struct listed_vault {
    std::string path;
    std::string name;  // without the ending
    bool is_home = false;
    bool is_focus = false;                // new items are saved here
    bool is_available = false;            // its folder is there and can be listed
    failure problem;                      // why it is not available
    std::optional<volume_space> space;    // nothing until it was asked for
    bool has_limited_free_space = false;  // less than the percentage of the settings
    // Never null; empty when it is not available. Another pointer is another content.
    std::shared_ptr<const vault_content> content = std::make_shared<vault_content>();
    std::size_t first_item = 0;  // its part of the list of items
    std::size_t item_count = 0;
    bool operator==(const listed_vault&) const = default;
};

// The application's one list of every item in every known vault, which the side bar shows and finds in
// (through content_keeper), kept up to date: what changes in a vault shows as soon as the file system tells
// of it, or within `look_seconds` where it does not. Made, asked and destroyed on the main thread; vaults are
// looked through on a queue of its own.
class files_MASTER_LIST {
  public:
    struct options {
        bool watches = true;                  // false: only refresh() looks
        std::vector<vault_tree> known_trees;  // what start-up has seen already
        double look_seconds = 5;              // between two looks where nothing is told
        std::size_t most_watched_folders = static_cast<std::size_t>(-1);
    };

    // Nothing is looked at before start(). `loop` must outlive the list.
    files_MASTER_LIST(home_places places, run_loop& loop, options how);
    files_MASTER_LIST(home_places places, run_loop& loop);
    ~files_MASTER_LIST();
    files_MASTER_LIST(const files_MASTER_LIST&) = delete;
    files_MASTER_LIST& operator=(const files_MASTER_LIST&) = delete;

    // Lists what there is, then begins to watch it.
    void start();
    // Reads the settings and looks at every vault again, soon; several calls are one look.
    void refresh();

    // The vaults to be shown, the home vault first; those that are not available only when the settings say
    // so.
    const std::vector<listed_vault>& vaults() const { return shown_; }
    // Every item of every vault that is available, each once, vault by vault.
    const std::vector<files_Items_Master_list_ITEM_DATA>& files_Items_App_MASTER_FILE_LIST() const {
        return items_;
    }
    // Those of one of vaults(); an item that lies in two is the first one's. Until the next change.
    std::span<const files_Items_Master_list_ITEM_DATA> items_in(const listed_vault& vault) const {
        return std::span(items_).subspan(vault.first_item, vault.item_count);
    }
    // When the vaults were last looked at, in seconds since 1970; 0: not yet.
    double last_time_file_list_updated() const { return last_time_file_list_updated_; }
    // The path of the vault into which new items are saved.
    const std::string& focus_vault() const { return focus_vault_; }
    // The file system tells of changes in every vault that is available.
    bool is_told_of_changes() const;

    // vaults() or the items are other than before.
    signal<> changed;
    // Something to tell the user, each once: a focus vault that is away, a vault that went away.
    signal<const failure&> told;

  private:
    struct finding;     // what a look brings
    struct background;  // what is used on the queue alone
    using vault_space = file_item_Update_Vault_Free_Space_in_background_25::vault_space;

    void ask_for(bool all, const std::set<std::string>& vaults);
    void begin_look();
    void take(finding found);
    void take_spaces(const std::vector<vault_space>& all);
    void ask_for_spaces();
    void list_items();
    void show();

    const home_places places_;
    run_loop& loop_;
    const double look_seconds_;
    const bool watches_;
    const std::size_t most_watched_folders_;
    std::vector<listed_vault> all_;    // whatever is known, shown or not
    std::vector<listed_vault> shown_;  // what vaults() gives
    std::vector<files_Items_Master_list_ITEM_DATA> items_;
    std::set<std::string> logged_duplicates_;
    std::string focus_vault_;
    failure focus_problem_;
    bool shows_unavailable_ = true;
    int minimum_free_percent_ = 10;
    double last_time_file_list_updated_ = 0;
    bool is_looking_ = false;
    bool all_are_asked_for_ = false;   // a look at all is wanted after the one under way
    std::set<std::string> asked_for_;  // or at these
    posted_work_guard guard_;
    std::unique_ptr<files_Root_watcher_ROOT> watcher_;
    std::unique_ptr<background> background_;
    file_item_Update_Vault_Free_Space_in_background_25 space_;
    serial_queue queue_{"vaults"};
};

}  // namespace vistels
