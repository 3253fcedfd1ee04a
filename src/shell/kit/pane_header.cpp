// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/kit/pane_header.h"

#include <QApplication>
#include <QFontMetrics>
#include <QHBoxLayout>
#include <QPainter>

#include "shell/kit/icons.h"
#include "shell/kit/theme.h"

namespace vistels {

pane_header::pane_header(const QString& icon, const QString& name, QWidget* pane)
    : QWidget(pane), icon_(icon), name_(name), controls_(new QHBoxLayout(this)) {
    const theme_metrics& metrics = theme::current().metrics;
    setFixedHeight(metrics.pane_header_height);
    controls_->setContentsMargins(metrics.wide_padding, 0, metrics.padding, metrics.line);
    controls_->setSpacing(metrics.grid);
    controls_->addStretch(1);
    connect(qApp, &QApplication::focusChanged, this,
            [this](QWidget*, QWidget* focused) { follow_focus(focused); });
}

void pane_header::set_name(const QString& name) {
    name_ = name;
    update();
}

void pane_header::set_fact(const QString& fact) {
    if (fact == fact_) return;
    fact_ = fact;
    update();
}

void pane_header::set_live(bool live) {
    if (live == live_) return;
    live_ = live;
    update();
}

void pane_header::add_control(QWidget* control) {
    controls_->addWidget(control);
}

void pane_header::add_first_control(QWidget* control) {
    controls_->insertWidget(leads_ + 1, control);
}

void pane_header::add_lead_control(QWidget* control) {
    const theme_metrics& metrics = theme::current().metrics;
    if (leads_ == 0) {
        shows_fact_ = false;
        const int margin = controls_->contentsMargins().left();
        controls_->insertSpacing(leads_++, name_end() + metrics.wide_padding - margin - controls_->spacing());
    }
    controls_->insertWidget(leads_++, control);
    // What is left over belongs to the field, up to its greatest width.
    const bool grows = control->sizePolicy().horizontalPolicy() == QSizePolicy::Expanding;
    controls_->setStretchFactor(control, grows ? 1000 : 0);
}

int pane_header::name_end() const {
    const theme_metrics& metrics = theme::current().metrics;
    const int icon = icon_.isEmpty() ? 0 : metrics.icon + metrics.padding;
    return metrics.wide_padding + icon + QFontMetrics(theme::font(type_step::title)).horizontalAdvance(name_);
}

void pane_header::set_icon(const QString& icon) {
    icon_ = icon;
    update();
}

void pane_header::follow_focus(const QWidget* focused) {
    const bool inside = focused && parentWidget() && parentWidget()->isAncestorOf(focused);
    if (inside == has_focus_) return;
    has_focus_ = inside;
    update();
}

void pane_header::paintEvent(QPaintEvent*) {
    const theme& look = theme::current();
    const theme_metrics& metrics = look.metrics;
    QPainter painter(this);
    painter.fillRect(rect(), look.pane);
    painter.fillRect(QRect(0, height() - metrics.line, width(), metrics.line), look.line);
    int x = metrics.wide_padding;
    if (!icon_.isEmpty()) {
        painter.drawPixmap(x, (height() - metrics.icon) / 2,
                           icon_pixmap(icon_, look.muted, metrics.icon, devicePixelRatioF()));
        x += metrics.icon + metrics.padding;
    }
    // The room before the first control.
    int end = width() - metrics.padding;
    for (int i = 0; i < controls_->count(); ++i) {
        const QWidget* control = controls_->itemAt(i)->widget();
        if (control && control->isVisible()) end = std::min(end, control->x() - metrics.padding);
    }
    const QFontMetrics names(theme::font(type_step::title));
    const QString name = names.elidedText(name_, Qt::ElideRight, std::max(0, end - x));
    painter.setFont(theme::font(type_step::title));
    painter.setPen(has_focus_ ? look.text : mix(look.text, look.muted, look.edge_share));
    painter.drawText(QRect(x, 0, std::max(0, end - x), height()), Qt::AlignLeft | Qt::AlignVCenter, name);
    x += names.horizontalAdvance(name) + metrics.padding;
    if (live_ && x < end) {
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(look.live);
        painter.drawEllipse(
            QRectF(x, (height() - metrics.live_dot) / 2.0, metrics.live_dot, metrics.live_dot));
        x += metrics.live_dot + metrics.grid;
    }
    if (!shows_fact_ || fact_.isEmpty() || x >= end) return;
    const QFontMetrics facts(theme::font(type_step::secondary));
    painter.setFont(theme::font(type_step::secondary));
    painter.setPen(look.muted);
    painter.drawText(QRect(x, 0, end - x, height()), Qt::AlignLeft | Qt::AlignVCenter,
                     facts.elidedText(fact_, Qt::ElideRight, end - x));
}

}  // namespace vistels
