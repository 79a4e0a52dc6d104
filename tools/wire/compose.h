#pragma once

#include "tools/wire/record.h"

#include <QMap>
#include <QPair>
#include <QString>
#include <QStringList>
#include <QVector>

#include <optional>

namespace wire {

/// A frame, or why there is none.
struct Composed
{
    Record record;
    QString error; ///< empty for a frame
};

/// A frame as words. What isn't given is 0, but for header, version and the header of the
/// sub-frame; length and checksum are made unless they are given, so that broken frames can be had.
struct FrameWords
{
    FrameKind kind = FrameKind::Host;
    /// Values by id, which become bytes by the bench's own rules.
    QVector<QPair<QString, QString>> values;
    /// Integers of the wire by id.
    QVector<QPair<QString, qint64>> raws;
    QString command; ///< of a host frame: code, id or name; of a GCU frame the answered one
    QMap<QString, QString> params;  ///< of that command, by id
    QString result;                 ///< of a GCU frame: a number or its word
    std::optional<QByteArray> area; ///< whatever its bytes; the three above have to be what it says
    QByteArray base;                ///< a frame to begin with instead of zeros
};

Composed composeFrame(const FrameWords &words);

/// From `name=value`: a field's id, `raw.` before it for the integer, `command`, `param.` and a
/// parameter's id (`param.` may be left out where no field has that id), `feedback`, `result`,
/// `area` in digits. A name may stand once.
Composed composePairs(FrameKind kind, const QStringList &pairs);

/// From the JSON object of a decoded frame. With `hex` only what differs from those bytes is
/// changed. What says the same twice, as `fields` and `raw`, or name and code, has to agree where
/// both were edited, or no `hex` shows which was. A key that no decoded frame of the kind has, a
/// value of another type, and a `length` or `crc` that the frame hasn't then, are an error that
/// names the key.
Composed composeJson(const QByteArray &line);

/// The code that a command's id, name or number says; false for another text.
bool readCommandCode(const QString &word, quint8 &code);
/// A result as 0 to 255 or its word; false for another text.
bool readResult(const QString &word, quint8 &code);

/// Bytes of hexadecimal digits with or without blanks; false for anything else.
bool readDigits(const char *text, int size, QByteArray &bytes);
bool readDigits(const QByteArray &text, QByteArray &bytes);

} // namespace wire
