// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QElapsedTimer>
#include <QPointF>
#include <QRectF>
#include <QTimer>
#include <QWidget>
#include <functional>
#include <string>
#include <unordered_map>
#include <vector>

#include "logger/markup_Button_Action_Link_ITEM.h"

namespace vistels {

// A link between two buttons of a code window.
struct code_link {
    std::string from;
    std::string to;
    const link_kind* kind = nullptr;
};

// Whose links are shown: those of the button that is pointed at or has the focus, or all.
enum class links_shown { none, of_current, all };

// The links of a code window as curves over its buttons, from a sign of what they do on the one button to a
// head on the other: a colour for each kind of effect, the sign filled where going down counts and hollow
// where going up does, broken lines where several sources count. A link that is followed is marked by a point
// that runs along it. It takes no presses. Main thread.
class link_arrows final : public QWidget {
    Q_OBJECT
  public:
    // `place_of` gives the face of a button on the parent; empty when there is none.
    link_arrows(QWidget* parent, std::function<QRectF(const std::string&)> place_of);

    void set_links(std::vector<code_link> links);
    // Very many are shown as with `of_current`.
    void set_shown(links_shown shown);
    // Its links stand out from the others; empty: none do.
    void set_current(const std::string& button);
    const std::string& current() const { return current_; }
    // The link was followed just now.
    void run(const std::string& from, const std::string& to, const link_kind& kind);

    // Those that are drawn now, in the order of their buttons.
    std::vector<code_link> drawn_links() const;
    // How many points run.
    std::size_t running() const { return runs_.size(); }

    static constexpr std::size_t most_drawn = 400;  // at once

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    struct curve {
        QPointF from, control, to;
        QPointF at(double share) const;
        QRectF bounds() const;
    };
    struct run_mark {
        std::size_t link = 0;
        qint64 since = 0;  // milliseconds
        QPointF at;        // where its point is drawn
    };

    bool is_drawn(std::size_t link) const;
    bool is_of_current(std::size_t link) const;
    curve curve_of(std::size_t link) const;
    void move(run_mark& one);
    void update_round(const QRectF& place);
    void paint_link(QPainter& painter, std::size_t link, const curve& drawn) const;
    void paint_sign(QPainter& painter, const link_kind& kind, const QPointF& at, const QColor& colour) const;
    void tick();

    std::function<QRectF(const std::string&)> place_of_;
    std::vector<code_link> links_;
    std::vector<int> bends_;  // of each: it is the how many'th between its two buttons
    std::unordered_multimap<std::string, std::size_t> links_from_;
    links_shown shown_ = links_shown::none;
    std::string current_;
    std::vector<run_mark> runs_;
    QElapsedTimer clock_;
    QTimer ticks_;
};

}  // namespace vistels
