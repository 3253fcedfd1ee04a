// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "app/places.h"
#include "app/vaults.h"
#include "shell/content_list.h"
#include "util/run_loop.h"
#include "util/serial_queue.h"

namespace vistels {

// Looks through the vaults away from the main thread and hands over what it finds: first what there is, then
// again with the counts. Made, asked and destroyed on the main thread, where `found` is called too.
class content_keeper {
  public:
    struct finding {
        std::vector<content_vault> vaults;
        volume_space space;  // of the home vault's volume; zero when not known
    };

    content_keeper(home_places places, run_loop& loop, std::function<void(const finding&)> found);
    ~content_keeper();

    // Looks again; a look that has not begun yet is enough for several calls.
    void refresh();

  private:
    void look();
    void hand_over(finding what);

    const home_places places_;
    run_loop& loop_;
    std::shared_ptr<std::function<void(const finding&)>> found_;
    serial_queue queue_{"content"};
};

}  // namespace vistels
