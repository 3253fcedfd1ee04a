// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/panes/collection/vistel_tile.h"

#include <QCoreApplication>
#include <cmath>

#include "shell/kit/failure_words.h"
#include "shell/kit/theme_time_text.h"

namespace vistels {

namespace {

QString tr(const char* text) {
    return QCoreApplication::translate("vistels::collection_view", text);
}

}  // namespace

QString words_in_place(const vistel_tile& tile) {
    if (tile.vistel.problem) return words_of(tile.vistel.problem, shown_paths::names);
    if (!tile.in_gap) return tile.vistel.is_waiting ? tr("Getting the movie ready") : QString();
    if (!std::isfinite(tile.gap_end)) return tr("No picture from here on");
    const QString time = time_text(tile.gap_end, time_form::clock);
    return (tile.marks_start ? tr("Starts at %1") : tr("No picture until %1")).arg(time);
}

QString chip_words_of(const vistel_tile& tile) {
    if (tile.vistel.name.isEmpty() || tile.vistel.problem) return {};
    QStringList words{tile.vistel.name};
    if (tile.is_over) words << tr("ended");
    if (tile.difference) words << words_of(tile.difference);
    if (!tile.health.isEmpty()) words << tile.health;
    return words.join(QStringLiteral(" · "));
}

}  // namespace vistels
