// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/second_writer.h"

#include <iostream>

#include "support/timeline_builder.h"
#include "timeline/files/timeline_document.h"
#include "util/plain_run_loop.h"

namespace vistels::testing {

namespace {

void answer(const result<void>& done) {
    std::cout << (done ? "done" : done.message()) << std::endl;
}

}  // namespace

int run_second_writer(const std::string& folder) {
    plain_run_loop loop;
    const auto opened = timeline_document::open(folder, loop);
    if (!opened) {
        answer(opened.error());
        return 1;
    }
    timeline_document& document = *opened.value();
    std::cout << (document.is_read_only() ? "reads" : "writes") << std::endl;
    int coded = 0;
    for (std::string command; std::getline(std::cin, command);) {
        if (command == "take over") {
            answer(document.try_to_write(true));
        } else if (command == "code") {
            const double start = 50 + 10 * ++coded;
            timeline_edit edit{"theirs", "", {}};
            edit.operations.emplace_back(operation::insert_clip{
                shared_text("r"), clip_of("theirs " + std::to_string(coded), start, start + 5)});
            answer(document.apply(std::move(edit)));
        }
    }
    return 0;
}

}  // namespace vistels::testing
