// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/event/undo_commands.h"

#include <utility>

#include "app/event/open_event.h"
#include "app/event/padding_changes.h"
#include "shell/event/command_failures.h"
#include "shell/event/event_session.h"
#include "shell/kit/failure_words.h"
#include "video/vault_lock.h"

namespace vistels {

namespace {

constexpr const char* what_undo = "undo";

}  // namespace

undo_commands::undo_commands(event_session& session, job_group& jobs) : session_(session), jobs_(jobs) {}

void undo_commands::go(direction which) {
    wanted_.reset();
    (void)take(which);
}

void undo_commands::go_to(std::size_t done) {
    wanted_ = done;
    go_on();
}

void undo_commands::go_on() {
    auto made = taking::done;
    while (wanted_ && made == taking::done) {
        open_event* event = session_.shown_event();
        const std::size_t done = event ? event->undo().done().size() : *wanted_;
        if (done == *wanted_) break;
        made = take(done > *wanted_ ? direction::back : direction::again);
    }
    if (made != taking::waits) wanted_.reset();
}

undo_commands::taking undo_commands::take(direction which) {
    open_event* event = session_.shown_event();
    // While a step waits for its movies the next press would take another one before it.
    if (!event) return taking::nothing_to_do;
    if (jobs_.has(what_undo)) return taking::waits;
    undo_stack& stack = event->undo();
    const undo_step* step = which == direction::back ? stack.next_undo() : stack.next_redo();
    if (!step) return taking::nothing_to_do;
    const bool may_need = event->has_collection() && !event->timeline().is_read_only();
    auto needed = may_need ? padding_needed_by(*step, event->collection()) : std::vector<padding_file>();
    if (!needed.empty()) {
        take_with(which, std::move(needed));
        return taking::waits;
    }
    const auto made = which == direction::back ? stack.undo() : stack.redo();
    session_.notices().tell(made);
    return made ? taking::done : taking::refused;
}

void undo_commands::take_with(direction which, std::vector<padding_file> needed) {
    open_event& event = *session_.shown_event();
    const undo_step& step = which == direction::back ? *event.undo().next_undo() : *event.undo().next_redo();
    const QString name = words_of_term(step.name);
    const std::string folder = session_.folder();
    event.collection_file().expect_parts();
    job_order order;
    order.title = (which == direction::back ? tr("Undo: %1") : tr("Redo: %1")).arg(name).toStdString();
    order.words = tr("Blank movies are written where they are needed.").toStdString();
    order.keys = {vault_lock_key(folder)};
    order.what = what_undo;
    order.work = [needed = std::move(needed), folder,
                  blank = event.blank_movie()](job& work) -> result<void> {
        const auto lock = vault_lock::take_around(folder);
        if (!lock) return lock.error();
        return make_padding_files(needed, *blank, work);
    };
    order.then = [this, which, folder, parts = step.parts](const result<void>& outcome, bool cancelled) {
        open_event* now = session_.shown_event();
        if (!now || session_.folder() != folder) return true;
        if (outcome && !cancelled) {
            finish(which, parts);
        } else if (!cancelled) {
            session_.notices().tell(outcome);
        }
        now->collection_file().note_change(true);  // what was written and is not used goes
        return true;
    };
    jobs_.start(std::move(order));
}

void undo_commands::finish(direction which, const std::shared_ptr<const std::vector<document_part>>& step) {
    undo_stack& stack = session_.shown_event()->undo();
    const undo_step* now = which == direction::back ? stack.next_undo() : stack.next_redo();
    if (!now || now->parts != step) {
        wanted_.reset();
        return session_.notices().tell(event_changed_meanwhile());
    }
    const auto made = which == direction::back ? stack.undo() : stack.redo();
    session_.notices().tell(made);
    if (made) {
        go_on();
    } else {
        wanted_.reset();
    }
}

}  // namespace vistels
