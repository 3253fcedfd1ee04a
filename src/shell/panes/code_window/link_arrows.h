// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QElapsedTimer>
#include <QPointF>
#include <QRectF>
#include <QTimer>
#include <QWidget>
#include <functional>
#include <string>
#include <vector>

#include "logger/markup_Button_Action_Link_ITEM.h"

namespace vistels {

// A link between two buttons of a code window.
struct code_link {
    std::string from;
    std::string to;
    const link_kind* kind = nullptr;
};

// The links of a code window as arrows over its buttons: a colour for each kind of effect and a sign for it,
// broken lines where several sources count. A link that is followed is marked by a point that runs along its
// arrow. It takes no presses. Main thread.
class link_arrows final : public QWidget {
    Q_OBJECT
  public:
    // `place_of` gives the face of a button on the parent; empty when there is none.
    link_arrows(QWidget* parent, std::function<QRectF(const std::string&)> place_of);

    void set_links(std::vector<code_link> links);
    const std::vector<code_link>& links() const { return links_; }
    // The links of this button stand out from the others; empty: all are alike.
    void set_current(const std::string& button);
    // The link was followed just now.
    void run(const std::string& from, const std::string& to, const link_kind& kind);
    bool runs() const { return !runs_.empty(); }

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    struct running {
        std::size_t link = 0;
        qint64 since = 0;  // milliseconds
    };
    struct arrow {
        QPointF from, to;
    };

    arrow arrow_of(const code_link& link) const;
    void paint_link(QPainter& painter, const code_link& link) const;
    void paint_runs(QPainter& painter);
    void tick();

    std::function<QRectF(const std::string&)> place_of_;
    std::vector<code_link> links_;
    std::string current_;
    std::vector<running> runs_;
    QElapsedTimer clock_;
    QTimer ticks_;
};

}  // namespace vistels
