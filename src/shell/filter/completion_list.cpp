// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/filter/completion_list.h"

#include <QEvent>
#include <QFontMetrics>
#include <QLocale>
#include <QPainter>
#include <QStandardItemModel>
#include <QStyledItemDelegate>
#include <algorithm>

#include "shell/filter/filter_metrics.h"
#include "shell/kit/theme.h"

namespace vistels {

namespace {

enum role { what_role = Qt::UserRole, code_role, uses_role };

QString uses_text(const QModelIndex& line) {
    const qulonglong uses = line.data(uses_role).toULongLong();
    return uses == 0 ? QString() : QLocale().toString(uses);
}

// The words in their colour, then muted what they are and how often they are used.
class line_painter : public QStyledItemDelegate {
  public:
    explicit line_painter(completion_list& list) : QStyledItemDelegate(&list), list_(list) {}

    QSize sizeHint(const QStyleOptionViewItem&, const QModelIndex&) const override {
        return {0, theme::current().metrics.list_line_height};
    }

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& line) const override {
        const theme& look = theme::current();
        const theme_metrics& metrics = look.metrics;
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        const bool is_chosen = option.state & QStyle::State_Selected;
        if (is_chosen || (option.state & QStyle::State_MouseOver)) {
            painter->setPen(Qt::NoPen);
            painter->setBrush(is_chosen ? look.accent_ground : look.hover);
            painter->drawRoundedRect(option.rect, metrics.radius_clip, metrics.radius_clip);
        }
        QRect room = option.rect.adjusted(metrics.padding, 0, -metrics.padding, 0);
        const QFontMetrics small(theme::font(type_step::smallest));
        painter->setFont(theme::font(type_step::smallest));
        painter->setPen(look.muted);
        painter->drawText(room, Qt::AlignRight | Qt::AlignVCenter, uses_text(line));
        room.setRight(room.right() - list_count_width(small) - metrics.padding);
        const QFontMetrics secondary(theme::font(type_step::secondary));
        const QString what = line.data(what_role).toString();
        painter->setFont(theme::font(type_step::secondary));
        painter->drawText(room, Qt::AlignRight | Qt::AlignVCenter, what);
        room.setRight(room.right() - secondary.horizontalAdvance(what) - metrics.padding);
        paint_words(*painter, room, line);
        painter->restore();
    }

  private:
    static void paint_token(QPainter& painter, const QRectF& place, const QColor& ground) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(ground);
        const double radius = theme::current().metrics.radius_clip;
        painter.drawRoundedRect(place, radius, radius);
    }

    int list_count_width(const QFontMetrics& small) const {
        int most = 0;
        for (int row = 0; row < list_.count(); ++row) {
            most = std::max(most, small.horizontalAdvance(uses_text(list_.model()->index(row, 0))));
        }
        return most;
    }

    void paint_words(QPainter& painter, const QRect& room, const QModelIndex& line) const {
        const theme& look = theme::current();
        const std::string code = line.data(code_role).toString().toStdString();
        const QFont font = theme::font(type_step::body);
        const QFontMetrics sizes(font);
        const QString words =
            sizes.elidedText(line.data(Qt::DisplayRole).toString(), Qt::ElideRight, room.width());
        const QColor ground = list_.colours().ground(look, code);
        if (ground.isValid()) {
            const int padding = filter_sizes.token_padding;
            const int height = theme::line_height(type_step::body);
            const QRectF place(room.left() - padding, room.center().y() - height / 2.0,
                               sizes.horizontalAdvance(words) + 2.0 * padding, height);
            paint_token(painter, place, ground);
        }
        painter.setFont(font);
        painter.setPen(list_.colours().ink(look, code));
        painter.drawText(room, Qt::AlignLeft | Qt::AlignVCenter, words);
    }

    completion_list& list_;
};

}  // namespace

completion_list::completion_list(const QString& name, QWidget* field)
    : QListView(field->window()), field_(field), lines_(new QStandardItemModel(this)) {
    setObjectName(name);
    setProperty("kind", "popover");
    setAccessibleName(tr("Completions"));
    setFocusPolicy(Qt::NoFocus);
    setModel(lines_);
    setItemDelegate(new line_painter(*this));
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setSelectionMode(QAbstractItemView::SingleSelection);
    setUniformItemSizes(true);
    setMouseTracking(true);
    setAttribute(Qt::WA_NoMousePropagation);  // what is pressed here is not pressed in the window below
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    connect(this, &QListView::pressed, this, [this](const QModelIndex& line) { Q_EMIT picked(line.row()); });
    parentWidget()->installEventFilter(this);
    hide();
}

void completion_list::offer(const std::vector<completion_line>& lines, const QRect& under,
                            bool chooses_first) {
    lines_->clear();
    for (const completion_line& line : lines) {
        auto* item = new QStandardItem(line.words);
        item->setData(line.what, what_role);
        item->setData(QString::fromStdString(line.code), code_role);
        item->setData(static_cast<qulonglong>(line.uses), uses_role);
        item->setData(tr("%1, %2").arg(line.words, line.what), Qt::AccessibleTextRole);
        lines_->appendRow(item);
    }
    clearSelection();
    setCurrentIndex(chooses_first ? lines_->index(0, 0) : QModelIndex());
    scrollToTop();
    place(under);
    show();
    raise();
}

void completion_list::place(const QRect& under) {
    const theme_metrics& metrics = theme::current().metrics;
    const QWidget* ground = parentWidget();
    const QRect at(field_->mapTo(ground, under.topLeft()), under.size());
    const int frame = 2 * (metrics.grid + metrics.line);
    const int wanted = std::min(count(), filter_sizes.completion_lines) * metrics.list_line_height + frame;
    const int below = ground->height() - at.bottom() - 2 * metrics.grid;
    const int above = at.top() - 2 * metrics.grid;
    const bool goes_below = wanted <= below || below >= above;
    const int height = std::min(wanted, goes_below ? below : above);
    const int width = std::min(std::max(filter_sizes.completion_width, at.width()), ground->width());
    const int x = std::clamp(at.left(), 0, std::max(0, ground->width() - width));
    setGeometry(x, goes_below ? at.bottom() + metrics.grid : at.top() - metrics.grid - height, width, height);
}

int completion_list::count() const {
    return lines_->rowCount();
}

int completion_list::chosen() const {
    return currentIndex().isValid() ? currentIndex().row() : -1;
}

void completion_list::choose_beside(int direction) {
    if (count() == 0) return;
    const int from = chosen() < 0 && direction < 0 ? 0 : chosen();
    setCurrentIndex(lines_->index((from + direction + count()) % count(), 0));
}

// The field may have gone elsewhere.
bool completion_list::eventFilter(QObject* watched, QEvent* event) {
    if (watched == parentWidget() && event->type() == QEvent::Resize) hide();
    return QListView::eventFilter(watched, event);
}

}  // namespace vistels
