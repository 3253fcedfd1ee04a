// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/window/window_set.h"

#include <QEvent>
#include <QGuiApplication>
#include <QScreen>
#include <QThread>
#include <algorithm>
#include <utility>

#include "app/event/open_event.h"
#include "app/settings/settings_store.h"
#include "app/start/last_focus.h"
#include "app/vaults/known_vaults.h"
#include "shell/event/event_messages.h"
#include "shell/event/event_session.h"
#include "shell/kit/failure_words.h"
#include "shell/kit/theme.h"
#include "shell/window/code_commands.h"
#include "shell/window/event_opener.h"
#include "shell/window/filter_commands.h"
#include "shell/window/main_window.h"
#include "shell/window/window_list.h"
#include "shell/window/window_metrics.h"
#include "util/file_system.h"
#include "util/uuid.h"
#include "util/wait_watch.h"
#include "video/video_coll_LOAD.h"

namespace vistels {

namespace {

// So long a window stands still before its place is kept.
constexpr int still_milliseconds = 1000;

files_MASTER_LIST::options seen_before(std::vector<vault_tree> trees) {
    files_MASTER_LIST::options how;
    how.known_trees = std::move(trees);
    return how;
}

QRect screen_of(const QRect& place) {
    const QScreen* at = QGuiApplication::screenAt(place.center());
    return (at ? at : QGuiApplication::primaryScreen())->availableGeometry();
}

}  // namespace

window_set::window_set(home_places places, run_loop& loop) : window_set(std::move(places), loop, options{}) {}

window_set::window_set(home_places places, run_loop& loop, options how)
    : loop_(loop),
      places_(with_store(std::move(places), trouble_teller())),
      keeps_list_(how.keeps_list),
      first_size_(how.size),
      content_(places_, loop_, seen_before(std::move(how.known_trees))),
      jobs_(loop) {
    told_ = content_.told().connect([this](const failure& message) {
        if (!front()) return;
        front()->tell({user_message::tone::warning, tr("A vault needs a look"), words_of(message), {}, {}});
    });
    places_timer_.setSingleShot(true);
    places_timer_.setInterval(still_milliseconds);
    connect(&places_timer_, &QTimer::timeout, this, &window_set::keep);
    // The desktop may close the windows one by one when the session ends; all of them were open then.
    connect(
        qGuiApp, &QGuiApplication::commitDataRequest, this,
        [this] {
            keep();
            wait_until_kept();
            ending_ = true;
        },
        Qt::DirectConnection);
}

window_set::~window_set() {
    wait_until_kept();
    told_ = {};
    ending_ = true;
    for (auto& one : members_) one.window->disconnect(this);
    members_.clear();
    const expected_waits closing("a window that was closed goes");
    closed_.clear();
}

void window_set::begin(first wanted) {
    first_messages_ = std::move(wanted.messages);
    std::vector<member> planned = members_of(wanted);
    for (auto one = planned.rbegin(); one != planned.rend(); ++one) {
        const window_memory memory = load_window_memory(places_, one->root_id);
        if (one->root_id.empty()) one->root_id = new_uuid();
        main_window& window = *add(std::move(*one), memory).window;
        if (!first_size_.isEmpty()) window.resize(first_size_);
    }
    main_window* in_front = front();
    connect(in_front, &main_window::appeared, this, &window_set::begin_to_open, Qt::QueuedConnection);
    for (auto one = members_.rbegin(); one != members_.rend(); ++one) one->window->show();
    come_to_front(*in_front);
    show_state();
}

// The windows to begin with, front to back.
std::vector<window_set::member> window_set::members_of(const first& wanted) {
    std::vector<member> planned;
    plan_asked(wanted, planned);
    plan_listed(wanted, planned);
    if (planned.empty()) {
        auto& one = planned.emplace_back();
        if (!wanted.paths.empty()) return planned;
        one.step = first_step::something;
        one.wanted.folder = wanted.focused;
    }
    return planned;
}

// What was open before has its window's place.
void window_set::plan_asked(const first& wanted, std::vector<member>& planned) {
    open_requests asked = what_to_open(wanted.paths);
    for (const auto& why : asked.refused) {
        first_messages_.push_back(
            {user_message::tone::error, tr("This can't be opened"), words_of(why), {}, {}});
    }
    for (auto& what : asked.found) {
        auto& one = planned.emplace_back();
        one.step = first_step::what_was_asked;
        const bool is_vault = what.what == open_request::kind::vault && !wanted.listed.empty();
        const std::string folder = is_vault ? first_collection_in(what.folder) : what.folder;
        for (const auto& before : wanted.listed) {
            if (folder.empty() || !is_same_folder(before.open_from_path, folder)) continue;
            one.root_id = before.root_id;
            if (is_vault) what = {open_request::kind::collection, folder, {}};
        }
        one.wanted = std::move(what);
    }
}

void window_set::plan_listed(const first& wanted, std::vector<member>& planned) {
    const auto first_listed = static_cast<std::ptrdiff_t>(planned.size());
    for (const auto& before : wanted.listed) {
        const std::string& folder = before.open_from_path;
        const bool is_planned = std::any_of(planned.begin(), planned.end(), [&](const member& one) {
            return is_same_folder(one.wanted.folder, folder);
        });
        if (folder.empty() || is_planned) continue;
        if (!can_be_opened(folder)) {
            tell_gone(before);
            continue;
        }
        const bool had_focus = folder == wanted.focused;
        auto& one = *planned.emplace(had_focus ? planned.begin() + first_listed : planned.end());
        one.root_id = before.root_id;
        one.step = first_step::what_was_open;
        one.wanted = {open_request::kind::collection, folder, {}};
    }
}

void window_set::tell_gone(const open_window& before) {
    const std::string folder = before.open_from_path;
    user_message message = gone_message(folder);
    const std::string vault = vault_of(folder);
    if (!vault.empty() && !is_folder(vault)) {
        away_.push_back(before);
        message.detail = tr("It is opened again when its vault is there at a start.");
        message.choices = {{tr("Continue"), {}}, {tr("Forget It"), [this, folder] {
                                                      std::erase_if(away_, [&](const open_window& one) {
                                                          return one.open_from_path == folder;
                                                      });
                                                      keep();
                                                  }}};
    }
    first_messages_.push_back(std::move(message));
}

window_set::member& window_set::add(member made, window_memory memory) {
    std::vector<QRect> others;
    for (const auto& one : members_) others.push_back(one.window->memory().place);
    // A window that has no place of its own yet goes where the one in front is, and a step from there.
    const QRect wanted = memory.place.isNull() && !others.empty() ? others.front() : memory.place;
    const bool stands_on_another = std::any_of(
        others.begin(), others.end(), [&](const QRect& one) { return one.topLeft() == wanted.topLeft(); });
    if (!memory.is_maximized && stands_on_another) {
        memory.place = cascaded_place(wanted, others,
                                      {window_sizes.least_window_width, window_sizes.least_window_height},
                                      screen_of(wanted));
    }
    made.number = ++last_number_;
    made.window = std::make_unique<main_window>(places_, loop_, content_, jobs_, std::move(memory));
    members_.push_front(std::move(made));
    connect_window(*members_.front().window);
    return members_.front();
}

void window_set::connect_window(main_window& window) {
    main_window* one = &window;
    one->set_neighbours({[this, one](const std::string& folder) { return show_if_open(folder, one); },
                         [this] {
                             std::vector<std::string> folders;
                             for (const auto& other : members_) folders.push_back(folder_of(other));
                             return folders;
                         }});
    connect(one, &main_window::event_changed, this, [this] {
        ending_ = false;
        show_state();
    });
    connect(one, &main_window::new_window_asked, this, [this] { open_empty_window(); });
    connect(one, &main_window::open_in_new_window_asked, this, [this](const QString& folder) {
        if (show_if_open(folder.toStdString(), nullptr)) return;
        open_empty_window().opener().open_folder(folder.toStdString());
    });
    connect(&one->opener(), &event_opener::more_found, this, &window_set::open_in_new_window);
    connect(&one->opener(), &event_opener::settled, this, &window_set::show_state);
    connect(one, &main_window::next_window_asked, this, [this, one] { show_next_after(one); });
    connect(one, &main_window::quit_asked, this, &window_set::quit);
    connect(one, &main_window::theme_chosen, this, [this](const QString& name) {
        for (const auto& other : members_) other.window->show_theme_choice(name.toStdString());
        keep();
    });
    connect(&one->filters(), &filter_commands::hides_chosen, this, [this](bool hides) {
        for (const auto& other : members_) other.window->filters().set_hides(hides);
    });
    connect(&one->coding(), &code_commands::settings_chosen, this, [this, one](const press_settings& chosen) {
        for (const auto& other : members_) {
            if (other.window.get() != one) other.window->coding().set_settings(chosen);
        }
    });
    connect(&one->coding(), &code_commands::presser_chosen, this,
            [this, one](const test_press_settings& chosen, bool presses_there) {
                for (const auto& other : members_) {
                    if (other.window.get() != one) other.window->coding().set_presser(chosen, presses_there);
                }
            });
    connect(&one->session(), &event_session::application_volume_chosen, this, [this, one](double volume) {
        for (const auto& other : members_) {
            if (other.window.get() != one) other.window->session().player().take_application_volume(volume);
        }
    });
    connect(&one->session(), &event_session::pitch_chosen, this, [this, one](pitch_algorithm pitch) {
        for (const auto& other : members_) {
            if (other.window.get() != one) other.window->session().take_pitch(pitch);
        }
    });
    connect(one, &main_window::closing, this, [this, one] { take_closing(one); });
    one->installEventFilter(this);
}

// The front one first, and each when the one before is shown.
void window_set::begin_to_open() {
    Q_EMIT appeared();
    content_.refresh();
    if (!front()) return;
    for (auto& message : std::exchange(first_messages_, {})) front()->tell(std::move(message));
    front()->coding().resume_pressing();
    open_next();
}

void window_set::open_next() {
    const auto next = std::find_if(members_.begin(), members_.end(),
                                   [](const member& one) { return one.step != first_step::nothing; });
    if (next == members_.end()) return;
    event_opener& opener = next->window->opener();
    const open_request what = std::exchange(next->wanted, {});
    switch (std::exchange(next->step, first_step::nothing)) {
        case first_step::nothing:
            break;
        case first_step::what_was_asked:
            opener.open(what);
            break;
        case first_step::what_was_open:
            opener.open_folder(what.folder);
            break;
        case first_step::something:
            opener.open_last_or_demo(what.folder);
            break;
    }
    show_state();
    if (!opener.is_at_work()) return QTimer::singleShot(0, this, &window_set::open_next);
    const auto once = static_cast<Qt::ConnectionType>(Qt::QueuedConnection | Qt::SingleShotConnection);
    connect(&opener, &event_opener::settled, this, &window_set::open_next, once);
}

void window_set::open_in_new_window(const open_request& what) {
    if (!what.folder.empty() && show_if_open(what.folder, nullptr)) return;
    open_empty_window().opener().open(what);
}

main_window& window_set::open_empty_window() {
    window_memory memory = front() ? front()->memory() : load_window_memory(places_);
    memory.is_maximized = false;  // or it would hide the one that it was asked for in
    ending_ = false;
    member made;
    made.root_id = new_uuid();
    main_window& window = *add(std::move(made), std::move(memory)).window;
    window.show();
    come_to_front(window);
    show_state();
    return window;
}

bool window_set::quit() {
    const auto all = windows();
    for (main_window* one : all) {
        if (one->agree_to_close()) continue;
        for (main_window* other : all) other->take_back_agreement();
        return false;
    }
    keep();
    ending_ = true;
    for (main_window* one : all) one->close();
    wait_until_kept();
    return true;
}

std::vector<main_window*> window_set::windows() const {
    std::vector<main_window*> all;
    for (const auto& one : members_) all.push_back(one.window.get());
    return all;
}

main_window* window_set::front() const {
    return members_.empty() ? nullptr : members_.front().window.get();
}

void window_set::wait_until_kept() {
    queue_.drain();
    places_.settings->wait_until_kept();
}

// Told on the thread that writes the settings.
std::function<void(const failure&)> window_set::trouble_teller() {
    auto tell = guard_.guarded([this](const failure& why) {
        if (front())
            front()->tell({user_message::tone::error,
                           tr("The setting is not remembered"),
                           QString::fromStdString(why.message()),
                           {},
                           {}});
    });
    return [&loop = loop_, tell = std::move(tell)](const failure& why) {
        loop.post([tell, why]() mutable { tell(why); });
    };
}

bool window_set::eventFilter(QObject* watched, QEvent* event) {
    switch (event->type()) {
        case QEvent::WindowActivate:
            take_activation(static_cast<const main_window*>(watched));
            break;
        case QEvent::Move:
        case QEvent::Resize:
        case QEvent::WindowStateChange:
            places_timer_.start();
            break;
        default:
            break;
    }
    return QObject::eventFilter(watched, event);
}

window_set::member* window_set::member_of(const main_window* window) {
    const auto found = std::find_if(members_.begin(), members_.end(),
                                    [&](const member& one) { return one.window.get() == window; });
    return found == members_.end() ? nullptr : &*found;
}

std::string window_set::folder_of(const member& one) const {
    const std::string& coming = one.window->opener().coming();
    if (!coming.empty()) return coming;
    const std::string open = one.window->session().folder();
    return open.empty() ? one.wanted.folder : open;
}

bool window_set::show_if_open(const std::string& folder, const main_window* except) {
    for (const auto& one : members_) {
        if (one.window.get() == except || !is_same_folder(folder_of(one), folder)) continue;
        come_to_front(*one.window);
        return true;
    }
    return false;
}

void window_set::come_to_front(main_window& window) {
    if (window.isMinimized()) window.setWindowState(window.windowState() & ~Qt::WindowMinimized);
    window.raise();
    window.activateWindow();
}

// In the order they were made, round and round.
void window_set::show_next_after(const main_window* window) {
    const member* here = member_of(window);
    if (!here) return;
    const member* next = nullptr;
    const auto rank = [&](const member& one) {
        return one.number > here->number ? one.number : one.number + last_number_;
    };
    for (const auto& one : members_) {
        if (&one != here && (!next || rank(one) < rank(*next))) next = &one;
    }
    if (next) come_to_front(*next->window);
}

void window_set::take_activation(const main_window* window) {
    const auto found = std::find_if(members_.begin(), members_.end(),
                                    [&](const member& one) { return one.window.get() == window; });
    if (found == members_.end() || found == members_.begin()) return;
    member moved = std::move(*found);
    members_.erase(found);
    members_.push_front(std::move(moved));
    show_state();
}

// The last window that is closed was open when the program ended, so it stays listed.
void window_set::take_closing(main_window* window) {
    if (members_.size() == 1 && !ending_) {
        keep();
        ending_ = true;
    }
    const auto found = std::find_if(members_.begin(), members_.end(),
                                    [&](const member& one) { return one.window.get() == window; });
    if (found == members_.end()) return;
    // When all close at once it is remembered for the next start.
    if (!ending_) window->coding().stop_pressing();
    window->disconnect(this);
    window->removeEventFilter(this);
    closed_.push_back(std::move(found->window));
    members_.erase(found);
    if (members_.empty()) return;
    show_state();
    QMetaObject::invokeMethod(this, &window_set::let_go_of_closed, Qt::QueuedConnection);
}

// A closed window may still be at work further up: in a menu of its own that is open.
void window_set::let_go_of_closed() {
    constexpr int again_milliseconds = 200;
    if (QThread::currentThread()->loopLevel() > 1) {
        QTimer::singleShot(again_milliseconds, this, &window_set::let_go_of_closed);
        return;
    }
    closed_.clear();
}

// What depends on which windows there are, what they show and which is in front.
void window_set::show_state() {
    for (const auto& one : members_) one.window->session().player().set_heard(&one == &members_.front());
    list_in_menus();
    keep();
}

void window_set::list_in_menus() {
    std::vector<const member*> in_order;
    for (const auto& one : members_) in_order.push_back(&one);
    std::sort(in_order.begin(), in_order.end(),
              [](const member* a, const member* b) { return a->number < b->number; });
    std::vector<window_line> lines;
    for (const member* one : in_order) {
        main_window* window = one->window.get();
        const std::string folder = folder_of(*one);
        const QString name = window->session().is_open() ? window->session().name()
                                                         : QString::fromStdString(path_name(folder));
        lines.push_back({name, QString::fromStdString(vault_name(vault_of(folder))), false,
                         [this, window] { come_to_front(*window); }});
    }
    tell_apart(lines);
    for (std::size_t i = 0; i < lines.size(); ++i) {
        main_window& window = *in_order[i]->window;
        window.setWindowTitle(window.session().is_open() ? tr("%1 – Vistels").arg(lines[i].name)
                                                         : tr("Vistels"));
        lines[i].is_here = true;
        list_windows(window.window_menu(), lines);
        lines[i].is_here = false;
    }
}

// What cannot be kept is no reason to disturb: the windows are there, and it is tried again.
void window_set::keep() {
    if (!keeps_list_ || ending_ || members_.empty()) return;
    std::vector<open_window> open;
    std::vector<remembered_window> memories;
    for (const auto& one : members_) {
        memories.push_back({one.root_id, one.window->memory()});
        const std::string folder = folder_of(one);
        if (folder.empty()) continue;
        const bool is_open = one.window->session().folder() == folder;
        open.push_back({one.root_id, is_open ? one.window->session().name().toStdString() : std::string(),
                        static_cast<std::int64_t>(open.size()), folder});
    }
    for (open_window one : away_) {
        const bool is_back = std::any_of(open.begin(), open.end(), [&](const open_window& shown) {
            return is_same_folder(shown.open_from_path, one.open_from_path);
        });
        if (is_back) continue;
        one.order = static_cast<std::int64_t>(open.size());
        open.push_back(std::move(one));
    }
    // Where no event is open in front, what had the focus before is what to come back to.
    const open_event* focused = members_.front().window->session().shown_event();
    queue_.forget_waiting();
    queue_.post([this, open = std::move(open), memories = std::move(memories),
                 uuid = focused ? focused->uuid() : std::string()] {
        (void)save_open_windows(places_, open);
        (void)save_window_memories(places_, memories);
        const bool is_noted = uuid.empty() || uuid == noted_focus_;
        if (!is_noted && note_focus(places_, uuid)) noted_focus_ = uuid;
    });
}

}  // namespace vistels
