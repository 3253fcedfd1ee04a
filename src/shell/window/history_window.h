// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>

class QListView;

namespace vistels {

class event_session;
class undo_steps_model;

// The steps of the open event, the oldest first, and below them those that were taken back. A click on one,
// or Return, goes to the state after it. It stays open beside the window and follows what is done. Main
// thread.
class history_window final : public QDialog {
    Q_OBJECT
  public:
    // The session must outlive it.
    history_window(event_session& session, QWidget* parent);

  Q_SIGNALS:
    // So many steps are to be done, the others taken back.
    void asked(std::size_t done);

  private:
    void follow();
    void ask(int line);

    event_session& session_;
    undo_steps_model* steps_;
    QListView* lines_;
};

}  // namespace vistels
