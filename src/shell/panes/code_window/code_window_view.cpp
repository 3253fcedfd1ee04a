// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/panes/code_window/code_window_view.h"

#include <QAction>
#include <QActionGroup>
#include <QEvent>
#include <QMenu>
#include <QPainter>
#include <QScrollArea>
#include <QScrollBar>
#include <QToolButton>
#include <algorithm>
#include <utility>

#include "shell/kit/controls.h"
#include "shell/kit/icons.h"
#include "shell/kit/pane_header.h"
#include "shell/kit/theme.h"
#include "shell/panes/code_window/clip_list_popover.h"
#include "shell/panes/code_window/code_window_canvas.h"
#include "shell/panes/code_window/code_window_metrics.h"

namespace vistels {

namespace {

constexpr double least_height_share = 0.8;

}  // namespace

code_window_view::code_window_view(QWidget* parent)
    : QWidget(parent),
      header_(new pane_header(QStringLiteral("code-window"), tr("Code window"), this)),
      clashes_(new QToolButton(this)),
      links_(new icon_button(QStringLiteral("link"), tr("Links of the buttons"), this)),
      which_links_(new QActionGroup(this)),
      area_(new QScrollArea(this)),
      canvas_(new code_window_canvas(area_)),
      list_(new clip_list_popover(this)) {
    setObjectName(QStringLiteral("code_window_view"));
    setAccessibleName(tr("Code window pane"));
    const theme_metrics& metrics = theme::current().metrics;
    clashes_->setObjectName(QStringLiteral("code_window.clashes"));
    clashes_->setFocusPolicy(Qt::TabFocus);
    clashes_->setFixedSize(metrics.icon_button, metrics.icon_button);
    clashes_->hide();
    header_->add_control(clashes_);
    area_->setObjectName(QStringLiteral("code_window_area"));
    area_->setFrameShape(QFrame::NoFrame);
    area_->setFocusPolicy(Qt::NoFocus);
    area_->setWidget(canvas_);
    build_links();
    connect_canvas();
    // Colours that a button does not set itself come from the theme.
    theme_changed_.push_back(theme::changed().connect([this] { show_buttons(); }));
}

void code_window_view::connect_canvas() {
    connect(canvas_, &code_window_canvas::went_down, this,
            [this](const std::string& button, double moment, const QPointF& place, bool latches) {
                if (!source_) return;
                pressing_ = button;
                source_->press(button, moment, place, latches);
                pressing_.clear();
                const code_window_button* pressed = canvas_->button(button);
                if (pressed && pressed->button().lists_clips) show_list(*pressed);
            });
    connect(canvas_, &code_window_canvas::went_up, this, [this](const std::string& button, double moment) {
        if (source_) source_->release(button, moment);
    });
    connect(list_, &clip_list_popover::chosen, this, [this](double seconds) { seek_asked.emit(seconds); });
    for (QScrollBar* bar : {area_->horizontalScrollBar(), area_->verticalScrollBar()}) {
        connect(bar, &QScrollBar::valueChanged, this, [this] {
            if (!is_fitting_) note_scroll();
        });
    }
    // What the keys do besides pressing buttons is what the window's keys window tells.
    connect(clashes_, &QToolButton::clicked, this, [this] {
        for (QAction* one : window()->actions()) {
            if (one->objectName() == QLatin1String("keys")) one->trigger();
        }
    });
}

code_window_view::~code_window_view() {
    // A button that is held lets go when it is hidden, which must find no source and no pane any more.
    release_mouse();
    source_.reset();
    canvas_->disconnect(this);
    delete list_;
}

void code_window_view::set_source(std::unique_ptr<code_window_source> source) {
    release_mouse();
    connections_.clear();
    source_ = std::move(source);
    if (source_) {
        connections_.push_back(source_->buttons_changed.connect([this] { show_buttons(); }));
        connections_.push_back(source_->states_changed.connect([this] { show_states(); }));
        connections_.push_back(source_->state_changed.connect([this](const std::string& one) {
            code_window_button* button = canvas_->button(one);
            if (!button) return;
            show_state(*button);
            button->set_now(source_->collection_time());
            show_down_count();
        }));
        connections_.push_back(source_->links_changed.connect([this] { show_links(); }));
        connections_.push_back(
            source_->link_fired.connect([this](const std::string& from, const std::string& to,
                                               const link_kind& kind) { follow_link(from, to, kind); }));
        connections_.push_back(
            source_->center_wanted.connect([this](const std::string& one) { center_on(one); }));
    }
    show_buttons();
    show_links();
}

void code_window_view::set_name(const QString& name) {
    header_->set_name(name);
}

void code_window_view::show_buttons() {
    canvas_->set_buttons(source_ ? source_->buttons() : std::vector<code_button>());
    if (list_ && !canvas_->button(list_->shown_button())) list_->hide();
    fit();
    show_states();
    arrows_->raise();
    arrows_->update();  // where the buttons are by now
    show_key_clashes();
}

void code_window_view::set_ground(std::optional<QColor> ground) {
    canvas_->set_ground(std::move(ground));
}

void code_window_view::set_pictures(std::map<std::string, QImage> pictures) {
    canvas_->set_pictures(std::move(pictures));
}

void code_window_view::scroll_to(const QPointF& place) {
    scroll_ = place;
    scroll();
}

void code_window_view::show_key_clashes() {
    QStringList lines;
    if (source_) {
        const std::vector<bound_button> bound = source_->bound_buttons();
        const std::vector<key_clash> clashes = find_key_clashes(bound, window()->actions());
        for (std::size_t i = 0; i < bound.size(); ++i) {
            if (clashes[i])
                lines << tr("%1 (%2): %3").arg(bound[i].name, bound[i].key, key_clash_words(clashes[i]));
        }
    }
    clashes_->setVisible(!lines.isEmpty());
    clashes_->setIcon(icon(QStringLiteral("warning"), theme::current().warning));
    clashes_->setToolTip(tr("Keys that do more than one thing:\n%1").arg(lines.join(QLatin1Char('\n'))));
    clashes_->setAccessibleName(tr("Keys that do more than one thing: %1").arg(lines.size()));
    clashes_->setAccessibleDescription(clashes_->toolTip());
    header_->update();  // what it has room for
}

// Of which links there are few words: the choice is a menu, and the button is lit while any are shown.
void code_window_view::build_links() {
    links_->setObjectName(QStringLiteral("code_window.links"));
    links_->setCheckable(true);
    links_->hide();
    header_->add_control(links_);
    arrows_ = new link_arrows(canvas_, [this](const std::string& uuid) {
        const code_window_button* one = canvas_->button(uuid);
        const int margin = code_window_button::margin();
        return one ? QRectF(one->geometry()).adjusted(margin, margin, -margin, -margin) : QRectF();
    });
    arrows_->hide();
    canvas_->installEventFilter(this);
    auto* menu = new QMenu(links_);
    const QString lines[] = {tr("No Links"), tr("Links of the Button Pointed At"), tr("All Links")};
    for (int which = 0; which < 3; ++which) {
        QAction* line = menu->addAction(lines[which]);
        line->setCheckable(true);
        line->setChecked(which == 0);
        which_links_->addAction(line);
        connect(line, &QAction::triggered, this,
                [this, which] { set_links_shown(static_cast<links_shown>(which)); });
    }
    connect(links_, &QAbstractButton::clicked, this, [this, menu] {
        links_->setChecked(links_shown_ != links_shown::none);
        menu->popup(links_->mapToGlobal(QPoint(0, links_->height())));
    });
    connect(canvas_, &code_window_canvas::current_changed, this, &code_window_view::show_current);
}

void code_window_view::set_links_shown(links_shown shown) {
    links_shown_ = shown;
    which_links_->actions()[static_cast<qsizetype>(shown)]->setChecked(true);
    links_->setChecked(shown != links_shown::none);
    arrows_->set_shown(shown);
    show_links();
}

// Made only for arrows that are seen: there may be very many.
void code_window_view::show_links() {
    const bool has_any = source_ && source_->has_links();
    const QStringList problems = has_any ? source_->link_problems() : QStringList();
    links_->setVisible(has_any);
    links_->set_icon(problems.isEmpty() ? QStringLiteral("link") : QStringLiteral("warning"));
    links_->set_tip(problems.isEmpty()
                        ? tr("Links of the buttons")
                        : tr("Links of the buttons. To look at:\n%1").arg(problems.join(QLatin1Char('\n'))));
    header_->update();
    const bool is_seen = has_any && links_shown_ != links_shown::none;
    arrows_->set_links(is_seen ? source_->links() : std::vector<code_link>());
    arrows_->setGeometry(canvas_->rect());
    arrows_->raise();
    show_current();
}

// What the button does with others is told where it is pointed at.
void code_window_view::show_current() {
    code_window_button* current = canvas_->current();
    if (current && source_) current->set_link_words(source_->link_words(current->button().uuid));
    arrows_->set_current(current ? current->button().uuid : std::string());
}

void code_window_view::follow_link(const std::string& from, const std::string& to, const link_kind& kind) {
    arrows_->run(from, to, kind);
    code_window_button* target = canvas_->button(to);
    if (target && kind.effect == link_effect::block) target->show_blocked();
}

bool code_window_view::eventFilter(QObject* watched, QEvent* event) {
    if (watched == canvas_ && event->type() == QEvent::Resize) arrows_->setGeometry(canvas_->rect());
    return QWidget::eventFilter(watched, event);
}

void code_window_view::show_list(const code_window_button& button) {
    if (!list_ || !isVisible()) return;
    const std::string& uuid = button.button().uuid;
    list_->show_beside(button, uuid, button.button().list_title, source_->clips_of(uuid),
                       source_->collection_time());
}

void code_window_view::show_states() {
    for (code_window_button* button : canvas_->buttons()) {
        if (source_) show_state(*button);
    }
    tick();
    show_down_count();
}

void code_window_view::show_state(code_window_button& button) {
    const code_button& shown = button.button();
    const code_button_state state = source_->state(shown.uuid);
    const bool goes_down = state.is_down && !button.state().is_down;
    button.set_state(state);
    // By a key; what is pressed here shows its list in any case.
    if (goes_down && shown.lists_clips && shown.uuid != pressing_) show_list(button);
    if (list_ && list_->shown_button() == shown.uuid) list_->set_clips(source_->clips_of(shown.uuid));
}

void code_window_view::show_down_count() {
    const std::size_t down = source_ ? canvas_->down_count() : 0;
    header_->set_live(down > 0);
    header_->set_fact(down > 0 ? tr("%1 down").arg(down) : tr("%1 buttons").arg(canvas_->buttons().size()));
}

void code_window_view::tick() {
    if (source_) canvas_->set_now(source_->collection_time());
}

void code_window_view::release_mouse() {
    canvas_->let_go();
}

QSize code_window_view::sizeHint() const {
    QRectF whole;
    for (const code_window_button* button : canvas_->buttons()) whole |= button->button().place;
    const theme_metrics& metrics = theme::current().metrics;
    const QSizeF content = whole.isEmpty()
                               ? QSizeF(metrics.small_code_window_width, metrics.small_code_window_width)
                               : QSizeF(whole.right(), whole.bottom());
    return (content + QSizeF(code_window_sizes.button_margin,
                             code_window_sizes.button_margin + metrics.pane_header_height))
        .toSize();
}

void code_window_view::resizeEvent(QResizeEvent*) {
    const int head = theme::current().metrics.pane_header_height;
    header_->setGeometry(0, 0, width(), head);
    is_fitting_ = true;
    area_->setGeometry(0, head, width(), std::max(0, height() - head));
    fit();
}

void code_window_view::changeEvent(QEvent* event) {
    // What is held when the window is left is released at that moment.
    if (event->type() == QEvent::ActivationChange && !isActiveWindow()) release_mouse();
    QWidget::changeEvent(event);
}

// The scroll bar is there or not by this alone: were it the scroll area's choice, a canvas that fits the
// width only without it would make it come and go for ever.
void code_window_view::fit() {
    is_fitting_ = true;
    QSize room = area_->size();
    const QSizeF whole = QSizeF(sizeHint()) - QSizeF(0, theme::current().metrics.pane_header_height);
    // Buttons that are a little too many to be seen at once are drawn a little smaller.
    const double by_width = std::min(1.0, room.width() / std::max(1.0, whole.width()));
    const double by_height = room.height() / std::max(1.0, whole.height());
    if (by_height < by_width && by_height >= by_width * least_height_share) {
        room.setWidth(static_cast<int>(whole.width() * by_height));
    }
    canvas_->fit_to(room);
    const bool scrolls = canvas_->height() > room.height();
    if (scrolls)
        canvas_->fit_to({area_->width() - area_->verticalScrollBar()->sizeHint().width(), room.height()});
    area_->setVerticalScrollBarPolicy(scrolls ? Qt::ScrollBarAlwaysOn : Qt::ScrollBarAlwaysOff);
    is_fitting_ = false;
    scroll();
}

// As far as there is anything to scroll.
void code_window_view::scroll() {
    if (!scroll_) return;
    is_fitting_ = true;
    area_->horizontalScrollBar()->setValue(static_cast<int>(scroll_->x() * canvas_->scale()));
    area_->verticalScrollBar()->setValue(static_cast<int>(scroll_->y() * canvas_->scale()));
    is_fitting_ = false;
}

void code_window_view::note_scroll() {
    scroll_ = QPointF(area_->horizontalScrollBar()->value(), area_->verticalScrollBar()->value()) /
              canvas_->scale();
    scrolled.emit(*scroll_);
}

// As far as there is anything to scroll.
void code_window_view::center_on(const std::string& button) {
    const code_window_button* found = canvas_->button(button);
    if (!found) return;
    const QPoint middle = found->geometry().center();
    const QSize seen = area_->viewport()->size();
    scroll_ = QPointF(middle - QPoint(seen.width() / 2, seen.height() / 2)) / canvas_->scale();
    scroll();
}

void code_window_view::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    show_key_clashes();  // it is in its window now
}

void code_window_view::hideEvent(QHideEvent* event) {
    if (list_) list_->hide();
    QWidget::hideEvent(event);
}

void code_window_view::paintEvent(QPaintEvent*) {
    QPainter(this).fillRect(rect(), theme::current().pane);
}

}  // namespace vistels
