// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/window/keys_window.h"

#include <QHeaderView>
#include <QKeyEvent>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

#include "app/event/open_event.h"
#include "logger/press_engine.h"
#include "shell/keys/key_clashes.h"
#include "shell/keys/key_strokes.h"
#include "shell/kit/controls.h"
#include "shell/kit/icons.h"
#include "shell/kit/theme.h"
#include "shell/window/window_actions.h"
#include "shell/window/window_metrics.h"

namespace vistels {

namespace {

// The buttons that the key presses, joined; empty when there are none.
QString buttons_on(const QKeySequence& keys, const press_engine& engine) {
    if (keys.count() != 1) return {};
    const QKeyCombination one = keys[0];
    const QKeyEvent event(QEvent::KeyPress, one.key(), one.keyboardModifiers());
    QStringList names;
    for (const auto& uuid : engine.buttons_for_key(key_stroke_of(event))) {
        if (const auto* button = engine.button(uuid)) names << QString::fromStdString(button->name());
    }
    return names.join(QStringLiteral(", "));
}

void warn(QTreeWidgetItem& line, const QString& words) {
    line.setText(0, words);
    line.setIcon(0, icon(QStringLiteral("warning"), theme::current().warning));
}

void add_group(QTreeWidget& list, const QString& title, const QList<QTreeWidgetItem*>& lines) {
    auto* group = new QTreeWidgetItem(&list, {title});
    group->setFont(0, theme::font(type_step::title));
    group->addChildren(lines);
    group->setExpanded(true);
}

QList<QTreeWidgetItem*> menu_lines(const window_actions& actions, const press_engine* engine) {
    QList<QTreeWidgetItem*> lines;
    for (const QAction* action : actions.all()) {
        for (const QKeySequence& keys : action->shortcuts()) {
            auto* line = new QTreeWidgetItem({action->toolTip(), keys.toString(QKeySequence::NativeText)});
            const QString taken = engine ? buttons_on(keys, *engine) : QString();
            if (!taken.isEmpty())
                warn(*line, QObject::tr("%1: taken by the button “%2”").arg(action->toolTip(), taken));
            lines << line;
        }
    }
    return lines;
}

QList<QTreeWidgetItem*> button_lines(const window_actions& actions, const press_engine& engine) {
    const std::vector<bound_button> bound = bound_buttons(engine.buttons());
    const std::vector<key_clash> clashes =
        find_key_clashes(bound, {actions.all().begin(), actions.all().end()});
    QList<QTreeWidgetItem*> lines;
    for (std::size_t i = 0; i < bound.size(); ++i) {
        lines << new QTreeWidgetItem({bound[i].name, bound[i].key});
        if (clashes[i])
            warn(*lines.back(), QObject::tr("%1: %2").arg(bound[i].name, key_clash_words(clashes[i])));
    }
    return lines;
}

}  // namespace

keys_window::keys_window(const window_actions& actions, open_event* event, QWidget* parent)
    : QDialog(parent) {
    const theme_metrics& metrics = theme::current().metrics;
    setObjectName(QStringLiteral("keys"));
    setWindowTitle(tr("Keys"));
    auto* list = new QTreeWidget(this);
    list->setColumnCount(2);
    list->setHeaderLabels({tr("What it does"), tr("Key")});
    list->setRootIsDecorated(false);
    list->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    list->header()->setStretchLastSection(false);
    list->header()->setSectionResizeMode(1, QHeaderView::ResizeToContents);
    const press_engine* engine = event ? &event->logger() : nullptr;
    if (engine) add_group(*list, tr("Code window"), button_lines(actions, *engine));
    add_group(*list, tr("Menus"), menu_lines(actions, engine));
    auto* close = make_push_button(tr("Close"), QStringLiteral("first"), this);
    connect(close, &QPushButton::clicked, this, &QDialog::accept);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(metrics.group_gap, metrics.group_gap, metrics.group_gap, metrics.group_gap);
    column->setSpacing(metrics.wide_padding);
    column->addWidget(list);
    column->addWidget(close, 0, Qt::AlignRight);
    resize(metrics.filter_width, window_sizes.least_window_height);
}

}  // namespace vistels
