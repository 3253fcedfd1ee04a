// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/panes/code_window/code_window_view.h"

#include <QEvent>
#include <QPainter>
#include <QScrollArea>
#include <QScrollBar>
#include <algorithm>

#include "shell/kit/pane_header.h"
#include "shell/kit/theme.h"
#include "shell/panes/code_window/code_window_canvas.h"
#include "shell/panes/code_window/code_window_metrics.h"

namespace vistels {

namespace {

constexpr double least_height_share = 0.8;

}  // namespace

code_window_view::code_window_view(QWidget* parent)
    : QWidget(parent),
      header_(new pane_header(QStringLiteral("code-window"), tr("Code window"), this)),
      area_(new QScrollArea(this)),
      canvas_(new code_window_canvas(area_)) {
    setObjectName(QStringLiteral("code_window_view"));
    setAccessibleName(tr("Code window pane"));
    area_->setObjectName(QStringLiteral("code_window_area"));
    area_->setFrameShape(QFrame::NoFrame);
    area_->setFocusPolicy(Qt::NoFocus);
    area_->setWidget(canvas_);
    connect(canvas_, &code_window_canvas::went_down, this, [this](const std::string& button, double moment) {
        if (source_) source_->press(button, moment);
    });
    connect(canvas_, &code_window_canvas::went_up, this, [this](const std::string& button, double moment) {
        if (source_) source_->release(button, moment);
    });
    // Colours that a button does not set itself come from the theme.
    theme_changed_.push_back(theme::changed().connect([this] { show_buttons(); }));
}

code_window_view::~code_window_view() {
    // A button that is held lets go when it is hidden, which must find no source any more.
    release_mouse();
    source_.reset();
}

void code_window_view::set_source(std::unique_ptr<code_window_source> source) {
    release_mouse();
    connections_.clear();
    source_ = std::move(source);
    if (source_) {
        connections_.push_back(source_->buttons_changed.connect([this] { show_buttons(); }));
        connections_.push_back(source_->states_changed.connect([this] { show_states(); }));
    }
    show_buttons();
}

void code_window_view::set_name(const QString& name) {
    header_->set_name(name);
}

void code_window_view::show_buttons() {
    canvas_->set_buttons(source_ ? source_->buttons() : std::vector<code_button>());
    fit();
    show_states();
}

void code_window_view::show_states() {
    std::size_t down = 0;
    for (code_window_button* button : canvas_->buttons()) {
        if (!source_) break;
        const code_button_state state = source_->state(button->button().uuid);
        button->set_state(state);
        if (state.is_down) ++down;
    }
    tick();
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
}

void code_window_view::paintEvent(QPaintEvent*) {
    QPainter(this).fillRect(rect(), theme::current().pane);
}

}  // namespace vistels
