// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/keys/key_strokes.h"

#include <QKeyEvent>

namespace vistels {

namespace {

// Qt's codes of keys that type a character are that character; the others lie above.
constexpr int first_key_without_character = 0x01000000;

}  // namespace

key_stroke key_stroke_of(const QKeyEvent& event) {
    key_stroke stroke;
    const Qt::KeyboardModifiers held = event.modifiers();
    stroke.cmd = held.testFlag(Qt::MetaModifier);
    stroke.shift = held.testFlag(Qt::ShiftModifier);
    stroke.opt = held.testFlag(Qt::AltModifier);
    stroke.ctr = held.testFlag(Qt::ControlModifier);
    stroke.key_code = static_cast<std::uint16_t>(event.nativeScanCode());
    QString typed;
    if (event.key() > 0 && event.key() < first_key_without_character) {
        // Not the text of the event: with Control held that is a control character.
        typed = QString(QChar(static_cast<char16_t>(event.key()))).toLower();
    } else if (!event.text().isEmpty() && event.text().at(0).isPrint()) {
        typed = event.text();
    }
    stroke.chars_no_mod = typed.toStdString();
    return stroke;
}

}  // namespace vistels
