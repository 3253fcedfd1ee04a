// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/picture.h"

namespace vistels {

namespace {

constexpr std::size_t most_spare_pictures = 8;
constexpr int row_alignment = 64;

}  // namespace

struct picture_pool::shelf {
    std::mutex mutex;
    std::vector<std::vector<std::uint8_t>> spare;  // guarded by mutex
};

picture_pool::picture_pool() : shelf_(std::make_shared<shelf>()) {}

std::shared_ptr<picture> picture_pool::make(int width, int height) {
    auto made = std::make_unique<picture>();
    made->width = width;
    made->height = height;
    made->stride = (width * 4 + row_alignment - 1) / row_alignment * row_alignment;
    const std::size_t size = static_cast<std::size_t>(made->stride) * static_cast<std::size_t>(height);
    {
        const std::lock_guard lock(shelf_->mutex);
        auto& spare = shelf_->spare;
        while (!spare.empty() && made->bytes.size() != size) {
            made->bytes = std::move(spare.back());
            spare.pop_back();
        }
    }
    if (made->bytes.size() != size) made->bytes = std::vector<std::uint8_t>(size);
    return {made.release(), [home = shelf_](picture* gone) {
                {
                    const std::lock_guard lock(home->mutex);
                    if (home->spare.size() < most_spare_pictures)
                        home->spare.push_back(std::move(gone->bytes));
                }
                delete gone;
            }};
}

}  // namespace vistels
