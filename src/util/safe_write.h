// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "util/file_system.h"
#include "util/property_value.h"
#include "util/result.h"

namespace vistels {

// A number no other call in this process gets: the monotonic clock's nanoseconds, moved by a fixed offset.
// Any thread.
std::int64_t safe_write_number();

inline constexpr std::string_view temporary_mark = " temp file ";
inline constexpr std::string_view previous_mark = " <previous> ";

// Replaces the file at `path` by `bytes` so that at every instant, after a kill or a power cut too, the old
// or the new content stands there whole. On failure the old file is as it was and the message names the file.
// What stands there and is no plain file (a folder, a link) is an error, and left alone; so it is by all
// below. Any thread; two calls for one path must not run at once.
result<void> safe_write_bytes(const std::string& path, std::string_view bytes,
                              file_system& files = machine_files());

// The same for content that comes in blocks, which are written as they come: `put_all` hands every one of
// them to what it is given.
using block_writer = std::function<void(std::string_view block)>;
result<void> safe_write_blocks(const std::string& path,
                               const std::function<void(const block_writer& put)>& put_all,
                               file_system& files = machine_files());

// The same for a property list.
result<void> safe_write(const std::string& path, const property_value& value,
                        file_system& files = machine_files());

// Whether a file at `path` could be replaced by what it is: nothing, or a plain file.
result<void> check_replaceable(const std::string& path, file_system& files = machine_files());

// A file as this program last read or wrote it.
struct known_file {
    file_identity identity;  // of inode 0 when there was none
    std::uint64_t hash = 0;  // checksum of its bytes
};

// The file's bytes, and in `known` how it is now; no bytes when there is none.
result<std::optional<std::string>> read_known(const std::string& path, known_file& known,
                                              file_system& files = machine_files());

// True when the file there is another one than is known: another program put its own in place, or wrote into
// it; also when that cannot be told. With `in_doubt` its content is compared even when nothing else tells
// them apart. A file that is gone is no stranger's.
bool is_strangers(const std::string& path, const known_file& known, bool in_doubt,
                  file_system& files = machine_files());

// As safe_write_bytes, for a file that others should not write but may: what stands there and is not what is
// known is kept as "X conflict N" before the new content takes its place, and that name is returned (empty:
// there was no such thing; after a failure the message tells it). With `in_doubt` the content is compared
// even when identity, size and time are the known ones. `known` becomes the new content, also when only the
// last step failed. What others put there between two of its steps is kept, too, but on volumes that cannot
// exchange two files.
result<std::string> safe_write_known(const std::string& path, std::string_view bytes, known_file& known,
                                     bool in_doubt = false, file_system& files = machine_files());

// The same for content that comes in blocks: `put_all` hands all of them but the last to what it is given and
// returns the last one, whose bytes stay until the call is over. Before that is written `known_ahead` is told
// the size and hash of the whole content; what it returns as a failure ends the write, with nothing changed.
// Until then what lies beside the file is no whole copy of anything: recovery takes none that was not told.
struct coming_content {
    std::int64_t size = 0;
    std::uint64_t hash = 0;  // checksum of the bytes
};
result<std::string> safe_write_known_blocks(
    const std::string& path, const std::function<std::string_view(const block_writer& put)>& put_all,
    const std::function<result<void>(const coming_content&)>& known_ahead, known_file& known,
    bool in_doubt = false, file_system& files = machine_files());

// The first free name "X damaged N" for a file "X" that is kept aside, its ending kept; and the same with
// another word.
std::string damaged_name(const std::string& path);
std::string kept_name(const std::string& path, std::string_view what);

}  // namespace vistels
