#include "protocol/gcuframe.h"

#include "foundation/QGlobal.h"
#include "protocol/codec.h"
#include "protocol/commands.h"

namespace {

constexpr int kLengthWithoutResult = 72;

QString resultWord(quint8 result)
{
    return translated(result == 0 ? "成功" : result == 1 ? "失败" : "执行中");
}

} // namespace

void parseGcuFrame(const QByteArray &bytes, GcuFrame &record)
{
    readMembers(kGcuRows, bytes, record);
    // A frame without feedback area gives its CRC bytes here: these offsets don't look at S.
    record.feedbackCode = byteAt(bytes, kFeedbackOffset);
    record.feedbackName = commandNameGbk(record.feedbackCode);
    record.feedbackResult =
        record.length == kLengthWithoutResult ? kNoResult : byteAt(bytes, kFeedbackOffset + 1);
    computeCrc(bytes, record);
}

QString feedbackText(const QByteArray &frame)
{
    const int size = saidLength(frame) - kFrameOverhead;
    if (size <= 0)
        return translated("无命令");
    const QString name = commandName(byteAt(frame, kFeedbackOffset));
    return size == 1 ? name : name + resultWord(byteAt(frame, kFeedbackOffset + 1));
}

QString renewedFeedbackText(const QByteArray &feedback)
{
    if (feedback.isEmpty())
        return translated("无命令");
    const QString name = commandName(byteAt(feedback, 0));
    if (feedback.size() == 1)
        return name;
    return name + translated(byteAt(feedback, 1) == 0 ? "成功" : "失败");
}
