#pragma once

#include <QPlainTextEdit>
#include <QWidget>

/// What plain Qt gives who only shows the frames: a window with the toolkit's own display at the
/// place of the log's.
class PlainLog : public QWidget
{
public:
    explicit PlainLog(const QPlainTextEdit *like) : m_display(this)
    {
        resize(like->window()->size());
        m_display.setGeometry({like->mapTo(like->window(), QPoint()), like->size()});
        m_display.setFont(like->font());
        m_display.setMaximumBlockCount(like->maximumBlockCount());
        m_display.moveCursor(QTextCursor::End);
    }

    void append(const QString &entry) { m_display.appendPlainText(entry); }

private:
    QPlainTextEdit m_display;
};
