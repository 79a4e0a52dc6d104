#pragma once

#include <cstddef>

constexpr int kAnswerSize = 73; ///< bytes of podsim's answers

/// One fault of podsim and what it takes from its answers. The bench cuts one frame out of a chunk
/// and passes over what follows, so that the pieces matter as well.
struct Fault
{
    const char *option; ///< of podsim, or empty for none
    const char *value;
    int piece;           ///< most bytes that are written at a time
    int spoilsEvery = 0; ///< so many answers have one that can't come whole
    int wrongEvery = 0;  ///< so many answers have one frame that is recorded wrong
};

constexpr Fault kFaults[] = {
    {"", "", kAnswerSize},
    {"--split", "25", 25}, // three pieces and their pauses fit into the period of the cycle
    {"--coalesce", "2", 2 * kAnswerSize},
    {"--delay", "200", kAnswerSize},
    {"--drop", "5", kAnswerSize},
    {"--noise", "40", kAnswerSize, 0, 1}, // an empty frame is recorded for each
    {"--bad-crc", "10", kAnswerSize, 10, 10},
    {"--bad-length", "10", kAnswerSize, 10},
    {"--ack-after", "20", kAnswerSize},
    {"--silent", "", kAnswerSize},
};
constexpr std::size_t kFaultCount = sizeof kFaults / sizeof *kFaults;

constexpr const char *kLinks[] = {"TCP", "UDP", "serial"};
enum Link { kTcp, kUdp, kSerial, kLinkCount };
