// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/filter/filter_editor.h"

#include <QHelpEvent>
#include <QKeyEvent>
#include <QMimeData>
#include <QPainter>
#include <QScrollBar>
#include <QSyntaxHighlighter>
#include <QTextBlock>
#include <QTextDocument>
#include <QTextLayout>
#include <QToolTip>
#include <algorithm>

#include "shell/filter/filter_metrics.h"
#include "shell/kit/theme.h"

namespace vistels {

namespace {

// Characters; of longer texts less is drawn.
constexpr int long_text = 2000;

}  // namespace

// Gives the letters their colours; the grounds are drawn by the editor.
class filter_editor::painter_of_words : public QSyntaxHighlighter {
  public:
    explicit painter_of_words(filter_editor& editor)
        : QSyntaxHighlighter(editor.document()), editor_(editor) {}

  protected:
    void highlightBlock(const QString& text) override {
        // A second line stands only until it is joined with the first.
        if (currentBlock().blockNumber() != 0) return;
        const theme& look = theme::current();
        editor_.display_ = display_filter(text);
        for (const auto& word : editor_.display_.words) {
            QTextCharFormat format;
            format.setForeground(editor_.colours_.ink(look, word.code));
            setFormat(word.place.start, word.place.length, format);
        }
        for (const auto& joint : editor_.display_.joints) {
            if (text.size() > long_text) break;
            QTextCharFormat format;
            format.setFontWordSpacing(look.metrics.grid);
            setFormat(joint.start, joint.length, format);
        }
        for (const auto& span : editor_.display_.wrong) {
            const int end = std::min(span.end(), static_cast<int>(text.size()));
            for (int at = span.start; at < end; ++at) {
                QTextCharFormat underlined = format(at);
                underlined.setUnderlineStyle(QTextCharFormat::WaveUnderline);
                underlined.setUnderlineColor(look.live);
                setFormat(at, 1, underlined);
            }
        }
    }

  private:
    filter_editor& editor_;
};

filter_editor::filter_editor(QWidget* parent)
    : QPlainTextEdit(parent), highlighter_(new painter_of_words(*this)) {
    setProperty("kind", "inner");
    setFont(theme::font(type_step::body));
    setLineWrapMode(QPlainTextEdit::NoWrap);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setTabChangesFocus(true);
    setFrameShape(QFrame::NoFrame);
    // Room for the ground of a word at either end.
    document()->setDocumentMargin(filter_sizes.token_padding + theme::current().metrics.line);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setFixedHeight(sizeHint().height());
    connect(this, &QPlainTextEdit::textChanged, this, &filter_editor::follow_text);
    theme_changed_ = theme::changed().connect([this] { use_theme(); });
}

filter_editor::~filter_editor() = default;

QString filter_editor::text() const {
    return one_line(document()->toRawText());
}

void filter_editor::set_text(const QString& text) {
    const QString line = one_line(text);
    if (line == this->text()) return;
    is_setting_ = true;
    QTextCursor cursor(document());
    cursor.select(QTextCursor::Document);
    cursor.insertText(line);
    setTextCursor(cursor);
    is_setting_ = false;
    show_start();
}

// Where nobody types the text is read from its beginning.
void filter_editor::show_start() {
    if (!hasFocus()) horizontalScrollBar()->setValue(horizontalScrollBar()->minimum());
}

void filter_editor::replace(int start, int length, const QString& piece, int place) {
    QTextCursor cursor(document());
    cursor.beginEditBlock();
    cursor.setPosition(start);
    cursor.setPosition(start + length, QTextCursor::KeepAnchor);
    cursor.insertText(one_line(piece));
    cursor.setPosition(std::clamp(place, 0, document()->characterCount() - 1));
    cursor.endEditBlock();
    setTextCursor(cursor);
}

std::size_t filter_editor::caret() const {
    return static_cast<std::size_t>(text().left(textCursor().position()).toUcs4().size());
}

void filter_editor::set_colours(const filter_colours& colours) {
    if (colours == colours_) return;
    colours_ = colours;
    use_theme();
}

void filter_editor::use_theme() {
    highlighter_->rehighlight();
    viewport()->update();
}

QSize filter_editor::sizeHint() const {
    const int height = fontMetrics().lineSpacing() + 2 * static_cast<int>(document()->documentMargin());
    return {filter_sizes.filter_least_width, height};
}

QSize filter_editor::minimumSizeHint() const {
    return {0, sizeHint().height()};
}

void filter_editor::follow_text() {
    if (document()->blockCount() > 1 || document()->firstBlock().text().contains(QChar::LineSeparator)) {
        // From an input method or a drop.
        const QString line = text();
        const int place = textCursor().position();
        const bool was_setting = is_setting_;
        is_setting_ = true;
        QTextCursor cursor(document());
        cursor.joinPreviousEditBlock();
        cursor.select(QTextCursor::Document);
        cursor.insertText(line);
        cursor.setPosition(std::min(place, static_cast<int>(line.size())));
        cursor.endEditBlock();
        setTextCursor(cursor);
        is_setting_ = was_setting;
    }
    const QString now = text();
    if (now == last_text_) return;  // formats alone
    last_text_ = now;
    viewport()->update();
    if (!is_setting_) Q_EMIT typed();
}

const filter_display::word* filter_editor::word_under(const QPoint& place) const {
    for (const auto& word : display_.words) {
        if (word.stored_draw_coloured_formula_rect.contains(place)) return &word;
    }
    return nullptr;
}

// What the text field must not leave to the window's shortcuts beside what Qt's own does.
bool filter_editor::event(QEvent* event) {
    if (event->type() == QEvent::ShortcutOverride) {
        const auto* key = static_cast<QKeyEvent*>(event);
        const bool is_redo = key->key() == Qt::Key_Y && key->modifiers() == Qt::ControlModifier;
        const bool is_own = key->key() == Qt::Key_Escape || key->key() == Qt::Key_Return ||
                            key->key() == Qt::Key_Enter || key->key() == Qt::Key_Up ||
                            key->key() == Qt::Key_Down || key->key() == Qt::Key_PageUp ||
                            key->key() == Qt::Key_PageDown;
        if (is_redo || (is_own && !(key->modifiers() & ~Qt::KeypadModifier))) {
            event->accept();
            return true;
        }
    }
    return QPlainTextEdit::event(event);
}

bool filter_editor::viewportEvent(QEvent* event) {
    if (event->type() != QEvent::ToolTip) return QPlainTextEdit::viewportEvent(event);
    const auto* help = static_cast<QHelpEvent*>(event);
    const auto* word = word_under(help->pos());
    const QString tip = !word                ? toolTip()
                        : word->code.empty() ? tr("Unknown code")
                                             : tr("Compared with: %1").arg(code_meaning(word->code));
    QToolTip::showText(help->globalPos(), tip, viewport());
    return true;
}

void filter_editor::keyPressEvent(QKeyEvent* event) {
    const int key = event->key();
    if (key == Qt::Key_Return || key == Qt::Key_Enter) {
        if (!event->isAutoRepeat()) Q_EMIT accepted();
    } else if (key == Qt::Key_Escape) {
        Q_EMIT escaped();
    } else if (key == Qt::Key_Y && event->modifiers() == Qt::ControlModifier) {
        redo();
    } else if (key != Qt::Key_Up && key != Qt::Key_Down && key != Qt::Key_PageUp && key != Qt::Key_PageDown) {
        return QPlainTextEdit::keyPressEvent(event);
    }
    event->accept();
}

void filter_editor::place_words() {
    const QTextBlock block = document()->firstBlock();
    // This lays the line out where that is still to be done.
    const QPointF origin = blockBoundingGeometry(block).translated(contentOffset()).topLeft();
    const QTextLayout* layout = block.layout();
    if (layout->lineCount() == 0) return;
    const QTextLine line = layout->lineAt(0);
    const int composed = static_cast<int>(layout->preeditAreaText().size());
    const auto x_at = [&](int place) {
        return line.cursorToX(composed > 0 && place > layout->preeditAreaPosition() ? place + composed
                                                                                    : place);
    };
    const int padding = filter_sizes.token_padding;
    // Qt finds a place by counting from the left: of a long text only what is seen is placed.
    const bool is_long = block.length() > long_text;
    const int first = is_long ? line.xToCursor(-origin.x()) : 0;
    const int last = is_long ? line.xToCursor(viewport()->width() - origin.x()) : block.length();
    for (auto& word : display_.words) {
        word.stored_draw_coloured_formula_rect = {};
        if (word.place.end() < first || word.place.start > last) continue;
        const double left = x_at(word.place.start);
        const double right = x_at(word.place.end());
        QRectF place(std::min(left, right), line.y(), std::abs(right - left), line.height());
        word.stored_draw_coloured_formula_rect = place.translated(origin).adjusted(-padding, 0, padding, 0);
    }
}

void filter_editor::paintEvent(QPaintEvent* event) {
    place_words();
    const theme& look = theme::current();
    QPainter painter(viewport());
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    for (const auto& word : display_.words) {
        const QColor ground = colours_.ground(look, word.code);
        if (!ground.isValid() || word.stored_draw_coloured_formula_rect.isEmpty()) continue;
        painter.setBrush(ground);
        painter.drawRoundedRect(word.stored_draw_coloured_formula_rect, look.metrics.radius_clip,
                                look.metrics.radius_clip);
    }
    painter.end();
    QPlainTextEdit::paintEvent(event);
}

void filter_editor::resizeEvent(QResizeEvent* event) {
    QPlainTextEdit::resizeEvent(event);
    ensureCursorVisible();
    show_start();
}

// Chooses what stands between the quotes: blanks in it do not end the word.
void filter_editor::mouseDoubleClickEvent(QMouseEvent* event) {
    const auto* word = word_under(event->position().toPoint());
    if (!word || event->button() != Qt::LeftButton) return QPlainTextEdit::mouseDoubleClickEvent(event);
    QTextCursor cursor(document());
    cursor.setPosition(word->text.start);
    cursor.setPosition(word->text.end(), QTextCursor::KeepAnchor);
    setTextCursor(cursor);
}

void filter_editor::wheelEvent(QWheelEvent* event) {
    const QPoint by = event->angleDelta();
    if (by.x() == 0) return event->ignore();
    horizontalScrollBar()->setValue(horizontalScrollBar()->value() - by.x());
    event->accept();
}

void filter_editor::focusInEvent(QFocusEvent* event) {
    QPlainTextEdit::focusInEvent(event);
    Q_EMIT focus_changed(true);
}

void filter_editor::focusOutEvent(QFocusEvent* event) {
    QPlainTextEdit::focusOutEvent(event);
    Q_EMIT focus_changed(false);
}

void filter_editor::insertFromMimeData(const QMimeData* source) {
    if (source->hasText()) textCursor().insertText(one_line(source->text()));
    ensureCursorVisible();
}

bool filter_editor::canInsertFromMimeData(const QMimeData* source) const {
    return source->hasText();
}

}  // namespace vistels
