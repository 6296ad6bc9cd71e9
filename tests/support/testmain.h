#pragma once

#include "tests/support/patience.h"

/// The tests of a folder are linked into one executable, which its first argument tells what to
/// run: `settings_tests usage_test` runs the class of usage_test.cpp. Each of these macros stands
/// at the end of a file and takes the name of the file and of its class; what is left of the
/// arguments is for the toolkit's test library.

/// Runs the class with no application object.
#define TOVAN_APPLESS_TEST(name, TestObject)                                                       \
    int name(int argc, char *argv[])                                                               \
    {                                                                                              \
        TestObject test;                                                                           \
        return QTest::qExec(&test, argc, argv);                                                    \
    }

/// Runs the class under an application object of this type.
#define TOVAN_TEST_UNDER(Application, name, TestObject)                                            \
    int name(int argc, char *argv[])                                                               \
    {                                                                                              \
        const Application app(argc, argv);                                                         \
        TestObject test;                                                                           \
        return QTest::qExec(&test, argc, argv);                                                    \
    }

/// Runs the class with an event loop and no screen.
#define TOVAN_GUILESS_TEST(name, TestObject) TOVAN_TEST_UNDER(QCoreApplication, name, TestObject)

/// Runs the class with widgets.
#define TOVAN_WIDGET_TEST(name, TestObject) TOVAN_TEST_UNDER(QApplication, name, TestObject)
