#include "foundation/QGlobal.h"

namespace {

struct DefaultKey
{
    const char *name;
    const char *padKey;
    const char *keyboardKey;
    qint32 keyCode;
};

constexpr DefaultKey kDefaultKeys[] = {
    {"指向/俯仰", "摇杆", "W/S/A/D", 0},
    {"放大", "A", "Q", 0x51},
    {"缩小", "B", "E", 0x45},
    {"锁定", "---", "---", 0},
    {"跟随", "---", "Space", 0x20},
    {"俯拍", "Y", "F1", 0x70},
    {"凝视", "X", "F2", 0x71},
    {"回中", "---", "F3", 0x72},
    {"拍照", "LT", "Num1", 0x61},
    {"录像", "RT", "Num2", 0x62},
    {"调色", "---", "Num3", 0x63},
    {"IRCUT", "---", "Num4", 0x64},
    {"补光", "---", "---", 0},
    {"测距", "---", "---", 0},
    {"画中画", "---", "---", 0},
    {"对焦", "---", "---", 0},
    {"换流", "---", "---", 0},
    {"指点控制", "---", "左键单击", 10001},
    {"跟踪", "---", "左键双击", 10002},
    {"退出跟踪", "---", "右键单击", 10003},
};

} // namespace

std::unique_ptr<QGlobal> QGlobal::atFirstStart()
{
    std::unique_ptr<QGlobal> global(new QGlobal);
    global->makeDefaultRows();
    return global;
}

QGlobal::~QGlobal()
{
    qDeleteAll(controlRows);
    qDeleteAll(keyRows);
}

QString QGlobal::translate(const QString &key) const
{
    const QMap<QString, QString> *texts = languageChinese ? chineseTexts : englishTexts;
    return texts ? texts->value(key, key) : key;
}

QString QGlobal::firstLanguageText(const QString &key) const
{
    return chineseTexts ? chineseTexts->value(key, QLatin1String("")) : QLatin1String("");
}

void QGlobal::makeDefaultRows()
{
    for (int i = 1; i <= kControlRowCount; ++i) {
        auto *row = new ControlRow;
        row->index = i;
        row->name = QLatin1Char('#') + QString::number(i);
        controlRows.append(row);
    }
    for (const DefaultKey &key : kDefaultKeys) {
        auto *row = new KeyRow;
        row->index = keyRows.size() + 1;
        row->name = QString::fromUtf8(key.name);
        row->padKey = QString::fromUtf8(key.padKey);
        row->keyboardKey = QString::fromUtf8(key.keyboardKey);
        row->keyCode = key.keyCode;
        keyRows.append(row);
    }
    dataFolder = QStringLiteral("/LocalData/");
}
