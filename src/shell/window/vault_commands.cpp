// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/window/vault_commands.h"

#include <QFileDialog>
#include <QStandardPaths>
#include <QStringList>
#include <algorithm>
#include <memory>
#include <utility>

#include "app/settings/vault_preferences.h"
#include "app/vaults/known_vaults.h"
#include "app/vaults/vaults.h"
#include "shell/event/event_messages.h"
#include "shell/kit/failure_words.h"
#include "shell/panes/side_bar/content_side_bar.h"
#include "util/file_system.h"
#include "video/vault_lock.h"

namespace vistels {

namespace {

// Where the first vault is offered to be made.
std::string usual_parent() {
    return QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation).toStdString();
}

}  // namespace

vault_commands::vault_commands(QWidget& window, content_side_bar& side_bar, home_places places,
                               job_group& jobs, std::function<std::vector<std::string>()> open_folders)
    : window_(window),
      side_bar_(side_bar),
      places_(std::move(places)),
      jobs_(jobs),
      open_folders_(std::move(open_folders)) {}

void vault_commands::create() {
    const auto stored = load_create_new_vault_settings(places_);
    create_vault_panel::values first;
    first.parent_folder = stored.parent_folder.empty() ? usual_parent() : stored.parent_folder;
    first.set_focus = load_set_focus_to_new_vault(places_).set;
    const auto make_one = [this](const create_vault_panel::values& wanted, bool replace, auto done) {
        make(wanted, replace, std::move(done));
    };
    create_vault_panel panel(first, make_one, &window_);
    if (panel.exec() == QDialog::Accepted) Q_EMIT changed();
}

void vault_commands::make(const create_vault_panel::values& wanted, bool replace,
                          std::function<void(const create_vault_panel::answer&)> done) {
    using answer = create_vault_panel::answer;
    using outcome = create_vault_panel::outcome;
    const auto path = new_vault_path(wanted.parent_folder, wanted.name);
    if (!path) return done({outcome::failed, path.error(), {}});
    if (replace && holds_open_event(path.value())) {
        return done({outcome::failed, modified_now(path.value()), {}});
    }
    const auto made = std::make_shared<answer>();
    const auto problem = std::make_shared<failure>();
    job_order order;
    order.title = tr("Making the vault “%1”").arg(QString::fromStdString(wanted.name)).toStdString();
    order.keys = {vault_lock_key(path.value())};
    order.work = [places = places_, wanted, replace, path = path.value(), made,
                  problem](job&) -> result<void> {
        if (!replace && file_exists(path)) {
            *made = {outcome::exists, {}, vault_name(path)};
            return {};
        }
        (void)save_set_focus_to_new_vault(places, {wanted.set_focus});
        const auto vault = create_new_vault(places, {wanted.parent_folder, wanted.name, replace});
        if (!vault) return vault.error();
        made->what = outcome::made;
        *problem = vault.value().problem;
        return {};
    };
    order.then = [this, made, problem, done = std::move(done)](const result<void>& ended, bool) {
        if (!ended) *made = {outcome::failed, ended.error(), {}};
        if (*problem) tell(*problem, tr("The vault is made, but not all is set"));
        done(*made);
        return true;
    };
    jobs_.start(std::move(order));
}

bool vault_commands::holds_open_event(const std::string& vault) const {
    const auto open = open_folders_();
    return std::any_of(open.begin(), open.end(),
                       [&](const std::string& folder) { return folder.starts_with(vault + "/"); });
}

void vault_commands::add_existing() {
    const QString chosen = QFileDialog::getExistingDirectory(&window_, tr("Add An Existing Vault To Sidebar"),
                                                             QString::fromStdString(usual_parent()));
    if (!chosen.isEmpty()) add({chosen});
}

void vault_commands::add(const QStringList& folders) {
    for (const QString& folder : folders) {
        const auto added = add_known_vault(places_, folder.toStdString());
        if (!added) {
            tell(added.error(), tr("The vault was not added"));
        } else if (added.value().was_known) {
            Q_EMIT told({user_message::tone::good,
                         tr("The vault is in the side bar already"),
                         tr("It is “%1”.").arg(QString::fromStdString(added.value().path)),
                         {},
                         {}});
        }
    }
    Q_EMIT changed();
}

void vault_commands::choose_focus() {
    focus_vault_panel panel(side_bar_.content(), &window_);
    if (panel.exec() != QDialog::Accepted || panel.chosen().empty()) return;
    set_focus(panel.chosen());
    Q_EMIT changed();
}

void vault_commands::focus_current() {
    const content_vault* vault = side_bar_.current_vault();
    if (!vault) return;
    if (vault->problem) {
        tell(vault->problem,
             tr("“%1” can't be the focus vault now").arg(QString::fromStdString(vault->name)));
        return;
    }
    set_focus(vault->path);
    Q_EMIT changed();
}

void vault_commands::set_focus(const std::string& vault) {
    tell(choose_focus_vault(places_, vault), tr("The focus vault stays as it is"));
}

void vault_commands::remove_current() {
    const content_vault* vault = side_bar_.current_vault();
    if (!vault) return;
    const QString name = QString::fromStdString(vault->name);
    if (vault->is_home) {
        Q_EMIT told({user_message::tone::warning,
                     tr("“%1” stays in the side bar").arg(name),
                     tr("It is the home vault; there is always one."),
                     {},
                     {}});
        return;
    }
    const std::string path = vault->path;
    if (!tell(remove_known_vault(places_, path), tr("“%1” is still listed").arg(name))) return;
    user_message message;
    message.kind = user_message::tone::good;
    message.headline = tr("“%1” is no longer in the side bar").arg(name);
    message.text = tr("Its files stay in “%1”.").arg(QString::fromStdString(path));
    message.choices = {{tr("Continue"), {}},
                       {tr("Add It Again"), [this, path] { add({QString::fromStdString(path)}); }}};
    Q_EMIT changed();
    Q_EMIT told(message);
}

void vault_commands::show_current() {
    const QString path = side_bar_.current_path();
    if (!path.isEmpty()) show_in_files(path.toStdString());
}

void vault_commands::choose_warning() {
    vault_warning_panel panel(load_minimum_free_space(places_).percent, shows_unavailable(), &window_);
    if (panel.exec() != QDialog::Accepted) return;
    tell(save_minimum_free_space(places_, {panel.percent()}), tr("The setting is not remembered"));
    set_shows_unavailable(panel.shows_unavailable());
}

bool vault_commands::shows_unavailable() const {
    return load_show_unavailable_vaults(places_).shown;
}

void vault_commands::set_shows_unavailable(bool shows) {
    tell(save_show_unavailable_vaults(places_, {shows}), tr("The setting is not remembered"));
    Q_EMIT changed();
}

bool vault_commands::tell(const result<void>& done, const QString& headline) {
    if (!done) {
        Q_EMIT told({user_message::tone::error, headline, words_of(done.error()), {}, {}});
    }
    return done.ok();
}

}  // namespace vistels
