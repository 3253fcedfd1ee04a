// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

#include "shell/kit/pane.h"

namespace vistels {

class align_bar;
class collection_view;
class icon_button;
class pane_header;
class transport_bar;

// The collection's pane: header, the vistels, the transport. Main thread.
class collection_pane : public QWidget, public pane {
    Q_OBJECT
  public:
    explicit collection_pane(QWidget* parent = nullptr);

    pane_kind kind() const override { return pane_kind::collection; }
    QWidget& widget() override { return *this; }

    pane_header& header() { return *header_; }
    collection_view& view() { return *view_; }
    transport_bar& bar() { return *bar_; }
    align_bar& alignment() { return *align_; }
    // Aligning shows its line and lets pictures be dragged against each other.
    void set_aligning(bool aligning);
    bool is_aligning() const;
    // Without pictures there are the header and the transport alone, at their height.
    void set_shows_pictures(bool shows);

  Q_SIGNALS:
    void all_vistels_asked();
    void aligning_asked(bool aligning);
    // The menu of all that can be done with the collection.
    void more_asked(const QPoint& global);

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    pane_header* header_;
    icon_button* all_;
    icon_button* start_aligning_;
    icon_button* more_;
    collection_view* view_;
    align_bar* align_;
    transport_bar* bar_;
};

}  // namespace vistels
