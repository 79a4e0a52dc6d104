#pragma once

#include <QMap>
#include <QString>

/// The style sheets by name, built from the palette's colours at a scale. A colour that the
/// palette lacks leaves a gap in its sheet.
QMap<QString, QString> buildStyleSheets(const QMap<QString, QString> &palette, double scale);
