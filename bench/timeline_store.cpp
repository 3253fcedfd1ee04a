// SPDX-License-Identifier: GPL-3.0-or-later
//
// Measures loading and saving of timelines on a corpus that it makes.
//   bench_timeline_store [--quick | --short]
// Processor time in all figures; ours and the peer's runs take turns, ratios are medians of pairs. --quick
// takes a tenth of the clips and fewer runs, for a look while working. Exits with 1 when a target is missed.

#include <expat.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "support/measure.h"
#include "support/timeline_corpus.h"
#include "timeline/files/sxy_Save_Load.h"
#include "util/file_system.h"

#if VISTELS_HAVE_PLIST
#include <plist/plist.h>
#endif

namespace {

using namespace vistels;
using namespace vistels::bench;

constexpr std::size_t most_clips = 1'000'000;
// The clips of a run are these parts of all.
constexpr std::size_t whole = 1;
constexpr std::size_t quick = 10;
constexpr std::size_t least = 100;

constexpr double most_of_expat = 1.5;
constexpr double most_of_tree_reading = 0.5;
constexpr double most_of_tree_writing = 0.3;
constexpr double most_growth = 1.5;
constexpr double most_of_a_load_for_names = 1;
constexpr double most_bytes_for_a_million = 1.2e9;

// The machine's files, but that nothing waits for the disk.
class unsynced_files : public file_system {
  public:
    int sync(int) override { return 0; }
    int sync_data(int) override { return 0; }
    int sync_folder(const std::string&) override { return 0; }
};

class temporary_folder {
  public:
    temporary_folder() {
        std::string pattern = std::filesystem::temp_directory_path() / "vistels-bench-XXXXXX";
        if (mkdtemp(pattern.data()) == nullptr) stop_with("No temporary folder can be made");
        path_ = pattern;
    }
    ~temporary_folder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    std::string make(const std::string& name) const {
        const auto path = path_ / name;
        std::filesystem::create_directory(path);
        return path;
    }

  private:
    std::filesystem::path path_;
};

std::string bytes_of(const std::string& path) {
    auto bytes = read_file(path);
    if (!bytes.ok()) stop_with(bytes.message());
    return std::move(bytes).value();
}

loaded_timeline loaded_from(const std::string& folder) {
    auto loaded = load_timeline(folder);
    if (!loaded.ok()) stop_with(loaded.message());
    return std::move(loaded).value();
}

void save_into(const std::string& folder, const timeline_snapshot& timeline) {
    unsynced_files files;
    if (auto saved = save_timeline(timeline, folder, files); !saved.ok()) stop_with(saved.message());
}

void parse_with_expat_alone(const std::string& bytes) {
    const std::unique_ptr<XML_ParserStruct, void (*)(XML_Parser)> parser(XML_ParserCreate("UTF-8"),
                                                                         XML_ParserFree);
    XML_SetElementHandler(
        parser.get(), [](void*, const XML_Char*, const XML_Char**) {}, [](void*, const XML_Char*) {});
    XML_SetCharacterDataHandler(parser.get(), [](void*, const XML_Char*, int) {});
    constexpr std::size_t chunk = 1 << 20;
    for (std::size_t at = 0; at < bytes.size(); at += chunk) {
        const auto part = std::min(chunk, bytes.size() - at);
        const bool last = at + part == bytes.size();
        if (XML_Parse(parser.get(), bytes.data() + at, static_cast<int>(part), last) != XML_STATUS_OK) {
            stop_with("The corpus is not well-formed");
        }
    }
}

struct measured_corpus {
    std::string folder;
    std::string bytes;
    int runs;

    std::string file() const { return path_join(folder, timeline_file_name); }
};

double load_seconds(const std::string& folder) {
    return in_child([&]() -> std::vector<double> {
               loaded_timeline loaded;
               return {seconds_of([&] { loaded = loaded_from(folder); })};
           })
        .at(0);
}

double save_seconds(const std::string& from, const std::string& to) {
    return in_child([&]() -> std::vector<double> {
               const auto loaded = loaded_from(from);
               return {seconds_of([&] { save_into(to, loaded.content); })};
           })
        .at(0);
}

bool load_against_expat(const measured_corpus& corpus) {
    paired_runs runs;
    for (int n = 0; n < corpus.runs; ++n) {
        const auto theirs = in_child([&]() -> std::vector<double> {
            return {seconds_of([&] { parse_with_expat_alone(corpus.bytes); })};
        });
        runs.add(load_seconds(corpus.folder), theirs.at(0));
    }
    return tell("load into records : expat alone, empty handlers", runs, most_of_expat);
}

double row_names_seconds(const measured_corpus& corpus) {
    return in_child([&]() -> std::vector<double> {
               std::optional<std::vector<std::string>> names;
               const double seconds = seconds_of([&] { names = read_row_names(corpus.folder); });
               if (!names || names->size() != corpus_writer::row_count) {
                   stop_with("The row names cannot be read");
               }
               return {seconds};
           })
        .at(0);
}

bool row_names_against_load(const measured_corpus& corpus) {
    paired_runs runs;
    for (int n = 0; n < corpus.runs; ++n) {
        runs.add(row_names_seconds(corpus), load_seconds(corpus.folder));
    }
    return tell("names of the rows : load into records", runs, most_of_a_load_for_names);
}

#if VISTELS_HAVE_PLIST
plist_t tree_of(const std::string& bytes) {
    plist_t tree = nullptr;
    plist_from_xml(bytes.data(), static_cast<std::uint32_t>(bytes.size()), &tree);
    if (!tree) stop_with("libplist cannot read the corpus");
    return tree;
}

// The trees go with their process.
bool load_against_tree(const measured_corpus& corpus) {
    paired_runs runs;
    for (int n = 0; n < corpus.runs; ++n) {
        const auto theirs = in_child(
            [&]() -> std::vector<double> { return {seconds_of([&] { (void)tree_of(corpus.bytes); })}; });
        runs.add(load_seconds(corpus.folder), theirs.at(0));
    }
    return tell("load into records : libplist reading its tree", runs, most_of_tree_reading);
}

bool save_against_tree(const measured_corpus& corpus, const std::string& to) {
    paired_runs runs;
    for (int n = 0; n < corpus.runs; ++n) {
        const auto theirs = in_child([&]() -> std::vector<double> {
            const plist_t tree = tree_of(corpus.bytes);
            char* text = nullptr;
            std::uint32_t length = 0;
            const double seconds = seconds_of([&] { plist_to_xml(tree, &text, &length); });
            if (!text || length < corpus.bytes.size() / 2) stop_with("libplist cannot write its tree");
            return {seconds};
        });
        runs.add(save_seconds(corpus.folder, to), theirs.at(0));
    }
    return tell("save to a file : libplist writing its tree to memory", runs, most_of_tree_writing);
}
#endif

// What is measured must be the whole work: the saved file is the corpus, byte for byte.
void check_saved_bytes(const measured_corpus& corpus, const std::string& to) {
    save_into(to, loaded_from(corpus.folder).content);
    if (bytes_of(path_join(to, timeline_file_name)) != corpus.bytes) {
        stop_with("A timeline that was loaded and saved is not the file that it was loaded from");
    }
}

bool compare_with_peers(const temporary_folder& folder, std::size_t part) {
    measured_corpus corpus{folder.make("corpus"), {}, part == whole ? 9 : part == quick ? 5 : 1};
    corpus_size size;
    size.clips /= part;
    if (!corpus_writer(corpus.file(), size).write()) stop_with("The corpus cannot be written");
    corpus.bytes = bytes_of(corpus.file());
    std::printf("%zu clips, %.1f MB\n", size.clips, static_cast<double>(corpus.bytes.size()) / 1e6);
    const auto to = folder.make("saved");
    check_saved_bytes(corpus, to);
    bool good = load_against_expat(corpus);
#if VISTELS_HAVE_PLIST
    good = load_against_tree(corpus) && good;
    good = save_against_tree(corpus, to) && good;
#else
    std::printf("without libplist: loading and saving against it left out\n");
#endif
    return row_names_against_load(corpus) && good;
}

struct growth_point {
    double load = 0;  // seconds a clip
    double save = 0;
};

growth_point measure_size(const temporary_folder& folder, std::size_t clips) {
    const auto from = folder.make("growth");
    const auto to = folder.make("growth saved");
    if (!corpus_writer(path_join(from, timeline_file_name), {clips, 0, 4}).write()) {
        stop_with("The corpus cannot be written");
    }
    constexpr std::size_t clips_in_all = 300'000;
    constexpr std::size_t most_runs = 51;
    const std::size_t runs = std::clamp<std::size_t>(clips_in_all / clips, 3, most_runs);
    std::vector<double> loads;
    std::vector<double> saves;
    for (std::size_t n = 0; n < runs; ++n) {
        loads.push_back(load_seconds(from));
        saves.push_back(save_seconds(from, to));
    }
    const auto count = static_cast<double>(clips);
    return {median(loads) / count, median(saves) / count};
}

bool growth(const temporary_folder& folder, std::size_t part) {
    growth_point fastest{1, 1};
    growth_point slowest;
    for (std::size_t clips = 1'000; clips <= most_clips / part; clips *= 10) {
        const auto point = measure_size(folder, clips);
        std::printf("%9zu clips: load %6.2f us a clip, save %6.2f us a clip\n", clips, point.load * 1e6,
                    point.save * 1e6);
        std::fflush(stdout);
        fastest = {std::min(fastest.load, point.load), std::min(fastest.save, point.save)};
        slowest = {std::max(slowest.load, point.load), std::max(slowest.save, point.save)};
    }
    const double load = slowest.load / fastest.load;
    const double save = slowest.save / fastest.save;
    const bool met = load <= most_growth && save <= most_growth;
    std::printf("time a clip, largest to smallest: load %.2f, save %.2f times (at most %.2f)%s\n", load, save,
                most_growth, met ? "" : "  MISSED");
    return met;
}

bool memory(const temporary_folder& folder, std::size_t part) {
    const std::size_t clips = most_clips / part;
    const auto from = folder.make("large");
    if (!corpus_writer(path_join(from, timeline_file_name), {clips, 2, 2}).write()) {
        stop_with("The corpus cannot be written");
    }
    const auto found = in_child([&]() -> std::vector<double> {
        malloc_trim(0);
        const double before = resident_bytes("VmRSS");
        const auto loaded = loaded_from(from);
        return {resident_bytes("VmRSS") - before, resident_bytes("VmHWM") - before,
                static_cast<double>(loaded.content.rows.size())};
    });
    std::filesystem::remove_all(from);
    const double million = found.at(0) * 1e6 / static_cast<double>(clips);
    const bool met = million <= most_bytes_for_a_million;
    std::printf(
        "memory of %zu clips with 2 qualifiers: %.3f GB, %.3f GB at the peak of loading "
        "(at most %.2f GB a million)%s\n",
        clips, found.at(0) / 1e9, found.at(1) / 1e9, most_bytes_for_a_million / 1e9, met ? "" : "  MISSED");
    std::fflush(stdout);
    return met;
}

}  // namespace

int main(int count, char** arguments) {
    const bool is_short = take_short(count, arguments);
    const bool is_quick = count > 1 && std::string(arguments[1]) == "--quick";
    if (count > (is_quick ? 2 : 1)) stop_with("usage: bench_timeline_store [--quick | --short]");
    const std::size_t part = is_short ? least : is_quick ? quick : whole;
    bool good = true;
    {
        const temporary_folder folder;
        // Memory and growth first: their processes begin with little in them.
        good = memory(folder, part);
        good = growth(folder, part) && good;
        good = compare_with_peers(folder, part) && good;
    }
    return good || is_short ? 0 : 1;
}
