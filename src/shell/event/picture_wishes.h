// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QSize>
#include <map>
#include <string>

#include "util/signal.h"

namespace vistels {

class open_event;

// Brings together what several views want of an event's pictures: a vistel that any of them sees is decoded,
// in the largest of the sizes wanted. What no view sees is not decoded. Main thread.
class picture_wishes {
  public:
    // The event must outlive this. Nothing is told to playback before the first view is added, or settle().
    explicit picture_wishes(open_event& event);
    picture_wishes(const picture_wishes&) = delete;
    picture_wishes& operator=(const picture_wishes&) = delete;

    // A view, by its address, that sees all vistels until it says otherwise.
    void add(const void* view);
    void remove(const void* view);
    void set_seen(const void* view, const std::string& vistel, bool seen);
    void set_size(const void* view, const std::string& vistel, QSize size);
    // All views that there are for now have been added.
    void settle();

  private:
    struct wish {
        bool is_seen = true;
        QSize size;  // empty: not known yet
    };

    void bring(const std::string& vistel);
    void bring_all();

    open_event& event_;
    std::map<const void*, std::map<std::string, wish>> views_;
    connection collection_changed_;
};

}  // namespace vistels
