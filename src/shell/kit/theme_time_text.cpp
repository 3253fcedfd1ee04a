// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/kit/theme_time_text.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QStringList>
#include <algorithm>
#include <cmath>
#include <limits>

namespace vistels {
namespace {

double digit_width(const QFontMetricsF& metrics) {
    double widest = 0;
    for (char digit = '0'; digit <= '9'; ++digit) {
        widest = std::max(widest, metrics.horizontalAdvance(QLatin1Char(digit)));
    }
    return widest;
}

double cell_width(QChar letter, double digit, const QFontMetricsF& metrics) {
    return letter.isDigit() ? digit : metrics.horizontalAdvance(letter);
}

double width_in(const QString& text, const QFontMetricsF& metrics) {
    const double digit = digit_width(metrics);
    double width = 0;
    for (const QChar letter : text) width += cell_width(letter, digit, metrics);
    return width;
}

QString two_digits(long long number) {
    return QStringLiteral("%1").arg(number, 2, 10, QLatin1Char('0'));
}

}  // namespace

QString time_text(double seconds, time_form form) {
    if (!std::isfinite(seconds)) return QStringLiteral("–");
    const int digits = form == time_form::clock      ? 2
                       : form == time_form::field    ? 3
                       : form == time_form::run_time ? 1
                                                     : 0;
    const double scale = std::pow(10.0, digits);
    // A hair is added so that 12.30, stored a little below it, is not cut to 12.29.
    const auto parts = static_cast<long long>(std::floor(std::abs(seconds) * scale + 1e-4));
    const long long whole = parts / static_cast<long long>(scale);
    const long long hours = whole / 3600;
    const long long minutes = whole / 60 % 60;
    QString made = seconds < 0 && parts > 0 ? QStringLiteral("-") : QString();
    if (form == time_form::run_time && hours == 0) {
        made += QString::number(minutes);
    } else {
        made += QString::number(hours) + QLatin1Char(':') + two_digits(minutes);
    }
    made += QLatin1Char(':') + two_digits(whole % 60);
    if (digits > 0) {
        const long long fraction = parts % static_cast<long long>(scale);
        made += QLatin1Char('.') + QStringLiteral("%1").arg(fraction, digits, 10, QLatin1Char('0'));
    }
    return made;
}

double time_from_text(const QString& text) {
    constexpr double none = std::numeric_limits<double>::quiet_NaN();
    QString rest = text.trimmed();
    rest.replace(QLatin1Char(','), QLatin1Char('.')).replace(QChar(0x2212), QLatin1Char('-'));
    const bool negative = rest.startsWith(QLatin1Char('-'));
    if (negative) rest.remove(0, 1);
    const QStringList parts = rest.split(QLatin1Char(':'));
    if (parts.size() > 3) return none;
    double seconds = 0;
    for (qsizetype index = 0; index < parts.size(); ++index) {
        const bool last = index + 1 == parts.size();
        const QString& part = parts[index];
        for (const QChar letter : part) {
            const bool fits = letter.isDigit() || (last && letter == QLatin1Char('.'));
            if (!fits) return none;
        }
        bool is_number = false;
        seconds = seconds * 60 + part.toDouble(&is_number);
        if (!is_number) return none;
    }
    return negative ? -seconds : seconds;
}

double time_text_width(const QString& text, const QFont& font) {
    return width_in(text, QFontMetricsF(font));
}

void draw_time_text(QPainter& painter, const QRectF& place, Qt::Alignment alignment, const QString& text,
                    const QFont& font) {
    const QFontMetricsF metrics(font, painter.device());
    const double digit = digit_width(metrics);
    const double width = width_in(text, metrics);
    double x = place.left();
    if ((alignment & Qt::AlignRight) != 0) x = place.right() - width;
    if ((alignment & Qt::AlignHCenter) != 0) x = place.center().x() - width / 2;
    const double baseline = place.center().y() + (metrics.ascent() - metrics.descent()) / 2;
    painter.setFont(font);
    for (const QChar letter : text) {
        const double cell = cell_width(letter, digit, metrics);
        painter.drawText(QPointF(x + (cell - metrics.horizontalAdvance(letter)) / 2, baseline),
                         QString(letter));
        x += cell;
    }
}

}  // namespace vistels
