#pragma once

#include <QTest>

#include <type_traits>

/// Runs a class of tests with QtTest's arguments, the program first. Returns the number of failed tests.
using TestRun = int (*)(int argc, char** argv);

/// Registers a class of tests under its name, which is compared without case.
/// Called during static initialisation. Always true.
bool addRunnableTests(const char* name, TestRun run);

/// Adds a class of tests to its program: `template class RunnableTests<tst_Name, QCoreApplication>;`
/// Application is the type of the application object that the tests need, or void when they need no such object.
template <typename Tests, typename Application>
class RunnableTests
{
private:
    static int run(int argc, char** argv)
    {
        if constexpr (std::is_void_v<Application>) {
            Tests tests;
            return QTest::qExec(&tests, argc, argv);
        } else {
            const Application application(argc, argv);
            Tests tests;
            return QTest::qExec(&tests, argc, argv);
        }
    }

    static const bool isAdded;
};

template <typename Tests, typename Application>
const bool RunnableTests<Tests, Application>::isAdded = addRunnableTests(Tests::staticMetaObject.className(), &run);
