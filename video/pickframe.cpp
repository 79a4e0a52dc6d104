#include "video/pickframe.h"

#include "protocol/codec.h"
#include "protocol/fields.h"
#include "protocol/frametext.h"

namespace {

/// One row for each kind of pick, in the order of `Pick`.
struct PickCommand
{
    int size;           ///< S of the frame
    const char *code;   ///< command byte
    const char *camera; ///< byte after it, null for that of the console page
    bool hasFlag;       ///< a byte that says start or end
    int values;         ///< number of coordinates
};
constexpr PickCommand kPickCommands[] = {
    {0x4D, "1A", "01", false, 2},
    {0x4E, "33", nullptr, true, 2},
    {0x52, "30", nullptr, true, 4},
    {0x52, "17", "01", true, 4},
};

constexpr bool sizesFit()
{
    for (const PickCommand &row : kPickCommands) {
        const int camera = row.camera ? hexTextSize(row.camera) : 1;
        if (row.size != kFrameOverhead + hexTextSize(row.code) + camera + (row.hasFlag ? 1 : 0) +
                            row.values * 2)
            return false;
    }
    return true;
}
static_assert(sizesFit(), "a frame size disagrees with its command");

constexpr int kPictureInPictureSize = kFrameOverhead + 2;

constexpr double kFullScale = 10000.0;

const PickCommand &commandOf(video::Pick pick)
{
    return kPickCommands[int(pick)];
}

QByteArray frameOf(int size, const QString &command, const FrameTexts &texts)
{
    return frameFromText(quint16(size), {texts.version, QStringLiteral("00 00 00 00 00 00"),
                                         QStringLiteral("01"), texts.carrier, command});
}

} // namespace

quint16 pickUnit(double position, int extent)
{
    return extent > 0 ? quint16(qint64(position * kFullScale / extent)) : quint16(0);
}

bool canEnd(video::Pick pick)
{
    return commandOf(pick).hasFlag;
}

QByteArray pickFrame(video::Pick pick, bool start, const PickCorners &corners,
                     const FrameTexts &texts)
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
    return frameOf(kPictureInPictureSize, QLatin1String("740") + QString::number(step), texts);
}
