// SPDX-License-Identifier: GPL-3.0-or-later
#include "util/safe_write.h"

#include <fcntl.h>

#include <cerrno>
#include <filesystem>
#include <map>
#include <mutex>

#include "util/clock.h"
#include "util/property_list.h"
#include "util/text_forms.h"

namespace vistels {

namespace {

constexpr double fixed_offset_seconds = 1'000'000;
constexpr double nanoseconds = 1e9;
constexpr double stray_age_seconds = 3600;

bool has_no_hard_links(int fault) {
    return fault == EPERM || fault == EOPNOTSUPP || fault == ENOSYS || fault == EMLINK || fault == ENOTSUP;
}

// One replacement of one file; every step that fails puts back what the steps before it did.
class replacement {
  public:
    replacement(const std::string& path, file_system& files)
        : path_(path), folder_(path_folder(path)), files_(files) {
        std::string number;
        append_integer(number, safe_write_number());
        temporary_ = path + std::string(temporary_mark) + number;
        previous_ = path + std::string(previous_mark) + number;
    }

    result<void> run(std::string_view bytes) {
        if (const int fault = write_temporary(bytes)) return fail(fault);
        if (const int fault = put_in_place()) return fail(fault);
        if (const int fault = files_.sync_folder(folder_))
            return file_failure(path_, "may not be saved", fault);
        if (has_previous_) files_.remove(previous_);
        return {};
    }

  private:
    int write_temporary(std::string_view bytes) {
        int descriptor = -1;
        if (const int fault = files_.open(temporary_, O_WRONLY | O_CREAT | O_EXCL, descriptor)) return fault;
        int fault = write_whole(files_, descriptor, bytes);
        if (fault == 0) fault = files_.sync(descriptor);
        const int closing = files_.close(descriptor);
        return fault != 0 ? fault : closing;
    }

    int put_in_place() {
        const int linking = files_.hard_link(path_, previous_);
        has_previous_ = linking == 0;
        if (linking == 0 || linking == ENOENT) return files_.rename(temporary_, path_);
        if (!has_no_hard_links(linking)) return linking;
        // A volume without hard links: aside, then in, and back when that fails.
        if (const int fault = files_.rename(path_, previous_)) return fault;
        int fault = files_.sync_folder(folder_);
        if (fault == 0) fault = files_.rename(temporary_, path_);
        if (fault != 0) {
            files_.rename(previous_, path_);
        } else {
            has_previous_ = true;
        }
        return fault;
    }

    failure fail(int fault) {
        files_.remove(temporary_);
        if (has_previous_) files_.remove(previous_);
        return file_failure(path_, "could not be saved", fault);
    }

    std::string path_;
    std::string folder_;
    file_system& files_;
    std::string temporary_;
    std::string previous_;
    bool has_previous_ = false;
};

bool is_whole(const std::string& path) {
    return read_property_list_file(path).ok();
}

// The copies that broken-off writes left of one destination, by their number.
struct left_copies {
    std::map<std::int64_t, std::string> temporary;
    std::map<std::int64_t, std::string> previous;
};

// The destination's name and the number in a temporary or previous copy's name; an empty name for others.
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

// A temporary file was synced before the old file was set aside, so with a previous copy beside it, it is the
// newest whole state.
std::string newest_whole_copy(const std::string& folder, const left_copies& copies) {
    for (auto copy = copies.previous.rbegin(); copy != copies.previous.rend(); ++copy) {
        const auto newer = copies.temporary.find(copy->first);
        if (newer != copies.temporary.end() && is_whole(path_join(folder, newer->second)))
            return newer->second;
        if (is_whole(path_join(folder, copy->second))) return copy->second;
    }
    for (auto copy = copies.temporary.rbegin(); copy != copies.temporary.rend(); ++copy) {
        if (is_whole(path_join(folder, copy->second))) return copy->second;
    }
    return {};
}

void recover_destination(const std::string& folder, const std::string& name, const left_copies& copies,
                         file_system& files, recovery& done) {
    const std::string destination = path_join(folder, name);
    const bool missing = !file_exists(destination);
    if (!missing && is_whole(destination)) return;
    const std::string copy = newest_whole_copy(folder, copies);
    if (copy.empty()) {
        done.messages.push_back("\"" + destination + "\" is " + (missing ? "missing" : "damaged") +
                                " and no whole copy of it was found. Nothing was changed.");
        return;
    }
    std::string kept;
    if (!missing) {
        kept = damaged_name(destination);
        if (const int fault = files.rename(destination, kept)) {
            done.messages.push_back(file_failure(destination, "could not be put back", fault).message);
            return;
        }
    }
    if (const int fault = files.rename(path_join(folder, copy), destination)) {
        done.messages.push_back(file_failure(destination, "could not be put back", fault).message);
        return;
    }
    files.sync_folder(folder);
    done.recovered.push_back(destination);
    done.messages.push_back("\"" + destination + "\" was put back from its copy." +
                            (kept.empty() ? "" : " The torn file was kept as \"" + path_name(kept) + "\"."));
}

}  // namespace

std::int64_t safe_write_number() {
    static std::mutex mutex;
    static std::int64_t last = 0;
    const std::lock_guard lock(mutex);
    for (;;) {
        const double seconds = steady_clock().seconds() + fixed_offset_seconds;
        const auto number = static_cast<std::int64_t>(seconds * nanoseconds);
        if (number != last) return last = number;
    }
}

result<void> safe_write_bytes(const std::string& path, std::string_view bytes, file_system& files) {
    return replacement(path, files).run(bytes);
}

result<void> safe_write(const std::string& path, const property_value& value, file_system& files) {
    return safe_write_bytes(path, write_property_list(value), files);
}

std::string damaged_name(const std::string& path) {
    const std::filesystem::path file(path);
    for (int number = 1;; ++number) {
        auto name = file.parent_path() /
                    (file.stem().string() + " damaged " + std::to_string(number) + file.extension().string());
        if (!file_exists(name.string())) return name.string();
    }
}

recovery recover_folder(const std::string& folder, file_system& files) {
    std::map<std::string, left_copies> left;
    for (const auto& name : names_in_folder(folder)) {
        if (auto copy = copy_name_of(name, temporary_mark); !copy.destination.empty()) {
            left[copy.destination].temporary[copy.number] = name;
        } else if (auto aside = copy_name_of(name, previous_mark); !aside.destination.empty()) {
            left[aside.destination].previous[aside.number] = name;
        }
    }
    recovery done;
    for (const auto& [name, copies] : left) {
        if (name.ends_with(".plist")) recover_destination(folder, name, copies, files, done);
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
