// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QTimer>
#include <optional>

#include "app/settings/places.h"

namespace vistels {

class collection_view;

// Keeps how far the user has scrolled the vistels, from one window to the next. It is written when scrolling
// has rested for a second. Main thread.
class view_offset_keeper : public QObject {
    Q_OBJECT
  public:
    // The view must outlive this. What is not written yet is written when this goes.
    view_offset_keeper(collection_view& view, home_places places);
    ~view_offset_keeper() override;

    // Scrolls the view as it was kept last.
    void restore();
    // Writes what is not written yet.
    void keep();

  private:
    collection_view& view_;
    const home_places places_;
    QTimer rest_time_;
    std::optional<double> unwritten_;  // points
};

}  // namespace vistels
