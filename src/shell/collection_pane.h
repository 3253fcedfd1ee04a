// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

namespace vistels {

class collection_view;
class icon_button;
class pane_header;
class transport_bar;

// The collection's pane: header, the vistels, the transport. Main thread.
class collection_pane : public QWidget {
    Q_OBJECT
  public:
    explicit collection_pane(QWidget* parent = nullptr);

    pane_header& header() { return *header_; }
    collection_view& view() { return *view_; }
    transport_bar& bar() { return *bar_; }
    // Without pictures there are the header and the transport alone, at their height.
    void set_shows_pictures(bool shows);

  Q_SIGNALS:
    void all_vistels_asked();

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    pane_header* header_;
    icon_button* all_;
    collection_view* view_;
    transport_bar* bar_;
};

}  // namespace vistels
