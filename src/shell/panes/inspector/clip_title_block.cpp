// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/panes/inspector/clip_title_block.h"

#include <QFontMetrics>
#include <QHBoxLayout>
#include <QPainter>
#include <algorithm>

#include "shell/kit/controls.h"
#include "shell/kit/theme.h"

namespace vistels {

clip_title_block::clip_title_block(QWidget* parent)
    : QWidget(parent),
      play_(new icon_button(QStringLiteral("play"), tr("Play this clip (Shift+Space)"), this)) {
    const theme_metrics& metrics = theme::current().metrics;
    setFixedHeight(metrics.inspector_title_height);
    play_->setObjectName(QStringLiteral("inspector.play"));
    play_->set_size(metrics.push_button_height, metrics.push_button_height, metrics.icon);
    play_->set_framed(true);
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, metrics.wide_padding, 0);
    row->addStretch(1);
    row->addWidget(play_);
    connect(play_, &icon_button::clicked, this, &clip_title_block::play_asked);
}

void clip_title_block::set_title(const QString& name, const QString& what, const QString& verdict,
                                 const QColor& colour) {
    name_ = name;
    what_ = what;
    verdict_ = verdict;
    colour_ = colour;
    QStringList words{name, what, verdict};
    words.removeAll(QString());
    setAccessibleName(words.join(QStringLiteral(", ")));
    update();
}

void clip_title_block::paintEvent(QPaintEvent*) {
    const theme& look = theme::current();
    const theme_metrics& metrics = look.metrics;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QRect words = rect().adjusted(metrics.wide_padding, metrics.wide_padding, -metrics.wide_padding,
                                  -metrics.wide_padding);
    if (colour_.isValid()) {
        const QRect bar(words.left(), words.top(), metrics.padding, words.height());
        painter.setPen(Qt::NoPen);
        painter.setBrush(colour_);
        painter.drawRoundedRect(bar, metrics.radius_clip, metrics.radius_clip);
        words.setLeft(bar.right() + metrics.wide_padding);
    }
    words.setRight(play_->x() - metrics.padding);
    const QFont large = theme::font(type_step::clip_title);
    painter.setFont(large);
    painter.setPen(look.text);
    painter.drawText(words, Qt::AlignLeft | Qt::AlignTop,
                     QFontMetrics(large).elidedText(name_, Qt::ElideRight, words.width()));
    const QFont small = theme::font(type_step::secondary);
    painter.setFont(small);
    painter.setPen(look.muted);
    // Where both have no room the verdict stays.
    const QFontMetrics sizes(small);
    const QString joint = what_.isEmpty() || verdict_.isEmpty() ? QString() : QStringLiteral(" · ");
    const int rest = std::max(0, words.width() - sizes.horizontalAdvance(joint + verdict_));
    const QString line = sizes.elidedText(what_, Qt::ElideRight, rest) + joint + verdict_;
    painter.drawText(words, Qt::AlignLeft | Qt::AlignBottom,
                     sizes.elidedText(line, Qt::ElideRight, words.width()));
}

}  // namespace vistels
