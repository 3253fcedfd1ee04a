// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

namespace vistels {

// A call that may make its thread wait for a volume or for another thread, as long as it lasts. The reference
// to a path must outlive it.
class wait_note {
  public:
    explicit wait_note(const char* call) : wait_note(call, nullptr, -1) {}
    wait_note(const char* call, const std::string& path) : wait_note(call, &path, -1) {}
    wait_note(const char* call, int descriptor) : wait_note(call, nullptr, descriptor) {}
    ~wait_note();
    wait_note(const wait_note&) = delete;
    wait_note& operator=(const wait_note&) = delete;

    // The name of the system call, or what is waited for.
    const char* call() const { return call_; }
    // What it concerns; empty: nothing that has a name. Costs a system call where a descriptor is known only.
    std::string subject() const;
    // It stands within an expected_waits; why, else null.
    const char* expected() const { return expected_; }

  private:
    wait_note(const char* call, const std::string* path, int descriptor);

    const char* const call_;
    const std::string* const path_;
    const int descriptor_;
    const char* const expected_;
    double begun_ = 0;  // 0: nobody listens
};

// What this thread waits for while this lives is known to be short, or is wanted: the append of the journal,
// the saving of an event that closes. `why` must be a literal. May be nested.
class expected_waits {
  public:
    explicit expected_waits(const char* why);
    ~expected_waits();
    expected_waits(const expected_waits&) = delete;
    expected_waits& operator=(const expected_waits&) = delete;

  private:
    const char* before_;
};

// Hears of all calls that are noted. The thread of the window, which must not wait, is told from others by
// who listens.
class wait_watch {
  public:
    virtual ~wait_watch() = default;
    // On the thread that makes the call, before it.
    virtual void begins(const wait_note& note) = 0;
    // On that thread, after it.
    virtual void ended(const wait_note& note, double seconds) = 0;

    // From now on all calls are told to `watch`, which must outlive all threads or the next listen(); null:
    // to nobody.
    static void listen(wait_watch* watch);
};

}  // namespace vistels
