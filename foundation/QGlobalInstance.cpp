// The making of the one QGlobal, apart from the class: it takes the readers, which know the class.

#include "foundation/FileUtils.h"
#include "foundation/QGlobal.h"
#include "foundation/stylesheets.h"
#include "foundation/textfiles.h"

#include <QCoreApplication>
#include <QMutexLocker>

std::atomic<QGlobal *> QGlobal::s_instance{nullptr};
QMutex QGlobal::s_mutex;

QGlobal *QGlobal::instance()
{
    if (QGlobal *made = s_instance)
        return made;
    return instanceFrom(QCoreApplication::applicationDirPath());
}

QGlobal *QGlobal::instanceFrom(const QString &folder)
{
    const QMutexLocker locker(&s_mutex);
    if (QGlobal *made = s_instance)
        return made;

    auto *global = new QGlobal;
    s_instance = global; // what loads the tables may ask for the instance itself
    global->spareMap1 = new QMap<QString, QString>;
    global->spareMap2 = new QMap<QString, QString>;
    global->spareMap3 = new QMap<QString, QString>;
    if (!FileUtils().loadControlConfig())
        global->makeDefaultRows();
    readTextFilesFrom(folder, *global);
    global->styleSheets =
        new QMap<QString, QString>(buildStyleSheets(*global->palette, global->scaleFactor));
    return global;
}

QString translated(const char *key)
{
    return QGlobal::instance()->translate(QString::fromUtf8(key));
}

QString colourOf(const char *role)
{
    return QGlobal::instance()->palette->value(QLatin1String(role), QLatin1String(""));
}
