#include "bench/soak/operator.h"

#include "console/commandframe.h"
#include "protocol/fields.h"
#include "shell/framecut.h"

namespace {

constexpr int kHistorySteps = 5;
constexpr int kQuietMs = 1000; // longer than podsim's options delay an answer

bool isGood(const QByteArray &frame)
{
    return beginsGcuFrame(frame) && saidLength(frame) == frame.size() && crcMatches(frame);
}

} // namespace

Operator::Operator()
{
    m_bench->showNormal();
    m_bench->resize(1920, 1080);
}

void Operator::begin()
{
    m_bench.click("pushButton_1");
    m_bench.click("pushButton_2");
    m_bench->sentFrames.clear();
    m_bench->receivedFrames.clear();
    m_traffic = {};
    startCycle();
}

/// A start empties the history, so that it is counted before.
void Operator::startCycle()
{
    count();
    m_bench.click("pushButton_start");
}

void Operator::count()
{
    m_traffic.sent += m_bench->sentFrames.size();
    for (const QByteArray &frame : qAsConst(m_bench->receivedFrames))
        ++(isGood(frame) ? m_traffic.good : m_traffic.wrong);
}

void Operator::act()
{
    using Act = void (Operator::*)();
    constexpr Act kActs[] = {&Operator::pressCommand, &Operator::pressCommand,
                             &Operator::pressCommand, &Operator::walkHistory,
                             &Operator::pressCommand, &Operator::pressCommand,
                             &Operator::pressCommand, &Operator::changePage};
    (this->*kActs[m_acts++ % std::size(kActs)])();
}

void Operator::pressCommand()
{
    m_bench.click(kConsoleCommands[std::size_t(m_commands++ % kConsoleCommandCount)].button);
}

void Operator::walkHistory()
{
    m_bench.click("pushButton_Switch");
    for (int i = 0; i < kHistorySteps; ++i)
        m_bench.click("pushButton_up");
    m_bench.click("pushButton_next");
    m_bench.click("pushButton_Switch");
    startCycle();
}

void Operator::changePage()
{
    m_bench.click("pushButton_1");
    m_bench.click("pushButton_Send_Null");
    m_bench.click("pushButton_2");
    startCycle();
}

Traffic Operator::end()
{
    m_bench.click("pushButton_start");
    int received = -1;
    while (received != m_bench->receivedFrames.size()) {
        received = m_bench->receivedFrames.size();
        QTest::qWait(kQuietMs);
    }
    count();
    return m_traffic;
}
