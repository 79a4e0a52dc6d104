#pragma once

#include <QList>
#include <QMap>
#include <QMutex>
#include <QObject>
#include <QString>
#include <QStringList>

#include <atomic>
#include <memory>

inline constexpr int kControlRowCount = 16;

/// One of the 16 control slots of the saved file. This program passes them through.
struct ControlRow
{
    qint32 index = 0;
    QString name = QLatin1String("");
    QString text2 = QLatin1String("");
    QString text3 = QLatin1String("");
    QString text4 = QLatin1String("");
    QString text5 = QLatin1String("");
    QString text6 = QLatin1String("");
    QString text7 = QLatin1String("");
    qint32 number1 = 0;
    QString text8 = QLatin1String("");
    QStringList items;
    QString text9 = QLatin1String("");
    QString text10 = QLatin1String("");
    qint32 number2 = 0;
    quint16 word = 0;
    double value1 = 0;
    double value2 = 0;
    double value3 = 0;
    double value4 = 0;
    float ratio1 = 0;
    float ratio2 = 0;
    float ratio3 = 0;
    quint32 unsigned1 = 0;
    quint8 byte1 = 0;
    qint32 number3 = 0;
    qint32 number4 = 0;
    quint64 stamp = 0;
    qint32 state = 0;
    // Outside the saved file.
    int spareNumber = 0;
    bool spareFlag = true;
    QString spareText;
};

/// One of the 20 key assignments of the saved file.
struct KeyRow
{
    qint32 index = 0;
    QString name;
    QString padKey;
    QString keyboardKey;
    qint32 reserved = 0;
    qint32 keyCode = 0; ///< Windows virtual-key number, from 10001 on a mouse action, 0 for none
};

/// The settings and tables that all pages share: made and loaded by the first call of `instance`,
/// kept to the end of the process. Fields are read and written directly, from the GUI thread.
/// Many of them nothing reads: they are kept because they are part of the saved file.
class QGlobal : public QObject
{
    Q_OBJECT

public:
    /// The one object. Its making loads the saved file and the text files that lie beside the
    /// program.
    static QGlobal *instance();

    /// The one object, made with the text files of another folder: for tools, before anything asks
    /// for it. If it's there already, it stays as it is.
    static QGlobal *instanceFrom(const QString &folder);

    /// Apart from the one object: the settings of a first start. The maps are null.
    static std::unique_ptr<QGlobal> atFirstStart();

    ~QGlobal() override;

    /// Text of a key in the current language, or the key itself where there is none.
    QString translate(const QString &key) const;

    /// The key's Chinese entry whatever the language, or empty.
    QString firstLanguageText(const QString &key) const;

    QString deviceName;
    QList<ControlRow *> controlRows;
    QList<KeyRow *> keyRows;
    QList<int> spareList;
    bool optionFlag0 = true;
    bool optionFlag1 = true;
    bool optionFlag2 = true;
    bool optionFlag3 = true;
    bool optionFlag4 = true;
    bool optionFlag5 = true;
    bool optionFlag6 = true;
    int optionValue1 = 50;
    int optionValue2 = 50;
    int optionValue3 = 50;
    bool ffmpegEngine = false; ///< the player surface decodes with FFmpeg; false means libVLC
    bool optionFlag7 = true;
    bool optionFlag8 = true;
    bool optionFlag9 = false;
    QString dataFolder;
    bool spareFlag1 = false;
    bool spareFlag2 = false;
    quint16 reservedWord = 200;
    bool spareFlag3 = false;
    double scaleFactor = 1.0; ///< screen height / 1080, set by the main window
    bool languageChinese = true;
    int configValue1 = 500;
    int configValue2 = 120;
    // The maps are null until `instance` has made them.
    QMap<QString, int> *keyboardMap = nullptr;
    QMap<QString, QString> *palette = nullptr;
    QMap<QString, QList<int>> *modelMap = nullptr;
    QMap<QString, QString> *chineseTexts = nullptr;
    QMap<QString, QString> *englishTexts = nullptr;
    QMap<QString, QString> *styleSheets = nullptr;
    QMap<QString, QString> *spareMap1 = nullptr;
    QMap<QString, QString> *spareMap2 = nullptr;
    QMap<QString, QString> *spareMap3 = nullptr;
    QMap<QString, QString> reconnectAddresses; ///< looked up by the TCP link, filled by no one
    int spareNumber = 0;
    bool spareFlag4 = false;
    bool spareFlag5 = false;

private:
    QGlobal() = default;
    void makeDefaultRows();

    static std::atomic<QGlobal *> s_instance;
    static QMutex s_mutex;
};

/// `QGlobal::translate` of a literal.
QString translated(const char *key);

/// Colour of a role in the palette, empty for one that it doesn't have.
QString colourOf(const char *role);
