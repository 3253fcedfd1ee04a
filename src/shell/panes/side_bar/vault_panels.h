// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "app/vaults/content_list.h"
#include "shell/kit/panel.h"
#include "util/result.h"

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;
class QSpinBox;

namespace vistels {

// Asks for what a new vault needs: name, parent folder, and whether new items go into it from then on. One
// that exists already is replaced only when that is chosen then.
class create_vault_panel final : public panel {
    Q_OBJECT
  public:
    struct values {
        std::string name;
        std::string parent_folder;
        bool set_focus = false;
    };
    enum class outcome { made, exists, failed };
    struct answer {
        outcome what = outcome::failed;
        failure reason;    // of `failed`
        std::string name;  // of `exists`: the vault's
    };
    // Makes the vault, with `replace` in place of one that exists, and tells `done` later. The panel waits.
    using maker =
        std::function<void(const values& wanted, bool replace, std::function<void(const answer&)> done)>;

    create_vault_panel(const values& first, maker make, QWidget* parent);

  protected:
    void reject() override;

  private:
    void build(const values& first);
    values wanted() const;
    void choose_parent();
    void follow_fields();
    void make(bool replace);
    void take(const answer& done);
    void set_waiting(bool waits);
    // Asks whether the vault that is there is replaced; the fields wait meanwhile.
    void ask(bool asks);
    void say(const QString& headline, const QString& reason, const char* tone);

    maker make_;
    QLineEdit* name_;
    QLineEdit* parent_;
    QPushButton* choose_;
    QCheckBox* focus_;
    QLabel* problem_;
    QLabel* reason_;
    QPushButton* cancel_;
    QPushButton* replace_;
    QPushButton* create_;
    bool asks_ = false;
    bool waits_ = false;  // until the vault is made, or not
};

// Asks for the name of a new collection without movies, and for the vault that it goes into.
class new_collection_panel final : public panel {
    Q_OBJECT
  public:
    // The vaults by their paths; `focus` is the one that is proposed.
    new_collection_panel(const std::vector<std::string>& vaults, const std::string& focus, QWidget* parent);

    std::string name() const;
    std::string vault() const;

  private:
    QLineEdit* name_;
    QComboBox* vault_;
};

// Panel for choosing the focus vault: all vaults with their free space; those that are away cannot be chosen.
class focus_vault_panel final : public panel {
    Q_OBJECT
  public:
    focus_vault_panel(const std::vector<content_vault>& vaults, QWidget* parent);

    // The path of the chosen vault; empty when none is.
    std::string chosen() const;

  private:
    QListWidget* list_;
    QPushButton* choose_;
};

// From which share of free space on the side bar warns, and whether vaults that are away are listed.
class vault_warning_panel final : public panel {
    Q_OBJECT
  public:
    vault_warning_panel(int percent, bool shows_unavailable, QWidget* parent);

    int percent() const;
    bool shows_unavailable() const;

  private:
    QSpinBox* percent_;
    QCheckBox* shows_unavailable_;
};

}  // namespace vistels
