#pragma once

#include <QApplication>

/// The application that pages need, made at the first call, without a screen. Kept to the end of
/// the process, as everything is that a fuzzer makes once.
inline void needApplication()
{
    static int argc = 1;
    static char name[] = "fuzz";
    static char *argv[] = {name, nullptr};
    qputenv("QT_QPA_PLATFORM", "offscreen");
    static auto *application = new QApplication(argc, argv);
    Q_UNUSED(application)
}
