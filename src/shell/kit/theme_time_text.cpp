// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/kit/theme_time_text.h"

#include <QFontMetricsF>
#include <QGlyphRun>
#include <QPainter>
#include <QRawFont>
#include <QStringList>
#include <algorithm>
#include <cmath>
#include <limits>

namespace vistels {
namespace {

// A text as it is drawn: every digit in the same room. It is not shaped, which takes most of what drawing a
// text does: figures stand one by one.
struct laid_out_time {
    QGlyphRun run;  // from 0, 0, at the left end of the baseline
    double width = 0;
};

laid_out_time lay_out(const QString& text, const QFont& font) {
    const QRawFont raw = QRawFont::fromFont(font);
    const QList<quint32> digits = raw.glyphIndexesForString(QStringLiteral("0123456789"));
    double widest = 0;
    for (const QPointF& advance : raw.advancesForGlyphIndexes(digits)) widest = std::max(widest, advance.x());
    const QList<quint32> glyphs = raw.glyphIndexesForString(text);
    const QList<QPointF> advances = raw.advancesForGlyphIndexes(glyphs);
    laid_out_time made;
    QList<QPointF> positions;
    for (qsizetype i = 0; i < glyphs.size(); ++i) {
        const double own = advances[i].x();
        const double room = digits.contains(glyphs[i]) ? widest : own;
        positions.append({made.width + (room - own) / 2, 0});
        made.width += room;
    }
    made.run.setRawFont(raw);
    made.run.setGlyphIndexes(glyphs);
    made.run.setPositions(positions);
    return made;
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
    return lay_out(text, font).width;
}

void draw_time_text(QPainter& painter, const QRectF& place, Qt::Alignment alignment, const QString& text,
                    const QFont& font) {
    const laid_out_time made = lay_out(text, font);
    double x = place.left();
    if ((alignment & Qt::AlignRight) != 0) x = place.right() - made.width;
    if ((alignment & Qt::AlignHCenter) != 0) x = place.center().x() - made.width / 2;
    const QFontMetricsF metrics(font, painter.device());
    const double baseline = place.center().y() + (metrics.ascent() - metrics.descent()) / 2;
    if (!made.run.glyphIndexes().contains(0)) return painter.drawGlyphRun({x, baseline}, made.run);
    // Letters that the font does not have come from another one.
    painter.setFont(font);
    painter.drawText(QPointF(x, baseline), text);
}

}  // namespace vistels
