// SPDX-License-Identifier: GPL-3.0-or-later
#include "demo/canvas.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace vistels::demo {

canvas::canvas(int width, int height)
    : width_(width),
      height_(height),
      surface_(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, width, height)),
      context_(cairo_create(surface_)),
      stride_(cairo_image_surface_get_stride(surface_)) {
    cairo_set_line_cap(context_, CAIRO_LINE_CAP_ROUND);
    cairo_set_line_join(context_, CAIRO_LINE_JOIN_ROUND);
    cairo_set_tolerance(context_, 0.3);
}

canvas::~canvas() {
    cairo_destroy(context_);
    cairo_surface_destroy(surface_);
}

std::uint8_t* canvas::pixels() {
    cairo_surface_flush(surface_);
    return cairo_image_surface_get_data(surface_);
}

void canvas::written() {
    cairo_surface_mark_dirty(surface_);
}

void canvas::draw_fast() {
    cairo_set_antialias(context_, CAIRO_ANTIALIAS_FAST);
}

void canvas::set(paint colour, double alpha) {
    const auto part = [colour](int shift) { return ((colour >> shift) & 0xFF) / 255.0; };
    if (alpha < 1)
        cairo_set_source_rgba(context_, part(16), part(8), part(0), alpha);
    else
        cairo_set_source_rgb(context_, part(16), part(8), part(0));
}

void canvas::clear() {
    std::memset(pixels(), 0, static_cast<std::size_t>(stride_) * static_cast<std::size_t>(height_));
    written();
}

void canvas::copy(const canvas& other) {
    cairo_surface_flush(other.surface_);
    std::memcpy(pixels(), cairo_image_surface_get_data(other.surface_),
                static_cast<std::size_t>(stride_) * static_cast<std::size_t>(height_));
    written();
}

void canvas::lay_over(const canvas& other, double x, double y, double width, double height) {
    cairo_set_source_surface(context_, other.surface_, 0, 0);
    cairo_rectangle(context_, x, y, width, height);
    cairo_fill(context_);
}

void canvas::add(const std::vector<screen_point>& outline) {
    if (outline.empty()) return;
    cairo_move_to(context_, outline.front().x, outline.front().y);
    for (const screen_point& corner : outline) cairo_line_to(context_, corner.x, corner.y);
    cairo_close_path(context_);
}

void canvas::add_box(double x, double y, double width, double height) {
    cairo_rectangle(context_, x, y, width, height);
}

void canvas::fill() {
    cairo_fill(context_);
}

void canvas::stroke(double line_width) {
    cairo_set_line_width(context_, line_width);
    cairo_stroke(context_);
}

void canvas::put_box(int x, int y, int width, int height, paint colour) {
    const int left = std::max(x, 0);
    const int right = std::min(x + width, width_);
    constexpr paint opaque = 0xFF000000;
    for (int row = std::max(y, 0); row < std::min(y + height, height_); ++row) {
        auto* line = reinterpret_cast<std::uint32_t*>(cairo_image_surface_get_data(surface_) +
                                                      static_cast<std::ptrdiff_t>(row) * stride_);
        for (int column = left; column < right; ++column) line[column] = colour | opaque;
    }
}

void canvas::add_text(std::string_view text, double x, double y, double text_height) {
    for (const auto& line : text_strokes(text, text_height)) {
        cairo_move_to(context_, x + line.front().x, y - line.front().y);
        for (const point& corner : line) cairo_line_to(context_, x + corner.x, y - corner.y);
    }
}

}  // namespace vistels::demo
