// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QPointer>
#include <QTimer>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "util/clock.h"

class QKeyEvent;
class QWidget;

namespace vistels {

// What the router needs of the code window in use. Moments are on the monotonic clock (clock::seconds).
struct code_keys {
    // The buttons that the key is bound to; empty when it is bound to none.
    std::function<std::vector<std::string>(const QKeyEvent&)> buttons_for;
    std::function<void(const std::string& button, double clock_seconds)> press;
    std::function<void(const std::string& button, double clock_seconds)> release;
    // The tab key: true when buttons went up by it; else it moves the focus as usual.
    std::function<bool(double clock_seconds)> tab;
    // The Escape key: true when something was given up by it; else it does what it does elsewhere.
    std::function<bool(double clock_seconds)> escape;
    // The window is no longer the active one.
    std::function<void(double clock_seconds)> window_left;
};

// Takes the keys bound to buttons before anything else in the window sees them, as long as the window is the
// active one and no text field has the focus. Repeats of a key that is held are swallowed. A release goes to
// what its key pressed, wherever the focus is by then; when the window is left all held keys are released at
// that moment. Main thread only.
class key_router final : public QObject {
  public:
    key_router(QWidget& window, const clock& time);
    ~key_router() override;

    // From now on keys go there; what is held is released first. An empty one takes no keys.
    void set_code(code_keys code);
    void release_all();

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    // A release that may be half of a repeat: see release().
    struct pending_release {
        std::uint64_t key = 0;
        std::uint64_t stamp = 0;
        double at = 0;  // on the monotonic clock
        std::vector<std::string> buttons;
    };

    bool takes_keys_of(QObject* watched) const;
    bool repeats_held(QObject* watched, const QKeyEvent& event) const;
    bool override_shortcut(QKeyEvent& event);
    void end_typing(QObject* watched) const;
    bool press(QKeyEvent& event);
    bool takes_unbound(int key, double at) const;
    bool release(QKeyEvent& event);
    bool is_unmarked_repeat(const QKeyEvent& event) const;
    void finish_releases();

    QPointer<QWidget> window_;
    const clock& time_;
    code_keys code_;
    std::map<std::uint64_t, std::vector<std::string>> held_;  // by key, what it pressed
    std::vector<pending_release> pending_;
    std::uint64_t last_key_ = 0;    // that came up
    std::uint64_t last_stamp_ = 0;  // when, as the window system stamped it
    QTimer pending_time_;
};

}  // namespace vistels
