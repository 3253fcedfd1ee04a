// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/vaults/vault_scan.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <string_view>

#include "app/settings/places.h"
#include "app/vaults/vault_failures.h"
#include "util/clock.h"
#include "util/file_failures.h"
#include "util/file_system.h"
#include "util/safe_write.h"

namespace vistels {

namespace {

constexpr int deepest_folder = 64;
// A change within one step of a volume's clock leaves no trace in a folder's time; the coarsest step is 2 s.
constexpr std::int64_t settling_nanoseconds = 3'000'000'000;
constexpr double nanoseconds_a_second = 1e9;

std::int64_t nanoseconds(const timespec& time) {
    return std::int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

// What tells whether a folder's list of names may have changed.
struct folder_state {
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    std::int64_t modified = 0;
    std::int64_t changed = 0;
    bool operator==(const folder_state&) const = default;
};

folder_state state_of(const struct stat& state) {
    return {state.st_dev, state.st_ino, nanoseconds(state.st_mtim), nanoseconds(state.st_ctim)};
}

// What one listing of a folder found.
struct folder_listing {
    folder_state state;
    unsigned markers = 0;  // one bit for each of item_kinds()
    bool has_copies = false;
    bool has_writer = false;
    std::vector<std::string> folders;
};

unsigned marker_bit(std::string_view name) {
    const auto& kinds = item_kinds();
    for (std::size_t index = 0; index < kinds.size(); ++index) {
        if (name == kinds[index].marker_file) return 1U << index;
    }
    return 0;
}

bool is_passed_over(std::string_view name) {
    return name.starts_with('.') || name.ends_with(vault_ending);
}

// The kind of an entry, asked of the file system only where the listing does not say it.
unsigned char kind_of(int folder, const dirent& entry, bool follow) {
    const bool says = entry.d_type != DT_UNKNOWN && !(follow && entry.d_type == DT_LNK);
    if (says) return entry.d_type;
    struct stat state {};
    if (::fstatat(folder, entry.d_name, &state, follow ? 0 : AT_SYMLINK_NOFOLLOW) != 0) return DT_UNKNOWN;
    return static_cast<unsigned char>(IFTODT(state.st_mode));
}

void take_entry(int folder, const dirent& entry, folder_listing& listing) {
    const std::string_view name = entry.d_name;
    if (const unsigned bit = marker_bit(name)) {
        if (kind_of(folder, entry, true) == DT_REG) listing.markers |= bit;
        return;
    }
    if (name.find(temporary_mark) != name.npos || name.find(previous_mark) != name.npos) {
        listing.has_copies = true;
    } else if (name.starts_with("chron data writer")) {
        listing.has_writer = true;
    } else if (!is_passed_over(name) && entry.d_type != DT_REG && kind_of(folder, entry, false) == DT_DIR) {
        listing.folders.emplace_back(name);
    }
}

// 0 or the error number.
int list_folder(const std::string& path, bool follow, folder_listing& listing) {
    const int flags = O_RDONLY | O_DIRECTORY | O_CLOEXEC | (follow ? 0 : O_NOFOLLOW);
    const int descriptor = ::open(path.c_str(), flags);
    if (descriptor < 0) return errno;
    struct stat state {};
    DIR* const entries = ::fstat(descriptor, &state) == 0 ? ::fdopendir(descriptor) : nullptr;
    if (!entries) {
        const int fault = errno;
        ::close(descriptor);
        return fault;
    }
    listing.state = state_of(state);
    int fault = 0;
    for (;;) {
        errno = 0;
        const dirent* entry = ::readdir(entries);
        if (!entry) {
            fault = errno;
            break;
        }
        take_entry(descriptor, *entry, listing);
    }
    ::closedir(entries);
    std::sort(listing.folders.begin(), listing.folders.end(),
              [](const auto& a, const auto& b) { return natural_before(a, b); });
    return fault;
}

bool is_gone(int fault) {
    return fault == ENOENT || fault == ENOTDIR;
}

}  // namespace

const std::array<item_kind_names, 6>& item_kinds() {
    static const std::array<item_kind_names, 6> kinds{{
        {item_kind::collection, "video group.plist", "number of collections", "collection"},
        {item_kind::timeline, "chron data.plist", "number of timelines", "timeline"},
        {item_kind::composer, "composer info.plist", "number of composers", "composer"},
        {item_kind::markup, "logger.plist", "number of markups", "markup"},
        {item_kind::table, "Table.plist", "number of tables", "table"},
        {item_kind::matrix, "Matrix.plist", "number of matrices", "matrix"},
    }};
    return kinds;
}

// One folder, with those in it in natural order.
struct vault_tree::node {
    std::string name;
    folder_state state;
    bool is_settled = false;  // a later change would show in `state`
    int fault = 0;            // why it could not be listed
    unsigned markers = 0;
    bool has_copies = false;
    bool has_writer = false;
    std::vector<node> below;
};

// One look; `path` is that of the folder at hand throughout.
struct vault_tree::walk {
    std::string path;
    std::int64_t begun = 0;  // nanoseconds since 1970
    std::size_t listed = 0;
    bool is_changed = false;

    // False when the folder is no longer there.
    bool look(node& at, int depth) {
        if (!is_unchanged(at, depth) && !list(at, depth)) return false;
        const std::size_t length = path.size();
        const auto gone = [&](node& one) {
            path += '/';
            path += one.name;
            const bool is_there = look(one, depth + 1);
            path.resize(length);
            return !is_there;
        };
        const auto last = std::remove_if(at.below.begin(), at.below.end(), gone);
        if (last != at.below.end()) {
            at.below.erase(last, at.below.end());
            at.is_settled = false;
            is_changed = true;
        }
        return true;
    }

    bool is_unchanged(const node& at, int depth) const {
        if (!at.is_settled || at.fault != 0) return false;
        struct stat state {};
        const int asked = depth == 0 ? ::stat(path.c_str(), &state) : ::lstat(path.c_str(), &state);
        return asked == 0 && state_of(state) == at.state;
    }

    bool list(node& at, int depth) {
        ++listed;
        folder_listing found;
        const int fault = depth > deepest_folder ? ELOOP : list_folder(path, depth == 0, found);
        if (is_gone(fault)) return false;
        is_changed = is_changed || at.fault != fault || at.markers != found.markers;
        at.fault = fault;
        at.state = found.state;
        at.is_settled = std::max(found.state.modified, found.state.changed) < begun - settling_nanoseconds;
        at.markers = found.markers;
        at.has_copies = found.has_copies;
        at.has_writer = found.has_writer;
        take_folders(at, std::move(found.folders));
        return true;
    }

    // What is known of a folder that is still there stays known.
    void take_folders(node& at, std::vector<std::string> names) {
        std::vector<node> before = std::move(at.below);
        at.below.clear();
        at.below.reserve(names.size());
        auto old = before.begin();
        for (auto& name : names) {
            while (old != before.end() && natural_before(old->name, name)) {
                is_changed = true;
                ++old;
            }
            if (old != before.end() && old->name == name) {
                at.below.push_back(std::move(*old++));
            } else {
                is_changed = true;
                at.below.emplace_back().name = std::move(name);
            }
        }
        if (old != before.end()) is_changed = true;
    }

    void collect(const node& at, vault_content& found) {
        for (std::size_t index = 0; index < item_kinds().size(); ++index) {
            if (!(at.markers >> index & 1U)) continue;
            ++found.counts[index];
            found.items.push_back(
                {path_name(path), path, item_kinds()[index].kind, at.state.device, at.state.inode});
        }
        if (at.fault == ELOOP) {
            found.problems.push_back(folder_lies_too_deep(path));
        } else if (at.fault != 0) {
            found.problems.push_back(folder_cannot_be_looked_into(path, system_failure(at.fault)));
        }
        each_below(at, [&](const node& one) { collect(one, found); });
    }

    template <class Work>
    void each_below(const node& at, Work work) {
        const std::size_t length = path.size();
        for (const node& one : at.below) {
            path += '/';
            path += one.name;
            work(one);
            path.resize(length);
        }
    }

    template <class Work>
    void each(const node& at, Work& work) {
        work(at, path);
        each_below(at, [&](const node& one) { each(one, work); });
    }
};

vault_tree::vault_tree(std::string vault) : vault_(std::move(vault)) {}
vault_tree::~vault_tree() = default;
vault_tree::vault_tree(vault_tree&&) noexcept = default;
vault_tree& vault_tree::operator=(vault_tree&&) noexcept = default;

result<bool> vault_tree::look(double now_seconds) {
    const bool is_first = !root_;
    if (is_first) root_ = std::make_unique<node>();
    walk now{vault_, static_cast<std::int64_t>(now_seconds * nanoseconds_a_second)};
    bool is_there = now.look(*root_, 0);
    // Folders that vanish one by one are changes; with the vault itself they are none.
    is_there = is_there && is_folder(vault_);
    folders_listed_ = now.listed;
    const int fault = is_there ? root_->fault : ENOENT;
    if (fault != 0) {
        root_.reset();
        content_ = {};
        if (fault == ENOENT) return file_is_missing_or_no_folder(vault_);
        return file_cannot_be_listed(vault_, system_failure(fault));
    }
    if (!now.is_changed && !is_first) return false;
    vault_content found;
    now.path = vault_;
    now.collect(*root_, found);
    if (found == content_) return is_first;
    content_ = std::move(found);
    return true;
}

std::vector<std::string> vault_tree::folders() const {
    std::vector<std::string> all;
    if (!root_) return all;
    walk over{vault_};
    const auto keep = [&all](const node& at, const std::string& path) {
        if (at.fault == 0) all.push_back(path);
    };
    over.each(*root_, keep);
    return all;
}

std::vector<std::string> vault_tree::folders_with_copies() const {
    std::vector<std::string> all;
    if (!root_) return all;
    walk over{vault_};
    const auto keep = [&all](const node& at, const std::string& path) {
        if (at.has_copies) all.push_back(path);
    };
    over.each(*root_, keep);
    return all;
}

std::vector<std::string> vault_tree::folders_with_writer() const {
    std::vector<std::string> all;
    if (!root_) return all;
    walk over{vault_};
    const auto keep = [&all](const node& at, const std::string& path) {
        if (at.has_writer) all.push_back(path);
    };
    over.each(*root_, keep);
    return all;
}

result<vault_content> scan_vault(const std::string& vault) {
    vault_tree tree(absolute_path(vault));
    const auto looked = tree.look();
    if (!looked) return looked.error();
    return tree.content();
}

}  // namespace vistels
