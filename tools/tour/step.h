#pragma once

#include <QVector>

namespace tour {

class Tour;

/// What the picture after a step shows.
enum class Shown { Screen, MainWindow, VideoWindow };

/// One step of the tour: what it is called, what it prints, and what it does. `run` acts as the
/// operator does and returns when all that the step claims has come true; else it throws a
/// `TourFailure`. A picture is taken after each step.
struct Step
{
    const char *name; ///< part of the picture's file name
    const char *english;
    const char *chinese;
    void (*run)(Tour &);
    Shown shown = Shown::Screen;
};

// The pages' own tables. The tour runs them in this order.
QVector<Step> packetSteps();
QVector<Step> consoleSteps();
QVector<Step> videoSteps();
QVector<Step> menuSteps();

} // namespace tour
