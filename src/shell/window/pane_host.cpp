// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/window/pane_host.h"

#include <memory>
#include <utility>

#include "shell/event/code_window_binder.h"
#include "shell/event/collection_binder.h"
#include "shell/event/event_session.h"
#include "shell/event/inspector_binder.h"
#include "shell/event/timeline_binder.h"
#include "shell/panes/code_window/code_window_view.h"
#include "shell/panes/collection/collection_pane.h"
#include "shell/panes/inspector/inspector_view.h"
#include "shell/panes/timeline/timeline_view.h"

namespace vistels {

pane_host::pane_host(event_session& session, collection_commands& commands, home_places places)
    : session_(session), commands_(commands), places_(std::move(places)) {}

pane& pane_host::add(pane_kind kind) {
    const auto put_in = [this](auto* view, auto binder) {
        session_.attach(std::move(binder));
        panes_.push_back(view);
    };
    switch (kind) {
        case pane_kind::collection: {
            auto* view = new collection_pane;
            put_in(view, std::make_unique<collection_binder>(*view, session_, commands_, places_));
            break;
        }
        case pane_kind::timeline: {
            auto* view = new timeline_view;
            put_in(view, std::make_unique<timeline_binder>(*view, session_, places_));
            break;
        }
        case pane_kind::code_window: {
            auto* view = new code_window_view;
            put_in(view, std::make_unique<code_window_binder>(*view, session_));
            break;
        }
        case pane_kind::inspector: {
            auto* view = new inspector_view;
            put_in(view, std::make_unique<inspector_binder>(*view, session_));
            break;
        }
    }
    return *panes_.back();
}

void pane_host::remove(pane& one) {
    session_.detach(one);
    std::erase(panes_, &one);
    one.widget().hide();
    one.widget().deleteLater();  // it may be the one that asked for this
}

}  // namespace vistels
