// Takes the place of the system's own under the leak sanitizer. Modules stay loaded, so that what
// they leave behind has their name, by which lsan.supp passes it over.

#include <dlfcn.h>

int dlclose(void *) noexcept
{
    return 0;
}
