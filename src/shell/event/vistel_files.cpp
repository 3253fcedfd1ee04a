// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/event/vistel_files.h"

#include <QFileDialog>
#include <QInputDialog>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QStandardPaths>
#include <QVBoxLayout>
#include <utility>

#include "app/event/close_vistel.h"
#include "app/event/open_event.h"
#include "app/event/part_changes.h"
#include "app/event/vistel_changes.h"
#include "app/settings/settings.h"
#include "app/settings/user_name.h"
#include "app/vaults/trash.h"
#include "shell/event/event_session.h"
#include "shell/kit/controls.h"
#include "shell/kit/progress_dialog.h"
#include "shell/kit/theme.h"
#include "shell/panes/collection/collection_view.h"
#include "shell/panes/collection/vistel_geometry.h"
#include "shell/panes/collection/vistel_placing.h"
#include "util/file_system.h"
#include "video/synchronised_playback.h"
#include "video/vault_lock.h"
#include "video/video_coll_Duplicate_funcs.h"
#include "video/video_coll_Pictures.h"
#include "video/video_coll_Playback.h"

namespace vistels {

namespace {

QString name_of(const single_Vistel_CTR& vistel) {
    return QString::fromStdString(vistel.name());
}

std::set<std::string> uuids_of(const open_event* event) {
    std::set<std::string> all;
    if (!event) return all;
    for (const auto& one : event->collection().vistels()) all.insert(one->uuid());
    return all;
}

}  // namespace

adding_panel::adding_panel(const QStringList& movies, const QString& vistel,
                           std::vector<adding_choice> choices, QWidget* parent)
    : QDialog(parent) {
    const theme_metrics& metrics = theme::current().metrics;
    setObjectName(QStringLiteral("add_movies"));
    setWindowTitle(tr("Add Movies"));
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(metrics.group_gap, metrics.group_gap, metrics.group_gap, metrics.group_gap);
    column->setSpacing(metrics.grid);
    const QString what =
        movies.size() == 1
            ? QStringLiteral("“%1”").arg(QString::fromStdString(path_name(movies.front().toStdString())))
            : tr("%1 files").arg(movies.size());
    const QString title = vistel.isEmpty() ? tr("Add %1 to the collection").arg(what)
                                           : tr("Add %1, dropped on “%2”").arg(what, vistel);
    auto* headline = make_label(title, type_step::headline, {}, this);
    headline->setWordWrap(true);
    column->addWidget(headline);
    for (const auto& one : choices) {
        column->addSpacing(metrics.padding);
        auto* button = make_push_button(tr(one.title),
                                        &one == &choices.front() ? QStringLiteral("first") : QString(), this);
        button->setObjectName(QStringLiteral("add_movies.%1").arg(static_cast<int>(one.how)));
        button->setToolTip(tr(one.explanation));
        button->setAccessibleDescription(tr(one.explanation));
        connect(button, &QPushButton::clicked, this, [this, how = one.how] {
            accept();
            Q_EMIT chosen(how);
        });
        column->addWidget(button);
        if (qstrcmp(one.title, one.explanation) == 0) continue;
        auto* explanation =
            make_label(tr(one.explanation), type_step::secondary, QStringLiteral("muted"), this);
        explanation->setWordWrap(true);
        column->addWidget(explanation);
    }
    column->addSpacing(metrics.wide_padding);
    auto* cancel = make_push_button(tr("Cancel"), {}, this);
    cancel->setObjectName(QStringLiteral("add_movies.cancel"));
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    column->addWidget(cancel, 0, Qt::AlignRight);
    setFixedWidth(metrics.filter_width);
}

vistel_files::vistel_files(QWidget& window, collection_view& view, event_session& session, home_places places,
                           run_loop& loop)
    : window_(window), view_(view), session_(session), places_(std::move(places)), loop_(loop) {
    connect(&view, &collection_view::movies_dropped, this,
            [this](const QStringList& movies, const QString& vistel) { add(movies, vistel.toStdString()); });
    connect(&session, &event_session::opened, this, [this] {
        known_ = uuids_of(event());
        made_ = session_.shown_event()->changes().made.connect([this](double) { bring_back_closed(); });
    });
    connect(&session, &event_session::closed, this, [this] {
        made_.disconnect();
        known_.clear();
    });
}

vistel_files::~vistel_files() = default;

open_event* vistel_files::event() const {
    open_event* shown = session_.shown_event();
    return shown && shown->has_collection() ? shown : nullptr;
}

std::shared_ptr<single_Vistel_CTR> vistel_files::find(const std::string& vistel) const {
    return event() ? event()->collection().find_vistel(vistel) : nullptr;
}

new_vistels vistel_files::made_with() const {
    const bool beside = load_local_video_data(places_).in_collection_folder;
    return {new_vistels_folder(event()->folder(), beside), load_user_name(places_), false};
}

bool vistel_files::make(const collection_change& change) {
    if (!event()) return false;
    bool is_made = false;
    const connection seen = event()->changes().made.connect([&](double) { is_made = true; });
    const auto done = event()->changes().make(change);
    if (!done) tell_failure(tr("This could not be changed"), done.message());
    return done.ok() || is_made;
}

void vistel_files::ask_movies(const std::string& vistel) {
    const auto record = find(vistel);
    if (!event() || (!record && !vistel.empty())) return;
    const QString movies = tr("Movies (*.mp4 *.mov *.m4v *.mkv *.avi *.mts *.m2ts *.webm *.mpg *.ts)");
    const QString pictures = tr("Pictures (*.png *.jpg *.jpeg)");
    const QString all = tr("All files (*)");
    const QString title =
        record ? tr("Append Movies to “%1”").arg(name_of(*record)) : tr("Add Movies to the Collection");
    const QStringList kinds = record ? QStringList{movies, all} : QStringList{movies, pictures, all};
    const QStringList chosen =
        QFileDialog::getOpenFileNames(&window_, title, {}, kinds.join(QStringLiteral(";;")));
    if (chosen.isEmpty()) return;
    record ? add_as(chosen, vistel, movies_as::parts_of_existing) : add(chosen, {});
}

void vistel_files::ask_missing_movie(const std::string& vistel) {
    const auto record = find(vistel);
    if (!record) return;
    const QString movie =
        QFileDialog::getOpenFileName(&window_, tr("Find a Movie of “%1”").arg(name_of(*record)));
    if (!movie.isEmpty()) bring_missing_movie(vistel, movie);
}

void vistel_files::bring_missing_movie(const std::string& vistel, const QString& movie) {
    const auto record = find(vistel);
    if (!record) return;
    auto brought = std::make_shared<std::vector<movie_Part_DRONE_Offset_Item>>();
    run(
        tr("Bringing a movie of “%1”").arg(name_of(*record)),
        tr("The movie is brought into “%1”.").arg(session_.name()),
        [record, path = movie.toStdString(), brought](job& work) -> result<void> {
            auto made = bring_parts(*record, {path}, work);
            if (!made) return made.error();
            *brought = std::move(made).value();
            return {};
        },
        [this, vistel, brought] {
            if (!make(plan_found_movie(vistel, brought->front()))) discard(*brought);
        },
        tr("The movie could not be used"));
}

void vistel_files::ask_name(const std::string& vistel) {
    const auto record = find(vistel);
    if (!record) return;
    auto* dialog = new QInputDialog(&window_);
    dialog->setObjectName(QStringLiteral("vistel.ask_name"));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setWindowTitle(tr("Rename Vistel"));
    dialog->setLabelText(tr("Name of the vistel:"));
    dialog->setTextValue(name_of(*record));
    connect(dialog, &QInputDialog::textValueSelected, this, [this, vistel](const QString& typed) {
        const QString name = typed.simplified();
        const auto now = find(vistel);
        if (!now || name.isEmpty() || name == name_of(*now)) return;
        make(plan_name(vistel, name.toStdString()));
    });
    dialog->open();
}

void vistel_files::add(const QStringList& movies, const std::string& vistel) {
    if (!event() || movies.isEmpty()) return;
    const auto record = find(vistel);
    const auto choices = adding_choices(static_cast<std::size_t>(movies.size()), record != nullptr);
    if (choices.size() == 1) return add_as(movies, vistel, choices.front().how);
    auto* panel = new adding_panel(movies, record ? name_of(*record) : QString(), choices, &window_);
    panel->setAttribute(Qt::WA_DeleteOnClose);
    connect(panel, &adding_panel::chosen, this,
            [this, movies, vistel](movies_as how) { add_as(movies, vistel, how); });
    panel->open();
}

void vistel_files::add_as(const QStringList& movies, const std::string& vistel, movies_as how) {
    if (!event()) return;
    std::vector<std::string> paths;
    for (const QString& one : movies) {
        const auto found = movies_of_item(one.toStdString());
        if (!found) return tell_failure(tr("The movies could not be added"), found.message());
        paths.insert(paths.end(), found.value().begin(), found.value().end());
    }
    const QString words = tr("The movies are brought into “%1”.").arg(session_.name());
    const QString failed = tr("The movies could not be added");
    if (how == movies_as::parts_of_existing) {
        const auto record = find(vistel);
        if (!record) return;
        auto brought = std::make_shared<std::vector<movie_Part_DRONE_Offset_Item>>();
        run(
            tr("Adding movies to “%1”").arg(name_of(*record)), words,
            [record, paths, brought](job& work) -> result<void> {
                auto made = bring_parts(*record, paths, work);
                if (!made) return made.error();
                *brought = std::move(made).value();
                return {};
            },
            [this, vistel, brought] {
                if (!make(plan_more_parts(vistel, *brought))) discard(*brought);
            },
            failed);
        return;
    }
    auto made = std::make_shared<vistel_list>();
    run(
        tr("Adding movies"), words,
        [with = made_with(), paths, how, made](job& work) -> result<void> {
            auto brought = make_vistels(with, paths, how, work);
            if (!brought) return brought.error();
            *made = std::move(brought).value();
            return {};
        },
        [this, made] { put_in(*made, made->size() == 1 ? tr("Add Vistel") : tr("Add Vistels")); }, failed);
}

void vistel_files::put_in(const vistel_list& made, const QString& name) {
    if (!event()) return discard(made);
    const std::string collection = event()->collection().uuid();
    if (!make_and_place(plan_new_vistels(made, &event()->timeline()), collection, name)) discard(made);
}

void vistel_files::remove(const std::string& vistel) {
    const auto lock = vault_lock::take_around(session_.folder());
    if (!lock) return tell_failure(tr("This could not be changed"), lock.message());
    make_and_place(plan_removal(vistel), vistel, tr("Remove Vistel"));
}

void vistel_files::move(const std::string& vistel, std::size_t place) {
    const auto lock = vault_lock::take_around(session_.folder());
    if (!lock) return tell_failure(tr("This could not be changed"), lock.message());
    make_and_place(plan_place(vistel, place), vistel, tr("Move collection vistel"));
}

bool vistel_files::make_and_place(collection_change change, const std::string& vistel, const QString& name) {
    change.name = name.toStdString();
    change.scope = vistel;
    const double aspect = view_.picture_aspect();
    change.change = [plain = change.change, aspect](video_collection_ROOT& copy) -> result<void> {
        const auto before = placing_of(copy, aspect);
        if (auto done = plain(copy); !done) return done;
        place_again(copy, before, aspect);
        return {};
    };
    return make(change);
}

void vistel_files::duplicate(const std::string& vistel) {
    const auto record = find(vistel);
    if (!record) return;
    auto made = std::make_shared<vistel_list>();
    run(
        tr("Duplicating “%1”").arg(name_of(*record)), tr("Its movies are brought to the new vistel."),
        [record, with = made_with(), made](job& work) -> result<void> {
            auto clone = duplicate_vistel(*record, with, work);
            if (!clone) return clone.error();
            made->push_back(std::move(clone).value());
            return {};
        },
        [this, made] { put_in(*made, tr("Duplicate Vistel")); }, tr("The vistel could not be duplicated"));
}

void vistel_files::deinterlace(const std::string& vistel) {
    const auto record = find(vistel);
    if (!record) return;
    auto parts = std::make_shared<std::vector<movie_Part_DRONE_Offset_Item>>();
    run(
        tr("Deinterlacing “%1”").arg(name_of(*record)),
        tr("Each of its movies is written anew, with a picture for each field. This takes about as long as "
           "playing it. The movies that it has now are kept with the vistel."),
        [record, parts](job& work) -> result<void> {
            auto made = deinterlaced_parts(*record, work);
            if (!made) return made.error();
            *parts = std::move(made).value();
            return {};
        },
        [this, vistel, parts] {
            if (!make(plan_other_parts(vistel, *parts))) discard(*parts);
        },
        tr("The vistel could not be deinterlaced"));
}

void vistel_files::copy_movie(const std::string& vistel, const std::string& folder) {
    const auto record = find(vistel);
    if (!record) return;
    const std::string desktop =
        folder.empty() ? QStandardPaths::writableLocation(QStandardPaths::DesktopLocation).toStdString()
                       : folder;
    auto copies = std::make_shared<std::vector<std::string>>();
    run(
        tr("Copying the movie of “%1”").arg(name_of(*record)), tr("It is copied to the desktop."),
        [record, desktop, copies](job& work) -> result<void> {
            auto made = copy_vistel_movie(*record, desktop, work);
            if (!made) return made.error();
            *copies = std::move(made).value();
            return {};
        },
        [this, copies] {
            QStringList names;
            for (const auto& one : *copies)
                names << QStringLiteral("“%1”").arg(QString::fromStdString(path_name(one)));
            Q_EMIT told({user_message::tone::good,
                         tr("The movie is on the desktop"),
                         names.join(QStringLiteral(", ")),
                         {},
                         {}});
        },
        tr("The movie could not be copied"));
}

void vistel_files::close_for_good(const std::string& vistel) {
    const auto record = find(vistel);
    if (!record) return;
    const QString name = name_of(*record);
    if (const auto refusal = close_vistel_refusal(event()->collection(), *record); !refusal.empty())
        return tell_failure(tr("“%1” is not closed").arg(name), refusal);
    const auto warning = close_vistel_warning(*record, load_user_name(places_));
    const QString usual =
        tr("If you click 'Close Vistel' this will close the vistel and move the movie data to the trash.  "
           "The movie data will then not be available for others.");
    const QString words =
        warning ? QString::fromStdString(*warning).replace(QLatin1Char('\r'), QLatin1Char('\n')) : usual;
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
    const QString name = name_of(*record);
    bool is_told = false;
    const auto take_out = [&](const collection_change& change) -> result<void> {
        is_told = !make_and_place(change, vistel, tr("Remove Vistel"));
        return is_told ? failure{"it was told"} : result<void>();
    };
    const auto closed = close_vistel_for_good(
        event()->collection(), {vistel, load_user_name(places_), true, places_.trash}, take_out);
    if (is_told) return;
    if (!closed) return tell_failure(tr("“%1” is not closed").arg(name), closed.message());
    if (!closed.value().problem.empty()) {
        return tell_failure(tr("The vistel is closed; its movie data stayed in its place"),
                            closed.value().problem);
    }
    if (!closed.value().data) return;
    Q_EMIT told({user_message::tone::good,
                 tr("“%1” is closed").arg(name),
                 tr("Its movie data is in the trash. Undo brings it back."),
                 {},
                 {}});
}

// Also in another run than that in which it was closed: the undo history lasts longer than that.
void vistel_files::bring_back_closed() {
    const auto known = std::exchange(known_, uuids_of(event()));
    for (const auto& vistel : known_) {
        const std::string folder = find(vistel)->data_folder();
        if (known.contains(vistel) || folder.empty() || is_folder(folder)) continue;
        const auto data = find_in_trash(folder, places_.trash);
        if (!data) continue;
        const auto lock = vault_lock::take_around(folder);
        const auto back = lock ? restore_from_trash(*data, folder) : result<void>(lock.error());
        if (!back) tell_failure(tr("The movie data is still in the trash"), back.message());
        play_again(vistel);
    }
}

// Playback looks for its movies anew.
void vistel_files::play_again(const std::string& vistel) {
    auto all = playback_vistels_of(event()->collection());
    std::erase_if(all, [&](const auto& one) { return one.uuid == vistel; });
    event()->playback().set_vistels(std::move(all));
    event()->playback().set_vistels(playback_vistels_of(event()->collection()));
}

void vistel_files::ask_overlay(const std::string& vistel) {
    const auto record = find(vistel);
    if (!record) return;
    const QString picture = QFileDialog::getOpenFileName(
        &window_, tr("Overlay for “%1”").arg(name_of(*record)), {}, tr("Pictures (*.png *.jpg *.jpeg)"));
    if (picture.isEmpty()) return;
    auto overlay = std::make_shared<vistel_overlay>();
    run(
        tr("Adding the overlay"), {},
        [record, path = picture.toStdString(), overlay](job& work) -> result<void> {
            auto made = bring_overlay(*record, path, work);
            if (!made) return made.error();
            *overlay = std::move(made).value();
            return {};
        },
        [this, vistel, overlay] { make(plan_overlay(vistel, *overlay)); },
        tr("The overlay could not be added"));
}

void vistel_files::remove_overlay(const std::string& vistel) {
    make(plan_overlay(vistel, std::nullopt));
}

// The work's window keeps the user from closing the event meanwhile; a window that went all the same takes
// the work with it.
void vistel_files::run(const QString& title, const QString& words, std::function<result<void>(job&)> does,
                       std::function<void()> then, const QString& failed) {
    work_ = std::make_unique<progress_dialog>(title, words, loop_, &window_);
    const auto work = [does = std::move(does)](job& one) -> result<std::string> {
        if (const auto done = does(one); !done) return done.error();
        return std::string();
    };
    work_->start(work, [this, then = std::move(then), failed, folder = session_.folder()](
                           const result<std::string>& outcome, bool cancelled) {
        work_.release()->deleteLater();
        if (!outcome) {
            if (!cancelled) tell_failure(failed, outcome.message());
            return;
        }
        if (session_.folder() == folder) then();
    });
}

void vistel_files::tell_failure(const QString& headline, const std::string& message) {
    Q_EMIT told({user_message::tone::error, headline, QString::fromStdString(message), {}, {}});
}

}  // namespace vistels
