#include "tools/podsim/podfaults.h"

#include "tools/podsim/podcodec.h"

#include <utility>

namespace podsim {

namespace {

constexpr int kLengthOffset = 2;
constexpr int kLengthError = 1; // so much more than there is

bool isNth(int count, int every)
{
    return every > 0 && count % every == 0;
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

} // namespace

PodFaults::PodFaults(const FaultOptions &options) : m_options(options), m_random(options.seed) {}

QVector<QByteArray> PodFaults::pieces(const QByteArray &answer)
{
    ++m_count;
    if (isNth(m_count, m_options.drop))
        return {};
    QByteArray frame = answer;
    if (isNth(m_count, m_options.badLength))
        spoilLength(frame);
    if (isNth(m_count, m_options.badCrc))
        spoilChecksum(frame);

    m_held += frame;
    if (++m_heldCount < m_options.coalesce)
        return {};
    m_heldCount = 0;
    const QByteArray bytes = std::exchange(m_held, {});

    QVector<QByteArray> result;
    if (m_options.noise > 0)
        result.append(noise());
    const int step = m_options.split > 0 ? m_options.split : bytes.size();
    for (int i = 0; i < bytes.size(); i += step)
        result.append(bytes.mid(i, step));
    return result;
}

QByteArray PodFaults::noise()
{
    QByteArray bytes(m_options.noise, '\0');
    for (char &byte : bytes)
        byte = char(m_random() & 0xFF);
    return bytes;
}

} // namespace podsim
