// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/kit/theme.h"

#include <QFontInfo>
#include <QFontMetrics>
#include <QGuiApplication>
#include <algorithm>
#include <cmath>

namespace vistels {
namespace {

QColor rgb(unsigned value) {
    return QColor::fromRgb(static_cast<QRgb>(value | 0xff000000U));
}

QColor with_alpha(unsigned value, double share) {
    QColor made = rgb(value);
    made.setAlphaF(static_cast<float>(share));
    return made;
}

theme shared_roles() {
    theme made;
    made.video_surround = rgb(0x050606);
    made.video_label_ground = with_alpha(0x000000, 0.74);
    made.video_label = rgb(0xFFFFFF);
    made.clip_ink_dark = rgb(0x0B0C0E);
    made.clip_ink_light = rgb(0xFFFFFF);
    made.item_colours = {rgb(0x4C79DD), rgb(0xEA9900), rgb(0xC391FE), rgb(0xB03D05),
                         rgb(0x5CF1AC), rgb(0xE3D543), rgb(0x80509C), rgb(0xBEC2E5),
                         rgb(0x81BD91), rgb(0xA68446), rgb(0x8F92B4), rgb(0x4F725E)};
    return made;
}

theme dark_roles() {
    theme made = shared_roles();
    made.is_dark = true;
    made.window = rgb(0x111214);
    made.pane = rgb(0x17191C);
    made.raised = rgb(0x23262A);
    made.field = rgb(0x0D0E10);
    made.line = rgb(0x2C3035);
    made.edge = rgb(0x6A717A);
    made.hover = rgb(0x2A2E33);
    made.text = rgb(0xDADDE1);
    made.muted = rgb(0x9BA2AB);
    made.accent = rgb(0x6FB3F2);
    made.on_accent = rgb(0x0B1420);
    made.accent_ground = rgb(0x1D3550);
    made.live = rgb(0xFF6156);
    made.warning = rgb(0xF0B43C);
    made.good = rgb(0x7CC49A);
    made.selection = rgb(0xFFFFFF);
    made.selection_gap = rgb(0x0D0E10);
    made.button_ground = rgb(0x1E2124);
    made.toggle_link = rgb(0xC391FE);
    made.heat_low = rgb(0x1E252D);
    made.heat_high = rgb(0x8CC4F7);
    made.behind_playhead = with_alpha(0x000000, 0.22);
    made.token_colours = {rgb(0x83BDF5), rgb(0x8F8FFF), rgb(0xFFEC9D), rgb(0xB6D431),
                          rgb(0xE06BB6), rgb(0xF09DA2), rgb(0x48FBF6), rgb(0xB0A518)};
    return made;
}

theme light_roles() {
    theme made = shared_roles();
    made.is_dark = false;
    made.window = rgb(0xDDE0E4);
    made.pane = rgb(0xF3F4F6);
    made.raised = rgb(0xFFFFFF);
    made.field = rgb(0xFFFFFF);
    made.line = rgb(0xC6CAD0);
    made.edge = rgb(0x747C86);
    made.hover = rgb(0xE6E8EC);
    made.text = rgb(0x16181B);
    made.muted = rgb(0x4F5660);
    made.accent = rgb(0x0B5FB8);
    made.on_accent = rgb(0xFFFFFF);
    made.accent_ground = rgb(0xCFE2F6);
    made.live = rgb(0xC11F19);
    made.warning = rgb(0x8A5300);
    made.good = rgb(0x1F6B40);
    made.selection = rgb(0x000000);
    made.selection_gap = rgb(0xFFFFFF);
    made.button_ground = rgb(0xFFFFFF);
    made.toggle_link = rgb(0x6B2FB3);
    made.heat_low = rgb(0xEAF1F8);
    made.heat_high = rgb(0x0B5FB8);
    made.behind_playhead = with_alpha(0x000000, 0.05);
    made.token_colours = {rgb(0x2F5CC4), rgb(0x00075A), rgb(0x6D5E00), rgb(0x04464D),
                          rgb(0xA03A7C), rgb(0x8A1A0B), rgb(0x5D1A92), rgb(0x39001F)};
    made.button_up_share = 0.26;
    made.button_hover_share = 0.40;
    return made;
}

struct step_size {
    double pixels;  // where the desktop's font has reference_pixels
    int line;
    QFont::Weight weight;
};

constexpr double reference_pixels = 13;
constexpr int least_pixels = 11;

step_size size_of(type_step step) {
    switch (step) {
        case type_step::clock:
            return {26, 32, QFont::DemiBold};
        case type_step::clock_hundredths:
            return {18, 24, QFont::Normal};
        case type_step::clip_title:
            return {16, 22, QFont::DemiBold};
        case type_step::headline:
            return {14, 19, QFont::DemiBold};
        case type_step::button:
            return {14, 19, QFont::DemiBold};
        case type_step::qualifier_button:
            return {13, 18, QFont::Medium};
        case type_step::body:
            return {13, 18, QFont::Normal};
        case type_step::title:
            return {13, 18, QFont::DemiBold};
        case type_step::secondary:
            return {12, 16, QFont::Normal};
        case type_step::secondary_strong:
            return {12, 16, QFont::DemiBold};
        case type_step::smallest:
            return {11, 14, QFont::Normal};
        case type_step::clip_label:
            return {11, 14, QFont::DemiBold};
    }
    return {reference_pixels, 18, QFont::Normal};
}

double desktop_pixels() {
    const QFont font = QGuiApplication::font();
    if (font.pixelSize() > 0) return font.pixelSize();
    // The logical resolution, so that sizes agree with what the desktop's own programs show.
    return font.pointSizeF() > 0 ? QFontInfo(font).pixelSize() : reference_pixels;
}

double linear(double channel) {
    return channel <= 0.04045 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
}

double luminance(const QColor& colour) {
    return 0.2126 * linear(static_cast<double>(colour.redF())) +
           0.7152 * linear(static_cast<double>(colour.greenF())) +
           0.0722 * linear(static_cast<double>(colour.blueF()));
}

}  // namespace

const theme& theme::dark() {
    static const theme look = dark_roles();
    return look;
}

const theme& theme::light() {
    static const theme look = light_roles();
    return look;
}

QFont theme::font(type_step step) {
    const step_size size = size_of(step);
    QFont made = QGuiApplication::font();
    const double pixels = size.pixels * desktop_pixels() / reference_pixels;
    made.setPixelSize(std::max(least_pixels, static_cast<int>(std::lround(pixels))));
    made.setWeight(size.weight);
    return made;
}

QFont theme::font(type_step step, double pixels, const QString& family) {
    QFont made = font(step);
    if (pixels > 0) made.setPixelSize(std::max(least_pixels, static_cast<int>(std::lround(pixels))));
    if (!family.isEmpty()) made.setFamily(family);
    return made;
}

int theme::line_height(type_step step) {
    const double height = size_of(step).line * desktop_pixels() / reference_pixels;
    return std::max(static_cast<int>(std::lround(height)), QFontMetrics(font(step)).ascent() + 2);
}

const QColor& theme::item_colour(std::size_t index) const {
    return item_colours[index % item_colours.size()];
}

QColor theme::clip_edge(const QColor& colour) const {
    return mix(Qt::black, colour, clip_edge_share);
}

QColor mix(const QColor& over, const QColor& ground, double share) {
    const double part = std::clamp(share, 0.0, 1.0);
    const auto blend = [part](int a, int b) {
        return static_cast<int>(std::lround(part * a + (1 - part) * b));
    };
    return {blend(over.red(), ground.red()), blend(over.green(), ground.green()),
            blend(over.blue(), ground.blue())};
}

double contrast(const QColor& a, const QColor& b) {
    const double one = luminance(a) + 0.05;
    const double other = luminance(b) + 0.05;
    return one > other ? one / other : other / one;
}

QColor ink_on(const theme& look, const QColor& ground) {
    return contrast(look.clip_ink_dark, ground) >= contrast(look.clip_ink_light, ground)
               ? look.clip_ink_dark
               : look.clip_ink_light;
}

QColor legible_on(const QColor& colour, const QColor& ground) {
    constexpr double least_contrast = 4.5;
    if (contrast(colour, ground) >= least_contrast) return colour;
    // Towards white on a dark ground, towards black on a pale one: the end that can be reached.
    const QColor end = contrast(Qt::white, ground) >= contrast(Qt::black, ground) ? Qt::white : Qt::black;
    double enough = 1;
    double too_little = 0;
    for (int step = 0; step < 10; ++step) {
        const double middle = (enough + too_little) / 2;
        (contrast(mix(end, colour, middle), ground) >= least_contrast ? enough : too_little) = middle;
    }
    return mix(end, colour, enough);
}

QColor to_qt(const colour& value) {
    const auto channel = [](double part) {
        return static_cast<int>(std::lround(std::clamp(part, 0.0, 1.0) * 255));
    };
    return {channel(value.red), channel(value.green), channel(value.blue), channel(value.alpha)};
}

colour from_qt(const QColor& value) {
    return {value.red() / 255.0, value.green() / 255.0, value.blue() / 255.0, value.alpha() / 255.0};
}

}  // namespace vistels
