// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/panes/side_bar/content_delegate.h"

#include <QFontMetrics>
#include <QPainter>
#include <QTreeView>
#include <vector>

#include "shell/kit/controls.h"
#include "shell/kit/icons.h"
#include "shell/kit/theme.h"
#include "shell/panes/side_bar/content_model.h"

namespace vistels {

namespace {

using line_kind = content_model::line_kind;

line_kind kind_of(const QModelIndex& index) {
    return static_cast<line_kind>(index.data(content_model::kind_role).toInt());
}

void paint_words(QPainter& painter, const QRect& place, const QString& words, type_step step,
                 const QColor& colour) {
    const QFont font = theme::font(step);
    painter.setFont(font);
    painter.setPen(colour);
    painter.drawText(place, Qt::AlignLeft | Qt::AlignVCenter,
                     QFontMetrics(font).elidedText(words, Qt::ElideRight, place.width()));
}

// A vault stands apart from what the one before it holds.
int gap_above(const QModelIndex& vault) {
    return vault.row() > 0 ? theme::current().metrics.padding : 0;
}

void paint_icon(QPainter& painter, int left, const QRect& place, const QString& name, const QColor& colour) {
    const int size = theme::current().metrics.icon;
    painter.drawPixmap(left, place.center().y() - size / 2 + 1,
                       icon_pixmap(name, colour, size, painter.device()->devicePixelRatioF()));
}

}  // namespace

content_delegate::content_delegate(QTreeView& list) : QStyledItemDelegate(&list), list_(list) {}

int content_delegate::small_line_count(const QModelIndex& vault) const {
    if (!vault.data(content_model::problem_role).toString().isEmpty()) return 1;
    const bool warns = !vault.data(content_model::space_role).toString().isEmpty();
    return (list_.isExpanded(vault) ? 0 : 1) + (warns ? 1 : 0);
}

QSize content_delegate::sizeHint(const QStyleOptionViewItem&, const QModelIndex& index) const {
    const theme_metrics& metrics = theme::current().metrics;
    const int added = metrics.list_two_lines_height - metrics.list_line_height;
    int lines = 0;
    int gap = 0;
    if (kind_of(index) == line_kind::vault) {
        gap = gap_above(index);
        lines = small_line_count(index);
    } else if (!index.data(content_model::fact_role).toString().isEmpty()) {
        lines = 1;
    }
    return {0, gap + metrics.list_line_height + lines * added};
}

std::vector<content_delegate::small_line> content_delegate::small_lines(const QModelIndex& vault) const {
    const theme& look = theme::current();
    if (const QString problem = vault.data(content_model::problem_role).toString(); !problem.isEmpty()) {
        return {{problem, look.muted, QStringLiteral("eye-off")}};
    }
    std::vector<small_line> lines;
    if (!list_.isExpanded(vault)) {
        lines.push_back({vault.data(content_model::summary_role).toString(), look.muted, {}});
    }
    if (const QString space = vault.data(content_model::space_role).toString(); !space.isEmpty()) {
        lines.push_back({space, look.warning, QStringLiteral("warning")});
    }
    return lines;
}

void content_delegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                             const QModelIndex& index) const {
    const theme& look = theme::current();
    const theme_metrics& metrics = look.metrics;
    const line_kind kind = kind_of(index);
    if (option.state & QStyle::State_Selected) {
        painter->fillRect(option.rect, look.accent_ground);
    } else if (kind != line_kind::heading && (option.state & QStyle::State_MouseOver)) {
        painter->fillRect(option.rect, look.hover);
    }
    const QRect inside = option.rect.adjusted(metrics.wide_padding, 0, -metrics.wide_padding, 0);
    switch (kind) {
        case line_kind::heading:
            paint_words(*painter, inside, index.data().toString(), type_step::secondary, look.muted);
            break;
        case line_kind::vault:
            paint_vault(*painter, inside.adjusted(0, gap_above(index), 0, 0), index);
            break;
        case line_kind::pattern:
            paint_item(*painter, inside, index);
            break;
        case line_kind::item:
            if (index.data(content_model::open_role).toBool()) {
                painter->fillRect(
                    QRect(option.rect.topLeft(), QSize(metrics.live_edge, option.rect.height())),
                    look.accent);
            }
            paint_item(*painter, inside, index);
            break;
    }
    if (option.state & QStyle::State_HasFocus) paint_inner_focus_ring(*painter, look, option.rect);
}

void content_delegate::paint_vault(QPainter& painter, QRect place, const QModelIndex& index) const {
    const theme& look = theme::current();
    const theme_metrics& metrics = look.metrics;
    const bool is_there = index.data(content_model::problem_role).toString().isEmpty();
    const auto lines = small_lines(index);
    const int added = metrics.list_two_lines_height - metrics.list_line_height;
    QRect name(place.left(), place.top(), place.width(),
               place.height() - static_cast<int>(lines.size()) * added);
    if (!lines.empty()) name.translate(0, metrics.grid / 2);
    const QString chevron =
        list_.isExpanded(index) ? QStringLiteral("chevron-down") : QStringLiteral("chevron-right");
    paint_icon(painter, name.left(), name, is_there ? chevron : QStringLiteral("vault"), look.muted);
    name.setLeft(name.left() + metrics.icon + metrics.padding);
    const auto mark = [&](const char* icon) {
        paint_icon(painter, name.right() - metrics.icon + 1, name, QLatin1String(icon), look.muted);
        name.setRight(name.right() - metrics.icon - metrics.grid);
    };
    if (index.data(content_model::focus_role).toBool()) mark("focus-vault");
    if (index.data(content_model::home_role).toBool()) mark("home");
    paint_words(painter, name, index.data().toString(), type_step::title, is_there ? look.text : look.muted);
    QRect below(place.left() + metrics.icon + metrics.padding, name.bottom() - metrics.grid, 0, added);
    below.setRight(place.right());
    for (const auto& line : lines) {
        QRect words = below;
        if (!line.icon.isEmpty()) {
            paint_icon(painter, words.left(), words, line.icon, line.colour);
            words.setLeft(words.left() + metrics.icon + metrics.grid);
        }
        paint_words(painter, words, line.words, type_step::smallest, line.colour);
        below.translate(0, added);
    }
}

void content_delegate::paint_item(QPainter& painter, QRect place, const QModelIndex& index) const {
    const theme& look = theme::current();
    const theme_metrics& metrics = look.metrics;
    // What can't be opened yet is muted.
    const bool opens =
        kind_of(index) == line_kind::pattern || !index.data(content_model::folder_role).toString().isEmpty();
    paint_icon(painter, place.left(), place, index.data(content_model::icon_role).toString(), look.muted);
    place.setLeft(place.left() + metrics.icon + metrics.padding);
    const QString fact = index.data(content_model::fact_role).toString();
    // What is said about the open event holds the count, and the newer one.
    if (const QString count = index.data(content_model::count_role).toString();
        !count.isEmpty() && fact.isEmpty()) {
        const QFont font = theme::font(type_step::smallest);
        painter.setFont(font);
        painter.setPen(look.muted);
        painter.drawText(place, Qt::AlignRight | Qt::AlignVCenter, count);
        place.setRight(place.right() - QFontMetrics(font).horizontalAdvance(count) - metrics.padding);
    }
    if (!fact.isEmpty()) {
        QRect below = place;
        below.setTop(place.center().y());
        below.setBottom(place.bottom() - metrics.grid);
        paint_words(painter, below, fact, type_step::smallest, look.muted);
        place.setTop(place.top() + metrics.grid);
        place.setBottom(below.top());
    }
    paint_words(painter, place, index.data().toString(), type_step::body, opens ? look.text : look.muted);
}

}  // namespace vistels
