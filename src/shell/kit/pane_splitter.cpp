// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/kit/pane_splitter.h"

#include <QKeyEvent>
#include <QPainter>
#include <QSplitterHandle>

#include "shell/kit/theme.h"

namespace vistels {

namespace {

class pane_splitter_handle final : public QSplitterHandle {
  public:
    pane_splitter_handle(Qt::Orientation orientation, pane_splitter* parent)
        : QSplitterHandle(orientation, parent), splitter_(parent) {
        setFocusPolicy(Qt::TabFocus);
        setAccessibleName(tr("Border between panes"));
    }

  protected:
    void paintEvent(QPaintEvent*) override {
        const theme& look = theme::current();
        QPainter(this).fillRect(contentsRect(), dragged_ || hasFocus() ? look.accent : look.window);
    }
    void mousePressEvent(QMouseEvent* event) override {
        dragged_ = true;
        update();
        QSplitterHandle::mousePressEvent(event);
    }
    void mouseReleaseEvent(QMouseEvent* event) override {
        dragged_ = false;
        update();
        QSplitterHandle::mouseReleaseEvent(event);
    }
    void mouseDoubleClickEvent(QMouseEvent*) override { splitter_->make_equal(splitter_->indexOf(this)); }
    bool event(QEvent* event) override {
        // The arrow keys move the border here, not the playhead.
        if (event->type() == QEvent::ShortcutOverride && step_of(*static_cast<QKeyEvent*>(event)) != 0) {
            event->accept();
            return true;
        }
        return QSplitterHandle::event(event);
    }
    void keyPressEvent(QKeyEvent* event) override {
        const int step = step_of(*event);
        if (step == 0) return QSplitterHandle::keyPressEvent(event);
        splitter_->move_by(splitter_->indexOf(this), step * theme::current().metrics.splitter_key_step);
    }

  private:
    int step_of(const QKeyEvent& event) const {
        const bool upright = orientation() == Qt::Horizontal;
        if (event.key() == (upright ? Qt::Key_Left : Qt::Key_Up)) return -1;
        if (event.key() == (upright ? Qt::Key_Right : Qt::Key_Down)) return 1;
        return 0;
    }

    pane_splitter* splitter_;
    bool dragged_ = false;
};

}  // namespace

pane_splitter::pane_splitter(Qt::Orientation orientation, QWidget* parent) : QSplitter(orientation, parent) {
    // Qt widens the hit area of so thin a handle by itself.
    setHandleWidth(theme::current().metrics.splitter);
    setChildrenCollapsible(false);
    connect(this, &QSplitter::splitterMoved, this, [this] { was_moved_ = true; });
}

QSplitterHandle* pane_splitter::createHandle() {
    return new pane_splitter_handle(orientation(), this);
}

void pane_splitter::move_by(int index, int pixels) {
    QList<int> all = sizes();
    all[index - 1] += pixels;
    all[index] -= pixels;
    setSizes(all);
    was_moved_ = true;
}

void pane_splitter::make_equal(int index) {
    QList<int> all = sizes();
    const int both = all[index - 1] + all[index];
    all[index - 1] = both / 2;
    all[index] = both - both / 2;
    setSizes(all);
    was_moved_ = true;
}

}  // namespace vistels
