#pragma once

#include <QElapsedTimer>
#include <QPlainTextEdit>
#include <QTextCursor>
#include <QTimer>

class LogLayout;

/// The display of the traffic log. An entry's text stands in it at once; the view follows some 30
/// times a second, for most of what an entry costs is layout and painting. Lives on the main
/// thread, owned by its form.
class LogDisplay : public QPlainTextEdit
{
    Q_OBJECT

public:
    explicit LogDisplay(QWidget *parent = nullptr);

    /// Appends an entry of one or more lines; the cursor goes to its end.
    void append(const QString &text);

    /// Lays out what was appended and lets the view follow now. Whoever asks where a text stands
    /// on the screen calls this first.
    void settle();

protected:
    void paintEvent(QPaintEvent *event) override;
    void scrollContentsBy(int dx, int dy) override;

private:
    void makeRoom(QTextCursor &edit, int blocks);
    void followLostBlocks();
    int untilTurn(int characters) const;
    void keepLongLayout();

    LogLayout *const m_layout;
    QTimer m_turn;              ///< until the view may follow again
    QElapsedTimer m_lastSettle; ///< invalid until the first
    int m_lostBlocks = 0;       ///< off the top since the view last followed
    int m_place = 0;            ///< of the view before that, as its bar has it
    int m_topLine = 0;          ///< of the view's first block, which the view began with then
    QPointF m_offset;           ///< of the text in the view, then
    QTextCursor m_longLine;     ///< whose layout is kept; a block alone would outlive its text
};
