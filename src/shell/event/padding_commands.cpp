// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/event/padding_commands.h"

#include <QWidget>
#include <utility>

#include "app/event/open_event.h"
#include "shell/event/event_session.h"
#include "shell/kit/progress_dialog.h"
#include "video/vault_lock.h"

namespace vistels {

padding_commands::padding_commands(QWidget& window, event_session& session, run_loop& loop)
    : window_(window), session_(session), loop_(loop) {}

padding_commands::~padding_commands() = default;

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

void padding_commands::run(padding_command which) {
    open_event* event = session_.shown_event();
    if (!event || !event->has_collection() || work_) return;
    session_.player().pause();
    auto planned = plan_padding(event->collection(), which);
    if (!planned) return tell_failure(planned.message());
    const QString title = tr(padding_command_title(which));
    work_ = std::make_unique<progress_dialog>(title, tr("Blank movies are written where they are needed."),
                                              loop_, &window_);
    work_->start(
        [files = planned.value().files, blank = event->blank_movie(),
         in = event->folder()](job& work) -> result<std::string> {
            const auto lock = vault_lock::take_around(in);
            if (!lock) return lock.error();
            if (const auto made = make_padding_files(files, *blank, work); !made) return made.error();
            return std::string();
        },
        [this, planned = std::move(planned).value(), folder = session_.folder()](
            const result<std::string>& outcome, bool cancelled) {
            work_.release()->deleteLater();
            finish(planned, folder, outcome ? std::string() : outcome.message(), cancelled);
        });
}

void padding_commands::finish(const planned_padding& planned, const std::string& folder,
                              const std::string& problem, bool cancelled) {
    open_event* event = session_.shown_event();
    const bool is_there = event && session_.folder() == folder;
    if (cancelled || !problem.empty()) {
        if (is_there) remove_unused_padding_files(event->collection());
        if (!cancelled) tell_failure(problem);
        return;
    }
    if (!is_there) return;
    if (const auto done = event->changes().make(planned.change); !done) {
        remove_unused_padding_files(event->collection());
        tell_failure(done.message());
    }
}

void padding_commands::tell_failure(const std::string& message) {
    Q_EMIT told({user_message::tone::error,
                 tr("The offsets were not changed"),
                 QString::fromStdString(message),
                 {},
                 {}});
}

}  // namespace vistels
