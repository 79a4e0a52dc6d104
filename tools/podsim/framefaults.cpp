#include "tools/podsim/framefaults.h"

#include "tools/podsim/podcodec.h"

#include <algorithm>

namespace podsim {

namespace {

constexpr int kLengthOffset = 2;
constexpr int kLengthError = 1; // so much more than there is
constexpr int kSubFrameOffset = 37;
constexpr int kSubFrameEnd = 63;

void fill(QByteArray &frame, int from, int end, std::optional<quint8> byte)
{
    if (byte)
        std::fill(frame.begin() + from, frame.begin() + end, char(*byte));
}

} // namespace

QByteArray spoiltFeedback(QByteArray feedback, const FaultOptions &options)
{
    if (options.noAck)
        feedback.clear();
    if (options.wrongCode && !feedback.isEmpty())
        feedback[0] = char(feedback[0] + 1);
    return feedback.append(options.pad, '\0');
}

QByteArray spoiltFrame(QByteArray frame, const FaultOptions &options)
{
    frame.chop(kChecksumSize);
    fill(frame, 4, 5, options.version);
    fill(frame, 5, 6, options.mode);
    fill(frame, 6, 7, options.flags[0]);
    fill(frame, 7, 8, options.flags[1]);
    fill(frame, 30, kSubFrameOffset, options.reserved);
    fill(frame, kSubFrameEnd, kFixedSize, options.reserved);
    if (options.noSubFrame)
        fill(frame, kSubFrameOffset, kSubFrameEnd, quint8(0));
    appendChecksum(frame);
    return frame;
}

void spoilLength(QByteArray &frame)
{
    const int length = u16At(frame, kLengthOffset) + kLengthError;
    frame[kLengthOffset] = char(length);
    frame[kLengthOffset + 1] = char(length >> 8);
    frame.chop(kChecksumSize);
    appendChecksum(frame);
}

void spoilChecksum(QByteArray &frame)
{
    for (int i = frame.size() - kChecksumSize; i < frame.size(); ++i)
        frame[i] = char(~frame[i]);
}

} // namespace podsim
