#pragma once

#include "tools/podsim/faultoptions.h"

namespace podsim {

/// The feedback area that is sent instead of `feedback`, which is empty or a code and a result.
QByteArray spoiltFeedback(QByteArray feedback, const FaultOptions &options);

/// A whole GCU frame with the content that was asked for and a right checksum.
QByteArray spoiltFrame(QByteArray frame, const FaultOptions &options);

/// Gives a whole frame a length field that says one byte too much, with a checksum to match.
void spoilLength(QByteArray &frame);

/// Gives a whole frame a wrong checksum.
void spoilChecksum(QByteArray &frame);

} // namespace podsim
