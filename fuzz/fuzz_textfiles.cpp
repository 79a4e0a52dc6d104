#include "foundation/QGlobal.h"
#include "foundation/textfiles.h"
#include "fuzz/fuzzinput.h"

#include <QCoreApplication>
#include <QFile>
#include <QTemporaryDir>

// The text files beside the program: the first byte of the input says which, the others are what
// stands in it.

namespace {

const char *const kFiles[] = {"Config.ini", "KeyboardMap.ini", "UIColorMap.ini", "ModelMap.ini",
                              "LanguageMap.ini"};

/// The reader makes its maps anew; those of the run before are given up here.
void freeMaps(QGlobal &global)
{
    delete global.keyboardMap;
    delete global.palette;
    delete global.modelMap;
    delete global.chineseTexts;
    delete global.englishTexts;
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static int argc = 0;
    static QCoreApplication application(argc, nullptr);
    static const QTemporaryDir folder;
    if (size == 0)
        return 0;
    QFile file(folder.filePath(QLatin1String(kFiles[data[0] % std::size(kFiles)])));
    require(file.open(QIODevice::WriteOnly), "no file");
    file.write(inputOf(data + 1, size - 1));
    file.close();
    QGlobal *global = QGlobal::instance();
    freeMaps(*global);
    readTextFilesFrom(folder.path(), *global);
    file.remove();
    return 0;
}
