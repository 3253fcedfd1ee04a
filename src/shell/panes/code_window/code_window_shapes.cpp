// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/panes/code_window/code_window_shapes.h"

#include <QPolygonF>
#include <algorithm>
#include <cmath>
#include <iterator>
#include <numbers>

namespace vistels {
namespace {

enum class outline { rectangle, rounded, ellipse, polygon };

struct shape_line {
    const char* name;
    outline drawn;
    QRectF room;      // for words, in proportions of the face
    int corners = 0;  // of a polygon
    double turn = 0;  // of its first corner from the top, clockwise, in degrees
};

// A shape without a number is the first of its kind.
const shape_line shapes[] = {
    {"rectangle", outline::rectangle, {0, 0, 1, 1}},
    {"square", outline::rectangle, {0, 0, 1, 1}},
    {"rounded", outline::rounded, {0, 0, 1, 1}},
    {"rounded rectangle", outline::rounded, {0, 0, 1, 1}},
    {"ellipse", outline::ellipse, {0.15, 0.15, 0.7, 0.7}},
    {"oval", outline::ellipse, {0.15, 0.15, 0.7, 0.7}},
    {"circle", outline::ellipse, {0.15, 0.15, 0.7, 0.7}},
    {"triangle up", outline::polygon, {0.22, 0.4, 0.56, 0.54}, 3, 0},
    {"triangle right", outline::polygon, {0, 0.22, 0.56, 0.56}, 3, 90},
    {"triangle down", outline::polygon, {0.22, 0, 0.56, 0.56}, 3, 180},
    {"triangle left", outline::polygon, {0.44, 0.22, 0.56, 0.56}, 3, 270},
    {"diamond", outline::polygon, {0.25, 0.25, 0.5, 0.5}, 4, 0},
    {"pentagon 1", outline::polygon, {0.15, 0.25, 0.7, 0.6}, 5, 0},
    {"pentagon 2", outline::polygon, {0.15, 0.15, 0.7, 0.6}, 5, 180},
    {"hexagon 1", outline::polygon, {0, 0.25, 1, 0.5}, 6, 0},
    {"hexagon 2", outline::polygon, {0.12, 0.1, 0.76, 0.8}, 6, 30},
    {"octagon 1", outline::polygon, {0.15, 0.1, 0.7, 0.8}, 8, 22.5},
    {"octagon 2", outline::polygon, {0.15, 0.15, 0.7, 0.7}, 8, 0},
};

// Null: none of them.
const shape_line* find_shape(const QString& name) {
    QString wanted = name.simplified().toLower();
    if (wanted.startsWith(QLatin1String("plain "))) wanted.remove(0, 6);
    for (const QString& tried : {wanted, wanted + QStringLiteral(" 1")}) {
        const auto* found = std::find_if(std::begin(shapes), std::end(shapes), [&](const shape_line& one) {
            return tried == QLatin1String(one.name);
        });
        if (found != std::end(shapes)) return found;
    }
    return nullptr;
}

QPolygonF stretched_polygon(const shape_line& shape, const QRectF& face) {
    QPolygonF made;
    for (int corner = 0; corner < shape.corners; ++corner) {
        const double angle = (shape.turn + 360.0 * corner / shape.corners) * std::numbers::pi / 180;
        made << QPointF(std::sin(angle), -std::cos(angle));
    }
    const QRectF whole = made.boundingRect();
    for (QPointF& one : made) {
        one = {face.left() + (one.x() - whole.left()) / whole.width() * face.width(),
               face.top() + (one.y() - whole.top()) / whole.height() * face.height()};
    }
    return made;
}

}  // namespace

bool is_usual_outline(const QString& shape) {
    return shape.isEmpty() || !find_shape(shape);
}

QPainterPath code_button_outline(const QString& shape, const QRectF& face, double radius) {
    QPainterPath made;
    const shape_line* found = shape.isEmpty() ? nullptr : find_shape(shape);
    if (!found) {
        made.addRoundedRect(face, radius, radius);
    } else if (found->drawn == outline::rectangle) {
        made.addRect(face);
    } else if (found->drawn == outline::rounded) {
        const double round = std::min(face.width(), face.height()) / 2;
        made.addRoundedRect(face, round, round);
    } else if (found->drawn == outline::ellipse) {
        made.addEllipse(face);
    } else {
        made.addPolygon(stretched_polygon(*found, face));
        made.closeSubpath();
    }
    return made;
}

QRectF code_button_room(const QString& shape, const QRectF& face) {
    const shape_line* found = shape.isEmpty() ? nullptr : find_shape(shape);
    if (!found) return face;
    const QRectF& room = found->room;
    return {face.left() + room.left() * face.width(), face.top() + room.top() * face.height(),
            room.width() * face.width(), room.height() * face.height()};
}

}  // namespace vistels
