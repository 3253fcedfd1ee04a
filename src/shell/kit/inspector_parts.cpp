// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/kit/inspector_parts.h"

#include <QFontMetrics>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QToolTip>
#include <algorithm>
#include <cmath>

#include "shell/kit/controls.h"
#include "shell/kit/icons.h"
#include "shell/kit/theme.h"
#include "shell/kit/theme_time_text.h"

namespace vistels {

namespace {

// -1, 0 or 1: which way an arrow key moves.
int arrow_step(const QKeyEvent& event) {
    if (event.key() == Qt::Key_Left || event.key() == Qt::Key_Down) return -1;
    if (event.key() == Qt::Key_Right || event.key() == Qt::Key_Up) return 1;
    return 0;
}

// Parts that are moved through by arrow keys keep these from the transport.
bool keep_arrows(QEvent& event) {
    if (event.type() != QEvent::ShortcutOverride) return false;
    const auto& key = static_cast<const QKeyEvent&>(event);
    if (arrow_step(key) == 0 && key.key() != Qt::Key_Delete) return false;
    event.accept();
    return true;
}

}  // namespace

time_field::time_field(QWidget* parent) : QLineEdit(parent) {
    setFixedHeight(theme::current().metrics.field_height);
    connect(this, &QLineEdit::editingFinished, this, &time_field::commit);
    connect(this, &QLineEdit::textEdited, this, [this] { complain({}); });
}

void time_field::set_seconds(std::optional<double> seconds) {
    seconds_ = seconds;
    setEnabled(seconds.has_value());
    // What is being typed is not taken away.
    if (!hasFocus() || !isModified()) show_seconds();
}

void time_field::show_seconds() {
    setText(seconds_ ? time_text(*seconds_, time_form::field) : tr("several"));
    setModified(false);
    complain({});
}

void time_field::commit() {
    if (!isModified() || !seconds_) return;
    const double typed = time_from_text(text());
    // Who goes elsewhere has given it up.
    if (hasFocus() && !std::isfinite(typed)) return complain(tr("Type seconds, or a time as h:mm:ss.mmm."));
    if (hasFocus() && typed < least_)
        return complain(tr("No less than %1.").arg(time_text(least_, time_form::field)));
    setModified(false);
    if (std::isfinite(typed) && typed >= least_ && typed != *seconds_) {
        Q_EMIT seconds_asked(typed);
    }
    show_seconds();
}

QString time_field::complaint() const {
    return complaint_ ? complaint_->text() : QString();
}

// Under the field, or above it where the window ends.
void time_field::complain(const QString& words) {
    if (words == complaint()) return;
    delete complaint_;
    setAccessibleDescription(words);
    update();
    if (words.isEmpty()) return;
    selectAll();
    const theme_metrics& metrics = theme::current().metrics;
    complaint_ = make_label(words, type_step::secondary, QStringLiteral("popover"), window());
    complaint_->adjustSize();
    const QPoint under = mapTo(window(), QPoint(0, height() + metrics.grid));
    const bool fits = under.y() + complaint_->height() <= window()->height();
    const QPoint over = mapTo(window(), QPoint(0, -metrics.grid - complaint_->height()));
    const int right = window()->width() - complaint_->width() - metrics.padding;
    complaint_->move(std::max(0, std::min(under.x(), right)), fits ? under.y() : over.y());
    complaint_->show();
}

void time_field::hideEvent(QHideEvent* event) {
    complain({});
    QLineEdit::hideEvent(event);
}

void time_field::paintEvent(QPaintEvent* event) {
    QLineEdit::paintEvent(event);
    if (!complaint_) return;
    const theme& look = theme::current();
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(look.live, look.metrics.line));
    painter.drawRoundedRect(outline_of(rect()), look.metrics.radius_control, look.metrics.radius_control);
}

void time_field::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape) {
        show_seconds();
        clearFocus();
        return;
    }
    QLineEdit::keyPressEvent(event);
    const bool is_return = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (is_return && !complaint_) clearFocus();
}

star_row::star_row(QWidget* parent) : QWidget(parent) {
    setFocusPolicy(Qt::TabFocus);
    setAccessibleName(tr("Stars"));
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

int star_row::cell() const {
    const theme_metrics& metrics = theme::current().metrics;
    return metrics.icon + metrics.padding;
}

QSize star_row::sizeHint() const {
    return {most_stars * cell(), theme::current().metrics.icon_button};
}

void star_row::set_stars(std::optional<int> stars) {
    stars_ = stars;
    setAccessibleDescription(stars ? QString::number(*stars) : tr("several"));
    update();
}

void star_row::paintEvent(QPaintEvent*) {
    const theme& look = theme::current();
    QPainter painter(this);
    for (int i = 0; i < most_stars; ++i) {
        const bool on = stars_ && i < *stars_;
        const QPoint at(i * cell() + look.metrics.grid, (height() - look.metrics.icon) / 2);
        painter.drawPixmap(at,
                           icon_pixmap(on ? QStringLiteral("star-on") : QStringLiteral("star"),
                                       on ? look.text : look.muted, look.metrics.icon, devicePixelRatioF()));
    }
    if (hasFocus()) paint_inner_focus_ring(painter, look, rect());
}

void star_row::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) return;
    const int star = std::clamp(static_cast<int>(event->position().x()) / cell() + 1, 1, most_stars);
    Q_EMIT stars_asked(stars_ == star ? star - 1 : star);
}

void star_row::keyPressEvent(QKeyEvent* event) {
    const int step = arrow_step(*event);
    if (step == 0) return QWidget::keyPressEvent(event);
    Q_EMIT stars_asked(std::clamp(stars_.value_or(0) + step, 0, most_stars));
}

bool star_row::event(QEvent* event) {
    return keep_arrows(*event) || QWidget::event(event);
}

swatch_row::swatch_row(QWidget* parent) : QWidget(parent) {
    setFocusPolicy(Qt::TabFocus);
    setAccessibleName(tr("Colour"));
}

QSize swatch_row::sizeHint() const {
    const theme_metrics& metrics = theme::current().metrics;
    return {metrics.inspector_least_width - 2 * metrics.wide_padding, metrics.icon_button};
}

void swatch_row::set_colour(std::optional<colour> shown, bool own) {
    shown_ = shown;
    own_ = own;
    if (const int index = shown_index(); index >= 0) focused_ = index;
    update();
}

int swatch_row::shown_index() const {
    if (!shown_) return -1;
    const auto& all = theme::current().item_colours;
    const QRgb wanted = to_qt(*shown_).rgb();
    const auto found =
        std::find_if(all.begin(), all.end(), [&](const QColor& one) { return one.rgb() == wanted; });
    return found == all.end() ? -1 : static_cast<int>(found - all.begin());
}

QRect swatch_row::place_of(int index) const {
    const theme& look = theme::current();
    const auto count = static_cast<int>(look.item_colours.size());
    const int step = (width() - look.metrics.grid) / count;
    const int side = std::min(look.metrics.icon, step - look.metrics.grid);
    return {look.metrics.grid + index * step, (height() - side) / 2, side, side};
}

void swatch_row::paintEvent(QPaintEvent*) {
    const theme& look = theme::current();
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    for (int i = 0; i < static_cast<int>(look.item_colours.size()); ++i) {
        const QColor& colour = look.item_colours[static_cast<std::size_t>(i)];
        const QRect place = place_of(i);
        painter.setPen(QPen(look.clip_edge(colour), look.metrics.line));
        painter.setBrush(colour);
        painter.drawRoundedRect(outline_of(place), look.metrics.radius_clip, look.metrics.radius_clip);
        const bool focused = hasFocus() && i == focused_;
        if (i != shown_index() && !focused) continue;
        const double out = look.metrics.focus_ring;
        painter.setPen(
            QPen(focused ? look.accent : look.selection, own_ || focused ? out : look.metrics.line));
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(QRectF(place).adjusted(-out, -out, out, out), look.metrics.radius_control,
                                look.metrics.radius_control);
    }
}

void swatch_row::choose(int index) {
    focused_ = index;
    update();
    if (own_ && index == shown_index()) {
        Q_EMIT colour_asked(std::nullopt);
    } else {
        Q_EMIT colour_asked(from_qt(theme::current().item_colour(static_cast<std::size_t>(index))));
    }
}

void swatch_row::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) return;
    const int reach = theme::current().metrics.grid;
    for (int i = 0; i < static_cast<int>(theme::current().item_colours.size()); ++i) {
        if (place_of(i).adjusted(-reach, -reach, reach, reach).contains(event->position().toPoint())) {
            return choose(i);
        }
    }
}

void swatch_row::keyPressEvent(QKeyEvent* event) {
    const int count = static_cast<int>(theme::current().item_colours.size());
    if (const int step = arrow_step(*event); step != 0) {
        focused_ = (focused_ + step + count) % count;
        return update();
    }
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) return choose(focused_);
    QWidget::keyPressEvent(event);
}

bool swatch_row::event(QEvent* event) {
    return keep_arrows(*event) || QWidget::event(event);
}

qualifier_chips::qualifier_chips(QWidget* parent) : QWidget(parent) {
    QSizePolicy policy(QSizePolicy::Preferred, QSizePolicy::Minimum);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
    setFocusPolicy(Qt::TabFocus);
    setAccessibleName(tr("Qualifiers"));
}

void qualifier_chips::set_chips(std::vector<qualifier_chip> chips) {
    chips_ = std::move(chips);
    focused_ = 0;
    QStringList words;
    for (const auto& chip : chips_)
        words << (chip.passes ? tr("%1 (passes the filter)").arg(chip.name) : chip.name);
    setAccessibleDescription(words.join(QStringLiteral(", ")));
    lay_out(width(), &places_);
    updateGeometry();
    update();
    choose(chosen_);
}

void qualifier_chips::choose(const std::string& uuid) {
    const bool is_there = std::any_of(chips_.begin(), chips_.end(),
                                      [&](const qualifier_chip& one) { return one.uuid == uuid; });
    const std::string now = is_there ? uuid : std::string();
    if (now == chosen_) return;
    chosen_ = now;
    update();
    Q_EMIT chosen_changed();
}

int qualifier_chips::lay_out(int width, std::vector<QRect>* places) const {
    const theme_metrics& metrics = theme::current().metrics;
    const QFontMetrics names(theme::font(type_step::secondary_strong));
    const QFontMetrics categories(theme::font(type_step::secondary));
    if (places) places->clear();
    int x = 0;
    int y = 0;
    for (const auto& chip : chips_) {
        int wide = 2 * metrics.padding + names.horizontalAdvance(chip.name);
        if (!chip.category.isEmpty()) wide += metrics.grid + categories.horizontalAdvance(chip.category);
        wide += metrics.icon + metrics.grid;
        wide = std::min(wide, std::max(width, metrics.touch_height));
        if (x > 0 && x + wide > width) {
            x = 0;
            y += metrics.chip_height + metrics.grid;
        }
        if (places) places->emplace_back(x, y, wide, metrics.chip_height);
        x += wide + metrics.grid;
    }
    return chips_.empty() ? 0 : y + metrics.chip_height;
}

int qualifier_chips::heightForWidth(int width) const {
    return lay_out(width, nullptr);
}

QSize qualifier_chips::sizeHint() const {
    return {theme::current().metrics.inspector_least_width, heightForWidth(width())};
}

void qualifier_chips::resizeEvent(QResizeEvent*) {
    lay_out(width(), &places_);
}

QRect qualifier_chips::cross_of(std::size_t index) const {
    if (index >= places_.size()) return {};
    const theme_metrics& metrics = theme::current().metrics;
    const QRect& chip = places_[index];
    return {chip.right() - metrics.icon - metrics.grid, chip.top(), metrics.icon + metrics.grid,
            chip.height()};
}

void qualifier_chips::paintEvent(QPaintEvent*) {
    const theme& look = theme::current();
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    for (std::size_t i = 0; i < chips_.size() && i < places_.size(); ++i) {
        const qualifier_chip& chip = chips_[i];
        const QRect& place = places_[i];
        const bool focused = hasFocus() && i == focused_;
        const double pen = chip.passes || focused ? look.metrics.focus_ring : look.metrics.line;
        painter.setPen(QPen(chip.passes || focused ? look.accent : look.line, pen));
        painter.setBrush(chip.uuid == chosen_ ? look.accent_ground : look.raised);
        const double radius = place.height() / 2.0;
        painter.drawRoundedRect(QRectF(place).adjusted(pen / 2, pen / 2, -pen / 2, -pen / 2), radius, radius);
        QRect words = place.adjusted(look.metrics.padding, 0, -look.metrics.padding, 0);
        const QRect cross = cross_of(i);
        const int small = look.metrics.swatch;
        painter.drawPixmap(cross.left() + (cross.width() - small) / 2 - look.metrics.line,
                           cross.top() + (cross.height() - small) / 2,
                           icon_pixmap(QStringLiteral("close"), look.muted, small, devicePixelRatioF()));
        words.setRight(cross.left());
        const QFont strong = theme::font(type_step::secondary_strong);
        const QString name = QFontMetrics(strong).elidedText(chip.name, Qt::ElideRight, words.width());
        painter.setFont(strong);
        painter.setPen(look.text);
        painter.drawText(words, Qt::AlignLeft | Qt::AlignVCenter, name);
        words.setLeft(words.left() + QFontMetrics(strong).horizontalAdvance(name) + look.metrics.grid);
        const QFont plain = theme::font(type_step::secondary);
        painter.setFont(plain);
        painter.setPen(look.muted);
        painter.drawText(words, Qt::AlignLeft | Qt::AlignVCenter,
                         QFontMetrics(plain).elidedText(chip.category, Qt::ElideRight, words.width()));
    }
}

void qualifier_chips::remove(std::size_t index) {
    Q_EMIT remove_asked(QString::fromStdString(chips_[index].uuid));
}

void qualifier_chips::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) return;
    for (std::size_t i = 0; i < places_.size(); ++i) {
        if (cross_of(i).contains(event->position().toPoint())) return remove(i);
        if (!places_[i].contains(event->position().toPoint())) continue;
        focused_ = i;
        return choose(chips_[i].uuid == chosen_ ? std::string() : chips_[i].uuid);
    }
}

void qualifier_chips::keyPressEvent(QKeyEvent* event) {
    const int step = arrow_step(*event);
    if (chips_.empty()) return QWidget::keyPressEvent(event);
    if (step != 0) {
        focused_ = (focused_ + chips_.size() + static_cast<std::size_t>(step)) % chips_.size();
        return update();
    }
    if (event->key() == Qt::Key_Delete) return remove(focused_);
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        return choose(chips_[focused_].uuid == chosen_ ? std::string() : chips_[focused_].uuid);
    QWidget::keyPressEvent(event);
}

bool qualifier_chips::event(QEvent* event) {
    if (!chips_.empty() && keep_arrows(*event)) return true;
    return QWidget::event(event);
}

}  // namespace vistels
