#include "console/commandframe.h"
#include "tests/support/strictmain.h"

/// What the console makes of frames, without its form.
class tst_commandframe : public QObject
{
    Q_OBJECT

private slots:
    void answers();
};

void tst_commandframe::answers()
{
    const auto frame = [](const char *area) {
        return QByteArray(69, '\x2A') + QByteArray::fromHex(area) + QByteArray("\x12\x34");
    };
    const struct
    {
        const char *name;
        QByteArray sent;
        QByteArray received;
        bool isAnswer;
    } rows[] = {
        {"success", frame("2001"), frame("2000"), true},
        {"failure", frame("2001"), frame("2001"), true},
        {"still executing", frame("10"), frame("1002"), true},
        {"another command", frame("2001"), frame("2100"), false},
        {"the empty command is never answered", frame("00"), frame("0000"), false},
        {"no result", frame("2001"), frame("20"), false},
        {"more than a result", frame("2001"), frame("200000"), false},
        {"nothing sent yet", QByteArray(), frame("0000"), false},
        {"cut before the command", QByteArray(69, '\x2A'), frame("0000"), false},
    };
    for (const auto &row : rows)
        QVERIFY2(isAnswer(row.sent, row.received) == row.isAnswer, row.name);
}

NACELLE_TEST_MAIN(tst_commandframe)
#include "tst_commandframe.moc"
