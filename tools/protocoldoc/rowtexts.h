#pragma once

#include "protocol/fields.h"

#include <QString>

class Notes;

// What protocol documents and dissector say of a row in the same words.

/// The key's text in the language of `QGlobal`; a key without one there is a problem.
QString nameOf(const char *key, Notes &notes);

/// A unit as it is printed: the tables have it in ASCII.
QString unitOf(const protocol::Field &field);

/// What a field is on the wire: "u8", "i16" and the like, "bits" or "bytes".
QString kindOf(FieldKind kind);
