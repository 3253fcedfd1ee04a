// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/content_side_bar.h"

#include <QFontMetrics>
#include <QKeyEvent>
#include <QMenu>
#include <QPainter>
#include <QStandardItemModel>
#include <QStyledItemDelegate>
#include <QTreeView>
#include <QVBoxLayout>
#include <set>

#include "shell/controls.h"
#include "shell/icons.h"
#include "shell/pane_header.h"
#include "shell/theme.h"

namespace vistels {

namespace {

enum line_kind { vault_line, heading_line, item_line };
enum line_role { kind_role = Qt::UserRole + 1, icon_role, folder_role, count_role, fact_role };

QString icon_of(item_kind kind) {
    switch (kind) {
        case item_kind::collection:
            return QStringLiteral("collection");
        case item_kind::timeline:
            return QStringLiteral("timeline");
        case item_kind::composer:
            return QStringLiteral("composer");
        case item_kind::markup:
            return QStringLiteral("code-window");
        case item_kind::table:
            return QStringLiteral("table");
        case item_kind::matrix:
            return QStringLiteral("matrix");
    }
    return {};
}

// Draws the lines of the list.
class content_delegate final : public QStyledItemDelegate {
  public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QSize sizeHint(const QStyleOptionViewItem&, const QModelIndex& index) const override {
        const theme_metrics& metrics = theme::current().metrics;
        const bool two_lines = !index.data(fact_role).toString().isEmpty();
        return {0, two_lines ? metrics.list_two_lines_height : metrics.list_line_height};
    }

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override {
        const theme& look = theme::current();
        const int kind = index.data(kind_role).toInt();
        if (option.state & QStyle::State_Selected) {
            painter->fillRect(option.rect, look.accent_ground);
        } else if (kind != heading_line && (option.state & QStyle::State_MouseOver)) {
            painter->fillRect(option.rect, look.hover);
        }
        const QRect inside =
            option.rect.adjusted(look.metrics.wide_padding, 0, -look.metrics.wide_padding, 0);
        if (kind == heading_line) {
            paint_words(*painter, inside, index, type_step::secondary, look.muted);
        } else {
            paint_line(*painter, inside, option, index, kind == vault_line);
        }
        if (option.state & QStyle::State_HasFocus) paint_inner_focus_ring(*painter, look, option.rect);
    }

  private:
    static void paint_words(QPainter& painter, const QRect& place, const QModelIndex& index, type_step step,
                            const QColor& colour) {
        const QFont font = theme::font(step);
        painter.setFont(font);
        painter.setPen(colour);
        painter.drawText(
            place, Qt::AlignLeft | Qt::AlignVCenter,
            QFontMetrics(font).elidedText(index.data().toString(), Qt::ElideRight, place.width()));
    }

    static void paint_line(QPainter& painter, QRect place, const QStyleOptionViewItem& option,
                           const QModelIndex& index, bool is_vault) {
        const theme& look = theme::current();
        const bool open = option.state & QStyle::State_Open;
        const QString icon = is_vault
                                 ? (open ? QStringLiteral("chevron-down") : QStringLiteral("chevron-right"))
                                 : index.data(icon_role).toString();
        const double ratio = painter.device()->devicePixelRatioF();
        painter.drawPixmap(place.left(), place.center().y() - look.metrics.icon / 2 + 1,
                           icon_pixmap(icon, look.muted, look.metrics.icon, ratio));
        place.setLeft(place.left() + look.metrics.icon + look.metrics.padding);
        const QString fact = index.data(fact_role).toString();
        // What is said about the open event holds the count, and the newer one.
        if (const QString count = index.data(count_role).toString(); !count.isEmpty() && fact.isEmpty()) {
            const QFont font = theme::font(type_step::smallest);
            painter.setFont(font);
            painter.setPen(look.muted);
            painter.drawText(place, Qt::AlignRight | Qt::AlignVCenter, count);
            place.setRight(place.right() - QFontMetrics(font).horizontalAdvance(count) -
                           look.metrics.padding);
        }
        if (!fact.isEmpty()) {
            QRect below = place;
            below.setTop(place.center().y());
            below.setBottom(place.bottom() - look.metrics.grid);
            painter.setFont(theme::font(type_step::smallest));
            painter.setPen(look.muted);
            painter.drawText(below, Qt::AlignLeft | Qt::AlignVCenter, fact);
            place.setTop(place.top() + look.metrics.grid);
            place.setBottom(below.top());
        }
        paint_words(painter, place, index, is_vault ? type_step::title : type_step::body, look.text);
    }
};

// Keeps Left, Right, Home and End from the transport while the list has the focus.
class content_tree final : public QTreeView {
  public:
    using QTreeView::QTreeView;

  protected:
    bool event(QEvent* event) override {
        if (event->type() == QEvent::ShortcutOverride) {
            const auto* key = static_cast<QKeyEvent*>(event);
            const bool moves = key->key() == Qt::Key_Left || key->key() == Qt::Key_Right ||
                               key->key() == Qt::Key_Home || key->key() == Qt::Key_End;
            if (moves && key->modifiers() == Qt::NoModifier) {
                event->accept();
                return true;
            }
        }
        return QTreeView::event(event);
    }
};

QStandardItem* make_line(line_kind kind, const QString& words) {
    auto* line = new QStandardItem(words);
    line->setEditable(false);
    line->setSelectable(kind == item_line);
    line->setData(kind, kind_role);
    return line;
}

}  // namespace

disk_line::disk_line(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("content.disk"));
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

QSize disk_line::sizeHint() const {
    const theme_metrics& metrics = theme::current().metrics;
    return {0, theme::line_height(type_step::smallest) + 2 * metrics.wide_padding + metrics.grid};
}

void disk_line::set_space(const volume_space& space) {
    constexpr double gigabyte = 1e9;
    used_share_ = space.total_bytes > 0 ? 1 - space.free_bytes / space.total_bytes : 0;
    text_ =
        tr("%1 GB free").arg(space.free_bytes / gigabyte, 0, 'f', space.free_bytes < 10 * gigabyte ? 1 : 0);
    setAccessibleName(tr("Home Vault disk: %1").arg(text_));
    update();
}

void disk_line::paintEvent(QPaintEvent*) {
    const theme& look = theme::current();
    const theme_metrics& metrics = look.metrics;
    QPainter painter(this);
    const QRect inside = rect().adjusted(metrics.wide_padding, metrics.padding, -metrics.wide_padding, 0);
    const int text_height = theme::line_height(type_step::smallest);
    const QRect words(inside.left(), inside.top(), inside.width(), text_height);
    const QFont font = theme::font(type_step::smallest);
    painter.setFont(font);
    painter.setPen(look.muted);
    painter.drawText(words, Qt::AlignRight | Qt::AlignVCenter, text_);
    const int left = words.width() - QFontMetrics(font).horizontalAdvance(text_) - metrics.padding;
    painter.drawText(words, Qt::AlignLeft | Qt::AlignVCenter,
                     QFontMetrics(font).elidedText(tr("Home Vault disk"), Qt::ElideRight, left));
    QRectF bar(inside.left(), words.bottom() + metrics.grid, inside.width(), metrics.slider_groove);
    painter.fillRect(bar, look.line);
    bar.setWidth(bar.width() * used_share_);
    painter.fillRect(bar, look.edge);
}

content_side_bar::content_side_bar(QWidget* parent)
    : QWidget(parent),
      header_(new pane_header({}, tr("Content"), this)),
      add_(new icon_button(QStringLiteral("plus"), tr("New collection or vault"), this)),
      model_(new QStandardItemModel(this)),
      list_(new content_tree(this)),
      disk_(new disk_line(this)) {
    setObjectName(QStringLiteral("content"));
    setAccessibleName(tr("Content"));
    add_->setObjectName(QStringLiteral("content.add"));
    header_->add_control(add_);
    list_->setObjectName(QStringLiteral("content.list"));
    list_->setAccessibleName(tr("Vaults and what they hold"));
    list_->setModel(model_);
    list_->setItemDelegate(new content_delegate(list_));
    list_->setHeaderHidden(true);
    list_->setRootIsDecorated(false);
    list_->setIndentation(0);
    list_->setMouseTracking(true);
    list_->setExpandsOnDoubleClick(false);
    list_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    list_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    list_->setFrameShape(QFrame::NoFrame);

    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(header_);
    column->addWidget(list_, 1);
    column->addWidget(disk_);

    connect(add_, &icon_button::clicked, this, &content_side_bar::show_menu);
    connect(list_, &QTreeView::activated, this, &content_side_bar::activate);
    connect(list_, &QTreeView::clicked, this, [this](const QModelIndex& index) {
        if (index.data(kind_role).toInt() == vault_line) list_->setExpanded(index, !list_->isExpanded(index));
    });
}

void content_side_bar::set_content(const std::vector<content_vault>& vaults) {
    std::set<QString> folded;
    for (int i = 0; i < model_->rowCount(); ++i) {
        const QModelIndex index = model_->index(i, 0);
        if (!list_->isExpanded(index)) folded.insert(index.data(folder_role).toString());
    }
    const QString chosen = list_->currentIndex().data(folder_role).toString();
    model_->clear();
    for (const auto& vault : vaults) add_vault(vault);
    for (int i = 0; i < model_->rowCount(); ++i) {
        const QModelIndex index = model_->index(i, 0);
        list_->setExpanded(index, !folded.contains(index.data(folder_role).toString()));
    }
    if (auto* item = find_item(chosen.toStdString())) list_->setCurrentIndex(item->index());
    set_open(open_folder_, open_fact_);
}

void content_side_bar::add_vault(const content_vault& vault) {
    auto* line = make_line(vault_line, QString::fromStdString(vault.name));
    line->setData(QString::fromStdString(vault.path), folder_role);
    line->setToolTip(QString::fromStdString(vault.problem.empty() ? vault.path : vault.problem));
    model_->appendRow(line);
    if (!vault.problem.empty()) {
        line->appendRow(make_line(heading_line, tr("Cannot be read")));
    } else if (vault.items.empty()) {
        line->appendRow(make_line(heading_line, tr("Nothing in it yet")));
    }
    const content_item* before = nullptr;
    for (const auto& item : vault.items) {
        if (!before || before->kind != item.kind) {
            line->appendRow(make_line(heading_line, tr(group_heading(item.kind))));
        }
        before = &item;
        auto* one = make_line(item_line, QString::fromStdString(item.name));
        one->setData(icon_of(item.kind), icon_role);
        one->setData(QString::fromStdString(item.opens), folder_role);
        one->setToolTip(QString::fromStdString(item.path));
        if (item.count >= 0) one->setData(QLocale::c().toString(item.count), count_role);
        line->appendRow(one);
    }
}

void content_side_bar::set_open(const std::string& folder, const QString& fact) {
    if (auto* before = find_item(open_folder_)) before->setData(QString(), fact_role);
    const bool is_other = folder != open_folder_;
    open_folder_ = folder;
    open_fact_ = fact;
    auto* item = find_item(folder);
    if (!item) return;
    item->setData(fact, fact_role);
    if (is_other || !list_->currentIndex().isValid()) list_->setCurrentIndex(item->index());
}

void content_side_bar::set_disk_space(const volume_space& space) {
    disk_->set_space(space);
}

void content_side_bar::activate(const QModelIndex& index) {
    const QString folder = index.data(folder_role).toString();
    if (index.data(kind_role).toInt() == item_line && !folder.isEmpty()) Q_EMIT open_asked(folder);
}

QStandardItem* content_side_bar::find_item(const std::string& folder) const {
    if (folder.empty()) return nullptr;
    const QString wanted = QString::fromStdString(folder);
    for (int i = 0; i < model_->rowCount(); ++i) {
        const QStandardItem* vault = model_->item(i);
        for (int j = 0; j < vault->rowCount(); ++j) {
            QStandardItem* item = vault->child(j);
            if (item->data(kind_role).toInt() == item_line && item->data(folder_role).toString() == wanted) {
                return item;
            }
        }
    }
    return nullptr;
}

void content_side_bar::show_menu() {
    QMenu menu(this);
    menu.addAction(tr("New Collection from Movies…"), this, &content_side_bar::new_collection_asked);
    menu.addAction(tr("New Vault…"), this, &content_side_bar::new_vault_asked);
    menu.exec(add_->mapToGlobal(QPoint(0, add_->height())));
}

void content_side_bar::paintEvent(QPaintEvent*) {
    QPainter(this).fillRect(rect(), theme::current().pane);
}

}  // namespace vistels
