// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/keys/key_strokes.h"

#include <QKeyEvent>

#include "shell/keys/plain_characters.h"

namespace vistels {

namespace {

// Qt's codes of keys that type a character are that character; the others lie above.
constexpr int first_key_without_character = 0x01000000;

// The codes of X11 begin at 8, and what else Qt reads keys from (Wayland, the kernel itself) is given the
// same ones. Smaller ones are no key's.
constexpr quint32 first_native_code = 8;

std::uint16_t key_code_of(quint32 native_code) {
    if (native_code <= first_native_code || native_code - first_native_code > 0xFFFF) return 0;
    return static_cast<std::uint16_t>(native_code - first_native_code);
}

}  // namespace

key_stroke key_stroke_of(const QKeyEvent& event) {
    key_stroke stroke;
    const Qt::KeyboardModifiers held = event.modifiers();
    stroke.cmd = held.testFlag(Qt::MetaModifier);
    stroke.shift = held.testFlag(Qt::ShiftModifier);
    stroke.opt = held.testFlag(Qt::AltModifier);
    stroke.ctr = held.testFlag(Qt::ControlModifier);
    stroke.key_code = key_code_of(event.nativeScanCode());
    // Asked for at every key: what it types alone is learned so.
    const QString plain = plain_character(event);
    QString typed;
    if (stroke.shift && !plain.isEmpty()) {
        typed = plain;
    } else if (event.key() > 0 && event.key() < first_key_without_character) {
        // Not the text of the event: with Control held that is a control character.
        typed = QString(QChar(static_cast<char16_t>(event.key()))).toLower();
    } else if (!event.text().isEmpty() && event.text().at(0).isPrint()) {
        typed = event.text();
    }
    stroke.chars_no_mod = typed.toStdString();
    return stroke;
}

}  // namespace vistels
