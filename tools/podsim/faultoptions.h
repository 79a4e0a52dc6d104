#pragma once

#include <QtGlobal>

#include <optional>

class QCommandLineParser;

namespace podsim {

class OptionReader;

/// Faults to be shown on purpose; 0 stands for "none" in each number.
struct FaultOptions
{
    int split = 0;                ///< bytes a piece
    int coalesce = 0;             ///< answers a write
    int delay = 0;                ///< milliseconds before an answer
    int drop = 0;                 ///< every so many answers one isn't sent
    int noise = 0;                ///< bytes of noise before each write
    int badCrc = 0;               ///< every so many answers one has a wrong checksum
    int badLength = 0;            ///< every so many answers one has a wrong length field
    quint32 seed = 1;             ///< of the noise
    int ackAfter = 0;             ///< answers "executing" before the result
    std::optional<quint8> result; ///< the result byte of all commands
    bool isSilent = false;
};

/// Adds the options of the faults, with their texts.
void addFaultOptions(QCommandLineParser &parser);
/// Takes their values; those that aren't given stay as they are.
void readFaults(OptionReader &reader, FaultOptions &faults);

} // namespace podsim
