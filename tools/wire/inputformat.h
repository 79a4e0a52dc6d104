#pragma once

#include "tools/wire/bytesource.h"

namespace wire {

enum class Format : quint8 { Pcapng, OldPcap, Line, Log, Hex, Raw, Packed, Utf16, OtherText };

/// What the first bytes of an input, 4096 at the most, look like: where they are text, its first
/// line that is neither empty nor a comment. Text that isn't known is no frames; all else is a raw
/// stream.
Format formatOf(const char *bytes, int size);

/// The same of what the source holds, without reading more of a slow one than it takes to know.
Format formatOf(ByteSource &source);

/// Why inputs of that form aren't read; empty for one that is.
QString refusalOf(Format format);

/// True for a line of text that holds no frame: empty, or a comment after `#`.
bool isRemark(const QByteArray &line);

} // namespace wire
