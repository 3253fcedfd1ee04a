// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QStringList>
#include <functional>
#include <string>
#include <vector>

#include "app/settings/places.h"
#include "shell/kit/message_bar.h"
#include "shell/panes/side_bar/vault_panels.h"
#include "util/job_list.h"
#include "util/result.h"

class QWidget;

namespace vistels {

class content_side_bar;

// What can be done with vaults: making, listing, choosing the one for new items, taking from the list. They
// act on the vault that is current in the side bar. Main thread.
class vault_commands : public QObject {
    Q_OBJECT
  public:
    // `window` is the parent of the panels; both widgets and `jobs` must outlive the commands. `open_folders`
    // names the folders of the events that are open, in this window or another.
    vault_commands(QWidget& window, content_side_bar& side_bar, home_places places, job_group& jobs,
                   std::function<std::vector<std::string>()> open_folders);

    void create();
    void add_existing();
    // Those that are no vaults are told.
    void add(const QStringList& folders);
    void choose_focus();
    void focus_current();
    // Takes the vault from the list; its files stay where they are.
    void remove_current();
    void show_current();
    void choose_warning();
    bool shows_unavailable() const;
    void set_shows_unavailable(bool shows);

  Q_SIGNALS:
    void told(const vistels::user_message& message);
    // The list of vaults, or what is said about them, changed.
    void changed();

  private:
    void make(const create_vault_panel::values& wanted, bool replace,
              std::function<void(const create_vault_panel::answer&)> done);
    void set_focus(const std::string& vault);
    bool holds_open_event(const std::string& vault) const;
    bool tell(const result<void>& done, const QString& headline);

    QWidget& window_;
    content_side_bar& side_bar_;
    const home_places places_;
    job_group& jobs_;
    const std::function<std::vector<std::string>()> open_folders_;
};

}  // namespace vistels
