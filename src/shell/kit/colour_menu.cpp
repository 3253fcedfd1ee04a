// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/kit/colour_menu.h"

#include <QAction>
#include <QCoreApplication>
#include <QMenu>
#include <QPixmap>
#include <array>

#include "shell/kit/theme.h"

namespace vistels {

namespace {

// In the order in which they are given out.
constexpr std::array<const char*, 12> names{
    QT_TRANSLATE_NOOP("colours", "Blue"),   QT_TRANSLATE_NOOP("colours", "Amber"),
    QT_TRANSLATE_NOOP("colours", "Violet"), QT_TRANSLATE_NOOP("colours", "Rust"),
    QT_TRANSLATE_NOOP("colours", "Mint"),   QT_TRANSLATE_NOOP("colours", "Yellow"),
    QT_TRANSLATE_NOOP("colours", "Plum"),   QT_TRANSLATE_NOOP("colours", "Mist"),
    QT_TRANSLATE_NOOP("colours", "Sage"),   QT_TRANSLATE_NOOP("colours", "Tan"),
    QT_TRANSLATE_NOOP("colours", "Slate"),  QT_TRANSLATE_NOOP("colours", "Fern")};

}  // namespace

QMenu* add_colour_menu(QMenu& menu, const QString& title, const std::function<void(const colour&)>& choose) {
    const theme& look = theme::current();
    QMenu* all = menu.addMenu(title);
    for (std::size_t i = 0; i < look.item_colours.size(); ++i) {
        const QColor shade = look.item_colours[i];
        QPixmap swatch(look.metrics.icon, look.metrics.icon);
        swatch.fill(shade);
        QAction* one = all->addAction(QIcon(swatch), QCoreApplication::translate("colours", names[i]));
        one->setIconVisibleInMenu(true);
        QObject::connect(one, &QAction::triggered, all, [choose, shade] { choose(from_qt(shade)); });
    }
    return all;
}

}  // namespace vistels
