// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/panes/code_window/link_arrows.h"

#include <QLineF>
#include <QPaintEvent>
#include <QPainter>
#include <QPainterPath>
#include <algorithm>
#include <chrono>
#include <map>
#include <utility>

#include "shell/kit/theme.h"
#include "shell/panes/code_window/code_window_metrics.h"
#include "shell/panes/code_window/link_words.h"

namespace vistels {

namespace {

constexpr std::chrono::milliseconds frame(16);
constexpr std::size_t most_runs = 200;  // at once
constexpr double head_angle = 25;       // degrees on each side
constexpr double bend_share = 0.12;     // of the way between the buttons
constexpr double least_bend = 12;       // pixels, of the first between two buttons
constexpr double most_bend = 40;

// Where the line from the middle of a face leaves it.
QPointF edge_of(const QRectF& face, const QPointF& towards) {
    const QLineF way(face.center(), towards);
    const QLineF sides[] = {{face.topLeft(), face.topRight()},
                            {face.topRight(), face.bottomRight()},
                            {face.bottomRight(), face.bottomLeft()},
                            {face.bottomLeft(), face.topLeft()}};
    for (const QLineF& side : sides) {
        QPointF met;
        if (way.intersects(side, &met) == QLineF::BoundedIntersection) return met;
    }
    return face.center();
}

// That point, as far inside the face.
QPointF inside(const QRectF& face, const QPointF& edge, double pixels) {
    QLineF in(edge, face.center());
    if (in.length() > 0) in.setLength(std::min(in.length() / 2, pixels));
    return in.p2();
}

QColor colour_of(const theme& look, const link_kind& kind) {
    switch (kind.effect) {
        case link_effect::set_down:
            return look.accent;
        case link_effect::set_up:
            return look.warning;
        case link_effect::toggle:
            return look.toggle_link;
        case link_effect::block:
            return look.live;
        default:
            return look.muted;
    }
}

}  // namespace

QPointF link_arrows::curve::at(double share) const {
    const double left = 1 - share;
    return left * left * from + 2 * left * share * control + share * share * to;
}

QRectF link_arrows::curve::bounds() const {
    const double around = code_window_sizes.link_head + code_window_sizes.link_sign;
    const QRectF ends = QRectF(from, to).normalized();
    return ends.united(QRectF(from, control).normalized()).adjusted(-around, -around, around, around);
}

link_arrows::link_arrows(QWidget* parent, std::function<QRectF(const std::string&)> place_of)
    : QWidget(parent), place_of_(std::move(place_of)) {
    setObjectName(QStringLiteral("link_arrows"));
    setAccessibleName(tr("Links of the buttons"));
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setFocusPolicy(Qt::NoFocus);
    ticks_.setInterval(frame);
    ticks_.setTimerType(Qt::PreciseTimer);
    connect(&ticks_, &QTimer::timeout, this, &link_arrows::tick);
    clock_.start();
}

void link_arrows::set_links(std::vector<code_link> links) {
    links_ = std::move(links);
    runs_.clear();
    ticks_.stop();
    links_from_.clear();
    bends_.clear();
    std::map<std::pair<std::string, std::string>, int> between;
    for (std::size_t i = 0; i < links_.size(); ++i) {
        links_from_.emplace(links_[i].from, i);
        bends_.push_back(++between[{links_[i].from, links_[i].to}]);
    }
    update();
}

void link_arrows::set_shown(links_shown shown) {
    shown_ = shown;
    setVisible(shown != links_shown::none);
    update();
}

void link_arrows::set_current(const std::string& button) {
    if (button == current_) return;
    current_ = button;
    update();
}

bool link_arrows::is_of_current(std::size_t link) const {
    return !current_.empty() && (links_[link].from == current_ || links_[link].to == current_);
}

bool link_arrows::is_drawn(std::size_t link) const {
    if (links_[link].from == links_[link].to) return false;
    return (shown_ == links_shown::all && links_.size() <= most_drawn) || is_of_current(link);
}

std::vector<code_link> link_arrows::drawn_links() const {
    std::vector<code_link> drawn;
    for (std::size_t i = 0; i < links_.size(); ++i) {
        if (is_drawn(i)) drawn.push_back(links_[i]);
    }
    return drawn;
}

void link_arrows::run(const std::string& from, const std::string& to, const link_kind& kind) {
    if (!isVisible() || runs_.size() >= most_runs || from == to) return;
    const auto [first, end] = links_from_.equal_range(from);
    const auto found = std::find_if(first, end, [&](const auto& one) {
        return links_[one.second].to == to && links_[one.second].kind == &kind;
    });
    if (found == end) return;
    const curve along = curve_of(found->second);
    runs_.push_back({found->second, clock_.elapsed(), along.from});
    if (!ticks_.isActive()) ticks_.start();
    update_round(along.bounds());
}

void link_arrows::tick() {
    const qint64 over = clock_.elapsed() - theme::current().motion.ping;
    for (run_mark& one : runs_) {
        if (one.since <= over)
            update_round(curve_of(one.link).bounds());
        else
            move(one);
    }
    std::erase_if(runs_, [&](const run_mark& one) { return one.since <= over; });
    if (runs_.empty()) ticks_.stop();
}

void link_arrows::update_round(const QRectF& place) {
    update(place.toAlignedRect());
}

// On to where it is by now; what it leaves is painted anew.
void link_arrows::move(run_mark& one) {
    const double around = 2 * code_window_sizes.link_run;
    const QRectF size(-around, -around, 2 * around, 2 * around);
    update_round(size.translated(one.at));
    const double whole = std::max(1, theme::current().motion.ping);
    const double share = static_cast<double>(clock_.elapsed() - one.since) / whole;
    one.at = curve_of(one.link).at(std::clamp(share, 0.0, 1.0));
    update_round(size.translated(one.at));
}

// To one side of the straight line, so that the links back take the other; where that would leave the canvas
// further to the other side.
link_arrows::curve link_arrows::curve_of(std::size_t link) const {
    const QRectF from = place_of_(links_[link].from);
    const QRectF to = place_of_(links_[link].to);
    const QLineF straight(from.center(), to.center());
    const QLineF normal = straight.normalVector().unitVector();
    const QPointF aside =
        std::clamp(bend_share * straight.length(), least_bend, most_bend) * (normal.p2() - normal.p1());
    // The curve goes half as far aside as its control point.
    QPointF control = straight.center() + 2 * bends_[link] * aside;
    if (!QRectF(rect()).contains(control)) control = straight.center() - (2 * bends_[link] + 1) * aside;
    return {inside(from, edge_of(from, control), code_window_sizes.link_sign / 2.0), control,
            inside(to, edge_of(to, control), code_window_sizes.link_head / 2.0)};
}

void link_arrows::paint_link(QPainter& painter, std::size_t link, const curve& drawn) const {
    const theme& look = theme::current();
    const link_kind& kind = *links_[link].kind;
    const bool stands_out = is_of_current(link);
    const bool is_aside = !current_.empty() && !stands_out;
    painter.setOpacity(is_aside ? look.disabled_share : 1);
    const QColor colour = colour_of(look, kind);
    const double width = code_window_sizes.link_width + (stands_out ? look.metrics.line : 0);
    QPainterPath path(drawn.from);
    path.quadTo(drawn.control, drawn.to);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(look.pane, width + 3.0 * look.metrics.line));
    painter.drawPath(path);
    painter.setPen(QPen(colour, width, kind.has_condition() ? Qt::DashLine : Qt::SolidLine));
    painter.drawPath(path);
    const QLineF way(drawn.to, drawn.at(1 - code_window_sizes.link_head / std::max(1.0, path.length())));
    QPolygonF head{drawn.to};
    for (const double side : {-head_angle, head_angle}) {
        QLineF edge = way;
        edge.setLength(code_window_sizes.link_head);
        edge.setAngle(way.angle() + side);
        head << edge.p2();
    }
    painter.setPen(QPen(look.pane, look.metrics.line));
    painter.setBrush(colour);
    painter.drawPolygon(head);
    paint_sign(painter, kind, drawn.from, colour);
}

void link_arrows::paint_sign(QPainter& painter, const link_kind& kind, const QPointF& at,
                             const QColor& colour) const {
    const theme& look = theme::current();
    const double radius = code_window_sizes.link_sign / 2.0;
    const QRectF sign(at.x() - radius, at.y() - radius, 2 * radius, 2 * radius);
    painter.setPen(QPen(look.pane, code_window_sizes.link_width + 3.0 * look.metrics.line));
    painter.setBrush(kind.acts_on_down() ? colour : look.pane);
    painter.drawEllipse(sign);
    painter.setPen(QPen(colour, code_window_sizes.link_width));
    painter.drawEllipse(sign);
    painter.setFont(theme::font(type_step::secondary_strong));
    painter.setPen(kind.acts_on_down() ? ink_on(look, colour) : colour);
    painter.drawText(sign, Qt::AlignCenter, link_sign(kind));
}

void link_arrows::paintEvent(QPaintEvent* event) {
    const theme& look = theme::current();
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const auto paint = [&](std::size_t link) {
        const curve drawn = curve_of(link);
        if (drawn.bounds().intersects(QRectF(event->rect()))) paint_link(painter, link, drawn);
    };
    // What stands out is over the others; a link that is followed is seen while it is.
    for (const bool stands_out : {false, true}) {
        for (std::size_t i = 0; i < links_.size(); ++i) {
            if (is_drawn(i) && is_of_current(i) == stands_out) paint(i);
        }
    }
    for (const run_mark& one : runs_) {
        if (!is_drawn(one.link)) paint(one.link);
    }
    painter.setOpacity(1);
    for (const run_mark& one : runs_) {
        painter.setPen(QPen(look.selection_gap, look.metrics.focus_ring));
        painter.setBrush(look.selection);
        painter.drawEllipse(one.at, code_window_sizes.link_run, code_window_sizes.link_run);
    }
}

}  // namespace vistels
