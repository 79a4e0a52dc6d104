#pragma once

#include <QCoreApplication>
#include <QTest>

#ifdef QT_WIDGETS_LIB
#include <QApplication>
using TestApplication = QApplication;
#elif defined(QT_GUI_LIB)
#include <QGuiApplication>
using TestApplication = QGuiApplication;
#else
using TestApplication = QCoreApplication;
#endif

/// Runs a test and returns its result; a warning that the test didn't announce with
/// `QTest::ignoreMessage` fails the run.
int runStrictly(QObject *test, int argc, char **argv);

/// Takes the place of QTEST_MAIN.
#define NACELLE_TEST_MAIN(TestClass)                                                               \
    int main(int argc, char *argv[])                                                               \
    {                                                                                              \
        TestApplication application(argc, argv);                                                   \
        TestClass test;                                                                            \
        return runStrictly(&test, argc, argv);                                                     \
    }
