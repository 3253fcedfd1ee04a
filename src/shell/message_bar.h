// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>
#include <deque>
#include <functional>
#include <vector>

class QHBoxLayout;
class QLabel;

namespace vistels {

// Something to tell the user that concerns the whole event or vault.
struct user_message {
    enum class tone { warning, error, good };
    struct choice {
        QString words;               // a verb
        std::function<void()> does;  // may be empty: the message just goes
    };

    tone kind = tone::warning;
    QString headline;             // what happened
    QString text;                 // to which file or item, and what was kept
    QString detail;               // may be empty; muted
    std::vector<choice> choices;  // the safe one first; empty: "Continue"
};

// A bar across the window with one message at a time; the next comes when a choice was made. Hidden while
// there is none. Main thread.
class message_bar : public QWidget {
    Q_OBJECT
  public:
    explicit message_bar(QWidget* parent = nullptr);

    void tell(user_message message);
    // The messages not yet answered, the one shown among them.
    std::size_t waiting() const { return waiting_.size(); }
    QString headline() const;
    QString text() const;
    // Forgets all.
    void clear();

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    void show_first();
    void show_detail();
    void answer(std::size_t index);

    std::deque<user_message> waiting_;
    QWidget* icon_;
    QLabel* headline_;
    QLabel* text_;
    QLabel* detail_;
    QHBoxLayout* buttons_;
};

// Recovered edits of the event called `event`, and what else opening it had to tell.
std::vector<user_message> messages_of_opening(const QString& event, std::size_t recovered_edits,
                                              const std::vector<std::string>& messages);

}  // namespace vistels
