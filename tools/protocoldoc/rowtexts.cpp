#include "tools/protocoldoc/rowtexts.h"

#include "foundation/QGlobal.h"
#include "tools/protocoldoc/notes.h"

QString nameOf(const char *key, Notes &notes)
{
    const QGlobal &global = *QGlobal::instance();
    const QString text = QString::fromUtf8(key);
    if (!(global.languageChinese ? global.chineseTexts : global.englishTexts)->contains(text))
        notes.complain(QStringLiteral("no name in this language: ") + text);
    return global.translate(text);
}

QString unitOf(const protocol::Field &field)
{
    return QString(QLatin1String(field.unit))
        .replace(QStringLiteral("deg"), QStringLiteral("°"))
        .replace(QStringLiteral("s2"), QStringLiteral("s²"));
}

QString kindOf(FieldKind kind)
{
    switch (kind) {
    case FieldKind::Byte:
    case FieldKind::Mode:
        return QStringLiteral("u8");
    case FieldKind::SignedByte:
        return QStringLiteral("i8");
    case FieldKind::I16:
        return QStringLiteral("i16");
    case FieldKind::U16:
    case FieldKind::Length:
        return QStringLiteral("u16");
    case FieldKind::I32:
        return QStringLiteral("i32");
    case FieldKind::U32:
        return QStringLiteral("u32");
    case FieldKind::Flags:
        return QStringLiteral("bits");
    default:
        return QStringLiteral("bytes");
    }
}
