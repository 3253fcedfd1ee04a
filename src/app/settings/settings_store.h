// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>
#include <map>
#include <mutex>
#include <string>

#include "app/settings/places.h"
#include "app/settings/settings_file.h"
#include "util/property_value.h"
#include "util/result.h"
#include "util/serial_queue.h"

namespace vistels {

// The settings files of one state folder for a program whose main thread does not wait for a disk: each is
// read once and kept in memory; what is written counts at once and reaches the file on a queue.
// read_settings() and write_settings() go by the store that `home_places` names. What another program writes
// meanwhile stays in the file but is seen only after the next start. Any thread.
class settings_store {
  public:
    // Reads all settings files that are known. `trouble` is called on the store's queue with what could not
    // be written: it counts until the program ends.
    explicit settings_store(const home_places& places, std::function<void(const failure&)> trouble = {});
    // What was written is in the files.
    ~settings_store();
    settings_store(const settings_store&) = delete;
    settings_store& operator=(const settings_store&) = delete;

    property_dictionary read(const settings_file& file);
    void write(const settings_file& file, const property_dictionary& values);
    // Waits until what was written is in the files.
    void wait_until_kept() { queue_.drain(); }

  private:
    void write_waiting(const settings_file& file);

    const home_places places_;  // without a store
    const std::function<void(const failure&)> trouble_;
    std::mutex mutex_;
    std::map<std::string, property_dictionary> known_;    // by path
    std::map<std::string, property_dictionary> waiting_;  // what is to be written into which file
    serial_queue queue_{"settings"};                      // last: its work is done before the rest goes
};

// The same places with a store: what a program with windows goes by.
home_places with_store(home_places places, std::function<void(const failure&)> trouble = {});

}  // namespace vistels
