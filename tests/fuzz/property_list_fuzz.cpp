// SPDX-License-Identifier: GPL-3.0-or-later
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "allocation_count.h"
#include "util/property_list.h"
#include "util/stored_sink.h"
#include "util/stored_view.h"

namespace {

using namespace vistels;

// Puts the value part by part, as records are.
void put(stored_sink& sink, std::string_view key, const stored_view& view) {
    if (view.is_array()) {
        sink.begin_array(key);
        for (const auto& item : view.items()) put(sink, {}, item);
        sink.end();
    } else if (view.is_dictionary()) {
        sink.begin_dictionary(key);
        for (const auto& member : view.members()) put(sink, member.key, member.value);
        sink.end();
    } else if (view.text()) {
        sink.put(key, *view.text());
    } else {
        sink.put(key, view.copy());
    }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    fuzz::count_allocations();
    return 0;
}

// What can be read can be written, the same by every way, and is then read as the same.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    const bool is_modest = fuzz::is_lean(size, "reading", [&] {
        stored_arena views;
        (void)read_property_list(input, "fuzz", views);
    });
    if (!is_modest) std::abort();
    const auto value = read_property_list(input, "fuzz");
    if (!value || value.value().is_null()) return 0;  // a lone unreadable number has no written form
    const auto written = write_property_list(value.value());
    const auto again = read_property_list(written, "written");
    if (!again || write_property_list(again.value()) != written) std::abort();

    stored_arena arena;
    property_list_sink bytes;
    put(bytes, {}, view_of(value.value(), arena));
    if (bytes.take() != written) std::abort();
    if (const auto* dictionary = value.value().dictionary()) {
        dictionary_sink built;
        for (const auto& member : view_of(*dictionary, arena).members()) put(built, member.key, member.value);
        if (write_property_list(property_value(built.take())) != written) std::abort();
    }
    return 0;
}
