#pragma once

#include "protocol/fields.h"
#include "tools/check/cases.h"
#include "tools/wire/record.h"

#include <QMap>

namespace check {

/// True for a whole GCU frame with a right checksum.
bool isGoodAnswer(const wire::Record &record);

/// Whether a field can ever be shown as that word: the id of a mode, a number that it can hold, or
/// digits of its length.
bool canBe(const protocol::Field &field, const QString &word);

/// The number in a field of a frame, in the field's unit; false where the frame is too short or the
/// field is no number.
bool numberIn(const QByteArray &frame, const QString &field, double &number);

/// What of the conditions a good answer doesn't meet: one sentence, or nothing. `remembered` holds
/// the numbers that conditions name.
LocalText unmet(const QVector<Condition> &conditions, const QByteArray &answer,
                const QMap<QString, double> &remembered);

/// What the answer says of a frame's command: nothing where it is about another one or isn't done
/// yet. An empty command is answered by any frame, with success.
enum class Acknowledged : quint8 { Not, Executing, Success, Failure };
Acknowledged acknowledgementOf(const QByteArray &sent, const QByteArray &answer);

/// The command that a good answer names; 0 for none.
char namedBy(const QByteArray &answer);

/// "<= 40", ">= 1", "29 … 31", or nothing.
QString limitText(double least, double most);

} // namespace check
