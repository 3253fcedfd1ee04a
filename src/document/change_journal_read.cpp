// SPDX-License-Identifier: GPL-3.0-or-later
#include <algorithm>
#include <cerrno>
#include <limits>

#include "document/change_journal.h"
#include "document/document_failures.h"
#include "document/journal_lines.h"
#include "util/file_failures.h"

namespace vistels {

namespace {

struct numbered_edit {
    std::uint64_t number;
    change_pointer edit;
    std::uint64_t sum;    // the line's checksum
    std::size_t segment;  // its index among those read
};

struct segment_content {
    std::string path;
    journal_part part;
    std::vector<journal_base> bases;
    std::vector<numbered_edit> edits;
    std::optional<double> last_time;

    std::string writer() const { return bases.empty() ? std::string() : bases.back().writer; }
};

void take_line(std::string_view line, const recorded_form& form, segment_content& segment) {
    std::uint64_t sum = 0;
    const auto value = read_line(line, sum);
    const auto* document = value.dictionary();
    if (!document) return;
    if (const auto time = document->number("time")) segment.last_time = time;
    if (auto base = read_base(*document, form)) segment.bases.push_back(std::move(*base));
    const auto number = document->integer("number");
    const auto* stored = document->dictionary("edit");
    if (!number || *number <= 0 || !stored) return;
    if (auto edit = form.read_edit(*stored)) {
        segment.edits.push_back({static_cast<std::uint64_t>(*number), std::move(edit), sum, 0});
    }
}

void read_lines(std::string_view rest, const recorded_form& form, segment_content& segment) {
    segment.part.size = static_cast<std::int64_t>(rest.size());
    while (!rest.empty()) {
        const auto end = rest.find('\n');
        if (end == std::string_view::npos) break;  // no newline: torn
        take_line(rest.substr(0, end), form, segment);
        rest.remove_prefix(end + 1);
    }
}

// In ascending order. One that is gone by the time it is to be read was deleted by its writer.
result<std::vector<segment_content>> read_segments(const std::string& folder, const recorded_form& form,
                                                   file_system& files) {
    std::vector<std::string> names;
    const int listing = files.list(folder, names);
    if (listing != 0 && listing != ENOENT)
        return file_cannot_be_looked_through(folder, system_failure(listing));
    sort_names(names);
    std::vector<segment_content> segments;
    for (const auto& name : names) {
        const int number = segment_number(name, form);
        if (number == 0) continue;
        segment_content segment;
        segment.path = path_join(folder, name);
        segment.part.segment = number;
        const auto bytes = read_file(segment.path, files);
        file_identity found;
        if (!bytes && files.identity(segment.path, found) == ENOENT) continue;
        if (!bytes) return bytes.error();
        read_lines(bytes.value(), form, segment);
        segment.part.writer = segment.writer();
        if (files.identity(segment.path, found) == 0) segment.part.inode = found.inode;
        segments.push_back(std::move(segment));
    }
    return segments;
}

bool is_same_segment(const journal_part& a, const journal_part& b) {
    return a.segment == b.segment && a.writer == b.writer;
}

// Beside the base that fits, a segment that does not is one that a finished save had no time to delete, or
// another writer's.
bool is_covered(const segment_content& segment, const journal_base& base) {
    if (segment.edits.empty()) return true;
    for (const auto& part : base.covers) {
        if (is_same_segment(part, segment.part) && part.size == segment.part.size) return true;
    }
    return segment.writer() == base.writer &&
           std::all_of(segment.edits.begin(), segment.edits.end(),
                       [&](const numbered_edit& one) { return one.number <= base.through; });
}

// Where a later writer took up a segment: its edits count through `number`. `has_grown`: somebody wrote on.
struct taken_part {
    std::uint64_t number = std::numeric_limits<std::uint64_t>::max();
    bool has_grown = false;
};

taken_part taken_limit(const std::vector<segment_content>& segments, const std::vector<bool>& fitting,
                       std::size_t at) {
    taken_part limit;
    for (std::size_t later = at + 1; later < segments.size(); ++later) {
        if (!fitting[later] || segments[later].bases.empty()) continue;
        const auto& base = segments[later].bases.back();
        for (const auto& part : base.covers) {
            if (!is_same_segment(part, segments[at].part)) continue;
            limit.number = std::min(limit.number, base.taken);
            limit.has_grown = limit.has_grown || part.size != segments[at].part.size;
        }
    }
    return limit;
}

// The edits after the base in ascending order, each number once. A number that one writer wrote twice stands
// for the later edit, the earlier one had been refused; where two writers gave it to different edits, the
// later segment counts and the other one no longer from there on: its index goes to `strangers`.
std::vector<numbered_edit> one_of_each(std::vector<numbered_edit> all,
                                       const std::vector<segment_content>& segments,
                                       std::vector<bool>& strangers) {
    std::stable_sort(all.begin(), all.end(),
                     [](const auto& a, const auto& b) { return a.number < b.number; });
    std::vector<numbered_edit> kept;
    kept.reserve(all.size());
    for (auto& one : all) {
        if (strangers[one.segment]) continue;
        if (!kept.empty() && kept.back().number == one.number) {
            const auto before = kept.back().segment;
            if (one.sum != kept.back().sum && segments[before].writer() != segments[one.segment].writer()) {
                strangers[before] = true;
            }
            kept.back() = std::move(one);
        } else {
            kept.push_back(std::move(one));
        }
    }
    return kept;
}

// The edits after the base, up to the first that is missing. `left_out` gets the segments of the others.
void take_edits(std::vector<numbered_edit> edits, journal_content& content, std::vector<bool>& left_out,
                const failure& damaged) {
    content.last_number = content.base.through;
    content.edits.reserve(edits.size());
    bool is_told = false;
    for (auto& one : edits) {
        if (one.number == content.last_number + 1) {
            content.last_number = one.number;
            content.edits.push_back(std::move(one.edit));
            continue;
        }
        left_out[one.segment] = true;
        if (is_told) continue;
        is_told = true;
        content.messages.push_back(damaged);
    }
}

void choose_base(std::vector<segment_content>& segments, const file_content_mark& file,
                 std::vector<bool>& fitting, journal_content& content) {
    content.base.content = file;
    for (std::size_t at = 0; at < segments.size(); ++at) {
        for (auto& base : segments[at].bases) {
            if (base.content != file) continue;
            fitting[at] = true;
            if (!content.fits || base.through >= content.base.through) content.base = base;
            content.fits = true;
        }
    }
}

}  // namespace

result<journal_content> read_journal(const std::string& folder, const recorded_form& form,
                                     const file_content_mark& file, file_system& files) {
    auto read = read_segments(folder, form, files);
    if (!read) return read.error();
    auto& segments = read.value();
    journal_content content;
    std::vector<bool> fitting(segments.size());
    choose_base(segments, file, fitting, content);
    std::vector<bool> strangers(segments.size());
    std::vector<numbered_edit> edits;
    std::size_t count = 0;
    for (const auto& segment : segments) count += segment.edits.size();
    edits.reserve(count);
    for (std::size_t at = 0; at < segments.size(); ++at) {
        auto& segment = segments[at];
        content.last_segment = segment.part.segment;
        content.parts.push_back(segment.part);
        if (!fitting[at]) {
            strangers[at] = content.fits ? !is_covered(segment, content.base) : !segment.edits.empty();
            continue;
        }
        if (segment.last_time) content.last_time = segment.last_time;
        const auto limit = taken_limit(segments, fitting, at);
        for (auto& one : segment.edits) {
            if (one.number <= content.base.through) continue;
            if (one.number > limit.number) {
                strangers[at] = strangers[at] || limit.has_grown;
                continue;
            }
            one.segment = at;
            edits.push_back(std::move(one));
        }
    }
    std::vector<bool> beside(segments.size());
    edits = one_of_each(std::move(edits), segments, beside);
    for (std::size_t at = 0; at < segments.size(); ++at) strangers[at] = strangers[at] || beside[at];
    if (std::find(strangers.begin(), strangers.end(), true) != strangers.end()) {
        content.messages.push_back(form.changes_do_not_fit(folder));
    }
    take_edits(std::move(edits), content, strangers, form.change_is_damaged(folder));
    for (std::size_t at = 0; at < segments.size(); ++at) {
        if (strangers[at]) content.left_out.push_back(segments[at].path);
    }
    return content;
}

}  // namespace vistels
