// SPDX-License-Identifier: GPL-3.0-or-later
//
// Measures the text level of stored timelines: a property list of 20 rows with clips of 0 to 4 qualifiers,
// read and written, in processor time, against expat with empty handlers and against libplist.
//   bench_property_list [--short] [CLIPS [TURNS]]
// All rivals work on the same bytes by turns; the figures are medians. Exits with 1 when a target is missed.

#include <expat.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "support/measure.h"
#include "util/property_list.h"
#include "util/property_list_cursor.h"
#include "util/stored_sink.h"

#ifdef VISTELS_HAVE_PLIST
#include <plist/plist.h>
#endif

namespace {

using namespace vistels;
using bench::processor_seconds;
using bench::take_short;

constexpr double most_quick_ratio = 0.35;
constexpr int rows = 20;

class timeline_maker {
  public:
    std::string make(int clips) {
        sink_.begin_dictionary("");
        sink_.put("row_count", rows);
        sink_.put("show_rows_by_category", false);
        sink_.put("data_version", 2);
        sink_.put("uuid_timeline", uuid());
        sink_.begin_array("rows");
        for (int row = 0; row < rows; ++row) put_row(row, clips / rows + (row < clips % rows ? 1 : 0));
        sink_.end();
        sink_.end();
        return sink_.take();
    }

  private:
    int below(int limit) { return static_cast<int>(random_() % static_cast<unsigned>(limit)); }
    bool once_in(int count) { return below(count) == 0; }

    std::string uuid() {
        std::string text = "00000000-0000-4000-8000-000000000000";
        for (char& digit : text) {
            if (digit == '0') digit = "0123456789ABCDEF"[below(16)];
        }
        return text;
    }

    std::string colour(int decimals) {
        char text[64];
        const int length = std::snprintf(text, sizeof text, "%.*f,%.*f,%.*f", decimals, below(256) / 255.0,
                                         decimals, below(256) / 255.0, decimals, below(256) / 255.0);
        return {text, static_cast<std::size_t>(length)};
    }

    void put_row(int row, int clips) {
        sink_.begin_dictionary("");
        sink_.put("row_number", row + 1);
        sink_.put("row_name", "Row number " + std::to_string(row + 1));
        sink_.put("row_category", "Attack");
        sink_.put("height", 24.0);
        const std::string row_uuid = uuid();
        sink_.put("uuid_row", row_uuid);
        sink_.put("color", colour(4));
        sink_.begin_array("clips");
        double time = 0;
        for (int clip = 0; clip < clips; ++clip) put_clip(row_uuid, time += 0.05 + below(1000000) / 1e5);
        sink_.end();
        sink_.end();
    }

    void put_clip(const std::string& row_uuid, double start) {
        static const char* const names[] = {"Pass", "Shot", "Tackle & win", "Corner", "Übergabe"};
        sink_.begin_dictionary("");
        sink_.put("uuid", uuid());
        sink_.put("time_start", start);
        sink_.put("time_end", start + 2 + below(8000) / 1e3);
        sink_.put("row_category", "Attack");
        sink_.put("row_uuid_in_clip", row_uuid);
        sink_.put("color", colour(4));
        sink_.put("edit_seconds", 1767225600 + below(1000000) + below(1000000) / 1e6);
        sink_.put("author", "Analyst");
        if (once_in(4)) sink_.put("edit_info", "moved");
        if (once_in(3)) sink_.put("stars", 1 + below(5));
        if (once_in(10)) sink_.put("clip_group", uuid());
        if (once_in(20)) put_triggers(start);
        const int qualifiers = below(5);
        if (qualifiers > 0) {
            sink_.begin_dictionary("qualifiers");
            sink_.begin_array("qualifiers_array");
            for (int number = 0; number < qualifiers; ++number)
                put_qualifier(names[below(5)], start + number);
            sink_.end();
            sink_.end();
        }
        sink_.end();
    }

    void put_triggers(double time) {
        sink_.begin_array("triggers");
        sink_.begin_dictionary("");
        sink_.put("trigger_time", time);
        sink_.put("trigger_type", "going down");
        sink_.put("trigger_colour", colour(8));
        sink_.end();
        sink_.end();
    }

    void put_qualifier(const char* name, double time) {
        sink_.begin_dictionary("");
        sink_.put("time", std::round(time * 1e8) / 1e8);
        if (once_in(5)) sink_.put("alt_time", time / 3);
        if (once_in(5)) sink_.put("clock_time", "14:05:09");
        sink_.put("name", name);
        sink_.put("category", "Player");
        if (once_in(2)) sink_.put("recepient", "Number 7");
        sink_.put("uuid", uuid());
        sink_.put("color", colour(4));
        if (once_in(8)) {
            sink_.begin_array("qualifier_attributes");
            sink_.begin_dictionary("");
            sink_.put("name", "good");
            sink_.put("category", "Verdict");
            sink_.put("time", time);
            sink_.put("color", colour(3));
            sink_.put("attr_uuid", uuid());
            sink_.end();
            sink_.end();
        }
        sink_.end();
    }

    std::mt19937_64 random_{2026};
    property_list_sink sink_;
};

[[noreturn]] void fail(const char* reason) {
    std::fprintf(stderr, "bench_property_list: %s\n", reason);
    std::exit(2);
}

void parse_with_expat(const std::string& bytes) {
    const auto parser = XML_ParserCreate("UTF-8");
    XML_SetElementHandler(
        parser, [](void*, const XML_Char*, const XML_Char**) {}, [](void*, const XML_Char*) {});
    XML_SetCharacterDataHandler(parser, [](void*, const XML_Char*, int) {});
    constexpr std::size_t chunk = 1 << 16;
    for (std::size_t at = 0; at < bytes.size(); at += chunk) {
        const std::size_t size = std::min(chunk, bytes.size() - at);
        if (XML_Parse(parser, bytes.data() + at, static_cast<int>(size), at + size == bytes.size()) !=
            XML_STATUS_OK) {
            fail("expat refuses the file");
        }
    }
    XML_ParserFree(parser);
}

// Walks to the rows' clips and hands each clip's view to `take`.
template <class Take>
void read_clips(const std::string& bytes, Take take) {
    using form = stored_view::form;
    stored_arena arena;
    property_list_cursor cursor(bytes);
    cursor.enter();
    while (const auto key = cursor.next_key(arena)) {
        if (*key != "rows" || cursor.next_form() != form::array) {
            cursor.skip();
            continue;
        }
        cursor.enter();
        while (cursor.next_item()) {
            cursor.enter();
            while (const auto row_key = cursor.next_key(arena)) {
                if (*row_key != "clips" || cursor.next_form() != form::array) {
                    cursor.skip();
                    continue;
                }
                cursor.enter();
                while (cursor.next_item()) {
                    arena.clear();
                    take(cursor.read(arena));
                }
            }
        }
    }
    if (!cursor.finish()) fail("the quick reader gives up");
}

void put_view(stored_sink& sink, std::string_view key, const stored_view& view) {
    using form = stored_view::form;
    switch (view.kind()) {
        case form::boolean:
            return sink.put(key, *view.boolean());
        case form::integer:
            return sink.put(key, *view.integer());
        case form::real:
            return sink.put(key, *view.number());
        case form::text:
            return sink.put(key, *view.text());
        case form::array:
            sink.begin_array(key);
            for (const auto& item : view.items()) put_view(sink, {}, item);
            return sink.end();
        case form::dictionary:
            sink.begin_dictionary(key);
            for (const auto& member : view.members()) put_view(sink, member.key, member.value);
            return sink.end();
        default:
            return sink.put(key, view.copy());
    }
}

struct work {
    const char* name;
    std::function<void()> run;
    std::vector<double> seconds{};

    double median() {
        std::sort(seconds.begin(), seconds.end());
        return seconds[seconds.size() / 2];
    }
};

// What all the works are done on.
struct corpus {
    std::string bytes;
    stored_arena arena;
    stored_view views;
    property_value tree;
    std::string copy;
};

void make_corpus(int clips, corpus& made) {
    made.bytes = timeline_maker().make(clips);
    made.copy.resize(made.bytes.size());
    property_list_cursor cursor(made.bytes);
    made.views = cursor.read(made.arena);
    auto strict = read_property_list(made.bytes, "bench");
    if (!cursor.finish() || !strict || !(strict.value() == made.views.copy())) fail("the readers differ");
    made.tree = std::move(strict).value();
}

std::vector<work> reading(corpus& on) {
    const auto& bytes = on.bytes;
    return {
        {"expat, empty handlers", [&bytes] { parse_with_expat(bytes); }},
        {"quick reader, views clip by clip",
         [&bytes] {
             std::size_t parts = 0;
             read_clips(bytes, [&parts](const stored_view& clip) { parts += clip.members().size(); });
             if (parts == 0) fail("there are no clips");
         }},
        {"quick reader, skipping",
         [&bytes] {
             property_list_cursor cursor(bytes);
             cursor.skip();
             if (!cursor.finish()) fail("the quick reader gives up");
         }},
        {"strict reader, views of the whole",
         [&bytes] {
             stored_arena arena;
             if (!read_property_list(bytes, "bench", arena)) fail("the strict reader refuses the file");
         }},
        {"strict reader, tree", [&bytes] { (void)read_property_list(bytes, "bench"); }},
    };
}

std::vector<work> writing(corpus& on) {
    return {
        {"copying the bytes", [&on] { std::memcpy(on.copy.data(), on.bytes.data(), on.bytes.size()); }},
        {"sink, from views",
         [&on] {
             property_list_sink sink;
             put_view(sink, "", on.views);
             if (sink.take().size() != on.bytes.size()) fail("the sink writes something else");
         }},
        {"sink, from views, block by block",
         [&on] {
             std::size_t at = 0;
             property_list_sink sink([&](std::string_view block) {
                 if (on.bytes.compare(at, block.size(), block) != 0) fail("the sink writes something else");
                 at += block.size();
             });
             put_view(sink, "", on.views);
             sink.finish();
             if (at != on.bytes.size()) fail("the sink leaves something out");
         }},
        {"write_property_list, from a tree", [&on] { (void)write_property_list(on.tree); }},
    };
}

#ifdef VISTELS_HAVE_PLIST
plist_t libplist_tree(const std::string& bytes) {
    plist_t read = nullptr;
    plist_from_xml(bytes.data(), static_cast<std::uint32_t>(bytes.size()), &read);
    if (!read) fail("libplist refuses the file");
    return read;
}

// First reading, then writing.
std::vector<work> libplist_works(const corpus& on, plist_t tree) {
    return {
        {"libplist, reading a tree", [&on] { plist_free(libplist_tree(on.bytes)); }},
        {"libplist, writing its tree",
         [tree] {
             char* text = nullptr;
             std::uint32_t size = 0;
             plist_to_xml(tree, &text, &size);
             plist_to_xml_free(text);
         }},
    };
}
#endif

void print(std::vector<work>& works, double expat) {
    for (auto& one : works) {
        std::printf("  %-36s %8.1f ms   %6.3f of expat\n", one.name, one.median() * 1e3,
                    one.median() / expat);
    }
}

void run_by_turns(const std::vector<std::vector<work>*>& groups, int turns) {
    for (int turn = 0; turn <= turns; ++turn) {
        for (auto* group : groups) {
            for (auto& one : *group) {
                const double start = processor_seconds();
                one.run();
                if (turn > 0) one.seconds.push_back(processor_seconds() - start);  // the first one warms up
            }
        }
    }
}

}  // namespace

int main(int count, char** words) {
    const bool is_short = take_short(count, words);
    const int clips = count > 1 ? std::atoi(words[1]) : is_short ? 2000 : 100000;
    const int turns = count > 2 ? std::atoi(words[2]) : is_short ? 1 : 7;
    if (clips < rows || turns < 1) fail("usage: bench_property_list [--short] [CLIPS [TURNS]]");
    corpus on;
    make_corpus(clips, on);
    const auto size = static_cast<double>(on.bytes.size());
    std::printf("%d clips, %.1f MB, %.0f bytes a clip, %d turns\n", clips, size / 1e6, size / clips, turns);

    auto read = reading(on);
    auto written = writing(on);
    std::vector<std::vector<work>*> groups{&read, &written};
#ifdef VISTELS_HAVE_PLIST
    const plist_t tree = libplist_tree(on.bytes);
    auto by_libplist = libplist_works(on, tree);
    groups.push_back(&by_libplist);
#endif
    run_by_turns(groups, turns);

    const double expat = read[0].median();
    const double quick = read[1].median();
    for (auto* group : groups) print(*group, expat);
#ifdef VISTELS_HAVE_PLIST
    std::printf("views clip by clip: %.3f of libplist's reading; sink from views: %.3f of its writing\n",
                quick / by_libplist[0].median(), written[1].median() / by_libplist[1].median());
    plist_free(tree);
#endif
    const bool met = quick <= most_quick_ratio * expat;
    std::printf("quick reader: %.3f of expat, at most %.2f: %s\n", quick / expat, most_quick_ratio,
                met ? "met" : "MISSED");
    return met || is_short ? 0 : 1;
}
