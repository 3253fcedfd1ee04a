// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLineEdit>
#include <functional>
#include <string>
#include <utility>
#include <vector>

class QStringListModel;

namespace vistels {

// A field in which a qualifier is typed that the selected clips are to get. It completes from those that are
// known, whose category comes along: "Marek – Player". Return asks for it. Main thread.
class qualifier_entry : public QLineEdit {
    Q_OBJECT
  public:
    using known_list = std::vector<std::pair<std::string, std::string>>;  // names with their categories

    explicit qualifier_entry(QWidget* parent = nullptr);
    // Asked when the field gets the focus.
    void set_known(std::function<known_list()> known) { known_ = std::move(known); }

  Q_SIGNALS:
    void qualifier_asked(const QString& name, const QString& category);

  protected:
    void focusInEvent(QFocusEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

  private:
    void ask();

    std::function<known_list()> known_;
    known_list shown_;
    QStringListModel* lines_;
};

}  // namespace vistels
