// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/panes/inspector/qualifier_fields.h"

#include <QGridLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>

#include "shell/kit/controls.h"
#include "shell/kit/theme.h"

namespace vistels {

namespace {

QString text_of(const std::string& words) {
    return QString::fromStdString(words);
}

// With a comma or a point, as people write it; nothing where it is none.
std::optional<double> number_in(const QString& text) {
    bool is_number = false;
    const double value = QString(text).replace(QLatin1Char(','), QLatin1Char('.')).toDouble(&is_number);
    return is_number ? std::optional(value) : std::nullopt;
}

}  // namespace

qualifier_fields::qualifier_fields(QWidget* parent)
    : QWidget(parent), head_(make_label({}, type_step::secondary, QStringLiteral("muted"), this)) {
    const theme_metrics& metrics = theme::current().metrics;
    setObjectName(QStringLiteral("inspector.qualifier"));
    auto* grid = new QGridLayout(this);
    grid->setContentsMargins(0, metrics.padding, 0, metrics.padding);
    grid->setHorizontalSpacing(metrics.padding);
    grid->setVerticalSpacing(metrics.grid);
    grid->setColumnMinimumWidth(0, metrics.inspector_label_width);
    grid->setColumnStretch(1, 1);
    grid->addWidget(head_, 0, 0, 1, 2);
    const std::array<std::pair<const char*, QString>, field_count> lines{{{"name", tr("Name")},
                                                                          {"category", tr("Category")},
                                                                          {"actor", tr("Actor")},
                                                                          {"recepient", tr("To")},
                                                                          {"value", tr("Value")},
                                                                          {"alias", tr("Shown as")}}};
    for (std::size_t i = 0; i < lines.size(); ++i) {
        auto* one = new QLineEdit(this);
        one->setObjectName(QStringLiteral("inspector.qualifier.") + QLatin1String(lines[i].first));
        one->setAccessibleName(lines[i].second);
        one->setFixedHeight(metrics.field_height);
        connect(one, &QLineEdit::editingFinished, this, &qualifier_fields::commit);
        grid->addWidget(make_label(lines[i].second, type_step::secondary, QStringLiteral("muted"), this),
                        static_cast<int>(i) + 1, 0);
        grid->addWidget(one, static_cast<int>(i) + 1, 1);
        fields_[i] = one;
    }
    hide();
}

// What is being typed for the same one is left alone.
void qualifier_fields::set_qualifier(const std::optional<qualifier_words>& words, const QString& head) {
    const bool is_same = words_ == words;
    words_ = words;
    head_->setText(head);
    setVisible(words.has_value());
    if (words && !is_same) show_words();
}

void qualifier_fields::show_words() {
    fields_[name]->setText(text_of(words_->name));
    fields_[category]->setText(text_of(words_->category));
    fields_[actor]->setText(text_of(words_->actor));
    fields_[recepient]->setText(text_of(words_->recepient));
    fields_[alias]->setText(text_of(words_->alias));
    fields_[value]->setText(
        words_->value ? QString::number(*words_->value, 'g', QLocale::FloatingPointShortest) : QString());
}

std::optional<qualifier_words> qualifier_fields::typed() const {
    const auto text = [this](field one) { return fields_[one]->text().trimmed(); };
    qualifier_words all{text(name).toStdString(),  text(category).toStdString(),
                        text(actor).toStdString(), text(recepient).toStdString(),
                        text(alias).toStdString(), number_in(text(value))};
    if (all.name.empty() || (!all.value && !text(value).isEmpty())) return std::nullopt;
    return all;
}

// What says nothing, a name of blanks or a value that is no number, goes back to what it was.
void qualifier_fields::commit() {
    if (!words_) return;
    const auto now = typed();
    if (!now) return show_words();
    if (*now != *words_) Q_EMIT words_asked(*now);
}

void qualifier_fields::keyPressEvent(QKeyEvent* event) {
    if (event->key() != Qt::Key_Escape || !words_) return QWidget::keyPressEvent(event);
    show_words();
}

}  // namespace vistels
