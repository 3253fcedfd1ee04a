// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/event/collection_commands.h"

#include <QMenu>
#include <QMenuBar>
#include <algorithm>
#include <utility>

#include "app/event/change_names.h"
#include "app/event/open_event.h"
#include "app/settings/settings.h"
#include "shell/event/align_control.h"
#include "shell/event/binder_list.h"
#include "shell/event/collection_binder.h"
#include "shell/event/event_notices.h"
#include "shell/event/event_session.h"
#include "shell/event/padding_commands.h"
#include "shell/event/vistel_files.h"
#include "shell/filter/filter_metrics.h"
#include "shell/filter/pattern_menu.h"
#include "shell/kit/failure_words.h"
#include "shell/kit/theme.h"
#include "shell/panes/collection/collection_pane.h"
#include "shell/panes/collection/collection_view.h"
#include "shell/panes/collection/vistel_placing.h"

namespace vistels {

namespace {

QString name_in_menu(const single_Vistel_CTR& vistel) {
    return menu_words(QString::fromStdString(vistel.name()), filter_sizes.menu_greatest_width);
}

}  // namespace

collection_commands::collection_commands(QWidget& window, event_session& session, home_places places,
                                         job_groups jobs)
    : window_(window),
      session_(session),
      places_(std::move(places)),
      files_(std::make_unique<vistel_files>(window, session, places_, jobs)),
      padding_(std::make_unique<padding_commands>(session, jobs.of_event)) {
    make_actions();
    panes_changed_ = session.binders().changed.connect([this] { show_state(); });
    connect(&session, &event_session::opened, this, &collection_commands::follow_event);
    connect(&session, &event_session::closed, this, [this] {
        connections_.clear();
        show_state();
    });
    show_state();
}

collection_commands::~collection_commands() = default;

QAction* collection_commands::add_action(const char* name, const QString& words, const QString& keys,
                                         const QString& tip) {
    auto* action = new QAction(words, &window_);
    action->setObjectName(QLatin1String("collection.") + QLatin1String(name));
    if (!keys.isEmpty()) action->setShortcut(QKeySequence(keys));
    action->setToolTip(tip);
    action->setStatusTip(tip);
    window_.addAction(action);
    all_.push_back(action);
    return action;
}

void collection_commands::make_actions() {
    menu_ = new QMenu(tr("Collection"), &window_);
    menu_->setObjectName(QStringLiteral("menu.Collection"));
    menu_->setToolTipsVisible(true);
    const auto add = [this](QMenu* menu, const char* name, const QString& words, const QString& keys,
                            const QString& tip, auto does) {
        QAction* action = add_action(name, words, keys, tip);
        connect(action, &QAction::triggered, this, does);
        menu->addAction(action);
        return action;
    };
    changes_.push_back(add(menu_, "add_movies", tr("Add Movies…"), QStringLiteral("Ctrl+Shift+M"),
                           tr("Add movies to the collection; they can also be dropped on its pane"),
                           [this] { files_->ask_movies({}); }));
    menu_->addSeparator();
    layouts_ = menu_->addMenu(tr("Layout"));
    layouts_->setObjectName(QStringLiteral("menu.Layout"));
    layouts_->setToolTipsVisible(true);
    const auto layout = [&](const char* name, const QString& words, const QString& tip, ready_layout which) {
        changes_.push_back(add(layouts_, name, words, {}, tip, [this, which] { use_layout(which); }));
    };
    layout("grid", tr("Grid"), tr("All vistels alike, in lines and columns"), ready_layout::grid);
    layout("one_large", tr("One Large, the Rest Small"), tr("The current vistel large, the others beside it"),
           ready_layout::one_large);
    layout("side_by_side", tr("Side by Side"), tr("All vistels in one line"), ready_layout::side_by_side);
    layout("two_columns", tr("Two Columns, Scrolling"),
           tr("All vistels alike, as wide as two in a line allow"), ready_layout::two_columns);
    layouts_->addSeparator();
    front_ = add(layouts_, "to_front", tr("Bring to Front"), {}, tr("The current vistel covers the others"),
                 [this] { restack(true); });
    back_ = add(layouts_, "to_back", tr("Send to Back"), {}, tr("The others cover the current vistel"),
                [this] { restack(false); });
    changes_.insert(changes_.end(), {front_, back_});
    numbers_ = add(menu_, "numbers", tr("Show Vistel Numbers"), {}, tr("Draw each vistel's number on it"),
                   [this](bool shows) { set_shows_numbers(shows); });
    names_ = add(menu_, "names", tr("Show Names with Numbers"), {},
                 tr("Draw the vistel's name behind its number, in all collections"),
                 [this](bool shows) { set_shows_names(shows); });
    starts_ = add(menu_, "missing_starts", tr("Show Missing Vistel Starts"), {},
                  tr("Mark vistels whose movie has not started yet"),
                  [this](bool shows) { set_shows_starts(shows); });
    for (QAction* one : {numbers_, names_, starts_}) one->setCheckable(true);
    changes_.insert(changes_.end(), {numbers_, starts_});
    menu_->addSeparator();
    aligning_ = add(menu_, "align", tr("Bring into Step"), QStringLiteral("Ctrl+Shift+S"),
                    tr("Drag vistels against each other, type offsets, change gaps"), [this](bool aligning) {
                        if (alignment()) alignment()->set_aligning(aligning);
                    });
    aligning_->setCheckable(true);
    const auto nudge = [&](const char* name, const QString& words, const char* keys, int frames) {
        QAction* action = add(menu_, name, words, QLatin1String(keys),
                              tr("The current vistel shows another frame at this time"), [this, frames] {
                                  if (alignment()) alignment()->nudge(frames);
                              });
        action->setAutoRepeat(true);
        changes_.push_back(action);
    };
    nudge("frame_earlier", tr("Show One Frame Earlier"), "Ctrl+Shift+Left", -1);
    nudge("frame_later", tr("Show One Frame Later"), "Ctrl+Shift+Right", 1);
    add(menu_, "mark_moment", tr("Mark Moment"), QStringLiteral("Ctrl+Shift+I"),
        tr("Remember the instant that the current vistel shows"), [this] {
            if (alignment()) alignment()->mark_moment();
        });
    same_ = add(menu_, "same_moment", tr("Same Moment"), QStringLiteral("Ctrl+Shift+G"),
                tr("The current vistel shows the marked instant now: bring both into step"), [this] {
                    if (alignment()) alignment()->same_moment();
                });
    menu_->addSeparator();
    offsets_ = menu_->addMenu(tr("Drone offsets in collection"));
    offsets_->setObjectName(QStringLiteral("menu.offsets"));
    offsets_->setToolTipsVisible(true);
    for (const auto& command : padding_->commands()) {
        changes_.push_back(add(offsets_, command.name, words_of_term(padding_command_title(command.which)),
                               {}, tr(command.tip), [this, which = command.which] { padding_->run(which); }));
    }
}

void collection_commands::fill(QMenuBar& bar, const QString& before) {
    const auto* next = bar.findChild<QMenu*>(before);
    bar.insertMenu(next ? next->menuAction() : nullptr, menu_);
}

collection_binder* collection_commands::shown() const {
    return session_.binders().current<collection_binder>();
}

align_control* collection_commands::alignment() const {
    return shown() ? &shown()->alignment() : nullptr;
}

open_event* collection_commands::event() const {
    open_event* opened = session_.shown_event();
    return opened && opened->has_collection() ? opened : nullptr;
}

void collection_commands::follow_event() {
    connections_.clear();
    open_event* opened = session_.shown_event();
    connections_.push_back(opened->collection_changed.connect([this] { show_state(); }));
    connections_.push_back(opened->timeline().access_changed.connect([this] { show_state(); }));
    show_state();
}

void collection_commands::show_state() {
    const bool is_open = event() != nullptr;
    const bool can_change = is_open && !event()->timeline().is_read_only();
    for (QAction* one : all_) one->setEnabled(is_open);
    for (QAction* one : changes_) one->setEnabled(can_change);
    same_->setEnabled(can_change && alignment() && alignment()->has_mark());
    aligning_->setChecked(shown() && shown()->view().is_aligning());
    if (!is_open) return;
    numbers_->setChecked(event()->collection().displays_vistel_number());
    starts_->setChecked(event()->collection().shows_missing_starts());
    names_->setChecked(load_show_vistel_number_name(places_).shown);
}

void collection_commands::set_arrangement_as(const vistel_arrangement& wanted, const char* name,
                                             const std::string& vistel) {
    collection_change change;
    change.name = name;
    change.scope = vistel;
    change.change = [wanted](video_collection_ROOT& copy) -> result<void> {
        set_arrangement(copy, wanted);
        return {};
    };
    files_->make(change);
}

void collection_commands::use_layout(ready_layout layout) {
    if (!event() || !shown()) return;
    collection_view& view = shown()->view().view();
    const std::string large = view.current();
    session_.player().enlarge({});
    vistel_arrangement wanted = view.arrangement();
    std::size_t at = 0;
    for (std::size_t i = 0; i < wanted.vistels.size(); ++i) {
        if (wanted.vistels[i].uuid == large) at = i;
    }
    const auto ready = ready_layout_frames(layout, wanted.vistels.size(), view.picture_aspect(), at);
    wanted.ratio = ready.ratio;
    wanted.scrolls = ready.scrolls;
    for (std::size_t i = 0; i < wanted.vistels.size(); ++i) wanted.vistels[i].frame = ready.frames[i];
    set_arrangement_as(wanted, change_name::change_layout, view.current());
    view.bring_into_sight(large);
}

void collection_commands::restack(bool front) {
    if (!event() || !shown()) return;
    const collection_view& view = shown()->view().view();
    vistel_arrangement wanted = view.arrangement();
    wanted.vistels = restacked(std::move(wanted.vistels), view.current(), front);
    set_arrangement_as(wanted, front ? change_name::bring_to_front : change_name::send_to_back,
                       view.current());
}

void collection_commands::set_shows_numbers(bool shows) {
    collection_change change;
    change.name = change_name::show_numbers;
    change.change = [shows](video_collection_ROOT& copy) -> result<void> {
        copy.set_displays_vistel_number(shows);
        return {};
    };
    files_->make(change);
}

void collection_commands::set_shows_starts(bool shows) {
    collection_change change;
    change.name = change_name::show_missing_starts;
    change.change = [shows](video_collection_ROOT& copy) -> result<void> {
        copy.set_shows_missing_starts(shows);
        return {};
    };
    files_->make(change);
}

void collection_commands::set_shows_names(bool shows) {
    if (const auto saved = save_show_vistel_number_name(places_, {shows}); !saved) {
        session_.notices().tell_failure(tr("This could not be changed"), saved.error());
    }
    for (auto* one : session_.binders().all_of<collection_binder>()) one->set_shows_names(shows);
    show_state();
}

void collection_commands::show_menu(const QPoint& global) {
    menu_->popup(global);
}

void collection_commands::show_vistel_menu(collection_binder& shown, const std::string& vistel,
                                           const QPoint& global) {
    const auto record = event() ? event()->collection().find_vistel(vistel) : nullptr;
    if (!record) return;
    auto* menu = new QMenu(&window_);
    menu->setObjectName(QStringLiteral("vistel.menu"));
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->setToolTipsVisible(true);
    const bool is_large = !shown.view().view().enlarged().empty();
    const QString name = name_in_menu(*record);
    QAction* size = menu->addAction(is_large ? tr("Show All Vistels") : tr("Enlarge “%1”").arg(name));
    connect(size, &QAction::triggered, this,
            [this, vistel, is_large] { session_.player().enlarge(is_large ? std::string() : vistel); });
    QAction* sound = menu->addAction(tr("Hear “%1”").arg(name));
    sound->setEnabled(!shown.view().view().is_heard(vistel));
    connect(sound, &QAction::triggered, this, [this, vistel] { session_.set_sound_vistel(vistel); });
    menu->addSeparator();
    menu->addMenu(layouts_);
    menu->addAction(aligning_);
    menu->addSeparator();
    add_vistel_actions(*menu, vistel);
    menu->popup(global);
}

void collection_commands::add_vistel_actions(QMenu& menu, const std::string& vistel) {
    const auto record = event()->collection().find_vistel(vistel);
    const bool can_change = !event()->timeline().is_read_only();
    const auto add = [&](const QString& words, const QString& tip, bool enabled, auto does) {
        QAction* action = menu.addAction(words);
        action->setToolTip(tip);
        action->setEnabled(enabled);
        connect(action, &QAction::triggered, this, does);
    };
    const auto parts = record->parts().parts;
    const bool has_movie = !parts.empty();
    if (std::any_of(parts.begin(), parts.end(), [](const auto& part) { return part.path.empty(); })) {
        add(tr("Find Movie…"), tr("Show where the movie is that is not in its place"), can_change,
            [this, vistel] { files_->ask_missing_movie(vistel); });
    }
    add(tr("Rename Vistel…"), tr("Give this vistel another name"), can_change,
        [this, vistel] { files_->ask_name(vistel); });
    add(tr("Append Movies…"), tr("Append video files to this vistel."),
        can_change && !record->is_inserted_picture(), [this, vistel] { files_->ask_movies(vistel); });
    add(tr("Remove Vistel"), tr("Remove this vistel from the video collection"), can_change,
        [this, vistel] { files_->remove(vistel); });
    add(tr("Duplicate Vistel"), tr("Clone this vistel from the video collection"), can_change,
        [this, vistel] { files_->duplicate(vistel); });
    add(tr("Deinterlace Vistel"), tr("Make a picture of each field of the vistel's movie"),
        can_change && has_movie, [this, vistel] { files_->deinterlace(vistel); });
    add_place_menu(menu, vistel);
    add(tr("Copy Vistel Movie To Desktop"), tr("Copy the vistel's movie files to the desktop"), has_movie,
        [this, vistel] { files_->copy_movie(vistel); });
    add(tr("Add Overlay…"), tr("Draw a picture over the vistel"), can_change,
        [this, vistel] { files_->ask_overlay(vistel); });
    add(tr("Remove Overlay"), tr("Take the picture away that is drawn over the vistel"),
        can_change && record->overlay().has_value(), [this, vistel] { files_->remove_overlay(vistel); });
    menu.addSeparator();
    add(tr("Close Vistel…"), tr("Close the vistel for good and move its movie data to the trash"), can_change,
        [this, vistel] { files_->close_for_good(vistel); });
}

void collection_commands::add_place_menu(QMenu& menu, const std::string& vistel) {
    QMenu* places = menu.addMenu(tr("Move collection vistel"));
    places->menuAction()->setToolTip(tr("Move this vistel to another place in the order of the vistels"));
    const auto all = event()->collection().vistels();
    for (std::size_t i = 0; i < all.size(); ++i) {
        const bool is_here = all[i]->uuid() == vistel;
        QAction* action =
            places->addAction(tr("Place %1, now “%2”").arg(QString::number(i + 1), name_in_menu(*all[i])));
        action->setEnabled(!is_here && !event()->timeline().is_read_only());
        connect(action, &QAction::triggered, this, [this, vistel, i] { files_->move(vistel, i); });
    }
}

}  // namespace vistels
