// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <cstdio>
#include <fstream>
#include <random>
#include <string>
#include <string_view>

#include "util/text_forms.h"

namespace vistels::bench {

struct corpus_size {
    std::size_t clips = 100'000;
    int fewest_qualifiers = 0;
    int most_qualifiers = 4;
};

// Writes the bytes of a timeline's file exactly as the program does: 20 rows whose clips hold what coding a
// match leaves in them (identity, times, row, colour, author, collection, qualifiers with attributes, view
// data and triggers now and then). The same size gives the same bytes. It builds no records and no tree, so
// that its memory does not grow with the corpus and no fault of the program hides in it.
class corpus_writer {
  public:
    corpus_writer(const std::string& path, const corpus_size& size) : size_(size), file_(path) {}

    bool write() {
        out_ = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n";
        begin("<dict>");
        integer("row_count", row_count);
        flag("show_rows_by_category", false);
        integer("data_version", 2);
        text("uuid_timeline", uuid());
        key("rows");
        begin("<array>");
        for (std::size_t row = 0; row < row_count; ++row) put_row(row);
        end("</array>");
        end("</dict>");
        out_ += "</plist>\n";
        flush();
        file_.close();
        return file_.good();
    }

    static constexpr std::size_t row_count = 20;

  private:
    void put_row(std::size_t row) {
        const std::string row_uuid = uuid();
        begin("<dict>");
        integer("row_number", static_cast<std::int64_t>(row) + 1);
        text("row_name", "Row & Moment " + std::to_string(row + 1));
        text("row_category", row < row_count / 2 ? "Attack" : "Defence");
        real("height", 30);
        text("uuid_row", row_uuid);
        text("color", "0.8,0.25,0.1234");
        key("clips");
        begin("<array>");
        double start = 0;
        const std::size_t clips = size_.clips * (row + 1) / row_count - size_.clips * row / row_count;
        for (std::size_t n = 0; n < clips; ++n) {
            start += 0.125 + below(40'000) / 9.7e3;
            put_clip(row_uuid, start);
        }
        end("</array>");
        end("</dict>");
        flush();
    }

    void put_clip(const std::string& row_uuid, double start) {
        begin("<dict>");
        text("uuid", uuid());
        real("time_start", start);
        real("time_end", start + 0.5 + below(12'000) / 997.0);
        text("row_category", "Attack");
        text("row_uuid_in_clip", row_uuid);
        if (below(4) == 0) text("color", "1.0,0.5,0.25,0.9");
        real("edit_seconds", 1.77e9 + below(1'000'000) / 64.0);
        text("author", "Analyst");
        text("edit_info", "code window");
        if (below(5) == 0) integer("stars", 1 + below(5));
        real("coll_id", 812345678901);
        if (below(50) == 0) put_triggers(start);
        const int qualifiers =
            size_.fewest_qualifiers + below(size_.most_qualifiers - size_.fewest_qualifiers + 1);
        if (qualifiers > 0) put_qualifiers(qualifiers, start);
        if (below(20) == 0) put_vistels();
        end("</dict>");
        if (out_.size() > (1U << 20U)) flush();
    }

    void put_triggers(double start) {
        key("triggers");
        begin("<array>");
        begin("<dict>");
        real("trigger_time", start);
        text("trigger_type", "pause");
        text("trigger_colour", "0.12345678,0.5,1.0");
        end("</dict>");
        end("</array>");
    }

    void put_qualifiers(int count, double start) {
        static constexpr std::string_view names[] = {"Shot",   "Goal",   "Pass < 10 m", "Left foot",
                                                     "Header", "Corner", "Press",       "Turn-over"};
        key("qualifiers");
        begin("<dict>");
        key("qualifiers_array");
        begin("<array>");
        for (int n = 0; n < count; ++n) {
            begin("<dict>");
            real("time", static_cast<double>(static_cast<std::int64_t>(start * 16) + n) / 16);
            text("name", names[below(8)]);
            text("category", below(2) == 0 ? "Result" : "Technique");
            text("uuid", uuid());
            text("color", "0.2,0.4,0.6");
            if (below(4) == 0) put_attribute(start);
            end("</dict>");
        }
        end("</array>");
        end("</dict>");
    }

    void put_attribute(double start) {
        key("qualifier_attributes");
        begin("<array>");
        begin("<dict>");
        text("name", "Player " + std::to_string(below(23)));
        text("category", "Player");
        real("time", start);
        text("color", "0.125,0.5,1.0");
        text("attr_uuid", uuid());
        end("</dict>");
        end("</array>");
    }

    void put_vistels() {
        key("vistels_data");
        begin("<dict>");
        real("bounds_ratio", 1.7778);
        flag("use_Vistel_Positions_data", true);
        key("vistels_array");
        begin("<array>");
        for (int n = 0; n < 2; ++n) {
            begin("<dict>");
            text("vistel_name", n == 0 ? "Main stand" : "Behind the goal");
            real("vistel_id", 812345678900 + n);
            text("vistel_rect", n == 0 ? "0,0,0.5,1" : "0.5,0,0.5,1");
            integer("level", n);
            end("</dict>");
        }
        end("</array>");
        end("</dict>");
    }

    int below(int limit) { return static_cast<int>(random_() % static_cast<unsigned>(limit)); }

    std::string uuid() {
        char text[37];
        const auto number = [this] { return static_cast<unsigned>(random_()); };
        std::snprintf(text, sizeof text, "%08X-%04X-4%03X-A%03X-%04X%08X", number(), number() & 0xFFFFU,
                      number() & 0xFFFU, number() & 0xFFFU, number() & 0xFFFFU, number());
        return text;
    }

    void line(std::string_view opening, std::string_view content, std::string_view closing) {
        out_.append(level_, '\t');
        out_ += opening;
        for (const char c : content) {
            if (c == '&') {
                out_ += "&amp;";
            } else if (c == '<') {
                out_ += "&lt;";
            } else {
                out_ += c;
            }
        }
        out_ += closing;
        out_ += '\n';
    }
    void begin(std::string_view tag) {
        line(tag, "", "");
        ++level_;
    }
    void end(std::string_view tag) {
        --level_;
        line(tag, "", "");
    }
    void key(std::string_view name) { line("<key>", name, "</key>"); }
    void text(std::string_view name, std::string_view value) {
        key(name);
        line("<string>", value, "</string>");
    }
    void integer(std::string_view name, std::int64_t value) {
        key(name);
        line("<integer>", std::to_string(value), "</integer>");
    }
    void real(std::string_view name, double value) {
        std::string digits;
        append_shortest(digits, value);
        key(name);
        line("<real>", digits, "</real>");
    }
    void flag(std::string_view name, bool value) {
        key(name);
        line(value ? "<true/>" : "<false/>", "", "");
    }
    void flush() {
        file_.write(out_.data(), static_cast<std::streamsize>(out_.size()));
        out_.clear();
    }

    const corpus_size size_;
    std::ofstream file_;
    std::string out_;
    std::size_t level_ = 0;
    std::mt19937_64 random_{20260314};
};

}  // namespace vistels::bench
