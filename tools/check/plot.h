#pragma once

#include <QString>
#include <QVector>

class QPainter;
class QRectF;

// Times drawn so that they can be read in grey: marks differ in their dashes, not in colour alone.

namespace check {

/// The words of a plot, in the report's language.
struct PlotWords
{
    QString title;
    QString x; ///< with its unit
    QString y; ///< likewise
    QString median, percentile, worst;
    QString above; ///< "and above", of the last bar
    QString none;  ///< in place of a plot without times
};

/// How often which time was measured. Where the worst time lies far off, the last bar has all that
/// lies beyond the axis.
void drawHistogram(QPainter &painter, const QRectF &area, const QVector<int> &micros,
                   const PlotWords &words);

/// The times as they came: `when` has a place of each on the axis below, in rising order.
void drawRun(QPainter &painter, const QRectF &area, const QVector<double> &when,
             const QVector<int> &micros, const PlotWords &words);

} // namespace check
