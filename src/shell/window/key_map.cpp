// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/window/key_map.h"

#include <QApplication>
#include <QKeyEvent>
#include <QPainter>
#include <algorithm>
#include <chrono>
#include <cmath>
#include <tuple>
#include <utility>

#include "app/event/open_event.h"
#include "logger/press_engine.h"
#include "shell/event/event_session.h"
#include "shell/keys/key_clashes.h"
#include "shell/keys/key_strokes.h"
#include "shell/kit/icons.h"
#include "shell/kit/theme.h"
#include "shell/window/window_metrics.h"

namespace vistels {

namespace {

// Longer than the two halves of a repeat are apart.
constexpr std::chrono::milliseconds repeat_gap(60);

// In the order in which a reader looks for a key.
auto place_in_list(const bound_button& one) {
    const button_key_binding& binding = one.binding;
    const int modifiers = binding.shift + 2 * binding.ctr + 4 * binding.opt + 8 * binding.cmd;
    const QString plain = QString::fromStdString(binding.chars_no_mod).toUpper();
    const int kind = plain.isEmpty() ? 3 : plain.at(0).isDigit() ? 0 : plain.at(0).isLetter() ? 1 : 2;
    return std::tuple(modifiers, kind, plain, binding.key_code);
}

bool has_no_modifiers(const QKeyEvent& event) {
    return (event.modifiers() & ~Qt::KeypadModifier) == Qt::NoModifier;
}

}  // namespace

key_map::key_map(QWidget& window, event_session& session)
    : QWidget(&window), window_(window), session_(session) {
    setObjectName(QStringLiteral("key_map"));
    setAccessibleName(tr("Keys of the code window"));
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setFocusPolicy(Qt::NoFocus);
    hides_.setSingleShot(true);
    hides_.setInterval(repeat_gap);
    connect(&hides_, &QTimer::timeout, this, &QWidget::hide);
    hide();
    qApp->installEventFilter(this);
}

bool key_map::is_wanted(const QObject& watched, const QEvent& event) const {
    const auto& key = static_cast<const QKeyEvent&>(event);
    if (key.key() != Qt::Key_F1 || !has_no_modifiers(key) || !watched.isWidgetType()) return false;
    if (static_cast<const QWidget&>(watched).window() != &window_ || !window_.isActiveWindow()) return false;
    const auto* shown = session_.shown_event();
    return shown && session_.shown_event()->logger().buttons_for_key(key_stroke_of(key)).empty();
}

bool key_map::eventFilter(QObject* watched, QEvent* event) {
    switch (event->type()) {
        case QEvent::KeyPress:
            if (!is_wanted(*watched, *event)) return false;
            hides_.stop();
            if (!isVisible()) show_keys();
            return true;
        case QEvent::KeyRelease:
            if (isVisible() && static_cast<QKeyEvent*>(event)->key() == Qt::Key_F1) hides_.start();
            return false;
        case QEvent::WindowDeactivate:
            if (watched == &window_) hide();
            return false;
        default:
            return false;
    }
}

void key_map::show_keys() {
    read_lines();
    QStringList words;
    for (const line& one : lines_) words << QStringLiteral("%1 %2").arg(one.key, one.name);
    setAccessibleDescription(words.join(QStringLiteral(", ")));
    setGeometry(window_.rect());
    show();
    raise();
}

void key_map::read_lines() {
    const auto& buttons = session_.shown_event()->logger().buttons();
    const std::vector<bound_button> bound = bound_buttons(buttons);
    const std::vector<key_clash> clashes = find_key_clashes(bound, window_.actions());
    std::vector<std::size_t> order(bound.size());
    for (std::size_t i = 0; i < order.size(); ++i) order[i] = i;
    std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
        return place_in_list(bound[a]) < place_in_list(bound[b]);
    });
    lines_.clear();
    for (const std::size_t i : order) {
        const auto found = std::find_if(buttons.begin(), buttons.end(),
                                        [&](const auto& one) { return one->uuid() == bound[i].uuid; });
        const auto colour = (*found)->display().button_colour;
        const auto number = static_cast<std::size_t>(found - buttons.begin());
        lines_.push_back({bound[i].key, bound[i].name,
                          colour ? to_qt(*colour) : theme::current().item_colour(number),
                          key_clash_words(clashes[i])});
    }
}

// Lines become lower before any of them is left out.
key_map::grid key_map::grid_in(const QRectF& room) const {
    const theme_metrics& metrics = theme::current().metrics;
    const int most_columns = std::max(1, static_cast<int>(room.width()) / window_sizes.key_map_column);
    const int count = std::max(1, static_cast<int>(lines_.size()));
    grid made;
    const int low = theme::line_height(type_step::body);
    made.line_height = metrics.list_line_height;
    const auto fits = [&] {
        return static_cast<int>(room.height()) / made.line_height * most_columns >= count;
    };
    while (made.line_height > low && !fits()) --made.line_height;
    const int most_lines = std::max(1, static_cast<int>(room.height()) / made.line_height);
    made.columns = std::clamp((count + most_lines - 1) / most_lines, 1, most_columns);
    // Evenly filled columns are read more easily than a full and an empty one.
    if (count > most_columns * 2) made.columns = std::max(made.columns, std::min(most_columns, 3));
    made.lines = std::min(most_lines, (count + made.columns - 1) / made.columns);
    made.column_width = room.width() / made.columns;
    return made;
}

void key_map::paint_line(QPainter& painter, const QRectF& place, const line& one) const {
    const theme& look = theme::current();
    const theme_metrics& metrics = look.metrics;
    const QFont key_font = theme::font(type_step::secondary_strong);
    const double height = std::min<double>(place.height() - metrics.grid, metrics.icon + metrics.padding);
    const double width = std::max<double>(
        window_sizes.key_map_key, QFontMetricsF(key_font).horizontalAdvance(one.key) + metrics.padding);
    const QRectF cap(place.left(), place.center().y() - height / 2, width, height);
    painter.setPen(QPen(look.edge, metrics.line));
    painter.setBrush(look.field);
    painter.drawRoundedRect(cap, metrics.radius_clip, metrics.radius_clip);
    painter.setPen(look.text);
    painter.setFont(key_font);
    painter.drawText(cap, Qt::AlignCenter, one.key);
    const QRectF swatch(cap.right() + metrics.padding, place.center().y() - metrics.swatch / 2.0,
                        metrics.swatch, metrics.swatch);
    painter.setPen(Qt::NoPen);
    painter.setBrush(one.colour);
    painter.drawRoundedRect(swatch, metrics.radius_clip, metrics.radius_clip);
    QRectF words = place;
    words.setLeft(swatch.right() + metrics.padding);
    words.setRight(place.right() - metrics.group_gap);
    const QFont name_font = theme::font(type_step::title);
    const QFontMetricsF names(name_font);
    const QString name = names.elidedText(one.name, Qt::ElideRight, words.width());
    painter.setFont(name_font);
    painter.setPen(look.text);
    painter.drawText(words, Qt::AlignLeft | Qt::AlignVCenter, name);
    if (one.warning.isEmpty()) return;
    words.setLeft(words.left() + names.horizontalAdvance(name) + metrics.padding);
    painter.drawPixmap(
        QPointF(words.left(), words.center().y() - metrics.icon / 2.0),
        icon_pixmap(QStringLiteral("warning"), look.warning, metrics.icon, devicePixelRatioF()));
    words.setLeft(words.left() + metrics.icon + metrics.grid);
    painter.setFont(theme::font(type_step::secondary));
    painter.setPen(look.warning);
    painter.drawText(words, Qt::AlignLeft | Qt::AlignVCenter,
                     QFontMetricsF(painter.font()).elidedText(one.warning, Qt::ElideRight, words.width()));
}

void key_map::paintEvent(QPaintEvent*) {
    const theme& look = theme::current();
    const theme_metrics& metrics = look.metrics;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setOpacity(window_sizes.key_map_ground_share);
    painter.fillRect(rect(), look.window);
    painter.setOpacity(1);
    const int around = 2 * metrics.group_gap;
    QRectF room = QRectF(rect()).adjusted(around, around, -around, -around);
    painter.setFont(theme::font(type_step::clip_title));
    painter.setPen(look.text);
    painter.drawText(room, Qt::AlignLeft | Qt::AlignTop,
                     lines_.empty() ? tr("No key presses a button") : tr("Keys of the code window"));
    painter.setFont(theme::font(type_step::secondary));
    painter.setPen(look.muted);
    painter.drawText(room, Qt::AlignRight | Qt::AlignTop, tr("All keys: Shift+F1"));
    room.setTop(room.top() + theme::line_height(type_step::clip_title) + metrics.group_gap);
    const grid made = grid_in(room);
    const auto fit = static_cast<std::size_t>(made.columns) * static_cast<std::size_t>(made.lines);
    for (std::size_t i = 0; i < std::min(fit, lines_.size()); ++i) {
        const auto column = i / static_cast<std::size_t>(made.lines);
        const auto row = i % static_cast<std::size_t>(made.lines);
        const QRectF place(room.left() + static_cast<double>(column) * made.column_width,
                           room.top() + static_cast<double>(row) * made.line_height, made.column_width,
                           made.line_height);
        paint_line(painter, place, lines_[i]);
    }
    if (fit >= lines_.size()) return;
    painter.setFont(theme::font(type_step::secondary));
    painter.setPen(look.muted);
    painter.drawText(rect().adjusted(around, 0, -around, -metrics.padding), Qt::AlignRight | Qt::AlignBottom,
                     tr("and %1 more").arg(lines_.size() - fit));
}

}  // namespace vistels
