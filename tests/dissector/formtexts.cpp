#include "foundation/QGlobal.h"
#include "foundation/textfiles.h"
#include "protocol/codec.h"
#include "protocol/commands.h"
#include "protocol/gcuframe.h"
#include "protocol/hostframe.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <cstdio>
#include <random>

// Frames and what the program's own forms show of them, as JSON on standard output: what another
// reader of the same bytes is held against. Usage: formtexts DATA zh|en

namespace {

std::mt19937 noise(20);

/// The bytes after the length field up to the area: extremes first, then random ones.
QByteArray filling(int turn)
{
    constexpr int kSize = kFixedSize - 4;
    constexpr char kExtremes[] = {'\x00', '\xFF', '\x7F', '\x80', '\x01'};
    if (turn < int(sizeof kExtremes))
        return QByteArray(kSize, kExtremes[turn]);
    QByteArray bytes(kSize, '\0');
    for (char &byte : bytes)
        byte = char(noise());
    return bytes;
}

QByteArray frameOf(const char *header, const QByteArray &middle, const QByteArray &area)
{
    QByteArray frame = QByteArray::fromHex(header);
    frame += encodeU16(quint16(kFrameOverhead + area.size())) + middle + area;
    appendCrc(frame);
    if (noise() % 10 == 0)
        frame[frame.size() - 1] = char(frame.back() ^ 1);
    return frame;
}

template <typename Rows>
QJsonObject shown(const char *kind, const Rows &rows, const QByteArray &frame)
{
    QJsonArray fields;
    for (const auto &row : rows)
        fields.append(QJsonObject{{"id", row.field.id},
                                  {"name", translated(row.field.key)},
                                  {"text", fieldText(row.field, frame)},
                                  {"hex", hexDigits(fieldSlice(row.field, frame))}});
    return {{"kind", kind},
            {"hex", hexDigits(frame)},
            {"crc", translated(crcMatches(frame) ? "通过" : "不通过")},
            {"fields", fields}};
}

/// What an operator may type for a parameter, as each form of it has its limits.
QString typed(ParamKind kind, int turn)
{
    const auto chosen = [turn](std::initializer_list<const char *> texts) {
        return QString::fromLatin1(*(texts.begin() + turn % int(texts.size())));
    };
    switch (kind) {
    case ParamKind::Byte:
        return chosen({"0", "255", "1", "128"});
    case ParamKind::U16:
        return chosen({"0", "65535", "5000", "32768", "10000"});
    case ParamKind::GeoDegrees:
        return chosen({"-180", "116.3912757", "38.0300822", "-0.0000001", "180"});
    case ParamKind::Metres:
        return chosen({"-12.345", "8848.86", "0", "2147483.647"});
    default:
        return chosen({"-32768", "32767", "0", "-1", "120"});
    }
}

QJsonObject commandShown(const CommandRow &row, int turn)
{
    QString texts[kMaxParams];
    QJsonObject params;
    for (int i = 0; i < paramCount(row); ++i) {
        texts[i] = typed(row.params[std::size_t(i)].kind, turn + i);
        params.insert(row.params[std::size_t(i)].id, texts[i]);
    }
    const QString name = translated(row.name);
    const QByteArray area =
        commandBytes(name, texts[0], texts[1], texts[2], texts[3], texts[4], texts[5]);
    QJsonObject object = shown("host", kHostRows, frameOf("A8E5", filling(turn), area));
    object.insert("command", name);
    object.insert("params", params);
    return object;
}

QJsonObject answerShown(quint8 mode, const QByteArray &area, int turn)
{
    QByteArray middle = filling(turn);
    middle[kModeOffset - 4] = char(mode);
    const QByteArray frame = frameOf("8A5E", middle, area);
    QJsonObject object = shown("gcu", kGcuRows, frame);
    object.insert("feedback", feedbackText(frame));
    return object;
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    QGlobal &global = *QGlobal::instance();
    readTextFilesFrom(application.arguments().value(1), global);
    global.languageChinese = application.arguments().value(2) == QLatin1String("zh");

    QJsonArray frames;
    for (int turn = 0; turn < 12; ++turn) {
        for (const CommandRow &row : kCommands) {
            frames.append(commandShown(row, turn));
            const QByteArray answer{QByteArray(1, char(row.code)) + char(turn % 3)};
            frames.append(answerShown(quint8(noise()), answer + QByteArray(turn / 3, 'x'), turn));
        }
    }
    for (int mode = 0; mode < 256; ++mode)
        frames.append(answerShown(quint8(mode), QByteArray(mode % 2, '\x20'), mode % 20));
    return std::puts(QJsonDocument(frames).toJson(QJsonDocument::Compact).constData()) < 0;
}
