// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QWidget>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "util/colour_text.h"

namespace vistels {

// The parts of which the inspector is made. Each shows what it was given and asks for changes by a signal;
// the value shown changes when it is given anew. Main thread.

// A time as h:mm:ss.mmm. Return or leaving the field asks for the time typed. A text that is no time stays on
// Return, and a message under the field says why; Esc, or leaving the field, brings the old one back.
class time_field : public QLineEdit {
    Q_OBJECT
  public:
    explicit time_field(QWidget* parent = nullptr);
    // Nothing: the clips have several.
    void set_seconds(std::optional<double> seconds);
    // Less is not taken.
    void set_least(double seconds) { least_ = seconds; }
    // What is wrong with the text, as the message under the field says it; empty: nothing.
    QString complaint() const;

  Q_SIGNALS:
    void seconds_asked(double seconds);

  protected:
    void keyPressEvent(QKeyEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

  private:
    void commit();
    void show_seconds();
    void complain(const QString& words);

    std::optional<double> seconds_;
    double least_ = std::numeric_limits<double>::lowest();
    QPointer<QLabel> complaint_;
};

// Five stars; a click on the last one that is set takes it away. Arrow keys add and take away.
class star_row : public QWidget {
    Q_OBJECT
  public:
    explicit star_row(QWidget* parent = nullptr);
    void set_stars(std::optional<int> stars);
    QSize sizeHint() const override;
    static constexpr int most_stars = 5;

  Q_SIGNALS:
    void stars_asked(int stars);

  protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    bool event(QEvent* event) override;

  private:
    int cell() const;
    std::optional<int> stars_;
};

// The colours given out to rows and buttons. A click on the one that is set goes back to the row's colour.
class swatch_row : public QWidget {
    Q_OBJECT
  public:
    explicit swatch_row(QWidget* parent = nullptr);
    // The colour shown by the clip; `own` when the clip has one of its own.
    void set_colour(std::optional<colour> shown, bool own);
    QSize sizeHint() const override;

  Q_SIGNALS:
    // Nothing: as the row has it.
    void colour_asked(const std::optional<vistels::colour>& chosen);

  protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    bool event(QEvent* event) override;

  private:
    QRect place_of(int index) const;
    void choose(int index);
    int shown_index() const;

    std::optional<colour> shown_;
    bool own_ = false;
    int focused_ = 0;
};

// One qualifier on a chip.
struct qualifier_chip {
    std::string uuid;
    QString name;
    QString category;
    bool passes = false;  // it made its clip pass the filter
};

// Chips in lines, each with a cross that removes it; one may be chosen, by a click or Return, again: none.
class qualifier_chips : public QWidget {
    Q_OBJECT
  public:
    explicit qualifier_chips(QWidget* parent = nullptr);
    void set_chips(std::vector<qualifier_chip> chips);
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;
    QSize sizeHint() const override;
    // Where the cross of chip `index` is.
    QRect cross_of(std::size_t index) const;
    QRect place_of(std::size_t index) const { return index < places_.size() ? places_[index] : QRect(); }
    // The UUID of the one that is chosen; empty: none. One that is not there chooses none.
    const std::string& chosen() const { return chosen_; }
    void choose(const std::string& uuid);

  Q_SIGNALS:
    void remove_asked(const QString& uuid);
    void chosen_changed();

  protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    bool event(QEvent* event) override;

  private:
    int lay_out(int width, std::vector<QRect>* places) const;
    void remove(std::size_t index);

    std::vector<qualifier_chip> chips_;
    std::string chosen_;
    std::vector<QRect> places_;
    std::size_t focused_ = 0;
};

}  // namespace vistels
