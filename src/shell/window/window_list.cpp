// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/window/window_list.h"

#include <QAction>
#include <QMenu>
#include <algorithm>

namespace vistels {

namespace {

constexpr const char* line_name = "window_line";

QString words_for(const window_line& line) {
    QString words = line.name.isEmpty() ? QObject::tr("No Event") : line.name;
    // A name is no shortcut.
    return words.replace(QLatin1Char('&'), QLatin1String("&&"));
}

}  // namespace

void tell_apart(std::vector<window_line>& windows) {
    const auto before = windows;
    for (auto& line : windows) {
        const auto same = std::count_if(before.begin(), before.end(),
                                        [&](const window_line& one) { return one.name == line.name; });
        const bool helps = same > 1 && !line.name.isEmpty() && !line.vault.isEmpty();
        if (helps) line.name = QObject::tr("%1 (%2)").arg(line.name, line.vault);
    }
}

void list_windows(QMenu& menu, const std::vector<window_line>& windows) {
    // One of them may be what is being chosen at this moment.
    for (QAction* before : menu.findChildren<QAction*>(QLatin1String(line_name))) {
        menu.removeAction(before);
        before->setObjectName(QString());
        before->deleteLater();
    }
    const auto add = [&menu](QAction* action) {
        action->setObjectName(QLatin1String(line_name));
        menu.addAction(action);
        return action;
    };
    auto* line_above = new QAction(&menu);
    line_above->setSeparator(true);
    add(line_above);
    for (const auto& line : windows) {
        auto* action = add(new QAction(words_for(line), &menu));
        action->setCheckable(true);
        action->setChecked(line.is_here);
        action->setToolTip(QObject::tr("Bring this window to the front"));
        QObject::connect(action, &QAction::triggered, action, [action, line] {
            action->setChecked(line.is_here);
            line.show();
        });
    }
}

}  // namespace vistels
