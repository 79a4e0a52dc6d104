#pragma once

#include <QMap>
#include <QString>

/// The style sheets by name, built from the palette's colours at a scale. A colour that the
/// palette lacks leaves a gap in its sheet.
QMap<QString, QString> buildStyleSheets(const QMap<QString, QString> &palette, double scale);

inline constexpr int kBaseText = 12; ///< height of the text at scale 1, in pixels

/// Height of the text at a scale, in pixels.
int textHeight(double scale);

/// The rule that gives text its size at a scale.
QString textRule(double scale);

/// A sheet whose design colours are replaced by the palette's, where it has them.
QString recoloured(const QString &sheet, const QMap<QString, QString> &palette);

/// The sheet of a form whose sizes follow the screen: the rules that all share, then its own.
QString formSheet(const QString &own, const QMap<QString, QString> &palette, double scale);
