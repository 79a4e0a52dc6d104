#include "shell/LogDisplay.h"

#include <QImage>
#include <QPaintEvent>
#include <QPainter>
#include <QPlainTextDocumentLayout>
#include <QScrollBar>
#include <QSignalBlocker>
#include <QTextBlock>
#include <QTextLayout>

#include <utility>

namespace {

constexpr int kFollowMs = 33;
constexpr int kBlocksPainted = 32; ///< one by one; more fill a view
constexpr int kLongBlock = 4096;   ///< characters of a line that is wrapped into dozens

} // namespace

/// The plain display's layout, which takes a number of appended entries at once. Blocks that
/// weren't announced to it are laid out when they are looked at.
class LogLayout : public QPlainTextDocumentLayout
{
public:
    using QPlainTextDocumentLayout::QPlainTextDocumentLayout;

    /// Until the next `release`, `characters` that were appended at the end, and what was taken off
    /// the top, are not looked at.
    void hold() { m_isHeld = true; }
    void letGo(int characters)
    {
        m_isHeld = false;
        m_pending += characters;
    }
    bool isPending() const { return m_pending > 0; }

    /// The toolkit would have the whole view painted for more than one block. New are a few last
    /// ones only, and one has lost the cursor where it's shown; the others move as a picture does.
    void release(bool showsCursor)
    {
        // Without the break before it: the block that it ends is as it was.
        const int end = document()->characterCount() - 1;
        const int from = qBound(0, end - m_pending + 1, end);
        m_pending = 0;
        const QTextBlock first = document()->findBlock(from);
        if (document()->blockCount() - first.blockNumber() > kBlocksPainted) {
            QPlainTextDocumentLayout::documentChanged(from, 0, end - from);
            return;
        }
        {
            const QSignalBlocker quiet(this);
            QPlainTextDocumentLayout::documentChanged(from, 0, end - from);
        }
        emit documentSizeChanged(documentSize());
        for (QTextBlock block = first; block.isValid(); block = block.next())
            emit updateBlock(block);
        if (showsCursor && first.previous().isValid())
            emit updateBlock(first.previous());
    }

protected:
    void documentChanged(int from, int charsRemoved, int charsAdded) override
    {
        if (!m_isHeld)
            QPlainTextDocumentLayout::documentChanged(from, charsRemoved, charsAdded);
    }

private:
    bool m_isHeld = false;
    int m_pending = 0;
};

static LogLayout *giveLayout(QPlainTextEdit *display)
{
    auto *document = new QTextDocument(display);
    auto *layout = new LogLayout(document);
    document->setDocumentLayout(layout);
    display->setDocument(document);
    return layout;
}

/// Frees what a layout keeps beside its lines, which the toolkit does after a painting only, and
/// nothing paints a line that has left the view. Painted here is none of it.
static void giveUpLayout(QTextLayout *layout)
{
    QImage nothing(1, 1, QImage::Format_Mono);
    QPainter painter(&nothing);
    layout->setCacheEnabled(false);
    layout->draw(&painter, QPointF(), {}, QRectF(-2, -2, 1, 1));
}

LogDisplay::LogDisplay(QWidget *parent) : QPlainTextEdit(parent), m_layout(giveLayout(this))
{
    viewport()->setAttribute(Qt::WA_OpaquePaintEvent);
    m_turn.setSingleShot(true);
    connect(&m_turn, &QTimer::timeout, this, &LogDisplay::settle);
}

/// The style would have all that lies below the text painted first, window and panel included,
/// though nothing of it shows through.
void LogDisplay::paintEvent(QPaintEvent *event)
{
    followLostBlocks();
    QPainter(viewport()).fillRect(event->rect(), palette().base());
    QPlainTextEdit::paintEvent(event);
}

/// Whoever moves the view before it has followed goes by the new numbers, so that what stands on
/// the screen is no part of what shall stand there.
void LogDisplay::scrollContentsBy(int dx, int dy)
{
    if (std::exchange(m_lostBlocks, 0) > 0)
        viewport()->update();
    QPlainTextEdit::scrollContentsBy(dx, dy);
}

/// Takes the oldest blocks off a full display. It would drop them by itself, but one edit a block.
void LogDisplay::makeRoom(QTextCursor &edit, int blocks)
{
    const int excess = document()->blockCount() + blocks - maximumBlockCount();
    if (maximumBlockCount() <= 0 || excess <= 0)
        return;
    if (m_lostBlocks == 0) {
        m_place = verticalScrollBar()->value();
        m_topLine = m_place - firstVisibleBlock().firstLineNumber();
        m_offset = contentOffset();
    }
    m_lostBlocks += excess;
    edit.setPosition(0);
    edit.setPosition(document()->findBlockByNumber(excess).position(), QTextCursor::KeepAnchor);
    edit.removeSelectedText();
}

/// The view knows its first block by number: after blocks went off the top, that is another one
/// than it shows, and all of it would have to be painted. Gives it the number that its first block
/// has now; nothing moves on the screen.
void LogDisplay::followLostBlocks()
{
    const int lost = std::exchange(m_lostBlocks, 0);
    if (lost == 0)
        return;
    const int number = firstVisibleBlock().blockNumber() - lost;
    // Where the cursor is shown, the toolkit itself may have scrolled to it, by the new numbers.
    if (number < 0 || verticalScrollBar()->value() != m_place) {
        viewport()->update();
        return;
    }
    viewport()->setAttribute(Qt::WA_UpdatesDisabled);
    verticalScrollBar()->setValue(document()->findBlockByNumber(number).firstLineNumber() +
                                  m_topLine);
    viewport()->setAttribute(Qt::WA_UpdatesDisabled, false);
    // The bar may stand elsewhere than the view, and what scrolling has left over of a pixel where
    // lines aren't of whole ones is lost.
    if (firstVisibleBlock().blockNumber() != number || contentOffset() != m_offset)
        viewport()->update();
}

void LogDisplay::append(const QString &text)
{
    const bool isAtEnd = textCursor().atEnd() && !textCursor().hasSelection();
    const bool isFirst = document()->isEmpty();
    m_layout->hold();
    QTextCursor edit(document());
    edit.beginEditBlock();
    makeRoom(edit, text.count(QLatin1Char('\n')) + 1);
    edit.movePosition(QTextCursor::End);
    if (!isFirst)
        edit.insertBlock();
    edit.insertText(text);
    edit.endEditBlock();
    m_layout->letGo(text.size() + (isFirst ? 0 : 1));
    // A cursor at the end has gone along.
    if (!isAtEnd) {
        settle();
        moveCursor(QTextCursor::End);
    } else if (const int wait = untilTurn(text.size()); wait == 0) {
        settle();
    } else if (!m_turn.isActive()) {
        m_turn.start(wait);
    }
}

/// Milliseconds to the view's next turn; none after a pause. A long entry always waits: the page in
/// front lays the same frame out, and a click shall come between the two.
int LogDisplay::untilTurn(int characters) const
{
    if (characters > kLongBlock)
        return kFollowMs;
    return m_lastSettle.isValid() ? qMax(0, int(kFollowMs - m_lastSettle.elapsed())) : 0;
}

void LogDisplay::settle()
{
    m_turn.stop();
    if (!m_layout->isPending())
        return;
    keepLongLayout();
    followLostBlocks();
    m_layout->release(hasFocus());
    ensureCursorVisible();
    m_lastSettle.start();
}

/// A line of up to 262,028 digits is laid out once, not again for the cursor and each painting.
/// What is kept takes some 30 bytes a digit, so that it's kept for one line only.
void LogDisplay::keepLongLayout()
{
    const QTextBlock last = document()->lastBlock();
    if (last.length() < kLongBlock)
        return;
    if (!m_longLine.isNull() && m_longLine.block() != last)
        giveUpLayout(m_longLine.block().layout());
    m_longLine = QTextCursor(last);
    last.layout()->setCacheEnabled(true);
}
