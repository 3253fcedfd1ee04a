// SPDX-License-Identifier: GPL-3.0-or-later
#include <fcntl.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "allocation_count.h"
#include "document/change_journal.h"
#include "timeline/files/timeline_form.h"
#include "util/checksum.h"

namespace {

using namespace vistels;

// A folder of segments that lie in memory, named "chron data journal 1" and on.
struct segments_in_memory : file_system {
    std::vector<std::string> segments;
    std::size_t read_through = 0;

    std::size_t index(const std::string& path) const {
        return std::stoul(path.substr(path.rfind(' ') + 1)) - 1;
    }
    int list(const std::string&, std::vector<std::string>& names) override {
        names.clear();
        for (std::size_t n = 0; n < segments.size(); ++n)
            names.push_back("chron data journal " + std::to_string(n + 1));
        return 0;
    }
    int open(const std::string& path, int, int& descriptor) override {
        descriptor = static_cast<int>(index(path));
        read_through = 0;
        return 0;
    }
    int read(int descriptor, char* into, std::size_t room, std::size_t& got) override {
        const auto rest =
            std::string_view(segments[static_cast<std::size_t>(descriptor)]).substr(read_through);
        got = rest.copy(into, room);
        read_through += got;
        return 0;
    }
    int opened_identity(int descriptor, file_identity& found) override {
        found = {};
        found.size = static_cast<std::int64_t>(segments[static_cast<std::size_t>(descriptor)].size());
        return 0;
    }
    int close(int) override { return 0; }
};

// Segments stand behind zero bytes. A line that begins with "= " gets the checksum that it needs: few changed
// lines would be looked at otherwise.
void take_segments(std::string_view input, std::vector<std::string>& segments) {
    constexpr std::size_t most = 8;
    segments.emplace_back();
    while (!input.empty()) {
        const auto end = input.find_first_of(std::string_view("\n\0", 2));
        const auto line = input.substr(0, end);
        if (line.starts_with("= ")) {
            segments.back() += checksum_text(checksum(line.substr(2))) + " ";
            segments.back() += line.substr(2);
        } else {
            segments.back() += line;
        }
        if (end == std::string_view::npos) return;
        if (input[end] == '\n') {
            segments.back() += '\n';
        } else if (segments.size() < most) {
            segments.emplace_back();
        }
        input.remove_prefix(end + 1);
    }
}

void check(const journal_content& content, std::size_t segments) {
    if (content.last_number != content.base.through + content.edits.size()) std::abort();
    if (content.parts.size() != segments || content.left_out.size() > segments) std::abort();
    if (content.last_segment != static_cast<int>(segments)) std::abort();
    if (!content.fits && !content.edits.empty()) std::abort();
    if (!content.left_out.empty() && content.messages.empty()) std::abort();
    sxy_DATA_root timeline;
    change_set touched;
    (void)apply_edit(timeline, edit_in(content.base.growing), touched);
    for (const auto& edit : content.edits) (void)apply_edit(timeline, edit_in(edit), touched);
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    fuzz::count_allocations();
    return 0;
}

// Segments of any content: what is taken from them is numbered without a gap from a base that fits, and what
// is left out is told.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    segments_in_memory files;
    take_segments(std::string_view(reinterpret_cast<const char*>(data), size), files.segments);
    std::size_t bytes = 0;
    for (const auto& segment : files.segments) bytes += segment.size();
    const file_content_mark file{1, 1};
    const bool is_modest = fuzz::is_lean(
        bytes, "reading the journal",
        [&] {
            const auto content = read_journal("folder", timeline_form, file, files);
            if (!content) std::abort();
            check(content.value(), files.segments.size());
        },
        fuzz::most_times_of_journal);
    if (!is_modest) std::abort();
    return 0;
}
