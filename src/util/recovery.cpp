// SPDX-License-Identifier: GPL-3.0-or-later
#include "util/recovery.h"

#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <limits>
#include <map>

#include "util/clock.h"
#include "util/file_failures.h"
#include "util/property_list.h"
#include "util/recovery_failures.h"
#include "util/safe_write.h"
#include "util/text_forms.h"

namespace vistels {

namespace {

constexpr double stray_age_seconds = 3600;
constexpr double day_seconds = 24 * 3600;

enum class copy_state { whole, torn, missing, unreadable };

// Unreadable is what the volume fails to give now: no reason to replace it.
copy_state state_of_copy(const std::string& path, file_system& files, std::string& bytes) {
    int descriptor = -1;
    const int opening = files.open(path, O_RDONLY, descriptor);
    if (opening == ENOENT) return copy_state::missing;
    if (opening != 0) return copy_state::unreadable;
    const int reading = read_whole(files, descriptor, bytes);
    files.close(descriptor);
    if (reading != 0) return copy_state::unreadable;
    return read_property_list(bytes, path).ok() ? copy_state::whole : copy_state::torn;
}

// The copies that one broken-off write left: their names, either may be empty.
struct copy_pair {
    std::string temporary;
    std::string previous;
};
// Those of one file, by the number of the write.
using left_copies = std::map<std::int64_t, copy_pair>;

// The file's name and the number in a temporary or previous copy's name; an empty name for others.
struct copy_name {
    std::string destination;
    std::int64_t number = 0;
};

copy_name copy_name_of(const std::string& name, std::string_view mark) {
    const auto at = name.rfind(mark);
    if (at == std::string::npos) return {};
    const auto number = integer_from_text(std::string_view(name).substr(at + mark.size()));
    return number ? copy_name{name.substr(0, at), *number} : copy_name{};
}

double age_of(const std::string& path, file_system& files) {
    file_identity found;
    if (files.identity(path, found) != 0) return 0;  // not to be deleted
    constexpr double nanoseconds = 1e9;
    return seconds_since_1970() - static_cast<double>(found.modified_nanoseconds) / nanoseconds;
}

// One file with its copies.
class file_recovery {
  public:
    file_recovery(std::string folder, std::string name, const left_copies& copies, file_system& files,
                  const content_judge& judge, recovery& done)
        : folder_(std::move(folder)),
          name_(std::move(name)),
          path_(path_join(folder_, name_)),
          copies_(copies),
          files_(files),
          judge_(judge),
          done_(done) {}

    void run() {
        std::string bytes;
        const auto found = state_of_copy(path_, files_, bytes);
        if (found == copy_state::whole) return clean();
        if (found == copy_state::unreadable) return leave_alone(path_);
        is_missing_ = found == copy_state::missing;
        if (look_through_copies()) keep_what_is_left();
    }

  private:
    std::string path_of(const std::string& copy) const { return path_join(folder_, copy); }

    // As old as its youngest copy: the other one may be the file as it was long before.
    bool is_old(const copy_pair& pair) const {
        double age = std::numeric_limits<double>::max();
        for (const auto& copy : {pair.temporary, pair.previous}) {
            if (!copy.empty()) age = std::min(age, age_of(path_of(copy), files_));
        }
        return age > day_seconds;
    }

    void clean() {
        for (const auto& [number, pair] : copies_) {
            if (!is_old(pair)) continue;
            for (const auto& copy : {pair.temporary, pair.previous}) {
                if (!copy.empty() && files_.remove(path_of(copy)) == 0)
                    done_.cleaned.push_back(path_of(copy));
            }
        }
    }

    // A temporary file was synced before the old file was set aside, so with a previous copy beside it, it is
    // the newest whole state. False when all is done.
    bool look_through_copies() {
        for (const bool with_previous : {true, false}) {
            for (auto pair = copies_.rbegin(); pair != copies_.rend(); ++pair) {
                if (pair->second.previous.empty() == with_previous) continue;
                for (const auto& copy : {pair->second.temporary, pair->second.previous}) {
                    if (!copy.empty() && !look_at_copy(copy, pair->second)) return false;
                }
            }
        }
        return true;
    }

    bool look_at_copy(const std::string& copy, const copy_pair& pair) {
        std::string bytes;
        auto state = state_of_copy(path_of(copy), files_, bytes);
        auto known = held_content::not_known;
        if (state == copy_state::whole && judge_) known = judge_(name_, bytes);
        if (known == held_content::cannot_be_told_now) state = copy_state::unreadable;
        if (state == copy_state::unreadable) {
            leave_alone(path_of(copy));
            return false;
        }
        if (state == copy_state::torn && is_missing_ && pair.previous.empty()) torn_first_.push_back(copy);
        if (state != copy_state::whole) return true;
        const bool was_moved_aside = known == held_content::yes && !pair.previous.empty();
        if (known == held_content::no || (!was_moved_aside && is_old(pair))) {
            left_.push_back({copy, known == held_content::no});
            return true;
        }
        put_back(copy);
        return false;
    }

    void put_back(const std::string& copy) {
        std::string kept;
        const auto cannot = [&](int fault) {
            done_.messages.push_back(file_could_not_be_put_back(path_, system_failure(fault)));
        };
        if (!is_missing_) {
            kept = damaged_name(path_);
            if (const int fault = files_.rename(path_, kept)) return cannot(fault);
        }
        if (const int fault = files_.rename(path_of(copy), path_)) {
            if (!is_missing_) files_.rename(kept, path_);
            return cannot(fault);
        }
        files_.sync_folder(folder_);
        done_.recovered.push_back(path_);
        done_.messages.push_back(kept.empty() ? file_was_put_back(path_)
                                              : file_was_put_back_for_a_torn_one(path_, path_name(kept)));
    }

    // Told once: under its new name a copy is none any more.
    void keep_what_is_left() {
        for (const auto& [copy, is_strange] : left_) {
            keep(copy, "copy", is_strange ? strange_copy_was_kept : old_copy_was_kept);
        }
        for (const auto& copy : torn_first_) keep(copy, "damaged", part_of_a_save_was_kept);
        if (left_.empty() && torn_first_.empty()) done_.messages.push_back(no_whole_copy_was_found(state()));
    }

    failure state() const { return is_missing_ ? file_gone(path_) : file_torn(path_); }

    void keep(const std::string& copy, std::string_view what, const failure_of<a_cause, a_text>& told) {
        const std::string kept = kept_name(path_, what);
        if (const int fault = files_.rename(path_of(copy), kept)) {
            done_.messages.push_back(file_could_not_be_kept(path_of(copy), system_failure(fault)));
        } else {
            done_.messages.push_back(told(state(), path_name(kept)));
        }
    }

    void leave_alone(const std::string& path) { done_.messages.push_back(file_cannot_be_read_now(path)); }

    struct left_copy {
        std::string name;
        bool is_strange;  // of a content that the file did not have last
    };

    const std::string folder_;
    const std::string name_;
    const std::string path_;
    const left_copies& copies_;
    file_system& files_;
    const content_judge& judge_;
    recovery& done_;
    bool is_missing_ = false;
    std::vector<left_copy> left_;          // whole, not put back
    std::vector<std::string> torn_first_;  // of a file that there never was
};

}  // namespace

recovery recover_folder(const std::string& folder, file_system& files, const content_judge& judge) {
    recovery done;
    std::vector<std::string> names;
    if (const int fault = files.list(folder, names)) {
        done.messages.push_back(file_cannot_be_looked_through(folder, system_failure(fault)));
        return done;
    }
    sort_names(names);
    std::map<std::string, left_copies> left;
    for (const auto& name : names) {
        if (auto copy = copy_name_of(name, temporary_mark); !copy.destination.empty()) {
            left[copy.destination][copy.number].temporary = name;
        } else if (auto aside = copy_name_of(name, previous_mark); !aside.destination.empty()) {
            left[aside.destination][aside.number].previous = name;
        }
    }
    for (const auto& [name, copies] : left) {
        if (name.ends_with(".plist")) file_recovery(folder, name, copies, files, judge, done).run();
    }
    return done;
}

std::vector<std::string> clean_up_strays(const std::string& folder, double running_seconds) {
    namespace fs = std::filesystem;
    std::vector<std::string> cleaned;
    std::error_code fault;
    const auto now = fs::file_time_type::clock::now();
    for (fs::recursive_directory_iterator at(folder, fault), end; !fault && at != end; at.increment(fault)) {
        const std::string name = at->path().filename().string();
        const bool stray = name.find(".plist temp file") != std::string::npos ||
                           name.find(".plist <previous> ") != std::string::npos;
        std::error_code ignored;
        if (!stray || !at->is_regular_file(ignored)) continue;
        const std::chrono::duration<double> age = now - at->last_write_time(ignored);
        if (ignored || age.count() <= stray_age_seconds || age.count() <= running_seconds) continue;
        if (fs::remove(at->path(), ignored)) cleaned.push_back(at->path().string());
    }
    return cleaned;
}

}  // namespace vistels
