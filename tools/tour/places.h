#pragma once

namespace tour {

/// Shows the main window with the console in front, a message box and the video window, and writes
/// a line for each of their widgets: the class it belongs to, its object name, and the place of its
/// middle within its window. Whoever drives the program itself, from outside, reads there where to
/// click.
void printPlaces();

} // namespace tour
