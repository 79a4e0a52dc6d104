#include "protocol/commands.h"

#include "foundation/QGlobal.h"
#include "protocol/codec.h"
#include "protocol/fields.h"

#include <QTextCodec>

#include <algorithm>

namespace {

using P = ParamKind;

constexpr quint8 kGuidanceCode = 0x15;
constexpr quint8 kGeoLockCode = 0x16;

template <typename Predicate>
const CommandRow *firstWhere(Predicate predicate)
{
    const auto row = std::find_if(kCommands.begin(), kCommands.end(), predicate);
    return row == kCommands.end() ? nullptr : &*row;
}

/// The row whose name is shown for a code. The one asymmetry of the two directions stands here.
const CommandRow *findNamed(quint8 code)
{
    return findCommand(code == kGeoLockCode ? kGuidanceCode : code);
}

QByteArray paramBytes(ParamKind kind, const QString &text)
{
    switch (kind) {
    case P::None:
        return {};
    case P::Byte:
        return QByteArray(1, char(text.toInt()));
    case P::U16:
        return encodeU16(text.toUShort());
    case P::I16:
        return encodeI16(text.toShort());
    case P::Temperature:
        return encodeI16(qint16(scaledDouble(text, 1.0)));
    case P::GeoDegrees:
        return encodeI32(scaledDouble(text, kGeoDegrees.k));
    case P::Metres:
        return encodeI32(scaledDouble(text, kThousandths.k));
    }
    return {};
}

} // namespace

// clang-format off
const std::array<CommandRow, kCommandCount> kCommands = {{
    {0x00, "空命令"},
    {0x01, "吊舱校准"},
    {0x03, "回中"},
    {0x06, "OSD坐标", kNoFixedByte, {P::Byte}},
    {0x07, "图像自动翻转", kNoFixedByte, {P::Byte}},
    {0x08, "时区", kNoFixedByte, {P::Byte}},
    {0x10, "角度控制"},
    {0x11, "锁定"},
    {0x12, "跟随"},
    {0x13, "俯拍"},
    {0x14, "欧拉角控制"},
    {kGuidanceCode, "凝视(地理坐标引导)", kNoFixedByte, {P::GeoDegrees, P::GeoDegrees, P::Metres}},
    {kGeoLockCode, "凝视(地理坐标锁定)"},
    {0x17, "跟踪", 0x01, {P::Byte, P::U16, P::U16, P::U16, P::U16}},
    {0x1A, "指点平移", 0x01, {P::U16, P::U16}},
    {0x1B, "外部图像跟踪", kNoFixedByte, {P::Byte, P::I16, P::I16, P::Byte}},
    {0x1C, "FPV"},
    {0x20, "拍照", 0x01},
    {0x21, "录像开始/停止", 0x01},
    {0x22, "连续放大", kNoFixedByte, {P::Byte}},
    {0x23, "连续缩小", kNoFixedByte, {P::Byte}},
    {0x24, "停止变倍", kNoFixedByte, {P::Byte}},
    {0x25, "指定倍率", kNoFixedByte, {P::Byte, P::I16}},
    {0x26, "聚焦", 0x01},
    {0x2A, "调色盘", 0x02, {P::Byte}},
    {0x2B, "夜视", 0x01, {P::Byte}},
    {0x30, "区域测温", kNoFixedByte, {P::Byte, P::Byte, P::U16, P::U16, P::U16, P::U16}},
    {0x31, "温度报警", kNoFixedByte, {P::Byte, P::Byte, P::Temperature, P::Temperature}},
    {0x32, "等温线", kNoFixedByte, {P::Byte, P::Byte, P::Temperature, P::Temperature}},
    {0x33, "指点测温", kNoFixedByte, {P::Byte, P::Byte, P::U16, P::U16}},
    {0x73, "OSD", kNoFixedByte, {P::Byte}},
    {0x74, "画中画", kNoFixedByte, {P::Byte}},
    {0x75, "目标识别", kNoFixedByte, {P::Byte}},
    {0x76, "变焦相机数字变焦", kNoFixedByte, {P::Byte}},
    {0x80, "补光", kNoFixedByte, {P::Byte}},
    {0x81, "连续测距", kNoFixedByte, {P::Byte}},
}};
// clang-format on

const CommandRow *findCommand(quint8 code)
{
    return firstWhere([code](const CommandRow &row) { return row.code == code; });
}

const CommandRow *findCommand(const QString &name)
{
    return firstWhere([&name](const CommandRow &row) { return translated(row.name) == name; });
}

QString commandName(quint8 code)
{
    const CommandRow *row = findNamed(code);
    return row ? translated(row->name) : QString();
}

QByteArray commandNameGbk(quint8 code)
{
    const CommandRow *row = findNamed(code);
    const QTextCodec *gbk = QTextCodec::codecForName("GBK");
    return row && gbk ? gbk->fromUnicode(QString::fromUtf8(row->name)) : QByteArray();
}

QByteArray commandBytes(const QString &name, const QString &p1, const QString &p2,
                        const QString &p3, const QString &p4, const QString &p5, const QString &p6)
{
    const CommandRow *row = findCommand(name);
    if (!row)
        return {};

    QByteArray bytes(1, char(row->code));
    if (row->fixedByte != kNoFixedByte)
        bytes.append(char(row->fixedByte));
    const QString *texts[kMaxParams] = {&p1, &p2, &p3, &p4, &p5, &p6};
    for (std::size_t i = 0; i < row->params.size(); ++i)
        bytes.append(paramBytes(row->params[i], *texts[i]));
    return bytes;
}
