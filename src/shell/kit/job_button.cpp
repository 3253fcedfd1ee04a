// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/kit/job_button.h"

#include <QEnterEvent>
#include <QFontMetrics>
#include <QKeyEvent>
#include <QPainter>

#include "shell/kit/controls.h"
#include "shell/kit/job_metrics.h"
#include "shell/kit/job_popover.h"
#include "shell/kit/job_words.h"
#include "shell/kit/theme.h"

namespace vistels {

job_button::job_button(job_list& list, QWidget* parent)
    : QAbstractButton(parent), list_(list), popover_(new job_popover(list, this)) {
    setObjectName(QStringLiteral("jobs"));
    setFocusPolicy(Qt::TabFocus);
    QSizePolicy room(QSizePolicy::Fixed, QSizePolicy::Fixed);
    room.setRetainSizeWhenHidden(true);
    setSizePolicy(room);
    connect(this, &QAbstractButton::clicked, this, &job_button::show_jobs);
    changed_ = list_.changed.connect([this] { follow(); });
    progressed_ = list_.progressed.connect([this](job_list::job_id) { follow(); });
    hide();
    follow();
}

void job_button::follow() {
    std::vector<job_status> lasting;
    for (auto& one : list_.jobs()) {
        if (one.lasts) lasting.push_back(std::move(one));
    }
    const bool is_shown = !lasting.empty();
    if (isHidden() == is_shown) {
        setVisible(is_shown);
        Q_EMIT shown_changed(is_shown);
    }
    if (!is_shown) return;
    const bool is_one = lasting.size() == 1;
    progress_ = 0;
    for (const auto& one : lasting) progress_ += one.progress / static_cast<double>(lasting.size());
    words_ = is_one ? job_title(lasting.front()) : tr("%1 tasks").arg(lasting.size());
    const bool is_moving = !is_one || lasting.front().now == job_status::state::running;
    fact_ = is_moving ? job_percent(progress_) : job_fact(lasting.front());
    QStringList lines;
    for (const auto& one : lasting) lines << job_title(one) + QStringLiteral(": ") + job_fact(one);
    setAccessibleName(tr("Tasks: %1, %2").arg(words_, fact_));
    setToolTip(lines.join(QLatin1Char('\n')));
    update();
}

void job_button::show_jobs() {
    if (isVisible()) popover_->show_below(this);
}

QSize job_button::sizeHint() const {
    return {job_sizes.button_width, theme::current().metrics.icon_button};
}

void job_button::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) return click();
    QAbstractButton::keyPressEvent(event);
}

// The tool tip tells the time that is left.
void job_button::enterEvent(QEnterEvent* event) {
    follow();
    QAbstractButton::enterEvent(event);
}

void job_button::paintEvent(QPaintEvent*) {
    const theme& look = theme::current();
    const theme_metrics& metrics = look.metrics;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (underMouse() || isDown()) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(look.hover);
        painter.drawRoundedRect(rect(), metrics.radius_control, metrics.radius_control);
    }
    if (hasFocus()) paint_inner_focus_ring(painter, look, rect());
    QRect room = rect().adjusted(metrics.padding, 0, -metrics.padding, 0);
    const QRectF bar(room.right() + 1 - job_sizes.bar_width, (height() - job_sizes.bar_height) / 2.0,
                     job_sizes.bar_width, job_sizes.bar_height);
    painter.setPen(Qt::NoPen);
    painter.setBrush(look.line);
    painter.drawRoundedRect(bar, bar.height() / 2, bar.height() / 2);
    painter.setBrush(look.accent);
    const QRectF done(bar.topLeft(), QSizeF(bar.width() * progress_, bar.height()));
    painter.drawRoundedRect(done, bar.height() / 2, bar.height() / 2);
    room.setRight(room.right() - job_sizes.bar_width - metrics.padding);
    const QFont font = theme::font(type_step::secondary);
    const QFontMetrics measured(font);
    painter.setFont(font);
    painter.setPen(look.muted);
    // As wide as it gets, so that the title stays in its place.
    const int fact_width =
        std::max(measured.horizontalAdvance(job_percent(1)), measured.horizontalAdvance(fact_));
    painter.drawText(room, Qt::AlignRight | Qt::AlignVCenter, fact_);
    room.setRight(room.right() - fact_width - metrics.padding);
    painter.drawText(room, Qt::AlignRight | Qt::AlignVCenter,
                     measured.elidedText(words_, Qt::ElideRight, room.width()));
}

}  // namespace vistels
