// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPlainTextEdit>
#include <QRectF>
#include <vector>

#include "shell/filter/filter_colours.h"
#include "shell/filter/filter_display.h"
#include "util/signal.h"

class QSyntaxHighlighter;

namespace vistels {

// One line of text in which a filter is written: its words stand on the colour of what they are compared
// with, and what is wrong is underlined, at every change. Line ends that come in become blanks. Main thread.
class filter_editor : public QPlainTextEdit {
    Q_OBJECT
  public:
    explicit filter_editor(QWidget* parent = nullptr);
    ~filter_editor() override;

    QString text() const;
    // Not told by `typed`; can be taken back like typing. The cursor goes to the end.
    void set_text(const QString& text);
    // Puts `piece` in the place of a part of the text, as the user would: told by `typed`. The cursor goes to
    // `cursor`, counted in the new text.
    void replace(int start, int length, const QString& piece, int cursor);
    void set_colours(const filter_colours& colours);
    // Where the cursor is, in code points.
    std::size_t caret() const;
    const filter_display& display() const { return display_; }

    const filter_display::word* word_under(const QPoint& place) const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

  Q_SIGNALS:
    void typed();
    void accepted();  // Return
    void escaped();
    void focus_changed(bool has_focus);

  protected:
    bool event(QEvent* event) override;
    bool viewportEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void insertFromMimeData(const QMimeData* source) override;
    bool canInsertFromMimeData(const QMimeData* source) const override;

  private:
    class painter_of_words;

    void follow_text();
    void place_words();
    void show_start();
    void use_theme();

    filter_colours colours_;
    filter_display display_;
    QString last_text_;
    bool is_setting_ = false;
    painter_of_words* highlighter_;
    connection theme_changed_;
};

}  // namespace vistels
