// A libVLC that can't make an instance.

#include <vlc/vlc.h>

libvlc_instance_t *libvlc_new(int, const char *const *)
{
    return nullptr;
}

const char *libvlc_get_version()
{
    return "0";
}
