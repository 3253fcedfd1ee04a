// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "util/result.h"

namespace vistels {

// What tells one state of a file from another.
struct file_identity {
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    std::int64_t size = 0;
    std::int64_t modified_nanoseconds = 0;  // since 1970
    bool operator==(const file_identity&) const = default;
};

// What stands under a name; a symbolic link is something else, wherever it leads.
enum class file_kind { plain_file, folder, something_else };

// The calls by which files are read, written and locked, one system call each, so that tests can make any of
// them fail or end the program before it. Every call returns 0 or the error number (errno). Any thread.
class file_system {
  public:
    virtual ~file_system() = default;

    // `flags` as for open(2); close-on-exec is added.
    virtual int open(const std::string& path, int flags, int& descriptor);
    // Writes a part of `bytes`, at least one; `written` tells how many.
    virtual int write(int descriptor, std::string_view bytes, std::size_t& written);
    // Reads at most `room` bytes; `got` is 0 at the end of the file.
    virtual int read(int descriptor, char* into, std::size_t room, std::size_t& got);
    // Takes away the file's content.
    virtual int empty(int descriptor);
    // Takes the file for this descriptor alone, until it is closed; EWOULDBLOCK when another one has it.
    virtual int lock(int descriptor);
    // Sets the file's time to now.
    virtual int touch(int descriptor);
    virtual int sync(int descriptor);
    virtual int sync_data(int descriptor);
    virtual int close(int descriptor);
    virtual int hard_link(const std::string& from, const std::string& to);
    virtual int rename(const std::string& from, const std::string& to);
    // Each of two files gets the other's name, in one step. EINVAL or ENOSYS where that is not known.
    virtual int exchange(const std::string& a, const std::string& b);
    virtual int remove(const std::string& path);
    virtual int sync_folder(const std::string& folder);
    virtual int make_folder(const std::string& path);
    virtual int identity(const std::string& path, file_identity& found);
    virtual int opened_identity(int descriptor, file_identity& found);
    virtual int kind(const std::string& path, file_kind& found);
    // The names in a folder without "." and "..", in no order.
    virtual int list(const std::string& folder, std::vector<std::string>& names);
};

// The machine's own file system.
file_system& machine_files();

// Writes all of `bytes`, however many calls that takes; 0 or the error number.
int write_whole(file_system& files, int descriptor, std::string_view bytes);

// The file's bytes.
result<std::string> read_file(const std::string& path, file_system& files = machine_files());

// Reads to the end of the file; 0 or the error number.
int read_whole(file_system& files, int descriptor, std::string& bytes);

// Makes a folder and those above it; one that is there is no error, something else of that name is.
result<void> make_folders(const std::string& path, file_system& files = machine_files());

// The names in a folder in natural order ("part 2" before "part 10"), without "." and ".."; empty when there
// is no such folder.
std::vector<std::string> names_in_folder(const std::string& folder);

void sort_names(std::vector<std::string>& names);

// True when `a` comes before `b` with runs of digits compared by value.
bool natural_before(std::string_view a, std::string_view b);

bool file_exists(const std::string& path);
bool is_folder(const std::string& path);

// "folder/name", with one slash between.
std::string path_join(std::string_view folder, std::string_view name);
// What stands after the last slash, and what stands before it ("." when there is none).
std::string path_name(std::string_view path);
std::string path_folder(std::string_view path);

}  // namespace vistels
