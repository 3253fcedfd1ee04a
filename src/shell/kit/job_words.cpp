// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/kit/job_words.h"

#include <QCoreApplication>
#include <algorithm>
#include <cmath>

namespace vistels {

namespace {

QString words(const char* text) {
    return QCoreApplication::translate("vistels::job_words", text);
}

// "0:48", "1:02:03".
QString length_text(double seconds) {
    constexpr long a_minute = 60;
    const long all = std::lround(std::min(seconds, 1e9));
    const auto two = [](long number) { return QStringLiteral("%1").arg(number, 2, 10, QLatin1Char('0')); };
    const long minutes = all / a_minute;
    const QString rest = QLatin1Char(':') + two(all % a_minute);
    if (minutes < a_minute) return QString::number(minutes) + rest;
    return QString::number(minutes / a_minute) + QLatin1Char(':') + two(minutes % a_minute) + rest;
}

}  // namespace

QString job_title(const job_status& status) {
    return QString::fromStdString(status.title);
}

QString job_percent(double progress) {
    return words("%1 %").arg(static_cast<int>(std::clamp(progress, 0.0, 1.0) * 100));
}

QString job_fact(const job_status& status) {
    switch (status.now) {
        case job_status::state::waiting:
            return words("Waiting");
        case job_status::state::stopping:
            return words("Stopping");
        case job_status::state::running:
            break;
    }
    if (status.seconds_left) return words("%1 left").arg(length_text(*status.seconds_left));
    return status.progress > 0 ? job_percent(status.progress) : QString();
}

}  // namespace vistels
