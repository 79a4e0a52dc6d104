#pragma once

#include "tests/support/bench.h"

/// What came over the link, by the window's own history.
struct Traffic
{
    int sent = 0;
    int good = 0;  ///< received, with header, length and checksum right
    int wrong = 0; ///< received, all others
};

/// An operator at the console: starts the cycle, presses commands, walks through the history and
/// changes the page, and counts what the history holds before a new run empties it.
class Operator
{
public:
    Operator();

    Bench &bench() { return m_bench; }

    /// Goes to a fresh console with an empty log and starts the cycle.
    void begin();
    /// Does the next thing.
    void act();
    /// Stops the cycle, waits until nothing comes any more, and returns the traffic since `begin`.
    Traffic end();

private:
    void startCycle();
    void count();
    void pressCommand();
    void walkHistory();
    void changePage();

    Bench m_bench;
    Traffic m_traffic;
    int m_acts = 0;
    int m_commands = 0;
};
