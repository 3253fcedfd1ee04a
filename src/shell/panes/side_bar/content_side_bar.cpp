// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/panes/side_bar/content_side_bar.h"

#include <QAction>
#include <QContextMenuEvent>
#include <QDragEnterEvent>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMenu>
#include <QMimeData>
#include <QPainter>
#include <QScrollBar>
#include <QTreeView>
#include <QUrl>
#include <QVBoxLayout>
#include <algorithm>

#include "shell/kit/controls.h"
#include "shell/kit/icons.h"
#include "shell/kit/pane_header.h"
#include "shell/kit/theme.h"
#include "shell/panes/side_bar/content_delegate.h"
#include "shell/panes/side_bar/content_model.h"
#include "shell/panes/side_bar/disk_line.h"

namespace vistels {

namespace {

using line_kind = content_model::line_kind;

// From so many items on the filter field is shown unasked.
constexpr std::size_t many_items = 40;

bool is_vault(const QModelIndex& index) {
    return index.isValid() &&
           index.data(content_model::kind_role).toInt() == static_cast<int>(line_kind::vault);
}

// Keeps Left, Right, Home and End from the transport while the list has the focus, and says so when the
// filter leaves nothing.
class content_tree final : public QTreeView {
  public:
    explicit content_tree(QWidget* parent) : QTreeView(parent) {}

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

    void paintEvent(QPaintEvent* event) override {
        QTreeView::paintEvent(event);
        const auto* shown = qobject_cast<content_model*>(model());
        if (!shown || shown->rowCount() > 0 || shown->filter().isEmpty()) return;
        const theme& look = theme::current();
        QPainter painter(viewport());
        painter.setFont(theme::font(type_step::secondary));
        painter.setPen(look.muted);
        const int margin = look.metrics.wide_padding;
        painter.drawText(viewport()->rect().adjusted(margin, margin, -margin, -margin),
                         Qt::AlignHCenter | Qt::AlignTop | Qt::TextWordWrap,
                         QObject::tr("Nothing here is called “%1”.").arg(shown->filter()));
    }
};

QStringList dropped_folders(const QMimeData& data) {
    QStringList folders;
    for (const QUrl& url : data.urls()) {
        const QString path = url.toLocalFile();
        if (url.isLocalFile() && path.endsWith(QLatin1String(vault_ending))) folders << path;
    }
    return folders;
}

}  // namespace

content_side_bar::content_side_bar(QWidget* parent)
    : QWidget(parent),
      header_(new pane_header({}, tr("Content"), this)),
      search_(new icon_button(QStringLiteral("search"), tr("Find by name (Ctrl+Shift+B)"), this)),
      add_(new icon_button(QStringLiteral("plus"), tr("New collection or vault"), this)),
      more_(new icon_button(QStringLiteral("more"), tr("Vaults"), this)),
      filter_room_(new QWidget(this)),
      filter_(new QLineEdit(filter_room_)),
      model_(new content_model(this)),
      list_(new content_tree(this)),
      delegate_(new content_delegate(*list_)),
      disk_(new disk_line(this)) {
    setObjectName(QStringLiteral("content"));
    setAccessibleName(tr("Content"));
    setAcceptDrops(true);
    build_header();
    build_filter();
    list_->setObjectName(QStringLiteral("content.list"));
    list_->setAccessibleName(tr("Vaults and what they hold"));
    list_->setModel(model_);
    list_->setItemDelegate(delegate_);
    list_->setHeaderHidden(true);
    list_->setRootIsDecorated(false);
    list_->setIndentation(0);
    list_->setMouseTracking(true);
    list_->setExpandsOnDoubleClick(false);
    list_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    list_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    list_->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    list_->setFrameShape(QFrame::NoFrame);
    list_->installEventFilter(this);

    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(header_);
    column->addWidget(filter_room_);
    column->addWidget(list_, 1);
    column->addWidget(disk_);
    connect_list();
}

void content_side_bar::build_header() {
    search_->setObjectName(QStringLiteral("content.search"));
    search_->setCheckable(true);
    add_->setObjectName(QStringLiteral("content.add"));
    more_->setObjectName(QStringLiteral("content.more"));
    for (QWidget* control : {search_, add_, more_}) header_->add_control(control);
    connect(search_, &icon_button::clicked, this, [this](bool on) { on ? find() : show_filter(false); });
    const auto below = [](const QWidget* button) { return button->mapToGlobal(QPoint(0, button->height())); };
    connect(add_, &icon_button::clicked, this, [this, below] { show_menu(actions_.make, below(add_)); });
    connect(more_, &icon_button::clicked, this, [this, below] { show_menu(actions_.all, below(more_)); });
}

void content_side_bar::build_filter() {
    const theme_metrics& metrics = theme::current().metrics;
    filter_->setObjectName(QStringLiteral("content.filter"));
    filter_->setAccessibleName(tr("Find by name"));
    filter_->setPlaceholderText(tr("Find by name"));
    filter_->setClearButtonEnabled(true);
    filter_->setFixedHeight(metrics.field_height);
    filter_->installEventFilter(this);
    auto* row = new QHBoxLayout(filter_room_);
    row->setContentsMargins(metrics.wide_padding, metrics.padding, metrics.wide_padding, metrics.padding);
    row->addWidget(filter_);
    filter_room_->hide();
    connect(filter_, &QLineEdit::textChanged, this, &content_side_bar::set_filter);
}

void content_side_bar::connect_list() {
    connect(list_, &QTreeView::activated, this, &content_side_bar::activate);
    connect(list_, &QTreeView::clicked, this, [this](const QModelIndex& index) {
        if (is_vault(index)) list_->setExpanded(index, !list_->isExpanded(index));
    });
    connect(list_, &QTreeView::expanded, this, [this](const QModelIndex& index) { fold(index, false); });
    connect(list_, &QTreeView::collapsed, this, [this](const QModelIndex& index) { fold(index, true); });
    // A vault that appears is open unless it was folded before.
    connect(model_, &QAbstractItemModel::rowsInserted, this, [this](const QModelIndex& parent) {
        if (!parent.isValid()) show_folding();
    });
}

void content_side_bar::set_content(std::vector<content_vault> vaults) {
    // What stands at the top stays there, whatever comes and goes above it.
    const QPersistentModelIndex top = list_->indexAt(QPoint(0, 0));
    const int place = list_->visualRect(top).top();
    const bool was_listed = model_->index_of(open_folder_).isValid();
    model_->set_content(std::move(vaults));
    show_folding();
    show_disk();
    // A new event is open before it is listed.
    const QModelIndex open = model_->index_of(open_folder_);
    if (open.isValid() && (!was_listed || !list_->currentIndex().isValid())) go_to(open);
    if (model_->item_count() >= many_items && !filter_was_offered_) {
        filter_was_offered_ = true;
        show_filter(true);
    }
    if (!top.isValid()) return;
    QScrollBar* scroll = list_->verticalScrollBar();
    scroll->setValue(scroll->value() + list_->visualRect(top).top() - place);
}

// With a filter everything that passes is in sight.
void content_side_bar::show_folding() {
    for (int row = 0; row < model_->rowCount(); ++row) {
        const QModelIndex index = model_->index(row, 0);
        const bool folded =
            model_->filter().isEmpty() && folded_.contains(index.data(content_model::folder_role).toString());
        if (list_->isExpanded(index) == folded && model_->rowCount(index) > 0) {
            const QSignalBlocker no_memory(list_);
            list_->setExpanded(index, !folded);
            delegate_->tell_height_changed(index);
        }
    }
}

void content_side_bar::fold(const QModelIndex& vault, bool folded) {
    delegate_->tell_height_changed(vault);
    if (!model_->filter().isEmpty()) return;
    const QString path = vault.data(content_model::folder_role).toString();
    folded ? static_cast<void>(folded_.insert(path)) : static_cast<void>(folded_.erase(path));
}

std::vector<std::string> content_side_bar::folded() const {
    std::vector<std::string> paths;
    for (const QString& path : folded_) paths.push_back(path.toStdString());
    return paths;
}

void content_side_bar::set_folded(const std::vector<std::string>& vaults) {
    folded_.clear();
    for (const auto& path : vaults) folded_.insert(QString::fromStdString(path));
    show_folding();
}

void content_side_bar::set_open(const std::string& folder, const QString& fact) {
    const bool is_other = folder != open_folder_;
    const bool had_fact = !model_->index_of(folder).data(content_model::fact_role).toString().isEmpty();
    open_folder_ = folder;
    model_->set_open(folder, fact);
    const QModelIndex open = model_->index_of(folder);
    // A layout of the whole list, so only where a line has come or gone.
    if (open.isValid() && (is_other || had_fact == fact.isEmpty())) delegate_->tell_height_changed(open);
    if (open.isValid() && (is_other || !list_->currentIndex().isValid())) go_to(open);
}

// Into sight once the heights of the lines are known.
void content_side_bar::go_to(const QModelIndex& line) {
    list_->setCurrentIndex(line);
    QMetaObject::invokeMethod(
        this, [this, place = QPersistentModelIndex(line)] { list_->scrollTo(place); }, Qt::QueuedConnection);
}

// The focus vault's volume, since new items go there.
void content_side_bar::show_disk() {
    const auto& vaults = model_->content();
    auto shown = std::find_if(vaults.begin(), vaults.end(), [](const auto& one) { return one.is_focus; });
    if (shown == vaults.end()) {
        shown = std::find_if(vaults.begin(), vaults.end(), [](const auto& one) { return one.is_home; });
    }
    if (shown != vaults.end() && shown->space) {
        disk_->set_space(QString::fromStdString(shown->name), *shown->space, shown->is_limited);
    }
}

const std::vector<content_vault>& content_side_bar::content() const {
    return model_->content();
}

void content_side_bar::set_patterns(std::vector<content_pattern> patterns) {
    model_->set_patterns(std::move(patterns));
    show_folding();
}

const content_vault* content_side_bar::current_vault() const {
    return model_->vault_of(list_->currentIndex());
}

QString content_side_bar::current_path() const {
    return list_->currentIndex().data(content_model::path_role).toString();
}

void content_side_bar::activate(const QModelIndex& index) {
    const auto kind = static_cast<line_kind>(index.data(content_model::kind_role).toInt());
    if (kind == line_kind::pattern) {
        Q_EMIT pattern_chosen(index.data(content_model::pattern_role).toString());
        return;
    }
    // A click has opened or closed the vault already; a key has not.
    if (kind != line_kind::item) return;
    const QString folder = index.data(content_model::folder_role).toString();
    if (!folder.isEmpty()) {
        Q_EMIT open_asked(folder);
    } else {
        Q_EMIT unknown_asked(index.data(content_model::item_kind_role).toInt(), index.data().toString(),
                             index.data(content_model::path_role).toString());
    }
}

void content_side_bar::find() {
    show_filter(true);
    filter_->setFocus();
    filter_->selectAll();
}

void content_side_bar::show_filter(bool shown) {
    search_->setChecked(shown);
    if (shown == !filter_room_->isHidden()) return;
    const bool had_focus = filter_->hasFocus();
    filter_room_->setVisible(shown);
    if (shown) return;
    filter_->clear();
    if (had_focus) list_->setFocus();
}

void content_side_bar::set_filter(const QString& text) {
    model_->set_filter(text);
    show_folding();
    const QModelIndex current = list_->currentIndex();
    if (current.isValid()) list_->scrollTo(current);
    list_->viewport()->update();
}

void content_side_bar::show_menu(const QList<QAction*>& actions, QPoint at) {
    QMenu menu(this);
    menu.setObjectName(QStringLiteral("content.menu"));
    menu.setToolTipsVisible(true);
    menu.addActions(actions);
    menu.exec(at);
}

void content_side_bar::show_context_menu(QPoint at) {
    const QModelIndex index = list_->currentIndex();
    if (!index.isValid()) return show_menu(actions_.all, at);
    if (is_vault(index)) return show_menu(actions_.vault, at);
    QAction open(tr("Open"), this);
    open.setObjectName(QStringLiteral("content.open"));
    if (const QString pattern = index.data(content_model::pattern_role).toString(); !pattern.isEmpty()) {
        open.setText(tr("Apply Filter"));
        open.setToolTip(tr("Puts it into the filter field and applies it (Return)"));
        connect(&open, &QAction::triggered, this, [this, pattern] { Q_EMIT pattern_chosen(pattern); });
        return show_menu({&open}, at);
    }
    open.setToolTip(tr("Open it in this window (Return)"));
    connect(&open, &QAction::triggered, this,
            [this, place = QPersistentModelIndex(index)] { activate(place); });
    QAction in_new(tr("Open in New Window"), this);
    in_new.setObjectName(QStringLiteral("content.open_in_new_window"));
    in_new.setToolTip(tr("Open it in a window of its own, beside this one"));
    const QString folder = index.data(content_model::folder_role).toString();
    in_new.setEnabled(!folder.isEmpty());
    connect(&in_new, &QAction::triggered, this, [this, folder] { Q_EMIT open_in_new_window_asked(folder); });
    show_menu(QList<QAction*>{&open, &in_new} + actions_.item, at);
}

bool content_side_bar::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::ContextMenu && watched == list_) {
        const auto* asked = static_cast<QContextMenuEvent*>(event);
        if (asked->reason() == QContextMenuEvent::Keyboard) {
            const QRect line = list_->visualRect(list_->currentIndex());
            show_context_menu(list_->viewport()->mapToGlobal(line.bottomLeft()));
        } else {
            const QModelIndex under = list_->indexAt(list_->viewport()->mapFromGlobal(asked->globalPos()));
            if (under.isValid() && (under.flags() & Qt::ItemIsSelectable)) {
                list_->setCurrentIndex(under);
                show_context_menu(asked->globalPos());
            } else {
                show_menu(actions_.all, asked->globalPos());
            }
        }
        return true;
    }
    if (event->type() != QEvent::KeyPress) return QWidget::eventFilter(watched, event);
    const int key = static_cast<QKeyEvent*>(event)->key();
    if (watched == filter_ && key == Qt::Key_Escape) {
        show_filter(false);
        return true;
    }
    if (watched == filter_ && (key == Qt::Key_Down || key == Qt::Key_Return || key == Qt::Key_Enter)) {
        // On to the first item that passes.
        for (QModelIndex at = model_->index(0, 0); at.isValid(); at = list_->indexBelow(at)) {
            if (is_vault(at) || !(at.flags() & Qt::ItemIsSelectable)) continue;
            list_->setCurrentIndex(at);
            break;
        }
        list_->setFocus();
        return true;
    }
    if (watched == list_ && is_vault(list_->currentIndex()) &&
        (key == Qt::Key_Return || key == Qt::Key_Enter)) {
        const QModelIndex vault = list_->currentIndex();
        list_->setExpanded(vault, !list_->isExpanded(vault));
        return true;
    }
    return QWidget::eventFilter(watched, event);
}

void content_side_bar::dragEnterEvent(QDragEnterEvent* event) {
    // Anything but a vault is left to the window.
    dropped_folders(*event->mimeData()).isEmpty() ? event->ignore() : event->acceptProposedAction();
}

void content_side_bar::dropEvent(QDropEvent* event) {
    Q_EMIT folders_dropped(dropped_folders(*event->mimeData()));
    event->acceptProposedAction();
}

void content_side_bar::paintEvent(QPaintEvent*) {
    QPainter(this).fillRect(rect(), theme::current().pane);
}

}  // namespace vistels
