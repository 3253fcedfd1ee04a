// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QFont>
#include <QRectF>
#include <QString>

class QPainter;

namespace vistels {

// How a time is shown.
enum class time_form {
    ruler,     // h:mm:ss
    clock,     // h:mm:ss.cc, in the clock and in lists
    field,     // h:mm:ss.mmm
    run_time,  // m:ss.d, what a press has lasted so far
};

// The time as text, cut (not rounded) to what is shown; negative times have a minus sign.
QString time_text(double seconds, time_form form);

// The time that a person typed as [[h:]m:]s[.fraction], in seconds; not a number when it is none.
double time_from_text(const QString& text);

// The width of `text` as draw_time_text draws it.
double time_text_width(const QString& text, const QFont& font);

// Draws in the painter's pen; every digit is centred in a cell as wide as the widest of 0 to 9, so that a
// running time never jumps. Aligned horizontally by `alignment`, vertically centred.
void draw_time_text(QPainter& painter, const QRectF& place, Qt::Alignment alignment, const QString& text,
                    const QFont& font);

}  // namespace vistels
