#include "protocol/frametext.h"

#include "protocol/codec.h"

QByteArray frameFromText(quint16 size, const FrameParts &parts)
{
    QByteArray frame =
        hexTextToBytes(QLatin1String("A8 E5 ") + toHexText(encodeU16(size)) + parts.version +
                       parts.controls + parts.flags + parts.carrier + parts.command);
    appendCrc(frame);
    return frame;
}
