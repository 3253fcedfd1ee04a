// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/event/vistel_files.h"

#include <QFileDialog>
#include <QInputDialog>
#include <QStandardPaths>
#include <utility>

#include "app/event/change_names.h"
#include "app/event/open_event.h"
#include "app/event/part_changes.h"
#include "app/event/vistel_changes.h"
#include "app/settings/settings.h"
#include "app/settings/user_name.h"
#include "shell/event/adding_panel.h"
#include "shell/event/binder_list.h"
#include "shell/event/collection_binder.h"
#include "shell/event/command_failures.h"
#include "shell/event/event_session.h"
#include "shell/panes/collection/collection_pane.h"
#include "shell/panes/collection/collection_view.h"
#include "shell/panes/collection/vistel_geometry.h"
#include "shell/panes/collection/vistel_placing.h"
#include "util/file_system.h"
#include "video/vault_lock.h"
#include "video/video_coll_Duplicate_funcs.h"
#include "video/video_coll_Pictures.h"

namespace vistels {

namespace {

QString name_of(const single_Vistel_CTR& vistel) {
    return QString::fromStdString(vistel.name());
}

// In their order.
result<std::vector<std::string>> movies_of_items(const std::vector<std::string>& items) {
    std::vector<std::string> all;
    for (const auto& item : items) {
        const auto found = movies_of_item(item);
        if (!found) return found.error();
        all.insert(all.end(), found.value().begin(), found.value().end());
    }
    return all;
}

result<void> bring_into(part_list& brought, const single_Vistel_CTR& vistel,
                        const std::vector<std::string>& movies, job& work) {
    auto made = bring_parts(vistel, movies, work);
    if (!made) return made.error();
    brought = std::move(made).value();
    return {};
}

// Tells what is added from other movies that are.
std::string what_is_added(const std::vector<std::string>& items, const std::string& vistel) {
    std::string what = "add to " + vistel;
    for (const auto& item : items) what += "\n" + item;
    return what;
}

}  // namespace

vistel_files::vistel_files(QWidget& window, event_session& session, home_places places, job_groups jobs)
    : window_(window),
      session_(session),
      places_(std::move(places)),
      jobs_(jobs),
      moving_(jobs.of_window.list()) {
    connect(&session, &event_session::opened, this, [this] {
        known_ = vistels_now();
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

// For jobs: it stays as it is.
std::shared_ptr<const single_Vistel_CTR> vistel_files::copy_of(const std::string& vistel) const {
    const auto record = find(vistel);
    return record ? std::make_shared<const single_Vistel_CTR>(*record) : nullptr;
}

new_vistels vistel_files::made_with() const {
    const bool beside = load_local_video_data(places_).in_collection_folder;
    return {new_vistels_folder(event()->folder(), beside), load_user_name(places_), false};
}

bool vistel_files::make(const collection_change& change) {
    if (!event()) return false;
    const auto done = event()->changes().make(change);
    if (!done) tell_failure(tr("This could not be changed"), done.error());
    return done.ok();
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
    const auto record = copy_of(vistel);
    if (!record) return;
    const std::string path = movie.toStdString();
    const auto brought = std::make_shared<part_list>();
    bringing order;
    order.title = tr("Bringing a movie of “%1”").arg(name_of(*record));
    order.words = tr("The movie is brought into “%1”.").arg(session_.name());
    order.failed = tr("The movie could not be used");
    order.what = "missing " + vistel;
    order.folder = record->data_folder();
    order.vistel = vistel;
    order.bring = [record, path, brought](job& work) { return bring_into(*brought, *record, {path}, work); };
    order.put_in = [this, vistel, brought] { return make(plan_found_movie(vistel, brought->front())); };
    order.take_away = [brought] { discard(*brought); };
    run(std::move(order));
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
    std::vector<std::string> items;
    for (const QString& one : movies) items.push_back(one.toStdString());
    how == movies_as::parts_of_existing ? append(items, vistel) : add_vistels(items, how);
}

void vistel_files::append(const std::vector<std::string>& items, const std::string& vistel) {
    const auto record = copy_of(vistel);
    if (!record) return;
    const auto brought = std::make_shared<part_list>();
    bringing order;
    order.title = tr("Adding movies to “%1”").arg(name_of(*record));
    order.words = tr("The movies are brought into “%1”.").arg(session_.name());
    order.failed = tr("The movies could not be added");
    order.what = what_is_added(items, vistel);
    order.folder = record->data_folder();
    order.vistel = vistel;
    order.bring = [record, items, brought](job& work) -> result<void> {
        const auto found = movies_of_items(items);
        return found ? bring_into(*brought, *record, found.value(), work) : result<void>(found.error());
    };
    order.put_in = [this, vistel, brought] { return make(plan_more_parts(vistel, *brought)); };
    order.take_away = [brought] { discard(*brought); };
    run(std::move(order));
}

void vistel_files::add_vistels(const std::vector<std::string>& items, movies_as how) {
    const auto made = std::make_shared<vistel_list>();
    bringing order;
    order.title = tr("Adding movies");
    order.words = tr("The movies are brought into “%1”.").arg(session_.name());
    order.failed = tr("The movies could not be added");
    order.what = what_is_added(items, {});
    const auto with = made_with();
    order.folder = with.folder;
    order.bring = [with, items, how, made](job& work) -> result<void> {
        const auto found = movies_of_items(items);
        if (!found) return found.error();
        auto brought = make_vistels(with, found.value(), how, work);
        if (!brought) return brought.error();
        *made = std::move(brought).value();
        return {};
    };
    order.put_in = [this, made] {
        return make_and_place(plan_new_vistels(*made, &event()->timeline()), event()->collection().uuid());
    };
    order.take_away = [made] { discard(*made); };
    run(std::move(order));
}

void vistel_files::remove(const std::string& vistel) {
    change_vistels(plan_removal(vistel), vistel);
}

void vistel_files::move(const std::string& vistel, std::size_t place) {
    change_vistels(plan_place(vistel, place), vistel);
}

void vistel_files::change_vistels(const collection_change& change, const std::string& vistel) {
    const QString failed = tr("This could not be changed");
    if (is_busy(session_.folder(), failed)) return;
    const auto lock = vault_lock::take_around(session_.folder());
    if (!lock) return tell_failure(failed, lock.error());
    make_and_place(change, vistel);
}

bool vistel_files::make_and_place(collection_change change, const std::string& vistel) {
    change.scope = vistel;
    auto* shown = session_.binders().current<collection_binder>();
    const double aspect = shown ? shown->view().view().picture_aspect() : 0;
    change.change = [plain = change.change, aspect](video_collection_ROOT& copy) -> result<void> {
        const auto before = placing_of(copy, aspect);
        if (auto done = plain(copy); !done) return done;
        place_again(copy, before, aspect);
        return {};
    };
    return make(change);
}

void vistel_files::duplicate(const std::string& vistel) {
    const auto record = copy_of(vistel);
    if (!record) return;
    const auto made = std::make_shared<vistel_list>();
    bringing order;
    order.title = tr("Duplicating “%1”").arg(name_of(*record));
    order.words = tr("Its movies are brought to the new vistel.");
    order.failed = tr("The vistel could not be duplicated");
    order.what = "duplicate " + vistel;
    const auto with = made_with();
    order.folder = with.folder;
    order.bring = [record, with, made](job& work) -> result<void> {
        auto clone = duplicate_vistel(*record, with, work);
        if (!clone) return clone.error();
        made->push_back(std::move(clone).value());
        return {};
    };
    order.put_in = [this, made] {
        auto change = plan_new_vistels(*made, &event()->timeline());
        change.name = change_name::duplicate_vistel;
        return make_and_place(std::move(change), event()->collection().uuid());
    };
    order.take_away = [made] { discard(*made); };
    run(std::move(order));
}

void vistel_files::deinterlace(const std::string& vistel) {
    const auto record = copy_of(vistel);
    if (!record) return;
    const auto parts = std::make_shared<part_list>();
    bringing order;
    order.title = tr("Deinterlacing “%1”").arg(name_of(*record));
    order.words =
        tr("Each of its movies is written anew, with a picture for each field. This takes about as long as "
           "playing it. The movies that it has now are kept with the vistel.");
    order.failed = tr("The vistel could not be deinterlaced");
    order.what = "deinterlace " + vistel;
    order.folder = record->data_folder();
    order.vistel = vistel;
    order.bring = [record, parts](job& work) -> result<void> {
        auto made = deinterlaced_parts(*record, work);
        if (!made) return made.error();
        *parts = std::move(made).value();
        return {};
    };
    order.put_in = [this, record, vistel, parts] {
        return make(plan_other_movies(vistel, record->parts().parts, *parts));
    };
    order.take_away = [parts] { discard(*parts); };
    run(std::move(order));
}

// It concerns no event: another one may be opened meanwhile.
void vistel_files::copy_movie(const std::string& vistel, const std::string& folder) {
    const auto record = copy_of(vistel);
    if (!record) return;
    const std::string desktop =
        folder.empty() ? QStandardPaths::writableLocation(QStandardPaths::DesktopLocation).toStdString()
                       : folder;
    const auto copies = std::make_shared<std::vector<std::string>>();
    job_order order;
    order.title = tr("Copying the movie of “%1”").arg(name_of(*record)).toStdString();
    order.words = tr("It is copied to the desktop.").toStdString();
    order.keys = {desktop};
    order.what = "copy " + vistel;
    order.work = [record, desktop, copies](job& work) -> result<void> {
        auto made = copy_vistel_movie(*record, desktop, work);
        if (!made) return made.error();
        *copies = std::move(made).value();
        return {};
    };
    order.then = [this, copies](const result<void>& outcome, bool cancelled) {
        if (!outcome) {
            if (!cancelled) tell_failure(tr("The movie could not be copied"), outcome.error());
            return true;
        }
        QStringList names;
        for (const auto& one : *copies)
            names << QStringLiteral("“%1”").arg(QString::fromStdString(path_name(one)));
        tell_good(tr("The movie is on the desktop"), names.join(QStringLiteral(", ")));
        return true;
    };
    if (!jobs_.of_window.has(order.what)) jobs_.of_window.start(std::move(order));
}

void vistel_files::ask_overlay(const std::string& vistel) {
    const auto record = find(vistel);
    if (!record) return;
    const QString picture = QFileDialog::getOpenFileName(
        &window_, tr("Overlay for “%1”").arg(name_of(*record)), {}, tr("Pictures (*.png *.jpg *.jpeg)"));
    if (picture.isEmpty()) return;
    add_overlay(vistel, picture);
}

void vistel_files::add_overlay(const std::string& vistel, const QString& picture) {
    const auto record = copy_of(vistel);
    if (!record) return;
    const auto overlay = std::make_shared<vistel_overlay>();
    bringing order;
    order.title = tr("Adding the overlay");
    order.failed = tr("The overlay could not be added");
    order.what = "overlay " + vistel;
    order.folder = record->data_folder();
    order.vistel = vistel;
    order.bring = [record, path = picture.toStdString(), overlay](job& work) -> result<void> {
        auto made = bring_overlay(*record, path, work);
        if (!made) return made.error();
        *overlay = std::move(made).value();
        return {};
    };
    order.put_in = [this, vistel, overlay] { return make(plan_overlay(vistel, *overlay)); };
    order.take_away = [record, overlay] {
        machine_files().remove(path_join(record->data_folder(), overlay->picture));
    };
    run(std::move(order));
}

void vistel_files::remove_overlay(const std::string& vistel) {
    make(plan_overlay(vistel, std::nullopt));
}

bool vistel_files::is_busy(const std::string& folder, const QString& headline) {
    const auto holder = jobs_.of_event.list().holder(vault_lock_key(folder));
    if (!holder) return false;
    tell_failure(headline,
                 tr("“%1” is under way in the same vault. Try again when it has ended, or cancel it.")
                     .arg(QString::fromStdString(holder->title)));
    return true;
}

void vistel_files::run(bringing order) {
    if (jobs_.of_event.has(order.what)) {
        return tell_failure(order.failed, tr("“%1” is under way already.").arg(order.title));
    }
    job_order work;
    work.title = order.title.toStdString();
    work.words = order.words.toStdString();
    work.keys = {vault_lock_key(session_.folder()), vault_lock_key(order.folder)};
    work.what = order.what;
    work.work = std::move(order.bring);
    work.discard = std::move(order.take_away);
    work.then = [this, failed = order.failed, title = order.title, vistel = order.vistel,
                 put_in = std::move(order.put_in),
                 folder = session_.folder()](const result<void>& outcome, bool cancelled) {
        if (!outcome) {
            if (!cancelled) tell_failure(failed, outcome.error());
            return false;
        }
        if (cancelled || session_.folder() != folder) return false;
        if (vistel.empty() || find(vistel)) return put_in();
        tell_failure(failed, vistel_left_meanwhile());
        return false;
    };
    jobs_.of_event.start(std::move(work));
}

void vistel_files::tell_good(const QString& headline, const QString& text) {
    session_.notices().tell_good(headline, text);
}

void vistel_files::tell_failure(const QString& headline, const failure& reason) {
    session_.notices().tell_failure(headline, reason);
}

void vistel_files::tell_failure(const QString& headline, const QString& text) {
    session_.notices().tell_failure(headline, text);
}

}  // namespace vistels
