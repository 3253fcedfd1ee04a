// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPointer>
#include <QWidget>

class QLabel;

namespace vistels {

class filter_count;
class filter_entry;
class filter_field;

// The filter as a section of a column: its title with the count, the field, and under it what is wrong. Main
// thread.
class filter_section : public QWidget {
    Q_OBJECT
  public:
    explicit filter_section(const QString& name, QWidget* parent = nullptr);

    // Must outlive the section's use; null: none.
    void set_entry(filter_entry* entry);
    filter_field& field() { return *field_; }

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    filter_field* field_;
    filter_count* count_;
    QLabel* message_;
    QPointer<filter_entry> entry_;
};

}  // namespace vistels
