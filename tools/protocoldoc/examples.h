#pragma once

#include <QByteArray>

// The frames that the documents show. They are composed as the program composes them.

/// A running console without a selected command.
QByteArray idleFrame();

/// The same with the photo button selected.
QByteArray photoFrame();

/// The video window's frame for a pick in the middle of the picture.
QByteArray pointingFrame();

/// A pod's answer to the photo command.
QByteArray answerFrame();
