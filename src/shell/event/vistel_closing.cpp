// SPDX-License-Identifier: GPL-3.0-or-later
// Vistels that are closed for good, and that come back by undo: their data goes to the trash and back.
#include <QMessageBox>
#include <QPushButton>
#include <utility>

#include "app/event/close_vistel.h"
#include "app/event/open_event.h"
#include "app/settings/user_name.h"
#include "app/vaults/trash.h"
#include "shell/event/command_failures.h"
#include "shell/event/event_session.h"
#include "shell/event/vistel_files.h"
#include "shell/kit/failure_words.h"
#include "util/file_system.h"
#include "video/synchronised_playback.h"
#include "video/vault_lock.h"
#include "video/video_coll_Playback.h"

namespace vistels {

namespace {

std::string what_moves(const std::string& folder) {
    return "trash " + folder;
}

}  // namespace

std::set<std::string> vistel_files::vistels_now() const {
    std::set<std::string> all;
    if (!event()) return all;
    for (const auto& one : event()->collection().vistels()) all.insert(one->uuid());
    return all;
}

void vistel_files::close_for_good(const std::string& vistel) {
    const auto record = find(vistel);
    if (!record) return;
    const QString name = QString::fromStdString(record->name());
    if (const auto refusal = close_vistel_refusal(event()->collection(), *record))
        return tell_failure(tr("“%1” is not closed").arg(name), refusal);
    const auto warning = close_vistel_warning(*record, load_user_name(places_));
    const QString usual =
        tr("If you click 'Close Vistel' this will close the vistel and move the movie data to the trash.  "
           "The movie data will then not be available for others.");
    const QString words = warning ? words_of(warning).replace(QLatin1Char('\r'), QLatin1Char('\n')) : usual;
    auto* question = new QMessageBox(QMessageBox::Warning, tr("Close “%1”").arg(name), words,
                                     QMessageBox::NoButton, &window_);
    question->setObjectName(QStringLiteral("close_vistel"));
    question->setAttribute(Qt::WA_DeleteOnClose);
    question->setTextFormat(Qt::PlainText);
    auto* keep = question->addButton(tr("Keep Vistel"), QMessageBox::RejectRole);
    auto* close = question->addButton(tr("Close Vistel"), QMessageBox::DestructiveRole);
    close->setObjectName(QStringLiteral("close_vistel.close"));
    question->setDefaultButton(keep);
    question->setEscapeButton(keep);
    connect(close, &QPushButton::clicked, this, [this, vistel] { close_now(vistel); });
    question->open();
}

void vistel_files::close_now(const std::string& vistel) {
    const auto record = find(vistel);
    if (!record) return;
    const QString name = QString::fromStdString(record->name());
    const QString failed = tr("“%1” is not closed").arg(name);
    if (is_busy(record->data_folder(), failed)) return;
    bool is_told = false;
    const auto take_out = [&](const collection_change& change) -> result<void> {
        is_told = !make_and_place(change, vistel);
        return is_told ? failure_was_told() : result<void>();
    };
    const auto taken = take_out_vistel(event()->collection(),
                                       {vistel, load_user_name(places_), true, places_.trash}, take_out);
    if (is_told) return;
    if (!taken) return tell_failure(failed, taken.error());
    if (!taken.value().empty()) move_data_away(vistel, name, taken.value());
}

void vistel_files::move_data_away(const std::string& vistel, const QString& name, const std::string& folder) {
    const auto closed = std::make_shared<closed_vistel>();
    job_order order;
    order.title = tr("Closing “%1”").arg(name).toStdString();
    order.words = tr("Its movie data is moved to the trash.").toStdString();
    order.keys = {vault_lock_key(folder)};
    order.what = what_moves(folder);
    order.work = [closed, folder, trash = places_.trash,
                  sync = event()->timeline().edit_sync()](job&) -> result<void> {
        // Lost power must not leave a vistel in the collection whose data is gone.
        const auto synced = sync();
        *closed = synced ? trash_vistel_data(folder, trash) : closed_vistel{std::nullopt, synced.error()};
        return {};
    };
    order.then = [this, closed, vistel, name](const result<void>&, bool) {
        if (closed->problem) {
            tell_failure(tr("The vistel is closed; its movie data stayed in its place"), closed->problem);
        } else if (closed->data && !find(vistel)) {
            tell_good(tr("“%1” is closed").arg(name),
                      tr("Its movie data is in the trash. Undo brings it back."));
        }
        return true;
    };
    moving_.start(std::move(order));
}

// Also in another run than that in which it was closed: the undo history lasts longer than that.
void vistel_files::bring_back_closed() {
    const auto known = std::exchange(known_, vistels_now());
    for (const auto& vistel : known_) {
        const std::string folder = find(vistel)->data_folder();
        if (known.contains(vistel) || folder.empty()) continue;
        if (!is_folder(folder) || moving_.has(what_moves(folder))) bring_back(vistel, folder);
    }
}

void vistel_files::bring_back(const std::string& vistel, const std::string& folder) {
    job_order order;
    order.title = tr("Bringing “%1” back").arg(QString::fromStdString(find(vistel)->name())).toStdString();
    order.words = tr("Its movie data comes back from the trash.").toStdString();
    order.keys = {vault_lock_key(folder)};
    order.work = [folder, trash = places_.trash](job&) -> result<void> {
        if (is_folder(folder)) return {};
        const auto data = find_in_trash(folder, trash);
        if (!data) return {};
        const auto lock = vault_lock::take_around(folder);
        return lock ? restore_from_trash(*data, folder) : result<void>(lock.error());
    };
    order.then = [this, vistel](const result<void>& outcome, bool cancelled) {
        if (!outcome && !cancelled) tell_failure(tr("The movie data is still in the trash"), outcome.error());
        if (find(vistel)) play_again(vistel);
        return true;
    };
    moving_.start(std::move(order));
}

// Playback looks for its movies anew.
void vistel_files::play_again(const std::string& vistel) {
    auto all = playback_vistels_of(event()->collection());
    std::erase_if(all, [&](const auto& one) { return one.uuid == vistel; });
    event()->playback().set_vistels(std::move(all));
    event()->playback().set_vistels(playback_vistels_of(event()->collection()));
}

}  // namespace vistels
