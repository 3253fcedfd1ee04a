// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/window/main_window.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDragEnterEvent>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QMenuBar>
#include <QMimeData>
#include <QScreen>
#include <QTime>
#include <QTreeView>
#include <QVBoxLayout>
#include <utility>

#include "app/settings/search_patterns.h"
#include "app/vaults/content_keeper.h"
#include "shell/event/collection_commands.h"
#include "shell/event/event_messages.h"
#include "shell/event/event_session.h"
#include "shell/event/timeline_binder.h"
#include "shell/event/window_binder.h"
#include "shell/kit/job_button.h"
#include "shell/kit/start_trace.h"
#include "shell/kit/theme.h"
#include "shell/kit/work_panel.h"
#include "shell/panes/code_window/code_window_view.h"
#include "shell/panes/collection/collection_pane.h"
#include "shell/panes/collection/collection_view.h"
#include "shell/panes/side_bar/content_side_bar.h"
#include "shell/panes/timeline/timeline_view.h"
#include "shell/window/closing_questions.h"
#include "shell/window/code_commands.h"
#include "shell/window/event_commands.h"
#include "shell/window/event_opener.h"
#include "shell/window/filter_commands.h"
#include "shell/window/key_map.h"
#include "shell/window/note_popover.h"
#include "shell/window/pane_host.h"
#include "shell/window/save_moments.h"
#include "shell/window/saved_label.h"
#include "shell/window/super_tab_row.h"
#include "shell/window/timeline_commands.h"
#include "shell/window/vault_commands.h"
#include "shell/window/window_actions.h"
#include "shell/window/window_frame.h"
#include "shell/window/window_metrics.h"
#include "shell/window/work_area.h"
#include "util/file_system.h"

namespace vistels {

namespace {

constexpr int code_tab = 0;
constexpr QSize usual_size(1600, 1000);

}  // namespace

main_window::main_window(home_places places, run_loop& loop, content_keeper& content, job_list& jobs,
                         window_memory memory)
    : places_(std::move(places)),
      loop_(loop),
      keeper_(content),
      jobs_(jobs),
      event_jobs_(jobs),
      window_jobs_(jobs),
      memory_(std::move(memory)),
      actions_(new window_actions(*this)),
      content_(new content_side_bar),
      tabs_(new super_tab_row({tr("Code"), tr("Review")})),
      messages_(new message_bar),
      jobs_button_(new job_button(jobs)),
      making_(new work_panel(jobs)),
      saved_(new saved_label),
      session_(std::make_unique<event_session>(loop)) {
    setObjectName(QStringLiteral("main_window"));
    setWindowTitle(tr("Vistels"));
    setAcceptDrops(true);
    make_commands();
    build();
    connect_session();
    connect_side_bar();
    connect_frame();
    connect_view_commands();
    connect_window_commands();
    connect_vault_commands();
    restore();
    show_facts();
    connect(qApp, &QApplication::focusChanged, this, [this](QWidget* old, QWidget* now) {
        if (now ? now->window() == this : old && old->window() == this) left_field_ = now ? nullptr : old;
    });
    content_->list()->setFocus();  // where an event is chosen, as long as none is open
}

main_window::~main_window() {
    // What has the focus loses it when Qt destroys it, after the members here.
    disconnect(qApp, nullptr, this, nullptr);
    // The session speaks to the panes when it closes, so it goes before them.
    save_moments_.reset();
    session_->disconnect(this);
    session_->notices().disconnect(this);
    panes_.reset();
    opener_.reset();
    filter_commands_.reset();
    code_commands_.reset();
    timeline_commands_.reset();
    event_commands_.reset();
    session_->close();
    session_->binders().clear();
    commands_.reset();
    session_.reset();
}

// They are there before the panes that ask for what they do.
void main_window::make_commands() {
    build_menu_bar();
    const job_groups jobs{event_jobs_, window_jobs_};
    opener_ = std::make_unique<event_opener>(*this, places_, *session_, jobs, *making_);
    commands_ = std::make_unique<collection_commands>(*this, *session_, places_, jobs);
    commands_->fill(*menuBar(), QStringLiteral("menu.Timeline"));
    for (QAction* one : commands_->actions()) actions_->add(one);
    event_commands_ = std::make_unique<event_commands>(*actions_, *session_, event_jobs_);
    timeline_commands_ = std::make_unique<timeline_commands>(*actions_, *session_);
    code_commands_ = std::make_unique<code_commands>(*this, *actions_, *session_, places_);
    filter_commands_ = std::make_unique<filter_commands>(*actions_, *session_, places_);
    filter_commands_->fill(*menuBar()->findChild<QMenu*>(QStringLiteral("menu.Filter")));
    vaults_ = std::make_unique<vault_commands>(*this, *content_, places_, window_jobs_, [this] {
        return neighbours_.open_folders ? neighbours_.open_folders()
                                        : std::vector<std::string>{session_->folder()};
    });
    save_moments_ = std::make_unique<save_moments>([this] { session_->save_in_background(); },
                                                   [this] { session_->save(); });
}

void main_window::build() {
    setMinimumSize(window_sizes.least_window_width, window_sizes.least_window_height);
    session_->attach(std::make_unique<window_binder>(*this, *session_));
    new key_map(*this, *session_);
    session_->attach(std::make_unique<note_binder>(*new note_popover(*this, session_->notices())));
    panes_ = std::make_unique<pane_host>(*session_, *commands_, places_);
    collection_ = &panes_->add<collection_pane>(pane_kind::collection);
    code_ = &panes_->add<code_window_view>(pane_kind::code_window);
    auto& timeline = panes_->add<timeline_view>(pane_kind::timeline);
    timeline_commands_->serve(timeline);
    pane& inspector = panes_->add(pane_kind::inspector);
    work_ = new work_area(collection_, code_, &timeline.widget());
    auto* middle = new QWidget;
    auto* middle_column = new QVBoxLayout(middle);
    middle_column->setContentsMargins(0, 0, 0, 0);
    middle_column->setSpacing(0);
    middle_column->addWidget(tabs_);
    middle_column->addWidget(work_, 1);
    frame_ = new window_frame(content_, middle, &inspector.widget());
    auto* whole = new QWidget;
    auto* column = new QVBoxLayout(whole);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(frame_, 1);
    // Below, where it comes and goes without moving what may be pressed just then.
    column->addWidget(messages_);
    collection_->view().set_middle(making_);
    connect(messages_, &message_bar::changing, work_, &work_area::hold_upper);
    setCentralWidget(whole);
}

timeline_view& main_window::timeline() {
    return session_->binders().current<timeline_binder>()->view();
}

filter_entry& main_window::filter() {
    return session_->binders().current<timeline_binder>()->filter_text();
}

void main_window::build_menu_bar() {
    QMenuBar* bar = menuBar();
    bar->setFixedHeight(window_sizes.menu_bar_height);
    bar->setNativeMenuBar(false);
    actions_->fill(*bar);
    // Both keep their room, so that nothing moves when one of them has nothing to say.
    auto* corner = new QWidget;
    auto* line = new QHBoxLayout(corner);
    line->setContentsMargins(0, 0, 0, 0);
    line->setSpacing(theme::current().metrics.padding);
    line->addWidget(jobs_button_);
    line->addWidget(saved_);
    bar->setCornerWidget(corner);
    connect(jobs_button_, &job_button::shown_changed, (*actions_)[command::jobs], &QAction::setEnabled);
    (*actions_)[command::jobs]->setEnabled(!jobs_button_->isHidden());
}

void main_window::connect_session() {
    const event_notices* notices = &session_->notices();
    connect(notices, &event_notices::told, this, &main_window::tell);
    connect(notices, &event_notices::state_over, messages_, &message_bar::withdraw);
    connect(notices, &event_notices::saved, this, &main_window::show_saved);
    connect(opener_.get(), &event_opener::told, this, &main_window::tell);
    connect(opener_.get(), &event_opener::state_over, messages_, &message_bar::withdraw);
    connect(opener_.get(), &event_opener::content_changed, this, &main_window::refresh_content);
    connect(session_.get(), &event_session::facts_changed, this, &main_window::show_facts);
    connect(session_.get(), &event_session::opened, this, &main_window::show_event);
    connect(session_.get(), &event_session::closed, this, [this] {
        setWindowTitle(tr("Vistels"));
        saved_->show_nothing();
        show_facts();
        event_jobs_.cancel_all();
        if (making_) making_->set_has_place(true);
        Q_EMIT event_changed();
    });
}

void main_window::connect_side_bar() {
    connect(content_, &content_side_bar::open_asked, this,
            [this](const QString& folder) { opener_->open_folder(folder.toStdString()); });
    connect(content_, &content_side_bar::unknown_asked, this,
            [this](int kind, const QString& name, const QString& folder) {
                show_in_files(folder.toStdString());
                tell(unknown_kind_message(static_cast<item_kind>(kind), name, folder.toStdString()));
            });
    connect(content_, &content_side_bar::folders_dropped, vaults_.get(), &vault_commands::add);
    connect(content_, &content_side_bar::pattern_chosen, filter_commands_.get(), &filter_commands::apply);
    connect(filter_commands_.get(), &filter_commands::patterns_changed, this, &main_window::show_patterns);
    show_patterns();
    connect(content_, &content_side_bar::open_in_new_window_asked, this,
            &main_window::open_in_new_window_asked);
    content_changed_ = keeper_.changed.connect([this] {
        const bool is_first = content_->content().empty();
        content_->set_content(keeper_.vaults());
        (*actions_)[command::show_unavailable]->setChecked(vaults_->shows_unavailable());
        if (is_first) trace_start("vaults listed");
    });
    if (!keeper_.vaults().empty()) content_->set_content(keeper_.vaults());
    connect(vaults_.get(), &vault_commands::told, this, &main_window::tell);
    connect(vaults_.get(), &vault_commands::changed, this, &main_window::refresh_content);
}

void main_window::show_event() {
    // The place is that of the event now; the menu bar shows what goes on.
    if (making_) making_->set_has_place(false);
    const bool has_pictures = session_->shown_event()->has_collection();
    setWindowTitle(tr("%1 – Vistels").arg(session_->name()));
    work_->set_shows_pictures(has_pictures);
    if (code_) work_->set_code_content_width(code_->sizeHint().width());
    saved_->show_saved({});
    if (collection_) collection_->setFocus();
    Q_EMIT event_changed();
}

void main_window::connect_frame() {
    const auto show_state = [this] {
        const bool left = frame_->is_shown(window_frame::side::left);
        const bool right = frame_->is_shown(window_frame::side::right);
        tabs_->set_side_bar_shown(left);
        tabs_->set_inspector_shown(right);
        (*actions_)[command::side_bar]->setChecked(left);
        (*actions_)[command::inspector]->setChecked(right);
    };
    connect(frame_, &window_frame::shown_changed, this, show_state);
    connect(tabs_, &super_tab_row::side_bar_asked, this,
            [this](bool shown) { frame_->set_shown(window_frame::side::left, shown); });
    connect(tabs_, &super_tab_row::inspector_asked, this,
            [this](bool shown) { frame_->set_shown(window_frame::side::right, shown); });
    connect(tabs_, &super_tab_row::current_changed, this, &main_window::show_tab);
    show_state();
}

void main_window::tell(user_message message) {
    messages_->tell(std::move(message));
}

void main_window::refresh_content() {
    keeper_.refresh();
}

void main_window::set_neighbours(neighbours others) {
    neighbours_ = std::move(others);
    opener_->set_shown_elsewhere(neighbours_.show_if_open);
}

QMenu& main_window::window_menu() {
    return *menuBar()->findChild<QMenu*>(QStringLiteral("menu.Window"));
}

void main_window::show_facts() {
    content_->set_open(session_->folder(), session_->fact());
    open_event* event = session_->shown_event();
    if (event && event->has_unsaved_edits()) saved_->show_unsaved();
}

void main_window::show_saved(const QString& problem) {
    if (!problem.isEmpty()) return saved_->show_failure(problem);
    const bool more = session_->shown_event() && session_->shown_event()->has_unsaved_edits();
    if (more) return saved_->show_unsaved();
    saved_->show_saved(QTime::currentTime().toString(QStringLiteral("HH:mm:ss")));
}

void main_window::show_tab(int index) {
    work_->set_shows_code(index == code_tab);
    tabs_->set_current(index);
}

void main_window::choose_theme(const std::string& name) {
    use_theme(*qApp, name == "dark"    ? theme_choice::dark
                     : name == "light" ? theme_choice::light
                                       : theme_choice::desktop);
    show_theme_choice(name);
    Q_EMIT theme_chosen(QString::fromStdString(name));
}

void main_window::show_theme_choice(const std::string& name) {
    memory_.theme = name;
    const command themes[] = {command::theme_desktop, command::theme_dark, command::theme_light};
    (*actions_)[themes[name == "dark" ? 1 : name == "light" ? 2 : 0]]->setChecked(true);
}

void main_window::restore() {
    const QScreen* at = QGuiApplication::screenAt(memory_.place.center());
    const QRect room = (memory_.place.isNull() || !at ? screen() : at)->availableGeometry();
    const QRect usual(
        QPoint((room.width() - usual_size.width()) / 2, (room.height() - usual_size.height()) / 2) +
            room.topLeft(),
        usual_size);
    setGeometry(place_on_screen(memory_.place.isNull() ? usual : memory_.place, room));
    if (memory_.is_maximized) setWindowState(Qt::WindowMaximized);
    using side = window_frame::side;
    if (memory_.side_bar_width > 0) frame_->set_column_width(side::left, memory_.side_bar_width);
    if (memory_.inspector_width > 0) frame_->set_column_width(side::right, memory_.inspector_width);
    frame_->set_wanted(side::left, memory_.side_bar_shown);
    frame_->set_wanted(side::right, memory_.inspector_shown);
    session_->set_shows_health(memory_.playback_health_shown);
    work_->set_sizes(memory_.work_sizes);
    content_->set_folded(memory_.folded_vaults);
    show_tab(memory_.tab == code_tab ? code_tab : code_tab + 1);
    show_theme_choice(memory_.theme);
}

window_memory main_window::memory() const {
    using side = window_frame::side;
    window_memory now = memory_;
    now.is_maximized = isMaximized();
    now.place = isMaximized() || isFullScreen() ? normalGeometry() : geometry();
    now.side_bar_width = frame_->column_width(side::left);
    now.inspector_width = frame_->column_width(side::right);
    now.side_bar_shown = frame_->is_wanted(side::left);
    now.inspector_shown = frame_->is_wanted(side::right);
    now.playback_health_shown = session_->shows_health();
    now.tab = tabs_->current();
    now.folded_vaults = content_->folded();
    now.work_sizes = work_->sizes();
    return now;
}

bool main_window::agree_to_close() {
    auto unfinished = event_jobs_.unfinished();
    for (auto& one : window_jobs_.unfinished()) unfinished.push_back(std::move(one));
    open_event* event = session_->shown_event();
    agreed_ = agree_to_stop_jobs(*this, unfinished) && (!event || agree_to_leave(*this, *event));
    return agreed_;
}

void main_window::close_when_saved() {
    session_->when_saved([this] { QMetaObject::invokeMethod(this, &QWidget::close, Qt::QueuedConnection); });
}

void main_window::closeEvent(QCloseEvent* event) {
    if (event->spontaneous() && !agreed_) {  // by the user; the program itself closes what is saved
        event->ignore();
        return close_when_saved();
    }
    if (!agreed_ && !agree_to_close()) return event->ignore();
    agreed_ = false;
    event_jobs_.cancel_all();
    window_jobs_.cancel_all();
    opener_->cancel();
    Q_EMIT closing();
    session_->close();
    event->accept();
}

void main_window::dragEnterEvent(QDragEnterEvent* event) {
    if (event->mimeData()->hasUrls()) event->acceptProposedAction();
}

void main_window::dropEvent(QDropEvent* event) {
    std::vector<std::string> paths;
    for (const QUrl& url : event->mimeData()->urls()) {
        if (url.isLocalFile()) paths.push_back(url.toLocalFile().toStdString());
    }
    if (!paths.empty()) opener_->open_paths(paths);
}

// An Escape that nobody else had a use for.
void main_window::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape && filter_commands_->clear_if_nothing_passes()) return;
    QMainWindow::keyPressEvent(event);
}

// Who has typed goes on from there.
bool main_window::focusNextPrevChild(bool next) {
    if (!focusWidget() && left_field_ && left_field_->isVisible() && left_field_->isEnabled()) {
        left_field_->setFocus(Qt::TabFocusReason);
    }
    return QMainWindow::focusNextPrevChild(next);
}

void main_window::show_patterns() {
    std::vector<content_pattern> named;
    for (const auto& one : load_search_patterns(places_)) {
        if (!one.name.empty()) named.push_back({one.name, one.pattern});
    }
    content_->set_patterns(std::move(named));
}

bool main_window::event(QEvent* event) {
    // Where nothing has the focus, Qt would give it to the first button there is, and Return would press it.
    if (event->type() == QEvent::WindowActivate && !focusWidget() && session_->is_open() && collection_) {
        collection_->setFocus();
    }
    const bool done = QMainWindow::event(event);
    if (event->type() == QEvent::WindowActivate) show_patterns();  // another window may have changed them
    if (event->type() == QEvent::Paint && !appeared_) {
        appeared_ = true;
        Q_EMIT appeared();
    }
    return done;
}

}  // namespace vistels
