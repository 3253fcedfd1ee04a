// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cairo.h>

#include <cstdint>
#include <vector>

#include "demo/stroke_letters.h"
#include "demo/view_camera.h"

namespace vistels::demo {

// A colour as 0xRRGGBB.
using paint = std::uint32_t;

// A picture to draw on, 4 bytes B, G, R, A a pixel (alpha multiplied in). One thread at a time.
class canvas {
  public:
    canvas(int width, int height);
    ~canvas();
    canvas(const canvas&) = delete;
    canvas& operator=(const canvas&) = delete;

    int width() const { return width_; }
    int height() const { return height_; }
    int stride() const { return stride_; }
    // The pixels, with everything drawn so far in them. To be drawn on again after pixels were written, call
    // written() first.
    std::uint8_t* pixels();
    void written();

    cairo_t* context() { return context_; }
    // From now on edges are smoothed in fewer steps, which a picture that is drawn anew for every frame does
    // not show.
    void draw_fast();

    void set(paint colour, double alpha = 1);
    void clear();  // to wholly transparent
    // Copies all of another canvas of this size.
    void copy(const canvas& other);
    // Lays the named part of another canvas over this one.
    void lay_over(const canvas& other, double x, double y, double width, double height);

    // Outlines are added first, then filled or drawn together.
    void add(const std::vector<screen_point>& outline);
    void add_box(double x, double y, double width, double height);
    void fill();
    void stroke(double line_width);
    // Fills a box of whole pixels at once, without adding it. Between pixels() and written() only.
    void put_box(int x, int y, int width, int height, paint colour);
    // A text with its lower left corner there, upright.
    void add_text(std::string_view text, double x, double y, double text_height);

  private:
    int width_;
    int height_;
    cairo_surface_t* surface_;
    cairo_t* context_;
    int stride_;
};

}  // namespace vistels::demo
