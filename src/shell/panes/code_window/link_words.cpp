// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/panes/code_window/link_words.h"

#include <QCoreApplication>
#include <algorithm>
#include <string>
#include <unordered_set>

namespace vistels {

namespace {

constexpr std::size_t most_lines = 8;
constexpr std::size_t most_names = 6;

QString words(const char* text) {
    return QCoreApplication::translate("link_words", text);
}

QString name_of(const markup_Button_Item& button) {
    return QString::fromStdString(button.name());
}

// "and 12 more", where there are more than can be read.
template <class Line>
QStringList first_of(std::size_t count, std::size_t most, Line line) {
    QStringList all;
    for (std::size_t i = 0; i < std::min(count, most); ++i) all << line(i);
    if (count > most) all << words("and %1 more").arg(count - most);
    return all;
}

using button_places = std::vector<std::size_t>;

// "“A”, “B”, and 3 more"
QString quoted(const std::vector<button_record>& buttons, const button_places& which) {
    const auto name = [&](std::size_t i) { return QStringLiteral("“%1”").arg(name_of(*buttons[which[i]])); };
    return first_of(which.size(), most_names, name).join(QStringLiteral(", "));
}

// "goes up"
QString effect_words(link_effect effect) {
    switch (effect) {
        case link_effect::set_up:
            return words("goes up");
        case link_effect::set_down:
            return words("goes down");
        case link_effect::toggle:
            return words("goes up or down, whichever it is not");
        case link_effect::block:
            return words("makes nothing until that is over");
        case link_effect::center_on:
            return words("comes into the middle");
        case link_effect::bring_to_front:
            return words("comes to the front");
        case link_effect::send_to_back:
            return words("goes behind the others");
        case link_effect::set_button_colour:
            return words("gets another colour");
        case link_effect::set_mark_colour:
            return words("gives its clips another colour");
        case link_effect::clear_traces:
            return words("loses the marks of its presses");
    }
    return {};
}

// "“Attack” goes down", "“A”, “B” are all down"
QString moment_words(link_moment moment, const QString& sources) {
    switch (moment) {
        case link_moment::down:
            return words("%1 goes down").arg(sources);
        case link_moment::up:
            return words("%1 goes up").arg(sources);
        case link_moment::all_down:
            return words("%1 are all down").arg(sources);
        case link_moment::all_up:
            return words("%1 are all up").arg(sources);
        case link_moment::any_up:
            return words("any of %1 is up").arg(sources);
    }
    return {};
}

// The buttons that have this kind of link to the target.
button_places sources_of(const std::vector<button_record>& buttons, const link_graph& graph,
                         const link_graph::link& like) {
    button_places all;
    for (std::size_t i = 0; i < buttons.size(); ++i) {
        const auto& links = graph.links_of(i);
        if (std::any_of(links.begin(), links.end(),
                        [&](const auto& one) { return one.kind == like.kind && one.target == like.target; }))
            all.push_back(i);
    }
    return all;
}

// Circles of links in which a change of state leads to itself: the groups of states from each of which there
// is a way to every other.
class circle_finder {
  public:
    circle_finder(std::size_t buttons, const link_graph& graph)
        : graph_(graph), seen_(2 * buttons, 0), lowest_(2 * buttons, 0), is_on_way_(2 * buttons, false) {}

    // The buttons of each.
    std::vector<button_places> circles() {
        for (std::size_t state = 0; state < seen_.size(); ++state) {
            if (seen_[state] == 0) follow(state);
        }
        return std::move(found_);
    }

  private:
    // A button going up is the state 2n, going down 2n + 1.
    template <class Visit>
    void leads_to(std::size_t state, Visit visit) const {
        for (const auto& link : graph_.links_of(state / 2)) {
            if (!link.kind->sets_state() || link.kind->acts_on_down() != (state % 2 == 1)) continue;
            if (link.kind->effect != link_effect::set_down) visit(2 * link.target);
            if (link.kind->effect != link_effect::set_up) visit(2 * link.target + 1);
        }
    }

    void follow(std::size_t state) {
        seen_[state] = lowest_[state] = ++count_;
        way_.push_back(state);
        is_on_way_[state] = true;
        leads_to(state, [&](std::size_t next) {
            if (seen_[next] == 0) follow(next);
            if (is_on_way_[next]) lowest_[state] = std::min(lowest_[state], lowest_[next]);
        });
        if (lowest_[state] == seen_[state]) take_group(state);
    }

    void take_group(std::size_t first) {
        button_places buttons;
        std::size_t state = 0;
        do {
            state = way_.back();
            way_.pop_back();
            is_on_way_[state] = false;
            buttons.push_back(state / 2);
        } while (state != first);
        std::sort(buttons.begin(), buttons.end());
        buttons.erase(std::unique(buttons.begin(), buttons.end()), buttons.end());
        const bool is_new = std::find(found_.begin(), found_.end(), buttons) == found_.end();
        if (buttons.size() > 1 && is_new) found_.push_back(std::move(buttons));
    }

    const link_graph& graph_;
    std::vector<std::size_t> seen_;  // in which order, from 1; 0: not yet
    std::vector<std::size_t> lowest_;
    std::vector<bool> is_on_way_;
    std::vector<std::size_t> way_;
    std::size_t count_ = 0;
    std::vector<button_places> found_;
};

// A link that is told, and where it comes from.
struct told_link {
    std::size_t from = 0;
    const link_graph::link* link = nullptr;
};

// Those of the button, then those to it; of several that one sentence tells the first.
std::vector<told_link> told_links(std::size_t buttons, const link_graph& graph, std::size_t button) {
    std::vector<told_link> all;
    for (const auto& link : graph.links_of(button)) all.push_back({button, &link});
    std::unordered_set<const link_kind*> conditions;
    for (std::size_t from = 0; from < buttons; ++from) {
        if (from == button) continue;
        for (const auto& link : graph.links_of(from)) {
            if (link.target != button) continue;
            if (!link.kind->has_condition() || conditions.insert(link.kind).second)
                all.push_back({from, &link});
        }
    }
    return all;
}

}  // namespace

QStringList link_words(const std::vector<button_record>& buttons, const link_graph& graph,
                       std::size_t button) {
    const auto told = told_links(buttons.size(), graph, button);
    return first_of(told.size(), most_lines, [&](std::size_t i) {
        const auto& [from, link] = told[i];
        const auto sources =
            link->kind->has_condition() ? sources_of(buttons, graph, *link) : button_places{from};
        const QString target =
            from == button ? QStringLiteral("“%1”").arg(name_of(*buttons[link->target])) : words("this");
        return words("When %1, %2 %3.")
            .arg(moment_words(link->kind->moment, quoted(buttons, sources)), target,
                 effect_words(link->kind->effect));
    });
}

QStringList link_problems(const std::vector<button_record>& buttons, const link_graph& graph) {
    std::unordered_set<std::string> known;
    for (const button_record& button : buttons) known.insert(button->uuid());
    QStringList found;
    for (const button_record& button : buttons) {
        for (const auto& link : button->action_links()) {
            if (known.contains(link.linked_button_UUID) || !link_kind_of(link.action_TYPE)) continue;
            found << words("“%1”: a link (%2) leads to “%3”, which is not there any more")
                         .arg(name_of(*button), QString::fromUtf8(link_text(link.action_TYPE).data()),
                              QString::fromStdString(link.linked_button_name));
        }
    }
    for (const button_places& circle : circle_finder(buttons.size(), graph).circles()) {
        found << words("%1 set each other off in a circle: each changes once").arg(quoted(buttons, circle));
    }
    return first_of(static_cast<std::size_t>(found.size()), most_lines,
                    [&](std::size_t i) { return found[static_cast<qsizetype>(i)]; });
}

QString link_sign(const link_kind& kind) {
    switch (kind.effect) {
        case link_effect::set_up:
            return QStringLiteral("↑");
        case link_effect::set_down:
            return QStringLiteral("↓");
        case link_effect::toggle:
            return QStringLiteral("↕");
        case link_effect::block:
            return QStringLiteral("×");
        case link_effect::center_on:
            return QStringLiteral("+");
        case link_effect::bring_to_front:
            return QStringLiteral("»");
        case link_effect::send_to_back:
            return QStringLiteral("«");
        case link_effect::set_button_colour:
        case link_effect::set_mark_colour:
            return QStringLiteral("•");
        case link_effect::clear_traces:
            return QStringLiteral("–");
    }
    return {};
}

}  // namespace vistels
