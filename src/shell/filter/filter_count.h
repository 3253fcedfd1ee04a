// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPointer>
#include <QWidget>
#include <cstddef>

namespace vistels {

class filter_entry;

// "26 of 121" beside a filter field, or "121 clips" while every clip passes, in a width that does not change
// with what passes. Main thread.
class filter_count : public QWidget {
    Q_OBJECT
  public:
    explicit filter_count(QWidget* parent = nullptr);

    // Shows what this filter lets through from now on; nothing while there is no event. Null: none.
    void follow(const filter_entry* entry);
    // `is_judging`: the number that passes is about to change.
    void set_counts(std::size_t passing, std::size_t total, bool is_on, bool is_judging);
    QString words() const { return before_ + after_; }
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    QPointer<const filter_entry> entry_;
    QString before_;  // emphasised
    QString after_;
    std::size_t total_ = 0;
    bool is_judging_ = false;
};

}  // namespace vistels
