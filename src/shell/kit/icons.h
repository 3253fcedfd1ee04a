// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>
#include <QIcon>
#include <QPixmap>
#include <QString>

namespace vistels {

struct theme;

// The program's own line drawings by name ("play", "eye-off"; one file each in data/icons), tinted. Pictures
// are cached by name, colour, size and device pixel ratio. An unknown name gives an empty picture. Main
// thread.
QPixmap icon_pixmap(const QString& name, const QColor& tint, int size, double device_pixel_ratio);

// The names of all icons, sorted.
QStringList icon_names();

// An icon for buttons and actions: muted when idle, text colour under the pointer and when on, 45 % when
// disabled. It is drawn anew from the vector at each size and ratio. Made anew after the theme changed.
QIcon icon(const QString& name, const theme& look);
// The same in one colour whatever the state.
QIcon icon(const QString& name, const QColor& tint);

}  // namespace vistels
