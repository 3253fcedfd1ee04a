// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/panes/collection/vistel_alignment.h"

#include <QCoreApplication>
#include <cmath>
#include <cstdlib>

namespace vistels {

int dragged_frames(double pixels, int pixels_per_frame) {
    return static_cast<int>(std::lround(pixels / pixels_per_frame));
}

double shifted_offset(double offset, int frames, double frame_seconds) {
    return offset - frames * frame_seconds;
}

QString shift_words(int frames, double frame_seconds) {
    const QChar sign = frames < 0 ? QChar(0x2212) : QLatin1Char('+');
    const QString seconds = QString::number(std::abs(frames * frame_seconds), 'f', 3);
    const QString words = std::abs(frames) == 1
                              ? QCoreApplication::translate("vistel_alignment", "%1%2 frame\n%1%3 s")
                              : QCoreApplication::translate("vistel_alignment", "%1%2 frames\n%1%3 s");
    return frames == 0 ? QCoreApplication::translate("vistel_alignment", "0 frames\n0 s")
                       : words.arg(sign).arg(std::abs(frames)).arg(seconds);
}

}  // namespace vistels
