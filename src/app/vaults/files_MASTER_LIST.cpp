// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/vaults/files_MASTER_LIST.h"

#include <algorithm>
#include <map>
#include <tuple>
#include <utility>

#include "app/settings/state_log.h"
#include "app/settings/vault_preferences.h"
#include "app/vaults/files_Root_watcher_ROOT.h"
#include "app/vaults/known_vaults.h"
#include "app/vaults/vault_failures.h"
#include "util/clock.h"

namespace vistels {

struct files_MASTER_LIST::finding {
    std::vector<listed_vault> vaults;
    std::set<std::string> untold;  // of which no changes are told
    vistels::focus_vault focus;
    bool shows_unavailable = true;
    int minimum_free_percent = 10;
    double time = 0;  // seconds since 1970
};

struct files_MASTER_LIST::background {
    explicit background(home_places where) : places(std::move(where)) {}

    const home_places places;
    std::map<std::string, vault_tree> trees;
    std::vector<listed_vault> known;
    std::set<std::string> untold;

    // Gives what start-up has listed, and lists the rest, without waiting for anything to be watched.
    finding list() { return look(false, {}, nullptr, true); }

    finding look(bool all, const std::set<std::string>& asked, files_Root_watcher_ROOT* watcher,
                 bool is_first = false) {
        finding found;
        found.focus = focus_vault_of(places);
        found.shows_unavailable = load_show_unavailable_vaults(places).shown;
        found.minimum_free_percent = load_minimum_free_space(places).percent;
        std::vector<listed_vault> now;
        for (const auto& path : known_vaults(places)) {
            const auto before = std::find_if(known.begin(), known.end(),
                                             [&path](const auto& one) { return one.path == path; });
            const bool is_new = before == known.end();
            now.push_back(is_new ? new_vault(path) : std::move(*before));
            if (!is_new) before->path.clear();
            auto& vault = now.back();
            vault.is_home = path == places.home_vault;
            vault.is_focus = path == found.focus.path;
            if (is_first && take_listed(vault)) continue;
            if (is_new || all || asked.contains(path)) look_at(vault, watcher);
        }
        for (const auto& gone : known) {
            if (!gone.path.empty()) forget(gone.path, watcher);
        }
        known = std::move(now);
        found.vaults = known;
        found.untold = untold;
        for (const auto& vault : known) {
            if (!watched.contains(vault.path)) found.untold.insert(vault.path);
        }
        found.time = seconds_since_1970();
        return found;
    }

  private:
    static listed_vault new_vault(const std::string& path) {
        listed_vault vault;
        vault.path = path;
        vault.name = vault_name(path);
        return vault;
    }

    bool take_listed(listed_vault& vault) {
        const auto tree = trees.find(vault.path);
        if (tree == trees.end() || !tree->second.is_listed()) return false;
        vault.is_available = true;
        vault.content = std::make_shared<vault_content>(tree->second.content());
        return true;
    }

    void look_at(listed_vault& vault, files_Root_watcher_ROOT* watcher) {
        auto& tree = trees.try_emplace(vault.path, vault.path).first->second;
        const bool was_available = std::exchange(vault.is_available, true);
        bool is_changed = !was_available;
        // What happened between listing a folder and watching it is found by looking after that. What
        // start-up has listed is watched first.
        constexpr int most_looks = 3;
        if (watcher && tree.is_listed() && !watched.contains(vault.path)) {
            (void)watch(vault.path, tree.folders(), *watcher);
        }
        for (int looks = 0; looks < most_looks; ++looks) {
            const auto looked = tree.look();
            vault.problem = looked.error();
            if (!looked) {
                vault.is_available = false;
                break;
            }
            is_changed = is_changed || looked.value();
            if (!watcher || (watched.contains(vault.path) && tree.folders_listed() == 0)) break;
            if (!watch(vault.path, tree.folders(), *watcher)) break;
        }
        if (!vault.is_available) {
            forget(vault.path, watcher);
            untold.insert(vault.path);
            if (was_available) vault.content = std::make_shared<vault_content>();
        } else if (is_changed) {
            vault.content = std::make_shared<vault_content>(tree.content());
        }
    }

    // True when changes may have been missed until now.
    bool watch(const std::string& path, const std::vector<std::string>& folders,
               files_Root_watcher_ROOT& watcher) {
        const auto done = watcher.watch(path, folders);
        watched.insert(path);
        if (done.is_told) {
            untold.erase(path);
        } else {
            untold.insert(path);
        }
        return done.has_new;
    }

    void forget(const std::string& path, files_Root_watcher_ROOT* watcher) {
        if (watcher) (void)watcher->watch(path, {});
        trees.erase(path);
        untold.erase(path);
        watched.erase(path);
    }

    std::set<std::string> watched;
};

files_MASTER_LIST::files_MASTER_LIST(home_places places, run_loop& loop)
    : files_MASTER_LIST(std::move(places), loop, options{}) {}

files_MASTER_LIST::files_MASTER_LIST(home_places places, run_loop& loop, options how)
    : places_(std::move(places)),
      loop_(loop),
      look_seconds_(how.look_seconds),
      watches_(how.watches),
      most_watched_folders_(how.most_watched_folders),
      focus_vault_(places_.home_vault),
      background_(new background(places_)),
      space_(loop, [this](const auto& all) { take_spaces(all); }) {
    for (auto& tree : how.known_trees) {
        std::string vault = tree.vault();
        background_->trees.emplace(std::move(vault), std::move(tree));
    }
}

files_MASTER_LIST::~files_MASTER_LIST() = default;

void files_MASTER_LIST::start() {
    if (watches_ && !watcher_) {
        watcher_ = std::make_unique<files_Root_watcher_ROOT>(
            loop_, look_seconds_,
            files_Root_watcher_ROOT::observers{[this](const auto& vaults) { ask_for(false, vaults); },
                                               [this] { refresh(); }, [this] { ask_for_spaces(); }},
            most_watched_folders_);
    }
    ask_for(false, {});
    refresh();
}

void files_MASTER_LIST::refresh() {
    ask_for(true, {});
}

bool files_MASTER_LIST::is_told_of_changes() const {
    if (!watcher_) return false;
    return std::none_of(all_.begin(), all_.end(), [this](const listed_vault& vault) {
        return vault.is_available && watcher_->untold_vaults().contains(vault.path);
    });
}

void files_MASTER_LIST::ask_for(bool all, const std::set<std::string>& vaults) {
    all_are_asked_for_ = all_are_asked_for_ || all;
    asked_for_.insert(vaults.begin(), vaults.end());
    if (!is_looking_) begin_look();
}

void files_MASTER_LIST::begin_look() {
    is_looking_ = true;
    const bool all = std::exchange(all_are_asked_for_, false);
    const bool is_first = last_time_file_list_updated_ == 0;
    queue_.post([this, all, is_first, asked = std::exchange(asked_for_, {})] {
        finding found = is_first ? background_->list() : background_->look(all, asked, watcher_.get());
        loop_.post(guard_.guarded([this, found = std::move(found)]() mutable { take(std::move(found)); }));
    });
}

void files_MASTER_LIST::take(finding found) {
    is_looking_ = false;
    last_time_file_list_updated_ = found.time;
    if (watcher_) watcher_->set_untold_vaults(std::move(found.untold));
    std::vector<failure> lost;
    for (auto& vault : found.vaults) {
        const auto before = std::find_if(all_.begin(), all_.end(),
                                         [&vault](const auto& one) { return one.path == vault.path; });
        if (before == all_.end()) continue;
        vault.space = vault.is_available ? before->space : std::nullopt;
        if (before->is_available && !vault.is_available) lost.push_back(vault.problem);
    }
    all_ = std::move(found.vaults);
    focus_vault_ = found.focus.path;
    shows_unavailable_ = found.shows_unavailable;
    minimum_free_percent_ = found.minimum_free_percent;
    list_items();
    show();
    ask_for_spaces();
    for (const auto& problem : lost) told.emit(vault_went_away(problem));
    const auto& problem = found.focus.problem;
    if (std::exchange(focus_problem_, problem) != problem && problem) told.emit(problem);
    if (!is_looking_ && (all_are_asked_for_ || !asked_for_.empty())) begin_look();
}

void files_MASTER_LIST::ask_for_spaces() {
    std::vector<std::string> vaults;
    for (const auto& vault : all_) {
        if (vault.is_available) vaults.push_back(vault.path);
    }
    space_.update(std::move(vaults));
}

void files_MASTER_LIST::take_spaces(const std::vector<vault_space>& all) {
    for (auto& vault : all_) {
        const auto found = std::find_if(all.begin(), all.end(),
                                        [&vault](const auto& one) { return one.vault == vault.path; });
        if (found != all.end()) vault.space = found->space;
    }
    show();
}

// A second entry for an item is left out; the log tells of it once.
void files_MASTER_LIST::list_items() {
    std::vector<files_Items_Master_list_ITEM_DATA> items;
    std::set<std::tuple<std::uint64_t, std::uint64_t, item_kind>> met;
    std::set<std::string> duplicates;
    for (auto& vault : all_) {
        vault.first_item = items.size();
        for (const auto& item : vault.content->items) {
            if (met.emplace(item.device, item.inode, item.kind).second) {
                items.push_back(item);
                continue;
            }
            const auto text = "duplicate found 🥁🥁🥁 " + item.full_file_path + " (" +
                              item_kinds()[static_cast<std::size_t>(item.kind)].type + ")";
            if (!logged_duplicates_.contains(text)) log_line(places_, text);
            duplicates.insert(text);
        }
        vault.item_count = items.size() - vault.first_item;
    }
    logged_duplicates_ = std::move(duplicates);
    items_ = std::move(items);
}

void files_MASTER_LIST::show() {
    std::vector<listed_vault> shown;
    for (auto& vault : all_) {
        vault.has_limited_free_space = vault.space && vault.space->is_limited(minimum_free_percent_);
        if (vault.is_available || vault.is_home || shows_unavailable_) shown.push_back(vault);
    }
    if (shown == shown_) return;
    shown_ = std::move(shown);
    changed.emit();
}

}  // namespace vistels
