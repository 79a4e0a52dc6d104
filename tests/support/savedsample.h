#pragma once

#include "tests/support/plainbytes.h"

/// A saved file of another machine, built from bytes alone, every value unlike the others.
struct SavedSample
{
    int controlRows = 16;
    int keyRows = 2;
    bool isSavedAgain = false; ///< as the program writes it back: what it drops is 0

    /// Six flags, three numbers, four flags, "/D/": 32 bytes.
    QByteArray settings() const
    {
        return QByteArray::fromHex("00 01 01 01 00 01  00000033 fffffff4 7fffffff  01 00 01 00"
                                   "00000006 002f 0044 002f");
    }

    QByteArray controlRow(int index) const
    {
        const QString n = QString::number(index);
        PlainBytes row;
        row.i32(index).text(QStringLiteral("名") + n);
        for (const char *text : {"t2-", "t3-", "t4-", "t5-", "t6-", "t7-"})
            row.text(text + n);
        row.i32(-index).text("t8-" + n).u32(2).text("a" + n).text(QString());
        row.text("t9-" + n).text("t10-" + n).i32(1000 + index);
        row.u16(isSavedAgain ? 0 : 0xABCD);
        row.real(0.5 * index).real(-2.25).real(1e300).real(-0.0);
        row.real(0.25).real(1.5 * index).real(-8.0);
        row.u32(0xFEDCBA98).u8(quint8(200 + index)).i32(-5);
        row.i32(isSavedAgain ? 0 : 77).number(isSavedAgain ? 0 : 0x0123456789ABCDEF, 8);
        row.i32(index % 3);
        return row.bytes;
    }

    QByteArray keyRow(int index) const
    {
        const QString n = QString::number(index);
        PlainBytes row;
        row.i32(index).text("放大" + n).text("pad" + n).text("key" + n).i32(-index).i32(0x51);
        return row.bytes;
    }

    /// Up to the end of the control rows.
    QByteArray head() const
    {
        QByteArray bytes = settings() + PlainBytes().u32(quint32(controlRows)).bytes;
        for (int i = 1; i <= controlRows; ++i)
            bytes += controlRow(i);
        return bytes;
    }

    QByteArray file() const
    {
        QByteArray bytes = head() + PlainBytes().u32(quint32(keyRows)).bytes;
        for (int i = 1; i <= keyRows; ++i)
            bytes += keyRow(i);
        return bytes;
    }
};
