// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/window/window_frame.h"

#include <QEvent>
#include <QKeyEvent>
#include <QVBoxLayout>
#include <algorithm>

#include "shell/kit/pane_splitter.h"
#include "shell/kit/theme.h"
#include "shell/window/window_metrics.h"

namespace vistels {

window_frame::window_frame(QWidget* left, QWidget* middle, QWidget* right, QWidget* parent)
    : QWidget(parent), splitter_(new pane_splitter(Qt::Horizontal, this)), middle_(middle) {
    const theme_metrics& metrics = theme::current().metrics;
    left_ = {left,
             new QWidget(this),
             window_sizes.side_bar_width,
             window_sizes.side_bar_least_width,
             window_sizes.side_bar_greatest_width,
             window_sizes.small_window_width};
    right_ = {right,
              new QWidget(this),
              window_sizes.inspector_width,
              metrics.inspector_least_width,
              window_sizes.inspector_greatest_width,
              window_sizes.overlay_below_width};
    splitter_->setObjectName(QStringLiteral("columns"));
    splitter_->addWidget(left);
    splitter_->addWidget(middle);
    splitter_->addWidget(right);
    for (column* one : {&left_, &right_}) {
        one->widget->setMinimumWidth(one->least);
        one->widget->setMaximumWidth(one->greatest);
        one->widget->installEventFilter(this);
        one->edge->setAutoFillBackground(true);
        one->edge->setBackgroundRole(QPalette::Dark);
    }
    splitter_->setStretchFactor(splitter_->indexOf(middle), 1);
    auto* whole = new QVBoxLayout(this);
    whole->setContentsMargins(0, 0, 0, 0);
    whole->addWidget(splitter_);
    connect(splitter_, &QSplitter::splitterMoved, this, &window_frame::keep_widths);
}

bool window_frame::is_shown(side which) const {
    const column& one = at(which);
    return one.overlay ? one.overlay_wanted : one.wanted;
}

bool window_frame::is_overlay(side which) const {
    return at(which).overlay;
}

bool window_frame::is_wanted(side which) const {
    return at(which).wanted;
}

void window_frame::set_wanted(side which, bool wanted) {
    at(which).wanted = wanted;
    arrange();
    Q_EMIT shown_changed();
}

int window_frame::column_width(side which) const {
    return at(which).width;
}

void window_frame::set_column_width(side which, int width) {
    column& one = at(which);
    one.width = std::clamp(width, one.least, one.greatest);
    arrange();
}

void window_frame::set_shown(side which, bool shown) {
    if (is_shown(which) == shown) return;
    column& one = at(which);
    (one.overlay ? one.overlay_wanted : one.wanted) = shown;
    arrange();
    if (shown && one.overlay) one.widget->setFocus(Qt::OtherFocusReason);
    Q_EMIT shown_changed();
}

void window_frame::resizeEvent(QResizeEvent*) {
    arrange();
}

void window_frame::arrange() {
    const bool left_was = is_shown(side::left);
    const bool right_was = is_shown(side::right);
    put(left_, width() < left_.overlay_below);
    put(right_, width() < right_.overlay_below);
    QList<int> sizes;
    int rest = width();
    for (int i = 0; i < splitter_->count(); ++i) {
        const QWidget* widget = splitter_->widget(i);
        const int wide = widget == left_.widget && left_.wanted     ? left_.width
                         : widget == right_.widget && right_.wanted ? right_.width
                                                                    : 0;
        rest -= wide;
        sizes << wide;
    }
    sizes[splitter_->indexOf(middle_)] = std::max(1, rest);
    splitter_->setSizes(sizes);
    place_overlays();
    if (left_was != is_shown(side::left) || right_was != is_shown(side::right)) Q_EMIT shown_changed();
}

// Puts a column beside the middle or over it.
void window_frame::put(column& one, bool overlay) {
    if (overlay != one.overlay) {
        one.overlay = overlay;
        if (overlay) {
            one.overlay_wanted = false;
            one.widget->setParent(this);
        } else {
            splitter_->insertWidget(&one == &left_ ? 0 : splitter_->count(), one.widget);
        }
    }
    one.widget->setVisible(overlay ? one.overlay_wanted : one.wanted);
}

void window_frame::place_overlays() {
    for (column* one : {&left_, &right_}) {
        const bool lies_over = one->overlay && one->overlay_wanted;
        one->edge->setVisible(lies_over);
        if (!lies_over) continue;
        const int wide = std::min(one->width, width());
        const int line = theme::current().metrics.line;
        one->widget->setGeometry(one == &left_ ? 0 : width() - wide, 0, wide, height());
        one->edge->setGeometry(one == &left_ ? wide : width() - wide - line, 0, line, height());
        one->widget->raise();
        one->edge->raise();
    }
}

void window_frame::keep_widths() {
    for (column* one : {&left_, &right_}) {
        if (!one->overlay && one->widget->isVisible()) one->width = one->widget->width();
    }
}

bool window_frame::eventFilter(QObject* watched, QEvent* event) {
    // Esc puts away what lies over the middle.
    if (event->type() == QEvent::KeyPress && static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape) {
        for (const side which : {side::left, side::right}) {
            if (watched != at(which).widget || !is_overlay(which)) continue;
            set_shown(which, false);
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

}  // namespace vistels
