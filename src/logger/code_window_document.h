// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "document/kept_document.h"
#include "logger/code_window.h"
#include "util/file_system.h"
#include "util/result.h"
#include "util/run_loop.h"

namespace vistels {

// The open code window of an event: its buttons and settings, saved in the background a while after they
// changed. Its keeper is the event's timeline. Main thread.
class code_window_document : public kept_document {
  public:
    // `logger_folder` is where its files lie, see logger_folder_of. Empty, and not saved, until take_up().
    code_window_document(std::string logger_folder, run_loop& loop, file_system& files = machine_files());
    // Waits for a save that runs; what is not saved is not saved any more.
    ~code_window_document() override;

    document_id id() const override { return {document_kind::code_window, {}}; }

    const std::string& folder() const { return folder_; }
    const code_window& window() const { return window_; }
    // As it was read from its files just now. With `is_kept` it is saved when it changes; one that only
    // stands in, since there is none or it cannot be read, is not.
    void take_up(code_window read, bool is_kept);
    // Makes what the keeper's journal brought back; it is to be saved then. Where the buttons that it belongs
    // to cannot be read the journal keeps it, and the keeper is not saved before they can.
    void take_up_recovered(const std::vector<document_part>& parts);

    // Sets what is no edit: where the canvas is scrolled to, what timeline it is linked to.
    void set_settings(logger_settings settings);

    // What the button shows of its formula now, nothing for one that shows none: saved with the buttons
    // whenever these are, and no edit.
    using output_reader = std::function<std::optional<std::string>(const std::string& button)>;
    void set_output_reader(output_reader shown) { shown_ = std::move(shown); }

    // The buttons changed.
    signal<> changed;

  private:
    result<save_work> take_save() override;
    bool may_save() override { return is_kept_ && !is_read_only(); }
    result<void> change(const document_change& change) override;
    void follow(const document_change& change) override;

    code_window with_outputs() const;

    const std::string folder_;
    file_system& files_;
    code_window window_;
    std::shared_ptr<const code_window> saved_;  // as its files hold it
    output_reader shown_;
    bool is_kept_ = false;
};

}  // namespace vistels
