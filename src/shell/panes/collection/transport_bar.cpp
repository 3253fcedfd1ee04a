// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/panes/collection/transport_bar.h"

#include <QBoxLayout>
#include <QFontMetrics>
#include <QLocale>
#include <QPainter>
#include <algorithm>
#include <cmath>

#include "shell/kit/controls.h"
#include "shell/kit/theme.h"
#include "shell/kit/theme_time_text.h"
#include "shell/panes/collection/collection_metrics.h"
#include "shell/panes/collection/volume_popover.h"

namespace vistels {

namespace {

// A form in which the figures are as wide as they come.
QString split_hundredths(QString& text) {
    const auto point = text.lastIndexOf(QLatin1Char('.'));
    const QString hundredths = text.mid(point);
    text.truncate(point);
    return hundredths;
}

QString rate_words(double rate) {
    if (rate == 0.5) return QStringLiteral("½×");
    const QString sign = rate < 0 ? QStringLiteral("−") : QString();
    return QStringLiteral("%1%2×").arg(sign).arg(std::abs(rate));
}

}  // namespace

clock_label::clock_label(QWidget* parent) : QWidget(parent) {
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void clock_label::set_seconds(double seconds) {
    const QString before = text();
    const auto width_before = sizeHint();
    seconds_ = seconds;
    if (text() == before) return;
    setAccessibleName(text());
    if (sizeHint() != width_before) updateGeometry();
    update();
}

QString clock_label::text() const {
    return time_text(seconds_, time_form::clock);
}

QSize clock_label::sizeHint() const {
    QString whole = text();
    const QString hundredths = split_hundredths(whole);
    const double width = time_text_width(whole, theme::font(type_step::clock)) +
                         time_text_width(hundredths, theme::font(type_step::clock_hundredths));
    return {static_cast<int>(std::ceil(width)), theme::line_height(type_step::clock)};
}

void clock_label::paintEvent(QPaintEvent*) {
    const theme& look = theme::current();
    QPainter painter(this);
    QString whole = text();
    const QString hundredths = split_hundredths(whole);
    const QFont large = theme::font(type_step::clock);
    const QFont small = theme::font(type_step::clock_hundredths);
    painter.setPen(look.text);
    draw_time_text(painter, rect(), Qt::AlignLeft, whole, large);
    // On the same base line.
    const QFontMetricsF tall(large);
    const QFontMetricsF low(small);
    const double drop = (tall.ascent() - tall.descent() - low.ascent() + low.descent()) / 2;
    QRectF rest = QRectF(rect()).translated(0, drop);
    rest.setLeft(time_text_width(whole, large));
    painter.setPen(look.muted);
    draw_time_text(painter, rest, Qt::AlignLeft, hundredths, small);
}

const QList<double>& transport_bar::rates() {
    static const QList<double> all = {0.5, 1, 2, 4};
    return all;
}

transport_bar::transport_bar(QWidget* parent)
    : QWidget(parent),
      position_(new value_slider(this)),
      clock_(new clock_label(this)),
      frame_room_(new QWidget(this)),
      back_(new icon_button(QStringLiteral("step-back"), tr("One frame back (Left)"), this)),
      play_(new icon_button(QStringLiteral("play"), tr("Play (Space)"), this)),
      forward_(new icon_button(QStringLiteral("step-forward"), tr("One frame on (Right)"), this)),
      loop_(new icon_button(QStringLiteral("loop"),
                            tr("Play the selected clip, or the event, again and again"), this)),
      mute_(new icon_button(QStringLiteral("volume"), tr("Sound off and on (M)"), this)),
      volume_(new value_slider(this)),
      volumes_(
          new icon_button(QStringLiteral("chevron-down"), tr("Volumes of this event and of Vistels"), this)),
      popover_(new volume_popover(this)) {
    QStringList words;
    for (const double rate : rates()) words << rate_words(rate);
    rates_ = new segmented_control(QStringLiteral("transport.rates"), words, this);
    setObjectName(QStringLiteral("transport"));
    position_->setObjectName(QStringLiteral("transport.position"));
    position_->setAccessibleName(tr("Position in the event"));
    clock_->setObjectName(QStringLiteral("transport.clock"));
    back_->setObjectName(QStringLiteral("transport.back"));
    play_->setObjectName(QStringLiteral("transport.play"));
    forward_->setObjectName(QStringLiteral("transport.forward"));
    loop_->setObjectName(QStringLiteral("transport.loop"));
    mute_->setObjectName(QStringLiteral("transport.mute"));
    volume_->setObjectName(QStringLiteral("transport.volume"));
    volume_->setAccessibleName(tr("Volume of this event"));
    volume_->setToolTip(tr("Volume of this event (Ctrl+Up, Ctrl+Down)"));
    volumes_->setObjectName(QStringLiteral("transport.volumes"));
    for (QWidget* one : {static_cast<QWidget*>(mute_), static_cast<QWidget*>(volume_)}) {
        one->setContextMenuPolicy(Qt::CustomContextMenu);
        connect(one, &QWidget::customContextMenuRequested, this, &transport_bar::show_volumes);
    }
    build();
    connect_parts();
}

void transport_bar::build() {
    const theme_metrics& metrics = theme::current().metrics;
    position_->set_has_handle(true);
    position_->set_step(0.01);
    volume_->setFixedWidth(metrics.volume_width);
    back_->set_size(collection_sizes.step_button, collection_sizes.step_button,
                    collection_sizes.icon_transport);
    forward_->set_size(collection_sizes.step_button, collection_sizes.step_button,
                       collection_sizes.icon_transport);
    play_->set_size(collection_sizes.play_width, collection_sizes.play_height,
                    collection_sizes.icon_transport);
    play_->set_framed(true);
    loop_->setCheckable(true);
    mute_->setCheckable(true);

    parts_ = new QHBoxLayout;
    parts_->setContentsMargins(metrics.wide_padding, 0, metrics.padding, 0);
    parts_->setSpacing(metrics.grid);
    parts_->addWidget(clock_);
    parts_->addWidget(frame_room_, 1);
    for (QWidget* part :
         {static_cast<QWidget*>(back_), static_cast<QWidget*>(play_), static_cast<QWidget*>(forward_)}) {
        parts_->addWidget(part);
    }
    parts_->addSpacing(metrics.padding);
    parts_->addWidget(rates_);
    parts_->addSpacing(metrics.padding);
    parts_->addWidget(loop_);
    parts_->addWidget(mute_);
    parts_->addWidget(volume_);
    parts_->addWidget(volumes_);

    auto* rows = new QVBoxLayout(this);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->setSpacing(0);
    rows->setSizeConstraint(QLayout::SetNoConstraint);
    auto* slider_row = new QHBoxLayout;
    slider_row->setContentsMargins(metrics.wide_padding, 0, metrics.wide_padding, 0);
    slider_row->addWidget(position_);
    rows->addLayout(slider_row);
    rows->addLayout(parts_);
    setFixedHeight(collection_sizes.transport_height + position_->sizeHint().height());
}

void transport_bar::connect_parts() {
    connect(play_, &icon_button::clicked, this, &transport_bar::play_asked);
    connect(back_, &icon_button::clicked, this, [this] { Q_EMIT step_asked(-1); });
    connect(forward_, &icon_button::clicked, this, [this] { Q_EMIT step_asked(1); });
    connect(rates_, &segmented_control::chose, this,
            [this](int index) { Q_EMIT rate_asked(rates()[index]); });
    connect(loop_, &icon_button::clicked, this, &transport_bar::loop_asked);
    connect(mute_, &icon_button::clicked, this, &transport_bar::mute_asked);
    connect(volume_, &value_slider::moved, this, &transport_bar::volume_asked);
    connect(volume_, &value_slider::drag_ended, this, &transport_bar::volume_chosen);
    connect(volumes_, &icon_button::clicked, this, &transport_bar::show_volumes);
    connect(popover_, &volume_popover::volume_asked, this, &transport_bar::volume_asked);
    connect(popover_, &volume_popover::application_volume_asked, this,
            &transport_bar::application_volume_asked);
    connect(popover_, &volume_popover::chosen, this, &transport_bar::volume_chosen);
    connect(position_, &value_slider::moved, this,
            [this](double fraction) { Q_EMIT seek_asked(seconds_at(fraction), false); });
    connect(position_, &value_slider::drag_ended, this,
            [this](double fraction) { Q_EMIT seek_asked(seconds_at(fraction), true); });
}

double transport_bar::seconds_at(double fraction) const {
    return start_ + fraction * (end_ - start_);
}

void transport_bar::set_range(double start, double end) {
    start_ = start;
    end_ = std::max(start, end);
    position_->setEnabled(end_ > start_);
    set_seconds(seconds_);
    update();
}

void transport_bar::set_seconds(double seconds) {
    seconds_ = seconds;
    clock_->set_seconds(seconds);
    if (!position_->is_dragged()) {
        position_->set_value(end_ > start_ ? (seconds - start_) / (end_ - start_) : 0);
    }
}

void transport_bar::set_frame(long long number) {
    if (number == frame_) return;
    frame_ = number;
    update(frame_room_->geometry());
}

void transport_bar::set_playing(bool playing) {
    play_->set_icon(playing ? QStringLiteral("pause") : QStringLiteral("play"));
    play_->set_tip(playing ? tr("Pause (Space)") : tr("Play (Space)"));
}

void transport_bar::set_rate(double rate) {
    const auto index = rates().indexOf(rate);
    rates_->set_chosen(static_cast<int>(index));
    const QString other = index < 0 ? rate_words(rate) : QString();
    if (other == other_rate_) return;
    other_rate_ = other;
    rates_->setAccessibleDescription(other);
    update(frame_room_->geometry());
}

void transport_bar::set_looping(bool looping) {
    loop_->setChecked(looping);
}

void transport_bar::set_volumes(double event, double application) {
    volume_->set_value(event);
    popover_->set_volumes(event, application);
}

void transport_bar::show_volumes() {
    popover_->show_above(mute_);
}

void transport_bar::set_muted(bool muted) {
    mute_->setChecked(muted);
    mute_->set_icon(muted ? QStringLiteral("mute") : QStringLiteral("volume"));
}

QSize transport_bar::minimumSizeHint() const {
    const QSize whole(parts_->minimumSize().width(), height());
    return {whole.width() - (volume_->isHidden() ? 0 : volume_room()), whole.height()};
}

int transport_bar::volume_room() const {
    const theme_metrics& metrics = theme::current().metrics;
    return metrics.volume_width + volumes_->sizeHint().width() + 2 * metrics.grid;
}

void transport_bar::resizeEvent(QResizeEvent* event) {
    // Where room is short the frame's number goes first, then the volume slider; what is pressed stays.
    const bool has_room = width() >= minimumSizeHint().width() + volume_room();
    if (has_room == volume_->isHidden()) {
        volume_->setVisible(has_room);
        volumes_->setVisible(has_room);
        parts_->invalidate();  // it would notice only later
    }
    QWidget::resizeEvent(event);
}

void transport_bar::paintEvent(QPaintEvent*) {
    const theme& look = theme::current();
    QPainter painter(this);
    painter.fillRect(rect(), look.pane);
    const QString of = tr("of %1").arg(time_text(end_, time_form::ruler));
    const QString frame = frame_ < 0 ? QString() : tr("frame %1").arg(QLocale::c().toString(frame_));
    const QFontMetrics small(theme::font(type_step::smallest));
    QRect room = frame_room_->geometry().adjusted(look.metrics.padding, 0, -look.metrics.padding, 0);
    if (!other_rate_.isEmpty()) {
        const QFont font = theme::font(type_step::title);
        painter.setFont(font);
        painter.setPen(look.text);
        painter.drawText(room, Qt::AlignRight | Qt::AlignVCenter, other_rate_);
        room.setRight(room.right() - QFontMetrics(font).horizontalAdvance(other_rate_) -
                      look.metrics.padding);
    }
    if (std::max(small.horizontalAdvance(of), small.horizontalAdvance(frame)) > room.width()) return;
    room.setTop(clock_->geometry().center().y() - small.height());
    room.setHeight(2 * small.height());
    painter.setFont(theme::font(type_step::smallest));
    painter.setPen(look.muted);
    painter.drawText(room, Qt::AlignRight | Qt::AlignTop, frame);
    painter.drawText(room, Qt::AlignRight | Qt::AlignBottom, of);
}

}  // namespace vistels
