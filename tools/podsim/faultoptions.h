#pragma once

#include <QByteArray>
#include <QtGlobal>

#include <optional>

class QCommandLineParser;

namespace podsim {

class OptionReader;

/// Faults to be shown on purpose. 0 stands for "none" in each number that says no other.
struct FaultOptions
{
    // What the answers' writes are like.
    int split = 0;    ///< bytes a piece
    int coalesce = 0; ///< answers a write
    int noise = 0;    ///< bytes of noise before each write
    quint32 seed = 1; ///< of the noise and of the jitter
    bool isSilent = false;
    int hangAfter = 0;  ///< frames, after which none is sent any more
    int leaveAfter = 0; ///< frames, after which the pod is gone

    // Order and time. Every so many answers, one is treated so.
    int delay = 0; ///< milliseconds before an answer
    int drop = 0;
    int lateEvery = 0;
    int lateBy = 0; ///< milliseconds
    int jitter = 0; ///< milliseconds at the most
    int twice = 0;
    int swap = 0;

    // The frame.
    int badCrc = 0;    ///< every so many answers one has a wrong checksum
    int badLength = 0; ///< every so many answers one has a wrong length field
    std::optional<quint8> version;
    std::optional<quint8> mode;
    std::optional<quint8> flags[2];
    std::optional<quint8> reserved; ///< in both ranges
    bool noSubFrame = false;

    // The feedback area.
    int ackAfter = 0;             ///< answers "executing" before the result
    std::optional<quint8> result; ///< the result byte of all commands
    int pad = 0;                  ///< zero bytes at its end
    bool wrongCode = false;
    bool noAck = false;
    bool acceptUnknown = false;
    QByteArray ignored; ///< codes, a byte each

    // The report.
    double angleOffset = 0; ///< degrees
    double pitchOffset = 0; ///< degrees
    double drift = 0;       ///< degrees a second of yaw
    double driftPitch = 0;  ///< degrees a second
    bool stuck = false;
    double speed = 1; ///< of the gimbal; 1 is its own

    // How host frames are read.
    bool answerBroken = false;
    bool deafAfterBroken = false;
    bool noReassembly = false;
};

/// Adds the options of the faults, with their texts.
void addFaultOptions(QCommandLineParser &parser);
/// Takes their values; those that aren't given stay as they are.
void readFaults(OptionReader &reader, FaultOptions &faults);

} // namespace podsim
