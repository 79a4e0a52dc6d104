#pragma once

namespace tour {

// What the tour does on the flow console, which has to be in front.

class Tour;

// Places in the hexadecimal text of a host frame.
constexpr int kYawDigit = 9 * 2;
constexpr int kCommandDigit = 69 * 2;

bool isChecked(Tour &tour, const char *button);

void startRun(Tour &tour);
/// Ends a run and waits until no more frames go out.
void stopRun(Tour &tour);

/// Presses a command button in a run; the pod prints `command` and its answer clears the selection.
void giveCommand(Tour &tour, const char *button, const char *command);
/// Presses a mode button in a run until the pod reports the mode.
void enterMode(Tour &tour, const char *button, const char *command);

/// Takes the yaw rate's slider to the right and keeps it there.
void holdYawSlider(Tour &tour);
void releaseYawSlider(Tour &tour);

} // namespace tour
