// SPDX-License-Identifier: GPL-3.0-or-later
#include "demo/frame_painter.h"

#include "demo/block_code.h"
#include "demo/captions.h"
#include "demo/figure_drawing.h"
#include "demo/ground_drawing.h"

namespace vistels::demo {

frame_painter::frame_painter(const game_record& game, const film_camera& camera, std::uint64_t seed)
    : game_(game),
      camera_(camera),
      picture_(film_width, film_height),
      behind_(film_width, film_height),
      before_(film_width, film_height),
      grain_(seed) {
    picture_.draw_fast();
    if (camera_.follows) return;
    const view_camera view = camera_.view_at(game_, 0);
    draw_ground(behind_, view, 1);
    if (camera_.near_goal != 0) draw_goal(before_, view, camera_.near_goal);
}

const std::uint8_t* frame_painter::paint(double seconds, std::uint32_t number) {
    const view_camera view = camera_.view_at(game_, seconds);
    const game_state game = game_.state_at(seconds);
    if (camera_.follows)
        draw_ground(picture_, view, 1);
    else
        picture_.copy(behind_);
    draw_figures(picture_, view, game);
    if (camera_.near_goal != 0) {
        const screen_point goal = view.project({camera_.near_goal * half_length, 0, goal_height / 2});
        const double reach =
            3 * view.pixels_per_metre({camera_.near_goal * half_length, 0, 0}) * goal_half_width;
        picture_.lay_over(before_, goal.x - reach, goal.y - reach, 2 * reach, 2 * reach);
    }
    if (camera_.shows_score) draw_score(picture_, game);
    draw_burnt_in_time(picture_, seconds);
    std::uint8_t* pixels = picture_.pixels();
    grain_.add_to(pixels, film_width, film_height, picture_.stride());
    draw_block_code(pixels, film_width, film_height, picture_.stride(), number);
    picture_.written();
    return pixels;
}

}  // namespace vistels::demo
