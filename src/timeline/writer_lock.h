// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>
#include <string>

#include "util/result.h"

namespace vistels {

// The right to write the timeline in one folder, held by one document at a time. On one machine the kernel
// keeps it (it ends with the process, however that dies); for volumes that several machines see, the file
// "chron data writer.plist" names the holder. Main thread.
class writer_lock {
  public:
    // Takes the lock, or says who has it. A file left by a process of this machine that is gone is taken
    // over.
    static result<std::unique_ptr<writer_lock>> take(const std::string& folder);
    // Gives the lock back and removes its file.
    ~writer_lock();
    writer_lock(const writer_lock&) = delete;
    writer_lock& operator=(const writer_lock&) = delete;

    // Sets the file's time, from which other machines see that the holder lives.
    void renew();

    static constexpr double renewal_seconds = 10;

  private:
    writer_lock(std::string path, int descriptor) : path_(std::move(path)), descriptor_(descriptor) {}

    std::string path_;
    int descriptor_;
};

}  // namespace vistels
