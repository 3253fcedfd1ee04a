// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/window/event_opener.h"

#include <QFileDialog>

#include "app/event/open_event.h"
#include "app/settings/user_name.h"
#include "app/vaults/known_vaults.h"
#include "app/vaults/vaults.h"
#include "logger/press_engine.h"
#include "shell/event/event_messages.h"
#include "shell/event/event_session.h"
#include "shell/kit/failure_words.h"
#include "shell/kit/job_words.h"
#include "shell/kit/work_panel.h"
#include "shell/panes/side_bar/vault_panels.h"
#include "util/file_system.h"
#include "video/synchronised_playback.h"
#include "video/vault_lock.h"
#include "video/video_coll_Files.h"
#include "video/video_coll_LOAD.h"
#if VISTELS_HAVE_MEDIA
#include "demo/demo_event.h"
#endif

namespace vistels {

namespace {

constexpr const char* what_demo = "demo event";
// Of a message, see user_message::key.
constexpr const char* jobs_unfinished_key = "jobs unfinished";
constexpr const char* reading_key = "an event is read";

// After which the user is told that an event is being opened.
constexpr double slow_seconds = 0.5;

}  // namespace

event_opener::event_opener(QWidget& window, home_places places, event_session& session, job_groups jobs,
                           work_panel& panel)
    : window_(window),
      places_(std::move(places)),
      session_(session),
      jobs_(jobs),
      panel_(&panel),
      reader_(session.loop()) {
    jobs_changed_ = jobs_.of_event.list().changed.connect([this] {
        if (asks_to_stop_ && jobs_.of_event.unfinished().empty()) take_back_question();
    });
}

event_opener::~event_opener() {
    reader_.give_back(std::move(waiting_));
    if (slow_timer_ != 0) session_.loop().stop_timer(slow_timer_);
}

void event_opener::open(const open_request& what) {
    switch (what.what) {
        case open_request::kind::nothing:
            return;
        case open_request::kind::collection:
        case open_request::kind::timeline:
            if (const std::string vault = vault_of(what.folder); !vault.empty()) remember_vault(vault);
            return open_folder(what.folder);
        case open_request::kind::vault:
            return open_vault(what.folder);
        case open_request::kind::movies:
            return make_collection(what.movies);
    }
}

void event_opener::open_paths(const std::vector<std::string>& paths) {
    const open_requests wanted = what_to_open(paths);
    for (const auto& why : wanted.refused) tell_failure(tr("This can't be opened"), why);
    if (wanted.found.empty()) {
        Q_EMIT settled();
        return;
    }
    open(wanted.found.front());
    for (auto more = wanted.found.begin() + 1; more != wanted.found.end(); ++more) Q_EMIT more_found(*more);
}

void event_opener::open_folder(const std::string& folder) {
    if (shown_elsewhere_ && shown_elsewhere_(folder)) {
        Q_EMIT settled();
        return;
    }
    if (session_.folder() == folder) {
        cancel();
        return;
    }
    if (!jobs_.of_event.unfinished().empty()) {
        ask_to_stop_jobs(folder);
        Q_EMIT settled();
        return;
    }
    read(folder);
}

void event_opener::read(const std::string& folder) {
    reader_.give_back(std::move(waiting_));
    tell_reading(folder);
    reader_.read(folder, places_, [this, folder](result<std::unique_ptr<open_event>> event) {
        if (event) return show(std::move(event).value());
        take_back_reading();
        tell_failure(tr("“%1” can't be opened").arg(QString::fromStdString(path_name(folder))),
                     event.error());
        Q_EMIT settled();
    });
}

// When the one that is open is saved, so that closing it takes no time.
void event_opener::show(std::unique_ptr<open_event> event) {
    waiting_ = std::move(event);
    session_.when_saved([this] {
        take_back_reading();
        session_.show(std::move(waiting_));
        Q_EMIT settled();
    });
}

void event_opener::cancel() {
    take_back_reading();
    reader_.give_back(std::move(waiting_));
    reader_.cancel();
    Q_EMIT settled();
}

// Only where it takes long enough to wonder.
void event_opener::tell_reading(const std::string& folder) {
    take_back_reading();
    slow_timer_ = session_.loop().start_timer(slow_seconds, false, [this, folder] {
        slow_timer_ = 0;
        user_message message{user_message::tone::warning,
                             tr("Opening “%1”").arg(QString::fromStdString(path_name(folder))),
                             tr("Its volume takes its time. You can go on meanwhile."),
                             {},
                             {{tr("Cancel"), [this] { cancel(); }}}};
        message.key = QLatin1String(reading_key);
        Q_EMIT told(message);
    });
}

void event_opener::take_back_reading() {
    if (slow_timer_ != 0) session_.loop().stop_timer(std::exchange(slow_timer_, 0));
    Q_EMIT state_over(QLatin1String(reading_key));
}

void event_opener::ask_to_stop_jobs(const std::string& folder) {
    const auto unfinished = jobs_.of_event.unfinished();
    const QString name = QString::fromStdString(path_name(folder));
    const QString headline = unfinished.size() == 1
                                 ? tr("“%1” is not finished").arg(job_title(unfinished.front()))
                                 : tr("%1 tasks of this event are not finished").arg(unfinished.size());
    user_message message{user_message::tone::warning,
                         headline,
                         tr("Opening “%1” in this window stops that. Nothing is left half made.").arg(name),
                         {},
                         {{tr("Stay"), {}}, {tr("Stop and Open"), [this, folder] {
                                                 jobs_.of_event.cancel_all();
                                                 open_folder(folder);
                                             }}}};
    message.comes_first = true;
    message.key = QLatin1String(jobs_unfinished_key);
    take_back_question();
    asks_to_stop_ = true;
    Q_EMIT told(message);
}

void event_opener::take_back_question() {
    asks_to_stop_ = false;
    Q_EMIT state_over(QLatin1String(jobs_unfinished_key));
}

void event_opener::remember_vault(const std::string& vault) {
    if (const auto added = add_known_vault(places_, vault); !added) {
        tell_failure(tr("The vault is not remembered"), added.error());
    }
    Q_EMIT content_changed();
}

void event_opener::open_vault(const std::string& vault) {
    remember_vault(vault);
    const std::string first = first_collection_in(vault);
    if (!first.empty()) return open_folder(first);
    Q_EMIT told({user_message::tone::warning,
                 tr("“%1” holds no collection yet").arg(QString::fromStdString(path_name(vault))),
                 tr("Make one: File, New Collection, or New Collection from Movies."),
                 {},
                 {}});
    Q_EMIT settled();
}

void event_opener::open_last_or_demo(const std::string& open_last) {
    const auto is_gone = std::make_shared<bool>(false);  // set on the reader's queue, before it is done
    const auto find = [places = places_, open_last, is_gone]() -> result<std::string> {
        *is_gone = !open_last.empty() && !can_be_opened(open_last);
        return event_to_reopen(places, open_last);
    };
    reader_.find(find, [this, open_last, is_gone](const result<std::string>& folder) {
        if (*is_gone) Q_EMIT told(gone_message(open_last));
        if (!folder.value().empty()) return open_folder(folder.value());
        make_demo();
    });
}

void event_opener::make_demo() {
#if VISTELS_HAVE_MEDIA
    if (jobs_.of_window.has(what_demo)) {
        Q_EMIT settled();
        return;
    }
    demo_options options;
    options.cameras = demo_cameras_;
    options.seconds = demo_seconds_;
    const auto folder = std::make_shared<std::string>();
    job_order order;
    order.title = tr("Making a demo event").toStdString();
    order.words =
        tr("Four cameras film a small game of one minute, and the game is coded. This is done once and takes "
           "about half a minute; it opens by itself.")
            .toStdString();
    order.keys = {vault_lock_key(places_.home_vault)};
    order.what = what_demo;
    order.work = [vault = places_.home_vault, options, folder](job& work) -> result<void> {
        auto made = make_demo_collection(vault, options, work);
        if (!made) return made.error();
        *folder = made.value().collection;
        return {};
    };
    order.then = [this, folder](const result<void>& made, bool cancelled) {
        finish_demo(*folder, made, cancelled);
        return true;
    };
    const auto id = jobs_.of_window.start(std::move(order));
    if (panel_) panel_->follow(id, true);
#else
    Q_EMIT settled();
#endif
}

void event_opener::finish_demo(const std::string& folder, const result<void>& made, bool cancelled) {
    Q_EMIT content_changed();
    if (made && !session_.is_open() && !is_at_work()) return open_folder(folder);
    if (made) {
        tell_ready(tr("The demo event is ready"), folder, {});
    } else if (!cancelled) {
        tell_failure(tr("The demo event could not be made"), made.error());
    }
    Q_EMIT settled();
}

void event_opener::tell_ready(const QString& headline, const std::string& folder,
                              std::vector<user_message::choice> choices) {
    const QString vault = QString::fromStdString(path_name(vault_of(folder)));
    Q_EMIT told({user_message::tone::good,
                 headline,
                 tr("It is in the side bar, in “%1”.").arg(vault),
                 {},
                 std::move(choices)});
}

void event_opener::set_demo_size(int cameras, int seconds) {
    demo_cameras_ = cameras;
    demo_seconds_ = seconds;
}

std::string event_opener::vault_for_new() const {
    return focus_vault_of(places_).path;
}

void event_opener::make_collection(const std::vector<std::string>& movies) {
    const std::string name = name_from_movies(movies);
    const std::string vault = vault_for_new();
    const std::string folder = new_collection_folder(vault, name);
    const QString shown = QString::fromStdString(name);
    job_order order;
    order.title = tr("Making the collection “%1”").arg(shown).toStdString();
    order.words =
        tr("The movies are brought into “%1”.").arg(QString::fromStdString(path_name(vault))).toStdString();
    order.keys = {vault_lock_key(vault)};
    order.work = [folder, name, movies, user = load_user_name(places_)](job& work) -> result<void> {
        return new_collection(folder, name, movies, movies_as::vistel_each, work, user);
    };
    order.then = [this, folder, asked_in = event_state()](const result<void>& made, bool cancelled) {
        Q_EMIT content_changed();
        if (made) {
            finish_collection(folder, asked_in == event_state() && !is_coding() && !is_at_work());
            return true;
        }
        if (!cancelled) tell_failure(tr("The collection could not be made"), made.error());
        Q_EMIT settled();
        return true;
    };
    const auto id = jobs_.of_window.start(std::move(order));
    if (panel_) panel_->follow(id, false);
}

// Nobody who has gone on working meanwhile is taken away from it.
void event_opener::finish_collection(const std::string& folder, bool is_waited_for) {
    if (is_waited_for || (!session_.is_open() && !is_at_work())) return open_folder(folder);
    tell_ready(tr("“%1” is ready").arg(QString::fromStdString(path_name(folder))), folder,
               {{tr("Continue"), {}}, {tr("Open"), [this, folder] { open_folder(folder); }}});
    Q_EMIT settled();
}

// Which event is open, and what was done last in it.
std::pair<std::string, const void*> event_opener::event_state() const {
    open_event* event = session_.shown_event();
    const undo_step* last = event ? event->undo().next_undo() : nullptr;
    return {session_.folder(), last ? last->parts.get() : nullptr};
}

bool event_opener::is_coding() const {
    open_event* event = session_.shown_event();
    return event && (event->playback().is_playing() || !event->logger().down_buttons().empty());
}

void event_opener::tell_failure(const QString& headline, const failure& reason) {
    Q_EMIT told({user_message::tone::error, headline, words_of(reason), {}, {}});
}

void event_opener::ask_new_collection() {
    const QStringList chosen = QFileDialog::getOpenFileNames(
        &window_, tr("New Collection from Movies"), {},
        tr("Movies (*.mp4 *.mov *.m4v *.mkv *.avi *.mts *.m2ts *.webm *.mpg *.ts);;All files (*)"));
    std::vector<std::string> movies;
    for (const QString& one : chosen) movies.push_back(one.toStdString());
    if (!movies.empty()) make_collection(movies);
}

void event_opener::ask_new_empty() {
    std::vector<std::string> vaults;
    for (auto& vault : known_vaults(places_)) {
        if (is_folder(vault)) vaults.push_back(std::move(vault));
    }
    auto* panel = new new_collection_panel(vaults, vault_for_new(), &window_);
    panel->setAttribute(Qt::WA_DeleteOnClose);
    connect(panel, &QDialog::accepted, this, [this, panel] { make_empty(panel->name(), panel->vault()); });
    panel->open();
}

// No job that is listed: there is nothing to bring.
void event_opener::make_empty(const std::string& name, const std::string& vault) {
    const auto make = [name, vault, user = load_user_name(places_)]() -> result<std::string> {
        const std::string folder = new_collection_folder(vault, name);
        job work;
        const auto made = new_collection(folder, name, {}, movies_as::vistel_each, work, user);
        return made ? result<std::string>(folder) : made.error();
    };
    reader_.find(make, [this](const result<std::string>& folder) {
        if (!folder) {
            tell_failure(tr("The collection could not be made"), folder.error());
            Q_EMIT settled();
            return;
        }
        Q_EMIT content_changed();
        open_folder(folder.value());
    });
}

void event_opener::ask_open() {
    const QString start = QString::fromStdString(places_.home_vault);
    const QString chosen =
        QFileDialog::getExistingDirectory(&window_, tr("Open a Collection or a Vault"), start);
    if (!chosen.isEmpty()) open_paths({chosen.toStdString()});
}

}  // namespace vistels
