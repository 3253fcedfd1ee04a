// SPDX-License-Identifier: GPL-3.0-or-later
// Where the words of a code window's button stand on its face.
#include <QFontMetricsF>
#include <algorithm>
#include <vector>

#include "shell/kit/theme.h"
#include "shell/panes/code_window/code_window_face.h"
#include "shell/panes/code_window/code_window_metrics.h"
#include "shell/panes/code_window/code_window_shapes.h"

namespace vistels {
namespace {

// Between the ink of the name and the key cap.
constexpr double least_gap = 0.5;

// The name in one type, on the bottom line of `room`.
struct name_try {
    QFont font;
    QFontMetricsF sizes{font};
    double width = 0;

    name_try(QFont in, const QString& name)
        : font(std::move(in)), sizes(font), width(sizes.horizontalAdvance(name)) {}
    // The top of its tall letters.
    double ink_top(double bottom) const { return bottom - sizes.descent() - sizes.capHeight(); }
};

QRectF cap_in(const code_button& button, const QRectF& face, int side, int away) {
    if (button.key.isEmpty()) return {face.right() - away, face.top() + away, 0, 0};
    const QFontMetricsF sizes(theme::font(type_step::clip_label));
    const double wide =
        std::max<double>(side, sizes.horizontalAdvance(button.key) + theme::current().metrics.padding);
    return {face.right() - away - wide, face.top() + away, wide, static_cast<double>(side)};
}

bool fits_wrapped(const name_try& name, const QRectF& room, const QString& text) {
    const QRectF wrapped =
        name.sizes.boundingRect(room, Qt::AlignLeft | Qt::AlignBottom | Qt::TextWordWrap, text);
    return wrapped.height() <= room.height() && wrapped.width() <= room.width();
}

// The name in the types that are tried one after another, the smallest at the end.
std::vector<name_try> name_tries(const code_button& button, double scale) {
    const bool is_clip = button.marks != code_button::band::below;
    const type_step step = is_clip ? type_step::button : type_step::qualifier_button;
    std::vector<name_try> all;
    all.emplace_back(theme::font(step, button.name_size * scale, button.name_font), button.name);
    const int own = all.front().font.pixelSize();
    const int least = std::min(own, theme::font(type_step::clip_label).pixelSize());
    if (button.fits_name) {
        for (int pixels = own - 1; pixels > least; --pixels)
            all.emplace_back(theme::font(step, pixels, button.name_font), button.name);
    }
    all.emplace_back(theme::font(step, least, button.name_font), button.name);
    return all;
}

// Where on the face words may stand.
QRectF room_for_words(const code_button& button, const QRectF& face) {
    const theme_metrics& metrics = theme::current().metrics;
    if (!is_usual_outline(button.shape))
        return face.adjusted(metrics.grid, metrics.grid / 2.0, -metrics.grid, -metrics.grid / 2.0);
    QRectF room =
        face.adjusted(code_window_sizes.button_text_indent, metrics.grid, -metrics.grid, -metrics.grid);
    if (button.marks == code_button::band::left) room.setLeft(room.left() + code_window_sizes.clip_band);
    if (button.marks == code_button::band::below)
        room.setBottom(room.bottom() - code_window_sizes.qualifier_band);
    return room;
}

// Puts the name where it fits into what is left beside and below the key cap and, when a time has to be seen
// on a low button, below that.
void place_name(code_button_layout& made, const code_button& button, const QRectF& room,
                const std::vector<name_try>& tries, bool keeps_corner) {
    const name_try& small = tries.back();
    QRectF beside = room;
    beside.setRight(made.cap.left() - (button.key.isEmpty() ? 0 : theme::current().metrics.grid));
    QRectF under = room;
    under.setTop(made.cap.bottom());
    const QRectF& tight = keeps_corner ? under : beside;
    made.text = button.name;
    for (const name_try& one : tries) {
        made.font = one.font;
        const bool is_clear = one.ink_top(room.bottom()) >= made.cap.bottom() + least_gap;
        if (!is_clear && keeps_corner && &one != &small) continue;
        made.name = is_clear ? room : tight;
        if (one.width <= made.name.width()) return;
    }
    for (const QRectF& place : {under, tight}) {
        made.name = place;
        if (!fits_wrapped(small, place, button.name)) continue;
        made.has_corner = made.has_corner && place == under;
        return;
    }
    made.name = small.ink_top(room.bottom()) >= made.cap.bottom() + least_gap ? room : tight;
    made.text = small.sizes.elidedText(button.name, Qt::ElideRight, made.name.width());
}

}  // namespace

code_button_layout code_button_layout_of(const code_button& button, const QRectF& whole) {
    const theme_metrics& metrics = theme::current().metrics;
    const QRectF face = code_button_room(button.shape, whole);
    const double scale = button.place.width() > 0 ? whole.width() / button.place.width() : 1;
    const std::vector<name_try> tries = name_tries(button, scale);

    code_button_layout made;
    if (!is_usual_outline(button.shape)) made.alignment = Qt::AlignHCenter | Qt::AlignBottom;
    made.cap = cap_in(button, face, code_window_sizes.key_cap, metrics.grid);
    QRectF room = room_for_words(button, face);
    // What is tight first loses the room below the name, then of the key.
    const double cap_bottom = face.top() + metrics.grid + code_window_sizes.key_cap;
    const auto is_tight = [&] { return tries.back().ink_top(room.bottom()) < cap_bottom + least_gap; };
    if (is_tight()) room.setBottom(room.bottom() + metrics.grid);
    const bool is_low = is_tight();
    const bool keeps_corner = is_low && (button.shows_clock || button.shows_down_time || button.has_output);
    if (is_low) {
        made.cap = cap_in(button, face, code_window_sizes.key_cap_small, metrics.grid / 2);
        room.setTop(face.top() + metrics.grid / 2.0);
    }
    made.corner = QRectF(room.left(), keeps_corner ? made.cap.top() : face.top() + metrics.grid,
                         made.cap.left() - room.left(), made.cap.height());
    made.has_corner = !is_low || keeps_corner;
    place_name(made, button, room, tries, keeps_corner);
    made.name.translate(button.name_offset * scale);
    made.cap.translate(button.key_offset * scale);
    return made;
}

}  // namespace vistels
