#pragma once

#include <QByteArray>
#include <QString>

namespace podsim {

struct PodState;

/// Result byte of the feedback area; any other value means that the command is being carried out.
constexpr quint8 kSuccess = 0;
constexpr quint8 kFailure = 1;
constexpr quint8 kExecuting = 2;

/// A command area in words: code, name, and each parameter with its name.
QString describeCommand(const QByteArray &area);

/// Whether the pod knows the command of a command area, and the payload is long enough.
bool isKnown(const QByteArray &area);

/// Carries out the command of a command area. Fails, without a change, for a code that the pod
/// doesn't know, for a payload that is too short, and for a camera that isn't there.
quint8 carryOut(PodState &state, const QByteArray &area);

} // namespace podsim
