// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/keys/key_clashes.h"

#include <QAction>
#include <QCoreApplication>
#include <QKeyEvent>

#include "shell/keys/key_strokes.h"

namespace vistels {

namespace {

// The key that the binding was made with. A code that stands beside characters is that of another keyboard.
key_stroke stroke_of(const button_key_binding& binding) {
    key_stroke stroke;
    stroke.cmd = binding.cmd;
    stroke.shift = binding.shift;
    stroke.opt = binding.opt;
    stroke.ctr = binding.ctr;
    stroke.chars_no_mod = binding.chars_no_mod;
    if (binding.chars_no_mod.empty()) stroke.key_code = binding.key_code;
    return stroke;
}

struct command_key {
    key_stroke stroke;
    QString words;
};

// Of keys pressed one after another there are none.
std::vector<command_key> keys_of(const QList<QAction*>& commands) {
    std::vector<command_key> all;
    for (const QAction* command : commands) {
        for (const QKeySequence& keys : command->shortcuts()) {
            if (keys.count() != 1) continue;
            const QKeyEvent event(QEvent::KeyPress, keys[0].key(), keys[0].keyboardModifiers());
            all.push_back({key_stroke_of(event), command->text().remove(QLatin1Char('&'))});
        }
    }
    return all;
}

QString words(const char* text) {
    return QCoreApplication::translate("key_clashes", text);
}

}  // namespace

std::vector<bound_button> bound_buttons(const std::vector<button_record>& buttons) {
    std::vector<bound_button> all;
    for (const button_record& one : buttons) {
        const auto binding = one->display().binding;
        if (!binding || (binding->chars_no_mod.empty() && binding->key_code == 0)) continue;
        QString key = QString::fromStdString(binding_text(*binding));
        if (binding->chars_no_mod.empty() && binding->chars.empty())
            key += words("key %1").arg(binding->key_code);
        all.push_back({one->uuid(), QString::fromStdString(one->name()), key, *binding});
    }
    return all;
}

std::vector<key_clash> find_key_clashes(const std::vector<bound_button>& buttons,
                                        const QList<QAction*>& commands) {
    const std::vector<command_key> taken = keys_of(commands);
    std::vector<key_clash> clashes(buttons.size());
    for (std::size_t one = 0; one < buttons.size(); ++one) {
        const button_key_binding& binding = buttons[one].binding;
        for (std::size_t other = one + 1; other < buttons.size(); ++other) {
            if (!binding_matches(binding, stroke_of(buttons[other].binding))) continue;
            clashes[one].buttons << buttons[other].name;
            clashes[other].buttons << buttons[one].name;
        }
        for (const command_key& key : taken) {
            if (binding_matches(binding, key.stroke)) clashes[one].commands << key.words;
        }
    }
    return clashes;
}

QString key_clash_words(const key_clash& clash) {
    QStringList parts;
    if (!clash.buttons.isEmpty())
        parts << words("also presses “%1”").arg(clash.buttons.join(QStringLiteral("”, “")));
    if (!clash.commands.isEmpty())
        parts << words("instead of “%1”").arg(clash.commands.join(QStringLiteral("”, “")));
    return parts.join(QStringLiteral("; "));
}

}  // namespace vistels
