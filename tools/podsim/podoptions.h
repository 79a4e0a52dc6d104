#pragma once

#include "tools/podsim/faultoptions.h"
#include "tools/podsim/podmotion.h"

#include <QHostAddress>
#include <QSize>
#include <QString>
#include <QStringList>

#include <optional>

namespace podsim {

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
