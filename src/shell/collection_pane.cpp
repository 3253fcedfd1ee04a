// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/collection_pane.h"

#include <QPainter>
#include <QVBoxLayout>

#include "shell/collection_view.h"
#include "shell/controls.h"
#include "shell/pane_header.h"
#include "shell/theme.h"
#include "shell/transport_bar.h"

namespace vistels {

collection_pane::collection_pane(QWidget* parent)
    : QWidget(parent),
      header_(new pane_header(QStringLiteral("collection"), tr("Collection"), this)),
      all_(new icon_button(QStringLiteral("grid"), tr("All vistels (Ctrl+0)"), this)),
      view_(new collection_view(this)),
      bar_(new transport_bar(this)) {
    setObjectName(QStringLiteral("collection"));
    setAccessibleName(tr("Collection pane"));
    header_->setObjectName(QStringLiteral("collection.header"));
    all_->setObjectName(QStringLiteral("collection.all"));
    header_->add_control(all_);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(header_);
    column->addWidget(view_, 1);
    column->addWidget(bar_);
    connect(all_, &icon_button::clicked, this, &collection_pane::all_vistels_asked);
}

void collection_pane::set_shows_pictures(bool shows) {
    view_->setVisible(shows);
    all_->setVisible(shows);
    header_->set_icon(shows ? QStringLiteral("collection") : QStringLiteral("timeline"));
    setSizePolicy(QSizePolicy::Preferred, shows ? QSizePolicy::Preferred : QSizePolicy::Fixed);
    const int height = header_->height() + bar_->minimumHeight();
    setMaximumHeight(shows ? QWIDGETSIZE_MAX : height);
    setMinimumHeight(shows ? 0 : height);
}

void collection_pane::paintEvent(QPaintEvent*) {
    QPainter(this).fillRect(rect(), theme::current().pane);
}

}  // namespace vistels
