// SPDX-License-Identifier: GPL-3.0-or-later
// The theme in use, and what it makes of Qt's palette and style sheet.
#include <QApplication>
#include <QEvent>
#include <QStyleFactory>
#include <optional>

#include "shell/kit/theme.h"

namespace vistels {
namespace {

struct theme_in_use {
    const theme* look = &theme::dark();
    signal<> changed;
};

theme_in_use& in_use() {
    static theme_in_use one;
    return one;
}

std::optional<bool> wanted_dark(theme_choice choice) {
    const QByteArray variable = qgetenv("VISTELS_THEME").toLower();
    if (variable == "dark") return true;
    if (variable == "light") return false;
    if (choice == theme_choice::desktop) return std::nullopt;
    return choice == theme_choice::dark;
}

// Keeps the application's look in step with the choice and with the desktop; owned by the application.
class theme_follower : public QObject {
  public:
    explicit theme_follower(QApplication& application) : QObject(&application), application_(application) {
        setObjectName(name());
        QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
        application_.installEventFilter(this);
    }

    static QString name() { return QStringLiteral("theme_follower"); }

    void set_choice(theme_choice choice) {
        choice_ = choice;
        follow();
    }

    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::ThemeChange && !applying_) {
            QMetaObject::invokeMethod(
                this, [this] { follow(); }, Qt::QueuedConnection);
        }
        return QObject::eventFilter(watched, event);
    }

  private:
    void follow() {
        applying_ = true;
        // An empty palette brings the desktop's own to the front: the only way to ask for its scheme that
        // works with every desktop.
        QApplication::setPalette(QPalette());
        const QColor ground = QApplication::palette().color(QPalette::Window);
        const bool dark = wanted_dark(choice_).value_or(ground.lightness() < 128);
        const theme& look = dark ? theme::dark() : theme::light();
        QApplication::setPalette(theme_palette(look));
        application_.setStyleSheet(theme_style_sheet(look));
        applying_ = false;
        if (in_use().look == &look) return;
        in_use().look = &look;
        in_use().changed.emit();
    }

    QApplication& application_;
    theme_choice choice_ = theme_choice::desktop;
    bool applying_ = false;
};

QString hex(const QColor& colour) {
    return colour.name(QColor::HexRgb);
}

}  // namespace

const theme& theme::current() {
    return *in_use().look;
}

signal<>& theme::changed() {
    return in_use().changed;
}

void use_theme(QApplication& application, theme_choice choice) {
    QObject* found = application.findChild<QObject*>(theme_follower::name(), Qt::FindDirectChildrenOnly);
    auto* follower = static_cast<theme_follower*>(found);
    if (follower == nullptr) follower = new theme_follower(application);
    follower->set_choice(choice);
}

QPalette theme_palette(const theme& look) {
    QPalette made;
    const std::pair<QPalette::ColorRole, QColor> roles[] = {{QPalette::Window, look.window},
                                                            {QPalette::Base, look.field},
                                                            {QPalette::AlternateBase, look.raised},
                                                            {QPalette::Button, look.raised},
                                                            {QPalette::Text, look.text},
                                                            {QPalette::WindowText, look.text},
                                                            {QPalette::ButtonText, look.text},
                                                            {QPalette::BrightText, look.text},
                                                            {QPalette::PlaceholderText, look.muted},
                                                            {QPalette::Highlight, look.accent_ground},
                                                            {QPalette::HighlightedText, look.text},
                                                            {QPalette::Link, look.accent},
                                                            {QPalette::LinkVisited, look.accent},
                                                            {QPalette::Mid, look.line},
                                                            {QPalette::Midlight, look.hover},
                                                            {QPalette::Dark, look.edge},
                                                            {QPalette::Light, look.raised},
                                                            {QPalette::Shadow, look.window},
                                                            {QPalette::ToolTipBase, look.raised},
                                                            {QPalette::ToolTipText, look.text}};
    for (const auto& [role, colour] : roles) made.setColor(role, colour);
    for (const auto role : {QPalette::Text, QPalette::WindowText, QPalette::ButtonText}) {
        made.setColor(QPalette::Disabled, role, mix(look.text, look.pane, look.disabled_share));
    }
    return made;
}

// Dynamic properties choose a variant: kind = "pane", "header", "bar", "segment", "first", "danger", "flat",
// "inner" (a field inside a frame of its own), "popover" (a list over the window);
// tone = "muted", "secondary", "title", "live", "warning", "good", "popover" (of a field's message).
QString theme_style_sheet(const theme& look) {
    static const char* const pattern = R"(
QWidget[kind="pane"], QWidget[kind="header"] { background: @pane; }
QWidget[kind="bar"], QMenuBar, QStatusBar { background: @window; }
QSplitter::handle { background: @window; }
QSplitter::handle:pressed { background: @accent; }
QMenuBar { padding: 0 8px; }
QMenuBar::item { padding: 5px 10px; background: transparent; border-radius: @radius; }
QMenuBar::item:selected { background: @hover; }
QMenu { background: @raised; border: 1px solid @line; padding: 4px; }
QMenu::item { padding: 5px 24px 5px 12px; border-radius: 3px; }
QMenu::item:selected { background: @hover; }
QMenu::item:disabled { color: @disabled; }
QMenu::separator { height: 1px; background: @line; margin: 4px 8px; }
QToolTip { background: @raised; color: @text; border: 1px solid @line; padding: 6px 8px; }
QTabBar { background: @window; qproperty-drawBase: 0; }
QTabBar::tab { min-height: 32px; padding: 0 15px; color: @muted; background: transparent;
               border: 1px solid transparent; border-top: 2px solid transparent; }
QTabBar::tab:hover { color: @text; }
QTabBar::tab:selected { color: @text; background: @pane; border-top-color: @accent; font-weight: 600; }
QTabBar::tab:focus { border: 2px solid @accent; }
QLineEdit, QAbstractSpinBox, QComboBox, QPlainTextEdit, QTextEdit { background: @field; color: @text;
    border: 1px solid @edge; border-radius: @radius; padding: 0 8px; min-height: 26px;
    selection-background-color: @accent; selection-color: @onaccent; }
QPlainTextEdit, QTextEdit { padding: 6px; }
QLineEdit:focus, QAbstractSpinBox:focus, QComboBox:focus, QPlainTextEdit:focus, QTextEdit:focus {
    border: 2px solid @accent; padding-left: 7px; }
QPlainTextEdit[kind="inner"], QPlainTextEdit[kind="inner"]:focus { border: none; padding: 0; min-height: 0;
    background: transparent; }
QLineEdit:disabled, QAbstractSpinBox:disabled, QComboBox:disabled { color: @disabled; border-color: @line; }
QComboBox::drop-down { border: none; width: 22px; }
QPushButton { background: @raised; color: @text; border: 1px solid @line; border-radius: @radius;
              padding: 0 15px; min-height: 30px; }
QPushButton:hover { background: @hover; border-color: @edge; }
QPushButton:pressed { background: @field; border-color: @text; }
QPushButton:checked { background: @text; color: @pane; border-color: @text; }
QPushButton:focus { border: 2px solid @accent; padding: 0 14px; min-height: 28px; }
QPushButton:disabled { color: @disabled; background: @raised; border-color: @line; }
QPushButton[kind="first"] { background: @text; color: @pane; font-weight: 600; }
QPushButton[kind="first"]:disabled { background: @raised; color: @disabled; }
QPushButton[kind="danger"] { background: transparent; color: @live; border-color: @live; }
QToolButton { background: transparent; color: @muted; border: 1px solid transparent; border-radius: @radius;
              padding: 0; }
QToolButton:hover { background: @hover; color: @text; }
QToolButton:pressed { background: @field; border-color: @text; }
QToolButton:checked { background: @raised; border-color: @line; color: @text; }
QToolButton:focus { border: 2px solid @accent; }
QToolButton:disabled { color: @disabled; }
QToolButton::menu-indicator { image: none; }
QToolButton[kind="raised"] { background: @raised; border-color: @edge; color: @text; }
QToolButton[kind="segment"] { background: @window; border-color: @line; border-radius: 4px; padding: 0 6px; }
QToolButton[kind="segment"]:checked { background: @text; color: @pane; border-color: @text; font-weight: 600; }
QToolButton[kind="segment"]:focus { border: 2px solid @accent; padding: 0 5px; }
QAbstractItemView { background: @pane; color: @text; border: none; outline: none;
                    selection-background-color: @accentground; selection-color: @text; }
QListView[kind="popover"] { background: @raised; border: 1px solid @edge; border-radius: @radius; padding: 4px; }
QHeaderView::section { background: @window; color: @muted; border: none; border-bottom: 1px solid @line;
                       padding: 4px 8px; }
QScrollArea, QScrollArea > QWidget > QWidget[kind="pane"] { background: @pane; border: none; }
QScrollBar { background: transparent; border: none; }
QScrollBar:vertical { width: 10px; }
QScrollBar:horizontal { height: 10px; }
QScrollBar::handle { background: @line; border-radius: 3px; margin: 2px; min-width: 24px; min-height: 24px; }
QScrollBar::handle:hover { background: @edge; }
QScrollBar[kind="video"]::handle { background: @videoedge; }
QScrollBar[kind="video"]::handle:hover { background: @videomuted; }
QScrollBar::add-line, QScrollBar::sub-line { width: 0; height: 0; }
QScrollBar::add-page, QScrollBar::sub-page { background: transparent; }
QSlider::groove:horizontal { height: 3px; background: @line; border-radius: 1px; }
QSlider::sub-page:horizontal { background: @text; border-radius: 1px; }
QSlider[kind="flat"]::sub-page:horizontal { background: @line; }
QSlider::handle:horizontal { width: 4px; margin: -7px 0; background: @text; border-radius: 2px; }
QSlider::handle:horizontal:focus { background: @accent; }
QProgressBar { background: @line; border: none; border-radius: 2px; max-height: 4px; color: transparent; }
QProgressBar::chunk { background: @accent; border-radius: 2px; }
QLabel { background: transparent; }
QLabel[tone="muted"], QLabel[tone="secondary"] { color: @muted; }
QLabel[tone="popover"] { color: @live; background: @raised; border: 1px solid @line;
    border-radius: @radius; padding: 3px 8px; }
QLabel[tone="title"] { font-weight: 600; }
QLabel[tone="live"] { color: @live; }
QLabel[tone="warning"] { color: @warning; }
QLabel[tone="good"] { color: @good; }
)";
    const std::pair<const char*, QString> words[] = {
        // Longer words first: "@accentground" holds "@accent".
        {"@accentground", hex(look.accent_ground)},
        // The ground of videos is dark in both themes.
        {"@videoedge", hex(theme::dark().edge)},
        {"@videomuted", hex(theme::dark().muted)},
        {"@disabled", hex(mix(look.text, look.pane, look.disabled_share))},
        {"@onaccent", hex(look.on_accent)},
        {"@warning", hex(look.warning)},
        {"@radius", QStringLiteral("%1px").arg(look.metrics.radius_control)},
        {"@window", hex(look.window)},
        {"@accent", hex(look.accent)},
        {"@raised", hex(look.raised)},
        {"@hover", hex(look.hover)},
        {"@field", hex(look.field)},
        {"@muted", hex(look.muted)},
        {"@live", hex(look.live)},
        {"@edge", hex(look.edge)},
        {"@good", hex(look.good)},
        {"@line", hex(look.line)},
        {"@pane", hex(look.pane)},
        {"@text", hex(look.text)}};
    QString made = QString::fromLatin1(pattern).trimmed();
    for (const auto& [word, value] : words) made.replace(QLatin1String(word), value);
    return made;
}

}  // namespace vistels
