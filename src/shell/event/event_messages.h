// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>
#include <functional>
#include <string>
#include <vector>

#include "app/start/start_up.h"
#include "app/vaults/vaults.h"
#include "shell/kit/message_bar.h"
#include "timeline/files/timeline_document.h"

namespace vistels {

// What is said to the analyst about events, vaults and files: one place for the words. Main thread.

// Lasting messages, see user_message::key.
inline constexpr const char* save_failed_key = "save failed";
inline constexpr const char* read_only_key = "read only";
inline constexpr const char* refused_press_key = "refused press";
inline constexpr const char* refused_change_key = "refused change";
inline constexpr const char* pressing_key = "automatic presser";

// Shows the folder, or the folder of the file, in the desktop's file manager.
void show_in_files(const std::string& path);

// What starting found: one message for all that was put back, one for each thing that went wrong.
std::vector<user_message> messages_of_start(const start_up_report& report);

// What opening an event found.
struct opening_report {
    QString event;       // its name
    std::string folder;  // what "Show Files" shows
    std::size_t recovered_edits = 0;
    QStringList finished;           // clips that were growing when the program died: "Attack until 0:12:30"
    std::vector<failure> messages;  // damaged files and the like; those of conflicts among them
    std::vector<file_conflict> conflicts;
};
std::vector<user_message> messages_of_opening(const opening_report& report);

// Another program changed a file of the event; both versions are kept.
user_message conflict_message(const QString& event, const file_conflict& conflict);

// What is told of a streamed vistel whose local copy lacks its end: vistel_is_shorter.
user_message shortage_message(const QString& event, const failure& alert);

// The event can only be read. It lasts until that is over.
user_message read_only_message(const QString& event, const failure& reason);

// A save that failed and is tried again.
user_message save_failed_message(const QString& event, const std::string& folder, const QString& reason);

// The event that was open last is no longer there.
user_message gone_message(const std::string& folder);

// An item of a kind that no window shows yet.
user_message unknown_kind_message(item_kind kind, const QString& name, const std::string& folder);

// A button was pressed while the timeline can only be read.
user_message refused_press_message(const QString& button, const QString& event);

// Buttons are pressed at random. It lasts until that is over; `stop` ends it.
user_message pressing_message(const QString& event, std::function<void()> stop);

}  // namespace vistels
