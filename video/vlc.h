#pragma once

#include "video/foreign.h"

#ifdef Q_OS_WIN
#include <QSettings>
#endif

#include <vlc/vlc.h>

/// The functions of libVLC that are in use.
namespace vlc {

#ifdef Q_OS_WIN
constexpr ForeignLibrary kVlc{"libvlc", 0};
#else
constexpr ForeignLibrary kVlc{"vlc", 5};
#endif

NACELLE_FOREIGN(kVlc, libvlc_event_attach)
NACELLE_FOREIGN(kVlc, libvlc_media_add_option)
NACELLE_FOREIGN(kVlc, libvlc_media_get_state)
NACELLE_FOREIGN(kVlc, libvlc_media_new_location)
NACELLE_FOREIGN(kVlc, libvlc_media_player_event_manager)
NACELLE_FOREIGN(kVlc, libvlc_media_player_is_playing)
NACELLE_FOREIGN(kVlc, libvlc_media_player_new_from_media)
NACELLE_FOREIGN(kVlc, libvlc_media_player_play)
NACELLE_FOREIGN(kVlc, libvlc_media_player_release)
#ifdef Q_OS_WIN
NACELLE_FOREIGN(kVlc, libvlc_media_player_set_hwnd)
#else
NACELLE_FOREIGN(kVlc, libvlc_media_player_set_xwindow)
#endif
NACELLE_FOREIGN(kVlc, libvlc_media_player_set_pause)
NACELLE_FOREIGN(kVlc, libvlc_media_player_set_position)
NACELLE_FOREIGN(kVlc, libvlc_media_player_stop)
NACELLE_FOREIGN(kVlc, libvlc_media_release)
NACELLE_FOREIGN(kVlc, libvlc_new)
NACELLE_FOREIGN(kVlc, libvlc_release)
NACELLE_FOREIGN(kVlc, libvlc_video_set_aspect_ratio)
NACELLE_FOREIGN(kVlc, libvlc_video_set_key_input)
NACELLE_FOREIGN(kVlc, libvlc_video_set_mouse_input)

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations" // its successor doesn't wait
NACELLE_FOREIGN(kVlc, libvlc_media_parse)
#pragma GCC diagnostic pop

/// Puts the folder that VLC's installer has noted at the end of the path: the library is looked for
/// beside the program first, then in the path, then there. It finds its plugins beside itself.
inline void addInstalledFolder()
{
#ifdef Q_OS_WIN
    const QSettings installed(QStringLiteral("HKEY_LOCAL_MACHINE\\Software\\VideoLAN\\VLC"),
                              QSettings::Registry64Format);
    const QString folder = installed.value(QStringLiteral("InstallDir")).toString();
    if (!folder.isEmpty())
        qputenv("PATH", qgetenv("PATH") + ';' + folder.toLocal8Bit());
#endif
}

/// Whether the library is there. Nothing else here may be called where it isn't.
inline bool isThere()
{
    static const bool isThere = (addInstalledFolder(), canLoad(kVlc, "libvlc_get_version"));
    return isThere;
}

} // namespace vlc
