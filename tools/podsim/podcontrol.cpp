#include "tools/podsim/podcontrol.h"

#include "tools/podsim/podstream.h"

#include <array>

#include <unistd.h>

namespace podsim {

namespace {

/// A line and what it does, which returns the reason if that can't be.
struct ControlRow
{
    const char *line;
    QString (*act)(PodStream &);
};

template <void (PodStream::*Function)()>
QString call(PodStream &stream)
{
    (stream.*Function)();
    return {};
}

template <bool IsFrozen>
QString freeze(PodStream &stream)
{
    stream.setFrozen(IsFrozen);
    return {};
}

QString open(PodStream &stream)
{
    return stream.open();
}

constexpr ControlRow kRows[] = {
    {"freeze", freeze<true>},
    {"thaw", freeze<false>},
    {"drop", call<&PodStream::drop>},
    {"rtsp stop", call<&PodStream::close>},
    {"rtsp start", open},
};

const QLatin1String kSize("size ");

} // namespace

PodControl::PodControl(PodStream &stream, const PodLog &log)
    : m_stream(stream), m_log(log), m_notifier(STDIN_FILENO, QSocketNotifier::Read)
{
    connect(&m_notifier, &QSocketNotifier::activated, this, &PodControl::read);
}

void PodControl::read()
{
    std::array<char, 256> buffer{};
    const ssize_t size = ::read(STDIN_FILENO, buffer.data(), buffer.size());
    if (size <= 0) {
        m_notifier.setEnabled(false);
        return;
    }
    m_input.append(buffer.data(), int(size));
    for (int end = m_input.indexOf('\n'); end >= 0; end = m_input.indexOf('\n')) {
        take(QString::fromLatin1(m_input.left(end)).simplified());
        m_input.remove(0, end + 1);
    }
}

void PodControl::take(const QString &line)
{
    const QString reason = carryOut(line);
    m_log.line(QStringLiteral("control: ") + (reason.isEmpty() ? line : reason));
}

QString PodControl::carryOut(const QString &line)
{
    for (const ControlRow &row : kRows)
        if (line == QLatin1String(row.line))
            return row.act(m_stream);
    const std::optional<QSize> size =
        line.startsWith(kSize) ? parseSize(line.mid(kSize.size())) : std::nullopt;
    if (!size)
        return QStringLiteral("not understood: ") + line;
    m_stream.setSize(*size);
    return {};
}

} // namespace podsim
