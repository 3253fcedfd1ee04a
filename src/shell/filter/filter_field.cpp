// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/filter/filter_field.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <algorithm>

#include "shell/filter/filter_completer.h"
#include "shell/filter/filter_editor.h"
#include "shell/filter/filter_entry.h"
#include "shell/filter/filter_metrics.h"
#include "shell/filter/formula_menu.h"
#include "shell/filter/pattern_menu.h"
#include "shell/kit/controls.h"
#include "shell/kit/icons.h"
#include "shell/kit/theme.h"

namespace vistels {

namespace {

// So far the focus ring stands out from the frame.
int ring_room() {
    const theme_metrics& metrics = theme::current().metrics;
    return metrics.focus_ring + metrics.line;
}

}  // namespace

filter_field::filter_field(const QString& name, QWidget* parent)
    : QWidget(parent), editor_(new filter_editor(this)), warning_(new QLabel(this)) {
    setObjectName(name);
    setAccessibleName(tr("Filter"));
    build();
    setFocusProxy(editor_);
    completer_ = new filter_completer(*this);
    connect(editor_, &filter_editor::typed, this, [this] {
        if (entry_) entry_->type(editor_->text());
    });
    connect(editor_, &filter_editor::accepted, this, [this] {
        if (apply()) leave();
    });
    connect(editor_, &filter_editor::escaped, this, [this] {
        clear();
        leave();
    });
    connect(editor_, &filter_editor::focus_changed, this, [this] { update(); });
    connect(qApp, &QApplication::focusChanged, this, &filter_field::follow_focus);
    theme_changed_ = theme::changed().connect([this] { show_state(); });
    set_entry(nullptr);
}

filter_field::~filter_field() {
    delete message_;
}

void filter_field::build() {
    const theme_metrics& metrics = theme::current().metrics;
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setFixedHeight(filter_sizes.filter_height + 2 * ring_room());
    setMaximumWidth(metrics.filter_width + 2 * ring_room());
    auto* line = new QHBoxLayout(this);
    line->setContentsMargins(ring_room() + metrics.grid, ring_room(), ring_room() + metrics.grid,
                             ring_room());
    line->setSpacing(metrics.line);
    patterns_ = add_button("filter", "patterns", tr("Filters used before"));
    line->addWidget(patterns_);
    editor_->setObjectName(objectName() + QStringLiteral(".text"));
    editor_->setAccessibleName(tr("Filter"));
    editor_->setToolTip(
        tr("Words to find, or a formula such as [RN]\"Shot\" & [QN]\"Marek*\" "
           "(Return: apply, Escape: clear)"));
    editor_->setPlaceholderText(tr("Filter clips"));
    line->addWidget(editor_, 1);
    warning_->setObjectName(objectName() + QStringLiteral(".warning"));
    warning_->setFixedSize(filter_sizes.filter_button, filter_sizes.filter_button);
    warning_->setAlignment(Qt::AlignCenter);
    line->addWidget(warning_);
    clear_ = add_button("close", "clear", tr("Clear the filter (Escape)"));
    line->addWidget(clear_);
    insert_ = add_button("plus", "insert", tr("Insert a name, a note or stars"));
    line->addWidget(insert_);
    connect(patterns_, &QAbstractButton::clicked, this, &filter_field::open_patterns);
    connect(insert_, &QAbstractButton::clicked, this, &filter_field::open_formula_menu);
    connect(clear_, &QAbstractButton::clicked, this, &filter_field::clear);
    // In the order in which they stand.
    setTabOrder(patterns_, editor_);
    setTabOrder(editor_, clear_);
    setTabOrder(clear_, insert_);
}

icon_button* filter_field::add_button(const char* icon, const char* part, const QString& tip) {
    const theme_metrics& metrics = theme::current().metrics;
    auto* button = new icon_button(QLatin1String(icon), tip, this);
    button->setObjectName(objectName() + QLatin1Char('.') + QLatin1String(part));
    button->set_size(filter_sizes.filter_button, filter_sizes.filter_button, metrics.icon);
    return button;
}

void filter_field::set_entry(filter_entry* entry) {
    if (entry_) {
        entry_->disconnect(this);
        entry_->disconnect(completer_);
    }
    entry_ = entry;
    if (entry_) {
        connect(entry_, &filter_entry::text_changed, this, &filter_field::show_text);
        connect(entry_, &filter_entry::message_changed, this, &filter_field::show_state);
        connect(entry_, &filter_entry::source_changed, this, &filter_field::show_state);
        connect(entry_, &filter_entry::texts_changed, completer_, &filter_completer::take_up_texts);
        connect(entry_, &filter_entry::colours_changed, this,
                [this] { editor_->set_colours(entry_->colours()); });
        editor_->set_colours(entry_->colours());
    }
    show_text();
    show_state();
}

filter_entry* filter_field::entry() const {
    return entry_;
}

void filter_field::set_message_ground(QWidget* ground) {
    delete message_;
    if (!ground) return;
    message_ = make_label({}, type_step::secondary, QStringLiteral("popover"), ground);
    message_->setObjectName(objectName() + QStringLiteral(".message"));
    message_->hide();
    show_state();
}

void filter_field::show_text() {
    editor_->set_text(entry_ ? entry_->text() : QString());
    clear_->setVisible(!editor_->text().isEmpty());
}

void filter_field::show_state() {
    const bool is_usable = entry_ && entry_->has_source();
    setEnabled(is_usable);
    const QString message = entry_ ? entry_->message() : QString();
    const theme& look = theme::current();
    warning_->setVisible(!message.isEmpty());
    warning_->setToolTip(message);
    warning_->setAccessibleName(message);
    warning_->setPixmap(
        icon_pixmap(QStringLiteral("warning"), look.live, look.metrics.icon, devicePixelRatioF()));
    editor_->setAccessibleDescription(message);
    place_message();
    update();
}

void filter_field::place_message() {
    if (!message_) return;
    const QString message = entry_ ? entry_->message() : QString();
    message_->setVisible(!message.isEmpty());
    if (message.isEmpty()) return completer_->follow_field();
    const theme_metrics& metrics = theme::current().metrics;
    QWidget* ground = message_->parentWidget();
    const QPoint at = mapTo(ground, QPoint(ring_room(), height() - ring_room()));
    const int room =
        std::min(filter_sizes.message_greatest_width, ground->width() - at.x() - metrics.padding);
    const int margins = 2 * (metrics.padding + metrics.line);
    message_->setText(message_->fontMetrics().elidedText(message, Qt::ElideRight, room - margins));
    message_->setToolTip(message);
    message_->setAccessibleName(message);
    message_->resize(std::min(room, message_->sizeHint().width()), message_->sizeHint().height());
    message_->move(at.x(), at.y() + metrics.grid);
    message_->raise();
    completer_->follow_field();
}

void filter_field::focus() {
    editor_->setFocus(Qt::ShortcutFocusReason);
    editor_->selectAll();
}

void filter_field::clear() {
    if (entry_) entry_->clear();
    show_text();
}

bool filter_field::apply() {
    return entry_ && entry_->apply(editor_->text());
}

void filter_field::leave() {
    if (!editor_->hasFocus()) return;
    if (before_ && before_->isVisible() && before_->isEnabled()) {
        before_->setFocus(Qt::OtherFocusReason);
    } else {
        editor_->clearFocus();
    }
}

void filter_field::follow_focus(QWidget* before, QWidget* now) {
    if (now != editor_ || !before || isAncestorOf(before)) return;
    const bool types_too = qobject_cast<filter_editor*>(before) != nullptr;
    before_ = before->window() == window() && !types_too ? before : nullptr;
}

void filter_field::open_patterns() {
    if (!entry_ || !isEnabled()) return;
    auto* menu = new pattern_menu(*this);
    open_under(*patterns_, *menu);
}

void filter_field::open_formula_menu() {
    if (!entry_ || !isEnabled()) return;
    auto* menu = new formula_menu(*this);
    open_under(*insert_, *menu);
}

void filter_field::open_under(icon_button& button, QMenu& menu) {
    menu.setAttribute(Qt::WA_DeleteOnClose);
    menu.popup(button.mapToGlobal(QPoint(0, button.height() + theme::current().metrics.grid)));
}

QRect filter_field::frame() const {
    const int room = ring_room();
    return rect().adjusted(room, room, -room, -room);
}

QRect filter_field::taken_room() const {
    QRect room = frame();
    if (message_ && message_->isVisible())
        room.setBottom(room.bottom() + theme::current().metrics.grid + message_->height());
    return room;
}

QSize filter_field::sizeHint() const {
    return {theme::current().metrics.filter_width + 2 * ring_room(), height()};
}

QSize filter_field::minimumSizeHint() const {
    return {filter_sizes.filter_least_width, height()};
}

void filter_field::paintEvent(QPaintEvent*) {
    const theme& look = theme::current();
    const bool is_wrong = entry_ && !entry_->message().isEmpty();
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QColor edge = is_wrong ? look.live : isEnabled() ? look.edge : look.line;
    painter.setPen(QPen(edge, look.metrics.line));
    painter.setBrush(look.field);
    painter.drawRoundedRect(outline_of(frame()), look.metrics.radius_control, look.metrics.radius_control);
    if (editor_->hasFocus()) paint_inner_focus_ring(painter, look, rect());
}

void filter_field::resizeEvent(QResizeEvent*) {
    completer_->hide();
    place_message();
}

void filter_field::moveEvent(QMoveEvent*) {
    completer_->hide();
    place_message();
}

// The frame round the text belongs to it.
void filter_field::mousePressEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton && isEnabled()) editor_->setFocus(Qt::MouseFocusReason);
}

}  // namespace vistels
