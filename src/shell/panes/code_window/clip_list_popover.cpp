// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/panes/code_window/clip_list_popover.h"

#include <QAbstractListModel>
#include <QApplication>
#include <QLabel>
#include <QListView>
#include <QPainter>
#include <QPointerEvent>
#include <QScrollBar>
#include <QStyledItemDelegate>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>

#include "shell/kit/controls.h"
#include "shell/kit/escape_key.h"
#include "shell/kit/theme.h"
#include "shell/kit/theme_time_text.h"
#include "shell/panes/code_window/code_window_metrics.h"

namespace vistels {

// What a line says is made when it is seen: a row may have many thousand clips.
class clip_list_model final : public QAbstractListModel {
  public:
    using QAbstractListModel::QAbstractListModel;

    void set_clips(clip_list clips) {
        beginResetModel();
        clips_ = std::move(clips);
        endResetModel();
    }
    const clip_list& clips() const { return clips_; }
    int rowCount(const QModelIndex& parent) const override {
        return parent.isValid() ? 0 : static_cast<int>(clips_.size());
    }
    QVariant data(const QModelIndex& index, int role) const override {
        if (role != Qt::DisplayRole) return {};
        return QStringLiteral("%1 %2 %3").arg(index.row() + 1).arg(start_text(index), words(index));
    }
    QString start_text(const QModelIndex& index) const {
        return time_text(clip(index).secs_start(), time_form::clock);
    }
    // The names of its qualifiers.
    QString words(const QModelIndex& index) const {
        QStringList names;
        if (const auto all = clip(index).qualifiers()) {
            for (const auto& one : *all) names << QString::fromStdString(one.name().str());
        }
        return names.join(QStringLiteral(", "));
    }

  private:
    const sxy_CLIP& clip(const QModelIndex& index) const {
        return *clips_[static_cast<std::size_t>(index.row())];
    }

    clip_list clips_;
};

namespace {

class clip_line_delegate final : public QStyledItemDelegate {
  public:
    clip_line_delegate(const clip_list_model& model, QObject* parent)
        : QStyledItemDelegate(parent), model_(model) {}

    QSize sizeHint(const QStyleOptionViewItem&, const QModelIndex&) const override {
        return {0, theme::current().metrics.touch_height};
    }
    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override {
        const theme& look = theme::current();
        const theme_metrics& metrics = look.metrics;
        if (option.state.testFlag(QStyle::State_Selected))
            painter->fillRect(option.rect, look.accent_ground);
        else if (option.state.testFlag(QStyle::State_MouseOver))
            painter->fillRect(option.rect, look.hover);
        QRectF room = QRectF(option.rect).adjusted(metrics.wide_padding, 0, -metrics.wide_padding, 0);
        const QFont quiet = theme::font(type_step::secondary);
        const QString last = QString::number(model_.clips().size());
        const double number_width = time_text_width(last, quiet);
        painter->setPen(look.muted);
        draw_time_text(*painter, {room.left(), room.top(), number_width, room.height()}, Qt::AlignRight,
                       QString::number(index.row() + 1), quiet);
        room.setLeft(room.left() + number_width + metrics.padding);
        const QFont body = theme::font(type_step::body);
        const QString start = model_.start_text(index);
        painter->setPen(look.text);
        draw_time_text(*painter, room, Qt::AlignLeft, start, body);
        room.setLeft(room.left() + time_text_width(start, body) + metrics.wide_padding);
        painter->setFont(quiet);
        painter->setPen(look.muted);
        painter->drawText(room, Qt::AlignLeft | Qt::AlignVCenter,
                          QFontMetricsF(quiet).elidedText(model_.words(index), Qt::ElideRight, room.width()));
    }

  private:
    const clip_list_model& model_;
};

}  // namespace

clip_list_popover::clip_list_popover(QWidget* view)
    : popover(view, Qt::Widget),
      title_(make_label({}, type_step::title, QStringLiteral("title"), this)),
      lines_(new QListView(this)),
      model_(new clip_list_model(this)) {
    const theme_metrics& metrics = theme::current().metrics;
    setObjectName(QStringLiteral("code_window_list"));
    lines_->setObjectName(QStringLiteral("code_window_list.lines"));
    lines_->setModel(model_);
    lines_->setItemDelegate(new clip_line_delegate(*model_, this));
    lines_->setUniformItemSizes(true);
    lines_->setFrameShape(QFrame::NoFrame);
    lines_->setFocusPolicy(Qt::NoFocus);
    lines_->setMouseTracking(true);
    lines_->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    title_->setContentsMargins(metrics.wide_padding, 0, metrics.wide_padding, 0);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(metrics.line, metrics.padding, metrics.line, metrics.padding);
    column->setSpacing(metrics.grid);
    column->addWidget(title_);
    column->addWidget(lines_, 1);
    connect(lines_, &QListView::clicked, this, [this](const QModelIndex& index) {
        Q_EMIT chosen(model_->clips()[static_cast<std::size_t>(index.row())]->secs_start());
    });
    hide();
    qApp->installEventFilter(this);
}

void clip_list_popover::show_beside(const QWidget& button, const std::string& uuid, const QString& title,
                                    clip_list clips, double collection_seconds) {
    button_ = uuid;
    setAccessibleName(tr("Clips of “%1”").arg(title));
    lines_->setAccessibleName(accessibleName());
    beside_ = &button;
    words_ = title;
    const std::size_t behind = clips.first_starting_at(collection_seconds);
    model_->set_clips(std::move(clips));
    setParent(button.window());  // over all of the window
    show_title();
    place();
    show();
    raise();
    if (model_->clips().empty()) return;
    const bool starts_here =
        behind < model_->clips().size() && model_->clips()[behind]->secs_start() == collection_seconds;
    const std::size_t now = starts_here || behind == 0 ? behind : behind - 1;
    lines_->setCurrentIndex(model_->index(static_cast<int>(now), 0));
    lines_->scrollTo(lines_->currentIndex(), QAbstractItemView::PositionAtCenter);
}

void clip_list_popover::set_clips(clip_list clips) {
    const int scrolled = lines_->verticalScrollBar()->value();
    const QModelIndex chosen_line = lines_->currentIndex();
    model_->set_clips(std::move(clips));
    show_title();
    place();
    if (chosen_line.isValid()) lines_->setCurrentIndex(model_->index(chosen_line.row(), 0));
    lines_->verticalScrollBar()->setValue(scrolled);
}

void clip_list_popover::show_title() {
    title_->setText(model_->clips().empty() ? tr("%1: no clips yet").arg(words_) : words_);
}

void clip_list_popover::place() {
    if (!beside_) return;
    const QWidget& button = *beside_;
    const theme_metrics& metrics = theme::current().metrics;
    const QWidget& window = *button.window();
    const auto count = static_cast<int>(std::min<std::size_t>(
        model_->clips().size(), static_cast<std::size_t>(code_window_sizes.list_most_lines)));
    const int height =
        std::min(window.height(), 2 * metrics.padding + metrics.grid + theme::line_height(type_step::title) +
                                      count * metrics.touch_height);
    const int width = std::min(window.width(), code_window_sizes.list_width);
    const QRect at(button.mapTo(&window, QPoint(0, 0)), button.size());
    int left = at.right() + metrics.grid;
    if (left + width > window.width()) left = at.left() - metrics.grid - width;
    setGeometry(std::clamp(left, 0, window.width() - width),
                std::clamp(at.top(), 0, window.height() - height), width, height);
}

bool clip_list_popover::eventFilter(QObject* watched, QEvent* event) {
    if (!isVisible()) return false;
    const auto* widget = qobject_cast<const QWidget*>(watched);
    const bool is_ours = widget && widget->window() == window();
    if (is_ours && event->type() == QEvent::KeyPress && accept_escape(event)) {
        hide();
        return true;
    }
    const bool is_press = event->type() == QEvent::MouseButtonPress || event->type() == QEvent::TouchBegin;
    if (!is_press || !is_ours) return false;
    const QPointF at = static_cast<QPointerEvent*>(event)->points().first().globalPosition();
    if (!rect().contains(mapFromGlobal(at.toPoint()))) hide();
    return false;
}

}  // namespace vistels
