// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/panes/collection/collection_pane.h"

#include <QPainter>
#include <QVBoxLayout>

#include "shell/kit/controls.h"
#include "shell/kit/pane_header.h"
#include "shell/kit/theme.h"
#include "shell/panes/collection/align_bar.h"
#include "shell/panes/collection/collection_view.h"
#include "shell/panes/collection/transport_bar.h"

namespace vistels {

collection_pane::collection_pane(QWidget* parent)
    : QWidget(parent),
      header_(new pane_header(QStringLiteral("collection"), tr("Collection"), this)),
      all_(new icon_button(QStringLiteral("grid"), tr("All vistels (Ctrl+0)"), this)),
      start_aligning_(new icon_button(QStringLiteral("in-step"),
                                      tr("Bring vistels into step: drag one against the others"), this)),
      more_(new icon_button(QStringLiteral("more"), tr("More for the collection"), this)),
      view_(new collection_view(this)),
      align_(new align_bar(this)),
      bar_(new transport_bar(this)) {
    setObjectName(QStringLiteral("collection"));
    setAccessibleName(tr("Collection pane"));
    header_->setObjectName(QStringLiteral("collection.header"));
    all_->setObjectName(QStringLiteral("collection.all"));
    start_aligning_->setObjectName(QStringLiteral("collection.align"));
    start_aligning_->setCheckable(true);
    more_->setObjectName(QStringLiteral("collection.more"));
    for (QWidget* one : {all_, start_aligning_, more_}) header_->add_control(one);
    align_->hide();
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(header_);
    column->addWidget(view_, 1);
    column->addWidget(align_);
    column->addWidget(bar_);
    connect(all_, &icon_button::clicked, this, &collection_pane::all_vistels_asked);
    connect(start_aligning_, &icon_button::clicked, this, &collection_pane::aligning_asked);
    connect(align_, &align_bar::close_asked, this, [this] { Q_EMIT aligning_asked(false); });
    connect(more_, &icon_button::clicked, this,
            [this] { Q_EMIT more_asked(more_->mapToGlobal(more_->rect().bottomLeft())); });
}

void collection_pane::set_aligning(bool aligning) {
    start_aligning_->setChecked(aligning);
    align_->setVisible(aligning && !view_->isHidden());
    view_->set_aligning(aligning);
}

bool collection_pane::is_aligning() const {
    return view_->is_aligning();
}

void collection_pane::set_shows_pictures(bool shows) {
    view_->setVisible(shows);
    if (!shows) set_aligning(false);
    for (QWidget* one : {all_, start_aligning_, more_}) one->setVisible(shows);
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
