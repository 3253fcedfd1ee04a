// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/window/super_tab_row.h"

#include <QHBoxLayout>
#include <QPainter>
#include <QTabBar>

#include "shell/kit/controls.h"
#include "shell/kit/theme.h"
#include "shell/window/window_metrics.h"

namespace vistels {

super_tab_row::super_tab_row(const QStringList& names, QWidget* parent)
    : QWidget(parent),
      tabs_(new QTabBar(this)),
      left_(new icon_button(QStringLiteral("side-bar-left"), tr("Side bar (Ctrl+B)"), this)),
      right_(new icon_button(QStringLiteral("side-bar-right"), tr("Inspector (Ctrl+I)"), this)) {
    const theme_metrics& metrics = theme::current().metrics;
    setFixedHeight(window_sizes.super_tab_height);
    tabs_->setObjectName(QStringLiteral("super_tabs"));
    tabs_->setAccessibleName(tr("Super tabs"));
    tabs_->setExpanding(false);
    tabs_->setDrawBase(false);
    tabs_->setUsesScrollButtons(false);
    tabs_->setElideMode(Qt::ElideNone);
    tabs_->setFocusPolicy(Qt::TabFocus);
    for (const QString& name : names) tabs_->addTab(name);
    left_->setObjectName(QStringLiteral("side_bar_switch"));
    right_->setObjectName(QStringLiteral("inspector_switch"));
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(metrics.grid, 0, metrics.padding, 0);
    row->setSpacing(metrics.grid);
    row->addWidget(tabs_, 0, Qt::AlignBottom);
    row->addStretch(1);
    row->addWidget(left_);
    row->addWidget(right_);
    connect(tabs_, &QTabBar::currentChanged, this, &super_tab_row::current_changed);
    connect(left_, &icon_button::clicked, this, [this] { Q_EMIT side_bar_asked(!side_bar_shown_); });
    connect(right_, &icon_button::clicked, this, [this] { Q_EMIT inspector_asked(!inspector_shown_); });
}

int super_tab_row::current() const {
    return tabs_->currentIndex();
}

void super_tab_row::set_current(int index) {
    tabs_->setCurrentIndex(index);
}

void super_tab_row::set_side_bar_shown(bool shown) {
    side_bar_shown_ = shown;
    left_->set_tip(shown ? tr("Hide the side bar (Ctrl+B)") : tr("Show the side bar (Ctrl+B)"));
}

void super_tab_row::set_inspector_shown(bool shown) {
    inspector_shown_ = shown;
    right_->set_tip(shown ? tr("Hide the inspector (Ctrl+I)") : tr("Show the inspector (Ctrl+I)"));
}

void super_tab_row::paintEvent(QPaintEvent*) {
    QPainter(this).fillRect(rect(), theme::current().window);
}

}  // namespace vistels
