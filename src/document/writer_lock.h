// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>
#include <mutex>
#include <string>

#include "document/recorded_form.h"
#include "util/file_system.h"
#include "util/result.h"

namespace vistels {

// The right to write the document in one folder, held by one program at a time. A file in the folder, named
// by the form, names the holder: host, machine, boot, process and user. On one
// machine the kernel keeps the right as well (it ends with the process, however that dies). Any thread.
class writer_lock {
  public:
    // Takes the lock, or says who has it, since when nothing was heard of them, or why its file could not be
    // written; `held_elsewhere` tells the one from the other. A file left by a process of this machine that
    // is gone is taken over.
    static result<std::unique_ptr<writer_lock>> take(const std::string& folder, const recorded_form& form,
                                                     file_system& files = machine_files(),
                                                     bool* held_elsewhere = nullptr);
    // Takes the lock from whoever has it: only when a person says so. The former holder finds out by
    // is_held().
    static result<std::unique_ptr<writer_lock>> take_over(const std::string& folder,
                                                          const recorded_form& form,
                                                          file_system& files = machine_files(),
                                                          bool* held_elsewhere = nullptr);
    // Gives the lock back and removes its file.
    ~writer_lock();
    writer_lock(const writer_lock&) = delete;
    writer_lock& operator=(const writer_lock&) = delete;

    // False when somebody took the lock over. A file that was only removed, or cannot be looked at, leaves it
    // held.
    bool is_held() const;

    // Sets the file's time, from which others see that the holder lives; puts the file back when somebody
    // removed it. False when the lock is not held any more.
    bool renew();

    // The failure of one who lost the lock: it names who has it now.
    failure lost() const;

    static constexpr double renewal_seconds = 10;

  private:
    class held_file;

    writer_lock(std::string folder, const recorded_form& form, int descriptor, file_system& files);
    std::shared_ptr<const held_file> file() const;
    bool was_put_back(const held_file& looked_at) const;
    void put_back(std::shared_ptr<const held_file> file);
    result<void> name_this_process(const held_file& file);

    std::string folder_;
    const recorded_form& form_;
    std::string path_;
    file_system& files_;
    mutable std::mutex mutex_;               // held for no file call
    std::shared_ptr<const held_file> file_;  // guarded by mutex_
    bool is_putting_back_ = false;           // the same
};

}  // namespace vistels
