// SPDX-License-Identifier: GPL-3.0-or-later
#include <limits>
#include <mutex>
#include <utility>

#include "media/picture.h"

namespace vistels {

namespace {

constexpr int row_alignment = 64;

int stride_of(int width) {
    return (width * 4 + row_alignment - 1) / row_alignment * row_alignment;
}

}  // namespace

std::size_t picture_bytes(int width, int height) {
    return static_cast<std::size_t>(stride_of(width)) * static_cast<std::size_t>(height);
}

struct picture_pool::shelf {
    using memory = std::vector<std::uint8_t>;

    explicit shelf(std::function<void(std::ptrdiff_t)> told) : count(std::move(told)) {}

    const std::function<void(std::ptrdiff_t)> count;
    std::mutex mutex;
    memory spare;  // guarded by mutex, like the following
    std::size_t in_use = 0;
    std::size_t most = std::numeric_limits<std::size_t>::max();

    memory take(std::size_t size);
    void give_back(memory gone);
    void free(memory gone) const;
};

void picture_pool::shelf::free(memory gone) const {
    const auto size = static_cast<std::ptrdiff_t>(gone.size());
    gone = {};
    if (size > 0 && count) count(-size);
}

picture_pool::shelf::memory picture_pool::shelf::take(std::size_t size) {
    memory found;
    {
        const std::lock_guard lock(mutex);
        found = std::exchange(spare, {});
        in_use += size;
    }
    if (found.size() == size) return found;
    free(std::move(found));
    if (count) count(static_cast<std::ptrdiff_t>(size));
    return memory(size);
}

void picture_pool::shelf::give_back(memory gone) {
    {
        const std::lock_guard lock(mutex);
        in_use -= gone.size();
        if (spare.empty() && in_use + gone.size() <= most) spare.swap(gone);
    }
    free(std::move(gone));
}

picture_pool::picture_pool(std::function<void(std::ptrdiff_t)> count)
    : shelf_(std::make_shared<shelf>(std::move(count))) {}

picture_pool::~picture_pool() {
    keep_within(0);
}

bool picture_pool::has_room(std::size_t bytes) const {
    const std::lock_guard lock(shelf_->mutex);
    return shelf_->in_use + bytes <= shelf_->most;
}

void picture_pool::keep_within(std::size_t bytes) {
    shelf::memory gone;
    {
        const std::lock_guard lock(shelf_->mutex);
        shelf_->most = bytes;
        if (shelf_->in_use + shelf_->spare.size() > bytes) gone.swap(shelf_->spare);
    }
    shelf_->free(std::move(gone));
}

std::shared_ptr<picture> picture_pool::make(int width, int height) {
    auto made = std::make_unique<picture>();
    made->width = width;
    made->height = height;
    made->stride = stride_of(width);
    made->bytes = shelf_->take(picture_bytes(width, height));
    return {made.release(), [home = shelf_](picture* gone) {
                home->give_back(std::move(gone->bytes));
                delete gone;
            }};
}

}  // namespace vistels
