// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/kit/controls.h"

#include <QButtonGroup>
#include <QFontMetrics>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <QPushButton>
#include <QToolButton>
#include <algorithm>
#include <cmath>

#include "shell/kit/icons.h"
#include "shell/kit/theme.h"

namespace vistels {

namespace {

// A click for Return; the space bar belongs to the transport.
bool clicks(const QKeyEvent& event) {
    return !event.isAutoRepeat() && (event.key() == Qt::Key_Return || event.key() == Qt::Key_Enter);
}

void set_up_button(QAbstractButton& button, const QString& tip) {
    button.setFocusPolicy(Qt::TabFocus);
    button.setAttribute(Qt::WA_Hover);
    button.setToolTip(tip);
    button.setAccessibleName(tip);
}

QColor idle_colour(const theme& look, const QAbstractButton& button, const QColor& idle) {
    if (!button.isEnabled()) return mix(look.muted, look.pane, look.disabled_share);
    return button.isChecked() || button.isDown() || button.underMouse() ? look.text : idle;
}

void draw_icon(QPainter& painter, const QString& name, const QColor& tint, const QRect& place, int size,
               double ratio) {
    const QPixmap picture = icon_pixmap(name, tint, size, ratio);
    painter.drawPixmap(
        QPointF(place.x() + (place.width() - size) / 2.0, place.y() + (place.height() - size) / 2.0),
        picture);
}

}  // namespace

QRectF outline_of(const QRect& place) {
    return QRectF(place).adjusted(0.5, 0.5, -0.5, -0.5);
}

void paint_inner_focus_ring(QPainter& painter, const theme& look, const QRectF& place) {
    const double half = look.metrics.focus_ring / 2.0;
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(look.accent, look.metrics.focus_ring));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(place.adjusted(half, half, -half, -half), look.metrics.radius_control,
                            look.metrics.radius_control);
    painter.restore();
}

QPushButton* make_push_button(const QString& words, const QString& kind, QWidget* parent) {
    auto* button = new QPushButton(words, parent);
    button->setProperty("kind", kind);
    button->setFocusPolicy(Qt::TabFocus);
    button->setAutoDefault(true);
    return button;
}

QLabel* make_label(const QString& words, type_step step, const QString& tone, QWidget* parent) {
    auto* label = new QLabel(words, parent);
    label->setFont(theme::font(step));
    label->setProperty("tone", tone);
    return label;
}

cut_label::cut_label(type_step step, const QString& tone, int greatest_width, QWidget* parent)
    : QLabel(parent), greatest_width_(greatest_width) {
    setFont(theme::font(step));
    setProperty("tone", tone);
    setTextFormat(Qt::PlainText);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Preferred);
}

void cut_label::set_text(const QString& text) {
    if (text == text_) return;
    text_ = text;
    setAccessibleName(text);
    updateGeometry();
    show_text();
}

void cut_label::show_text() {
    const QString shown = fontMetrics().elidedText(text_, Qt::ElideRight, width());
    setText(shown);
    setToolTip(shown == text_ ? QString() : text_);
}

void cut_label::resizeEvent(QResizeEvent* event) {
    QLabel::resizeEvent(event);
    show_text();
}

QSize cut_label::sizeHint() const {
    // A part of a pixel that is missing would cost the last letters.
    const int whole = static_cast<int>(std::ceil(QFontMetricsF(font()).horizontalAdvance(text_)));
    return {std::min(whole, greatest_width_), QLabel::sizeHint().height()};
}

QSize cut_label::minimumSizeHint() const {
    return {std::min(sizeHint().width(), theme::current().metrics.inspector_label_width),
            QLabel::minimumSizeHint().height()};
}

icon_button::icon_button(QString icon, const QString& tip, QWidget* parent)
    : QAbstractButton(parent), icon_(std::move(icon)) {
    const theme_metrics& metrics = theme::current().metrics;
    set_size(metrics.icon_button, metrics.icon_button, metrics.icon);
    set_up_button(*this, tip);
}

void icon_button::set_icon(const QString& icon) {
    if (icon == icon_) return;
    icon_ = icon;
    update();
}

void icon_button::set_tip(const QString& tip) {
    setToolTip(tip);
    setAccessibleName(tip);
}

void icon_button::set_size(int width, int height, int icon_size) {
    size_ = {width, height};
    icon_size_ = icon_size;
    setFixedSize(size_);
}

QSize icon_button::sizeHint() const {
    return size_;
}

void icon_button::paintEvent(QPaintEvent*) {
    const theme& look = theme::current();
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const bool over = underMouse() && isEnabled();
    const bool on = isDown() || isChecked();
    if (framed_ || on || over) {
        const QColor ground = isDown() ? look.field : over ? look.hover : look.raised;
        painter.setPen(QPen(isDown()  ? look.text
                            : framed_ ? look.edge
                            : on      ? look.line
                                      : ground,
                            look.metrics.line));
        painter.setBrush(ground);
        painter.drawRoundedRect(outline_of(rect()), look.metrics.radius_control, look.metrics.radius_control);
    }
    if (hasFocus()) paint_inner_focus_ring(painter, look, rect());
    const QColor tint = idle_colour(look, *this, framed_ ? look.text : look.muted);
    draw_icon(painter, icon_, tint, rect(), icon_size_, devicePixelRatioF());
}

void icon_button::keyPressEvent(QKeyEvent* event) {
    if (clicks(*event)) return click();
    QWidget::keyPressEvent(event);
}

segmented_control::segmented_control(const QString& name, const QStringList& words, QWidget* parent)
    : QWidget(parent), group_(new QButtonGroup(this)) {
    setObjectName(name);
    setAccessibleName(name);
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(0);
    for (int i = 0; i < words.size(); ++i) {
        auto* one = new QToolButton(this);
        one->setText(words[i]);
        one->setProperty("kind", "segment");
        one->setCheckable(true);
        one->setFocusPolicy(Qt::TabFocus);
        const theme_metrics& metrics = theme::current().metrics;
        const int text = QFontMetrics(theme::font(type_step::title)).horizontalAdvance(words[i]);
        one->setFixedSize(text + 2 * metrics.padding + metrics.grid, metrics.push_button_height);
        one->setAccessibleName(words[i]);
        one->setObjectName(QStringLiteral("%1.%2").arg(name).arg(i));
        group_->addButton(one, i);
        row->addWidget(one);
    }
    connect(group_, &QButtonGroup::idClicked, this, &segmented_control::chose);
}

int segmented_control::chosen() const {
    return group_->checkedId();
}

void segmented_control::set_chosen(int index) {
    if (index == chosen()) return;
    group_->setExclusive(false);
    for (auto* button : group_->buttons()) button->setChecked(group_->id(button) == index);
    group_->setExclusive(true);
}

void segmented_control::set_tip(int index, const QString& tip) {
    if (auto* button = group_->button(index)) button->setToolTip(tip);
}

value_slider::value_slider(QWidget* parent) : QWidget(parent) {
    setFocusPolicy(Qt::TabFocus);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

QSize value_slider::sizeHint() const {
    const theme_metrics& metrics = theme::current().metrics;
    return {metrics.volume_width, metrics.slider_handle_height + 2 * metrics.focus_ring};
}

void value_slider::set_value(double value) {
    value = std::clamp(std::isfinite(value) ? value : 0.0, 0.0, 1.0);
    if (value == value_) return;
    value_ = value;
    update();
}

double value_slider::value_at(double x) const {
    const double handle = theme::current().metrics.slider_handle_width;
    return std::clamp((x - handle / 2) / std::max(1.0, width() - handle), 0.0, 1.0);
}

void value_slider::move_to(double value) {
    set_value(value);
    Q_EMIT moved(value_);
}

void value_slider::paintEvent(QPaintEvent*) {
    const theme& look = theme::current();
    const theme_metrics& metrics = look.metrics;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const double handle = metrics.slider_handle_width;
    const double middle = height() / 2.0;
    const double x = handle / 2 + value_ * (width() - handle);
    const double groove = metrics.slider_groove;
    QRectF whole(0, middle - groove / 2, width(), groove);
    painter.setPen(Qt::NoPen);
    painter.setBrush(isEnabled() ? look.line : mix(look.line, look.pane, look.disabled_share));
    painter.drawRoundedRect(whole, groove / 2, groove / 2);
    whole.setWidth(x);
    painter.setBrush(isEnabled() ? look.text : mix(look.muted, look.pane, look.disabled_share));
    painter.drawRoundedRect(whole, groove / 2, groove / 2);
    if (has_handle_ && isEnabled()) {
        const double tall = metrics.slider_handle_height;
        painter.setBrush(look.pane);
        painter.drawRect(QRectF(x - handle / 2 - 1, middle - tall / 2, handle + 2, tall));
        painter.setBrush(look.selection);
        painter.drawRoundedRect(QRectF(x - handle / 2, middle - tall / 2, handle, tall), handle / 2,
                                handle / 2);
    }
    if (hasFocus()) paint_inner_focus_ring(painter, look, rect());
}

void value_slider::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) return;
    dragged_ = true;
    move_to(value_at(event->position().x()));
}

void value_slider::mouseMoveEvent(QMouseEvent* event) {
    if (dragged_) move_to(value_at(event->position().x()));
}

void value_slider::mouseReleaseEvent(QMouseEvent* event) {
    if (!dragged_ || event->button() != Qt::LeftButton) return;
    dragged_ = false;
    Q_EMIT drag_ended(value_);
}

void value_slider::keyPressEvent(QKeyEvent* event) {
    const bool back = event->key() == Qt::Key_Left || event->key() == Qt::Key_Down;
    const bool forward = event->key() == Qt::Key_Right || event->key() == Qt::Key_Up;
    if (!back && !forward) return QWidget::keyPressEvent(event);
    move_to(value_ + (forward ? step_ : -step_));
    Q_EMIT drag_ended(value_);
}

}  // namespace vistels
