// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <memory>
#include <vector>

#include "shell/event/event_binder.h"
#include "util/signal.h"

class QWidget;

namespace vistels {

// The binders of an event: any number of each kind. Of several panes of a kind the current one is that which
// had the keyboard's focus last, else the first; commands act on it. Main thread.
class binder_list : public QObject {
  public:
    binder_list();
    ~binder_list() override;

    void add(std::unique_ptr<event_binder> one);
    // Takes it out, lets it show nothing, destroys it.
    void remove(event_binder& one);
    void clear();

    const std::vector<event_binder*>& all() const { return all_; }
    // In the order in which they were added.
    template <class binder>
    std::vector<binder*> all_of() const {
        std::vector<binder*> found;
        for (event_binder* one : all_) {
            if (auto* wanted = dynamic_cast<binder*>(one)) found.push_back(wanted);
        }
        return found;
    }
    // Null: there is none.
    template <class binder>
    binder* current() const {
        for (event_binder* one : used_) {
            if (auto* wanted = dynamic_cast<binder*>(one)) return wanted;
        }
        return nullptr;
    }

    signal<> changed;  // one came or went, or another one is current

  private:
    void follow_focus(QWidget* now);

    std::vector<std::unique_ptr<event_binder>> owned_;
    std::vector<event_binder*> all_;
    std::vector<event_binder*> used_;  // the one used last first; those never used follow in their order
};

}  // namespace vistels
