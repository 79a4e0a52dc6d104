#pragma once

#include <QLibrary>
#include <QString>

// FFmpeg and libVLC bring some seventy libraries with them. They are loaded when the first picture
// is asked for and not with the program: most sessions on the bench play none, and a machine
// without them still has everything but the picture.

/// A library by its plain name and the version that it carries in its file name, 0 for none.
struct ForeignLibrary
{
    const char *name;
    int version;
};

/// The function of that name, or null where the library or the function is missing.
template <typename Function>
Function foreignFunction(const ForeignLibrary &library, const char *name)
{
    const QString file = QString::fromLatin1(library.name);
#ifdef Q_OS_WIN
    const QString suffix = library.version ? QStringLiteral("-%1").arg(library.version) : QString();
    return reinterpret_cast<Function>(QLibrary::resolve(file + suffix, name));
#else
    return reinterpret_cast<Function>(QLibrary::resolve(file, library.version, name));
#endif
}

/// Declares a function of the global namespace anew in the one around it; a call loads the library
/// first. `library` is a constant `ForeignLibrary`.
#define NACELLE_FOREIGN(library, function)                                                         \
    template <typename... Arguments>                                                               \
    auto function(Arguments... arguments)                                                          \
    {                                                                                              \
        static const auto loaded = foreignFunction<decltype(&::function)>(library, #function);     \
        return loaded(arguments...);                                                               \
    }
