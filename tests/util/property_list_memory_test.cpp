// SPDX-License-Identifier: GPL-3.0-or-later
//
// What reading a property list needs in memory, whatever the file holds. Counted are the objects of the
// program and, where the C library tells it, all that is taken from it, so that the XML parser's share is
// included.

#include <gtest/gtest.h>
#include <malloc.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <new>
#include <string>
#include <vector>

#include "util/property_list.h"
#include "util/property_list_cursor.h"

namespace {

std::atomic<std::size_t> objects_in_use = 0;
std::atomic<std::size_t> most_objects = 0;
std::atomic<std::size_t> most_taken = 0;
std::atomic<unsigned> calls = 0;
std::atomic<bool> counting = false;

std::size_t taken() {
    const auto told = mallinfo2();  // nothing but zeros under the address sanitizer
    return told.uordblks + told.hblkhd;
}

void raise(std::atomic<std::size_t>& most, std::size_t now) {
    if (now > most) most = now;
}

void* counted(std::size_t bytes) {
    void* made = std::malloc(bytes == 0 ? 1 : bytes);
    if (!made) std::abort();
    raise(most_objects, objects_in_use += malloc_usable_size(made));
    constexpr std::size_t large = 1 << 14;
    // The first calls count singly: a file that is refused causes no others.
    constexpr unsigned between_looks = 64;
    if (counting && (bytes >= large || ++calls < between_looks || calls % between_looks == 0)) {
        raise(most_taken, taken());
    }
    return made;
}

void uncounted(void* made) noexcept {
    if (!made) return;
    objects_in_use -= malloc_usable_size(made);
    std::free(made);
}

}  // namespace

void* operator new(std::size_t bytes) {
    return counted(bytes);
}
void* operator new[](std::size_t bytes) {
    return counted(bytes);
}
// Libraries use these; left alone they would be the sanitizer's own, whose blocks are not to be freed here.
void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept {
    return counted(bytes);
}
void* operator new[](std::size_t bytes, const std::nothrow_t&) noexcept {
    return counted(bytes);
}
void operator delete(void* made, const std::nothrow_t&) noexcept {
    uncounted(made);
}
void operator delete[](void* made, const std::nothrow_t&) noexcept {
    uncounted(made);
}
void operator delete(void* made) noexcept {
    uncounted(made);
}
void operator delete[](void* made) noexcept {
    uncounted(made);
}
void operator delete(void* made, std::size_t) noexcept {
    uncounted(made);
}
void operator delete[](void* made, std::size_t) noexcept {
    uncounted(made);
}

namespace vistels {
namespace {

template <class Work>
std::size_t most_needed(Work work) {
    const std::size_t objects_before = objects_in_use;
    const std::size_t taken_before = taken();
    most_objects = objects_before;
    most_taken = taken_before;
    calls = 0;
    counting = true;
    work();
    raise(most_taken, taken());
    counting = false;
    return std::max(most_objects - objects_before, most_taken - taken_before);
}

std::string repeated(const std::string& part, std::size_t bytes) {
    std::string text;
    while (text.size() + part.size() <= bytes) text += part;
    return text;
}

std::string attributes(std::size_t bytes) {
    std::string text;
    for (std::size_t number = 0; text.size() < bytes; ++number) {
        text += ' ';
        for (std::size_t rest = number + 1; rest > 0; rest /= 52) {
            text += "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ"[rest % 52];
        }
        text += "=\"\"";
    }
    return text;
}

std::string around(const std::string& before, const std::string& body, const std::string& after) {
    return "<plist version=\"1.0\">" + before + body + after + "</plist>";
}

std::vector<std::string> greedy_files(std::size_t bytes) {
    const auto array = [&](const std::string& part) {
        return around("<array>", repeated(part, bytes), "</array>");
    };
    const auto dictionary = [&](const std::string& part) {
        return around("<dict>", repeated(part, bytes), "</dict>");
    };
    const auto written = [&](const std::string& part) {
        return std::string(property_list_head) + part + std::string(property_list_foot);
    };
    std::string deep = "<true/>";
    for (int level = 0; level < 126; ++level) deep = "<array>" + deep + "</array>";
    return {
        array("<true/>"),
        array("<string/>"),
        array("<array/>"),
        array("<array><true/></array>"),
        array("<dict/>"),
        array("<dict><key/><dict/></dict>"),
        array("<data/>"),
        array("<string>0123456789abcdef</string>"),
        array("<string>&#13;0123456789abcdef</string>"),
        array(deep),
        dictionary("<key/><true/>"),
        dictionary("<key/><array/>"),
        dictionary("<key>0123456789abcdef</key><true/>"),
        around("<string>", repeated("a", bytes), "</string>"),
        around("<string>", repeated("&#13;", bytes), "</string>"),
        around("<data>", repeated("AAAA", bytes), "</data>"),
        around("<true/><!--", repeated("a", bytes), "-->"),
        around("<true" + attributes(bytes), "/>", ""),
        "<plist" + attributes(bytes) + "><true/></plist>",
        "<plist><array>" + repeated("<true a=\"\"/>", bytes) + "</array></plist>",
        "<!DOCTYPE plist [" + repeated("<!ATTLIST a b CDATA \"\">", bytes) + "]><plist><true/></plist>",
        "<!DOCTYPE plist [" + repeated("<!ENTITY a \"b\">", bytes) + "]><plist><true/></plist>",
        "<" + repeated("a", bytes) + "/>",
        written("<array>\n" + repeated("\t<true/>\n", bytes) + "</array>\n"),
        written("<array>\n" + repeated("\t<array/>\n", bytes) + "</array>\n"),
        written("<dict>\n" + repeated("\t<key></key>\n\t<true/>\n", bytes) + "</dict>\n"),
        written("<array>\n" + repeated("\t<string>&amp;</string>\n", bytes) + "</array>\n"),
        written("<array>\n" + repeated("\t<data>AAAA</data>\n", bytes) + "</array>\n"),
    };
}

TEST(property_list, no_file_makes_reading_it_need_more_than_twenty_times_its_size) {
    constexpr std::size_t beside = 1 << 20;
    for (const std::size_t bytes : {20'000U, 500'000U, 900'000U}) {
        for (const auto& file : greedy_files(bytes)) {
            const std::size_t strict = most_needed([&] { (void)read_property_list(file, "x"); });
            const std::size_t quick = most_needed([&] {
                stored_arena arena;
                property_list_cursor cursor(file);
                (void)cursor.read(arena);
            });
            const std::size_t allowed = 20 * file.size() + beside;
            EXPECT_LE(strict, allowed) << file.size() << " bytes, " << file.substr(0, 120);
            EXPECT_LE(quick, allowed) << file.size() << " bytes, " << file.substr(0, 120);
        }
    }
}

TEST(property_list, refuses_what_would_need_memory_without_holding_values) {
    struct {
        std::string file;
        const char* reason;
    } const cases[] = {
        {"<!DOCTYPE plist [<!ENTITY a \"b\">]><plist><string>&a;</string></plist>", "declares entities"},
        {"<!DOCTYPE plist [<!ATTLIST a b CDATA \"\">]><plist><true/></plist>", "declares entities"},
        {"<!DOCTYPE plist PUBLIC \"a\" \"b\"><plist><string>a&b;c</string></plist>", "\"b\" is not known"},
        {"<plist><true a=\"\"/></plist>", "attributes"},
        {"<plist><!--" + std::string(3'000'000, 'a') + "--><true/></plist>", "too long"},
    };
    for (const auto& one : cases) {
        const auto read = read_property_list(one.file, "the file");
        ASSERT_FALSE(read) << one.reason;
        EXPECT_NE(read.message().find("the file"), std::string::npos) << read.message();
        EXPECT_NE(read.message().find(one.reason), std::string::npos) << read.message();
    }
    // Texts and blanks may be as long as they like.
    const std::string blanks(3'000'000, '\n');
    const std::string text(3'000'000, 'a');
    const auto read =
        read_property_list("<!DOCTYPE plist PUBLIC \"a\" \"b\">" + blanks + "<plist version=\"1.0\">" +
                               blanks + "<string>" + text + "</string>" + blanks + "</plist>" + blanks,
                           "x");
    ASSERT_TRUE(read) << read.message();
    EXPECT_EQ(read.value(), property_value(text));
}

}  // namespace
}  // namespace vistels
