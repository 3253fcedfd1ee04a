// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/event/binder_list.h"

#include <QApplication>
#include <QWidget>
#include <algorithm>

#include "shell/kit/pane.h"

namespace vistels {

binder_list::binder_list() {
    connect(qApp, &QApplication::focusChanged, this, [this](QWidget*, QWidget* now) { follow_focus(now); });
}

binder_list::~binder_list() {
    clear();
}

void binder_list::add(std::unique_ptr<event_binder> one) {
    all_.push_back(one.get());
    used_.push_back(one.get());
    owned_.push_back(std::move(one));
    changed.emit();
}

void binder_list::remove(event_binder& one) {
    const auto found =
        std::find_if(owned_.begin(), owned_.end(), [&](const auto& owned) { return owned.get() == &one; });
    if (found == owned_.end()) return;
    const auto gone = std::move(*found);
    owned_.erase(found);
    std::erase(all_, &one);
    std::erase(used_, &one);
    // Those that followed it let go of it before it goes.
    changed.emit();
    gone->show(nullptr);
}

void binder_list::clear() {
    while (!all_.empty()) remove(*all_.back());
}

void binder_list::follow_focus(QWidget* now) {
    if (!now) return;
    const auto has_it = std::find_if(used_.begin(), used_.end(), [now](event_binder* one) {
        pane* shown = one->shown_in();
        return shown && (&shown->widget() == now || shown->widget().isAncestorOf(now));
    });
    if (has_it == used_.end() || has_it == used_.begin()) return;
    std::rotate(used_.begin(), has_it, has_it + 1);
    changed.emit();
}

}  // namespace vistels
