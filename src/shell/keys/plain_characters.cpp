// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/keys/plain_characters.h"

#include <xcb/xcb.h>

#include <QGuiApplication>
#include <QHash>
#include <QKeyEvent>
#include <cstdlib>
#include <memory>
#include <vector>

namespace vistels {

namespace {

// Qt's codes of keys that type a character are that character; the others lie above.
constexpr int first_key_without_character = 0x01000000;
// An X server's codes of characters: Latin 1 as they are, all others as Unicode behind this mark.
constexpr xcb_keysym_t unicode_mark = 0x01000000;

QString character_of(xcb_keysym_t symbol) {
    const bool is_latin = (symbol >= 0x20 && symbol <= 0x7E) || (symbol >= 0xA0 && symbol <= 0xFF);
    if (!is_latin && (symbol & 0xFF000000U) != unicode_mark) return {};
    const auto code = static_cast<char32_t>(is_latin ? symbol : symbol - unicode_mark);
    return QString::fromUcs4(&code, 1);
}

// The symbols of all keys of an X server, read in one go.
class x_layout {
  public:
    void read(xcb_connection_t* connection) {
        const auto* setup = xcb_get_setup(connection);
        first_ = setup->min_keycode;
        const auto count = static_cast<std::uint8_t>(setup->max_keycode - setup->min_keycode + 1);
        struct freeing {
            void operator()(xcb_get_keyboard_mapping_reply_t* reply) const { std::free(reply); }
        };
        const std::unique_ptr<xcb_get_keyboard_mapping_reply_t, freeing> reply(xcb_get_keyboard_mapping_reply(
            connection, xcb_get_keyboard_mapping(connection, setup->min_keycode, count), nullptr));
        symbols_.clear();
        if (!reply) return;
        for_each_key_ = reply->keysyms_per_keycode;
        const auto* all = xcb_get_keyboard_mapping_keysyms(reply.get());
        symbols_.assign(all, all + xcb_get_keyboard_mapping_keysyms_length(reply.get()));
    }
    bool is_read() const { return !symbols_.empty(); }
    // `state`: the server's modifiers, of which two bits say which layout is in use.
    QString plain(std::uint32_t key, std::uint32_t state) const {
        if (key < first_ || for_each_key_ == 0) return {};
        // Of a third and fourth layout the server does not tell here: those columns have further levels of
        // the first.
        const std::size_t group = (state >> 13U) & 3U;
        if (group > 1) return {};
        std::size_t column = 2 * group;
        if (column >= for_each_key_) column = 0;
        const std::size_t place = (key - first_) * for_each_key_ + column;
        return place < symbols_.size() ? character_of(symbols_[place]) : QString();
    }

  private:
    std::uint32_t first_ = 0;
    std::size_t for_each_key_ = 0;
    std::vector<xcb_keysym_t> symbols_;
};

QString typed_by(const QKeyEvent& event) {
    if (event.key() <= 0 || event.key() >= first_key_without_character) return {};
    return QString(QChar(static_cast<char16_t>(event.key()))).toLower();
}

// Null where the window system is not X.
xcb_connection_t* x_server() {
    if (QGuiApplication::platformName() != QLatin1String("xcb")) return nullptr;
    const auto* native = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    return native ? native->connection() : nullptr;
}

}  // namespace

QString plain_character(const QKeyEvent& event) {
    static x_layout layout;
    static QHash<quint32, QString> seen;
    const quint32 key = event.nativeScanCode();
    if (key == 0) return {};
    xcb_connection_t* const server = x_server();
    if (server && !layout.is_read()) layout.read(server);
    QString plain = server ? layout.plain(key, event.nativeModifiers()).toLower() : QString();
    const bool is_told = !plain.isEmpty();
    if (!is_told) plain = seen.value(key);
    const bool is_plain = (event.modifiers() & ~(Qt::KeypadModifier | Qt::ControlModifier | Qt::AltModifier |
                                                 Qt::MetaModifier)) == Qt::NoModifier;
    const QString typed = is_plain ? typed_by(event) : QString();
    if (typed.isEmpty() || typed == plain) return plain;
    // Another layout is in use since it was read.
    if (server && is_told) layout.read(server);
    return seen[key] = typed;
}

}  // namespace vistels
