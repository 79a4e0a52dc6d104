#pragma once

#include <QColor>
#include <QFont>
#include <QString>
#include <QVector>

#include <functional>
#include <memory>

class QPagedPaintDevice;
class QPainter;
class QPointF;
class QRectF;
class QTextLayout;

// Pages to be printed: texts, tables and drawings one below the other. Qt's text documents tear a
// table's row over the end of a page; here a row stands on one page, unless it is longer than most
// of a page, and a heading on that of what it heads.

namespace check {

/// What the page is printed in. Weight is shown by size and colour: the Chinese fonts at hand have
/// no bold face.
namespace ink {
constexpr QRgb kText = 0xFF1C2430;
constexpr QRgb kQuiet = 0xFF5B6775;
constexpr QRgb kRule = 0xFFC9D1DA;
constexpr QRgb kShade = 0xFFF3F6FA;
constexpr QRgb kAccent = 0xFF1D55C8;
constexpr QRgb kGood = 0xFF1B6E3A;
constexpr QRgb kBad = 0xFFB3261E;
constexpr QRgb kOpen = 0xFF8A5A00;
} // namespace ink

/// A face for both languages, or for digits in columns; of the families that this machine has.
QFont textFont(qreal points);
QFont digitFont(qreal points);

struct Look
{
    qreal points = 9;
    QRgb colour = ink::kText;
    bool isDigits = false;
};

struct Words
{
    QString text;
    Look look = {};
};

/// Paragraphs, one below the other.
using Cell = QVector<Words>;

struct Row
{
    QVector<Cell> cells;   ///< one alone takes the width of all columns
    QRgb fill = 0;         ///< 0 for none
    QRgb bar = 0;          ///< colour of a bar at its left, 0 for none
    qreal leastHeight = 0; ///< millimetres
    bool staysWithNext = false;
};

struct Table
{
    QVector<qreal> shares; ///< of the width, a column each
    QVector<QString> head; ///< repeated on every page; empty for none
    QVector<Row> rows;
    bool isRuled = true; ///< a line below each row
    qreal padding = 1;   ///< above and below each row's text, in millimetres
    int together = 1;    ///< so many of the first rows stand on one page with the head
};

/// Collects what is to be printed and lays it on the pages of a device at the end.
class Paper
{
public:
    using Draw = std::function<void(QPainter &, const QRectF &)>;

    /// The device's own margins are taken away: the paper keeps margins of its own.
    explicit Paper(QPagedPaintDevice &device);

    /// What follows begins on another page.
    void turnPage() { m_turns = true; }
    /// Room above what follows, in millimetres; none at the top of a page.
    void leave(qreal millimetres) { m_above = units(millimetres); }
    void addHeading(const Words &words);
    void addTable(const Table &table);
    /// Something of that height in millimetres and of the whole width.
    void addDrawing(qreal height, bool staysWithNext, const Draw &draw);

    /// Paints all pages, with a text at each foot and the page's number. False if the device can't
    /// be painted on.
    bool print(const QString &foot);

private:
    struct Line
    {
        std::shared_ptr<QTextLayout> layout;
        int number = 0;
        qreal height = 0;
        qreal baseline = 0; ///< below its top
    };
    using Lines = QVector<Line>;

    struct Piece
    {
        qreal height = 0;
        qreal above = 0;
        bool turns = false;
        bool staysWithNext = false;
        int head = -1; ///< the piece that is repeated above it on another page
        Draw draw;
    };
    struct Place
    {
        int piece = 0;
        qreal y = 0;
    };
    using Page = QVector<Place>;

    static qreal heightOf(const QVector<Lines> &cells);
    qreal units(qreal millimetres) const;
    Lines linesOf(const Cell &cell, qreal width) const;
    QVector<qreal> widthsOf(const Table &table, int cells) const;
    qreal barOf(const Row &row) const;
    void add(Piece piece);
    void addRow(const Table &table, const Row &row, int head);
    Row headOf(const Table &table) const;
    QVector<Lines> takeLines(QVector<Lines> &cells) const;
    static void drawLines(QPainter &painter, const Lines &lines, QPointF place);
    Draw drawingOf(const QVector<Lines> &cells, const QVector<qreal> &widths, const Row &row,
                   const Table &table, bool isLast) const;
    qreal chainHeight(int first) const;
    QVector<Page> pages() const;
    void place(int number, QVector<Page> &pages, qreal &y) const;
    void paintFoot(QPainter &painter, const QString &foot, const QString &number) const;

    QPagedPaintDevice &m_device;
    qreal m_unit;   ///< of the device, in a millimetre
    qreal m_width;  ///< of the printed area
    qreal m_height; ///< likewise
    QVector<Piece> m_pieces;
    bool m_turns = false;
    qreal m_above = 0;
};

} // namespace check
