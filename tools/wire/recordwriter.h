#pragma once

#include "tools/wire/decode.h"
#include "tools/wire/record.h"
#include "tools/wire/textbuffer.h"

#include <QString>

#include <memory>

namespace wire {

/// Name and version of this tool.
QString toolName();

/// A recording of this tool's own: pcapng of link type USER0, a packet a record, with its direction
/// in the packet flags and times in microseconds. A record without a time is written at 0.
std::unique_ptr<FrameFormat> pcapngFormat(const Origin &origin);

/// The text of the bench's log, in local time; a record without a time is written at midnight, one
/// without a direction as what its header says.
std::unique_ptr<FrameFormat> logFormat(Language language);

} // namespace wire
