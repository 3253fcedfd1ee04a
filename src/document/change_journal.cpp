// SPDX-License-Identifier: GPL-3.0-or-later
#include "document/change_journal.h"

#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include "document/document_failures.h"
#include "document/journal_lines.h"
#include "util/checksum.h"
#include "util/file_failures.h"
#include "util/wait_watch.h"

namespace vistels {

file_content_mark content_mark_of(std::string_view file_content) {
    return {static_cast<std::int64_t>(file_content.size()), checksum(file_content)};
}

// One open segment, closed when nobody uses it any more.
class change_journal::segment_file {
  public:
    segment_file(file_system& files, std::string path, int descriptor)
        : files_(files), path_(std::move(path)), descriptor_(descriptor) {}
    ~segment_file() { files_.close(descriptor_); }
    segment_file(const segment_file&) = delete;
    segment_file& operator=(const segment_file&) = delete;

    // 0 or the error number.
    static int create(file_system& files, const std::string& path, std::shared_ptr<segment_file>& file) {
        int descriptor = -1;
        const int fault = files.open(path, O_WRONLY | O_CREAT | O_EXCL | O_APPEND, descriptor);
        if (fault != 0) return fault;
        file = std::make_shared<segment_file>(files, path, descriptor);
        file_identity made;
        if (files.opened_identity(descriptor, made) == 0) file->inode_ = made.inode;
        return 0;
    }

    std::uint64_t inode() const { return inode_; }  // 0 = not known

    // A line that could be written only in part is ended, so that the next one stands by itself, and spoiled,
    // since no more than the end of the line may have been missing.
    result<void> write(std::string_view line) {
        const std::string whole = torn_ ? "torn\n" + std::string(line) : std::string(line);
        // Into the machine's memory: what an edit is acknowledged by. Its sync is waited for by nobody.
        const expected_waits append("an edit is put on record");
        const int fault = write_whole(files_, descriptor_, whole);
        torn_ = fault != 0;
        if (fault != 0) return file_could_not_be_written(path_, system_failure(fault));
        return {};
    }

    result<void> sync() {
        if (const int fault = files_.sync_data(descriptor_)) {
            return file_could_not_be_written(path_, system_failure(fault));
        }
        return {};
    }

  private:
    file_system& files_;
    std::string path_;
    int descriptor_;
    std::uint64_t inode_ = 0;
    bool torn_ = false;
};

change_journal::change_journal(std::string folder, const recorded_form& form, int segment,
                               std::uint64_t last_number, file_system& files)
    : folder_(std::move(folder)), form_(form), files_(files), segment_(segment), last_number_(last_number) {}

change_journal::~change_journal() {
    sync_queue_.drain();
}

std::string change_journal::segment_path(int segment) const {
    return path_join(folder_, std::string(form_.segment_name) + std::to_string(segment));
}

// Raises `segment` to the number of the file that was made.
result<std::shared_ptr<change_journal::segment_file>> change_journal::next_segment(int& segment) const {
    for (; segment < highest_segment; ++segment) {
        std::shared_ptr<segment_file> file;
        const int fault = segment_file::create(files_, segment_path(segment), file);
        if (fault == 0) return file;
        if (fault != EEXIST) return file_could_not_be_written(segment_path(segment), system_failure(fault));
    }
    return journal_has_no_segment_left(folder_);
}

std::string change_journal::base_line(journal_base base) const {
    base.writer = writer_;
    base.covers = covers_;
    base.taken = taken_;
    return line_of(write_base(base));
}

result<std::unique_ptr<change_journal>> change_journal::start(const std::string& folder,
                                                              const recorded_form& form, int segment,
                                                              const journal_base& base,
                                                              std::uint64_t last_number, file_system& files) {
    std::unique_ptr<change_journal> journal(new change_journal(folder, form, segment, last_number, files));
    journal->writer_ = base.writer;
    journal->covers_ = base.covers;
    journal->taken_ = base.taken;
    auto file = journal->next_segment(journal->segment_);
    if (!file) return file.error();
    journal->file_ = std::move(file).value();
    journal->head_ = journal->base_line(base);
    if (auto written = journal->file_->write(journal->head_); !written) {
        files.remove(journal->segment_path(journal->segment_));
        return written.error();
    }
    journal->sync_queue_.post([&files, folder] { files.sync_folder(folder); });
    journal->sync_soon();
    return journal;
}

std::uint64_t change_journal::last_number() const {
    const std::lock_guard lock(mutex_);
    return last_number_;
}

result<void> change_journal::append(property_dictionary edit) {
    property_dictionary document;
    const std::lock_guard lock(mutex_);
    document.add("number", static_cast<std::int64_t>(last_number_ + 1));
    document.add("edit", std::move(edit));
    std::string line = line_of(document);
    if (auto written = append_line(line); !written) return written;
    recent_.push_back({last_number_ + 1, std::move(line)});
    // Looked at after the line is written: whoever takes the segment away looks at its size after that.
    if (!is_own({segment_, file_->inode()})) {
        if (auto moved = move_on(); !moved) {
            recent_.pop_back();
            return moved;
        }
    }
    ++last_number_;
    return {};
}

// Where locks do not work another program may have taken this writer for dead and its segment away. What is
// not saved goes into a new one.
result<void> change_journal::move_on() {
    int coming = segment_ + 1;
    auto created = next_segment(coming);
    if (!created) return created.error();
    std::string lines = head_;
    for (const auto& recent : recent_) lines += recent.line;
    if (auto written = created.value()->write(lines + last_time_line_); !written) {
        files_.remove(segment_path(coming));
        return written;
    }
    file_ = std::move(created).value();
    segment_ = coming;
    sync_queue_.post([this] { files_.sync_folder(folder_); });
    sync_soon();
    return {};
}

result<void> change_journal::append_time(double seconds) {
    property_dictionary document;
    document.add("time", seconds);
    const std::lock_guard lock(mutex_);
    last_time_line_ = line_of(document);
    return append_line(last_time_line_);
}

result<void> change_journal::append_line(const std::string& line) {
    auto written = file_->write(line);
    if (written) sync_soon();
    return written;
}

void change_journal::sync_soon() {
    if (sync_is_waiting_) return;
    sync_is_waiting_ = true;
    sync_queue_.post([this] {
        std::shared_ptr<segment_file> file;
        {
            const std::lock_guard lock(mutex_);
            sync_is_waiting_ = false;
            file = file_;
        }
        // What a volume fails to sync here is written anew by the save that follows within seconds.
        (void)file->sync();
    });
}

result<void> change_journal::sync() {
    std::shared_ptr<segment_file> file;
    {
        const std::lock_guard lock(mutex_);
        file = file_;
    }
    if (auto synced = file->sync(); !synced) return synced;
    if (const int fault = files_.sync_folder(folder_))
        return file_could_not_be_synced(folder_, system_failure(fault));
    return {};
}

result<void> change_journal::note_save(const journal_base& coming) {
    std::shared_ptr<segment_file> file;
    {
        const std::lock_guard lock(mutex_);
        const std::string line = base_line(coming);
        if (auto written = file_->write(line); !written) return written;
        head_ += line;
        file = file_;
    }
    return file->sync();
}

result<void> change_journal::save_done(const journal_base& base) {
    int coming = 0;
    std::size_t copied = 0;
    std::string lines = base_line(base);
    {
        const std::lock_guard lock(mutex_);
        std::erase_if(recent_, [&](const recent_line& line) { return line.number <= base.through; });
        for (const auto& recent : recent_) lines += recent.line;
        copied = recent_.size();
        coming = segment_ + 1;
    }
    auto created = next_segment(coming);
    if (!created) return created.error();
    const auto file = std::move(created).value();
    const auto give_up = [&](const failure& reason) {
        files_.remove(segment_path(coming));
        return reason;
    };
    if (auto written = file->write(lines); !written) return give_up(written.error());
    if (auto synced = file->sync(); !synced) return give_up(synced.error());
    // Before an edit is put on record in it: a synced edit needs a synced name.
    if (const int fault = files_.sync_folder(folder_))
        return give_up(file_could_not_be_synced(folder_, system_failure(fault)));
    {
        // Only the few edits made meanwhile are written while appending has to wait.
        const std::lock_guard lock(mutex_);
        std::string rest = last_time_line_;
        for (std::size_t at = copied; at < recent_.size(); ++at) rest += recent_[at].line;
        if (auto written = file->write(rest); !written) return give_up(written.error());
        head_ = base_line(base);
        older_.push_back({std::exchange(segment_, coming), file_->inode()});
        file_ = file;
    }
    if (auto synced = file->sync(); !synced) return synced;
    remove_older_than(coming);
    return {};
}

// A segment that another program took for covered and deleted may have left its number to one of theirs.
bool change_journal::is_own(const own_segment& segment) const {
    file_identity found;
    const int fault = files_.identity(segment_path(segment.number), found);
    return fault != ENOENT && (fault != 0 || segment.inode == 0 || found.inode == segment.inode);
}

// A writer that does not know of this one may write on: its segment is moved out of its reach before it is
// looked at for the last time, and kept when it has grown.
bool change_journal::remove_covered(const journal_part& part) {
    const std::string path = segment_path(part.segment);
    file_identity found;
    const auto is_as_read = [&] {
        return found.size == part.size && (part.inode == 0 || found.inode == part.inode);
    };
    const int looking = files_.identity(path, found);
    if (looking == ENOENT || (looking == 0 && !is_as_read())) return true;  // then the next opening tells
    if (looking != 0) return false;
    const std::string aside = path + " covered";
    if (files_.rename(path, aside) != 0) return false;
    if (files_.identity(aside, found) == 0 && is_as_read()) return files_.remove(aside) == 0;
    for (int number = 1; number < highest_segment; ++number) {
        const std::string kept = path + " conflict" + (number == 1 ? "" : " " + std::to_string(number));
        const int linking = files_.hard_link(aside, kept);
        if (linking == EEXIST) continue;
        if (linking == 0) files_.remove(aside);
        break;
    }
    return true;
}

bool change_journal::remove_older_than(int segment) {
    bool all = true;
    for (const auto& part : covers_) all = remove_covered(part) && all;
    const std::lock_guard lock(mutex_);
    std::erase_if(older_, [&](const own_segment& older) {
        if (older.number >= segment) return false;
        if (!is_own(older)) return true;
        const int fault = files_.remove(segment_path(older.number));
        return fault == 0 || fault == ENOENT;
    });
    return all && older_.empty();
}

void change_journal::remove_if_covered(std::uint64_t saved_through) {
    sync_queue_.drain();
    own_segment newest{};
    {
        const std::lock_guard lock(mutex_);
        if (last_number_ != saved_through) return;
        newest = {segment_, file_->inode()};
    }
    // The one that fits the file goes last: without it the others would look like a stranger's.
    if (remove_older_than(newest.number) && is_own(newest)) files_.remove(segment_path(newest.number));
}

}  // namespace vistels
