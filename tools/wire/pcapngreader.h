#pragma once

#include "tools/wire/packets.h"
#include "tools/wire/recordreader.h"
#include "tools/wire/segmentorder.h"

#include <QHash>
#include <QVector>

namespace wire {

/// What this tool and Wireshark agree on about the form of a recording.
constexpr quint16 kUser0Link = 147;
constexpr quint32 kSectionBlock = 0x0A0D0D0A;
constexpr quint32 kInterfaceBlock = 1;
constexpr quint32 kSimpleBlock = 3;
constexpr quint32 kEnhancedBlock = 6;
constexpr quint32 kByteOrderMagic = 0x1A2B3C4D;

/// Reads pcapng of either byte order: a packet of link type USER0 is a record as it stands; of
/// other link types the payload of TCP and UDP is looked at for frames, a stream for each pair of
/// ends.
class PcapngReader : public RecordReader
{
public:
    PcapngReader(std::unique_ptr<ByteSource> source, Cut cut);
    bool next(Record &record) override;
    Origin origin() const override { return m_origin; }

private:
    struct Interface
    {
        quint16 linkType = 0;
        quint64 unitsPerSecond = 1000000;
        qint64 offset = 0; ///< seconds
    };
    struct Packet
    {
        const char *bytes = nullptr;
        int size = 0;
        qint64 time = kNoTime;
        Direction direction = Direction::Unknown;
    };

    /// One direction of a TCP connection.
    struct Flow
    {
        SegmentOrder order;
        StreamCutter cutter;
        qint64 time = kNoTime; ///< of its last packet
        bool hasFrames = false;
    };

    bool readBlock();
    quint32 blockLength();
    void addBlockTrouble(const QString &text);
    void takeBlock(quint32 type, const char *body, int size);
    void takeSection(const char *body, int size);
    void takeInterface(const char *body, int size);
    void takeInterfaceOption(Interface &interface, quint16 code, const char *at, int length);
    void takeEnhanced(const char *body, int size);
    void takeSimple(const char *body, int size);
    void takePacket(const Interface &interface, const Packet &packet);
    void takeForeign(const Payload &payload, const Packet &packet);
    void queueForeign(Flow &flow);
    SegmentOrder::Take into(Flow &flow);
    Flow &flowOf(const QByteArray &key, Cut cut);
    void endFlow(Flow &flow);
    void endAllFlows();
    quint16 u16(const char *at) const;
    quint32 u32(const char *at) const;
    template <typename Take>
    void forEachOption(const char *body, int from, int size, Take take) const;

    Cut m_cut;
    bool m_isSwapped = false;
    bool m_isEnded = false;
    QVector<Interface> m_interfaces;
    Origin m_origin; ///< of this tool's first interface
    QHash<QByteArray, Flow> m_flows;
    StreamCutter m_own; ///< of this tool's packets, where they are cut as the bench does
    RecordQueue<Record> m_queue;
};

} // namespace wire
