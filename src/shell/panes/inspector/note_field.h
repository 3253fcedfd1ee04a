// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPlainTextEdit>
#include <functional>
#include <string>

namespace vistels {

// The note of one clip, to be read and written: plain text of several lines. What was typed is handed over
// when the field loses the focus, on Ctrl+Return, and before another clip's note is shown; Escape takes it
// back. Main thread.
class note_field : public QPlainTextEdit {
    Q_OBJECT
  public:
    // Makes the text the note of the clip; false when that could not be done: it stays in the field then.
    using acceptor = std::function<bool(const std::string& clip, const std::string& text)>;

    explicit note_field(QWidget* parent = nullptr);
    void set_acceptor(acceptor accept) { accept_ = std::move(accept); }

    // What is being typed for the same clip is not taken away. An empty UUID shows no note.
    void set_note(const std::string& clip, const std::string& text);
    void commit();

  protected:
    void keyPressEvent(QKeyEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

  private:
    void show_text();

    acceptor accept_;
    std::string clip_;
    std::string text_;  // of the clip, as it is
    bool is_committing_ = false;
};

}  // namespace vistels
