// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QTimer>
#include <QWidget>
#include <deque>
#include <functional>
#include <map>
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
        bool keeps = false;          // the message stays when it was chosen
    };

    tone kind = tone::warning;
    QString headline;             // what happened
    QString text;                 // to which file or item, and what was kept
    QString detail;               // may be empty; muted
    std::vector<choice> choices;  // the safe one first; empty: "Continue"
    // Of a state that lasts: a newer message with the same key takes this one's place, and withdraw() takes
    // it back. Empty for what happened once.
    QString key = {};
    bool comes_first = false;  // it answers what the user is doing, so nothing waits before it
};

// A bar across the window with one message at a time; the next comes when a choice was made. What happened
// once comes before states that last, which may stand for hours. Good news that asks for nothing goes by
// itself after a while in which the pointer was not on it. Hidden while there is none. Main thread.
class message_bar : public QWidget {
    Q_OBJECT
  public:
    explicit message_bar(QWidget* parent = nullptr);

    // A lasting message that the user has sent away is not shown again until its words change or it was
    // withdrawn.
    void tell(user_message message);
    // The state that the message with this key tells of is over.
    void withdraw(const QString& key);
    // The messages not yet answered, the one shown among them.
    std::size_t waiting() const { return waiting_.size(); }
    QString headline() const;
    QString text() const;
    // Forgets all.
    void clear();

  Q_SIGNALS:
    // Before it becomes visible or hidden, or may get another height.
    void changing(bool will_be_shown);

  protected:
    void paintEvent(QPaintEvent* event) override;
    void enterEvent(QEnterEvent* event) override;
    void leaveEvent(QEvent* event) override;

  private:
    void show_first();
    void start_going();
    void show_detail();
    void answer(std::size_t index);

    std::deque<user_message> waiting_;
    std::map<QString, QString> sent_away_;  // lasting messages by key: their texts
    QWidget* icon_;
    QLabel* headline_;
    QLabel* text_;
    QLabel* detail_;
    QHBoxLayout* buttons_;
    QTimer going_{this};
};

}  // namespace vistels
