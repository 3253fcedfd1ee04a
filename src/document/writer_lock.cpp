// SPDX-License-Identifier: GPL-3.0-or-later
#include "document/writer_lock.h"

#include <fcntl.h>
#include <pwd.h>
#include <signal.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <utility>

#include "document/document_failures.h"
#include "util/clock.h"
#include "util/file_failures.h"
#include "util/property_list.h"

namespace vistels {

namespace {

std::string first_line(const char* path) {
    const auto text = read_file(path);
    return text ? text.value().substr(0, text.value().find('\n')) : std::string();
}

std::string host_name() {
    std::array<char, 256> name{};
    return ::gethostname(name.data(), name.size() - 1) == 0 ? name.data() : "";
}

std::string user_name() {
    const passwd* user = ::getpwuid(::getuid());
    return user ? user->pw_name : std::to_string(::getuid());
}

std::string machine() {
    return first_line("/etc/machine-id");
}

property_dictionary this_process() {
    property_dictionary holder;
    holder.add("host", host_name());
    holder.add("machine", machine());
    holder.add("boot", first_line("/proc/sys/kernel/random/boot_id"));
    holder.add("process", std::int64_t{::getpid()});
    holder.add("user", user_name());
    return holder;
}

failure held_by(const std::string& folder, const recorded_form& form, const property_dictionary& holder) {
    const auto process = holder.integer("process").value_or(0);
    return form.is_open_elsewhere(
        folder, holder.empty()
                    ? another_program()
                    : process_of_a_user(process, holder.text_or_empty("user"), holder.text_or_empty("host")));
}

// Nothing when there is no such file or nobody's name is in it.
result<property_dictionary> read_holder(const std::string& path, file_system& files) {
    file_identity found;
    if (files.identity(path, found) == ENOENT) return property_dictionary();
    const auto bytes = read_file(path, files);
    if (!bytes) return bytes.error();
    const auto stored = read_property_list(bytes.value(), path);
    const auto* holder = stored ? stored.value().dictionary() : nullptr;
    return holder ? *holder : property_dictionary();
}

property_dictionary holder_or_empty(const std::string& path, file_system& files) {
    auto holder = read_holder(path, files);
    return holder ? std::move(holder).value() : property_dictionary();
}

// `held`, with how long nothing was heard of the holder, when that is long.
failure with_silence(const failure& held, const recorded_form& form, const std::string& path,
                     file_system& files) {
    file_identity found;
    if (files.identity(path, found) != 0) return held;
    constexpr double nanoseconds = 1e9;
    constexpr double minute = 60;
    const double seconds =
        seconds_since_1970() - static_cast<double>(found.modified_nanoseconds) / nanoseconds;
    return seconds < minute ? held : form.writer_is_silent(held, static_cast<long>(seconds / minute));
}

bool is_same_file(const file_identity& a, const file_identity& b) {
    return a.inode == b.inode && a.device == b.device;
}

// The file may have been removed by its last holder between opening and locking it.
bool is_still_there(int descriptor, const std::string& path, file_system& files) {
    file_identity opened;
    file_identity named;
    return files.opened_identity(descriptor, opened) == 0 && files.identity(path, named) == 0 &&
           is_same_file(opened, named);
}

// The kernel of a volume's machine may not know locks; then the names in the file have to do.
bool knows_no_locks(int fault) {
    return fault == ENOLCK || fault == ENOSYS || fault == ENOTSUP || fault == EOPNOTSUPP || fault == EINVAL;
}

int open_and_lock(const std::string& path, file_system& files, int& descriptor, bool& is_kept_by_kernel) {
    for (int attempt = 0; attempt < 100; ++attempt) {
        if (const int fault = files.open(path, O_RDWR | O_CREAT, descriptor)) return fault;
        const int locking = files.lock(descriptor);
        is_kept_by_kernel = locking == 0;
        if (locking == 0 || knows_no_locks(locking)) {
            if (is_still_there(descriptor, path, files)) return 0;
        }
        files.close(descriptor);
        if (locking != 0 && !knows_no_locks(locking)) return locking;
    }
    return EIO;
}

// True when the process that the file names may live, as far as this machine can tell.
bool may_live(const property_dictionary& holder, bool is_kept_by_kernel) {
    if (holder.empty()) return false;
    const auto mine = this_process();
    if (holder.text_or_empty("machine") != mine.text_or_empty("machine")) return true;
    if (is_kept_by_kernel || holder.text_or_empty("boot") != mine.text_or_empty("boot")) return false;
    const auto process = static_cast<pid_t>(holder.integer("process").value_or(0));
    return process > 0 && (::kill(process, 0) == 0 || errno != ESRCH);
}

}  // namespace

// The open file, closed when nobody looks at it any more.
class writer_lock::held_file {
  public:
    held_file(int descriptor, file_system& files) : descriptor_(descriptor), files_(files) {}
    ~held_file() { files_.close(descriptor_); }
    held_file(const held_file&) = delete;
    held_file& operator=(const held_file&) = delete;

    int descriptor() const { return descriptor_; }

  private:
    const int descriptor_;
    file_system& files_;
};

writer_lock::writer_lock(std::string folder, const recorded_form& form, int descriptor, file_system& files)
    : folder_(std::move(folder)),
      form_(form),
      path_(path_join(folder_, form.lock_name)),
      files_(files),
      file_(std::make_shared<const held_file>(descriptor, files)) {}

std::shared_ptr<const writer_lock::held_file> writer_lock::file() const {
    const std::lock_guard lock(mutex_);
    return file_;
}

result<std::unique_ptr<writer_lock>> writer_lock::take(const std::string& folder, const recorded_form& form,
                                                       file_system& files, bool* held_elsewhere) {
    bool ignored = false;
    bool& is_held = held_elsewhere ? *held_elsewhere : ignored;
    is_held = false;
    const std::string path = path_join(folder, form.lock_name);
    // Read before it is opened: on a volume without locks an own, empty file would say nothing.
    const auto before = read_holder(path, files);
    if (!before) return before.error();
    int descriptor = -1;
    bool is_kept_by_kernel = false;
    const int fault = open_and_lock(path, files, descriptor, is_kept_by_kernel);
    is_held = fault == EWOULDBLOCK;
    if (is_held) return held_by(folder, form, holder_or_empty(path, files));
    if (fault != 0) return file_could_not_be_written(path, system_failure(fault));
    if (may_live(before.value(), is_kept_by_kernel)) {
        is_held = true;
        files.close(descriptor);
        return with_silence(held_by(folder, form, before.value()), form, path, files);
    }
    std::unique_ptr<writer_lock> lock(new writer_lock(folder, form, descriptor, files));
    if (auto named = lock->name_this_process(*lock->file_); !named) return named.error();
    return lock;
}

result<std::unique_ptr<writer_lock>> writer_lock::take_over(const std::string& folder,
                                                            const recorded_form& form, file_system& files,
                                                            bool* held_elsewhere) {
    const std::string path = path_join(folder, form.lock_name);
    // A new file: the former holder's lock is on the old one.
    const int fault = files.remove(path);
    if (fault != 0 && fault != ENOENT) return lock_could_not_be_taken_over(path, system_failure(fault));
    return take(folder, form, files, held_elsewhere);
}

result<void> writer_lock::name_this_process(const held_file& file) {
    const std::string bytes = write_property_list(this_process());
    int fault = files_.empty(file.descriptor());
    if (fault == 0) fault = write_whole(files_, file.descriptor(), bytes);
    if (fault != 0) return file_could_not_be_written(path_, system_failure(fault));
    return {};
}

writer_lock::~writer_lock() {
    if (is_still_there(file_->descriptor(), path_, files_)) files_.remove(path_);
}

bool writer_lock::is_held() const {
    const auto held = file();
    file_identity opened;
    file_identity named;
    if (files_.opened_identity(held->descriptor(), opened) != 0 || files_.identity(path_, named) != 0)
        return true;
    return is_same_file(opened, named) || was_put_back(*held);
}

// Another thread put the file back while this one looked.
bool writer_lock::was_put_back(const held_file& looked_at) const {
    const std::lock_guard lock(mutex_);
    return is_putting_back_ || file_.get() != &looked_at;
}

// Without a file it was not.
void writer_lock::put_back(std::shared_ptr<const held_file> file) {
    const std::lock_guard lock(mutex_);
    is_putting_back_ = false;
    if (file) file_.swap(file);  // the old one is closed by the caller's end
}

bool writer_lock::renew() {
    file_identity found;
    if (files_.identity(path_, found) == ENOENT) {
        {
            const std::lock_guard lock(mutex_);
            is_putting_back_ = true;
        }
        int descriptor = -1;
        bool is_kept_by_kernel = false;
        const int fault = open_and_lock(path_, files_, descriptor, is_kept_by_kernel);
        put_back(fault == 0 ? std::make_shared<const held_file>(descriptor, files_) : nullptr);
        if (fault != 0) return is_held();
        (void)name_this_process(*file());
        return true;
    }
    if (!is_held()) return false;
    files_.touch(file()->descriptor());
    return true;
}

failure writer_lock::lost() const {
    return form_.was_taken_over(held_by(folder_, form_, holder_or_empty(path_, files_)));
}

}  // namespace vistels
