// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <xcb/xtest.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "util/clock.h"

namespace vistels::testing {

// An X server of this program's own on a screen in memory, with a keyboard and a mouse that the program
// moves: what they do reaches its windows on the way that people's own take, with the server's time stamps.
// The server listens on this machine alone, takes the first display number that is free, and ends with the
// object, or with the program however that ends. Make it before the application object. One thread.
class x_server {
  public:
    // On the monotonic clock, before and after the server was told: between them it stamped the event.
    struct moment {
        double from = 0;
        double to = 0;
    };

    // Ends the program when there is no Xvfb: without one nothing is tested.
    x_server() {
        const std::string number = start();
        display_ = ":" + number;
        connection_ = ::xcb_connect(display_.c_str(), nullptr);
        if (number.empty() || ::xcb_connection_has_error(connection_)) {
            std::fprintf(stderr, "Xvfb does not start: is the package xvfb installed?\n");
            std::exit(1);
        }
    }
    ~x_server() {
        ::xcb_disconnect(connection_);
        ::kill(process_, SIGTERM);
        ::waitpid(process_, nullptr, 0);
    }
    x_server(const x_server&) = delete;
    x_server& operator=(const x_server&) = delete;

    // The one that the tests use.
    static x_server& used() { return *used_; }
    static void use(x_server* server) { used_ = server; }

    const std::string& display() const { return display_; }

    // By the kernel's number of the key (KEY_A), or of the mouse button from 1 on.
    moment key(unsigned number, bool is_down) {
        constexpr unsigned first_code = 8;  // X11's
        return tell(is_down ? XCB_KEY_PRESS : XCB_KEY_RELEASE, number + first_code);
    }
    moment button(unsigned number, bool is_down) {
        return tell(is_down ? XCB_BUTTON_PRESS : XCB_BUTTON_RELEASE, number);
    }
    moment move_mouse(int x, int y) {
        return tell(XCB_MOTION_NOTIFY, 0, static_cast<std::int16_t>(x), static_cast<std::int16_t>(y));
    }

  private:
    moment tell(std::uint8_t what, unsigned detail, std::int16_t x = 0, std::int16_t y = 0) {
        const steady_clock clock;
        const auto root = ::xcb_setup_roots_iterator(::xcb_get_setup(connection_)).data->root;
        moment told{clock.seconds(), 0};
        ::xcb_test_fake_input(connection_, what, static_cast<std::uint8_t>(detail), XCB_CURRENT_TIME, root, x,
                              y, 0);
        // Answered after what was asked before.
        std::free(::xcb_get_input_focus_reply(connection_, ::xcb_get_input_focus(connection_), nullptr));
        told.to = clock.seconds();
        return told;
    }

    // The display's number, empty when there is none.
    std::string start() {
        int ends[2];
        if (::pipe2(ends, O_CLOEXEC) != 0) return {};
        const std::string to = std::to_string(ends[1]);
        process_ = ::fork();
        if (process_ == 0) {
            ::prctl(PR_SET_PDEATHSIG, SIGTERM);
            ::fcntl(ends[1], F_SETFD, 0);
            // A held key begins to repeat while the program is late.
            ::execlp("Xvfb", "Xvfb", "-displayfd", to.c_str(), "-screen", "0", "1600x1000x24", "-dpi", "96",
                     "-nolisten", "tcp", "-noreset", "-ardelay", "200", "-arinterval", "30", nullptr);
            ::_exit(1);
        }
        ::close(ends[1]);
        std::string number;
        for (char letter = 0; ::read(ends[0], &letter, 1) == 1 && letter != '\n';) number += letter;
        ::close(ends[0]);
        return number;
    }

    static inline x_server* used_ = nullptr;
    pid_t process_ = -1;
    std::string display_;
    xcb_connection_t* connection_ = nullptr;
};

}  // namespace vistels::testing
