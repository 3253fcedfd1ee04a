// SPDX-License-Identifier: GPL-3.0-or-later
#include "timeline/timeline_journal.h"

#include <fcntl.h>

#include <algorithm>

#include "util/checksum.h"
#include "util/json.h"

namespace vistels {

namespace {

// A segment is lines of "checksum blank document newline", the document being one of
//   {"base": {...}}             first line, and again before a save: what the journal continues
//   {"number": n, "edit": {...}}
//   {"time": seconds}
// A line whose checksum is wrong was torn and is passed over; the numbers tell whether one is missing.

constexpr std::string_view segment_name = "chron data journal ";

std::string line_of(const property_dictionary& document) {
    const std::string text = write_json(document, json_layout::one_line);
    return checksum_text(checksum(text)) + " " + text + "\n";
}

property_dictionary write_base(const journal_base& base) {
    property_dictionary values;
    values.add("size", base.content.size);
    values.add("hash", checksum_text(base.content.hash));
    values.add("through", static_cast<std::int64_t>(base.through));
    values.add("growing", write_edit(base.growing));
    property_dictionary document;
    document.add("base", std::move(values));
    return document;
}

std::uint64_t hash_from_text(const std::string& text) {
    std::uint64_t hash = 0;
    for (const char digit : text) {
        constexpr std::string_view digits = "0123456789abcdef";
        const auto value = digits.find(digit);
        hash = hash << 4U | (value == std::string_view::npos ? 0U : value);
    }
    return hash;
}

std::optional<journal_base> read_base(const property_dictionary& document) {
    const auto* values = document.dictionary("base");
    const auto size = values ? values->integer("size") : std::nullopt;
    const auto through = values ? values->integer("through") : std::nullopt;
    if (!size || !through || *through < 0) return std::nullopt;
    journal_base base;
    base.content = {*size, hash_from_text(values->text_or_empty("hash"))};
    base.through = static_cast<std::uint64_t>(*through);
    if (const auto* growing = values->dictionary("growing")) {
        auto edit = read_edit(*growing);
        if (!edit) return std::nullopt;
        base.growing = std::move(edit).value();
    }
    return base;
}

int segment_number(const std::string& name) {
    if (!name.starts_with(segment_name)) return 0;
    int number = 0;
    for (const char digit : std::string_view(name).substr(segment_name.size())) {
        if (digit < '0' || digit > '9' || number > 100'000'000) return 0;
        number = number * 10 + (digit - '0');
    }
    return number;
}

struct numbered_edit {
    std::uint64_t number;
    timeline_edit edit;
    std::string segment;  // its file
};

struct segment_content {
    std::vector<journal_base> bases;
    std::vector<numbered_edit> edits;
    std::optional<double> last_time;
};

void read_line(std::string_view line, const std::string& path, segment_content& segment) {
    constexpr std::size_t sum_length = 16;
    if (line.size() <= sum_length + 1 || line[sum_length] != ' ') return;
    const std::string_view text = line.substr(sum_length + 1);
    if (checksum_text(checksum(text)) != line.substr(0, sum_length)) return;
    const auto value = read_json(text, path);
    const auto* document = value ? value.value().dictionary() : nullptr;
    if (!document) return;
    if (const auto time = document->number("time")) segment.last_time = time;
    if (auto base = read_base(*document)) segment.bases.push_back(std::move(*base));
    const auto number = document->integer("number");
    const auto* stored = document->dictionary("edit");
    if (!number || !stored) return;
    if (auto edit = read_edit(*stored)) {
        segment.edits.push_back({static_cast<std::uint64_t>(*number), std::move(edit).value(), path});
    }
}

segment_content read_segment(const std::string& path) {
    segment_content segment;
    const auto bytes = read_file(path);
    if (!bytes) return segment;
    std::string_view rest = bytes.value();
    while (!rest.empty()) {
        const auto end = rest.find('\n');
        if (end == std::string_view::npos) break;  // no newline: torn
        read_line(rest.substr(0, end), path, segment);
        rest.remove_prefix(end + 1);
    }
    return segment;
}

// The edits after the base, each number once (the last written counts), up to the first that is missing.
void take_edits(std::vector<numbered_edit> all, const std::string& folder, journal_content& content) {
    std::stable_sort(all.begin(), all.end(),
                     [](const auto& a, const auto& b) { return a.number < b.number; });
    content.last_number = content.base.through;
    for (std::size_t at = 0; at < all.size(); ++at) {
        auto& one = all[at];
        if (one.number <= content.base.through) continue;
        if (at + 1 < all.size() && all[at + 1].number == one.number) continue;
        if (one.number != content.last_number + 1) {
            if (content.left_out.empty()) {
                content.messages.push_back("A change of the timeline in \"" + folder +
                                           "\" was damaged. The changes after it were left out.");
            }
            if (content.left_out.empty() || content.left_out.back() != one.segment) {
                content.left_out.push_back(one.segment);
            }
            continue;
        }
        content.last_number = one.number;
        content.edits.push_back(std::move(one.edit));
    }
}

}  // namespace

file_content_mark content_mark_of(std::string_view file_content) {
    return {static_cast<std::int64_t>(file_content.size()), checksum(file_content)};
}

journal_content read_journal(const std::string& folder, const file_content_mark& file) {
    journal_content content;
    content.base.content = file;
    std::vector<std::string> unfitting;
    std::vector<numbered_edit> edits;
    for (const auto& name : names_in_folder(folder)) {
        const int number = segment_number(name);
        if (number == 0) continue;
        content.last_segment = std::max(content.last_segment, number);
        const std::string path = path_join(folder, name);
        auto segment = read_segment(path);
        bool segment_fits = false;
        for (auto& base : segment.bases) {
            if (base.content != file) continue;
            segment_fits = true;
            if (!content.fits || base.through >= content.base.through) content.base = std::move(base);
            content.fits = true;
        }
        if (!segment_fits) {
            if (!segment.edits.empty()) unfitting.push_back(path);
            continue;
        }
        if (segment.last_time) content.last_time = segment.last_time;
        std::move(segment.edits.begin(), segment.edits.end(), std::back_inserter(edits));
    }
    take_edits(std::move(edits), folder, content);
    // Beside a segment that fits, the others are older ones that a save had not yet deleted.
    if (!content.fits && !unfitting.empty()) {
        content.left_out = std::move(unfitting);
        content.messages.push_back("The timeline in \"" + folder +
                                   "\" was changed outside this program. Unsaved changes do not fit it.");
    }
    return content;
}

// One open segment, closed when nobody uses it any more.
class timeline_journal::segment_file {
  public:
    segment_file(file_system& files, std::string path, int descriptor)
        : files_(files), path_(std::move(path)), descriptor_(descriptor) {}
    ~segment_file() { files_.close(descriptor_); }
    segment_file(const segment_file&) = delete;
    segment_file& operator=(const segment_file&) = delete;

    static result<std::shared_ptr<segment_file>> create(file_system& files, const std::string& path) {
        int descriptor = -1;
        if (const int fault = files.open(path, O_WRONLY | O_CREAT | O_EXCL | O_APPEND, descriptor)) {
            return file_failure(path, "could not be written", fault);
        }
        return std::make_shared<segment_file>(files, path, descriptor);
    }

    // A line that could be written only in part is ended, so that the next one stands by itself.
    result<void> write(std::string_view line) {
        const std::string whole = torn_ ? "\n" + std::string(line) : std::string(line);
        const int fault = write_whole(files_, descriptor_, whole);
        torn_ = fault != 0;
        if (fault != 0) return file_failure(path_, "could not be written", fault);
        return {};
    }

    result<void> sync() {
        if (const int fault = files_.sync_data(descriptor_)) {
            return file_failure(path_, "could not be written", fault);
        }
        return {};
    }

  private:
    file_system& files_;
    std::string path_;
    int descriptor_;
    bool torn_ = false;
};

timeline_journal::timeline_journal(std::string folder, int segment, std::uint64_t last_number,
                                   file_system& files)
    : folder_(std::move(folder)), files_(files), segment_(segment), last_number_(last_number) {}

timeline_journal::~timeline_journal() {
    sync_queue_.drain();
}

std::string timeline_journal::segment_path(int segment) const {
    return path_join(folder_, std::string(segment_name) + std::to_string(segment));
}

result<std::unique_ptr<timeline_journal>> timeline_journal::start(const std::string& folder, int segment,
                                                                  const journal_base& base,
                                                                  std::uint64_t last_number,
                                                                  file_system& files) {
    std::unique_ptr<timeline_journal> journal(new timeline_journal(folder, segment, last_number, files));
    auto file = segment_file::create(files, journal->segment_path(segment));
    if (!file) return file.error();
    journal->file_ = std::move(file).value();
    if (auto written = journal->file_->write(line_of(write_base(base))); !written) return written.error();
    journal->sync_queue_.post([&files, folder] { files.sync_folder(folder); });
    journal->sync_soon();
    return journal;
}

std::uint64_t timeline_journal::last_number() const {
    const std::lock_guard lock(mutex_);
    return last_number_;
}

result<void> timeline_journal::append(const timeline_edit& edit) {
    property_dictionary document;
    const std::lock_guard lock(mutex_);
    document.add("number", static_cast<std::int64_t>(last_number_ + 1));
    document.add("edit", write_edit(edit));
    std::string line = line_of(document);
    if (auto written = append_line(line); !written) return written;
    ++last_number_;
    recent_.push_back({last_number_, std::move(line)});
    return {};
}

result<void> timeline_journal::append_time(double collection_seconds) {
    property_dictionary document;
    document.add("time", collection_seconds);
    const std::lock_guard lock(mutex_);
    last_time_line_ = line_of(document);
    return append_line(last_time_line_);
}

result<void> timeline_journal::append_line(const std::string& line) {
    auto written = file_->write(line);
    if (written) sync_soon();
    return written;
}

void timeline_journal::sync_soon() {
    if (sync_is_waiting_) return;
    sync_is_waiting_ = true;
    sync_queue_.post([this] {
        std::shared_ptr<segment_file> file;
        {
            const std::lock_guard lock(mutex_);
            sync_is_waiting_ = false;
            file = file_;
        }
        (void)file->sync();  // a volume that fails here fails the next append or save, which tells the user
    });
}

result<void> timeline_journal::note_save(const journal_base& coming) {
    std::shared_ptr<segment_file> file;
    {
        const std::lock_guard lock(mutex_);
        if (auto written = file_->write(line_of(write_base(coming))); !written) return written;
        file = file_;
    }
    return file->sync();
}

result<void> timeline_journal::save_done(const journal_base& base) {
    int coming = 0;
    std::size_t copied = 0;
    std::string lines = line_of(write_base(base));
    {
        const std::lock_guard lock(mutex_);
        std::erase_if(recent_, [&](const recent_line& line) { return line.number <= base.through; });
        for (const auto& recent : recent_) lines += recent.line;
        copied = recent_.size();
        coming = segment_ + 1;
    }
    auto created = segment_file::create(files_, segment_path(coming));
    if (!created) return created.error();
    const auto file = std::move(created).value();
    const auto give_up = [&](const failure& reason) {
        files_.remove(segment_path(coming));
        return reason;
    };
    if (auto written = file->write(lines); !written) return give_up(written.error());
    if (auto synced = file->sync(); !synced) return give_up(synced.error());
    {
        // Only the few edits made meanwhile are written while appending has to wait.
        const std::lock_guard lock(mutex_);
        std::string rest = last_time_line_;
        for (std::size_t at = copied; at < recent_.size(); ++at) rest += recent_[at].line;
        if (auto written = file->write(rest); !written) return give_up(written.error());
        file_ = file;
        segment_ = coming;
    }
    if (auto synced = file->sync(); !synced) return synced;
    if (const int fault = files_.sync_folder(folder_))
        return file_failure(folder_, "could not be synced", fault);
    for (const auto& name : names_in_folder(folder_)) {
        const int number = segment_number(name);
        if (number != 0 && number < coming) files_.remove(path_join(folder_, name));
    }
    return {};
}

void timeline_journal::remove_if_covered(std::uint64_t saved_through) {
    sync_queue_.drain();
    const std::lock_guard lock(mutex_);
    if (last_number_ != saved_through) return;
    for (const auto& name : names_in_folder(folder_)) {
        if (segment_number(name) != 0) files_.remove(path_join(folder_, name));
    }
}

}  // namespace vistels
