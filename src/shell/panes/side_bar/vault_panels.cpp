// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/panes/side_bar/vault_panels.h"

#include <QComboBox>
#include <QFileDialog>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPointer>
#include <QPushButton>
#include <QSpinBox>
#include <QVBoxLayout>

#include "app/vaults/known_vaults.h"
#include "app/vaults/vault_failures.h"
#include "shell/kit/check_box.h"
#include "shell/kit/controls.h"
#include "shell/kit/failure_words.h"
#include "shell/kit/icons.h"
#include "shell/kit/theme.h"
#include "shell/panes/side_bar/content_model.h"

namespace vistels {

namespace {

constexpr int least_percent = 1;
constexpr int greatest_percent = 99;

// Native folders of the desktop's own dialog; what stands in the field is where it begins.
QString chosen_folder(QWidget* parent, const QString& title, const QString& start) {
    return QFileDialog::getExistingDirectory(parent, title, start);
}

QString vault_words(const content_vault& vault) {
    const QString name = QString::fromStdString(vault.name);
    if (vault.problem) return QObject::tr("%1 – not available").arg(name);
    if (!vault.space) return name;
    const QString free = QObject::tr("%1 free").arg(space_text(vault.space->free_bytes));
    return vault.is_limited ? QObject::tr("%1 – nearly full, %2 (%3 %)")
                                  .arg(name, free)
                                  .arg(vault.space->free_percent(), 0, 'f', 0)
                            : QObject::tr("%1 – %2").arg(name, free);
}

}  // namespace

create_vault_panel::create_vault_panel(const values& first, maker make, QWidget* parent)
    : panel(QStringLiteral("create_vault"), tr("Create New Vault"),
            tr("A vault is a folder that holds collections with their movies, timelines and code windows. "
               "It may lie on any volume."),
            parent),
      make_(std::move(make)) {
    build(first);
    follow_fields();
    ask(false);
    name_->setFocus();
    name_->selectAll();
}

void create_vault_panel::build(const values& first) {
    const theme_metrics& metrics = theme::current().metrics;
    auto* form = new QFormLayout;
    form->setSpacing(metrics.padding);
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    form->setLabelAlignment(Qt::AlignLeft);
    name_ = new QLineEdit(QString::fromStdString(first.name), this);
    name_->setObjectName(QStringLiteral("create_vault.name"));
    name_->setAccessibleName(tr("Name"));
    parent_ = new QLineEdit(QString::fromStdString(first.parent_folder), this);
    parent_->setObjectName(QStringLiteral("create_vault.parent"));
    parent_->setAccessibleName(tr("Parent folder"));
    choose_ = make_push_button(tr("Choose…"), {}, this);
    choose_->setObjectName(QStringLiteral("create_vault.choose"));
    choose_->setToolTip(tr("Choose the folder in which the vault is made"));
    choose_->setAutoDefault(false);
    auto* place = new QHBoxLayout;
    place->setSpacing(metrics.padding);
    place->addWidget(parent_, 1);
    place->addWidget(choose_);
    form->addRow(tr("&Name"), name_);
    auto* in_folder = new QLabel(tr("&In the folder"), this);
    in_folder->setBuddy(parent_);
    form->addRow(in_folder, place);
    focus_ = new check_box(tr("&Set Focus To New Vault"), this);
    focus_->setObjectName(QStringLiteral("create_vault.focus"));
    focus_->setToolTip(tr("New collections are saved into the focus vault"));
    focus_->setChecked(first.set_focus);
    form->addRow(QString(), focus_);
    content().addLayout(form);
    problem_ = make_label({}, type_step::title, QStringLiteral("warning"), this);
    problem_->setObjectName(QStringLiteral("create_vault.problem"));
    reason_ = make_label({}, type_step::body, QStringLiteral("muted"), this);
    reason_->setObjectName(QStringLiteral("create_vault.reason"));
    for (QLabel* label : {problem_, reason_}) {
        label->setTextFormat(Qt::PlainText);
        label->setWordWrap(true);
        content().addWidget(label);
    }
    replace_ = add_button(QStringLiteral("replace"), tr("Replace"), QStringLiteral("danger"));
    cancel_ = add_button(QStringLiteral("cancel"), tr("Cancel"), {});
    create_ = add_button(QStringLiteral("create"), tr("Create Vault"), QStringLiteral("first"));
    connect(choose_, &QPushButton::clicked, this, &create_vault_panel::choose_parent);
    connect(name_, &QLineEdit::textChanged, this, &create_vault_panel::follow_fields);
    connect(parent_, &QLineEdit::textChanged, this, &create_vault_panel::follow_fields);
    connect(create_, &QPushButton::clicked, this, [this] { make(false); });
    connect(replace_, &QPushButton::clicked, this, [this] { make(true); });
    connect(cancel_, &QPushButton::clicked, this, &create_vault_panel::reject);
}

create_vault_panel::values create_vault_panel::wanted() const {
    return {name_->text().trimmed().toStdString(), parent_->text().trimmed().toStdString(),
            focus_->isChecked()};
}

void create_vault_panel::choose_parent() {
    const QString folder = chosen_folder(this, tr("Where to Make the Vault"), parent_->text());
    if (!folder.isEmpty()) parent_->setText(folder);
}

void create_vault_panel::follow_fields() {
    say({}, {}, "");
    create_->setEnabled(!name_->text().trimmed().isEmpty() && !parent_->text().trimmed().isEmpty());
}

void create_vault_panel::say(const QString& headline, const QString& reason, const char* tone) {
    problem_->setText(headline);
    problem_->setProperty("tone", QLatin1String(tone));
    problem_->style()->polish(problem_);
    problem_->setVisible(!headline.isEmpty());
    reason_->setText(reason);
    reason_->setVisible(!reason.isEmpty());
}

void create_vault_panel::make(bool replace) {
    set_waiting(true);
    make_(wanted(), replace, [panel = QPointer<create_vault_panel>(this)](const answer& done) {
        if (panel) panel->take(done);
    });
}

void create_vault_panel::set_waiting(bool waits) {
    waits_ = waits;
    for (QWidget* one :
         std::initializer_list<QWidget*>{name_, parent_, choose_, focus_, cancel_, replace_, create_}) {
        one->setEnabled(!waits);
    }
}

void create_vault_panel::take(const answer& done) {
    set_waiting(false);
    switch (done.what) {
        case outcome::made:
            return accept();
        case outcome::exists:
            say(tr("Vault '%1' already exists.").arg(QString::fromStdString(done.name)),
                tr("Replaced, it goes to the trash with everything that it holds."), "warning");
            return ask(true);
        case outcome::failed:
            ask(false);
            const bool is_headline = done.reason.is(vault_folder_not_made);
            say(tr("Could not create folder."), words_of(is_headline ? done.reason.cause() : done.reason),
                "live");
    }
}

void create_vault_panel::ask(bool asks) {
    asks_ = asks;
    for (QWidget* field : std::initializer_list<QWidget*>{name_, parent_, choose_, focus_}) {
        field->setEnabled(!asks);
    }
    replace_->setVisible(asks);
    create_->setVisible(!asks);
    // What deletes is never done by Return alone.
    replace_->setAutoDefault(false);
    (asks ? cancel_ : create_)->setDefault(true);
    if (asks) cancel_->setFocus();
}

void create_vault_panel::reject() {
    if (waits_) return;
    if (!asks_) return QDialog::reject();
    say({}, {}, "");
    ask(false);
    name_->setFocus();
    name_->selectAll();
}

new_collection_panel::new_collection_panel(const std::vector<std::string>& vaults, const std::string& focus,
                                           QWidget* parent)
    : panel(QStringLiteral("new_collection"), tr("New Collection"),
            tr("It begins without movies: Space starts the clock, and what is coded is kept. Movies that "
               "are added later are brought into step with it by “Same Moment”."),
            parent),
      name_(new QLineEdit(this)),
      vault_(new QComboBox(this)) {
    name_->setObjectName(QStringLiteral("new_collection.name"));
    name_->setAccessibleName(tr("Name"));
    vault_->setObjectName(QStringLiteral("new_collection.vault"));
    vault_->setAccessibleName(tr("Vault"));
    for (const auto& vault : vaults) {
        vault_->addItem(icon(QStringLiteral("vault"), theme::current().muted),
                        QString::fromStdString(vault_name(vault)), QString::fromStdString(vault));
        vault_->setItemData(vault_->count() - 1, QString::fromStdString(vault), Qt::ToolTipRole);
        if (is_same_folder(vault, focus)) vault_->setCurrentIndex(vault_->count() - 1);
    }
    auto* form = new QFormLayout;
    form->setSpacing(theme::current().metrics.padding);
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    form->setLabelAlignment(Qt::AlignLeft);
    form->addRow(tr("&Name"), name_);
    form->addRow(tr("&Vault"), vault_);
    content().addLayout(form);
    auto* cancel = add_button(QStringLiteral("cancel"), tr("Cancel"), {});
    auto* make = add_button(QStringLiteral("make"), tr("Make Collection"), QStringLiteral("first"));
    make->setDefault(true);
    make->setEnabled(false);
    connect(name_, &QLineEdit::textChanged, this, [this, make] { make->setEnabled(!name().empty()); });
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    connect(make, &QPushButton::clicked, this, &QDialog::accept);
    name_->setFocus();
}

std::string new_collection_panel::name() const {
    return name_->text().trimmed().toStdString();
}

std::string new_collection_panel::vault() const {
    return vault_->currentData().toString().toStdString();
}

focus_vault_panel::focus_vault_panel(const std::vector<content_vault>& vaults, QWidget* parent)
    : panel(QStringLiteral("focus_vault"), tr("Choose the Focus Vault"),
            tr("New collections and everything else that is made is saved into the focus vault."), parent),
      list_(new QListWidget(this)) {
    const theme& look = theme::current();
    list_->setObjectName(QStringLiteral("focus_vault.list"));
    list_->setAccessibleName(tr("Vaults"));
    list_->setFrameShape(QFrame::NoFrame);
    for (const auto& vault : vaults) {
        auto* line =
            new QListWidgetItem(icon(vault.is_limited ? QStringLiteral("warning") : QStringLiteral("vault"),
                                     vault.is_limited ? look.warning : look.muted),
                                vault_words(vault), list_);
        line->setData(Qt::UserRole, QString::fromStdString(vault.path));
        line->setToolTip(vault.problem ? words_of(vault.problem) : QString::fromStdString(vault.path));
        line->setSizeHint({0, look.metrics.list_line_height + look.metrics.grid});
        if (vault.problem) {
            line->setFlags(Qt::NoItemFlags);
        } else if (vault.is_focus) {
            list_->setCurrentItem(line);
        }
    }
    content().addWidget(list_);
    auto* cancel = add_button(QStringLiteral("cancel"), tr("Cancel"), {});
    choose_ = add_button(QStringLiteral("choose"), tr("Set Focus"), QStringLiteral("first"));
    choose_->setDefault(true);
    choose_->setEnabled(!chosen().empty());
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    connect(choose_, &QPushButton::clicked, this, &QDialog::accept);
    connect(list_, &QListWidget::itemActivated, this, &QDialog::accept);
    connect(list_, &QListWidget::currentItemChanged, this,
            [this] { choose_->setEnabled(!chosen().empty()); });
    list_->setFocus();
}

std::string focus_vault_panel::chosen() const {
    const QListWidgetItem* line = list_->currentItem();
    return line ? line->data(Qt::UserRole).toString().toStdString() : std::string();
}

vault_warning_panel::vault_warning_panel(int percent, bool shows_unavailable, QWidget* parent)
    : panel(QStringLiteral("vault_warning"), tr("Vault Warnings"),
            tr("A vault on a volume with little free space is marked in the side bar."), parent),
      percent_(new QSpinBox(this)),
      shows_unavailable_(new check_box(tr("&Show vaults that are not available"), this)) {
    percent_->setObjectName(QStringLiteral("vault_warning.percent"));
    percent_->setAccessibleName(tr("Least free space in percent"));
    percent_->setRange(least_percent, greatest_percent);
    percent_->setSuffix(tr(" %"));
    percent_->setButtonSymbols(QAbstractSpinBox::NoButtons);
    percent_->setValue(percent);
    shows_unavailable_->setObjectName(QStringLiteral("vault_warning.unavailable"));
    shows_unavailable_->setToolTip(tr("List vaults whose volume is not connected, in grey"));
    shows_unavailable_->setChecked(shows_unavailable);
    auto* form = new QFormLayout;
    form->setSpacing(theme::current().metrics.padding);
    form->addRow(tr("&Warn when less is free than"), percent_);
    content().addLayout(form);
    content().addWidget(shows_unavailable_);
    add_cancel_and_use();
    percent_->selectAll();
}

int vault_warning_panel::percent() const {
    return percent_->value();
}

bool vault_warning_panel::shows_unavailable() const {
    return shows_unavailable_->isChecked();
}

}  // namespace vistels
