// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPainterPath>
#include <QRectF>
#include <QString>

namespace vistels {

// The outlines of buttons by the names that are stored for them: "rectangle", "rounded", "ellipse", "triangle
// up", "pentagon 1" and the like, with or without "Plain" before, whatever their case. All are stretched to
// the button's rectangle. An empty or unknown name is the usual outline: a rectangle with corners of
// `radius`.
bool is_usual_outline(const QString& shape);
QPainterPath code_button_outline(const QString& shape, const QRectF& face, double radius);
// The part of the face on which there is room for words.
QRectF code_button_room(const QString& shape, const QRectF& face);

}  // namespace vistels
