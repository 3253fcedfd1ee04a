// SPDX-License-Identifier: GPL-3.0-or-later
// What is done to rows by their names: the menu, renaming in place, and dragging to another place.
#include <QAction>
#include <QContextMenuEvent>
#include <QInputDialog>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMenu>
#include <QMouseEvent>
#include <QPainter>
#include <algorithm>
#include <cmath>

#include "shell/kit/colour_menu.h"
#include "shell/kit/theme.h"
#include "shell/panes/timeline/timeline_metrics.h"
#include "shell/panes/timeline/timeline_names.h"
#include "shell/panes/timeline/timeline_state.h"
#include "timeline/edits/clip_operations.h"
#include "timeline/edits/row_edits.h"

namespace vistels {

namespace {

constexpr int drag_from_pixels = 4;  // a press that moves less is a click

QAction* add_named(QMenu& menu, const char* name, const QString& words) {
    QAction* made = menu.addAction(words);
    made->setObjectName(QStringLiteral("timeline_rows.") + QLatin1String(name));
    return made;
}

}  // namespace

void timeline_names::contextMenuEvent(QContextMenuEvent* event) {
    if (!state_.has_timeline()) return;
    if (event->reason() == QContextMenuEvent::Keyboard) {
        const std::size_t index = state_.rows().row_with(current_);
        if (index == state_.rows().size()) return show_menu(mapToGlobal(rect().topLeft()));
        const timeline_row& row = state_.rows()[index];
        const int y = timeline_sizes.ruler_height + row.top + row.height - state_.first_y();
        return show_menu(mapToGlobal(QPoint(theme::current().metrics.wide_padding, y)));
    }
    const std::size_t index = row_at(event->pos().y());
    if (index == state_.rows().size()) {
        choose({});
    } else {
        current_ = state_.rows()[index].uuid;
        if (!is_chosen(current_)) {
            anchor_ = current_;
            choose({current_});
        }
    }
    show_menu(event->globalPos());
}

void timeline_names::show_menu(QPoint at) {
    const std::vector<shared_text> rows = chosen();
    QMenu menu(this);
    menu.setObjectName(QStringLiteral("timeline_rows.menu"));
    menu.setToolTipsVisible(true);
    connect(add_named(menu, "new", tr("New Row")), &QAction::triggered, this, &timeline_names::add_row);
    if (!rows.empty()) add_to_menu(menu, rows);
    menu.addSeparator();
    add_orders(menu);
    QAction* show = add_named(menu, "show_hidden", tr("Show Hidden Rows"));
    const auto& all = state_.timeline().rows();
    show->setEnabled(
        std::any_of(all.begin(), all.end(), [](const row_pointer& row) { return is_hidden(*row); }));
    connect(show, &QAction::triggered, this,
            [this] { state_.make(plan_show_hidden_rows(state_.timeline())); });
    menu.exec(at);
}

void timeline_names::add_to_menu(QMenu& menu, const std::vector<shared_text>& rows) {
    QAction* rename = add_named(menu, "rename", tr("Rename Row"));
    rename->setShortcut(Qt::Key_F2);
    rename->setEnabled(rows.size() == 1);
    connect(rename, &QAction::triggered, this, [this, row = rows.front()] { edit_name(row); });
    add_colour_menu(menu, tr("Colour"), [this, rows](const colour& shade) {
        state_.make(plan_row_colour(state_.timeline(), rows, shade));
    });
    connect(add_named(menu, "category", tr("Category…")), &QAction::triggered, this,
            [this, rows] { ask_category(rows); });
    QMenu* heights = menu.addMenu(tr("Height"));
    for (const auto& [words, height] :
         {std::pair{tr("Low"), timeline_sizes.row_least_height},
          {tr("Usual"), timeline_sizes.row_height},
          {tr("High"), 2 * timeline_sizes.row_least_height + timeline_sizes.row_least_height / 2},
          {tr("Highest"), timeline_sizes.row_greatest_height}}) {
        connect(heights->addAction(words), &QAction::triggered, this, [this, rows, height = height] {
            state_.make(plan_row_height(state_.timeline(), rows, height));
        });
    }
    connect(add_named(menu, "hide", rows.size() > 1 ? tr("Hide %1 Rows").arg(rows.size()) : tr("Hide Row")),
            &QAction::triggered, this,
            [this, rows] { state_.make(plan_hide_rows(state_.timeline(), rows)); });
    connect(add_named(menu, "select_clips", tr("Select Clips")), &QAction::triggered, this,
            [this, rows] { state_.select_rows(rows); });
    menu.addSeparator();
    add_compaction(menu, rows);
    menu.addSeparator();
    QAction* copy = add_named(menu, "duplicate", tr("Duplicate Row"));
    copy->setEnabled(rows.size() == 1);
    connect(copy, &QAction::triggered, this,
            [this, row = rows.front()] { state_.make(plan_duplicate_row(state_.timeline(), row)); });
    QAction* remove = add_named(menu, "delete", tr("Delete Row"));
    remove->setEnabled(rows.size() == 1);
    remove->setToolTip(tr("Delete the row with its clips"));
    connect(remove, &QAction::triggered, this, [this, row = rows.front()] {
        state_.make(plan_delete_row(state_.timeline(), row, state_.stamp_now()));
    });
}

void timeline_names::add_compaction(QMenu& menu, const std::vector<shared_text>& rows) {
    const auto merged = std::count_if(rows.begin(), rows.end(), [this](const shared_text& row) {
        return !state_.rows()[state_.rows().row_with(row)].merged.empty();
    });
    const bool many = rows.size() > 1;
    QAction* compact =
        add_named(menu, "compact", many ? tr("Compact %1 Rows").arg(rows.size()) : tr("Compact Rows"));
    connect(compact, &QAction::triggered, this, &timeline_names::compact_chosen);
    compact->setToolTip(many ? tr("Show the chosen rows as one, until it is expanded again")
                             : tr("Choose two or more rows: hold Ctrl or Shift and click their names"));
    compact->setEnabled(many);
    QAction* expand =
        add_named(menu, "expand", merged > 1 ? tr("Expand %1 Rows").arg(merged) : tr("Expand Row"));
    connect(expand, &QAction::triggered, this, &timeline_names::expand_chosen);
    expand->setToolTip(merged > 0 ? tr("Show the rows again that were compacted into it")
                                  : tr("This row was not compacted of others"));
    expand->setEnabled(merged > 0);
}

void timeline_names::add_orders(QMenu& menu) {
    QMenu* orders = menu.addMenu(tr("Sort Rows"));
    orders->setEnabled(state_.rows().size() > 1);
    for (const auto& [words, order] : {std::pair{tr("By Name"), row_order::by_name},
                                       {tr("By Category"), row_order::by_category},
                                       {tr("By Number of Clips"), row_order::by_count},
                                       {tr("By First Clip"), row_order::by_time}}) {
        connect(orders->addAction(words), &QAction::triggered, this,
                [this, order = order] { state_.make(plan_sort_rows(state_.timeline(), order)); });
    }
}

void timeline_names::add_row() {
    if (!state_.has_timeline()) return;
    const auto rows = chosen();
    const theme& look = theme::current();
    const QColor shade = look.item_colour(state_.timeline().rows().size());
    const auto made =
        plan_new_row(state_.timeline(), rows.empty() ? shared_text() : rows.back(), from_qt(shade));
    if (!state_.make(made)) return;
    const shared_text row(made.scope);
    current_ = anchor_ = row;
    choose({row});
    edit_name(row);
}

void timeline_names::ask_category(const std::vector<shared_text>& rows) {
    const auto first = state_.timeline().row(rows.front());
    auto* asked = new QInputDialog(this);
    asked->setObjectName(QStringLiteral("timeline_rows.ask_category"));
    asked->setAttribute(Qt::WA_DeleteOnClose);
    asked->setWindowTitle(tr("Row Category"));
    asked->setLabelText(tr("Rows of one category belong together:"));
    asked->setTextValue(first ? QString::fromStdString(first->category()) : QString());
    connect(asked, &QInputDialog::textValueSelected, this, [this, rows](const QString& category) {
        if (state_.has_timeline())
            state_.make(plan_row_category(state_.timeline(), rows, category.toStdString()));
    });
    asked->open();
}

void timeline_names::edit_name(const shared_text& row) {
    const std::size_t index = state_.rows().row_with(row);
    if (index == state_.rows().size()) return;
    const theme_metrics& metrics = theme::current().metrics;
    if (!editor_) {
        editor_ = new QLineEdit(this);
        editor_->setObjectName(QStringLiteral("timeline_rows.name"));
        editor_->setAccessibleName(tr("Name of the row"));
        editor_->setFont(theme::font(type_step::secondary));
        editor_->installEventFilter(this);
        connect(editor_, &QLineEdit::editingFinished, this, [this] { take_name(); });
    }
    edited_ = row;
    const int indent = metrics.wide_padding + metrics.swatch + metrics.grid;
    editor_->setGeometry(place_of(state_.rows()[index]).adjusted(indent, 1, -metrics.grid, -2));
    editor_->setText(state_.rows()[index].name);
    editor_->selectAll();
    editor_->show();
    editor_->setFocus(Qt::OtherFocusReason);
}

void timeline_names::take_name() {
    if (edited_.empty()) return;
    const shared_text row = std::exchange(edited_, {});
    const QString name = editor_->text();
    editor_->hide();
    setFocus(Qt::OtherFocusReason);
    if (state_.has_timeline() && state_.timeline().row(row))
        state_.make(plan_rename_row(state_.timeline(), row, name.toStdString()));
}

bool timeline_names::eventFilter(QObject* watched, QEvent* event) {
    if (watched == editor_ && event->type() == QEvent::KeyPress &&
        static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape) {
        edited_ = {};
        editor_->hide();
        setFocus(Qt::OtherFocusReason);
        return true;
    }
    return QWidget::eventFilter(watched, event);
}

void timeline_names::mouseDoubleClickEvent(QMouseEvent* event) {
    const std::size_t index = row_at(event->pos().y());
    if (event->button() != Qt::LeftButton || index >= state_.rows().size()) return mousePressEvent(event);
    edit_name(state_.rows()[index].uuid);
}

// Where rows that are dragged would come: before that row, or behind all.
std::size_t timeline_names::gap_at(int y) const {
    const timeline_rows& rows = state_.rows();
    const int below = y - timeline_sizes.ruler_height + state_.first_y();
    for (std::size_t index = 0; index < rows.size(); ++index) {
        if (below < rows[index].top + rows[index].height / 2) return index;
    }
    return rows.size();
}

void timeline_names::mouseMoveEvent(QMouseEvent* event) {
    if (!pressed_at_ || (event->buttons() & Qt::LeftButton) == 0) return;
    if (!gap_ && std::abs(event->pos().y() - *pressed_at_) < drag_from_pixels) return;
    gap_ = gap_at(event->pos().y());
    update();
}

void timeline_names::mouseReleaseEvent(QMouseEvent* event) {
    const bool was_pressed = std::exchange(pressed_at_, std::nullopt).has_value();
    const auto gap = std::exchange(gap_, std::nullopt);
    if (!gap && was_pressed && event->modifiers() == Qt::NoModifier && chosen_.size() > 1)
        return choose({current_});
    if (!gap) return;
    update();
    move_chosen(*gap);
}

// Before the row that is shown at that place.
void timeline_names::move_chosen(std::size_t gap) {
    const timeline_rows& rows = state_.rows();
    const auto before = gap < rows.size() ? state_.timeline().row_index(rows[gap].uuid) : std::nullopt;
    state_.make(
        plan_move_rows(state_.timeline(), chosen(), before.value_or(state_.timeline().rows().size())));
}

// With Alt and the arrows.
void timeline_names::move_chosen_by(int rows) {
    const auto all = chosen();
    if (all.empty()) return;
    const auto first = static_cast<int>(state_.rows().row_with(all.front()));
    const auto last = static_cast<int>(state_.rows().row_with(all.back()));
    const int gap = rows < 0 ? first - 1 : last + 2;
    if (gap < 0 || gap > static_cast<int>(state_.rows().size())) return;
    move_chosen(static_cast<std::size_t>(gap));
}

void timeline_names::paint_gap(QPainter& painter) const {
    if (!gap_) return;
    const theme& look = theme::current();
    const timeline_rows& rows = state_.rows();
    const int top = *gap_ < rows.size() ? rows[*gap_].top : rows.total_height();
    painter.fillRect(
        QRect(0, timeline_sizes.ruler_height + top - state_.first_y() - 1, width(), look.metrics.focus_ring),
        look.accent);
}

}  // namespace vistels
