#pragma once

#include "protocol/commands.h"
#include "protocol/fields.h"
#include "protocol/gcuframe.h"
#include "protocol/hostframe.h"
#include "tools/wire/record.h"

#include <QVector>

#include <limits>

// The rows of both frames as this tool walks them: a plain list of fields, and the exact integer of
// each. The typed records aren't used: they keep only two of the flags, no bytes of a command
// beyond its own parameters and none of a frame that is cut, so that a frame doesn't come back from
// them; and to fill one takes the command's name in GBK each time, half of all its work.

namespace wire {

/// The fields of a frame in wire order, those of the fixed block first, then area and CRC.
const QVector<protocol::Field> &fieldsOf(FrameKind kind);

/// The field of an id, or null.
const protocol::Field *fieldNamed(FrameKind kind, const QString &id);

/// True for kinds that are a number on the wire, the mode included.
constexpr bool isNumber(FieldKind kind)
{
    return kind == FieldKind::Length || kind == FieldKind::Byte || kind == FieldKind::SignedByte ||
           kind == FieldKind::I16 || kind == FieldKind::U16 || kind == FieldKind::I32 ||
           kind == FieldKind::U32 || kind == FieldKind::Flags || kind == FieldKind::Mode;
}

/// The area after the fixed block and the CRC, whose places depend on S.
constexpr bool isVariable(FieldKind kind)
{
    return kind == FieldKind::Command || kind == FieldKind::Feedback || kind == FieldKind::Crc;
}

/// Decimals of the engineering value: 2 for hundredths, 0 for a plain number.
constexpr int decimalsOf(double k)
{
    int decimals = 0;
    for (int power = 1; power < k; power *= 10)
        ++decimals;
    return decimals;
}

/// Least and greatest integer that a number of that kind holds.
struct Range
{
    qint64 least;
    qint64 most;
};
Range rangeOf(FieldKind kind);
Range rangeOf(ParamKind kind);

/// The integer at `at`, where the field's bytes have to be.
qint64 rawNumber(FieldKind kind, const char *at);
/// Stores it there, its upper bits lost.
void storeNumber(FieldKind kind, qint64 raw, char *at);

/// Factor K of a parameter, 1 for a plain one; its integer at `at`.
double scaleOf(ParamKind kind);
qint64 rawParam(ParamKind kind, const char *at);

/// Where the area stands in a frame: from offset 69 to S - 2, as far as there are bytes. A host
/// frame with an S below 71 has all that follows there, as the bench takes it.
struct Span
{
    int offset = 0;
    int size = 0;
};
Span areaOf(FrameKind kind, const char *bytes, int size);

/// Where the CRC stands; of size 0 where S leads outside the bytes.
Span crcOf(const char *bytes, int size);

/// Where a field stands, the two above among them; of size 0 where the bytes don't reach.
Span spanOf(const protocol::Field &field, FrameKind kind, const char *bytes, int size);

} // namespace wire
