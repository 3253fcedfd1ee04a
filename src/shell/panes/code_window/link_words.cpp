// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/panes/code_window/link_words.h"

#include <QCoreApplication>
#include <algorithm>
#include <unordered_map>

namespace vistels {

namespace {

QString words(const char* text) {
    return QCoreApplication::translate("link_words", text);
}

QString name_of(const markup_Button_Item& button) {
    return QString::fromStdString(button.name());
}

QString quoted(const QStringList& names) {
    return QStringLiteral("“%1”").arg(names.join(QStringLiteral("”, “")));
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
QString moment_words(link_moment moment, const QStringList& sources) {
    switch (moment) {
        case link_moment::down:
            return words("%1 goes down").arg(quoted(sources));
        case link_moment::up:
            return words("%1 goes up").arg(quoted(sources));
        case link_moment::all_down:
            return words("%1 are all down").arg(quoted(sources));
        case link_moment::all_up:
            return words("%1 are all up").arg(quoted(sources));
        case link_moment::any_up:
            return words("any of %1 is up").arg(quoted(sources));
    }
    return {};
}

using places = std::unordered_map<std::string, std::size_t>;

places places_of(const std::vector<button_record>& buttons) {
    places all;
    for (std::size_t i = 0; i < buttons.size(); ++i) all.emplace(buttons[i]->uuid(), i);
    return all;
}

// The names of the buttons that have this kind of link to the target.
QStringList sources_of(const std::vector<button_record>& buttons, const link_kind& kind,
                       const std::string& target) {
    QStringList names;
    for (const button_record& button : buttons) {
        const auto links = button->action_links();
        if (std::any_of(links.begin(), links.end(), [&](const auto& one) {
                return one.linked_button_UUID == target && link_kind_of(one.action_TYPE) == &kind;
            }))
            names << name_of(*button);
    }
    return names;
}

// Follows the links that change states, and notes each button from which a way leads back to itself.
class circle_finder {
  public:
    explicit circle_finder(const std::vector<button_record>& buttons)
        : buttons_(buttons), all_(places_of(buttons)) {}

    QStringList circles() {
        QStringList found;
        state_.assign(buttons_.size(), state::unseen);
        for (std::size_t i = 0; i < buttons_.size(); ++i) {
            if (state_[i] == state::unseen) follow(i, found);
        }
        return found;
    }

  private:
    enum class state { unseen, on_the_way, done };

    void follow(std::size_t place, QStringList& found) {
        state_[place] = state::on_the_way;
        way_.push_back(place);
        for (const auto& link : buttons_[place]->action_links()) {
            const auto* kind = link_kind_of(link.action_TYPE);
            const auto target = all_.find(link.linked_button_UUID);
            if (!kind || !kind->sets_state() || target == all_.end() || target->second == place) continue;
            if (state_[target->second] == state::unseen)
                follow(target->second, found);
            else if (state_[target->second] == state::on_the_way)
                note(target->second, found);
        }
        way_.pop_back();
        state_[place] = state::done;
    }

    void note(std::size_t from, QStringList& found) {
        QStringList names;
        for (auto at = std::find(way_.begin(), way_.end(), from); at != way_.end(); ++at)
            names << name_of(*buttons_[*at]);
        found << words("%1 set each other off in a circle: each changes once").arg(quoted(names));
    }

    const std::vector<button_record>& buttons_;
    const places all_;
    std::vector<state> state_;
    std::vector<std::size_t> way_;
};

}  // namespace

std::vector<QStringList> link_words(const std::vector<button_record>& buttons) {
    std::vector<QStringList> all(buttons.size());
    const places where = places_of(buttons);
    for (std::size_t i = 0; i < buttons.size(); ++i) {
        for (const auto& link : buttons[i]->action_links()) {
            const auto* kind = link_kind_of(link.action_TYPE);
            const auto target = where.find(link.linked_button_UUID);
            if (!kind || target == where.end()) continue;
            const QString effect = effect_words(kind->effect);
            const QStringList sources = kind->has_condition()
                                            ? sources_of(buttons, *kind, link.linked_button_UUID)
                                            : QStringList(name_of(*buttons[i]));
            const QString moment = moment_words(kind->moment, sources);
            const QString of_target = name_of(*buttons[target->second]);
            all[i] << words("When %1, “%2” %3.").arg(moment, of_target, effect);
            if (target->second == i) continue;
            const QString incoming = words("When %1, this %2.").arg(moment, effect);
            if (!all[target->second].contains(incoming)) all[target->second] << incoming;
        }
    }
    return all;
}

QStringList link_problems(const std::vector<button_record>& buttons) {
    QStringList found;
    const places where = places_of(buttons);
    for (const button_record& button : buttons) {
        for (const auto& link : button->action_links()) {
            if (where.contains(link.linked_button_UUID) || !link_kind_of(link.action_TYPE)) continue;
            found << words("“%1”: a link (%2) leads to “%3”, which is not there any more")
                         .arg(name_of(*button), QString::fromUtf8(link_text(link.action_TYPE).data()),
                              QString::fromStdString(link.linked_button_name));
        }
    }
    return found + circle_finder(buttons).circles();
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
