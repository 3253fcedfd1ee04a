// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>
#include <QStringList>
#include <vector>

#include "video/video_coll_Files.h"

namespace vistels {

// Asks how movies are to be added: each choice a button with what it does below it. Main thread.
class adding_panel : public QDialog {
    Q_OBJECT
  public:
    adding_panel(const QStringList& movies, const QString& vistel, std::vector<adding_choice> choices,
                 QWidget* parent);

  Q_SIGNALS:
    void chosen(vistels::movies_as how);
};

}  // namespace vistels
