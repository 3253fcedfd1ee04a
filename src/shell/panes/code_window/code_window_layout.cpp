// SPDX-License-Identifier: GPL-3.0-or-later
// Where the words of a code window's button stand on its face.
#include <algorithm>

#include "shell/kit/theme.h"
#include "shell/panes/code_window/code_window_button.h"
#include "shell/panes/code_window/code_window_metrics.h"

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

}  // namespace

code_button_layout code_button_layout_of(const code_button& button, const QRectF& face) {
    const theme_metrics& metrics = theme::current().metrics;
    const bool is_clip = button.marks != code_button::band::below;
    const name_try own(theme::font(is_clip ? type_step::button : type_step::qualifier_button), button.name);
    QFont smaller = theme::font(type_step::clip_label);
    smaller.setWeight(own.font.weight());
    const name_try small(smaller, button.name);

    code_button_layout made;
    made.cap = cap_in(button, face, code_window_sizes.key_cap, metrics.grid);
    QRectF room =
        face.adjusted(code_window_sizes.button_text_indent, metrics.grid, -metrics.grid, -metrics.grid);
    if (button.marks == code_button::band::left) room.setLeft(room.left() + code_window_sizes.clip_band);
    if (button.marks == code_button::band::below)
        room.setBottom(room.bottom() - code_window_sizes.qualifier_band);
    // What is tight first loses the room below the name, then of the key.
    const double cap_bottom = face.top() + metrics.grid + code_window_sizes.key_cap;
    const auto is_tight = [&] { return small.ink_top(room.bottom()) < cap_bottom + least_gap; };
    if (is_tight()) room.setBottom(room.bottom() + metrics.grid);
    const bool is_low = is_tight();
    if (is_low) {
        made.cap = cap_in(button, face, code_window_sizes.key_cap_small, metrics.grid / 2);
        room.setTop(face.top() + metrics.grid / 2.0);
    }
    made.corner = QRectF(room.left(), face.top() + metrics.grid, made.cap.left() - room.left(),
                         code_window_sizes.key_cap);
    made.has_corner = !is_low;

    QRectF beside = room;
    beside.setRight(made.cap.left() - (button.key.isEmpty() ? 0 : metrics.grid));
    QRectF under = room;
    under.setTop(made.cap.bottom());
    made.text = button.name;
    for (const name_try* one : {&own, &small}) {
        made.font = one->font;
        const bool is_clear = one->ink_top(room.bottom()) >= made.cap.bottom() + least_gap;
        made.name = is_clear ? room : beside;
        if (one->width <= made.name.width()) return made;
    }
    for (const QRectF& place : {under, beside}) {
        made.name = place;
        if (!fits_wrapped(small, place, button.name)) continue;
        made.has_corner = made.has_corner && place == under;
        return made;
    }
    made.name = small.ink_top(room.bottom()) >= made.cap.bottom() + least_gap ? room : beside;
    made.text = small.sizes.elidedText(button.name, Qt::ElideRight, made.name.width());
    return made;
}

}  // namespace vistels
