// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/filter/filter_parts.h"

#include <QBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QPushButton>

#include "shell/kit/controls.h"
#include "shell/kit/icons.h"
#include "shell/kit/theme.h"

namespace vistels {

namespace {

constexpr int dim_segment = 0;
constexpr int hide_segment = 1;

}  // namespace

filter_mode_control::filter_mode_control(QWidget* parent)
    : QWidget(parent),
      mode_(new segmented_control(QStringLiteral("filter.mode"), {tr("Dim"), tr("Hide")}, this)),
      play_(new icon_button(QStringLiteral("play-all"), {}, this)),
      playing_(make_label({}, type_step::secondary_strong, {}, this)) {
    setObjectName(QStringLiteral("filter_mode"));
    mode_->setAccessibleName(tr("Clips that are filtered out"));
    mode_->set_tip(dim_segment, tr("Dim the clips that do not pass the filter (Ctrl+H)"));
    mode_->set_tip(hide_segment, tr("Hide the clips that do not pass the filter (Ctrl+H)"));
    mode_->set_chosen(dim_segment);
    play_->setObjectName(QStringLiteral("filter.play_all"));
    play_->setCheckable(true);
    playing_->setObjectName(QStringLiteral("filter.playing"));
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(theme::current().metrics.padding);
    row->addWidget(mode_);
    row->addWidget(play_);
    row->addWidget(playing_);
    connect(mode_, &segmented_control::chose, this,
            [this](int mode) { Q_EMIT hides_asked(mode == hide_segment); });
    connect(play_, &QAbstractButton::clicked, this, &filter_mode_control::play_asked);
    set_playing(0, 0);
}

void filter_mode_control::set_hides(bool hides) {
    mode_->set_chosen(hides ? hide_segment : dim_segment);
}

void filter_mode_control::set_playing(std::size_t playing, std::size_t total) {
    const bool plays = playing > 0;
    play_->setChecked(plays);
    play_->set_icon(plays ? QStringLiteral("pause") : QStringLiteral("play-all"));
    play_->set_tip(plays ? tr("Stop playing the clips that pass (Ctrl+P or Esc)")
                         : tr("Play all clips that pass, one after another (Ctrl+P)"));
    playing_->setVisible(plays);
    if (!plays) return;
    const QString widest = tr("%1 of %2").arg(total).arg(total);
    playing_->setMinimumWidth(playing_->fontMetrics().horizontalAdvance(widest));
    playing_->setText(tr("%1 of %2").arg(playing).arg(total));
    playing_->setAccessibleName(tr("Plays clip %1 of %2").arg(playing).arg(total));
}

void filter_mode_control::set_can_play(bool can) {
    play_->setEnabled(can);
}

no_clip_passes_note::no_clip_passes_note(QWidget* parent)
    : QWidget(parent),
      parts_(new QBoxLayout(QBoxLayout::TopToBottom, this)),
      headline_(make_label(tr("No clip passes the filter"), type_step::headline, {}, this)),
      counts_(make_label({}, type_step::secondary, QStringLiteral("muted"), this)),
      clear_(make_push_button(tr("Clear filter"), {}, this)) {
    const theme_metrics& metrics = theme::current().metrics;
    setObjectName(QStringLiteral("no_clip_passes"));
    setAccessibleName(headline_->text());
    clear_->setObjectName(QStringLiteral("no_clip_passes.clear"));
    clear_->setToolTip(tr("All clips pass again (Esc)"));
    clear_->setIcon(icon(QStringLiteral("close"), theme::current().text));
    parts_->setContentsMargins(metrics.group_gap, metrics.padding, metrics.group_gap, metrics.padding);
    parts_->setSpacing(metrics.padding);
    parts_->addWidget(headline_, 0, Qt::AlignCenter);
    parts_->addWidget(counts_, 0, Qt::AlignCenter);
    auto* row = new QHBoxLayout;
    row->setSpacing(metrics.padding);
    row->addStretch(1);
    row->addWidget(clear_);
    row->addWidget(make_label(tr("Esc"), type_step::secondary, QStringLiteral("muted"), this));
    row->addStretch(1);
    parts_->addLayout(row);
    connect(clear_, &QPushButton::clicked, this, &no_clip_passes_note::clear_asked);
    hide();
}

void no_clip_passes_note::set_total(std::size_t clips) {
    counts_->setText(tr("0 of %1").arg(clips));
}

void no_clip_passes_note::place_in(const QRect& room) {
    parts_->setDirection(QBoxLayout::TopToBottom);
    QSize size = parts_->sizeHint();
    if (size.height() + 2 * theme::current().metrics.padding > room.height()) {
        parts_->setDirection(QBoxLayout::LeftToRight);
        size = parts_->sizeHint();
    }
    QRect place(QPoint(), size.boundedTo(room.size()));
    place.moveCenter(room.center());
    setGeometry(place);
}

void no_clip_passes_note::paintEvent(QPaintEvent*) {
    const theme& look = theme::current();
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(look.line, look.metrics.line));
    painter.setBrush(look.pane);
    painter.drawRoundedRect(outline_of(rect()), look.metrics.radius_button, look.metrics.radius_button);
}

}  // namespace vistels
