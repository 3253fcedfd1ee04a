// SPDX-License-Identifier: GPL-3.0-or-later
#include "util/safe_write.h"

#include <fcntl.h>

#include <cerrno>
#include <filesystem>
#include <mutex>
#include <utility>

#include "util/checksum.h"
#include "util/clock.h"
#include "util/file_failures.h"
#include "util/property_list.h"
#include "util/text_forms.h"

namespace vistels {

namespace {

constexpr double fixed_offset_seconds = 1'000'000;
constexpr double nanoseconds = 1e9;

bool has_no_hard_links(int fault) {
    return fault == EPERM || fault == EOPNOTSUPP || fault == ENOSYS || fault == EMLINK || fault == ENOTSUP;
}

bool cannot_exchange(int fault) {
    return fault == EINVAL || fault == ENOSYS || fault == ENOTSUP || fault == EOPNOTSUPP;
}

std::string numbered_name(const std::string& path, std::string_view what, int number) {
    const std::filesystem::path file(path);
    return (file.parent_path() / (file.stem().string() + " " + std::string(what) + " " +
                                  std::to_string(number) + file.extension().string()))
        .string();
}

// Whether the file there is another one than is known: somebody put it in place, or wrote into it. One that
// is gone is no stranger's. 0 or the error number: then it cannot be told.
int look_for_stranger(const std::string& path, const known_file& known, bool in_doubt, file_system& files,
                      bool& is_another) {
    file_identity found;
    is_another = false;
    const int looking = files.identity(path, found);
    if (looking != 0) return looking == ENOENT ? 0 : looking;
    if (found == known.identity && !in_doubt) return 0;
    is_another = found.size != known.identity.size || known.identity.inode == 0;
    if (is_another) return 0;
    int descriptor = -1;
    if (const int fault = files.open(path, O_RDONLY, descriptor)) return fault == ENOENT ? 0 : fault;
    std::string bytes;
    const int reading = read_whole(files, descriptor, bytes);
    files.close(descriptor);
    is_another = checksum(bytes) != known.hash;
    return reading;
}

// Gives `from` the further name "X conflict N", on a volume without hard links, with `may_move`, instead of
// its own. A file that has such a name keeps it.
int keep_conflict(const std::string& path, const std::string& from, bool may_move, file_system& files,
                  std::string& kept) {
    file_identity wanted;
    if (const int fault = files.identity(from, wanted)) return fault;
    for (int number = 1;; ++number) {
        const std::string name = numbered_name(path, "conflict", number);
        file_identity found;
        const int looking = files.identity(name, found);
        if (looking != 0 && looking != ENOENT) return looking;
        if (looking == 0 && found != wanted) continue;
        int fault = looking == 0 ? 0 : files.hard_link(from, name);
        if (fault == EEXIST) continue;
        if (has_no_hard_links(fault)) {
            if (!may_move) return 0;
            fault = files.rename(from, name);
        }
        if (fault == 0) kept = name;
        return fault;
    }
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

    using content = std::function<void(const block_writer& put)>;

    result<void> run(const content& put_all) {
        if (auto checked = check_replaceable(path_, files_); !checked) return checked.error();
        if (const int fault = write_temporary(put_all)) return fail(fault);
        if (const int fault = put_in_place(false)) return fail(fault);
        return finish();
    }

    result<std::string> run(std::string_view bytes, known_file& known, bool in_doubt) {
        if (auto checked = check_replaceable(path_, files_); !checked) return checked.error();
        if (const int fault = write_temporary([bytes](const block_writer& put) { put(bytes); })) {
            return fail(fault);
        }
        return put_in_place(known, in_doubt, checksum(bytes));
    }

    using blocks = std::function<std::string_view(const block_writer& put)>;
    using announcer = std::function<result<void>(const coming_content&)>;

    result<std::string> run(const blocks& put_all, const announcer& known_ahead, known_file& known,
                            bool in_doubt) {
        if (auto checked = check_replaceable(path_, files_); !checked) return checked.error();
        coming_content coming;
        result<void> announced;
        const int fault = write_temporary([&](const block_writer& put) {
            checksum_of_parts sum;
            const auto count = [&](std::string_view block) {
                sum.add(block);
                coming.size += static_cast<std::int64_t>(block.size());
            };
            const std::string_view last = put_all([&](std::string_view block) {
                count(block);
                put(block);
            });
            count(last);
            coming.hash = sum.value();
            if (fault_ == 0) announced = known_ahead(coming);
            if (announced) put(last);
        });
        if (fault != 0) return fail(fault);
        if (!announced) {
            files_.remove(temporary_);
            return announced.error();
        }
        return put_in_place(known, in_doubt, coming.hash);
    }

  private:
    result<std::string> put_in_place(known_file& known, bool in_doubt, std::uint64_t hash) {
        std::string kept;
        bool is_another = false;
        int fault = look_for_stranger(path_, known, in_doubt, files_, is_another);
        // Kept before anything is replaced, so that the death of the process leaves it a plain name.
        if (fault == 0 && is_another) fault = keep_conflict(path_, path_, false, files_, kept);
        if (fault == 0 || fault == ENOENT) fault = put_in_place(true);
        if (fault != 0) return with_conflict(fail(fault), kept);
        // What stood there at the last moment: it may be newer than what was looked at before.
        if (!replaced_.empty()) {
            fault = look_for_stranger(replaced_, known, in_doubt, files_, is_another);
            if (fault == 0 && is_another) fault = keep_conflict(path_, replaced_, true, files_, kept);
            if (fault != 0 && is_another) kept = replaced_;
        }
        known = {written_, hash};
        // What cannot be told apart now is not deleted.
        if (fault != 0) return with_conflict(file_may_not_be_saved(path_, system_failure(fault)), kept);
        if (auto finished = finish(); !finished) return with_conflict(finished.error(), kept);
        return kept;
    }

    int write_temporary(const content& put_all) {
        int descriptor = -1;
        if (const int fault = files_.open(temporary_, O_WRONLY | O_CREAT | O_EXCL, descriptor)) return fault;
        put_all([&](std::string_view block) {
            if (fault_ == 0) fault_ = write_whole(files_, descriptor, block);
        });
        int fault = fault_;
        if (fault == 0) fault = files_.sync(descriptor);
        if (fault == 0) fault = files_.opened_identity(descriptor, written_);
        const int closing = files_.close(descriptor);
        return fault != 0 ? fault : closing;
    }

    int put_in_place(bool keeps_what_was_there) {
        int fault = 0;
        for (int attempt = 0; attempt < 10; ++attempt) {
            const int linking = files_.hard_link(path_, previous_);
            if (has_no_hard_links(linking)) return rename_twice();
            if (linking != 0 && linking != ENOENT) return linking;
            has_previous_ = linking == 0;
            if (!keeps_what_was_there) return files_.rename(temporary_, path_);
            fault = has_previous_ ? exchange() : appear();
            // The file came or went meanwhile.
            if (fault != (has_previous_ ? ENOENT : EEXIST)) return fault;
            if (has_previous_) files_.remove(std::exchange(previous_, previous_ + "0"));
        }
        return fault;
    }

    int exchange() {
        const int fault = files_.exchange(temporary_, path_);
        if (fault == 0) {
            replaced_ = temporary_;
            return 0;
        }
        if (!cannot_exchange(fault)) return fault;
        replaced_ = previous_;
        return files_.rename(temporary_, path_);
    }

    int appear() {
        const int fault = files_.hard_link(temporary_, path_);
        if (has_no_hard_links(fault)) return files_.rename(temporary_, path_);
        if (fault == 0) files_.remove(temporary_);
        return fault;
    }

    // A volume without hard links: aside, then in, and back when that fails.
    int rename_twice() {
        if (const int fault = files_.rename(path_, previous_)) {
            return fault == ENOENT ? files_.rename(temporary_, path_) : fault;
        }
        int fault = files_.sync_folder(folder_);
        if (fault == 0) fault = files_.rename(temporary_, path_);
        if (fault != 0) {
            files_.rename(previous_, path_);
        } else {
            has_previous_ = true;
            replaced_ = previous_;
        }
        return fault;
    }

    // What was replaced goes away when the new content is certain to stay.
    result<void> finish() {
        if (const int fault = files_.sync_folder(folder_))
            return file_may_not_be_saved(path_, system_failure(fault));
        if (replaced_ == temporary_) files_.remove(temporary_);
        if (has_previous_) files_.remove(previous_);
        return {};
    }

    static failure with_conflict(const failure& reason, const std::string& kept) {
        return kept.empty() ? reason : another_version_was_kept(reason, path_name(kept));
    }

    failure fail(int fault) {
        files_.remove(temporary_);
        if (has_previous_) files_.remove(previous_);
        return file_could_not_be_saved(path_, system_failure(fault));
    }

    std::string path_;
    std::string folder_;
    file_system& files_;
    std::string temporary_;
    std::string previous_;
    std::string replaced_;  // the name that what stood there has now; empty: there was nothing
    bool has_previous_ = false;
    file_identity written_;
    int fault_ = 0;  // of writing the temporary file
};

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

result<void> check_replaceable(const std::string& path, file_system& files) {
    auto found = file_kind::plain_file;
    const int looking = files.kind(path, found);
    if (looking != 0 && looking != ENOENT) return file_could_not_be_saved(path, system_failure(looking));
    if (found == file_kind::plain_file) return {};
    const bool is_folder = found == file_kind::folder;
    return file_was_left_alone(path, is_folder ? folder_has_that_name() : what_is_no_file_has_that_name());
}

result<void> safe_write_bytes(const std::string& path, std::string_view bytes, file_system& files) {
    return safe_write_blocks(
        path, [bytes](const block_writer& put) { put(bytes); }, files);
}

result<void> safe_write_blocks(const std::string& path,
                               const std::function<void(const block_writer& put)>& put_all,
                               file_system& files) {
    return replacement(path, files).run(put_all);
}

result<void> safe_write(const std::string& path, const property_value& value, file_system& files) {
    return safe_write_bytes(path, write_property_list(value), files);
}

result<std::optional<std::string>> read_known(const std::string& path, known_file& known,
                                              file_system& files) {
    known = {};
    int descriptor = -1;
    const int opening = files.open(path, O_RDONLY, descriptor);
    if (opening == ENOENT) return std::optional<std::string>();
    if (opening != 0) return file_cannot_be_read(path, system_failure(opening));
    std::string bytes;
    int fault = read_whole(files, descriptor, bytes);
    // After reading: what is written into it meanwhile must not count as known.
    if (fault == 0) fault = files.opened_identity(descriptor, known.identity);
    files.close(descriptor);
    if (fault != 0) return file_cannot_be_read(path, system_failure(fault));
    known.hash = checksum(bytes);
    return std::optional<std::string>(std::move(bytes));
}

bool is_strangers(const std::string& path, const known_file& known, bool in_doubt, file_system& files) {
    bool found = false;
    return look_for_stranger(path, known, in_doubt, files, found) != 0 || found;
}

result<std::string> safe_write_known_blocks(
    const std::string& path, const std::function<std::string_view(const block_writer& put)>& put_all,
    const std::function<result<void>(const coming_content&)>& known_ahead, known_file& known, bool in_doubt,
    file_system& files) {
    return replacement(path, files).run(put_all, known_ahead, known, in_doubt);
}

result<std::string> safe_write_known(const std::string& path, std::string_view bytes, known_file& known,
                                     bool in_doubt, file_system& files) {
    return replacement(path, files).run(bytes, known, in_doubt);
}

std::string damaged_name(const std::string& path) {
    return kept_name(path, "damaged");
}

std::string kept_name(const std::string& path, std::string_view what) {
    for (int number = 1;; ++number) {
        auto name = numbered_name(path, what, number);
        if (!file_exists(name)) return name;
    }
}

}  // namespace vistels
