// SPDX-License-Identifier: GPL-3.0-or-later
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

#include "allocation_count.h"
#include "full_alpha.h"
#include "timeline/files/chron_notes.h"
#include "timeline/files/sxy_Save_Load.h"
#include "util/checksum.h"
#include "util/file_system.h"
#include "util/json.h"

// Files of any content are read as property lists and as JSON. What can be read is written, and reads as the
// same.

namespace {

using namespace vistels;

constexpr const char* input_name = "the input";

void require(bool holds) {
    if (!holds) std::abort();
}

class unsynced_files : public file_system {
  public:
    int sync(int) override { return 0; }
    int sync_data(int) override { return 0; }
    int sync_folder(const std::string&) override { return 0; }
};

// Where the inputs lie as files; in memory where the machine has such a place.
class input_folder {
  public:
    input_folder() {
        std::string pattern = std::filesystem::exists("/dev/shm") ? "/dev/shm" : "/tmp";
        pattern += "/vistels-fuzz-XXXXXX";
        if (mkdtemp(pattern.data()) == nullptr) std::abort();
        path_ = pattern;
    }
    ~input_folder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    const std::string& path() const { return path_; }
    std::string list_file() const { return path_join(path_, timeline_file_name); }
    std::string notes_file() const { return path_join(path_, timeline_notes_file_name); }
    std::string json_file() const { return path_join(path_, "chron.json"); }

  private:
    std::string path_;
};

const input_folder& folder() {
    static const input_folder made;
    return made;
}

void put_file(const std::string& path, std::string_view bytes) {
    std::ofstream file(path, std::ios::binary);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    file.close();
    require(file.good());
}

bool is_json(std::string_view bytes) {
    if (bytes.starts_with("\xEF\xBB\xBF")) bytes.remove_prefix(3);
    const auto first = bytes.find_first_not_of(" \t\r\n");
    return first != std::string_view::npos && (bytes[first] == '{' || bytes[first] == '[');
}

result<loaded_timeline> read(std::string_view bytes, bool json) {
    return json ? read_timeline_json(bytes, input_name) : read_timeline_bytes(bytes, input_name);
}

std::size_t clips_in(const timeline_snapshot& timeline) {
    std::size_t count = 0;
    for (const auto& row : timeline.rows) count += row->clips().size();
    return count;
}

bool reads_whole(const result<loaded_timeline>& again, const timeline_snapshot& timeline) {
    return again.ok() && again.value().skipped_clips == 0 && again.value().messages.empty() &&
           clips_in(again.value().content) == clips_in(timeline);
}

void check_written_as_list(const timeline_snapshot& timeline) {
    const auto first = timeline_bytes(timeline);
    const auto again = read(first, false);
    require(reads_whole(again, timeline));
    const auto second = timeline_bytes(again.value().content);
    require(fuzz::without_full_alpha(first, "</string>") == fuzz::without_full_alpha(second, "</string>"));
}

void check_written_as_json(const timeline_snapshot& timeline) {
    const auto first = write_json(write_timeline(timeline), json_layout::one_line);
    const auto again = read(first, true);
    require(reads_whole(again, timeline));
    const auto second = write_json(write_timeline(again.value().content), json_layout::one_line);
    require(fuzz::without_full_alpha(first, "\"") == fuzz::without_full_alpha(second, "\""));
}

void check_row_names(const timeline_snapshot& timeline) {
    const auto names = read_row_names(folder().path());
    if (timeline.rows.empty()) return require(!names || names->empty());
    require(names && names->size() == timeline.rows.size());
    for (std::size_t n = 0; n < names->size(); ++n) require((*names)[n] == timeline.rows[n]->name());
}

void check_opened(const timeline_snapshot& timeline) {
    const sxy_DATA_root opened(timeline);
    std::size_t count = 0;
    for (const auto& row : opened.rows()) {
        const sxy_CLIP* before = nullptr;
        for (const auto& clip : row->clips()) {
            require(clip->secs_start() <= clip->secs_end());
            const auto place = opened.find_clip(clip->id());
            require(place && place->clip == clip && place->row == row->uuid());
            require(!before || !clip_before(*clip, *before));
            before = clip.get();
            ++count;
        }
    }
    require(count == opened.clip_count() && count == clips_in(timeline));
}

// What reads it clip by clip finds the same as what reads it whole, or both refuse it. A comment at the end
// of a list changes nothing, but is nothing that this program writes, so that the strict reader gets it.
void check_other_reader(std::string_view bytes, bool json, const result<loaded_timeline>& loaded) {
    result<loaded_timeline> other = failure();
    if (json) {
        const auto tree = read_json(bytes, input_name);
        if (!tree) other = tree.error();
        if (tree && tree.value().dictionary()) other = read_timeline(*tree.value().dictionary());
    } else {
        other = read_timeline_bytes(std::string(bytes) + "<!---->", input_name);
    }
    require(other.ok() == loaded.ok());
    if (!other.ok()) return;
    require(other.value().skipped_clips == loaded.value().skipped_clips);
    require(timeline_bytes(other.value().content) == timeline_bytes(loaded.value().content));
}

std::string saved_list(timeline_snapshot timeline, bool only_selected = false) {
    unsynced_files files;
    timeline.only_selected = only_selected;
    require(save_timeline(timeline, folder().path(), files).ok());
    const auto bytes = read_file(folder().list_file());
    require(bytes.ok());
    const auto notes = read_file(folder().notes_file());
    return bytes.value() + (notes.ok() ? notes.value() : std::string());
}

// The same by way of files, with the notes in one of their own.
void check_as_files(std::string_view bytes, bool json, const result<loaded_timeline>& loaded) {
    machine_files().remove(folder().notes_file());
    const std::string path = json ? folder().json_file() : folder().list_file();
    put_file(path, bytes);
    const auto from_file = load_timeline(json ? path : folder().path());
    require(from_file.ok() == loaded.ok());
    if (!loaded.ok()) return require(json || !read_row_names(folder().path()));
    const auto& timeline = loaded.value().content;
    require(timeline_bytes(from_file.value().content) == timeline_bytes(timeline));
    if (!json) {
        check_row_names(timeline);
        put_file(path, std::string(bytes) + "<!---->");
        check_row_names(timeline);
    }
    const auto first = saved_list(timeline);
    const auto again = load_timeline(folder().path());
    require(reads_whole(again, timeline));
    const auto second = saved_list(again.value().content);
    require(fuzz::without_full_alpha(first, "</string>") == fuzz::without_full_alpha(second, "</string>"));
    // Nothing is selected.
    saved_list(timeline, true);
    require(!read_row_names(folder().path()));
}

void check(std::string_view bytes) {
    const bool json = is_json(bytes);
    result<loaded_timeline> loaded = failure();
    require(fuzz::is_lean(bytes.size(), "Reading", [&] { loaded = read(bytes, json); }));
    if (!loaded.ok()) require(loaded.message().find(input_name) != std::string::npos);
    check_other_reader(bytes, json, loaded);
    // Files take ten times as long as what is read from them: some inputs, the same in each run.
    constexpr std::uint64_t one_in = 16;
    if (checksum(bytes) % one_in == 0) check_as_files(bytes, json, loaded);
    if (!loaded.ok()) return;
    const auto& timeline = loaded.value().content;
    check_opened(timeline);
    check_written_as_list(timeline);
    check_written_as_json(timeline);
}

// Small things in great number are what takes the most memory for their size in a file.
bool is_lean_repeated(const std::string& before, std::string_view repeated, const std::string& after) {
    constexpr std::size_t about = 1 << 20;
    std::string bytes = before;
    while (bytes.size() < about) bytes += repeated;
    if (bytes.ends_with(',')) bytes.pop_back();
    bytes += after;
    const bool json = is_json(bytes);
    const std::string path = json ? folder().json_file() : folder().list_file();
    put_file(path, bytes);
    return fuzz::is_lean(bytes.size(), (before + std::string(repeated)).c_str(),
                         [&] { (void)load_timeline(path); });
}

void check_memory() {
    bool lean = true;
    const std::string list = "<plist><dict><key>rows</key><array>";
    const std::string list_clips = list + "<dict><key>clips</key><array>";
    const std::string list_clip =
        list_clips + "<dict><key>str</key><real>1</real><key>end</key><real>2</real>";
    const std::string list_end = "</array></dict></plist>";
    const std::string list_clips_end = "</array></dict>" + list_end;
    for (const char* row : {"<dict/>", "<array/>", "<true/>",
                            "<dict><key>row_name</key><string>n</string></dict>", "<integer>1</integer>"}) {
        lean &= is_lean_repeated(list, row, list_end);
    }
    for (const char* one :
         {"<dict/>", "<dict><key>str</key><real>1</real><key>end</key><real>2</real></dict>"}) {
        lean &= is_lean_repeated(list_clips, one, list_clips_end);
    }
    for (const char* key : {"triggers", "pause_items"}) {
        lean &= is_lean_repeated(list_clip + "<key>" + key + "</key><array>", "<dict/>",
                                 "</array></dict>" + list_clips_end);
    }
    for (const char* one :
         {"<dict/>", "<dict><key>uuid</key><string>u</string></dict>",
          "<dict><key>name</key><string/></dict>", "<dict><key>action</key><true/></dict>"}) {
        lean &= is_lean_repeated(list_clip + "<key>qualifiers</key><dict><key>qualifiers_array</key><array>",
                                 one, "</array></dict></dict>" + list_clips_end);
    }
    for (const char* one : {"<dict/>", "<dict><key>x</key><real>1</real></dict>"}) {
        lean &= is_lean_repeated(list_clip +
                                     "<key>qualifiers</key><dict><key>qualifiers_array</key><array><dict>"
                                     "<key>qualifier_attributes</key><array>",
                                 one, "</array></dict></array></dict></dict>" + list_clips_end);
    }
    lean &= is_lean_repeated("<plist><dict>", "<key>k</key><true/>", "</dict></plist>");
    lean &=
        is_lean_repeated("<plist><dict><key>description</key><string>", "x&amp;", "</string></dict></plist>");
    lean &= is_lean_repeated("<plist><dict><key>tags</key><array>", "<true/>", list_end);
    for (const char* one : {"{},", "[],", "1,", "\"\",", "{\"clips\":[{}]},", "{\"row_name\":\"n\"},"}) {
        lean &= is_lean_repeated("{\"rows\":[", one, "]}");
    }
    for (const char* one :
         {"{},", "1,", "{\"str\":1,\"end\":2},", "{\"str\":1,\"end\":2,\"notes_dict\":{}},"}) {
        lean &= is_lean_repeated("{\"rows\":[{\"clips\":[", one, "]}]}");
    }
    lean &= is_lean_repeated("{\"tags\":[", "[],", "]}");
    for (const char* one : {"1,", "{},", "[1],"}) {
        lean &= is_lean_repeated("{\"rows\":[{\"uncompacted_rows\":[", one, "]}]}");
    }
    const std::string clip = R"({"rows":[{"clips":[{"str":1,"end":2,)";
    for (const char* one : {"{\"x\":1},", "{\"action\":1},", "{\"alias\":\"a\"},", "{\"name\":\"n\"},"}) {
        lean &= is_lean_repeated(clip + R"("qualifiers":{"qualifiers_array":[)", one, "]}}]}]}");
    }
    const std::string qualifier =
        clip + R"("qualifiers":{"qualifiers_array":[{"name":"n","qualifier_attributes":[)";
    for (const char* one : {"{},", "1,", "{\"\":1},", "{\"x\":1},"}) {
        lean &= is_lean_repeated(qualifier, one, "]}]}}]}]}");
        lean &= is_lean_repeated(clip + "\"triggers\":[", one, "]}]}]}");
    }
    require(lean);
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    fuzz::count_allocations();
    check_memory();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    check(std::string_view(reinterpret_cast<const char*>(data), size));
    return 0;
}
