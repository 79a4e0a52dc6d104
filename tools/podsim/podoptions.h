#pragma once

#include "tools/podsim/podmotion.h"

#include <QHostAddress>
#include <QSize>
#include <QString>
#include <QStringList>

#include <optional>

namespace podsim {

/// Faults to be shown on purpose; 0 stands for "none" in each number.
struct FaultOptions
{
    int split = 0;                ///< bytes a piece
    int coalesce = 0;             ///< answers a write
    int delay = 0;                ///< milliseconds before an answer
    int drop = 0;                 ///< every so many answers one isn't sent
    int noise = 0;                ///< bytes of noise before each write
    int badCrc = 0;               ///< every so many answers one has a wrong checksum
    int badLength = 0;            ///< every so many answers one has a wrong length field
    quint32 seed = 1;             ///< of the noise
    int ackAfter = 0;             ///< answers "executing" before the result
    std::optional<quint8> result; ///< the result byte of all commands
    bool isSilent = false;
};

/// The stream of the camera's picture.
struct StreamOptions
{
    std::optional<quint16> port; ///< of the RTSP server; without it there is no stream
    QSize size{1280, 720};
    bool hasSound = false;
    bool hasStamp = false; ///< pictures show their time and number, as in `picturestamp.h`
    bool hasControl = false;
};

/// What the command line asks for.
struct PodOptions
{
    std::optional<quint16> tcpPort;
    std::optional<quint16> udpPort;
    std::optional<quint16> udpReplyPort;
    std::optional<QString> ptyLink;
    QHostAddress address{QHostAddress::LocalHost};
    std::optional<PodMode> startMode;
    bool isVerbose = false;
    FaultOptions faults;
    StreamOptions stream;
};

/// The options, or what --help or --version asks for, or the reason why the command line is wrong.
struct ParsedOptions
{
    PodOptions options;
    QString answer;
    QString error;
};

/// A picture's size such as "1280x720", of even numbers from 64x64 to 3840x2160.
std::optional<QSize> parseSize(const QString &text);

/// Reads a command line, the program's name first.
ParsedOptions parseOptions(const QStringList &arguments);

} // namespace podsim
