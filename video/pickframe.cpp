#include "video/pickframe.h"

#include "protocol/codec.h"

namespace {

/// One row for each kind of pick, in the order of `Pick`.
struct PickCommand
{
    const char *size;   ///< length field
    const char *code;   ///< command byte
    const char *camera; ///< byte behind it, null for that of the console page
    bool hasFlag;       ///< a byte that tells start from end
    int values;         ///< number of coordinates
};
constexpr PickCommand kPickCommands[] = {
    {"4D 00", "1A", "01", false, 2},
    {"4E 00", "33", nullptr, true, 2},
    {"52 00", "30", nullptr, true, 4},
    {"52 00", "17", "01", true, 4},
};

constexpr double kFullScale = 10000.0;

const PickCommand &commandOf(Pick pick)
{
    return kPickCommands[int(pick)];
}

QByteArray frameOf(const char *size, const QString &command, const FrameTexts &texts)
{
    QByteArray frame =
        hexTextToBytes(QLatin1String("A8 E5 ") + QLatin1String(size) + texts.version +
                       QLatin1String(" 00 00 00 00 00 00 01 ") + texts.carrier + command);
    appendCrc(frame);
    return frame;
}

} // namespace

quint16 pickUnit(double position, int extent)
{
    return extent > 0 ? quint16(qint64(position * kFullScale / extent)) : quint16(0);
}

bool canEnd(Pick pick)
{
    return commandOf(pick).hasFlag;
}

QByteArray pickFrame(Pick pick, bool start, const PickCorners &corners, const FrameTexts &texts)
{
    const PickCommand &row = commandOf(pick);
    QString command = QLatin1String(row.code);
    command += row.camera ? QLatin1String(row.camera) : texts.cameraKk;
    if (row.hasFlag)
        command += QLatin1String(start ? "01" : "00");
    for (int i = 0; i < row.values; ++i)
        command += toHexText(encodeU16(corners[std::size_t(i)]));
    return frameOf(row.size, command, texts);
}

QByteArray pictureInPictureFrame(int step, const FrameTexts &texts)
{
    return frameOf("49 00", QLatin1String("740") + QString::number(step), texts);
}
