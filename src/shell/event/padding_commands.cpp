// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/event/padding_commands.h"

#include <memory>
#include <utility>

#include "app/event/open_event.h"
#include "shell/event/command_failures.h"
#include "shell/event/event_session.h"
#include "shell/kit/failure_words.h"
#include "video/vault_lock.h"

namespace vistels {

namespace {

constexpr const char* what_padding = "padding";

}  // namespace

padding_commands::padding_commands(event_session& session, job_group& jobs)
    : session_(session), jobs_(jobs) {}

const std::vector<padding_commands::line>& padding_commands::commands() {
    static const std::vector<line> all = {
        {padding_command::replace_with_padding, "pad",
         "Blank movies take the place of start offsets and gaps; all vistels become equally long"},
        {padding_command::remove_offsets_and_padding, "unpad",
         "Every vistel begins at 0; blank movies and offsets are taken away"},
        {padding_command::restore_offsets, "unpad_to_offsets",
         "Blank movies are taken away; their lengths become offsets and gaps again"},
    };
    return all;
}

// It is planned when its turn has come: what was asked for before may change the collection first.
void padding_commands::run(padding_command which) {
    open_event* event = session_.shown_event();
    if (!event || !event->has_collection() || jobs_.has(what_padding)) return;
    const std::string folder = session_.folder();
    const auto planned = std::make_shared<planned_padding>();
    job_order order;
    order.title = words_of_term(padding_command_title(which)).toStdString();
    order.words = tr("Blank movies are written where they are needed.").toStdString();
    order.keys = {vault_lock_key(folder)};
    order.what = what_padding;
    order.begin = [this, which, planned]() -> result<void> {
        if (!session_.shown_event()) return event_is_closed();
        auto made = plan_padding(session_.shown_event()->collection(), which);
        if (!made) return made.error();
        *planned = std::move(made).value();
        session_.shown_event()->collection_file().expect_parts();
        return {};
    };
    order.work = [planned, folder, blank = event->blank_movie()](job& work) -> result<void> {
        const auto lock = vault_lock::take_around(folder);
        if (!lock) return lock.error();
        return make_padding_files(planned->files, *blank, work);
    };
    order.then = [this, planned, folder](const result<void>& outcome, bool cancelled) {
        finish(*planned, folder, outcome, cancelled);
        return true;
    };
    jobs_.start(std::move(order));
}

void padding_commands::finish(const planned_padding& planned, const std::string& folder,
                              const result<void>& outcome, bool cancelled) {
    open_event* event = session_.shown_event();
    const bool is_there = event && session_.folder() == folder;
    if (cancelled || !outcome) {
        if (is_there) event->collection_file().note_change(true);
        if (!cancelled) tell_failure(outcome.error());
        return;
    }
    if (!is_there) return;
    if (const auto done = event->changes().make(planned.change); !done) {
        event->collection_file().note_change(true);
        tell_failure(done.error());
    }
}

void padding_commands::tell_failure(const failure& reason) {
    session_.notices().tell_failure(tr("The offsets were not changed"), reason);
}

}  // namespace vistels
