#pragma once

#include <QByteArray>

namespace wire {

/// The fields of both frames, all commands and all work modes as one JSON document: id, place,
/// kind, factor, unit, and names in both languages. The same bytes at every call.
QByteArray catalogue();

} // namespace wire
