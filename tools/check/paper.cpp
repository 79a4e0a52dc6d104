#include "tools/check/paper.h"

#include "tools/check/summary.h"

#include <QFontDatabase>
#include <QFontMetricsF>
#include <QPagedPaintDevice>
#include <QPainter>
#include <QTextLayout>

namespace check {

namespace {

// Millimetres of an A4 page.
constexpr qreal kSide = 18;
constexpr qreal kTop = 17;
constexpr qreal kBottom = 22;
constexpr qreal kFoot = 12; ///< from the foot's line to the page's end
constexpr qreal kBar = 1.4;
constexpr qreal kPadX = 1.3;
constexpr qreal kRuleWidth = 0.12;

/// A line's height over the size of its letters, and the place of the baseline in it.
constexpr qreal kLeading = 1.42;
constexpr qreal kBaseline = 0.72;
constexpr qreal kMillimetresInPoint = 25.4 / 72;

/// The share of a page beyond which a row may be torn.
constexpr qreal kLongRow = 0.6;

QString familyOf(const QStringList &wanted)
{
    const QStringList there = QFontDatabase().families();
    for (const QString &family : wanted) {
        if (there.contains(family))
            return family;
    }
    return {};
}

QFont fontOf(const QString &family, QFont::StyleHint hint, qreal points)
{
    QFont font;
    if (!family.isEmpty())
        font.setFamily(family);
    font.setStyleHint(hint);
    font.setPointSizeF(points);
    return font;
}

QFont fontOf(const Look &look)
{
    return look.isDigits ? digitFont(look.points) : textFont(look.points);
}

} // namespace

QFont textFont(qreal points)
{
    static const QString family =
        familyOf({QStringLiteral("Noto Sans CJK SC"), QStringLiteral("Source Han Sans SC"),
                  QStringLiteral("Microsoft YaHei"), QStringLiteral("微软雅黑"),
                  QStringLiteral("WenQuanYi Micro Hei"), QStringLiteral("WenQuanYi Zen Hei"),
                  QStringLiteral("SimHei"), QStringLiteral("SimSun")});
    return fontOf(family, QFont::SansSerif, points);
}

QFont digitFont(qreal points)
{
    static const QString family =
        familyOf({QStringLiteral("DejaVu Sans Mono"), QStringLiteral("Liberation Mono"),
                  QStringLiteral("Noto Sans Mono"), QStringLiteral("Consolas"),
                  QStringLiteral("Courier New")});
    return fontOf(family, QFont::Monospace, points);
}

Paper::Paper(QPagedPaintDevice &device)
    : m_device(device), m_unit(device.logicalDpiX() / 25.4), m_width(units(210 - 2 * kSide)),
      m_height(units(297 - kTop - kBottom))
{
    device.setPageSize(QPageSize(QPageSize::A4));
    device.setPageMargins(QMarginsF());
}

qreal Paper::units(qreal millimetres) const
{
    return millimetres * m_unit;
}

Paper::Lines Paper::linesOf(const Cell &cell, qreal width) const
{
    Lines lines;
    for (const Words &words : cell) {
        QString text = printable(words.text);
        text.replace(QLatin1Char('\n'), QChar::LineSeparator);
        const auto layout = std::make_shared<QTextLayout>(text, fontOf(words.look), &m_device);
        QTextOption option(Qt::AlignLeft);
        option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
        option.setUseDesignMetrics(true);
        layout->setTextOption(option);
        QTextCharFormat format;
        format.setForeground(QColor(words.look.colour));
        layout->setFormats({{0, text.size(), format}});
        layout->beginLayout();
        const qreal height = units(words.look.points * kMillimetresInPoint * kLeading);
        for (QTextLine line = layout->createLine(); line.isValid(); line = layout->createLine()) {
            line.setLineWidth(width);
            line.setPosition({0, 0});
            lines.append({layout, line.lineNumber(), height, height * kBaseline});
        }
        layout->endLayout();
    }
    return lines;
}

QVector<qreal> Paper::widthsOf(const Table &table, int cells) const
{
    if (cells == 1)
        return {m_width};
    QVector<qreal> widths;
    for (const qreal share : table.shares)
        widths.append(share * m_width);
    return widths;
}

/// The room that a row's bar takes.
qreal Paper::barOf(const Row &row) const
{
    return row.bar ? units(2 * kBar) : 0;
}

void Paper::add(Piece piece)
{
    piece.above = m_above;
    piece.turns = m_turns;
    m_above = 0;
    m_turns = false;
    m_pieces.append(piece);
}

void Paper::addHeading(const Words &words)
{
    Table table;
    table.isRuled = false;
    Row row;
    row.cells = {Cell{words}};
    row.staysWithNext = true;
    addRow(table, row, -1);
}

void Paper::addDrawing(qreal height, bool staysWithNext, const Draw &draw)
{
    Piece piece;
    piece.staysWithNext = staysWithNext;
    piece.height = units(height);
    const qreal side = units(kPadX); // its left edge is that of the texts
    piece.draw = [draw, side](QPainter &painter, const QRectF &area) {
        draw(painter, area.adjusted(side, 0, -side, 0));
    };
    add(piece);
}

Row Paper::headOf(const Table &table) const
{
    Row row;
    for (const QString &title : table.head)
        row.cells.append(Cell{Words{title, {8, ink::kQuiet}}});
    row.fill = ink::kShade;
    row.staysWithNext = true;
    return row;
}

void Paper::addTable(const Table &table)
{
    const int head = table.head.isEmpty() ? -1 : m_pieces.size();
    if (head >= 0)
        addRow(table, headOf(table), -1);
    for (int i = 0; i < table.rows.size(); ++i) {
        Row row = table.rows[i];
        row.staysWithNext |= i + 1 < qMin(table.together, table.rows.size());
        addRow(table, row, head);
    }
}

/// Takes as many lines of each cell as a long row has on one page.
QVector<Paper::Lines> Paper::takeLines(QVector<Lines> &cells) const
{
    QVector<Lines> taken;
    for (Lines &lines : cells) {
        Lines here;
        qreal height = 0;
        while (!lines.isEmpty() && height + lines.first().height < kLongRow * m_height) {
            height += lines.first().height;
            here.append(lines.takeFirst());
        }
        taken.append(here);
    }
    return taken;
}

/// The height of the highest cell.
qreal Paper::heightOf(const QVector<Lines> &cells)
{
    qreal most = 0;
    for (const Lines &lines : cells) {
        qreal height = 0;
        for (const Line &line : lines)
            height += line.height;
        most = qMax(most, height);
    }
    return most;
}

void Paper::addRow(const Table &table, const Row &row, int head)
{
    const QVector<qreal> widths = widthsOf(table, row.cells.size());
    QVector<Lines> cells;
    for (int i = 0; i < row.cells.size(); ++i)
        cells.append(linesOf(row.cells[i], widths[i] - units(2 * kPadX) - barOf(row)));
    bool isLast = false;
    while (!isLast) {
        const QVector<Lines> part = takeLines(cells);
        isLast = heightOf(cells) == 0;
        Piece piece;
        piece.height = qMax(heightOf(part) + units(2 * table.padding), units(row.leastHeight));
        piece.head = head;
        piece.staysWithNext = row.staysWithNext && isLast;
        piece.draw = drawingOf(part, widths, row, table, isLast);
        add(piece);
    }
}

void Paper::drawLines(QPainter &painter, const Lines &lines, QPointF place)
{
    for (const Line &each : lines) {
        const QTextLine line = each.layout->lineAt(each.number);
        line.draw(&painter, {place.x(), place.y() + each.baseline - line.ascent()});
        place.ry() += each.height;
    }
}

Paper::Draw Paper::drawingOf(const QVector<Lines> &cells, const QVector<qreal> &widths,
                             const Row &row, const Table &table, bool isLast) const
{
    const QRgb fill = row.fill;
    const QRgb bar = row.bar;
    const qreal room = barOf(row);
    const qreal padding = units(table.padding);
    const bool isRuled = table.isRuled && isLast;
    return [=](QPainter &painter, const QRectF &area) {
        if (fill)
            painter.fillRect(area, QColor(fill));
        if (bar)
            painter.fillRect(QRectF(area.topLeft(), QSizeF(units(kBar), area.height())),
                             QColor(bar));
        qreal x = area.left() + units(kPadX) + room;
        for (int i = 0; i < cells.size(); ++i) {
            drawLines(painter, cells[i], {x, area.top() + padding});
            x += widths[i];
        }
        painter.setPen(QPen(QColor(ink::kRule), units(kRuleWidth)));
        if (isRuled)
            painter.drawLine(area.bottomLeft(), area.bottomRight());
    };
}

/// The height of a piece and of all that has to stand on its page.
qreal Paper::chainHeight(int first) const
{
    qreal height = m_pieces[first].height;
    for (int i = first; m_pieces[i].staysWithNext && i + 1 < m_pieces.size(); ++i)
        height += m_pieces[i + 1].above + m_pieces[i + 1].height;
    return height;
}

void Paper::place(int number, QVector<Page> &pages, qreal &y) const
{
    const Piece &piece = m_pieces[number];
    const bool isFull = y + piece.above + chainHeight(number) > m_height;
    if (y > 0 && (piece.turns || isFull)) {
        pages.append(Page());
        y = 0;
    }
    if (y == 0 && piece.head >= 0) {
        pages.last().append({piece.head, 0});
        y = m_pieces[piece.head].height;
    } else if (y > 0) {
        y += piece.above;
    }
    pages.last().append({number, y});
    y += piece.height;
}

QVector<Paper::Page> Paper::pages() const
{
    QVector<Page> pages(1);
    qreal y = 0;
    for (int i = 0; i < m_pieces.size(); ++i)
        place(i, pages, y);
    return pages;
}

void Paper::paintFoot(QPainter &painter, const QString &foot, const QString &number) const
{
    const QRectF area(units(kSide), units(297 - kFoot), m_width, units(kFoot / 2));
    const QFont font = textFont(8);
    const QString shown = QFontMetricsF(font, &m_device)
                              .elidedText(printable(foot), Qt::ElideRight, m_width - units(25));
    painter.setFont(font);
    painter.setPen(QPen(QColor(ink::kRule), units(kRuleWidth)));
    painter.drawLine(area.topLeft(), area.topRight());
    painter.setPen(QColor(ink::kQuiet));
    painter.drawText(area, Qt::AlignLeft | Qt::AlignVCenter, shown);
    painter.drawText(area, Qt::AlignRight | Qt::AlignVCenter, number);
}

bool Paper::print(const QString &foot)
{
    QPainter painter;
    if (!painter.begin(&m_device))
        return false;
    const QVector<Page> all = pages();
    for (int i = 0; i < all.size(); ++i) {
        if (i > 0)
            m_device.newPage();
        for (const Place &place : all[i]) {
            const Piece &piece = m_pieces[place.piece];
            piece.draw(painter, {units(kSide), units(kTop) + place.y, m_width, piece.height});
        }
        paintFoot(painter, foot, QStringLiteral("%1 / %2").arg(i + 1).arg(all.size()));
    }
    return painter.end();
}

} // namespace check
