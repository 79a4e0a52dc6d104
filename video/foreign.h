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

/// The file that has to be there, without the ending that the system gives libraries.
inline QString fileOf(const ForeignLibrary &library)
{
    const QString name = QString::fromLatin1(library.name);
#ifdef Q_OS_WIN
    return library.version ? QStringLiteral("%1-%2").arg(name).arg(library.version) : name;
#else
    return QStringLiteral("lib%1.so.%2").arg(name).arg(library.version);
#endif
}

/// The function of that name, or null where the library or the function is missing.
template <typename Function>
Function foreignFunction(const ForeignLibrary &library, const char *name)
{
#ifdef Q_OS_WIN
    return reinterpret_cast<Function>(QLibrary::resolve(fileOf(library), name));
#else
    const QString file = QString::fromLatin1(library.name);
    return reinterpret_cast<Function>(QLibrary::resolve(file, library.version, name));
#endif
}

/// Whether the library with that function can be loaded. Where it can't, the debug output says
/// which file is wanted: no other version will do than that of the headers it was built with.
inline bool canLoad(const ForeignLibrary &library, const char *function)
{
    if (foreignFunction<void (*)()>(library, function))
        return true;
    qInfo("no picture by this engine: %s can't be loaded", qPrintable(fileOf(library)));
    return false;
}

/// Declares a function of the global namespace anew in the one around it; a call loads the library
/// first. `library` is a constant `ForeignLibrary`, which has to be there: it lacks the function
/// where another one is named by mistake.
#define NACELLE_FOREIGN(library, function)                                                         \
    template <typename... Arguments>                                                               \
    auto function(Arguments... arguments)                                                          \
    {                                                                                              \
        static const auto loaded = foreignFunction<decltype(&::function)>(library, #function);     \
        Q_ASSERT_X(loaded, (library).name, #function);                                             \
        return loaded(arguments...);                                                               \
    }
